#include "base/files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "base/fixed_string.h"
#include "config/debug_log.h"
#include "tests/support/log_capture.h"

namespace {

namespace fs = std::filesystem;

struct file_closer {
    void operator()(FILE* file) const { std::fclose(file); }
};
using stream_ptr = std::unique_ptr<FILE, file_closer>;

// A read stream over the given bytes (NULs included).
stream_ptr stream_of(const std::string& bytes) {
    FILE* file = std::tmpfile();
    if (file) {
        std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::rewind(file);
    }
    return stream_ptr(file);
}

std::string rest_of(FILE* stream) {
    std::string rest;
    for (int c = std::getc(stream); c != EOF; c = std::getc(stream)) rest += static_cast<char>(c);
    return rest;
}

class files_dir : public ::testing::Test {
protected:
    void SetUp() override {
        char name[] = "/tmp/lantern_files_test_XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        root = name;
    }
    void TearDown() override {
        std::error_code ignored;
        fs::permissions(root, fs::perms::owner_all, fs::perm_options::add, ignored);
        for (const auto& entry : fs::recursive_directory_iterator(root, ignored)) {
            if (entry.is_directory(ignored)) fs::permissions(entry.path(), fs::perms::owner_all, fs::perm_options::add, ignored);
        }
        fs::remove_all(root, ignored);
    }
    std::string at(const std::string& relative) const { return root + "/" + relative; }

