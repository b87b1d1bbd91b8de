// zorn_http_downloader against the HTTP test server on 127.0.0.1: every way a reply can end, what
// download answers, and what is left in the destination file.

#include "net/http_downloader.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "tests/net/http_test_server.h"
#include "tests/net/net_test_support.h"
#include "tests/support/log_capture.h"

namespace {

using net_test::http_reply;

std::string body_of(size_t count) {
    std::string body(count, '\0');
    for (size_t i = 0; i < count; ++i) body[i] = static_cast<char>((i * 7 + i / 251) & 0xff);
    return body;
}

bool exists(const std::string& path) {
    struct stat info{};
    return stat(path.c_str(), &info) == 0;
}

struct progress_log {
    std::vector<std::pair<int, int>> calls;
    static void record(void* context, int received, int expected) {
        static_cast<progress_log*>(context)->calls.emplace_back(received, expected);
    }
};

struct transfer {
    net_test::http_test_server server;
    net_test::temp_dir dir;
    zorn_http_downloader downloader;
    std::string file = dir.file("out.bin");

    bool start(const http_reply& reply) {
        if (!server.start(reply)) return false;
        return downloader.set_connection("127.0.0.1", server.port(), 0);
    }
    bool fetch(const char* path = "/soundpack/a b.ogg") { return downloader.download("h.example", path, file.c_str()); }
};

TEST(HttpDownloader, ExactLengthReturnsWhileTheServerStillHoldsTheConnection) {
    transfer t;
    http_reply reply;
    reply.body = body_of(100000);
    reply.ending = http_reply::hold_open;
    ASSERT_TRUE(t.start(reply));
    EXPECT_EQ(t.downloader.port, t.server.port());
    // The server lets go only after the client has closed (or after 10 s): a download that waited
    // for the server's close would take that long.
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(t.fetch());
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
    EXPECT_EQ(net_test::read_file(t.file), reply.body);
    EXPECT_EQ(t.downloader.expected_bytes, 100000);
    EXPECT_EQ(t.downloader.received_bytes, 100000);
    EXPECT_EQ(t.downloader.output_file, nullptr);
    EXPECT_EQ(t.downloader.socket.current_state(), socket_closed);
    EXPECT_EQ(t.server.last_request(),
              "GET /soundpack/a%20b.ogg HTTP/1.1\r\nHost: h.example\r\nContent-Length: 0\r\n"
              "Accept-Encoding: identity\r\nConnection: close\r\n\r\n");
    for (int i = 0; i < 200 && !t.server.client_closed_held(); ++i) usleep(10000);
    EXPECT_TRUE(t.server.client_closed_held()) << "the client closed its end";
}

TEST(HttpDownloader, RepliesThatSucceed) {
    struct row {
        const char* name;
        http_reply::framing_kind framing;
        size_t size;
        int expected;
    };
    const row rows[] = {
        {"no length, until the close", http_reply::no_length, 50000, -1},
        {"chunked", http_reply::chunked, 50000, -1},
        {"empty", http_reply::with_length, 0, 0},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.name);
        transfer t;
        http_reply reply;
        reply.body = body_of(r.size);
        reply.framing = r.framing;
        ASSERT_TRUE(t.start(reply));
        progress_log progress;
        t.downloader.progress_callback = progress_log::record;
        t.downloader.callback_context = &progress;
        EXPECT_TRUE(t.fetch());
        EXPECT_EQ(net_test::read_file(t.file), reply.body);
        if (r.size == 0) {
            EXPECT_TRUE(progress.calls.empty());
            continue;
        }
        ASSERT_GE(progress.calls.size(), 2u);
        EXPECT_EQ(progress.calls.front(), std::make_pair(0, r.expected)) << "-1: the reply gave no length";
        EXPECT_EQ(progress.calls.back(), std::make_pair(static_cast<int>(r.size), r.expected));
    }
}

TEST(HttpDownloader, NotFoundLeavesTheDestinationUntouched) {
    transfer t;
    http_reply reply;
    reply.status = 404;
    reply.reason = "Not Found";
    reply.body = "no such file";
    ASSERT_TRUE(t.start(reply));
    net_test::write_file(t.file, "old content");
    log_capture log(2);
    EXPECT_FALSE(t.fetch());
    EXPECT_EQ(net_test::read_file(t.file), "old content");
    EXPECT_EQ(log.text(),
              "Warning in zorn_http_downloader::callback_message_received(), download failed for file '" + t.file +
                  "'.  Aborting download.\n"
                  "Error in zorn_http_downloader::download(), http data fetch failed.\n");
}

