// make-manifest FOLDER: writes FOLDER/file_manifest_audio.txt.gz for the files under FOLDER, the
// manifest the client's soundpack updater fetches (hex SHA-256, size, name).

#include <cstdio>
#include <string>

#include "testworld/web_host.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make-manifest FOLDER\n");
        return 2;
    }
    std::string error;
    if (!testworld::make_manifest(argv[1], &error)) {
        std::fprintf(stderr, "make-manifest: %s\n", error.c_str());
        return 1;
    }
    return 0;
}
