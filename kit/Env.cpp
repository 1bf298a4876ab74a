#include "kit/Env.h"

#include <arpa/inet.h>
#include <dlfcn.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netpacket/packet.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <mutex>
#include <random>

#include "kit/Status.h"

namespace llk {

namespace {

thread_local u4 tThreadTag = 0;
thread_local u4 tThreadWord = 0;

std::mutex& TraceLock() {
    static std::mutex lock;
    return lock;
}

std::mutex& RandomLock() {
    static std::mutex lock;
    return lock;
}

std::mt19937& Generator() {
    static std::mt19937 generator(12345u);
    return generator;
}

struct tCrcTable {
    u4 entries[256];
    constexpr tCrcTable() : entries() {
        for (u4 i = 0; i < 256; ++i) {
            u4 c = i;
            for (int k = 0; k < 8; ++k)
                c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            entries[i] = c;
        }
    }
};
constexpr tCrcTable kCrcTable;

char* Duplicate(const char* aText) {
    size_t length = strlen(aText);
    auto* copy = static_cast<char*>(sEnv::Malloc(length + 1, false));
    if (copy) memcpy(copy, aText, length + 1);
    return copy;
}

bool IsHexText(const char* aText) {
    return strlen(aText) > 2 && aText[0] == '0' && aText[1] == 'x';
}

// One conversion of one item; anything left over makes it fail.
template <class T> bool ScanOne(const char* aText, const char* aFormat, T& aValue) {
    if (!aText) return false;
    T value{};
    int used = 0;
    std::string format = std::string(aFormat) + "%n";
    if (sscanf(aText, format.c_str(), &value, &used) != 1) return false;
    aValue = value;
    return true;
}

template <class T> bool PrintOne(char* aBuffer, size_t aSize, const char* aFormat, T aValue) {
    if (!aBuffer || aSize == 0) return false;
    int n = snprintf(aBuffer, aSize, aFormat, aValue);
    return n > 0 && static_cast<size_t>(n) < aSize;
}

} // namespace

void* sEnv::Malloc(size_t aSize, bool aZero) {
    if (aSize == 0) aSize = 1;
    return aZero ? calloc(1, aSize) : malloc(aSize);
}

void* sEnv::Resize(void* aPtr, size_t aSize, size_t aOldSize) {
    if (!aPtr) return Malloc(aSize, true);
    void* resized = realloc(aPtr, aSize ? aSize : 1);
    if (resized && aOldSize != 0 && aSize > aOldSize)
        memset(static_cast<char*>(resized) + aOldSize, 0, aSize - aOldSize);
    return resized;
}

void sEnv::Free(void* aPtr, size_t aWipe) {
    if (!aPtr) return;
    if (aWipe) memset(aPtr, 0, aWipe);
    free(aPtr);
}

void sEnv::Zero(void* aPtr, size_t aSize) {
    if (aPtr) memset(aPtr, 0, aSize);
}

void sEnv::Copy(void* aDest, const void* aSource, size_t aSize) {
    if (aDest && aSource) memmove(aDest, aSource, aSize);
}

char* sEnv::GetEnvVariable(const char* aName) {
    if (!aName) return nullptr;
    const char* value = getenv(aName);
    if (!value || !*value) return nullptr;
    return Duplicate(value);
}

char* sEnv::GetLibPath(const void* aAddress) {
    Dl_info info{};
    if (!aAddress || dladdr(aAddress, &info) == 0 || !info.dli_fname) return nullptr;
    return Duplicate(info.dli_fname);
}

char* sEnv::GetTempPath() {
    std::error_code error;
    std::string path = std::filesystem::temp_directory_path(error).string();
    if (error) path = "/tmp";
    path += "/";
    return Duplicate(path.c_str());
}

bool sEnv::FileExists(const char* aPath) {
    struct stat info {};
    return aPath && stat(aPath, &info) == 0;
}

void sEnv::Snooze(u4 aMilliseconds) {
    struct timespec t {
        static_cast<time_t>(aMilliseconds / 1000),
            static_cast<long>(aMilliseconds % 1000) * 1000000L
    };
    while (nanosleep(&t, &t) != 0 && errno == EINTR) {
    }
}

double sEnv::GetElapsedTime() {
    struct timespec t {};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

void sEnv::SetThreadTag(u4 aTag) {
    tThreadTag = aTag;
}
u4 sEnv::GetThreadTag() {
    return tThreadTag;
}
void sEnv::SetThreadWord(u4 aWord) {
    tThreadWord = aWord;
}
u4 sEnv::GetThreadWord() {
    return tThreadWord;
}

void sEnv::PrintTagged(const char* aTag, const char* aFormat, va_list aArgs) {
    struct timeval now {};
    gettimeofday(&now, nullptr);
    struct tm local {};
    localtime_r(&now.tv_sec, &local);
    char text[512];
    int head =
        snprintf(text, sizeof(text), "%02d-%02d-%04d %02d:%02d:%02d.%03u %s ", local.tm_mon + 1,
                 local.tm_mday, local.tm_year + 1900, local.tm_hour, local.tm_min, local.tm_sec,
                 static_cast<unsigned>(now.tv_usec / 1000), aTag);
    if (head < 0) return;
    vsnprintf(text + head, sizeof(text) - static_cast<size_t>(head), aFormat, aArgs);
    std::lock_guard<std::mutex> hold(TraceLock());
    fprintf(stdout, "%s\n", text);
    fflush(stdout);
}

#define TAVIK_TRACE_VARIANT(name, tag)                                                             \
    void sEnv::name(const char* aFormat, ...) {                                                    \
        va_list args;                                                                              \
        va_start(args, aFormat);                                                                   \
        PrintTagged(tag, aFormat, args);                                                           \
        va_end(args);                                                                              \
    }
TAVIK_TRACE_VARIANT(PrintTrace, "[T]")
TAVIK_TRACE_VARIANT(PrintError, "[E]")
TAVIK_TRACE_VARIANT(PrintWarning, "[W]")
TAVIK_TRACE_VARIANT(PrintDebug, "[D]")
TAVIK_TRACE_VARIANT(Print, "[ ]")
#undef TAVIK_TRACE_VARIANT

u4 sEnv::Crc32(const void* aBytes, size_t aLength) {
    u4 crc = 0xFFFFFFFFu;
    if (!aBytes) return crc;
    const auto* bytes = static_cast<const u1*>(aBytes);
    for (size_t i = 0; i < aLength; ++i)
        crc = kCrcTable.entries[(crc ^ bytes[i]) & 0xFF] ^ (crc >> 8);
    return crc;
}

u4 sEnv::Crc32(const char* aText) {
    return Crc32(aText, aText ? strlen(aText) : 0);
}

u2 sEnv::InternetChecksum(const void* aWords, size_t aByteCount) {
    const auto* bytes = static_cast<const u1*>(aWords);
    u4 sum = 0;
    if (bytes) {
        size_t i = 0;
        for (; i + 1 < aByteCount; i += 2) {
            u2 word;
            memcpy(&word, bytes + i, 2);
            sum += word;
        }
        if (i < aByteCount) sum += bytes[i];
    }
    while (sum >> 16)
        sum = (sum & 0xFFFF) + (sum >> 16);
    return static_cast<u2>(~sum);
}

void sEnv::SeedRandom(u4 aSeed) {
    std::lock_guard<std::mutex> hold(RandomLock());
    Generator().seed(aSeed ? aSeed : static_cast<u4>(time(nullptr)));
}

u4 sEnv::Random(u4 aLow, u4 aHigh) {
    if (aHigh < aLow) std::swap(aLow, aHigh);
    std::lock_guard<std::mutex> hold(RandomLock());
    u8 span = static_cast<u8>(aHigh) - aLow + 1;
    return static_cast<u4>(Generator()() % span + aLow);
}

void sEnv::SetProcessPriority(i4 aLevel) {
    int nice;
    switch (aLevel) {
    case 0:
    case 1:
    case 2:
        nice = 19;
        break;
    case 3:
        nice = 0;
        break;
    case 4:
    case 5:
        nice = -10;
        break;
    case 6:
        nice = -20;
        break;
    default:
        nice = aLevel;
        break;
    }
    // Raising priority needs privileges; a refusal is ignored.
    (void)setpriority(PRIO_PROCESS, 0, nice);
}

bool sEnv::IsFloatText(const char* aText) {
    if (!aText) return false;
    int signs = 0, exponents = 0, points = 0;
    for (const char* c = aText; *c; ++c) {
        if (*c >= '0' && *c <= '9') continue;
        if (*c == '+' || *c == '-')
            ++signs;
        else if (*c == 'E' || *c == 'e')
            ++exponents;
        else if (*c == '.')
            ++points;
        else
            return false;
    }
    return signs <= 1 && exponents <= 1 && points == 1;
}

bool sEnv::IsIntegerText(const char* aText) {
    if (!aText) return false;
    int signs = 0;
    for (const char* c = aText; *c; ++c) {
        if (*c >= '0' && *c <= '9') continue;
        if (*c == '+' || *c == '-')
            ++signs;
        else
            return false;
    }
    return signs <= 1;
}

bool sEnv::ReadNumber(const char* aText, u4& aValue) {
    if (aText && IsHexText(aText)) return ScanOne(aText, "0x%x", aValue);
    return ScanOne(aText, "%u", aValue);
}
bool sEnv::ReadNumber(const char* aText, u8& aValue) {
    unsigned long long value = 0;
    bool ok =
        aText && IsHexText(aText) ? ScanOne(aText, "0x%llx", value) : ScanOne(aText, "%llu", value);
    if (ok) aValue = value;
    return ok;
}
bool sEnv::ReadNumber(const char* aText, i4& aValue) {
    return ScanOne(aText, "%d", aValue);
}
bool sEnv::ReadNumber(const char* aText, i8& aValue) {
    long long value = 0;
    if (!ScanOne(aText, "%lld", value)) return false;
    aValue = value;
    return true;
}
bool sEnv::ReadNumber(const char* aText, float& aValue) {
    return ScanOne(aText, "%f", aValue);
}
bool sEnv::ReadNumber(const char* aText, double& aValue) {
    return ScanOne(aText, "%lf", aValue);
}

bool sEnv::WriteNumber(char* aBuffer, size_t aSize, u4 aValue) {
    return PrintOne(aBuffer, aSize, "%u", aValue);
}
bool sEnv::WriteNumber(char* aBuffer, size_t aSize, i4 aValue) {
    return PrintOne(aBuffer, aSize, "%d", aValue);
}
bool sEnv::WriteNumber(char* aBuffer, size_t aSize, u8 aValue) {
    return PrintOne(aBuffer, aSize, "%" PRIu64, aValue);
}
bool sEnv::WriteNumber(char* aBuffer, size_t aSize, i8 aValue) {
    return PrintOne(aBuffer, aSize, "%" PRId64, aValue);
}
bool sEnv::WriteNumber(char* aBuffer, size_t aSize, float aValue) {
    return PrintOne(aBuffer, aSize, "%f", static_cast<double>(aValue));
}
bool sEnv::WriteNumber(char* aBuffer, size_t aSize, double aValue) {
    return PrintOne(aBuffer, aSize, "%lf", aValue);
}

i4 sEnv::StatusFromErrno(int aErrno) {
    switch (aErrno) {
    case 0:
        return kOk;
    case EPERM:
    case EACCES:
    case EINVAL:
    case ERANGE:
    case EBUSY:
    case ENOSYS:
    case ENOTSUP:
    case EIO:
    case ENAMETOOLONG:
    case EDEADLK:
        return kNotAllowed;
    case ENOENT:
    case ENOTDIR:
        return kNotFound;
    case ENOMEM:
        return kNoMemory;
    case EFAULT:
    case ETXTBSY:
    case EBADF:
        return kRefused;
    case ECANCELED:
        return kAborted;
    case EINPROGRESS:
        return kPending;
    case EAGAIN:
    case EMFILE:
    case ENFILE:
    case ENOSPC:
        return kNoResources;
    default:
        return kFailed;
    }
}

void sEnv::ErrnoText(int aErrno, char* aBuffer, size_t aSize) {
    if (!aBuffer || aSize == 0) return;
    char scratch[256];
    // The GNU strerror_r may return a static text rather than fill scratch.
    const char* text = strerror_r(aErrno, scratch, sizeof(scratch));
    snprintf(aBuffer, aSize, "%s", text ? text : "");
    size_t length = strlen(aBuffer);
    while (length > 0 && (aBuffer[length - 1] == '\n' || aBuffer[length - 1] == '\r'))
        aBuffer[--length] = '\0';
}

void sNet::SwapToHost(u4& aValue) {
    aValue = ntohl(aValue);
}
void sNet::SwapToNet(u4& aValue) {
    aValue = htonl(aValue);
}

namespace {
// Walks the adapter list once; aVisit returns true to stop.
template <class F> i4 VisitAdapters(F aVisit) {
    struct ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0) return kBadArgument;
    i4 status = kNotFound;
    for (struct ifaddrs* a = list; a; a = a->ifa_next)
        if (a->ifa_addr && aVisit(a, list)) {
            status = kOk;
            break;
        }
    freeifaddrs(list);
    return status;
}

bool MacOf(const char* aName, struct ifaddrs* aList, uMAC& aMAC) {
    for (struct ifaddrs* a = aList; a; a = a->ifa_next)
        if (a->ifa_addr && a->ifa_addr->sa_family == AF_PACKET && strcmp(a->ifa_name, aName) == 0) {
            const auto* link = reinterpret_cast<const struct sockaddr_ll*>(a->ifa_addr);
            if (link->sll_halen != 6) return false;
            memcpy(aMAC.bytes, link->sll_addr, 6);
            return true;
        }
    return false;
}
} // namespace

i4 sNet::GetAdapterMAC(u4 aIPv4, uMAC& aMAC) {
    return VisitAdapters([&](struct ifaddrs* a, struct ifaddrs* list) {
        if (a->ifa_addr->sa_family != AF_INET) return false;
        const auto* in = reinterpret_cast<const struct sockaddr_in*>(a->ifa_addr);
        return ntohl(in->sin_addr.s_addr) == aIPv4 && MacOf(a->ifa_name, list, aMAC);
    });
}

i4 sNet::GetAdapterIP(const uMAC& aMAC, u4& aIPv4, u4& aMask) {
    return VisitAdapters([&](struct ifaddrs* a, struct ifaddrs* list) {
        uMAC mac{};
        if (a->ifa_addr->sa_family != AF_INET || !MacOf(a->ifa_name, list, mac) ||
            memcmp(mac.bytes, aMAC.bytes, 6) != 0)
            return false;
        aIPv4 = ntohl(reinterpret_cast<const struct sockaddr_in*>(a->ifa_addr)->sin_addr.s_addr);
        aMask =
            a->ifa_netmask
                ? ntohl(
                      reinterpret_cast<const struct sockaddr_in*>(a->ifa_netmask)->sin_addr.s_addr)
                : 0;
        return true;
    });
}

} // namespace llk
