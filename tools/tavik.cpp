// tavik: the command-line tool. Each command is one function in the table
// below; discovery, features and capture commands join it as the library
// gains them.
#include <cstdio>
#include <cstring>
#include <string>

#include "Producers.h"
#include "TavikC.h"

namespace {

std::string ErrorText(TvkError_t aStatus) {
    char text[256] = {};
    TvkGetErrorInfo(aStatus, text, sizeof(text));
    return text;
}

// Starts the library for the scope of one command.
class uStarted {
public:
    uStarted() : mStatus(TvkStartup()) {
        if (mStatus != TvkErrorSuccess)
            fprintf(stderr, "tavik: start-up failed: %s (%d)\n", ErrorText(mStatus).c_str(),
                    mStatus);
    }
    ~uStarted() {
        if (mStatus == TvkErrorSuccess) TvkShutdown();
    }
    uStarted(const uStarted&) = delete;
    uStarted& operator=(const uStarted&) = delete;
    bool Ok() const { return mStatus == TvkErrorSuccess; }

private:
    TvkError_t mStatus;
};

int Version() {
    TvkVersionInfo_t version{};
    TvkVersionQuery(&version, sizeof(version));
    printf("Tavik %u.%u.%u\n", version.major, version.minor, version.patch);
    return 0;
}

void PrintProducers() {
    const std::vector<tool::tProducer> producers = tool::LoadedProducers();
    printf("%zu producer(s) loaded\n", producers.size());
    for (const tool::tProducer& producer : producers) {
        printf("  %s\n", producer.path.c_str());
        for (const auto& [label, value] : producer.info)
            printf("    %-16s %s\n", label.c_str(), value.c_str());
    }
}

int Producers() {
    uStarted started;
    if (!started.Ok()) return 1;
    PrintProducers();
    return 0;
}

// What works today, end to end: start-up finds and loads the producers, each
// tells about its transport layer, and shutdown unloads them again.
int Demo() {
    Version();
    printf("Starting up (producers are searched in the current directory and in "
           "GENICAM_GENTL64_PATH)...\n");
    {
        uStarted started;
        if (!started.Ok()) return 1;
        PrintProducers();
        printf("Shutting down...\n");
    }
    printf("Done. Cameras, features and frame capture come with the next releases.\n");
    return 0;
}

struct tCommand {
    const char* name;
    const char* help;
    int (*run)();
};

constexpr tCommand kCommands[] = {
    {"version", "print the library version", &Version},
    {"producers", "start up and show the producers found and their transport layers", &Producers},
    {"demo", "version, start-up, producers and shutdown", &Demo},
};

int Usage() {
    puts("usage: tavik <command>");
    for (const tCommand& command : kCommands)
        printf("  %-10s %s\n", command.name, command.help);
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) return Usage();
    for (const tCommand& command : kCommands)
        if (strcmp(argv[1], command.name) == 0) return command.run();
    return Usage();
}
