// Formula compilation under libFuzzer: any bytes as formula text. A text
// compiles or fails with one of the two parser messages; a compiled tree
// evaluates over variables of every flavour, the same result every time,
// and through the process-wide table it is compiled once.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "gik/Formula.h"
#include "gik/Runtime.h"
#include "gik/Scanner.h"
#include "gik/Shared.h"
#include "gik/Value.h"
#include "gik/Variables.h"
#include "kit/AutoreleasePool.h"

namespace {

// Names a formula is likely to use, bound to values of each flavour in
// turn; one variable set per round.
const char* const kNames[] = {"A", "B", "X", "TO", "FROM", "VAR", "PI", "E", "_", "a1"};

void Bind(gik::cVariables* aVariables, int aRound, llk::cString* aText) {
    int k = 0;
    for (const char* name : kNames) {
        gik::cValue v;
        switch ((aRound + k++) % 7) {
        case 0:
            v.SetSigned(-3 - aRound);
            break;
        case 1:
            v.SetUnsigned(0xFFFFFFFFFFFFFFF0ull + aRound);
            break;
        case 2:
            v.SetReal(aRound == 1 ? 0.0 : -0.5 * aRound);
            break;
        case 3:
            v.SetBool(aRound & 1);
            break;
        case 4:
            v.SetByte(static_cast<llk::u1>(200 + aRound));
            break;
        case 5:
            v.SetText(aText);
            break;
        default:
            break; // left unset
        }
        aVariables->Set(name, v);
    }
}

bool Same(bool aHas, const gik::tScalar& aA, bool aHasAgain, const gik::tScalar& aB) {
    if (aHas != aHasAgain) return false;
    if (!aHas) return true;
    return aA.flavour == aB.flavour && aA.number == aB.number &&
           (aA.flavour == gik::kFlavourText ? aA.text == aB.text
                                            : memcmp(&aA.u, &aB.u, sizeof(aA.u)) == 0);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    gik::cScanner::SetEcho(nullptr);
    // The kernel's error trace goes to standard output; libFuzzer reports on
    // standard error.
    if (!freopen("/dev/null", "w", stdout)) abort();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* aData, size_t aSize) {
    llk::uAutoreleasePool pool;
    std::string text(reinterpret_cast<const char*>(aData), aSize);
    const char* error = nullptr;
    gik::cFormula* formula = gik::cFormula::Compile(text.c_str(), &error);
    if (!formula) {
        if (!error ||
            (strcmp(error, "syntax error") != 0 && strcmp(error, "memory exhausted") != 0))
            abort();
        return 0;
    }
    gik::cVariables* variables = gik::cVariables::New(sizeof(kNames) / sizeof(kNames[0]));
    llk::cString* word = llk::cString::New("text", false);
    if (!variables || !word) abort();
    for (int round = 0; round < 4; ++round) {
        Bind(variables, round, word);
        gik::tScalar first, again;
        bool has = formula->Evaluate(variables, first);
        bool hasAgain = formula->Root()->Evaluate(variables, again);
        if (!Same(has, first, hasAgain, again)) abort();
        // The wide reading differs only in its powers.
        bool wide = formula->Evaluate(variables, again, gik::tReading::Wide());
        if (!strstr(text.c_str(), "**") && !Same(has, first, wide, again)) abort();
    }
    formula->Release();

    // Through the shared table: compiled once, however often asked (the
    // table may hold it already from an earlier input).
    gik::cRuntime* runtime = gik::cRuntime::New(false);
    if (!runtime) abort();
    gik::cFormula* shared = gik::sShared::Formula(text.c_str(), &error);
    if (!shared) abort();
    llk::u8 compiled = gik::sShared::CompileCount();
    gik::cFormula* again = gik::sShared::Formula(text.c_str(), &error);
    if (again != shared || gik::sShared::CompileCount() != compiled) abort();
    again->Release();
    shared->Release();
    return 0;
}
