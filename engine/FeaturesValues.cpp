// cFeatures: typed values of features: get, set, range, increment, enum
// entries, commands and raw bytes.
#include <algorithm>
#include <cstring>
#include <string>

#include "engine/Features.h"
#include "gik/CommandNode.h"
#include "gik/EnumNode.h"
#include "gik/MemoryNode.h"
#include "gik/RegisterNode.h"
#include "gik/Value.h"
#include "kit/ObjectList.h"

namespace tvk {

namespace {
llk::i8 AsSint(const gik::cValue& aValue) {
    return aValue.Sint();
}
double AsReal(const gik::cValue& aValue) {
    return aValue.Real();
}
bool AsBool(const gik::cValue& aValue) {
    return aValue.Bool();
}
} // namespace

template <class T, class F>
llk::i4 cFeatures::Get(const char* aName, tFeatureData aType, bool aFeatureOnly, T* aOut,
                       F aConvert) {
    if (!aOut) return kFeatureNullOutput;
    gik::pNode* node = nullptr;
    gik::cValue value;
    llk::i4 status = Seek(aName, aType, node, aFeatureOnly);
    if (status == llk::kOk) status = node->GetValue(mRuntime, value, nullptr);
    if (status == llk::kOk) *aOut = aConvert(value);
    return status;
}

llk::i4 cFeatures::Set(const char* aName, tFeatureData aType, bool aFeatureOnly,
                       const gik::cValue* aValue) {
    gik::pNode* node = nullptr;
    llk::i4 status = Seek(aName, aType, node, aFeatureOnly);
    if (status != llk::kOk) return status;
    return aValue ? SetNode(node, aValue) : llk::kNoMemory;
}

llk::i4 cFeatures::FeatureIntGet(const char* aName, llk::i8* aValue) {
    return Get(aName, kFeatureInt, true, aValue, AsSint);
}

llk::i4 cFeatures::FeatureIntSet(const char* aName, llk::i8 aValue) {
    return Set(aName, kFeatureInt, true, gik::cValue::NewSigned(aValue));
}

llk::i4 cFeatures::Range(const char* aName, tFeatureData aType, gik::cValue& aMin,
                         gik::cValue& aMax) {
    gik::pNode* node = nullptr;
    llk::i4 status = Seek(aName, aType, node);
    return status == llk::kOk ? node->GetRange(mRuntime, aMin, aMax, nullptr) : status;
}

llk::i4 cFeatures::Increment(const char* aName, tFeatureData aType, gik::cValue& aValue) {
    gik::pNode* node = nullptr;
    llk::i4 status = Seek(aName, aType, node);
    return status == llk::kOk ? node->GetIncrement(mRuntime, aValue, nullptr) : status;
}

llk::i4 cFeatures::FeatureIntRange(const char* aName, llk::i8* aMin, llk::i8* aMax) {
    gik::cValue min, max;
    llk::i4 status = Range(aName, kFeatureInt, min, max);
    if (status != llk::kOk) return status;
    if (aMin) *aMin = min.Sint();
    if (aMax) *aMax = max.Sint();
    return llk::kOk;
}

llk::i4 cFeatures::FeatureIntIncrement(const char* aName, llk::i8* aValue, bool& aGotOne) {
    if (!aValue) return kFeatureNullOutput;
    gik::cValue increment;
    llk::i4 status = Increment(aName, kFeatureInt, increment);
    if (status != llk::kOk) return status;
    aGotOne = !increment.IsAbsent();
    if (aGotOne) *aValue = increment.Sint();
    return llk::kOk;
}

llk::i4 cFeatures::FeatureFloatGet(const char* aName, double* aValue) {
    return Get(aName, kFeatureFloat, true, aValue, AsReal);
}

llk::i4 cFeatures::FeatureFloatSet(const char* aName, double aValue) {
    return Set(aName, kFeatureFloat, true, gik::cValue::NewReal(aValue));
}

llk::i4 cFeatures::FeatureFloatRange(const char* aName, double* aMin, double* aMax) {
    gik::cValue min, max;
    llk::i4 status = Range(aName, kFeatureFloat, min, max);
    if (status != llk::kOk) return status;
    if (aMin) *aMin = min.Real();
    if (aMax) *aMax = max.Real();
    return llk::kOk;
}

llk::i4 cFeatures::FeatureFloatIncrement(const char* aName, double* aValue, bool& aGotOne) {
    if (!aValue) return kFeatureNullOutput;
    gik::cValue increment;
    llk::i4 status = Increment(aName, kFeatureFloat, increment);
    if (status != llk::kOk) return status;
    aGotOne = !increment.IsAbsent();
    if (aGotOne) *aValue = increment.Real();
    return llk::kOk;
}

llk::i4 cFeatures::FeatureStringGet(const char* aName, char* aBuffer, llk::u4& aSize) {
    std::string text;
    llk::i4 status = Get(aName, kFeatureString, true, &text, [](const gik::cValue& aValue) {
        const char* chars = "";
        aValue.Get(chars);
        return std::string(chars);
    });
    if (status != llk::kOk) return status;
    llk::u4 needed = static_cast<llk::u4>(text.size()) + 1;
    if (!aBuffer) {
        aSize = needed;
        return llk::kOk;
    }
    // A short buffer truncates without error; the terminator stays inside it.
    llk::u4 written = std::min(needed, aSize);
    if (written == 0) return llk::kOk;
    std::memcpy(aBuffer, text.c_str(), written - 1);
    aBuffer[written - 1] = '\0';
    aSize = written;
    return llk::kOk;
}

llk::i4 cFeatures::FeatureStringSet(const char* aName, const char* aValue) {
    llk::cString* text = aValue ? llk::cString::New(aValue, false) : nullptr;
    return Set(aName, kFeatureString, true, text ? gik::cValue::NewText(text) : nullptr);
}

llk::i4 cFeatures::FeatureEnumGet(const char* aName, const char*& aValue) {
    return Get(aName, kFeatureEnum, true, &aValue, [](const gik::cValue& aEntry) {
        return aEntry.String() ? Lasting(aEntry.String()) : "";
    });
}

llk::i4 cFeatures::FeatureEnumSet(const char* aName, const char* aValue) {
    return Set(aName, kFeatureEnum, true, aValue ? gik::cValue::NewText(aValue) : nullptr);
}

llk::i4 cFeatures::FeatureEnumRange(const char* aName, const char** aArray, llk::u4& aLength) {
    gik::pNode* node = nullptr;
    llk::cObjectList* names = nullptr;
    llk::i4 status = Seek(aName, kFeatureEnum, node);
    if (status == llk::kOk)
        status = static_cast<gik::cEnumNode*>(node)->GetRange(mRuntime, names, nullptr);
    if (status != llk::kOk) return status;
    llk::u4 count = names->Count();
    if (!aArray || aLength == 0) {
        aLength = count;
        return llk::kOk;
    }
    aLength = std::min(aLength, count);
    for (llk::u4 i = 0; i < aLength; ++i) {
        llk::cString* text = static_cast<gik::cValue*>(names->AtIndex(i))->String();
        aArray[i] = text ? Lasting(text) : "";
    }
    return llk::kOk;
}

namespace {
// An entry's name as the kernel looks entries up.
gik::cValue* EntryName(const char* aValue) {
    return aValue ? gik::cValue::NewText(aValue) : nullptr;
}
} // namespace

llk::i4 cFeatures::FeatureEnumValueIsAvailable(const char* aName, const char* aValue,
                                               bool& aAvailable) {
    gik::pNode* node = nullptr;
    llk::i4 status = Seek(aName, kFeatureEnum, node);
    if (status != llk::kOk) return status;
    gik::cValue* entry = EntryName(aValue);
    if (!entry) return llk::kNoMemory;
    return static_cast<gik::cEnumNode*>(node)->IsValueAvailable(mRuntime, *entry, aAvailable);
}

llk::i4 cFeatures::FeatureEnumValueAsInteger(const char* aName, const char* aValue,
                                             llk::i8& aInteger) {
    gik::pNode* node = nullptr;
    llk::i4 status = Seek(aName, kFeatureEnum, node);
    if (status != llk::kOk) return status;
    gik::cValue* entry = EntryName(aValue);
    if (!entry) return llk::kNoMemory;
    return static_cast<gik::cEnumNode*>(node)->GetValueAsInteger(mRuntime, *entry, aInteger);
}

llk::i4 cFeatures::FeatureEnumValueAsString(const char* aName, llk::i8 aValue, const char*& aText) {
    gik::pNode* node = nullptr;
    llk::i4 status = Seek(aName, kFeatureEnum, node);
    if (status != llk::kOk) return status;
    gik::cValue number;
    number.SetSigned(aValue);
    llk::cString* text = nullptr;
    status = static_cast<gik::cEnumNode*>(node)->GetValueAsString(mRuntime, number, text);
    if (status == llk::kOk) aText = text ? Lasting(text) : "";
    return status;
}

llk::i4 cFeatures::FeatureEnumValueInfo(const char* aName, const char* aValue,
                                        tFeatureEnumEntry& aEntry) {
    gik::pNode* node = nullptr;
    llk::i4 status = Seek(aName, kFeatureEnum, node);
    if (status != llk::kOk) return status;
    gik::cValue* entry = EntryName(aValue);
    if (!entry) return llk::kNoMemory;
    auto* enumeration = static_cast<gik::cEnumNode*>(node);
    llk::i8 integer = 0;
    llk::cString *name = nullptr, *description = nullptr, *display = nullptr;
    llk::cString *tooltip = nullptr, *nameSpace = nullptr;
    gik::pNode::tVisibility visibility = gik::pNode::kVisibilityUnknown;
    status = enumeration->GetValueAsInteger(mRuntime, *entry, integer);
    if (status == llk::kOk)
        status = enumeration->GetValueNames(mRuntime, *entry, name, description, display);
    if (status == llk::kOk)
        status = enumeration->GetValueInfo(mRuntime, *entry, visibility, tooltip, nameSpace);
    if (status != llk::kOk) return status;
    aEntry.name = Lasting(name);
    aEntry.displayName = Lasting(display);
    aEntry.visibility = visibility;
    aEntry.tooltip = Lasting(tooltip);
    aEntry.description = Lasting(description);
    aEntry.sfncNamespace = Lasting(nameSpace);
    aEntry.intValue = integer;
    return llk::kOk;
}

llk::i4 cFeatures::FeatureBoolGet(const char* aName, bool* aValue) {
    return Get(aName, kFeatureBool, true, aValue, AsBool);
}

llk::i4 cFeatures::FeatureBoolSet(const char* aName, bool aValue) {
    return Set(aName, kFeatureBool, true, gik::cValue::NewBool(aValue));
}

llk::i4 cFeatures::NodeIntGet(const char* aName, llk::i8& aValue) {
    return Get(aName, kFeatureUnknown, false, &aValue, AsSint);
}

llk::i4 cFeatures::NodeIntSet(const char* aName, llk::i8 aValue) {
    return Set(aName, kFeatureUnknown, false, gik::cValue::NewSigned(aValue));
}

llk::i4 cFeatures::NodeBoolGet(const char* aName, bool& aValue) {
    return Get(aName, kFeatureUnknown, false, &aValue, AsBool);
}

llk::i4 cFeatures::NodeBoolSet(const char* aName, bool aValue) {
    return Set(aName, kFeatureUnknown, false, gik::cValue::NewBool(aValue));
}

llk::i4 cFeatures::FeatureCommandIsDone(const char* aName, bool* aDone) {
    if (!aDone) return kFeatureNullOutput;
    gik::pNode* node = nullptr;
    llk::i4 status = Seek(aName, kFeatureCommand, node);
    if (status != llk::kOk) return status;
    // A command that cannot be read has nothing left to do.
    if (!node->IsReadable(mRuntime)) {
        *aDone = true;
        return llk::kOk;
    }
    bool done = false;
    status = static_cast<gik::cCommandNode*>(node)->Completed(mRuntime, done);
    if (status == llk::kOk) *aDone = done;
    return status;
}

llk::i4 cFeatures::FeatureCommandExecute(const char* aName) {
    gik::pNode* node = nullptr;
    llk::i4 status = Seek(aName, kFeatureCommand, node);
    return status == llk::kOk ? SetNode(node, nullptr) : status;
}

namespace {
bool IsRegister(llk::u4 aTag) {
    return aTag >= gik::pNode::kTagIntReg && aTag <= gik::pNode::kTagFloatReg;
}
} // namespace

llk::i4 cFeatures::Raw(const char* aName, void* aInto, const void* aFrom, llk::u4 aSize,
                       llk::u4& aDone) {
    aDone = 0;
    gik::pNode* node = nullptr;
    llk::i4 status = Seek(aName, kFeatureUnknown, node);
    if (status != llk::kOk) return status;
    gik::pNode* target = node->Target(mRuntime);
    llk::u4 tag = target->ClassType();
    if (IsRegister(tag)) {
        auto* reg = static_cast<gik::pRegisterNode*>(target);
        llk::u4 size = std::min(aSize, reg->Length(mRuntime));
        if (aInto) return reg->Fetch(mRuntime, size, aInto, aDone);
        mRuntime->ClearPoked();
        status = reg->Store(mRuntime, size, aFrom, aDone);
    } else if (tag == gik::pNode::kTagMemory) {
        auto* memory = static_cast<gik::cMemoryNode*>(target);
        llk::u4 size = std::min(aSize, memory->Length(mRuntime));
        if (aInto) return memory->Fetch(mRuntime, size, aInto, aDone);
        mRuntime->ClearPoked();
        status = memory->Store(mRuntime, size, aFrom, aDone);
    } else {
        return kFeatureWrongType;
    }
    if (status == llk::kOk) Announce(node);
    return status;
}

llk::i4 cFeatures::FeatureRawGet(const char* aName, void* aBuffer, llk::u4 aSize, llk::u4& aDone) {
    if (!aBuffer) return kFeatureNullOutput;
    return Raw(aName, aBuffer, nullptr, aSize, aDone);
}

llk::i4 cFeatures::FeatureRawSet(const char* aName, const void* aBuffer, llk::u4 aSize,
                                 llk::u4& aDone) {
    if (!aBuffer) return kFeatureNullOutput;
    return Raw(aName, nullptr, aBuffer, aSize, aDone);
}

llk::i4 cFeatures::FeatureRawLen(const char* aName, llk::u4* aLength) {
    if (!aLength) return kFeatureNullOutput;
    gik::pNode* node = nullptr;
    llk::i4 status = Seek(aName, kFeatureUnknown, node);
    if (status != llk::kOk) return status;
    gik::pNode* target = node->Target(mRuntime);
    llk::u4 tag = target->ClassType();
    if (IsRegister(tag))
        *aLength = static_cast<gik::pRegisterNode*>(target)->Length(mRuntime);
    else if (tag == gik::pNode::kTagMemory)
        *aLength = static_cast<gik::cMemoryNode*>(target)->Length(mRuntime);
    else
        return kFeatureWrongType;
    return llk::kOk;
}

} // namespace tvk
