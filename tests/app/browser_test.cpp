// The URL opener: one argument, no shell, and which outcomes count as success. A fake xdg-open
// early in PATH records what it was given.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "app/browser.h"

namespace {

class Opener : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/lantern-opener-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir = pattern;
        old_path = std::getenv("PATH") ? std::getenv("PATH") : "";
        setenv("PATH", (dir + ":" + old_path).c_str(), 1);
        setenv("LANTERN_OPENER_OUT", (dir + "/out").c_str(), 1);
    }
    void TearDown() override {
        setenv("PATH", old_path.c_str(), 1);
        unsetenv("LANTERN_OPENER_OUT");
        std::system(("rm -rf '" + dir + "'").c_str());
    }
    void install_opener(const std::string& body) {
        const std::string path = dir + "/xdg-open";
        std::ofstream(path) << "#!/bin/sh\n" << body << "\n";
        chmod(path.c_str(), 0755);
    }
    std::string recorded() {
        std::ifstream in(dir + "/out");
        std::stringstream s;
        s << in.rdbuf();
        return s.str();
    }
    std::string dir, old_path;
};

TEST_F(Opener, UrlArrivesAsOneUnchangedArgument) {
    install_opener("printf '%s|%s' \"$#\" \"$1\" > \"$LANTERN_OPENER_OUT\"");
    const std::string marker = dir + "/ran";
    const std::string url = "http://x.example/a b$(touch " + marker + ")?q=\\c&d=(e)`touch " + marker + "`;g'\"";
    EXPECT_TRUE(zorn_http_fork(url.c_str()));
    EXPECT_EQ(recorded(), "1|" + url);
    EXPECT_NE(access(marker.c_str(), F_OK), 0) << "the URL started something";
}

TEST_F(Opener, ExitStatusCountsSignalDoesNot) {
    install_opener("exit 3");
    EXPECT_TRUE(zorn_http_fork("http://a.example/"));
    install_opener("kill -TERM $$");
    EXPECT_FALSE(zorn_http_fork("http://a.example/"));
}

TEST_F(Opener, CommandLimit) {
    install_opener("printf ok > \"$LANTERN_OPENER_OUT\"");
    // "xdg-open" and a blank take 9 of the 1024 bytes.
    const std::string fits(zorn_http_fork_limit - 10, 'u');
    const std::string too_long(zorn_http_fork_limit - 9, 'u');
    EXPECT_FALSE(zorn_http_fork(too_long.c_str()));
    EXPECT_EQ(recorded(), "");
    EXPECT_TRUE(zorn_http_fork(fits.c_str()));
    EXPECT_EQ(recorded(), "ok");
    EXPECT_FALSE(zorn_http_fork(nullptr));
}

}  // namespace
