#include "gik/Shared.h"

#include <mutex>
#include <string>
#include <unordered_map>

#include "gik/Formula.h"
#include "kit/StringCache.h"

namespace gik {

namespace {

struct tShared {
    u4 users = 0;
    llk::cStringCache* strings = nullptr;
    std::unordered_map<std::string, cFormula*>* formulas = nullptr;
    size_t sweepAt = 256;
    u8 compiled = 0;
};

// The process-wide mutex. A plain std::mutex: it is constant-initialised, so
// it is usable before and after every other static of the library.
std::mutex gMutex;
tShared gShared;

void ReleaseFormulas(std::unordered_map<std::string, cFormula*>* aTable) {
    if (!aTable) return;
    for (auto& entry : *aTable)
        entry.second->Release();
    delete aTable;
}

// Drops formulas that no node uses any more, when the table has doubled.
void Sweep() {
    auto* table = gShared.formulas;
    if (table->size() < gShared.sweepAt) return;
    for (auto it = table->begin(); it != table->end();) {
        if (it->second->RetainCount() == 1) {
            it->second->Release();
            it = table->erase(it);
        } else {
            ++it;
        }
    }
    gShared.sweepAt = table->size() * 2 > 256 ? table->size() * 2 : 256;
}

} // namespace

bool sShared::Attach() {
    std::lock_guard<std::mutex> hold(gMutex);
    if (gShared.users == 0) {
        auto* strings = new (std::nothrow) llk::cStringCache();
        if (!strings) return false;
        if (strings->Initialize() != llk::kOk) {
            strings->Release();
            return false;
        }
        auto* formulas = new (std::nothrow) std::unordered_map<std::string, cFormula*>();
        if (!formulas) {
            strings->Release();
            return false;
        }
        gShared.strings = strings;
        gShared.formulas = formulas;
        gShared.sweepAt = 256;
    }
    ++gShared.users;
    return true;
}

void sShared::Detach() {
    llk::cStringCache* strings = nullptr;
    std::unordered_map<std::string, cFormula*>* formulas = nullptr;
    {
        std::lock_guard<std::mutex> hold(gMutex);
        if (gShared.users == 0) return;
        if (--gShared.users > 0) return;
        strings = gShared.strings;
        formulas = gShared.formulas;
        gShared.strings = nullptr;
        gShared.formulas = nullptr;
    }
    ReleaseFormulas(formulas);
    if (strings) strings->Release();
}

llk::cString* sShared::Intern(const char* aText) {
    std::lock_guard<std::mutex> hold(gMutex);
    if (!gShared.strings) return nullptr;
    // The cache makes its copies with New: the caller holds a pool, as
    // every caller of the kit does.
    return gShared.strings->Store(aText ? aText : "");
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
        Sweep();
        try {
            gShared.formulas->emplace(std::move(key), formula);
        } catch (...) {
            formula->Release();
            throw;
        }
        return llk::Retained(formula);
    } catch (...) {
        if (aError) *aError = "memory exhausted";
        return nullptr;
    }
}

u4 sShared::InternedCount() {
    std::lock_guard<std::mutex> hold(gMutex);
    return gShared.strings ? gShared.strings->Count() : 0;
}

u4 sShared::FormulaCount() {
    std::lock_guard<std::mutex> hold(gMutex);
    return gShared.formulas ? static_cast<u4>(gShared.formulas->size()) : 0;
}

u8 sShared::CompileCount() {
    std::lock_guard<std::mutex> hold(gMutex);
    return gShared.compiled;
}

} // namespace gik
