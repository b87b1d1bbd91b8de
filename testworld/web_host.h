#pragma once
// A small web host on 127.0.0.1 for tests, demos and benchmarks: plain HTTP/1.1 GET, one thread a
// connection, every reply closed after its body. It serves a folder under "/soundpack/" (with
// "file_manifest_audio.txt.gz", written by make_manifest, in it) and answers 404 for anything
// else. A named file can be made to stall after some bytes until released, or to be dropped
// (a clean close) after some bytes.

#include <atomic>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace testworld {

class web_host {
public:
    web_host() = default;
    ~web_host() { stop(); }
    web_host(const web_host&) = delete;
    web_host& operator=(const web_host&) = delete;

    // Port 0 picks a free one.
    bool start(const std::string& folder, int port = 0);
    void stop();
    int port() const { return listen_port; }

    // Name as in the manifest (relative to the folder).
    void stall_file(const std::string& name, size_t after_bytes);
    void drop_file(const std::string& name, size_t after_bytes);
    void clear_faults();
    // Lets every stalled reply go on to its end.
    void release_stalls();
    // True once a reply is held in a stall.
    bool stalling() const { return stalled_now.load() > 0; }

    // The decoded paths asked for, in order, and a count of the connections served.
    std::vector<std::string> requests() const;
    void clear_requests();

private:
    struct fault {
        bool stall = false;
        size_t after = 0;
    };
    void run();
    void serve(int connection);
    bool send_file(int connection, const std::string& path, const std::string& name);
    bool hold_stall(int connection);

    std::string root;
    int listener = -1;
    int listen_port = 0;
    std::thread acceptor;
    std::atomic<bool> stopping{false};
    std::atomic<int> stalled_now{0};

    mutable std::mutex lock;
    std::condition_variable released;
    int release_generation = 0;
    std::map<std::string, fault> faults;
    std::vector<std::string> asked;
    struct worker {
        std::thread thread;
        std::shared_ptr<std::atomic<bool>> done;
    };
    // Joins the workers that have finished; with everything true, all of them.
    void reap(bool everything);
    std::vector<worker> workers;
};

// "%s %10d %s\n" lines (hex SHA-256, size, name) for every regular file under folder, names in
// byte order, gzip-compressed into folder/file_manifest_audio.txt.gz (written to a temporary
// name and moved into place). Files whose name starts with "." and the manifest itself are left
// out. False, with a reason, on failure.
bool make_manifest(const std::string& folder, std::string* error);
// The manifest's lines as text, without compressing or writing them.
std::string manifest_text(const std::string& folder);
// Hex SHA-256 of a file's content; empty when it can't be read.
std::string file_sha256(const std::string& path);

constexpr const char* manifest_file_name = "file_manifest_audio.txt.gz";

}  // namespace testworld
