// The soundpack updater in processes of its own: killed with SIGKILL in the middle of a file, and
// two of them on one configuration directory.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "base/files.h"
#include "net/soundpack_updater.h"
#include "testworld/web_host.h"
#include "tests/net/net_test_support.h"

namespace {

std::string bytes_of(size_t count, int seed) {
    std::string body(count, '\0');
    for (size_t i = 0; i < count; ++i) body[i] = static_cast<char>((i * 31 + seed * 5 + i / 89) & 0xff);
    return body;
}

struct world {
    net_test::temp_dir dir;
    std::string served = dir.file("web");
    std::string config = dir.file("config");
    std::string pack = config + "/soundpack";
    testworld::web_host host;

    world() {
        mkdir(served.c_str(), 0700);
        put("a.ogg", bytes_of(20000, 1));
        put("b.ogg", bytes_of(30000, 2));
        put("m big.ogg", bytes_of(2000000, 3));
        put("x/x.ogg", bytes_of(40000, 4));
        put("y.ogg", bytes_of(50000, 5));
        host.stall_file("m big.ogg", 500000);
        EXPECT_TRUE(host.start(served));
    }
    void put(const std::string& name, const std::string& bytes) {
        zorn_recursive_mkdir((served + "/" + name).c_str(), 0700, nullptr);
        net_test::write_file(served + "/" + name, bytes);
        std::string error;
        EXPECT_TRUE(testworld::make_manifest(served, &error)) << error;
    }
    bool start_child(net_test::child_process* child, const std::string& log) {
        if (!child->start({LANTERN_UPDATER_CHILD_PATH, config, std::to_string(host.port()), log})) return false;
        std::string line;
        return child->read_line(&line, 5000) && line == "started";
    }
    // Every line of the client's manifest names a whole file: the hash and size of what is on disk.
    std::set<std::string> named_files_all_whole() {
        std::set<std::string> names;
        std::istringstream lines(net_test::read_file(pack + "/update_manifest.lst"));
        std::string line;
        while (std::getline(lines, line)) {
            if (line.empty() || line[0] == '#') continue;
            std::istringstream fields(line);
            std::string hash;
            int size = 0;
            fields >> hash >> size;
            std::string name;
            std::getline(fields >> std::ws, name);
            const std::string path = pack + "/" + name;
            EXPECT_EQ(testworld::file_sha256(path), hash) << name;
            struct stat info{};
            EXPECT_EQ(stat(path.c_str(), &info), 0) << name;
            EXPECT_EQ(info.st_size, size) << name;
            names.insert(name);
        }
        return names;
    }
    std::set<std::string> round() {
        host.clear_requests();
        zorn_soundpack_updater_settings settings;
        settings.config_directory = config;
        settings.web_host = "127.0.0.1";
        settings.web_port = host.port();
        EXPECT_EQ(zorn_soundpack_update_round(settings), settings.after_success_ms);
        std::set<std::string> files;
        for (const std::string& path : host.requests()) {
            if (path != "/soundpack/file_manifest_audio.txt.gz") files.insert(path.substr(11));
        }
        return files;
    }
};

bool wait_for(const std::function<bool()>& condition, int timeout_ms = 10000) {
    for (int waited = 0; waited < timeout_ms; waited += 10) {
        if (condition()) return true;
        usleep(10000);
    }
    return condition();
}

using names = std::set<std::string>;

}  // namespace

TEST(UpdaterProcess, KilledInTheMiddleOfAFileThenStartedAgain) {
    world w;
    {
        net_test::child_process child;
        ASSERT_TRUE(w.start_child(&child, w.dir.file("child.log")));
        ASSERT_TRUE(wait_for([&] { return w.host.stalling(); }));
        child.signal(SIGKILL);
        int status = 0;
        ASSERT_TRUE(child.wait_exit(5000, &status));
        EXPECT_EQ(status, 128 + SIGKILL);
    }
    EXPECT_EQ(w.named_files_all_whole(), (names{"a.ogg", "b.ogg"}));
    EXPECT_NE(access((w.pack + "/m big.ogg").c_str(), F_OK), 0) << "the half file never reaches its place";

    // Started again: exactly the missing files and the one changed since.
    w.host.clear_faults();
    w.put("a.ogg", bytes_of(20000, 9));
    EXPECT_EQ(w.round(), (names{"a.ogg", "m big.ogg", "x/x.ogg", "y.ogg"}));
    EXPECT_EQ(w.named_files_all_whole(), (names{"a.ogg", "b.ogg", "m big.ogg", "x/x.ogg", "y.ogg"}));
    EXPECT_EQ(w.round(), names{});

    // A deleted manifest costs one full download, no more.
    unlink((w.pack + "/update_manifest.lst").c_str());
    EXPECT_EQ(w.round().size(), 5u);
    EXPECT_EQ(w.round(), names{});
}

TEST(UpdaterProcess, TwoProcessesOnOneDirectory) {
    world w;
    net_test::child_process first;
    net_test::child_process second;
    const std::string second_log = w.dir.file("second.log");
    ASSERT_TRUE(w.start_child(&first, w.dir.file("first.log")));
    ASSERT_TRUE(wait_for([&] { return w.host.stalling(); }));
    ASSERT_TRUE(w.start_child(&second, second_log));
    EXPECT_TRUE(wait_for([&] {
        return net_test::read_file(second_log).find("Soundpack update already in progress, doing nothing.\n") !=
               std::string::npos;
    }));
    // The lock falls with the first process; the second takes it on its next round.
    first.signal(SIGKILL);
    w.host.clear_faults();
    EXPECT_TRUE(wait_for([&] {
        return net_test::read_file(second_log).find("Soundpack update success, sleeping six hours.\n") !=
               std::string::npos;
    }));
    second.signal(SIGKILL);
    EXPECT_EQ(w.named_files_all_whole(), (names{"a.ogg", "b.ogg", "m big.ogg", "x/x.ogg", "y.ogg"}));
}
