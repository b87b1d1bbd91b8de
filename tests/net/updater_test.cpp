// The updater against the test world's web host on 127.0.0.1: update rounds, faults of the
// server, a failing save, the soundpack round with its lock and log lines, and the download queue.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "base/files.h"
#include "net/download_queue.h"
#include "net/file_manifest.h"
#include "net/soundpack_updater.h"
#include "testworld/web_host.h"
#include "tests/net/http_test_server.h"
#include "tests/net/net_test_support.h"
#include "tests/support/log_capture.h"

namespace {

std::string bytes_of(size_t count, int seed) {
    std::string body(count, '\0');
    for (size_t i = 0; i < count; ++i) body[i] = static_cast<char>((i * 13 + seed * 7 + i / 97) & 0xff);
    return body;
}

void write_in(const std::string& folder, const std::string& name, const std::string& bytes) {
    const std::string path = folder + "/" + name;
    zorn_recursive_mkdir(path.c_str(), 0700, nullptr);
    net_test::write_file(path, bytes);
}

bool exists(const std::string& path) {
    struct stat info{};
    return stat(path.c_str(), &info) == 0;
}

// The server's folder, the client's soundpack, and one update after another.
struct site {
    net_test::temp_dir dir;
    std::string served = dir.file("web");
    std::string pack = dir.file("client/soundpack");
    testworld::web_host host;
    std::vector<std::string> messages;

    site() {
        write_in(served, "a.ogg", bytes_of(5000, 1));
        write_in(served, "sub/b b.ogg", bytes_of(70000, 2));
        write_in(served, "sub/deep/c.ogg", bytes_of(1, 3));
        write_in(served, "d.ogg", bytes_of(300000, 4));
        publish();
        EXPECT_TRUE(host.start(served));
    }
    void publish() {
        std::string error;
        EXPECT_TRUE(testworld::make_manifest(served, &error)) << error;
    }
    // Files fetched by one update (the manifest's own request left out), and its status.
    std::vector<std::string> update(int* status, kvu_file_manifest* out = nullptr) {
        host.clear_requests();
        kvu_file_manifest manifest;
        manifest.port = host.port();
        manifest.callback_context = this;
        manifest.message_callback = [](void* context, const char* text) {
            static_cast<site*>(context)->messages.push_back(text);
        };
        EXPECT_TRUE(manifest.set_destination(pack.c_str()));
        EXPECT_TRUE(manifest.set_temporary_file((pack + "/tmp/update.tmp").c_str()));
        manifest.load_manifest((pack + "/update_manifest.lst").c_str());
        manifest.load_exclude_list((pack + "/update_exclude.lst").c_str());
        *status = manifest.update("127.0.0.1", "/soundpack", "file_manifest_audio.txt.gz");
        if (out) {
            out->files_updated = manifest.files_updated;
            out->download_failures = manifest.download_failures;
            out->files_skipped = manifest.files_skipped;
        }
        std::vector<std::string> files;
        for (const std::string& path : host.requests()) {
            if (path != "/soundpack/file_manifest_audio.txt.gz") files.push_back(path.substr(11));
        }
        std::sort(files.begin(), files.end());
        return files;
    }
    bool same(const std::string& name) const {
        return exists(pack + "/" + name) && net_test::read_file(pack + "/" + name) == net_test::read_file(served + "/" + name);
    }
};

using names = std::vector<std::string>;

}  // namespace

TEST(Updater, RoundsAgainstTheWebHost) {
    site s;
    int status = -1;
    kvu_file_manifest counts;
    EXPECT_EQ(s.update(&status, &counts), (names{"a.ogg", "d.ogg", "sub/b b.ogg", "sub/deep/c.ogg"}));
    EXPECT_EQ(status, 0);
    EXPECT_EQ(counts.files_updated, 4);
    for (const char* name : {"a.ogg", "d.ogg", "sub/b b.ogg", "sub/deep/c.ogg"}) EXPECT_TRUE(s.same(name)) << name;
    EXPECT_EQ(s.messages, (names{"4 files to update."}));

    EXPECT_EQ(s.update(&status), names{});
    EXPECT_EQ(status, 0);

    // A changed hash with the same size is fetched; an entry the server dropped stays, its file too.
    write_in(s.served, "a.ogg", bytes_of(5000, 9));
    unlink((s.served + "/sub/deep/c.ogg").c_str());
    s.publish();
    EXPECT_EQ(s.update(&status), names{"a.ogg"});
    EXPECT_TRUE(s.same("a.ogg"));
    EXPECT_TRUE(exists(s.pack + "/sub/deep/c.ogg"));
    EXPECT_NE(net_test::read_file(s.pack + "/update_manifest.lst").find(" sub/deep/c.ogg\n"), std::string::npos);

    // The exclude list skips; a 404 for one file is one failure and the rest goes on.
    write_in(s.served, "d.ogg", bytes_of(300000, 10));
    write_in(s.served, "e.ogg", bytes_of(10, 11));
    write_in(s.served, "f.ogg", bytes_of(20, 12));
    s.publish();
    unlink((s.served + "/e.ogg").c_str());
    net_test::write_file(s.pack + "/update_exclude.lst", "# mine\n\n  \td.ogg\n");
    s.messages.clear();
    EXPECT_EQ(s.update(&status, &counts), (names{"e.ogg", "f.ogg"}));
    EXPECT_EQ(status, 0);
    EXPECT_EQ(counts.files_skipped, 1);
    EXPECT_EQ(counts.download_failures, 1);
    EXPECT_EQ(counts.files_updated, 1);
    EXPECT_FALSE(s.same("d.ogg"));
    EXPECT_TRUE(s.same("f.ogg"));
    EXPECT_EQ(s.messages, (names{"Skipping file 'd.ogg'.", "2 files to update.",
                                 "Unable to update file 'e.ogg' - download failed."}));
    // The failed file is tried again next time, and only it.
    EXPECT_EQ(s.update(&status), names{"e.ogg"});
}