TEST(HttpDownloader, CallbackMode) {
    struct sink {
        std::string bytes;
        int answer = 1;
        static int take(void* context, const char* data, int count) {
            sink& s = *static_cast<sink*>(context);
            s.bytes.append(data, static_cast<size_t>(count));
            return s.answer;
        }
    };
    for (int answer : {1, 0}) {
        SCOPED_TRACE(answer);
        log_capture quiet(0);
        transfer t;
        http_reply reply;
        reply.body = body_of(30000);
        ASSERT_TRUE(t.start(reply));
        sink s;
        s.answer = answer;
        t.downloader.data_callback = sink::take;
        t.downloader.callback_context = &s;
        EXPECT_EQ(t.downloader.download("h", "/x"), answer == 1);
        if (answer == 1) {
            EXPECT_EQ(s.bytes, reply.body);
        }
        EXPECT_FALSE(exists(t.file));
    }

    transfer t;
    http_reply reply;
    reply.status = 301;
    reply.reason = "Moved Permanently";
    ASSERT_TRUE(t.start(reply));
    sink s;
    t.downloader.data_callback = sink::take;
    t.downloader.callback_context = &s;
    log_capture log(2);
    EXPECT_FALSE(t.downloader.download("h", "/x")) << "redirects are not followed";
    EXPECT_EQ(log.text(),
              "Warning in zorn_http_downloader::callback_message_received(), download failed in callback mode.\n"
              "Error in zorn_http_downloader::download(), http data fetch failed.\n");
}

// A reply cut off in mid-body fails, whether by a reset or by a clean close, and the file is kept
// or removed as the four rows of the read failure say.
TEST(HttpDownloader, CutOffInMidBody) {
    struct row {
        const char* name;
        http_reply::ending_kind ending;
        http_reply::framing_kind framing;
        bool progress;
        const char* message;
        bool file_stays;
    };
    const row rows[] = {
        {"reset", http_reply::reset_mid, http_reply::with_length, false,
         "Error in zorn_http_downloader::download(), blocking read failed, unknown file state.  Deleting file.", false},
        {"reset, progress", http_reply::reset_mid, http_reply::with_length, true,
         "Error in zorn_http_downloader::download(), blocking read failed, not all bytes read.", true},
        {"close", http_reply::close_mid, http_reply::with_length, false,
         "Error in zorn_http_downloader::download(), blocking read failed, unknown file state.  Deleting file.", false},
        {"close, progress", http_reply::close_mid, http_reply::with_length, true,
         "Error in zorn_http_downloader::download(), blocking read failed, not all bytes read.", true},
        {"close in a chunk", http_reply::close_mid, http_reply::chunked, false,
         "Error in zorn_http_downloader::download(), blocking read failed, unknown file state.  Deleting file.", false},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.name);
        transfer t;
        http_reply reply;
        reply.body = body_of(40000);
        reply.ending = r.ending;
        reply.framing = r.framing;
        reply.cut_at = 15000;
        ASSERT_TRUE(t.start(reply));
        progress_log progress;
        if (r.progress) {
            t.downloader.progress_callback = progress_log::record;
            t.downloader.callback_context = &progress;
        }
        log_capture log(2);
        EXPECT_FALSE(t.fetch());
        EXPECT_NE(log.text().find(r.message), std::string::npos) << log.text();
        EXPECT_EQ(exists(t.file), r.file_stays);
        if (r.file_stays) {
            const std::string kept = net_test::read_file(t.file);
            EXPECT_EQ(kept, reply.body.substr(0, kept.size()));
            EXPECT_EQ(static_cast<int>(kept.size()), t.downloader.received_bytes);
            EXPECT_LT(kept.size(), reply.body.size());
        }
    }
}

TEST(HttpDownloader, CloseWithoutAReplyFailsAndKeepsAnOldFile) {
    int port = 0;
    const int listener = net_test::open_loopback_listener(2, &port);
    ASSERT_GE(listener, 0);
    std::thread closer([listener] {
        const int connection = accept(listener, nullptr, nullptr);
        char block[512];
        recv(connection, block, sizeof block, 0);
        close(connection);
    });
    net_test::temp_dir dir;
    const std::string file = dir.file("kept");
    net_test::write_file(file, "old");
    zorn_http_downloader d;
    ASSERT_TRUE(d.set_connection("127.0.0.1", port, 0));
    log_capture log(2);
    EXPECT_FALSE(d.download("h", "/x", file.c_str()));
    EXPECT_EQ(log.text(),
              "Error in zorn_http_downloader::download(), blocking read failed, unknown file state.  Deleting file.\n");
    closer.join();
    close(listener);
    EXPECT_EQ(net_test::read_file(file), "old");
}

