#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>

#include "engine/Global.h"
#include "kit/AutoreleasePool.h"
#include "kit/Env.h"
#include "kit/ObjectList.h"
#include "kit/XMLBundle.h"

using namespace tvk;

namespace {

class cTestProxy : public pProxy {
public:
    static cTestProxy* New(llk::u4 aType, const char* aId = nullptr,
                           const pProxy* aParent = nullptr) {
        return Make<cTestProxy>(aType, aId, aParent);
    }
    llk::i4 Initialize(llk::u4 aType, const char* aId, const pProxy* aParent) {
        mType = aType;
        if (aId) SetIdentifier(llk::cString::New(aId, false));
        SetParent(aParent);
        return llk::kOk;
    }
    llk::u4 ClassType() const override { return mType; }

private:
    llk::u4 mType = 0;
};

class GlobalTest : public ::testing::Test {
protected:
    void SetUp() override { mGlobal = llk::Retained(cGlobal::New(nullptr)); }
    void TearDown() override { llk::ReleaseAndClear(mGlobal); }
    llk::uAutoreleasePool mPool;
    cGlobal* mGlobal = nullptr;
};

TEST_F(GlobalTest, OneInstanceAtATime) {
    ASSERT_NE(mGlobal, nullptr);
    EXPECT_EQ(cGlobal::Shared(), mGlobal);
    EXPECT_EQ(cGlobal::New(nullptr), nullptr);
}

TEST_F(GlobalTest, SettingsFileSitsBesideTheLibrary) {
    char path[256];
    ASSERT_TRUE(cGlobal::SettingsPath("/opt/lib/libTavikC.so", path, sizeof(path)));
    EXPECT_STREQ(path, "/opt/lib/libTavikC.xml");
    ASSERT_TRUE(cGlobal::SettingsPath("/opt/lib/libTavikC.so.1", path, sizeof(path)));
    EXPECT_STREQ(path, "./TavikC.xml");
    ASSERT_TRUE(cGlobal::SettingsPath("/opt/lib.d/tavik", path, sizeof(path)));
    EXPECT_STREQ(path, "/opt/lib.d/tavik");
    EXPECT_FALSE(cGlobal::SettingsPath("/opt/lib/libTavikC.so", path, 8));
}

TEST_F(GlobalTest, HandlesAreUniqueAndWithinTheirRange) {
    llk::sEnv::SeedRandom(99);
    std::set<llk::u4> handles;
    for (int i = 0; i < 500; ++i) {
        llk::u4 handle = 0;
        cTestProxy* proxy = cTestProxy::New(kTypeCameraProxy);
        ASSERT_EQ(mGlobal->Insert(proxy, &handle), llk::kOk);
        EXPECT_GE(handle, 100u);
        EXPECT_LE(handle, 10000u);
        EXPECT_EQ(proxy->Handle(), handle);
        EXPECT_TRUE(handles.insert(handle).second);
    }
    mGlobal->RemoveAll();
    mPool.Sink();
}

TEST_F(GlobalTest, InsertSearchRemoveByTypeHandleAndIdentifier) {
    cTestProxy* interface = cTestProxy::New(kTypeInterfaceProxy, "IF-1");
    cTestProxy* camera = cTestProxy::New(kTypeCameraProxy, "CAM-1", interface);
    llk::u4 ifHandle = 0, camHandle = 0;
    ASSERT_EQ(mGlobal->Insert(interface, &ifHandle), llk::kOk);
    ASSERT_EQ(mGlobal->Insert(camera, &camHandle), llk::kOk);
    EXPECT_EQ(mGlobal->Insert(camera, nullptr), llk::kDuplicate);

    pProxy* found = mGlobal->Search(kTypeCameraProxy, camHandle);
    EXPECT_EQ(found, camera);
    found->Release();
    EXPECT_EQ(mGlobal->Search(kTypeCameraProxy, ifHandle), nullptr);
    found = mGlobal->Search(kTypeCameraProxy, interface);
    EXPECT_EQ(found, camera);
    found->Release();
    llk::u4 handle = 0;
    found = mGlobal->Search(kTypeInterfaceProxy, "IF-1", &handle);
    EXPECT_EQ(found, interface);
    EXPECT_EQ(handle, ifHandle);
    found->Release();
    EXPECT_EQ(mGlobal->Search(kTypeInterfaceProxy, "IF-", &handle), nullptr);

    llk::cObjectList* list = llk::cObjectList::New(4, true);
    mGlobal->Enumerate(kTypeInterfaceProxy, list);
    EXPECT_EQ(list->Count(), 1u);

    EXPECT_EQ(mGlobal->Remove(kTypeInterfaceProxy, camHandle), llk::kNotFound);
    camera->Retain();
    EXPECT_EQ(mGlobal->Remove(camera), llk::kOk);
    EXPECT_EQ(camera->Handle(), 0u);
    EXPECT_EQ(mGlobal->Remove(camera), llk::kNotFound);
    camera->Release();
    mGlobal->RemoveAll(kTypeInterfaceProxy);
    EXPECT_EQ(mGlobal->Search(ifHandle), nullptr);
}

TEST_F(GlobalTest, DisabledTableRefusesInserts) {
    mGlobal->Disable(true);
    EXPECT_EQ(mGlobal->Insert(cTestProxy::New(kTypeCameraProxy), nullptr), llk::kRefused);
    mGlobal->Disable(false);
    EXPECT_EQ(mGlobal->Insert(cTestProxy::New(kTypeCameraProxy), nullptr), llk::kOk);
    mGlobal->RemoveAll();
}

TEST_F(GlobalTest, PoolsAndCache) {
    EXPECT_EQ(mGlobal->Recycle("cRequest"), nullptr);
    cTestProxy* object = cTestProxy::New(0);
    EXPECT_EQ(mGlobal->Discard("cRequest", object), llk::kOk);
    EXPECT_EQ(mGlobal->Recycle("cRequest"), object);
    llk::cString* a = mGlobal->Cache("Width");
    EXPECT_EQ(mGlobal->Cache("Width"), a);
    EXPECT_STREQ(a->Chars(), "Width");
}

TEST_F(GlobalTest, TheWideReadingComesFromTheSettingUnlessTheEnvironmentChooses) {
    std::string path = ::testing::TempDir() + "tavik-wide-" + std::to_string(getpid()) + ".xml";
    auto settings = [&](const char* aValue) {
        FILE* file = fopen(path.c_str(), "w");
        fprintf(file, "<Settings><Kernel><WideReading>%s</WideReading></Kernel></Settings>",
                aValue);
        fclose(file);
        return llk::cXMLBundle::New(path.c_str());
    };
    unsetenv(cGlobal::kWideReadingVariable);
    EXPECT_FALSE(cGlobal::WideReading(nullptr)); // no settings: strict
    EXPECT_FALSE(cGlobal::WideReading());
    EXPECT_TRUE(cGlobal::WideReading(settings("True")));
    EXPECT_FALSE(cGlobal::WideReading(settings("False")));
    EXPECT_FALSE(cGlobal::WideReading(settings("maybe")));
    setenv(cGlobal::kWideReadingVariable, "1", 1);
    EXPECT_TRUE(cGlobal::WideReading(settings("False")));
    setenv(cGlobal::kWideReadingVariable, "0", 1);
    EXPECT_FALSE(cGlobal::WideReading(settings("True")));
    setenv(cGlobal::kWideReadingVariable, "yes", 1); // neither: the setting decides
    EXPECT_TRUE(cGlobal::WideReading(settings("True")));
    unsetenv(cGlobal::kWideReadingVariable);
    remove(path.c_str());
}

} // namespace