TEST(Updater, AFileDroppedMidTransferIsNotTakenAndComesNextTime) {
    site s;
    s.host.drop_file("d.ogg", 100000);
    int status = -1;
    kvu_file_manifest counts;
    s.update(&status, &counts);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(counts.download_failures, 1);
    EXPECT_FALSE(exists(s.pack + "/d.ogg"));
    s.host.clear_faults();
    EXPECT_EQ(s.update(&status), names{"d.ogg"});
    EXPECT_TRUE(s.same("d.ogg"));
}

TEST(Updater, RemoteManifestFaults) {
    site s;
    int status = -1;
    // No final line feed: the last record is kept.
    std::string text = testworld::manifest_text(s.served);
    text.pop_back();
    gzFile out = gzopen((s.served + "/file_manifest_audio.txt.gz").c_str(), "wb");
    gzwrite(out, text.data(), static_cast<unsigned>(text.size()));
    gzclose(out);
    EXPECT_EQ(s.update(&status).size(), 4u);
    EXPECT_EQ(status, 0);

    // A corrupt gzip, or none at all: status 4 and nothing fetched.
    std::string packed = net_test::read_file(s.served + "/file_manifest_audio.txt.gz");
    packed[packed.size() / 2] ^= 0x5a;
    net_test::write_file(s.served + "/file_manifest_audio.txt.gz", packed);
    write_in(s.served, "new.ogg", "x");
    EXPECT_EQ(s.update(&status), names{});
    EXPECT_EQ(status, 4);
    EXPECT_EQ(s.messages.back(),
              "Error fetching update file 'file_manifest_audio.txt.gz' from remote server, aborting update.");
    unlink((s.served + "/file_manifest_audio.txt.gz").c_str());
    EXPECT_EQ(s.update(&status), names{});
    EXPECT_EQ(status, 4);
}

TEST(Updater, StatusesBeforeAnyFetch) {
    kvu_file_manifest manifest;
    std::vector<std::string> messages;
    manifest.callback_context = &messages;
    manifest.message_callback = [](void* c, const char* t) { static_cast<std::vector<std::string>*>(c)->push_back(t); };
    EXPECT_EQ(manifest.update("127.0.0.1", "/soundpack", "m"), 3);
    net_test::temp_dir dir;
    manifest.load_manifest(dir.file("m.lst").c_str());
    EXPECT_EQ(manifest.update("127.0.0.1", "/soundpack", "m"), 1);
    manifest.set_temporary_file(dir.file("tmp/t").c_str());
    EXPECT_EQ(manifest.update("127.0.0.1", "/soundpack", "m"), 2);
    // No web host at all.
    manifest.set_destination(dir.file("pack").c_str());
    manifest.port = net_test::unused_port();
    EXPECT_EQ(manifest.update("127.0.0.1", "/soundpack", "m"), 4);
    EXPECT_EQ(messages, (names{"No manifest filename set.", "No temporary download filename set.",
                               "No destination path set to store downloaded files.",
                               "Error fetching update file 'm' from remote server, aborting update."}));
}