TEST(HttpDownloader, ArgumentsAreCheckedFirst) {
    zorn_http_downloader d;
    EXPECT_EQ(d.port, 80);
    EXPECT_EQ(d.expected_bytes, -1);
    log_capture log(2);
    EXPECT_FALSE(d.set_connection(nullptr, 80, 0));
    EXPECT_FALSE(d.download(nullptr, "/", "f"));
    EXPECT_FALSE(d.download("h", nullptr, "f"));
    EXPECT_FALSE(d.download("h", "/", nullptr));
    EXPECT_FALSE(d.download("h", "/"));
    d.data_callback = [](void*, const char*, int) { return 1; };
    EXPECT_FALSE(d.download("h", "/", "f"));
    EXPECT_EQ(log.text(),
              "Error in zorn_http_downloader::set_connection(), NULL host name.\n"
              "Error in zorn_http_downloader::download(), NULL host.\n"
              "Error in zorn_http_downloader::download(), NULL path.\n"
              "Error in zorn_http_downloader::download(), NULL destination file name.\n"
              "Error in zorn_http_downloader::download(), NULL destination file name and NULL download data "
              "callback.\n"
              "Error in zorn_http_downloader::download(), attempt to do file based download after setting data "
              "callback.\n");

    zorn_http_downloader nobody;
    ASSERT_TRUE(nobody.set_connection("127.0.0.1", net_test::unused_port(), 0));
    net_test::temp_dir dir;
    log_capture log2(2);
    EXPECT_FALSE(nobody.download("h", "/", dir.file("x").c_str()));
    // A refused connect shows at once, or (plain TCP) at the first write.
    EXPECT_TRUE(log2.text() == "Error in zorn_http_downloader::download(), connect failed.\n" ||
                log2.text() == "Error in zorn_http_downloader::download(), blocking write failed.\n")
        << log2.text();
    EXPECT_FALSE(exists(dir.file("x")));
}

TEST(HttpDownloader, UnwritableDestinationAbortsTheDownload) {
    transfer t;
    http_reply reply;
    reply.body = "abc";
    ASSERT_TRUE(t.start(reply));
    const std::string file = t.dir.file("missing/dir/out");
    log_capture log(2);
    EXPECT_FALSE(t.downloader.download("h", "/x", file.c_str()));
    EXPECT_EQ(log.text(),
              "Warning in zorn_http_downloader::callback_message_received(), unable to open output file '" + file +
                  "'.  Aborting download.\nError in zorn_http_downloader::download(), http data fetch failed.\n");
}

// A disk that takes nothing: the failure shows in a write, or in the close that flushes the last
// bytes, and the download fails either way.
TEST(HttpDownloader, FullDiskFails) {
    for (size_t size : {size_t{3}, size_t{200000}}) {
        SCOPED_TRACE(size);
        transfer t;
        http_reply reply;
        reply.body = body_of(size);
        ASSERT_TRUE(t.start(reply));
        log_capture log(2);
        EXPECT_FALSE(t.downloader.download("h", "/x", "/dev/full"));
        EXPECT_NE(log.text().find("Warning in zorn_http_downloader::callback_content_data_received(), unable to write "
                                  "all data to disk.  Bailing.\n"),
                  std::string::npos);
        EXPECT_EQ(t.downloader.output_file, nullptr);
    }
}

// Takes over six seconds: the server is silent past the first five-second wait, then answers.
TEST(HttpDownloader, SilentServerIsStillWaitedOnAfterSixSeconds) {
    transfer t;
    http_reply reply;
    reply.body = "late but whole";
    reply.delay_ms = 6500;
    ASSERT_TRUE(t.start(reply));
    ASSERT_EQ(t.downloader.read_step_ms, 5000);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(t.fetch());
    const auto waited = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(waited, std::chrono::milliseconds(6400));
    EXPECT_EQ(net_test::read_file(t.file), reply.body);
}

}  // namespace
