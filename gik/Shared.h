// Process-wide state of the kernel: one mutex over a string
// cache, in which every node name, namespace, display name and unit is
// interned, and over the table of compiled formulas, in which each formula
// text is compiled once per process. The strings are released with the last
// runtime; the formulas stay.
#pragma once

#include "gik/Object.h"

namespace llk {
class cString;
}

namespace gik {

class cFormula;

class sShared {
public:
    // Each runtime attaches once while it lives; false when the state
    // cannot be built.
    static bool Attach();
    static void Detach();

    // The one string object for aText (null counts as ""), owned by the
    // cache, valid while any runtime is attached; null on failure.
    static llk::cString* Intern(const char* aText);

    // The compiled formula for aText, retained for the caller; null when it
    // does not parse (then aError says why, and nothing is stored, so the
    // failure is reported again next time) or when nothing is attached.
    static cFormula* Formula(const char* aText, const char** aError);

    // Drops the compiled formulas that no node holds, for long fuzzing runs
    // that compile a new text for every input.
    static void ForgetUnused();

    // For tests and benchmarks.
    static u4 InternedCount();
    static u4 FormulaCount();
    static u8 CompileCount(); // compilations since the process started
};

} // namespace gik