TEST(UpdaterDeathTest, AFailedSaveInTheMiddleEndsTheProcessWithCodeOne) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    site s;
    // Every file's success saves; after the first, the manifest's folder is gone.
    EXPECT_EXIT(
        {
            kvu_file_manifest manifest;
            manifest.port = s.host.port();
            manifest.save_interval_seconds = -1;
            manifest.callback_context = &s;
            manifest.message_callback = [](void*, const char* text) { std::fprintf(stderr, "%s\n", text); };
            manifest.total_progress_callback = [](void* context, double, double) {
                const site* owner = static_cast<site*>(context);
                std::rename((owner->dir.file("state")).c_str(), owner->dir.file("state.gone").c_str());
            };
            mkdir(s.dir.file("state").c_str(), 0700);
            manifest.set_destination(s.pack.c_str());
            manifest.set_temporary_file((s.pack + "/tmp/update.tmp").c_str());
            manifest.load_manifest(s.dir.file("state/update_manifest.lst").c_str());
            manifest.update("127.0.0.1", "/soundpack", "file_manifest_audio.txt.gz");
            std::exit(0);
        },
        ::testing::ExitedWithCode(1), "4 files to update.\nError - unable to save manifest file.  Bailing out.\n");
}

namespace {

zorn_soundpack_updater_settings quick_settings(const std::string& config, int port) {
    zorn_soundpack_updater_settings settings;
    settings.config_directory = config;
    settings.web_host = "127.0.0.1";
    settings.web_port = port;
    settings.before_round_ms = 0;
    settings.after_failure_ms = 1;
    settings.after_success_ms = 2;
    return settings;
}

}  // namespace

TEST(SoundpackRound, LogLinesOfSuccessLockAndFailure) {
    site s;
    const std::string config = s.dir.file("client");
    const zorn_soundpack_updater_settings settings = quick_settings(config, s.host.port());
    {
        log_capture log(3);
        EXPECT_EQ(zorn_soundpack_update_round(settings), 2);
        // A progress line comes when the round crosses a second.
        std::string text = log.text();
        for (size_t at; (at = text.find("% complete.\n")) != std::string::npos;) {
            const size_t start = text.rfind("Soundpack ", at);
            text.erase(start, at + 12 - start);
        }
        EXPECT_EQ(text, "Error loading manifest file '" + config + "/soundpack/update_manifest.lst', creating new.\n"
                              "4 files to update.\n4/4 files successfully updated.\n"
                              "Soundpack update success, sleeping six hours.\n");
        EXPECT_TRUE(s.same("sub/b b.ogg"));
        EXPECT_TRUE(exists(config + "/soundpack/download.lck"));
    }
    {
        // Another process holds the lock.
        log_capture log(3);
        int ready[2];
        ASSERT_EQ(pipe(ready), 0);
        const pid_t holder = fork();
        if (holder == 0) {
            const char locked = zorn_lock_file((config + "/soundpack/download.lck").c_str()) >= 0 ? 'y' : 'n';
            if (write(ready[1], &locked, 1) != 1) _exit(1);
            pause();
            _exit(0);
        }
        char locked = 0;
        ASSERT_EQ(read(ready[0], &locked, 1), 1);
        EXPECT_EQ(locked, 'y');
        close(ready[0]);
        close(ready[1]);
        EXPECT_EQ(zorn_soundpack_update_round(settings), 1);
        kill(holder, SIGKILL);
        waitpid(holder, nullptr, 0);
        EXPECT_EQ(log.text(), "Soundpack update already in progress, doing nothing.\n");
    }
    {
        // No web host at all.
        log_capture log(1);
        zorn_soundpack_updater_settings nowhere = settings;
        nowhere.web_port = net_test::unused_port();
        EXPECT_EQ(zorn_soundpack_update_round(nowhere), 1);
        const std::string text = log.text();
        const std::string last = "Soundpack update failed?  Trying again in ten minutes.\n";
        ASSERT_GE(text.size(), last.size());
        EXPECT_EQ(text.substr(text.size() - last.size()), last);
    }
    {
        // A soundpack path that can't be a folder.
        log_capture log(1);
        net_test::write_file(s.dir.file("plain"), "x");
        zorn_soundpack_updater_settings blocked = settings;
        blocked.config_directory = s.dir.file("plain");
        EXPECT_EQ(zorn_soundpack_update_round(blocked), 1);
        EXPECT_EQ(log.text(), "Unable to create soundpack directory '" + s.dir.file("plain") + "/soundpack/'.\n");
    }
}

TEST(SoundpackRound, AtMostOneProgressLineASecond) {
    log_capture log(3);
    const time_t start = time(nullptr);
    while (time(nullptr) == start) usleep(1000);
    const time_t second = time(nullptr);
    zorn_soundpack_log_progress(50, 100);
    zorn_soundpack_log_progress(75, 100);
    zorn_soundpack_log_progress(3, 0);
    if (time(nullptr) == second) {
        EXPECT_EQ(log.text(), "Soundpack  50.0% complete.\n");
    }
    while (time(nullptr) == second) usleep(1000);
    zorn_soundpack_log_progress(3, 0);
    EXPECT_NE(log.text().find("Soundpack 300.0% complete.\n"), std::string::npos) << "over 1.0 when nothing is to do";
}

