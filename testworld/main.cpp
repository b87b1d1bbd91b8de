// lantern-testworld: a small game server on 127.0.0.1 that speaks the client's wire format, for
// tests, demos and benchmarks. See usage_text() in server.cpp for the command line.

#include <cstdio>
#include <string>

#include "testworld/server.h"

int main(int argc, char** argv) {
    testworld::server_options options;
    std::string error;
    if (!testworld::parse_options(argc, argv, &options, &error)) {
        std::fprintf(stderr, "lantern-testworld: %s\n%s", error.c_str(), testworld::usage_text());
        return 2;
    }
    return testworld::run_server(options);
}
