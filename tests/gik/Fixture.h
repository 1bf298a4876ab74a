// Shared set-up of the kernel's tests: a pool, a runtime with an in-memory
// port called "Device", and small helpers to read and write by name.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "MemoryPort.h"
#include "gik/Node.h"
#include "gik/Runtime.h"
#include "gik/Value.h"
#include "kit/AutoreleasePool.h"
#include "kit/ObjectList.h"
#include "kit/String.h"

namespace test {

// A document with the usual wrapper, a "Root" category naming aFeatures,
// and a "Device" port.
inline std::string Document(const std::string& aNodes, const std::string& aFeatures) {
    std::string features;
    size_t at = 0;
    while (at < aFeatures.size()) {
        size_t end = aFeatures.find(' ', at);
        if (end == std::string::npos) end = aFeatures.size();
        if (end > at) features += "<pFeature>" + aFeatures.substr(at, end - at) + "</pFeature>";
        at = end + 1;
    }
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<RegisterDescription ModelName=\"T\" "
           "VendorName=\"T\">"
           "<Category Name=\"Root\">" +
           features + "</Category>" + aNodes + "<Port Name=\"Device\"/></RegisterDescription>";
}

// The directory of the real devices' documents.
inline std::string TestDataDir() {
    const char* root = getenv("TAVIK_SOURCE_DIR");
    return std::string(root ? root : ".") + "/../shared/testdata/genicam/";
}

class KernelTest : public ::testing::Test {
protected:
    void SetUp() override {
        mRuntime = llk::Retained(gik::cRuntime::New(false));
        ASSERT_NE(mRuntime, nullptr);
        mPort = llk::Retained(cMemoryPort::New(true));
        ASSERT_EQ(mRuntime->AttachPort("Device", mPort), 0);
        ASSERT_EQ(mRuntime->Prepare(), 0);
    }
    void TearDown() override {
        llk::ReleaseAndClear(mRuntime);
        llk::ReleaseAndClear(mPort);
    }

    // The same in the wide reading.
    llk::i4 LoadWide(const std::string& aNodes, const std::string& aFeatures) {
        mRuntime->SetReading(gik::tReading::Wide());
        return Load(aNodes, aFeatures);
    }
    // Process and Finalize; the first failure.
    llk::i4 Load(const std::string& aNodes, const std::string& aFeatures) {
        llk::i4 status =
            mRuntime->Process(Document(aNodes, aFeatures).c_str(), false, nullptr, false);
        if (status != 0) return status;
        return mRuntime->Finalize();
    }

    gik::pNode* Node(const char* aName) { return mRuntime->SeekNode(aName, false); }

    llk::i4 Get(const char* aName, gik::cValue& aValue) {
        gik::pNode* node = Node(aName);
        if (!node) return 5;
        return node->GetValue(mRuntime, aValue, nullptr);
    }
    llk::i8 GetInt(const char* aName, llk::i4* aStatus = nullptr) {
        gik::cValue v;
        llk::i4 status = Get(aName, v);
        if (aStatus) *aStatus = status;
        return v.Sint();
    }
    double GetReal(const char* aName, llk::i4* aStatus = nullptr) {
        gik::cValue v;
        llk::i4 status = Get(aName, v);
        if (aStatus) *aStatus = status;
        return v.Real();
    }
    std::string GetText(const char* aName, llk::i4* aStatus = nullptr) {
        gik::cValue v;
        llk::i4 status = Get(aName, v);
        if (aStatus) *aStatus = status;
        const char* text = nullptr;
        return v.Get(text) ? std::string(text) : std::string("<none>");
    }
    llk::i4 Set(const char* aName, const gik::cValue& aValue) {
        gik::pNode* node = Node(aName);
        if (!node) return 5;
        mRuntime->ClearPoked();
        return node->SetValue(mRuntime, &aValue, nullptr);
    }
    llk::i4 SetInt(const char* aName, llk::i8 aValue) {
        gik::cValue v;
        v.SetSigned(aValue);
        return Set(aName, v);
    }
    llk::i4 SetReal(const char* aName, double aValue) {
        gik::cValue v;
        v.SetReal(aValue);
        return Set(aName, v);
    }
    llk::i4 SetText(const char* aName, const char* aText) {
        gik::cValue v;
        v.SetText(aText);
        return Set(aName, v);
    }
    // Names in the poked list, in order, separated by blanks.
    std::string Poked() {
        std::string names;
        llk::cObjectList* list = mRuntime->Poked();
        for (llk::u4 i = 0; i < list->Count(); ++i) {
            if (!names.empty()) names += ' ';
            names += static_cast<gik::pNode*>(list->AtIndex(i))->NameText();
        }
        return names;
    }
    std::string Features() {
        std::string names;
        llk::cObjectList* list = mRuntime->Nodes();
        for (llk::u4 i = 0; i < list->Count(); ++i) {
            if (!names.empty()) names += ' ';
            names += static_cast<gik::pNode*>(list->AtIndex(i))->NameText();
        }
        return names;
    }

    llk::uAutoreleasePool mPool;
    gik::cRuntime* mRuntime = nullptr;
    cMemoryPort* mPort = nullptr;
};

} // namespace test
