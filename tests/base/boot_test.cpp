// Starting other programs. The URL opener: one argument, no shell, which outcomes count as success
// (a fake xdg-open early in PATH records what it was given). The image helpers: the size check,
// a start in a session of its own, and every failure coming back with its log line.
#include "base/boot.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"

namespace {

// Waits up to five seconds for a condition that another process makes true.
template <typename Condition>
bool eventually(Condition condition) {
    for (int i = 0; i < 500; ++i) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return condition();
}

// Children of zorn_fork_exec are not waited for by the code under test.
void reap_children() {
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
    }
}

class Opener : public ::testing::Test {
protected:
    void SetUp() override {
        old_path = std::getenv("PATH") ? std::getenv("PATH") : "";
        setenv("PATH", (dir.path() + ":" + old_path).c_str(), 1);
        setenv("LANTERN_OPENER_OUT", (dir / "out").c_str(), 1);
    }
    void TearDown() override {
        setenv("PATH", old_path.c_str(), 1);
        unsetenv("LANTERN_OPENER_OUT");
    }
    void install_opener(const std::string& body) {
        const std::string path = dir / "xdg-open";
        write_file(path, "#!/bin/sh\n" + body + "\n");
        chmod(path.c_str(), 0755);
    }
    std::string recorded() { return read_file(dir / "out"); }

    temp_dir dir;
    std::string old_path;
};

TEST_F(Opener, UrlArrivesAsOneUnchangedArgument) {
    install_opener("printf '%s|%s' \"$#\" \"$1\" > \"$LANTERN_OPENER_OUT\"");
    const std::string marker = dir / "ran";
    const std::string url = "http://x.example/a b$(touch " + marker + ")?q=\\c&d=(e)`touch " + marker + "`;touch " +
                            marker + ";g'\"$HOME";
    EXPECT_TRUE(zorn_http_fork(url.c_str()));
    EXPECT_EQ(recorded(), "1|" + url);
    EXPECT_NE(access(marker.c_str(), F_OK), 0) << "the URL started something";
}

TEST_F(Opener, ExitStatusCountsSignalDoesNot) {
    install_opener("exit 3");
    EXPECT_TRUE(zorn_http_fork("http://a.example/"));
    install_opener("kill -TERM $$");
    log_capture log(2);
    EXPECT_FALSE(zorn_http_fork("http://a.example/"));
    EXPECT_NE(log.text().find("zorn_http_fork() failed with errno "), std::string::npos) << log.text();
}

TEST_F(Opener, ChildReapedElsewhereCountsAsSuccess) {
    // With SIGCHLD ignored the kernel reaps the opener itself and the wait ends with ECHILD.
    install_opener("kill -TERM $$");
    struct sigaction ignore {}, old {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGCHLD, &ignore, &old);
    const bool taken = zorn_http_fork("http://a.example/");
    sigaction(SIGCHLD, &old, nullptr);
    EXPECT_TRUE(taken);
}

TEST_F(Opener, CommandLimit) {
    install_opener("printf ok > \"$LANTERN_OPENER_OUT\"");
    // "xdg-open" and a blank take 9 of the 1024 bytes.
    const std::string fits(zorn_http_fork_limit - 10, 'u');
    const std::string too_long(zorn_http_fork_limit - 9, 'u');
    {
        log_capture log(2);
        EXPECT_FALSE(zorn_http_fork(too_long.c_str()));
        EXPECT_EQ(log.text(), "zorn_http_fork() failed with errno 7.\n");
    }
    EXPECT_EQ(recorded(), "");
    EXPECT_TRUE(zorn_http_fork(fits.c_str()));
    EXPECT_EQ(recorded(), "ok");
    EXPECT_FALSE(zorn_http_fork(nullptr));
}

TEST(BootFile, SizeDecidesAndEveryRefusalIsLogged) {
    temp_dir dir;
    const std::string small = dir / "small", enough = dir / "enough", missing = dir / "missing";
    write_file(small, std::string(99, 'x'));
    write_file(enough, std::string(100, 'x'));
    log_capture log(3);
    EXPECT_TRUE(zorn_is_boot_file_bad(small.c_str()));
    EXPECT_FALSE(zorn_is_boot_file_bad(enough.c_str()));
    EXPECT_TRUE(zorn_is_boot_file_bad(missing.c_str()));
    EXPECT_EQ(log.text(), "zorn_is_boot_file_bad() - image '" + small + "' is too small to be valid.\n" +
                              "zorn_is_boot_file_bad() - cannot open image file '" + missing + "'.\n");
}

