#include "config/config_directory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "tests/support/temp_dir.h"

namespace {

bool is_directory(const std::string& path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

// Runs with HOME and the working directory inside a private temporary directory.
class ConfigDirectory : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(mkdir(home.c_str(), 0700), 0);
        ASSERT_EQ(mkdir(work.c_str(), 0700), 0);
        setenv("HOME", home.c_str(), 1);
        ASSERT_EQ(chdir(work.c_str()), 0);
    }
    void TearDown() override {
        if (chdir("/") != 0) {
        }
    }

    temp_dir root;
    std::string home = root / "home";
    std::string work = root / "work";
};

}  // namespace

TEST_F(ConfigDirectory, FirstCandidateIsUnderDotConfig) {
    EXPECT_EQ(zorn_client_config_directory(), nullptr);
    ASSERT_TRUE(zorn_client_set_up_config_directory("EmberVale"));
    EXPECT_EQ(std::string(zorn_client_config_directory()), home + "/.config/EmberVale");
    EXPECT_TRUE(is_directory(home + "/.config/EmberVale"));
    EXPECT_NE(access((home + "/.config/EmberVale/xx-rw-test.qqq").c_str(), F_OK), 0);  // probe removed

    ASSERT_TRUE(zorn_client_cd_to_config_directory());
    char cwd[4096];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    EXPECT_EQ(std::string(cwd), home + "/.config/EmberVale");
}

TEST_F(ConfigDirectory, WithoutHomeStartUpFails) {
    unsetenv("HOME");
    EXPECT_FALSE(zorn_client_set_up_config_directory("EmberVale"));
    EXPECT_EQ(zorn_client_config_directory(), nullptr);
    EXPECT_FALSE(zorn_client_set_up_config_directory(nullptr));
}

TEST_F(ConfigDirectory, FallsThroughToHiddenDirectoryThenTmp) {
    // A file where $HOME/.config should be makes the first candidate unusable, even for root.
    write_file(home + "/.config", "not a directory");
    const std::string base = "LanternTest" + std::to_string(getpid());
    ASSERT_TRUE(zorn_client_set_up_config_directory(base.c_str()));
    EXPECT_EQ(std::string(zorn_client_config_directory()), "." + base);
    EXPECT_TRUE(is_directory(work + "/." + base));

    // Hidden candidate blocked too: the next one is under /tmp.
    ASSERT_EQ(std::system(("rm -rf '" + work + "/." + base + "'").c_str()), 0);
    write_file(work + "/." + base, "blocked");
    ASSERT_TRUE(zorn_client_set_up_config_directory(base.c_str()));
    EXPECT_EQ(std::string(zorn_client_config_directory()), "/tmp/" + base);
    EXPECT_TRUE(is_directory("/tmp/" + base));
    rmdir(("/tmp/" + base).c_str());
}