    std::string root;
};

// Runs body with the working directory set to dir, and restores it after.
template <typename Body>
void in_directory(const std::string& dir, Body body) {
    char saved[4096];
    ASSERT_NE(getcwd(saved, sizeof saved), nullptr);
    ASSERT_EQ(chdir(dir.c_str()), 0);
    body();
    ASSERT_EQ(chdir(saved), 0);
}

TEST_F(files_dir, recursive_mkdir_makes_only_directories) {
    in_directory(root, [] {
        EXPECT_TRUE(zorn_recursive_mkdir("a/b/c.txt", 0755, nullptr));
        EXPECT_TRUE(zorn_recursive_mkdir("x//y/", 0755, nullptr));
        EXPECT_TRUE(zorn_recursive_mkdir("p\\q\\", 0755, nullptr));
    });
    EXPECT_TRUE(fs::is_directory(at("a")));
    EXPECT_TRUE(fs::is_directory(at("a/b")));
    EXPECT_FALSE(fs::exists(at("a/b/c.txt")));
    EXPECT_TRUE(fs::is_directory(at("x/y")));
    EXPECT_TRUE(fs::is_directory(at("p/q")));

    // Absolute, and a second time over directories that exist.
    zorn_fixed_string failed;
    EXPECT_TRUE(zorn_recursive_mkdir(at("a/b/new/").c_str(), 0755, &failed));
    EXPECT_TRUE(zorn_recursive_mkdir(at("a/b/new/").c_str(), 0755, &failed));
    EXPECT_TRUE(fs::is_directory(at("a/b/new")));
    EXPECT_TRUE(failed.empty());
}

TEST_F(files_dir, recursive_mkdir_reports_the_failing_directory) {
    std::ofstream(at("plain")) << "not a directory";
    zorn_fixed_string failed("seen: ");
    EXPECT_FALSE(zorn_recursive_mkdir(at("plain/sub/deeper/").c_str(), 0755, &failed));
    EXPECT_EQ(std::string(failed.c_str()), "seen: " + at("plain/sub"));
    EXPECT_FALSE(zorn_recursive_mkdir(at("plain/sub/").c_str(), 0755, nullptr));

    log_capture log;
    EXPECT_FALSE(zorn_recursive_mkdir(nullptr, 0755, &failed));
    EXPECT_EQ(log.text(), "Error in zorn_recursive_mkdir(), NULL path.\n");
}

TEST_F(files_dir, writeable_directory_probe_is_removed) {
    EXPECT_TRUE(zorn_create_and_check_writeable_directory(at("w/x").c_str(), 0755, nullptr));
    EXPECT_TRUE(fs::is_directory(at("w/x")));
    EXPECT_FALSE(fs::exists(at(std::string("w/x/") + zorn_probe_file_name)));

    // A probe left behind by an earlier run is overwritten and then removed too.
    std::ofstream(at(std::string("w/x/") + zorn_probe_file_name)) << "old";
    EXPECT_TRUE(zorn_create_and_check_writeable_directory(at("w/x").c_str(), 0755, nullptr));
    EXPECT_FALSE(fs::exists(at(std::string("w/x/") + zorn_probe_file_name)));

    in_directory(root, [this] {
        EXPECT_TRUE(zorn_create_and_check_writeable_directory("", 0755, nullptr));
        EXPECT_FALSE(fs::exists(at(zorn_probe_file_name)));
    });
}

TEST_F(files_dir, writeable_directory_fails_below_a_file) {
    std::ofstream(at("plain")) << "x";
    zorn_fixed_string failed;
    EXPECT_FALSE(zorn_create_and_check_writeable_directory(at("plain/dir").c_str(), 0755, &failed));
    EXPECT_EQ(std::string(failed.c_str()), at("plain/dir"));

    log_capture log;
    EXPECT_FALSE(zorn_create_and_check_writeable_directory(nullptr, 0755, &failed));
    EXPECT_EQ(log.text(), "Error in zorn_create_and_check_writeable_directory(), NULL path.\n");
}

TEST_F(files_dir, read_only_directory_fails_the_probe) {
    const std::string dir = at("locked");
    ASSERT_EQ(mkdir(dir.c_str(), 0555), 0);
    ASSERT_EQ(chmod(dir.c_str(), 0555), 0);
    // With CAP_DAC_OVERRIDE (root) permission bits don't stop a write; then there is nothing to see.
    const std::string attempt = dir + "/can-i-write";
    const int descriptor = open(attempt.c_str(), O_WRONLY | O_CREAT, 0600);
    if (descriptor >= 0) {
        close(descriptor);
        unlink(attempt.c_str());
        GTEST_SKIP() << "permission bits do not stop this user from writing";
    }
    zorn_fixed_string failed;
    EXPECT_FALSE(zorn_create_and_check_writeable_directory(dir.c_str(), 0755, &failed));
    EXPECT_EQ(std::string(failed.c_str()), dir + "/" + zorn_probe_file_name);
}

// Forks a process that tries the lock; true when it was refused without waiting.
bool other_process_is_refused(const std::string& path) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(5);  // a lock call that waits is killed here and shows as a failure
        const int descriptor = zorn_lock_file(path.c_str());
        _exit(descriptor < 0 ? 0 : 1);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) return false;
    if (!WIFEXITED(status)) {
        ADD_FAILURE() << "lock attempt in the child did not return";
        return false;
    }
    return WEXITSTATUS(status) == 0;
}

TEST_F(files_dir, lock_file_keeps_out_a_second_process) {
    const std::string path = at("download.lck");
    const int descriptor = zorn_lock_file(path.c_str());
    ASSERT_GE(descriptor, 0);
    EXPECT_TRUE(other_process_is_refused(path));
    EXPECT_TRUE(zorn_unlock_file(descriptor));
    EXPECT_FALSE(other_process_is_refused(path));
    EXPECT_TRUE(fs::exists(path));  // the file stays behind
    EXPECT_EQ(fs::file_size(path), 0u);

    EXPECT_FALSE(zorn_unlock_file(-1));
    EXPECT_EQ(zorn_lock_file(at("missing/dir/x.lck").c_str()), -1);
}

