// Real cameras' documents through the flat functions: the simulator serves
// each document the kernel accepts, and every feature of it is listed,
// described and read through the TvkFeature calls with the results the
// kernel gives when it reads the same zero-filled register space itself.
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "FlatFixture.h"
#include "ZipEntry.h"
#include "gik/Node.h"
#include "gik/Port.h"
#include "gik/Runtime.h"
#include "gik/Value.h"
#include "kit/AutoreleasePool.h"
#include "kit/ObjectList.h"

namespace {

std::string SourceDir() {
    const char* root = getenv("TAVIK_SOURCE_DIR");
    return root ? root : ".";
}

std::string DataDir() {
    return SourceDir() + "/../shared/testdata/genicam/";
}

std::string ReadFile(const std::string& aPath) {
    std::ifstream file(aPath, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

// The register space of a simulated camera served with another document:
// 4 MiB of zeros, the document at 0x100000, nothing beyond.
class cSimulatedSpace : public gik::pPort {
public:
    static cSimulatedSpace* New(const std::string& aDocument) {
        return Make<cSimulatedSpace>(aDocument);
    }
    llk::i4 Initialize(const std::string& aDocument) {
        mBytes.assign(kSize, 0);
        memcpy(mBytes.data() + kDocument, aDocument.data(),
               std::min(aDocument.size(), kSize - kDocument));
        return 0;
    }
    bool IsWriteable() override { return true; }
    llk::i4 Fetch(llk::u8 aAddress, llk::u4 aLength, void* aBuffer, llk::u4& aFetched) override {
        aFetched = 0;
        if (aAddress > kSize || aLength > kSize - aAddress) return kInvalidAddress;
        memcpy(aBuffer, mBytes.data() + aAddress, aLength);
        aFetched = aLength;
        return 0;
    }
    llk::i4 Store(llk::u8, llk::u4, const void*, llk::u4& aStored) override {
        aStored = 0;
        return kInvalidAddress;
    }
    llk::i4 QueryXML(void*, llk::u4, llk::u4&, llk::u4, llk::u4) override { return 8; }
    llk::i4 FetchXML(void*, llk::u4, llk::u4&, llk::u4) override { return 8; }

private:
    static constexpr size_t kSize = 0x400000, kDocument = 0x100000;
    static constexpr llk::i4 kInvalidAddress = -1015;
    std::vector<llk::u1> mBytes;
};

// A runtime with the document on the simulated space; null when the kernel
// refuses the document.
gik::cRuntime* Load(const std::string& aText) {
    gik::cRuntime* runtime = gik::cRuntime::New(false);
    if (!runtime || runtime->AttachPort("Device", cSimulatedSpace::New(aText)) != 0 ||
        runtime->Prepare() != 0 || runtime->Process(aText.c_str(), false, nullptr, false) != 0 ||
        runtime->Finalize() != 0)
        return nullptr;
    return runtime;
}

// Names the simulator's own module documents define: they come first in a
// camera's tree, so a camera's document cannot redefine them.
std::set<std::string> ModuleNames() {
    std::set<std::string> names;
    for (const char* document : {"DeviceModule.xml", "StreamModule.xml"}) {
        gik::cRuntime* runtime = gik::cRuntime::New(false);
        const std::string path = SourceDir() + "/sim/src/documents/" + document;
        if (!runtime || runtime->Prepare() != 0 ||
            runtime->Process(path.c_str(), true, nullptr, false) != 0)
            continue;
        for (llk::u4 i = 0; i < runtime->NodeCount(); ++i)
            names.insert(runtime->NodeAt(i)->NameText());
    }
    return names;
}

std::string Text(llk::cString* aText) {
    return aText ? aText->Chars() : "";
}

class RealDocumentsTest : public test::cFlatFixture {
protected:
    llk::uAutoreleasePool mPool;
};

// The flat value of a feature as text, and whether it could be read.
bool FlatValue(TvkHandle_t aCamera, const TvkFeatureInfo_t& aInfo, std::string& aValue) {
    const char* name = aInfo.name;
    switch (aInfo.featureDataType) {
    case TvkFeatureDataInt: {
        int64_t v = 0;
        if (TvkFeatureIntGet(aCamera, name, &v) != TvkErrorSuccess) return false;
        aValue = std::to_string(v);
        return true;
    }
    case TvkFeatureDataFloat: {
        double v = 0;
        if (TvkFeatureFloatGet(aCamera, name, &v) != TvkErrorSuccess) return false;
        aValue = std::to_string(v);
        return true;
    }
    case TvkFeatureDataBool: {
        TvkBool_t v = 0;
        if (TvkFeatureBoolGet(aCamera, name, &v) != TvkErrorSuccess) return false;
        aValue = v ? "1" : "0";
        return true;
    }
    case TvkFeatureDataEnum: {
        const char* v = nullptr;
        if (TvkFeatureEnumGet(aCamera, name, &v) != TvkErrorSuccess) return false;
        aValue = v;
        return true;
    }
    case TvkFeatureDataString: {
        uint32_t size = 0;
        if (TvkFeatureStringGet(aCamera, name, nullptr, 0, &size) != TvkErrorSuccess) return false;
        std::vector<char> text(size + 1, '\0');
        if (TvkFeatureStringGet(aCamera, name, text.data(), size + 1, &size) != TvkErrorSuccess)
            return false;
        aValue = text.data();
        return true;
    }
    default:
        return false;
    }
}

// The kernel's value of the same node, as the flat value's text.
bool KernelValue(gik::cRuntime* aRuntime, gik::pNode* aNode, TvkFeatureData_t aType,
                 std::string& aValue) {
    gik::cValue value;
    if (aNode->GetValue(aRuntime, value, nullptr) != 0) return false;
    switch (aType) {
    case TvkFeatureDataInt:
        aValue = std::to_string(value.Sint());
        return true;
    case TvkFeatureDataFloat:
        aValue = std::to_string(value.Real());
        return true;
    case TvkFeatureDataBool:
        aValue = value.Bool() ? "1" : "0";
        return true;
    case TvkFeatureDataEnum:
    case TvkFeatureDataString: {
        const char* text = nullptr;
        aValue = value.Get(text) ? text : "";
        return true;
    }
    default:
        return false;
    }
}

TEST_F(RealDocumentsTest, EveryFeatureReadsAsTheKernelReadsIt) {
    // Each document the kernel accepts, served plain; the one that comes
    // zipped is served compressed by the simulator.
    struct tDocument {
        std::string id, file, text;
        bool zip;
    };
    std::vector<tDocument> documents;
    for (const auto& entry : std::filesystem::directory_iterator(DataDir())) {
        const std::string name = entry.path().filename().string();
        const bool zipped = entry.path().extension() == ".zip";
        if (entry.path().extension() != ".xml" && !zipped) continue;
        std::string text =
            zipped ? test::FirstZipEntry(entry.path().string()) : ReadFile(entry.path().string());
        std::string file = entry.path().string();
        if (zipped) {
            file = (mDir / (name + ".xml")).string();
            std::ofstream(file, std::ios::binary) << text;
        }
        documents.push_back({"Doc-" + std::to_string(documents.size()), file, text, zipped});
    }
    ASSERT_GE(documents.size(), 6u);
    std::string xml = "<TavikSim tlType=\"USB3\"><Interface id=\"IF\" type=\"U3V\">";
    for (const tDocument& d : documents)
        xml += "<Camera id=\"" + d.id + "\" document=\"" + d.file + "\" zip=\"" +
               (d.zip ? "true" : "false") + "\"/>";
    xml += "</Interface></TavikSim>";
    SearchSimulator();
    ConfigureSimulator(xml);
    ASSERT_EQ(TvkStartup(), TvkErrorSuccess);
    const std::set<std::string> modules = ModuleNames();
    ASSERT_TRUE(modules.count("DeviceVendorName"));

    int accepted = 0;
    for (const tDocument& d : documents) {
        SCOPED_TRACE(d.file);
        gik::cRuntime* kernel = Load(d.text);
        if (!kernel) continue; // not a document the kernel accepts
        ++accepted;
        TvkHandle_t camera = nullptr;
        ASSERT_EQ(TvkCameraOpen(d.id.c_str(), TvkAccessModeFull, &camera), TvkErrorSuccess);
        uint32_t count = 0;
        ASSERT_EQ(TvkFeaturesList(camera, nullptr, 0, &count, sizeof(TvkFeatureInfo_t)),
                  TvkErrorSuccess);
        std::vector<TvkFeatureInfo_t> features(count);
        ASSERT_EQ(TvkFeaturesList(camera, features.data(), count, &count, sizeof(TvkFeatureInfo_t)),
                  TvkErrorSuccess);
        std::set<std::string> listed;
        int compared = 0, read = 0;
        for (const TvkFeatureInfo_t& info : features) {
            listed.insert(info.name);
            gik::pNode* node = kernel->SeekNode(info.name, true);
            if (!node || modules.count(info.name)) continue;
            SCOPED_TRACE(info.name);
            ++compared;
            TvkFeatureInfo_t described{};
            ASSERT_EQ(TvkFeatureInfoQuery(camera, info.name, &described, sizeof(described)),
                      TvkErrorSuccess);
            EXPECT_EQ(Text(node->GetPath()), described.category);
            EXPECT_EQ(static_cast<uint32_t>(node->Visibility()), described.visibility);
            EXPECT_EQ(Text(node->Unit()), described.unit ? described.unit : "");
            EXPECT_EQ(node->IsReadable(kernel), (described.featureFlags & 1) != 0);
            EXPECT_EQ(node->IsWriteable(kernel), (described.featureFlags & 2) != 0);
            if (!node->IsReadable(kernel)) continue;
            std::string flat, direct;
            const bool flatRead = FlatValue(camera, described, flat);
            const bool kernelRead = KernelValue(kernel, node, described.featureDataType, direct);
            EXPECT_EQ(flatRead, kernelRead);
            if (flatRead && kernelRead) {
                EXPECT_EQ(flat, direct);
                ++read;
            }
        }
        // Every feature the kernel lists is listed through the flat call too.
        llk::cObjectList* nodes = kernel->Nodes();
        for (llk::u4 i = 0; i < nodes->Count(); ++i) {
            auto* node = static_cast<gik::pNode*>(nodes->AtIndex(i));
            if (node->Visibility() != gik::pNode::kVisibilityInvisible &&
                !modules.count(node->NameText())) {
                EXPECT_TRUE(listed.count(node->NameText())) << node->NameText();
            }
        }
        printf("%s: %u features listed, %d compared, %d read alike\n", d.file.c_str(), count,
               compared, read);
        EXPECT_GT(read, 0);
        EXPECT_EQ(TvkCameraClose(camera), TvkErrorSuccess);
    }
    EXPECT_GE(accepted, 4);
}

} // namespace
