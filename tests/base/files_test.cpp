#include "base/files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/fixed_string.h"
#include "tests/support/case_file.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

struct file_closer {
    void operator()(FILE* file) const { std::fclose(file); }
};
using stream_ptr = std::unique_ptr<FILE, file_closer>;

// A read stream over the given bytes (NULs included).
stream_ptr stream_of(const std::string& bytes) {
    FILE* file = std::tmpfile();
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::rewind(file);
    return stream_ptr(file);
}

std::string rest_of(FILE* stream) {
    std::string rest;
    for (int c = std::getc(stream); c != EOF; c = std::getc(stream)) rest += static_cast<char>(c);
    return rest;
}

// Runs body with the working directory set to dir, and restores it after.
template <typename Body>
void in_directory(const std::string& dir, Body body) {
    const fs::path saved = fs::current_path();
    fs::current_path(dir);
    body();
    fs::current_path(saved);
}

TEST(files_dir, recursive_mkdir_makes_only_directories_and_names_the_one_that_failed) {
    temp_dir root;
    in_directory(root.path(), [] {
        EXPECT_TRUE(zorn_recursive_mkdir("a/b/c.txt", 0755, nullptr));
        EXPECT_TRUE(zorn_recursive_mkdir("x//y/", 0755, nullptr));
        EXPECT_TRUE(zorn_recursive_mkdir("p\\q\\", 0755, nullptr));
    });
    EXPECT_TRUE(fs::is_directory(root / "a/b"));
    EXPECT_FALSE(fs::exists(root / "a/b/c.txt"));
    EXPECT_TRUE(fs::is_directory(root / "x/y"));
    EXPECT_TRUE(fs::is_directory(root / "p/q"));
    zorn_fixed_string failed;
    EXPECT_TRUE(zorn_recursive_mkdir((root / "a/b/new/").c_str(), 0755, &failed));
    EXPECT_TRUE(zorn_recursive_mkdir((root / "a/b/new/").c_str(), 0755, &failed));  // exists already
    EXPECT_TRUE(fs::is_directory(root / "a/b/new"));
    EXPECT_TRUE(failed.empty());

    write_file(root / "plain", "not a directory");
    failed.set("seen: ");
    EXPECT_FALSE(zorn_recursive_mkdir((root / "plain/sub/deeper/").c_str(), 0755, &failed));
    EXPECT_EQ(std::string(failed.c_str()), "seen: " + (root / "plain/sub"));
    log_capture log;
    EXPECT_FALSE(zorn_recursive_mkdir(nullptr, 0755, &failed));
    EXPECT_EQ(log.text(), "Error in zorn_recursive_mkdir(), NULL path.\n");
}

TEST(files_dir, writeable_directory_probe) {
    temp_dir root;
    const std::string probe = root / (std::string("w/x/") + zorn_probe_file_name);
    EXPECT_TRUE(zorn_create_and_check_writeable_directory((root / "w/x").c_str(), 0755, nullptr));
    EXPECT_TRUE(fs::is_directory(root / "w/x"));
    EXPECT_FALSE(fs::exists(probe));
    write_file(probe, "old");  // left behind by an earlier run: overwritten and removed too
    EXPECT_TRUE(zorn_create_and_check_writeable_directory((root / "w/x").c_str(), 0755, nullptr));
    EXPECT_FALSE(fs::exists(probe));
    in_directory(root.path(), [&root] {
        EXPECT_TRUE(zorn_create_and_check_writeable_directory("", 0755, nullptr));
        EXPECT_FALSE(fs::exists(root / zorn_probe_file_name));
    });

    write_file(root / "plain", "x");
    zorn_fixed_string failed;
    EXPECT_FALSE(zorn_create_and_check_writeable_directory((root / "plain/dir").c_str(), 0755, &failed));
    EXPECT_EQ(std::string(failed.c_str()), root / "plain/dir");
    log_capture log;
    EXPECT_FALSE(zorn_create_and_check_writeable_directory(nullptr, 0755, &failed));
    EXPECT_EQ(log.text(), "Error in zorn_create_and_check_writeable_directory(), NULL path.\n");

    // Permission bits do not stop root (CAP_DAC_OVERRIDE); only an ordinary user sees the failure.
    const std::string locked = root / "locked";
    ASSERT_EQ(mkdir(locked.c_str(), 0555), 0);
    if (geteuid() != 0) {
        failed.clear();
        EXPECT_FALSE(zorn_create_and_check_writeable_directory(locked.c_str(), 0755, &failed));
        EXPECT_EQ(std::string(failed.c_str()), locked + "/" + zorn_probe_file_name);
    }
}