TEST(files_read, fget_line_ends_and_carriage_returns) {
    static const char bytes[] = "ab\r\ncd\n\nx\ry\0z\nlast";
    auto stream = stream_of(std::string(bytes, sizeof bytes - 1));
    char buffer[32];
    const char* expected[] = {"ab", "cd", "", "xy", "z", "last"};
    for (const char* line : expected) {
        SCOPED_TRACE(line);
        ASSERT_EQ(fget_line(stream.get(), buffer, sizeof buffer), static_cast<int>(std::strlen(line)) + 1);
        EXPECT_STREQ(buffer, line);
    }
    EXPECT_EQ(fget_line(stream.get(), buffer, sizeof buffer), 0);
}

TEST(files_read, fget_line_overflow_leaves_the_rest_in_the_stream) {
    log_capture log;
    auto stream = stream_of("abcdefg\nxyz\r\n");
    char buffer[4];
    EXPECT_EQ(fget_line(stream.get(), buffer, sizeof buffer), 4);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(fget_line(stream.get(), buffer, sizeof buffer), 4);
    EXPECT_STREQ(buffer, "def");
    EXPECT_EQ(fget_line(stream.get(), buffer, sizeof buffer), 2);
    EXPECT_STREQ(buffer, "g");
    EXPECT_EQ(fget_line(stream.get(), buffer, sizeof buffer), 4);  // fits exactly, CR dropped: no warning
    EXPECT_STREQ(buffer, "xyz");
    EXPECT_EQ(fget_line(stream.get(), buffer, sizeof buffer), 0);
    EXPECT_EQ(log.text(),
              "Warning in fget_line(), string overflow.  String was:\nabc\n"
              "Warning in fget_line(), string overflow.  String was:\ndef\n");
}

TEST(files_read, fget_line_with_no_room_takes_nothing) {
    log_capture log;
    auto stream = stream_of("ab\n");
    char one[1] = {'z'};
    EXPECT_EQ(fget_line(stream.get(), one, 1), 1);
    EXPECT_EQ(one[0], '\0');
    EXPECT_NE(log.text().find("Warning in fget_line(), string overflow."), std::string::npos);
    char buffer[8];
    EXPECT_EQ(fget_line(stream.get(), buffer, sizeof buffer), 3);
    EXPECT_STREQ(buffer, "ab");
}

TEST(files_read, fget_long_terminators_and_limit) {
    static const char bytes[] = "one;\ntwo\0\nthree";
    auto stream = stream_of(std::string(bytes, sizeof bytes - 1));
    char buffer[fget_long_size];
    EXPECT_EQ(fget_long(stream.get(), buffer), 4);
    EXPECT_STREQ(buffer, "one");
    EXPECT_EQ(fget_long(stream.get(), buffer), 4);
    EXPECT_STREQ(buffer, "two");
    EXPECT_EQ(fget_long(stream.get(), buffer), 6);
    EXPECT_STREQ(buffer, "three");
    EXPECT_EQ(fget_long(stream.get(), buffer), 0);

    const std::string exact(fget_long_size - 1, 'e');
    log_capture log;
    auto full = stream_of(exact + ";\n" + exact + "tail;\n");
    EXPECT_EQ(fget_long(full.get(), buffer), fget_long_size);
    EXPECT_EQ(log.text(), "");
    EXPECT_EQ(fget_long(full.get(), buffer), fget_long_size);
    EXPECT_EQ(std::string(buffer), exact);
    EXPECT_EQ(log.text(), "Warning in fget_long(), string overflow.  String was:\n" + exact + "\n");
    EXPECT_EQ(fget_long(full.get(), buffer), 5);
    EXPECT_STREQ(buffer, "tail");
}

TEST(files_read, fget_block_counts_and_zeroes) {
    struct row {
        const char* text;
        int count;
        int first_values[3];
        const char* left;
    };
    const row rows[] = {
        {"1 2 3\nnext", 3, {1, 2, 3}, "next"},
        {"-4 +5\r\nnext", 2, {-4, 5, 0}, "\nnext"},
        {"5 x 7\n", 1, {5, 0, 0}, "x 7\n"},
        {"\nnext", 0, {0, 0, 0}, "next"},
        {"1 2 3 4 5 6 7 8 9 10 11 12 13 14\nnext", 12, {1, 2, 3}, "next"},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.text);
        auto stream = stream_of(r.text);
        int numbers[fget_block_count];
        std::fill(numbers, numbers + fget_block_count, 99);
        ASSERT_EQ(fget_block(stream.get(), numbers), r.count);
        for (int i = 0; i < 3; ++i) EXPECT_EQ(numbers[i], r.first_values[i]);
        for (int i = r.count; i < fget_block_count; ++i) EXPECT_EQ(numbers[i], 0) << "entry " << i;
        EXPECT_EQ(rest_of(stream.get()), r.left);
    }
}

