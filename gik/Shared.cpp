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
    u8 compiled = 0;
};

// The process-wide mutex. A plain std::mutex: it is constant-initialised, so
// it is usable before and after every other static of the library.
std::mutex gMutex;
tShared gShared;

} // namespace

bool sShared::Attach() {
    std::lock_guard<std::mutex> hold(gMutex);
    // Compiled formulas stay for the life of the process, so that a text is
    // compiled once however many runtimes come and go.
    if (!gShared.formulas &&
        !(gShared.formulas = new (std::nothrow) std::unordered_map<std::string, cFormula*>()))
        return false;
    if (gShared.users == 0) {
        auto* strings = new (std::nothrow) llk::cStringCache();
        if (!strings) return false;
        if (strings->Initialize() != llk::kOk) {
            strings->Release();
            return false;
        }
        gShared.strings = strings;
    }
    ++gShared.users;
    return true;
}

void sShared::Detach() {
    llk::cStringCache* strings = nullptr;
    {
        std::lock_guard<std::mutex> hold(gMutex);
        if (gShared.users == 0 || --gShared.users > 0) return;
        strings = gShared.strings;
        gShared.strings = nullptr;
    }
    if (strings) strings->Release();
}

void sShared::ForgetUnused() {
    std::lock_guard<std::mutex> hold(gMutex);
    if (!gShared.formulas) return;
    for (auto it = gShared.formulas->begin(); it != gShared.formulas->end();) {
        if (it->second->RetainCount() == 1) {
            it->second->Release();
            it = gShared.formulas->erase(it);
        } else {
            ++it;
        }
    }
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