TEST(BootFile, MissingFileIsQuietBelowLevelThree) {
    log_capture log(2);
    EXPECT_TRUE(zorn_is_boot_file_bad("/nonexistent/lantern-image"));
    EXPECT_EQ(log.text(), "");
}

TEST(ForkExec, StartsTheImageInASessionOfItsOwn) {
    temp_dir dir;
    const std::string script = dir / "start.sh", out = dir / "sid";
    // Field 6 of /proc/self/stat is the session id; written whole in one rename.
    write_file(script, "#!/bin/sh\nprintf '%s|%s' \"$1\" \"$(cut -d' ' -f6 /proc/$$/stat)\" > \"$2.tmp\"\nmv \"$2.tmp\" \"$2\"\n");
    chmod(script.c_str(), 0600);
    std::string word = "a b$(x)";
    char* argv[] = {const_cast<char*>(script.c_str()), word.data(), const_cast<char*>(out.c_str()), nullptr};
    log_capture log(3);
    ASSERT_TRUE(zorn_fork_exec(script.c_str(), argv));
    ASSERT_TRUE(eventually([&] { return access(out.c_str(), F_OK) == 0; }));
    const std::string seen = read_file(out);
    const std::string prefix = word + "|";
    ASSERT_EQ(seen.compare(0, prefix.size(), prefix), 0) << seen;
    const long child_session = std::atol(seen.c_str() + prefix.size());
    EXPECT_GT(child_session, 0);
    EXPECT_NE(child_session, static_cast<long>(getsid(0)));
    struct stat info {};
    ASSERT_EQ(stat(script.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700u);
    EXPECT_EQ(log.text(), "zorn_fork_exec() - trying to run image '" + script + "'\n");
    reap_children();
}

TEST(ForkExec, FailuresComeBackWithTheirLines) {
    temp_dir dir;
    const std::string missing = dir / "missing", garbage = dir / "garbage";
    write_file(garbage, std::string(100, '\0'));  // executable bits but no known format: exec fails
    char* argv[] = {const_cast<char*>("image"), nullptr};
    log_capture log(2);
    EXPECT_FALSE(zorn_fork_exec(missing.c_str(), argv));
    EXPECT_EQ(log.text(), "Error in zorn_fork_exec(), chmod failed.  Return code -1, error code 2. Filename: " +
                              missing + "\n");
    // The parent hears of a failed exec only through the child's line in the log.
    EXPECT_TRUE(zorn_fork_exec(garbage.c_str(), argv));
    const std::string exec_line = "Error in zorn_fork_exec(), exec failed.  Return code -1, error code 8. Filename: " +
                                  garbage + "\n";
    EXPECT_TRUE(eventually([&] { return log.text().find(exec_line) != std::string::npos; })) << log.text();
    int status = 0;
    EXPECT_TRUE(eventually([&] { return waitpid(-1, &status, WNOHANG) > 0; }));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1);
}

TEST(BootExec, FailuresReturnToTheCallerWithTheirLines) {
    temp_dir dir;
    const std::string missing = dir / "missing", garbage = dir / "garbage";
    write_file(garbage, std::string(100, '\0'));
    char* argv[] = {const_cast<char*>("image"), nullptr};
    log_capture log(3);
    zorn_boot_exec(missing.c_str(), argv);
    zorn_boot_exec(garbage.c_str(), argv);
    EXPECT_EQ(log.text(), "Error in zorn_boot_exec(), chmod failed.  Return code -1, error code 2. Filename: " +
                              missing + "\n" + "zorn_boot_exec() - trying to boot image '" + garbage + "'\n" +
                              "Error in zorn_boot_exec(), exec failed.  Return code -1, error code 8. Filename: " +
                              garbage + "\n");
}

TEST(BootExec, ReplacesTheProcess) {
    temp_dir dir;
    const std::string script = dir / "boot.sh", out = dir / "out";
    write_file(script, "#!/bin/sh\nprintf '%s' \"$1\" > \"$2\"\n");
    std::string word = "x;y";
    char* argv[] = {const_cast<char*>(script.c_str()), word.data(), const_cast<char*>(out.c_str()), nullptr};
    // In a child, since a successful boot never comes back.
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        zorn_boot_exec(script.c_str(), argv);
        _exit(99);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(read_file(out), word);
}

}  // namespace
