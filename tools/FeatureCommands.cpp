#include "FeatureCommands.h"

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "Common.h"
#include "DiscoveryCommands.h"

namespace {

const char* TypeName(TvkFeatureData_t aType) {
    switch (aType) {
    case TvkFeatureDataInt:
        return "Integer";
    case TvkFeatureDataFloat:
        return "Float";
    case TvkFeatureDataEnum:
        return "Enum";
    case TvkFeatureDataString:
        return "String";
    case TvkFeatureDataBool:
        return "Boolean";
    case TvkFeatureDataCommand:
        return "Command";
    case TvkFeatureDataRaw:
        return "Raw";
    default:
        return "Unknown";
    }
}

const char* AccessName(TvkFeatureFlags_t aFlags) {
    bool read = aFlags & TvkFeatureFlagsRead, write = aFlags & TvkFeatureFlagsWrite;
    return read && write ? "RW" : read ? "R" : write ? "W" : "-";
}

void Fail(const char* aWhat, const char* aName, TvkError_t aStatus) {
    fprintf(stderr, "tavik: cannot %s '%s': %s (%d)\n", aWhat, aName, ErrorText(aStatus), aStatus);
}

// With the library started: the handle of a target word, the system or a
// camera (opened until shutdown).
bool Target(const char* aWord, TvkHandle_t& aHandle) {
    if (std::strcmp(aWord, "system") != 0) return OpenCamera(aWord, aHandle);
    aHandle = TVK_SYSTEM_HANDLE;
    return true;
}

// Runs aWork between start-up and shutdown; 1 on any failure.
template <class Work> int Started(Work&& aWork) {
    if (Start() != TvkErrorSuccess) return 1;
    bool done = aWork();
    TvkShutdown();
    return done ? 0 : 1;
}

// Splits a category path ("/Info/More") into its names.
std::vector<std::string> Categories(const char* aPath) {
    std::vector<std::string> names;
    std::string path = aPath ? aPath : "";
    size_t at = 0;
    while (at < path.size()) {
        size_t end = path.find('/', at);
        if (end == std::string::npos) end = path.size();
        if (end > at) names.push_back(path.substr(at, end - at));
        at = end + 1;
    }
    return names;
}

bool ParseInt(const char* aText, int64_t& aValue) {
    char* end = nullptr;
    errno = 0;
    aValue = strtoll(aText, &end, 0);
    return errno == 0 && end != aText && *end == '\0';
}

bool ParseFloat(const char* aText, double& aValue) {
    char* end = nullptr;
    errno = 0;
    aValue = strtod(aText, &end);
    return errno == 0 && end != aText && *end == '\0';
}

bool ParseBool(const char* aText, TvkBool_t& aValue) {
    for (const char* word : {"true", "1", "on", "yes"})
        if (strcasecmp(aText, word) == 0) return aValue = 1, true;
    for (const char* word : {"false", "0", "off", "no"})
        if (strcasecmp(aText, word) == 0) return aValue = 0, true;
    return false;
}

// Raw bytes written as hexadecimal digits, two for each byte.
bool ParseBytes(const char* aText, std::vector<char>& aBytes) {
    size_t length = std::strlen(aText);
    if (length % 2 != 0) return false;
    for (size_t i = 0; i < length; i += 2) {
        char pair[3] = {aText[i], aText[i + 1], '\0'};
        char* end = nullptr;
        long byte = strtol(pair, &end, 16);
        if (*end != '\0') return false;
        aBytes.push_back(static_cast<char>(byte));
    }
    return true;
}

// Writes aValue as the feature's type wants it; false when the text does
// not read as that type.
bool Write(TvkHandle_t aHandle, const TvkFeatureInfo_t& aInfo, const char* aValue,
           TvkError_t& aStatus) {
    const char* name = aInfo.name;
    switch (aInfo.featureDataType) {
    case TvkFeatureDataInt: {
        int64_t value = 0;
        if (!ParseInt(aValue, value)) return false;
        aStatus = TvkFeatureIntSet(aHandle, name, value);
        return true;
    }
    case TvkFeatureDataFloat: {
        double value = 0.0;
        if (!ParseFloat(aValue, value)) return false;
        aStatus = TvkFeatureFloatSet(aHandle, name, value);
        return true;
    }
    case TvkFeatureDataBool: {
        TvkBool_t value = 0;
        if (!ParseBool(aValue, value)) return false;
        aStatus = TvkFeatureBoolSet(aHandle, name, value);
        return true;
    }
    case TvkFeatureDataRaw: {
        std::vector<char> bytes;
        if (!ParseBytes(aValue, bytes)) return false;
        aStatus =
            TvkFeatureRawSet(aHandle, name, bytes.data(), static_cast<uint32_t>(bytes.size()));
        return true;
    }
    case TvkFeatureDataEnum:
        aStatus = TvkFeatureEnumSet(aHandle, name, aValue);
        return true;
    case TvkFeatureDataString:
        aStatus = TvkFeatureStringSet(aHandle, name, aValue);
        return true;
    case TvkFeatureDataCommand:
        aStatus = TvkFeatureCommandRun(aHandle, name);
        return true;
    default:
        aStatus = TvkErrorWrongType;
        return true;
    }
}

// With the library started: the tree, one feature's value, a write. False
// when something failed; the reason went to standard error.
bool ShowFeatures(TvkHandle_t aHandle) {
    uint32_t count = 0;
    TvkError_t status = TvkFeaturesList(aHandle, nullptr, 0, &count, sizeof(TvkFeatureInfo_t));
    std::vector<TvkFeatureInfo_t> features(count);
    if (status == TvkErrorSuccess && count)
        status = TvkFeaturesList(aHandle, features.data(), count, &count, sizeof(TvkFeatureInfo_t));
    if (status != TvkErrorSuccess) {
        Fail("list", "features", status);
        return false;
    }
    features.resize(std::min<size_t>(count, features.size()));
    // By category, then by name (the list comes by name).
    std::stable_sort(features.begin(), features.end(), [](const auto& a, const auto& b) {
        return std::strcmp(a.category ? a.category : "", b.category ? b.category : "") < 0;
    });
    std::vector<std::string> open;
    for (const TvkFeatureInfo_t& info : features) {
        std::vector<std::string> path = Categories(info.category);
        size_t same = 0;
        while (same < open.size() && same < path.size() && open[same] == path[same])
            ++same;
        for (size_t depth = same; depth < path.size(); ++depth)
            printf("%*s%s\n", static_cast<int>(2 * depth), "", path[depth].c_str());
        open = path;
        std::string value;
        if (!(info.featureFlags & TvkFeatureFlagsRead))
            value = "(not readable)";
        else if (TvkError_t read = FeatureValueText(aHandle, info, value); read != TvkErrorSuccess)
            value = std::string("<") + ErrorText(read) + ">";
        int indent = static_cast<int>(2 * path.size());
        printf("%*s%-*s %-8s %-3s %s\n", indent, "", std::max(1, 34 - indent), info.name,
               TypeName(info.featureDataType), AccessName(info.featureFlags), value.c_str());
    }
    return true;
}

bool ShowFeature(TvkHandle_t aHandle, const char* aName) {
    TvkFeatureInfo_t info{};
    std::string value;
    TvkError_t status = TvkFeatureInfoQuery(aHandle, aName, &info, sizeof(info));
    if (status == TvkErrorSuccess) status = FeatureValueText(aHandle, info, value);
    if (status != TvkErrorSuccess) {
        Fail("read", aName, status);
        return false;
    }
    printf("%s = %s\n", aName, value.c_str());
    return true;
}

bool WriteFeature(TvkHandle_t aHandle, const char* aName, const char* aValue) {
    TvkFeatureInfo_t info{};
    TvkError_t status = TvkFeatureInfoQuery(aHandle, aName, &info, sizeof(info));
    if (status != TvkErrorSuccess) {
        Fail("write", aName, status);
        return false;
    }
    bool command = info.featureDataType == TvkFeatureDataCommand;
    if (!command && !aValue) {
        fprintf(stderr, "tavik: '%s' is a %s feature and needs a value\n", aName,
                TypeName(info.featureDataType));
        return false;
    }
    if (!Write(aHandle, info, aValue, status)) {
        fprintf(stderr, "tavik: '%s' does not read as a value of %s feature '%s'\n", aValue,
                TypeName(info.featureDataType), aName);
        return false;
    }
    if (status != TvkErrorSuccess) {
        Fail(command ? "run" : "write", aName, status);
        return false;
    }
    if (command)
        printf("%s run\n", aName);
    else
        printf("%s set to %s\n", aName, aValue);
    return true;
}

} // namespace

