#include "gik/Shared.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "gik/Formula.h"
#include "gik/Text.h"
#include "gik/Value.h"
#include "kit/String.h"

namespace gik {

namespace {

// Interned texts by their characters; each holds the map's reference.
using tStrings = std::unordered_map<std::string_view, llk::cString*>;

struct tShared {
    u4 users = 0;
    tStrings* strings = nullptr;
    std::unordered_map<std::string, cFormula*>* formulas = nullptr;
    size_t formulaBytes = 0;
    size_t sweepAt = sShared::kFormulaBudget;
    u8 compiled = 0;
};

// The process-wide mutex. A plain std::mutex: it is constant-initialised, so
// it is usable before and after every other static of the library.
std::mutex gMutex;
tShared gShared;

// Under the mutex. Only the table hands out new references to a formula,
// and only under the mutex, so a count of 1 (the table's own) cannot rise
// while this runs: no node holds that formula, nor can one take it.
void SweepUnusedFormulas() {
    for (auto it = gShared.formulas->begin(); it != gShared.formulas->end();) {
        cFormula* formula = it->second;
        if (formula->RetainCount() == 1) {
            gShared.formulaBytes -= formula->Footprint();
            it = gShared.formulas->erase(it);
            formula->Release();
        } else {
            ++it;
        }
    }
    // Sweeps stay rare however much is in use: each waits for the table
    // to double.
    gShared.sweepAt = std::max(sShared::kFormulaBudget, 2 * gShared.formulaBytes);
}

} // namespace

bool sShared::Attach() {
    std::lock_guard<std::mutex> hold(gMutex);
    // The formula table outlives the runtimes (within its budget), so that
    // a text is compiled once however often runtimes come and go.
    if (!gShared.formulas &&
        !(gShared.formulas = new (std::nothrow) std::unordered_map<std::string, cFormula*>()))
        return false;
    if (gShared.users == 0 && !(gShared.strings = new (std::nothrow) tStrings())) return false;
    ++gShared.users;
    return true;
}

void sShared::Detach() {
    tStrings* strings = nullptr;
    {
        std::lock_guard<std::mutex> hold(gMutex);
        if (gShared.users == 0 || --gShared.users > 0) return;
        strings = gShared.strings;
        gShared.strings = nullptr;
    }
    if (!strings) return;
    for (auto& [text, string] : *strings)
        string->Release();
    delete strings;
}

llk::cString* sShared::Intern(const char* aText) {
    std::string_view text(aText ? aText : "");
    std::lock_guard<std::mutex> hold(gMutex);
    if (!gShared.strings) return nullptr;
    auto found = gShared.strings->find(text);
    if (found != gShared.strings->end()) return found->second;
    llk::cString* string = NewOwnedText(aText ? aText : "");
    if (!string) return nullptr;
    try {
        // Keyed by the string's own characters, which live as long as it.
        gShared.strings->emplace(std::string_view(string->Chars(), text.size()), string);
    } catch (...) {
        string->Release();
        return nullptr;
    }
    return string;
}

cFormula* sShared::Formula(const char* aText, const char** aError) {
    if (aError) *aError = nullptr;
    std::lock_guard<std::mutex> hold(gMutex);
    if (!gShared.formulas) {
        if (aError) *aError = "memory exhausted";
        return nullptr;
    }
    try {
        std::string key(aText ? aText : "");
        auto it = gShared.formulas->find(key);
        if (it != gShared.formulas->end()) return llk::Retained(it->second);
        const char* error = nullptr;
        cFormula* formula = cFormula::Compile(key.c_str(), &error);
        ++gShared.compiled;
        if (!formula) {
            if (aError) *aError = error;
            return nullptr;
        }
        try {
            gShared.formulas->emplace(std::move(key), formula);
        } catch (...) {
            formula->Release();
            throw;
        }
        llk::Retained(formula);
        gShared.formulaBytes += formula->Footprint();
        if (gShared.formulaBytes > gShared.sweepAt) SweepUnusedFormulas();
        return formula;
    } catch (...) {
        if (aError) *aError = "memory exhausted";
        return nullptr;
    }
}

cValue* sShared::Flag(bool aValue) {
    // Made once; the static reference keeps each alive.
    static cValue* const kFlags[2] = {[] {
                                          auto* no = new cValue();
                                          no->SetBool(false);
                                          no->Freeze(true);
                                          return no;
                                      }(),
                                      [] {
                                          auto* yes = new cValue();
                                          yes->SetBool(true);
                                          yes->Freeze(true);
                                          return yes;
                                      }()};
    return kFlags[aValue ? 1 : 0];
}

u4 sShared::InternedCount() {
    std::lock_guard<std::mutex> hold(gMutex);
    return gShared.strings ? static_cast<u4>(gShared.strings->size()) : 0;
}

u4 sShared::FormulaCount() {
    std::lock_guard<std::mutex> hold(gMutex);
    return gShared.formulas ? static_cast<u4>(gShared.formulas->size()) : 0;
}

size_t sShared::FormulaBytes() {
    std::lock_guard<std::mutex> hold(gMutex);
    return gShared.formulaBytes;
}

u8 sShared::CompileCount() {
    std::lock_guard<std::mutex> hold(gMutex);
    return gShared.compiled;
}

} // namespace gik
