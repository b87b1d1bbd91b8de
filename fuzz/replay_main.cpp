// Runs every file named on the command line, and every file in the directories named there,
// through LLVMFuzzerTestOneInput once: the corpus replay of builds without libFuzzer.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

bool replay_file(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "cannot read %s\n", path.c_str());
        return false;
    }
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    // A copy of exactly the input's length, so a read past the end shows under ASan.
    std::vector<uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.empty() ? nullptr : input.data(), input.size());
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    int replayed = 0;
    bool ok = true;
    for (int i = 1; i < argc; ++i) {
        std::error_code error;
        const std::filesystem::path path(argv[i]);
        std::vector<std::filesystem::path> files;
        if (std::filesystem::is_directory(path, error)) {
            for (const auto& entry : std::filesystem::directory_iterator(path, error)) {
                if (entry.is_regular_file()) files.push_back(entry.path());
            }
            std::sort(files.begin(), files.end());
        } else {
            files.push_back(path);
        }
        for (const auto& file : files) {
            ok = replay_file(file) && ok;
            ++replayed;
        }
    }
    std::printf("replayed %d inputs\n", replayed);
    return ok && replayed > 0 ? 0 : 1;
}