TvkError_t FeatureValueText(TvkHandle_t aHandle, const TvkFeatureInfo_t& aInfo,
                            std::string& aText) {
    const char* name = aInfo.name;
    char text[64] = {};
    TvkError_t status = TvkErrorSuccess;
    switch (aInfo.featureDataType) {
    case TvkFeatureDataInt: {
        int64_t value = 0;
        status = TvkFeatureIntGet(aHandle, name, &value);
        snprintf(text, sizeof(text), "%" PRId64, value);
        break;
    }
    case TvkFeatureDataFloat: {
        double value = 0.0;
        status = TvkFeatureFloatGet(aHandle, name, &value);
        snprintf(text, sizeof(text), "%g", value);
        break;
    }
    case TvkFeatureDataEnum: {
        const char* value = nullptr;
        status = TvkFeatureEnumGet(aHandle, name, &value);
        if (status == TvkErrorSuccess) aText = value;
        return status;
    }
    case TvkFeatureDataString: {
        uint32_t size = 0;
        status = TvkFeatureStringGet(aHandle, name, nullptr, 0, &size);
        if (status != TvkErrorSuccess) return status;
        std::vector<char> buffer(size + 1u, '\0');
        status = TvkFeatureStringGet(aHandle, name, buffer.data(), size + 1u, &size);
        aText = "\"" + std::string(buffer.data()) + "\"";
        return status;
    }
    case TvkFeatureDataBool: {
        TvkBool_t value = 0;
        status = TvkFeatureBoolGet(aHandle, name, &value);
        snprintf(text, sizeof(text), "%s", value ? "true" : "false");
        break;
    }
    case TvkFeatureDataCommand:
        snprintf(text, sizeof(text), "(command)");
        break;
    case TvkFeatureDataRaw: {
        uint32_t length = 0;
        status = TvkFeatureRawLengthQuery(aHandle, name, &length);
        snprintf(text, sizeof(text), "(%u bytes)", length);
        break;
    }
    default:
        snprintf(text, sizeof(text), "?");
        break;
    }
    if (status == TvkErrorSuccess) aText = text;
    return status;
}

