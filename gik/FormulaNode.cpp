#include "gik/FormulaNode.h"

#include <tinyxml.h>

#include "gik/EnumNode.h"
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

pFormulaNode::tPart::~tPart() {
    llk::ReleaseAndClear(name);
    llk::ReleaseAndClear(constant);
    llk::ReleaseAndClear(formula);
}

pFormulaNode::~pFormulaNode() {
    for (tVariable* v : mVariables)
        delete v;
    for (tPart* part : mConstants)
        delete part;
    for (tPart* part : mExpressions)
        delete part;
    llk::ReleaseAndClear(mValues);
}

namespace {

// A new part in aParts, named by the element's "Name" attribute.
pFormulaNode::tPart* AddPart(cRuntime* aRuntime, const TiXmlElement* aElement,
                             std::vector<pFormulaNode::tPart*>& aParts) {
    auto* part = new (std::nothrow) pFormulaNode::tPart();
    if (!part) return nullptr;
    try {
        aParts.push_back(part);
    } catch (...) {
        delete part;
        return nullptr;
    }
    const char* name = aElement->Attribute("Name");
    part->name = aRuntime->CacheString(name ? name : "", true);
    return part->name ? part : nullptr;
}

// A constant's text: a whole integer (signed, decimal or hexadecimal), or
// else a real.
bool ReadConstant(const char* aText, cValue& aValue) {
    u8 bits = 0;
    if (sText::ReadAddress(aText, bits)) return aValue.SetSigned(static_cast<i8>(bits));
    double real = 0.0;
    return sText::ReadReal(aText, real) && aValue.SetReal(real);
}

} // namespace

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
    mReading = aRuntime->Reading();
    if (mReading.Has(tReading::kFormulaParts)) {
        for (const TiXmlElement* e = aElement->FirstChildElement("Constant"); e;
             e = e->NextSiblingElement("Constant")) {
            tPart* part = AddPart(aRuntime, e, mConstants);
            if (!part || !(part->constant = new (std::nothrow) cValue())) return kNoMemory;
            if (!ReadConstant(e->GetText(), *part->constant)) return kBadNumber;
        }
        for (const TiXmlElement* e = aElement->FirstChildElement("Expression"); e;
             e = e->NextSiblingElement("Expression")) {
            tPart* part = AddPart(aRuntime, e, mExpressions);
            if (!part) return kNoMemory;
            i4 status = ParseFormula(e, nullptr, part->formula);
            if (status != kOk) return status;
        }
    }
    auto* values = new (std::nothrow) cVariables();
    if (!values) return kNoMemory;
    if (values->Initialize(
            static_cast<u4>(mVariables.size() + mConstants.size() + mExpressions.size())) != kOk) {
        values->Release();
        return kNoMemory;
    }
    mValues = values;
    return kOk;
}

i4 pFormulaNode::ParseFormula(const TiXmlElement* aElement, const char* aName,
                              cFormula*& aFormula) {
    // No child name: the element's own text.
    const char* text = aName ? sText::ChildText(aElement, aName) : sText::Text(aElement);
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

cEnumNode* pFormulaNode::NumberedEnumeration(pNode* aNode) const {
    if (!aNode || aNode->ClassType() != kTagEnumeration || !mReading.Has(tReading::kEnumNumbers))
        return nullptr;
    return static_cast<cEnumNode*>(aNode);
}

i4 pFormulaNode::ReadInput(cRuntime* aRuntime, const tValue& aInput, cValue& aValue) {
    if (cEnumNode* enumeration = NumberedEnumeration(aInput.Node())) {
        uNest nest;
        return nest ? enumeration->GetIntValue(aRuntime, aValue) : kTooDeep;
    }
    return aInput.Get(this, aRuntime, aValue);
}

i4 pFormulaNode::InputRange(cRuntime* aRuntime, pNode* aInput, cValue& aMinimum, cValue& aMaximum) {
    uNest nest;
    if (!nest) return kTooDeep;
    if (cEnumNode* enumeration = NumberedEnumeration(aInput))
        return enumeration->GetNumberRange(aRuntime, aMinimum, aMaximum);
    return aInput->GetRange(aRuntime, aMinimum, aMaximum, this);
}

i4 pFormulaNode::SetVariable(const char* aName, cValue& aValue) {
    if (mIsFloat && !aValue.IsAbsent() && aValue.Flavour() != kFlavourReal)
        aValue.SetReal(aValue.Real());
    return mValues->Set(aName, aValue);
}

i4 pFormulaNode::ReadVariables(cRuntime* aRuntime, tBound aBound) {
    uNest nest;
    if (!nest) return kTooDeep;
    for (tVariable* v : mVariables) {
        cValue value;
        i4 status;
        if (aBound == kCurrent || !v->value.Node()) {
            status = ReadInput(aRuntime, v->value, value);
        } else {
            cValue minimum, maximum;
            status = InputRange(aRuntime, v->value.Node(), minimum, maximum);
            value.Assign(aBound == kMinimum ? minimum : maximum);
        }
        if (status != kOk) return status;
        if (value.IsAbsent()) return kNoValue;
        if ((status = SetVariable(v->name->Chars(), value)) != kOk) return status;
    }
    // A constant of the same name stands over a variable.
    for (tPart* part : mConstants) {
        cValue value;
        value.Assign(*part->constant);
        i4 status = SetVariable(part->name->Chars(), value);
        if (status != kOk) return status;
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

i4 pFormulaNode::Evaluate(const cFormula* aFormula, cValue& aValue) {
    // Each expression over the variables and constants (and TO or FROM);
    // one with no value leaves its name unset.
    for (tPart* part : mExpressions) {
        tScalar result;
        i4 status = part->formula->Evaluate(mValues, result, mReading)
                        ? mValues->Set(part->name->Chars(), result)
                        : mValues->Set(part->name->Chars(), tScalar());
        if (status != kOk) return status;
    }
    tScalar result;
    if (!aFormula || !aFormula->Evaluate(mValues, result, mReading)) return kNoValue;
    Convert(result, aValue);
    return kOk;
}

} // namespace gik
