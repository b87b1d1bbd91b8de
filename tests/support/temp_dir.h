#pragma once
// A private directory under /tmp, removed with everything in it when the test ends.

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

class temp_dir {
public:
    temp_dir() {
        char pattern[] = "/tmp/lantern-test-XXXXXX";
        const char* made = mkdtemp(pattern);
        path_ = made ? made : "/tmp";
    }
    ~temp_dir() {
        const std::string command = "rm -rf '" + path_ + "'";
        if (std::system(command.c_str()) != 0) {
        }
    }
    temp_dir(const temp_dir&) = delete;
    temp_dir& operator=(const temp_dir&) = delete;

    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

inline std::string read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

inline void write_file(const std::string& path, const std::string& contents) {
    std::ofstream(path, std::ios::binary) << contents;
}
