// Process-wide state of the kernel: one mutex over a string
// cache, in which every node name, namespace, display name and unit is
// interned, and over the table of compiled formulas, in which each formula
// text is compiled once and shared by every node that uses it. The strings
// are released with the last runtime. The formulas outlive their runtimes,
// so that a camera opened again compiles nothing, but within a budget: when
// the table outgrows it, the formulas no node holds any more are released.
#pragma once

#include "gik/Object.h"

namespace llk {
class cString;
}

namespace gik {

class cFormula;
class cValue;

class sShared {
public:
    // Bytes of compiled formulas (gik::cFormula::Footprint) past which the
    // table releases those no node holds. Formulas in use always stay, so
    // the table holds at most about twice the budget, or twice what is in
    // use.
    static constexpr size_t kFormulaBudget = size_t(8) << 20;

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

    // The frozen constants true and false, shared by every runtime for
    // the references that are never written ("pIsImplemented",
    // "pIsAvailable", "pIsLocked" and the like); they live as long as the
    // process.
    static cValue* Flag(bool aValue);

    // For tests and benchmarks.
    static u4 InternedCount();
    static u4 FormulaCount();
    static size_t FormulaBytes(); // the footprint of the table's formulas
    static u8 CompileCount();     // compilations since the process started
};

} // namespace gik
