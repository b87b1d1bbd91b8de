#include "config/config_directory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
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

// A kill in the middle of a save leaves "NAME.cfg.XXXXXX" beside the file it was replacing. Set-up
// removes those older than a minute and nothing else: not a younger one, which may belong to a
// save under way in a second client, and not the settings themselves.
TEST_F(ConfigDirectory, SetUpRemovesOnlyStaleSaveLeftovers) {
    const std::string dir = home + "/.config/EmberVale";
    ASSERT_TRUE(fs::create_directories(dir + "/char_configs"));
    const auto old_time = fs::file_time_type::clock::now() - std::chrono::minutes(5);
    const std::string old_files[] = {dir + "/ember_vale.cfg.a1B2c3", dir + "/char_configs/Aria.cfg.Zz09yY"};
    const std::string kept[] = {dir + "/ember_vale.cfg", dir + "/char_configs/Aria.cfg",
                                dir + "/char_configs/Aria.cfg.fresh1", dir + "/notes.txt.a1B2c3",
                                dir + "/char_configs/Aria.cfg.a1B2c", dir + "/char_configs/Aria.cfg.a1-2c3"};
    for (const std::string& path : old_files) write_file(path, "<single_config>");
    for (const std::string& path : kept) write_file(path, "<single_config>");
    for (const std::string& path : old_files) fs::last_write_time(path, old_time);
    for (const std::string& path : kept)
        if (path.find("fresh") == std::string::npos) fs::last_write_time(path, old_time);

    ASSERT_TRUE(zorn_client_set_up_config_directory("EmberVale"));
    for (const std::string& path : old_files) EXPECT_FALSE(fs::exists(path)) << path;
    for (const std::string& path : kept) EXPECT_TRUE(fs::exists(path)) << path;
}