// Forks a process that tries the lock; true when it was refused without waiting.
bool other_process_is_refused(const std::string& path) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(5);  // a lock call that waits is killed here and shows as a failure
        _exit(zorn_lock_file(path.c_str()) < 0 ? 0 : 1);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) return false;
    EXPECT_TRUE(WIFEXITED(status)) << "lock attempt in the child did not return";
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(files_dir, lock_file_keeps_out_a_second_process) {
    temp_dir root;
    const std::string path = root / "download.lck";
    const int descriptor = zorn_lock_file(path.c_str());
    ASSERT_GE(descriptor, 0);
    EXPECT_TRUE(other_process_is_refused(path));
    EXPECT_TRUE(zorn_unlock_file(descriptor));
    EXPECT_FALSE(other_process_is_refused(path));
    EXPECT_EQ(fs::file_size(path), 0u);  // the file stays behind
    EXPECT_FALSE(zorn_unlock_file(-1));
    EXPECT_EQ(zorn_lock_file((root / "missing/dir/x.lck").c_str()), -1);
}

// The text readers of the cases file, each into a buffer of the given size where it takes one.
const std::map<std::string, int (*)(FILE*, char*, int)> text_readers = {
    {"line", fget_line},
    {"hashline", fget_hash_line},
    {"hashword", fget_hash_word},
    {"long", [](FILE* stream, char* text, int) { return fget_long(stream, text); }},
    {"tilde", [](FILE* stream, char* text, int) { return fget_tilde_text(stream, text); }},
    {"semi", [](FILE* stream, char* text, int) { return fget_semicolon_text(stream, text); }},
};

// Runs one step of a case line: "reader result" and after a ":" what it read (see files_cases.txt).
void run_step(FILE* stream, const std::string& step, int* size, const log_capture& log) {
    const std::string op = step.substr(0, step.find(' '));
    const int result = std::atoi(step.c_str() + op.size());
    const size_t colon = step.find(':');
    const bool checked = colon != std::string::npos;
    const std::string expected = checked ? step.substr(colon + 1) : "";
    if (text_readers.count(op)) {
        std::vector<char> text(fget_long_size, '?');
        EXPECT_EQ(text_readers.at(op)(stream, text.data(), *size), result);
        EXPECT_EQ(std::string(text.data()), checked ? expected : std::string(text.data()));
    } else if (op == "size") {
        *size = result;
    } else if (op == "match") {
        EXPECT_EQ(fget_match_line(stream, expected.c_str()), result != 0);
    } else if (op == "rest") {
        EXPECT_EQ(rest_of(stream), expected);
    } else if (op == "log") {
        EXPECT_EQ(log.text(), expected);
    } else if (op == "block") {
        int numbers[fget_block_count];
        std::fill(numbers, numbers + fget_block_count, 99);
        EXPECT_EQ(fget_block(stream, numbers), result);
        std::string values;
        for (int i = 0; i < result; ++i) values += (i ? " " : "") + std::to_string(numbers[i]);
        EXPECT_EQ(values, expected);
        for (int i = result; i < fget_block_count; ++i) EXPECT_EQ(numbers[i], 0) << "entry " << i;
    } else {
        ADD_FAILURE() << "unknown step " << step;
    }
}

TEST(files_read, cases_step_by_step) {
    for (const case_row& c : read_cases("base/files_cases.txt", "read")) {
        log_capture log;
        auto stream = stream_of(c.str(1));
        int size = 32;
        for (size_t i = 2; i < c.size(); ++i) {
            SCOPED_TRACE(c.where + " step " + c.str(i));
            run_step(stream.get(), c.str(i), &size, log);
        }
    }
    EXPECT_TRUE(text_starts_with("abc", ""));
    EXPECT_FALSE(text_starts_with("header", "Header"));
    EXPECT_FALSE(text_starts_with(nullptr, ""));
    EXPECT_FALSE(text_starts_with("a", nullptr));
}