int FeaturesCommand(int aCount, char** aWords) {
    TvkHandle_t handle = nullptr;
    if (aCount != 1) {
        fprintf(stderr, "usage: tavik features TARGET\n");
        return 2;
    }
    return Started([&] { return Target(aWords[0], handle) && ShowFeatures(handle); });
}

int GetCommand(int aCount, char** aWords) {
    TvkHandle_t handle = nullptr;
    if (aCount != 2) {
        fprintf(stderr, "usage: tavik get TARGET NAME\n");
        return 2;
    }
    return Started([&] { return Target(aWords[0], handle) && ShowFeature(handle, aWords[1]); });
}

int SetCommand(int aCount, char** aWords) {
    TvkHandle_t handle = nullptr;
    if (aCount != 2 && aCount != 3) {
        fprintf(stderr, "usage: tavik set TARGET NAME [VALUE]\n");
        return 2;
    }
    return Started([&] {
        return Target(aWords[0], handle) &&
               WriteFeature(handle, aWords[1], aCount == 3 ? aWords[2] : nullptr);
    });
}

int FeatureDemo() {
    return Started([] {
        puts("features of the system:");
        return ShowFeatures(TVK_SYSTEM_HANDLE) && ShowFeature(TVK_SYSTEM_HANDLE, "Elapsed") &&
               WriteFeature(TVK_SYSTEM_HANDLE, "GeVForceIPAddressIP", "0xC0A80002") &&
               ShowFeature(TVK_SYSTEM_HANDLE, "GeVForceIPAddressIP");
    });
}