TEST(files_read, fget_block_and_dblock_at_end_of_file) {
    log_capture log;
    int numbers[fget_block_count];
    std::fill(numbers, numbers + fget_block_count, 99);
    auto stream = stream_of("7 8");
    EXPECT_EQ(fget_block(stream.get(), numbers), 2);
    EXPECT_EQ(numbers[2], 0);

    double reals[fget_block_count];
    auto real_stream = stream_of("1.5 -2e3\n");
    EXPECT_EQ(fget_dblock(real_stream.get(), reals), 2);
    EXPECT_DOUBLE_EQ(reals[0], 1.5);
    EXPECT_DOUBLE_EQ(reals[1], -2000.0);
    EXPECT_EQ(reals[11], 0.0);
    EXPECT_EQ(fget_dblock(real_stream.get(), reals), 0);
    EXPECT_EQ(log.text(),
              "Error in fget_block(), EOF encountered.\n"
              "Error in fget_dblock(), EOF encountered.\n");
}

TEST(files_read, fget_tilde_text_escapes) {
    struct row {
        const char* text;
        const char* value;
        const char* left;
    };
    const row rows[] = {
        {"abc~\nrest", "abc", "rest"},
        {"a~~b~Ac~ x", "a~~b~Ac", "x"},
        {"~b after", "", " after"},
        {"tail", "tail", ""},
        {"multi\nline~\n", "multi\nline", ""},
        {"low~a", "low", ""},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.text);
        auto stream = stream_of(r.text);
        char buffer[fget_tilde_size];
        EXPECT_EQ(fget_tilde_text(stream.get(), buffer), static_cast<int>(std::strlen(r.value)) + 1);
        EXPECT_STREQ(buffer, r.value);
        EXPECT_EQ(rest_of(stream.get()), r.left);
    }
}

TEST(files_read, fget_tilde_text_limit) {
    char buffer[fget_tilde_size];
    auto stream = stream_of(std::string(4000, 'x'));
    EXPECT_EQ(fget_tilde_text(stream.get(), buffer), fget_tilde_size - 1);
    EXPECT_EQ(rest_of(stream.get()).size(), 10u);

    // An escaped pair straddling the limit still fits the buffer.
    auto pair = stream_of(std::string(fget_tilde_size - 3, 'x') + "~~rest");
    EXPECT_EQ(fget_tilde_text(pair.get(), buffer), fget_tilde_size);
    EXPECT_EQ(std::string(buffer).substr(fget_tilde_size - 3), "~~");
}

TEST(files_read, fget_semicolon_text) {
    auto stream = stream_of("\nhello world;\nnext");
    char buffer[fget_semicolon_size];
    EXPECT_EQ(fget_semicolon_text(stream.get(), buffer), 12);
    EXPECT_STREQ(buffer, "hello world");
    EXPECT_EQ(rest_of(stream.get()), "next");
}

TEST(files_read, fget_hash_line_and_word) {
    auto stream = stream_of("junk #title line\r\n#word\trest #last");
    char buffer[32];
    EXPECT_EQ(fget_hash_line(stream.get(), buffer, sizeof buffer), 11);
    EXPECT_STREQ(buffer, "title line");
    EXPECT_EQ(fget_hash_word(stream.get(), buffer, sizeof buffer), 5);
    EXPECT_STREQ(buffer, "word");
    EXPECT_EQ(fget_hash_word(stream.get(), buffer, sizeof buffer), 5);
    EXPECT_STREQ(buffer, "last");
    EXPECT_EQ(fget_hash_line(stream.get(), buffer, sizeof buffer), 0);

    auto none = stream_of("no marks here\n");
    EXPECT_EQ(fget_hash_word(none.get(), buffer, sizeof buffer), 0);
    EXPECT_STREQ(buffer, "");
}

