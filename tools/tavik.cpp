// tavik: the command-line tool. Each command is one function in the table
// below; capture commands join it as the library gains them.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Common.h"
#include "DiscoveryCommands.h"
#include "FeatureCommands.h"
#include "Producers.h"

namespace {

int Version(int, char**) {
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

int Producers(int, char**) {
    if (Start() != TvkErrorSuccess) return 1;
    PrintProducers();
    TvkShutdown();
    return 0;
}

// What works today, end to end: start-up finds and loads the producers, each
// tells about its transport layer, the cameras are listed and one is opened,
// the system's features are read and written, and shutdown unloads the
// producers again.
int Demo(int aCount, char** aWords) {
    Version(aCount, aWords);
    printf("Starting up (producers are searched in the current directory and in "
           "GENICAM_GENTL64_PATH)...\n");
    if (Start() != TvkErrorSuccess) return 1;
    PrintProducers();
    printf("Shutting down...\n");
    TvkShutdown();
    printf("\n");
    if (CameraDemo() != 0) return 1;
    printf("\n");
    return FeatureDemo();
}

struct tCommand {
    const char* name;
    const char* arguments;
    const char* help;
    int (*run)(int aCount, char** aWords);
};

constexpr tCommand kCommands[] = {
    {"version", "", "print the library version", &Version},
    {"producers", "", "start up and show the producers found and their transport layers",
     &Producers},
    {"list", "", "the interfaces and cameras", &ListCommand},
    {"info", "CAMERA", "one camera (an identifier, serial number or list number)", &InfoCommand},
    {"features", "TARGET", "the tree of a target's features (TARGET: system or a CAMERA)",
     &FeaturesCommand},
    {"get", "TARGET NAME", "one feature's value", &GetCommand},
    {"set", "TARGET NAME [VALUE]", "write a feature (a command runs without a value)", &SetCommand},
    {"demo", "", "version, producers, cameras, a camera's and the system's features", &Demo},
};

int Usage() {
    puts("usage: tavik [--strict] <command> [arguments]");
    for (const tCommand& command : kCommands) {
        char call[64];
        snprintf(call, sizeof(call), "%s %s", command.name, command.arguments);
        printf("  %-26s %s\n", call, command.help);
    }
    puts("\nCameras' documents are read in the feature kernel's wide reading, which accepts\n"
         "what real cameras' documents use beyond the kernel's strict one; --strict reads\n"
         "them strictly, as the library does by default (Settings/Kernel/WideReading).");
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    // The wide reading unless --strict: the library reads the choice when it
    // prepares each feature container.
    bool strict = argc > 1 && strcmp(argv[1], "--strict") == 0;
    if (strict) {
        --argc;
        ++argv;
    }
    setenv("TAVIK_WIDE_READING", strict ? "0" : "1", 1);
    if (argc < 2) return Usage();
    for (const tCommand& command : kCommands)
        if (strcmp(argv[1], command.name) == 0) return command.run(argc - 2, argv + 2);
    return Usage();
}
