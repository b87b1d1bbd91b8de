#include "config/debug_log.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <iterator>
#include <string>

#include "tests/support/temp_dir.h"

namespace {

// Every test runs in its own process (discovered tests), so the global log starts fresh.
class DebugLog : public ::testing::Test {
protected:
    void SetUp() override {
        log_path = dir / "log.txt";
        zorn_client_set_debug_logfile_name(log_path.c_str());
    }
    std::string contents() { return read_file(log_path); }

    temp_dir dir;
    std::string log_path;
};

}  // namespace

TEST_F(DebugLog, LevelsCategoriesMaskAndAllOff) {
    const struct {
        int level;
        unsigned mask;
        unsigned category;
        bool written;
    } rows[] = {
        // The chatty bit wins over the others; one bit not masked is enough.
        {0, 0, zorn_cat_warning, false},  {0, 0, zorn_cat_verbose, false}, {1, 0, zorn_cat_warning, true},
        {1, 0, zorn_cat_verbose, false},  {1, 0, zorn_cat_verbose | zorn_cat_warning, false},
        {3, 0, zorn_cat_verbose, true},   {3, 0, zorn_cat_verbose | zorn_cat_warning, true},
        {1, zorn_cat_warning, zorn_cat_warning, false}, {1, zorn_cat_warning, zorn_cat_warning | zorn_cat_error, true},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        zorn_debug_level = rows[i].level;
        zorn_client_set_debug_suppression_mask(rows[i].mask);
        zorn_client_debug_event(("row" + std::to_string(i)).c_str(), rows[i].category);
    }
    zorn_client_set_debug_suppression_mask(0);
    zorn_client_debug_events_off();
    zorn_client_debug_event("while-off", zorn_cat_error);
    zorn_client_debug_events_on();
    zorn_client_debug_event("back-on", zorn_cat_error);

    const std::string log = contents();
    for (size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(log.find("row" + std::to_string(i) + "\n") != std::string::npos, rows[i].written) << "row " << i;
    }
    EXPECT_EQ(log.find("while-off"), std::string::npos);
    EXPECT_NE(log.find("back-on\n"), std::string::npos);
}

TEST_F(DebugLog, PrintfCutsAt10239Characters) {
    zorn_client_debug_printf("%s", std::string(20000, 'x').c_str());
    zorn_client_debug_printf("%s", std::string(zorn_debug_printf_limit, 'y').c_str());
    const std::string log = contents();
    EXPECT_EQ(log.size(), 2u * zorn_debug_printf_limit);
    EXPECT_EQ(log.find('y'), static_cast<size_t>(zorn_debug_printf_limit));
}

TEST_F(DebugLog, NameCannotChangeWhileOpenAndCloseFallsBackToStdout) {
    zorn_client_debug_event("first", zorn_cat_error);
    EXPECT_TRUE(zorn_client_debug_logfile_is_open());
    EXPECT_EQ(std::string(zorn_client_get_debug_logfile_name()), log_path);

    zorn_client_set_debug_logfile_name((dir / "other.txt").c_str());
    EXPECT_EQ(std::string(zorn_client_get_debug_logfile_name()), log_path);
    EXPECT_NE(contents().find("Error in zorn_client_set_debug_logfile_name(), logfile already open.\n"),
              std::string::npos);

    zorn_client_debug_logfile_close();
    EXPECT_FALSE(zorn_client_debug_logfile_is_open());
    testing::internal::CaptureStdout();
    zorn_client_debug_event("to-stdout", zorn_cat_error);
    zorn_client_debug_logfile_close();  // flushes nothing of ours; the dup'd descriptor wrote directly
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("to-stdout\n"), std::string::npos);
    EXPECT_EQ(contents().find("to-stdout"), std::string::npos);
}

TEST(DebugLogOpen, AutomaticNameLivesUnderTmpAndAFailedOpenStaysOff) {
    zorn_client_set_autoopen_debug_logfile_name("lantern-log-test-autoname.txt");
    zorn_client_debug_event("auto", zorn_cat_error);
    EXPECT_STREQ(zorn_client_get_debug_logfile_name(), "/tmp/lantern-log-test-autoname.txt");
    zorn_client_debug_logfile_close();
    unlink("/tmp/lantern-log-test-autoname.txt");

    zorn_client_set_debug_logfile_name("/nonexistent-dir/for/the/log.txt");
    zorn_client_debug_event("lost", zorn_cat_error);
    EXPECT_TRUE(zorn_client_debug_logfile_open_failed());
    EXPECT_FALSE(zorn_client_debug_logfile_is_open());
    // A new name clears the failure.
    temp_dir dir;
    zorn_client_set_debug_logfile_name((dir / "ok.txt").c_str());
    EXPECT_FALSE(zorn_client_debug_logfile_open_failed());
    zorn_client_debug_event("found", zorn_cat_error);
    EXPECT_NE(read_file(dir / "ok.txt").find("found\n"), std::string::npos);
}

TEST_F(DebugLog, WriteFailureIsReportedOnceUntilASuccessReArmsIt) {
    // A FIFO fails writes while it has no reader and takes them again once one opens.
    signal(SIGPIPE, SIG_IGN);
    const std::string fifo = dir / "fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    int reader = open(fifo.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    zorn_signal_safe_logfile file;
    ASSERT_TRUE(file.open(fifo.c_str()));
    ASSERT_TRUE(file.write("fine"));
    close(reader);

    EXPECT_FALSE(file.write("lost"));
    EXPECT_FALSE(file.write("lost"));
    const std::string report = "Error in zorn_signal_safe_logfile::write(), write failed.\n";
    EXPECT_EQ(contents(), report);

    reader = open(fifo.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_TRUE(file.write("ok"));
    close(reader);
    EXPECT_FALSE(file.write("lost"));
    EXPECT_EQ(contents(), report + report);
}

TEST_F(DebugLog, SignalSafeWriterFormatsIntegersWithoutPrintf) {
    zorn_signal_safe_logfile file;
    ASSERT_TRUE(file.open((dir / "n.txt").c_str()));
    for (long long v : {0LL, 7LL, -42LL, 1234567890123LL, -9223372036854775807LL - 1}) {
        file.write(v);
        file.write(" ");
    }
    file.write(static_cast<const char*>(nullptr));
    file.close();
    EXPECT_EQ(read_file(dir / "n.txt"), "0 7 -42 1234567890123 -9223372036854775808 (null)");
}