TEST(files_read, fget_match_line_consumes_one_line) {
    auto stream = stream_of("Header v1\r\nbody\nabc\n");
    EXPECT_TRUE(fget_match_line(stream.get(), "Header"));
    EXPECT_TRUE(fget_match_line(stream.get(), "body"));
    EXPECT_FALSE(fget_match_line(stream.get(), "abd"));
    EXPECT_FALSE(fget_match_line(stream.get(), ""));  // no line left

    auto short_line = stream_of("ab\nabc\n");
    EXPECT_FALSE(fget_match_line(short_line.get(), "abc"));
    EXPECT_TRUE(fget_match_line(short_line.get(), "abc"));
}

TEST(files_read, text_starts_with) {
    EXPECT_TRUE(text_starts_with("Header v1", "Header"));
    EXPECT_TRUE(text_starts_with("abc", ""));
    EXPECT_TRUE(text_starts_with("", ""));
    EXPECT_FALSE(text_starts_with("header", "Header"));
    EXPECT_FALSE(text_starts_with("ab", "abc"));
    EXPECT_FALSE(text_starts_with(nullptr, ""));
    EXPECT_FALSE(text_starts_with("a", nullptr));
}

// Reads rows the way a settings reader would: the label word, then the row's block.
template <typename Number, typename Reader>
void read_table(FILE* stream, const char* label, Number* numbers, int count, Reader reader) {
    char word[64];
    while (std::fscanf(stream, "%63s", word) == 1) {
        ASSERT_EQ(std::strncmp(word, label, std::strlen(label)), 0);
        EXPECT_TRUE(reader(stream, word + std::strlen(label), numbers, count)) << word;
    }
}

TEST(files_tables, int_table_round_trip) {
    int numbers[23];
    for (int i = 0; i < 23; ++i) numbers[i] = i * 7 - 50;
    stream_ptr stream(std::tmpfile());
    fput_int_table(stream.get(), "map", numbers, 23);
    std::rewind(stream.get());
    const std::string written = rest_of(stream.get());
    EXPECT_EQ(written.substr(0, 4), "map0");
    EXPECT_NE(written.find("\nmap2 90 97 104\n\n"), std::string::npos);

    std::rewind(stream.get());
    int back[23] = {};
    read_table(stream.get(), "map", back, 23, fget_int_table_row);
    EXPECT_EQ(std::memcmp(back, numbers, sizeof numbers), 0);

    auto outside = stream_of(" 1 2 3\n");
    EXPECT_FALSE(fget_int_table_row(outside.get(), "3", back, 23));
    EXPECT_EQ(rest_of(outside.get()), "");  // the row is read all the same
}

TEST(files_tables, byte_table_round_trip) {
    signed char bytes[12];
    for (int i = 0; i < 12; ++i) bytes[i] = static_cast<signed char>(i * 20 - 120);
    stream_ptr stream(std::tmpfile());
    fput_byte_table(stream.get(), "b", bytes, 12);
    std::rewind(stream.get());
    EXPECT_EQ(rest_of(stream.get()),
              "b0 -120 -100 -80 -60 -40 -20 0 20 40 60\n"
              "b1 80 100\n\n");
    std::rewind(stream.get());
    signed char back[12] = {};
    read_table(stream.get(), "b", back, 12, fget_byte_table_row);
    EXPECT_EQ(std::memcmp(back, bytes, sizeof bytes), 0);
    auto row = stream_of("\n");
    EXPECT_FALSE(fget_byte_table_row(row.get(), "-1", back, 12));
}

}  // namespace
