#include "gik/FormulaNode.h"

#include <tinyxml.h>

#include "gik/Formula.h"
#include "gik/Nesting.h"
#include "gik/Runtime.h"
#include "gik/Shared.h"
#include "gik/Text.h"
#include "gik/Value.h"
#include "gik/Variables.h"
#include "kit/Env.h"
#include "kit/String.h"

namespace gik {

pFormulaNode::tVariable::~tVariable() {
    llk::ReleaseAndClear(name);
}

pFormulaNode::~pFormulaNode() {
    for (tVariable* v : mVariables)
        delete v;
    llk::ReleaseAndClear(mValues);
}

i4 pFormulaNode::ParseVariables(cRuntime* aRuntime, const TiXmlElement* aElement) {
    for (const char* kind : {"Variable", "pVariable"}) {
        for (const TiXmlElement* e = aElement->FirstChildElement(kind); e;
             e = e->NextSiblingElement(kind)) {
            auto* v = new (std::nothrow) tVariable();
            if (!v) return kNoMemory;
            try {
                mVariables.push_back(v);
            } catch (...) {
                delete v;
                return kNoMemory;
            }
            const char* name = e->Attribute("Name");
            if (!(v->name = aRuntime->CacheString(name ? name : "", true))) return kNoMemory;
            i4 status = v->value.SetName(aRuntime, e->GetText() ? e->GetText() : "");
            if (status != kOk) return status;
        }
    }
    auto* values = new (std::nothrow) cVariables();
    if (!values) return kNoMemory;
    if (values->Initialize(static_cast<u4>(mVariables.size())) != kOk) {
        values->Release();
        return kNoMemory;
    }
    mValues = values;
    return kOk;
}

i4 pFormulaNode::ParseFormula(const TiXmlElement* aElement, const char* aName,
                              cFormula*& aFormula) {
    const char* text = sText::ChildText(aElement, aName);
    const char* error = nullptr;
    aFormula = sShared::Formula(text ? text : "", &error);
    if (!aFormula) {
        (void)error; // "syntax error" or "memory exhausted"
        llk::sEnv::PrintError("Parsing of '%s' failed", text ? text : "");
        return kNoMemory;
    }
    return kOk;
}

i4 pFormulaNode::Resolve(cRuntime* aRuntime) {
    i4 status = pNode::Resolve(aRuntime);
    for (tVariable* v : mVariables) {
        if (status != kOk) break;
        status = v->value.Resolve(this, aRuntime, true);
    }
    return status;
}

bool pFormulaNode::IsNoCache(cRuntime* aRuntime) {
    if (pNode::IsNoCache(aRuntime)) return true;
    uNest nest;
    if (!nest) return false;
    for (tVariable* v : mVariables)
        if (pNode* target = v->value.Node())
            if (target->IsNoCache(aRuntime)) return true;
    return false;
}

void pFormulaNode::SetImplemented(bool aImplemented) {
    PropagateImplemented([&] {
        for (tVariable* v : mVariables)
            if (pNode* target = v->value.Node()) target->SetImplemented(aImplemented);
    });
    SetImplementedBase(aImplemented);
}

u8 pFormulaNode::PollingTime() {
    if (mPollingTime != 0) return mPollingTime;
    uNest nest;
    if (!nest) return 0;
    u8 smallest = 0;
    for (tVariable* v : mVariables)
        if (pNode* target = v->value.Node()) {
            u8 t = target->PollingTime();
            if (t != 0 && (smallest == 0 || t < smallest)) smallest = t;
        }
    return smallest;
}

i4 pFormulaNode::ReadVariables(cRuntime* aRuntime, tBound aBound) {
    uNest nest;
    if (!nest) return kTooDeep;
    for (tVariable* v : mVariables) {
        cValue value;
        i4 status;
        if (aBound == kCurrent || !v->value.Node()) {
            status = v->value.Get(this, aRuntime, value);
        } else {
            cValue minimum, maximum;
            uNest inner;
            if (!inner) return kTooDeep;
            status = v->value.Node()->GetRange(aRuntime, minimum, maximum, this);
            value.Assign(aBound == kMinimum ? minimum : maximum);
        }
        if (status != kOk) return status;
        if (value.IsAbsent()) return kNoValue;
        if (mIsFloat && value.Flavour() != kFlavourReal && value.HasNumber())
            value.SetReal(value.Real());
        if ((status = mValues->Set(v->name->Chars(), value)) != kOk) return status;
    }
    return kOk;
}

void pFormulaNode::Convert(const tScalar& aResult, cValue& aValue) const {
    if (mIsFloat) {
        aValue.SetReal(aResult.AsReal());
    } else if (aResult.number && aResult.flavour != kFlavourReal) {
        aValue.SetScalar(aResult);
    } else {
        aValue.SetSigned(aResult.AsSint());
    }
}

i4 pFormulaNode::Evaluate(const cFormula* aFormula, cValue& aValue) const {
    tScalar result;
    if (!aFormula || !aFormula->Evaluate(mValues, result)) return kNoValue;
    Convert(result, aValue);
    return kOk;
}

} // namespace gik
