#include "config/config_directory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

// Runs with HOME and the working directory inside a private temporary directory.
class ConfigDirectory : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(fs::create_directory(home) && fs::create_directory(work));
        setenv("HOME", home.c_str(), 1);
        fs::current_path(work);
    }
    void TearDown() override { fs::current_path("/"); }

    temp_dir root;
    std::string home = root / "home";
    std::string work = root / "work";
};

}  // namespace

TEST_F(ConfigDirectory, FirstCandidateIsUnderDotConfig) {
    EXPECT_EQ(zorn_client_config_directory(), nullptr);
    ASSERT_TRUE(zorn_client_set_up_config_directory("EmberVale"));
    EXPECT_EQ(std::string(zorn_client_config_directory()), home + "/.config/EmberVale");
    EXPECT_TRUE(fs::is_directory(home + "/.config/EmberVale"));
    EXPECT_FALSE(fs::exists(home + "/.config/EmberVale/xx-rw-test.qqq"));  // probe removed
    ASSERT_TRUE(zorn_client_cd_to_config_directory());
    EXPECT_EQ(fs::current_path(), home + "/.config/EmberVale");
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
    EXPECT_TRUE(fs::is_directory(work + "/." + base));

    // Hidden candidate blocked too: the next one is under /tmp.
    fs::remove_all(work + "/." + base);
    write_file(work + "/." + base, "blocked");
    ASSERT_TRUE(zorn_client_set_up_config_directory(base.c_str()));
    EXPECT_EQ(std::string(zorn_client_config_directory()), "/tmp/" + base);
    EXPECT_TRUE(fs::is_directory("/tmp/" + base));
    fs::remove("/tmp/" + base);
}
