// lantern-webhost: serves a folder under "/soundpack/" on 127.0.0.1 for the client's soundpack
// updater. See testworld/README.md.

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <unistd.h>

#include "testworld/web_host.h"

namespace {

volatile std::sig_atomic_t stop_asked = 0;
void on_signal(int) { stop_asked = 1; }

const char* usage = "usage: lantern-webhost --folder DIR [--port N] [--stall NAME:BYTES] [--drop NAME:BYTES]\n";

bool split_fault(const char* text, std::string* name, size_t* bytes) {
    const char* colon = std::strrchr(text, ':');
    if (!colon || colon == text || !colon[1]) return false;
    name->assign(text, static_cast<size_t>(colon - text));
    *bytes = std::strtoull(colon + 1, nullptr, 10);
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    std::string folder;
    int port = 0;
    testworld::web_host host;
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        if (i + 1 >= argc) {
            std::fprintf(stderr, "lantern-webhost: %s needs a value\n%s", option.c_str(), usage);
            return 2;
        }
        const char* value = argv[++i];
        std::string name;
        size_t bytes = 0;
        if (option == "--folder") {
            folder = value;
        } else if (option == "--port") {
            port = std::atoi(value);
        } else if ((option == "--stall" || option == "--drop") && split_fault(value, &name, &bytes)) {
            option == "--stall" ? host.stall_file(name, bytes) : host.drop_file(name, bytes);
        } else {
            std::fprintf(stderr, "lantern-webhost: bad option %s\n%s", option.c_str(), usage);
            return 2;
        }
    }
    if (folder.empty()) {
        std::fprintf(stderr, "%s", usage);
        return 2;
    }
    std::signal(SIGTERM, on_signal);
    std::signal(SIGINT, on_signal);
    if (!host.start(folder, port)) {
        std::fprintf(stderr, "lantern-webhost: cannot listen on 127.0.0.1:%d\n", port);
        return 1;
    }
    std::printf("listening on %d\n", host.port());
    std::fflush(stdout);
    while (!stop_asked) pause();
    host.stop();
    return 0;
}