TEST(files_read, limits_of_fget_long_and_fget_tilde_text_and_dblock) {
    const std::string exact(fget_long_size - 1, 'e');
    char buffer[fget_long_size];
    log_capture log;
    auto full = stream_of(exact + ";\n" + exact + "tail;\n");
    EXPECT_EQ(fget_long(full.get(), buffer), fget_long_size);
    EXPECT_EQ(log.text(), "");
    EXPECT_EQ(fget_long(full.get(), buffer), fget_long_size);
    EXPECT_EQ(std::string(buffer), exact);
    EXPECT_EQ(log.text(), "Warning in fget_long(), string overflow.  String was:\n" + exact + "\n");
    EXPECT_EQ(fget_long(full.get(), buffer), 5);
    EXPECT_STREQ(buffer, "tail");

    auto stream = stream_of(std::string(4000, 'x'));
    EXPECT_EQ(fget_tilde_text(stream.get(), buffer), fget_tilde_size - 1);
    EXPECT_EQ(rest_of(stream.get()).size(), 10u);
    // An escaped pair straddling the limit still fits the buffer.
    auto pair = stream_of(std::string(fget_tilde_size - 3, 'x') + "~~rest");
    EXPECT_EQ(fget_tilde_text(pair.get(), buffer), fget_tilde_size);
    EXPECT_EQ(std::string(buffer).substr(fget_tilde_size - 3), "~~");

    double reals[fget_block_count];
    auto real_stream = stream_of("1.5 -2e3\n");
    EXPECT_EQ(fget_dblock(real_stream.get(), reals), 2);
    EXPECT_DOUBLE_EQ(reals[0], 1.5);
    EXPECT_DOUBLE_EQ(reals[1], -2000.0);
    EXPECT_EQ(reals[11], 0.0);
    EXPECT_EQ(fget_dblock(real_stream.get(), reals), 0);
    EXPECT_NE(log.text().find("Error in fget_dblock(), EOF encountered.\n"), std::string::npos);
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

TEST(files_tables, int_and_byte_tables_round_trip) {
    int numbers[23], back[23] = {};
    for (int i = 0; i < 23; ++i) numbers[i] = i * 7 - 50;
    stream_ptr stream(std::tmpfile());
    fput_int_table(stream.get(), "map", numbers, 23);
    std::rewind(stream.get());
    const std::string written = rest_of(stream.get());
    EXPECT_EQ(written.substr(0, 4), "map0");
    EXPECT_NE(written.find("\nmap2 90 97 104\n\n"), std::string::npos);
    std::rewind(stream.get());
    read_table(stream.get(), "map", back, 23, fget_int_table_row);
    EXPECT_EQ(std::memcmp(back, numbers, sizeof numbers), 0);
    auto outside = stream_of(" 1 2 3\n");
    EXPECT_FALSE(fget_int_table_row(outside.get(), "3", back, 23));
    EXPECT_EQ(rest_of(outside.get()), "");  // the row is read all the same

    signed char bytes[12], byte_back[12] = {};
    for (int i = 0; i < 12; ++i) bytes[i] = static_cast<signed char>(i * 20 - 120);
    stream_ptr byte_stream(std::tmpfile());
    fput_byte_table(byte_stream.get(), "b", bytes, 12);
    std::rewind(byte_stream.get());
    EXPECT_EQ(rest_of(byte_stream.get()), "b0 -120 -100 -80 -60 -40 -20 0 20 40 60\nb1 80 100\n\n");
    std::rewind(byte_stream.get());
    read_table(byte_stream.get(), "b", byte_back, 12, fget_byte_table_row);
    EXPECT_EQ(std::memcmp(byte_back, bytes, sizeof bytes), 0);
    auto row = stream_of("\n");
    EXPECT_FALSE(fget_byte_table_row(row.get(), "-1", byte_back, 12));
}

}  // namespace