TEST(SoundpackRound, AReadOnlyFolderIsLoggedAndRetried) {
    site s;
    const std::string config = s.dir.file("ro");
    mkdir(config.c_str(), 0755);
    mkdir((config + "/soundpack").c_str(), 0555);
    chmod(s.dir.path().c_str(), 0755);
    log_capture log(1);
    // Permission bits don't stop root: the rounds run in a child as nobody.
    const pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) _exit(3);
        zorn_soundpack_updater_settings settings = quick_settings(config, s.host.port());
        settings.rounds = 2;
        zorn_soundpack_updater_loop(settings);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    ASSERT_EQ(WEXITSTATUS(status), 0);
    const std::string line = "Unable to create soundpack directory '" + config + "/soundpack/'.\n";
    EXPECT_EQ(log.text(), line + line);
    EXPECT_EQ(s.host.requests(), names{});
}

TEST(DownloadQueue, OrderDestinationsAndProgress) {
    net_test::temp_dir dir;
    const std::string served = dir.file("web");
    write_in(served, "A.ogg", bytes_of(300000, 1));
    write_in(served, "B.ogg", bytes_of(10, 2));
    write_in(served, "sub/C.ogg", bytes_of(200, 3));
    testworld::web_host host;
    ASSERT_TRUE(host.start(served));
    zorn_download::set_site(dir.file("config").c_str(), "127.0.0.1", host.port());

    struct record {
        std::mutex lock;
        std::vector<std::string> done;
        std::vector<int> percents;
        int b_progress = 0;
    } seen;
    struct job {
        record* owner;
        std::string name;
    };
    job a{&seen, "A"}, b{&seen, "B"}, c{&seen, "C"}, missing{&seen, "missing"};
    auto complete = [](void* context, int failed) {
        auto* j = static_cast<job*>(context);
        std::lock_guard<std::mutex> hold(j->owner->lock);
        j->owner->done.push_back(j->name + (failed ? " failed" : ""));
    };
    auto progress = [](void* context, int percent) {
        auto* j = static_cast<job*>(context);
        std::lock_guard<std::mutex> hold(j->owner->lock);
        if (j->name == "A") j->owner->percents.push_back(percent);
    };
    // A is held by the server until the others wait in the queue.
    host.stall_file("A.ogg", 1000);
    zorn_download::queue_download("soundpack/A.ogg", complete, progress, &a, "mine/a.ogg");
    for (int i = 0; i < 500 && !host.stalling(); ++i) usleep(10000);
    ASSERT_TRUE(host.stalling());
    zorn_download::queue_download("soundpack/B.ogg", complete, progress, &b, nullptr);
    zorn_download::queue_download("soundpack/sub/C.ogg", complete, progress, &c, nullptr);
    zorn_download::queue_download("soundpack/none.ogg", complete, progress, &missing, nullptr);
    host.release_stalls();
    for (int i = 0; i < 500; ++i) {
        {
            std::lock_guard<std::mutex> hold(seen.lock);
            if (seen.done.size() == 4) break;
        }
        usleep(10000);
    }
    std::lock_guard<std::mutex> hold(seen.lock);
    EXPECT_EQ(seen.done, (names{"A", "B", "C", "missing failed"}));
    EXPECT_EQ(host.requests(),
              (names{"/soundpack/A.ogg", "/soundpack/B.ogg", "/soundpack/sub/C.ogg", "/soundpack/none.ogg"}));
    EXPECT_EQ(net_test::read_file(dir.file("config/mine/a.ogg")), bytes_of(300000, 1));
    EXPECT_EQ(net_test::read_file(dir.file("config/soundpack/sub/C.ogg")), bytes_of(200, 3));
    ASSERT_FALSE(seen.percents.empty());
    EXPECT_EQ(seen.percents.back(), 100);
    EXPECT_TRUE(std::is_sorted(seen.percents.begin(), seen.percents.end()));
    EXPECT_EQ(std::adjacent_find(seen.percents.begin(), seen.percents.end()), seen.percents.end());
}

TEST(DownloadQueue, UnknownSizeGivesNoProgress) {
    net_test::http_reply reply;
    zorn_download::entry job{};
    int calls = 0;
    job.context = &calls;
    job.last_percent = -1;
    job.progress_callback = [](void* context, int) { ++*static_cast<int*>(context); };
    std::snprintf(job.url_path, sizeof job.url_path, "x");
    std::snprintf(job.destination, sizeof job.destination, "x");
    net_test::temp_dir dir;
    net_test::http_test_server server;
    reply.framing = net_test::http_reply::no_length;
    reply.body = bytes_of(50000, 5);
    ASSERT_TRUE(server.start(reply));
    zorn_download::set_site(dir.path().c_str(), "127.0.0.1", server.port());
    EXPECT_EQ(zorn_download::http_download_single(&job), 0);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(net_test::read_file(dir.file("x")), reply.body);
}
