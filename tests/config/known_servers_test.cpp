#include "config/known_servers.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "settings_support.h"
#include "tests/support/case_file.h"

namespace {

zorn_key_fingerprint key(unsigned char first, unsigned char rest = 0) {
    zorn_key_fingerprint fingerprint{};
    fingerprint.fill(rest);
    fingerprint[0] = first;
    return fingerprint;
}

std::string listed(const zorn_known_servers& known) {
    std::string text;
    for (const auto& server : known.entries())
        text += (text.empty() ? "" : " ") + server.host + ":" + std::to_string(server.port) + "=" +
                zorn_fingerprint_hex(server.fingerprint);
    return text;
}

}  // namespace

TEST(KnownServers, GoldenFiles) {
    for (const case_row& row : read_cases("config/known_servers_cases.txt")) {
        SCOPED_TRACE(row.where + " " + row.str(0));
        zorn_known_servers known;
        EXPECT_EQ(known.parse(row.str(1).data(), row.str(1).size()), row.str(2) == "loaded");
        EXPECT_EQ(listed(known), row.size() > 3 ? row.str(3) : "");
    }
}

TEST(KnownServers, WrittenTextReadsBackAndEveryCutOfItIsDamaged) {
    zorn_known_servers known;
    known.store("play.example", 3102, key(0xab, 0x01));
    known.store("a<b>&c", 1, key(0));
    known.store("127.0.0.1", 65535, key(0xff, 0xfe));
    const std::string text = known.text();
    const std::string start =
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<known_servers>\n  <server>\n"
        "    <host>play.example</host>\n    <port>3102</port>\n    <sha256>ab0101";
    EXPECT_EQ(text.substr(0, start.size()), start);
    EXPECT_EQ(text.substr(text.size() - 18), "</known_servers>\n\n");
    zorn_known_servers copy;
    ASSERT_TRUE(copy.parse(text.data(), text.size()));
    EXPECT_EQ(listed(copy), listed(known));

    // A write cut short anywhere before the root's closing tag must never pass for a shorter list.
    const size_t whole = text.rfind("</known_servers>") + std::strlen("</known_servers>");
    for (size_t length = 0; length < whole; ++length) {
        zorn_known_servers cut;
        EXPECT_FALSE(cut.parse(text.data(), length)) << "cut at " << length << ": " << text.substr(0, length);
    }
}

TEST(KnownServers, LimitsOfServersAndHostLength) {
    zorn_known_servers known;
    for (int i = 0; i < zorn_known_servers_limit; ++i) known.store("h", i + 1, key(1));
    std::string text = known.text();
    zorn_known_servers read;
    EXPECT_TRUE(read.parse(text.data(), text.size()));
    EXPECT_EQ(read.entries().size(), static_cast<size_t>(zorn_known_servers_limit));
    known.store("h", zorn_known_servers_limit + 1, key(1));
    text = known.text();
    EXPECT_FALSE(read.parse(text.data(), text.size()));

    for (int length : {zorn_known_host_limit - 1, zorn_known_host_limit, zorn_known_host_limit + 1}) {
        zorn_known_servers one;
        one.store(std::string(static_cast<size_t>(length), 'x'), 1, key(1));
        text = one.text();
        EXPECT_EQ(read.parse(text.data(), text.size()), length <= zorn_known_host_limit) << length;
    }
}

TEST(KnownServers, HostsCompareWithoutCaseAndPortsApart) {
    zorn_known_servers known;
    known.store("Play.Example", 3102, key(1));
    known.store("play.example", 4000, key(2));
    ASSERT_NE(known.find("PLAY.example", 3102), nullptr);
    EXPECT_EQ(known.find("play.example", 3102)->fingerprint, key(1));
    EXPECT_EQ(known.find("play.example", 4000)->fingerprint, key(2));
    EXPECT_EQ(known.find("play.example", 3103), nullptr);
    known.store("PLAY.EXAMPLE", 3102, key(3));
    EXPECT_EQ(known.entries().size(), 2u);
    EXPECT_EQ(known.find("play.example", 3102)->fingerprint, key(3));
}

TEST(KnownServers, FingerprintTexts) {
    const zorn_key_fingerprint fingerprint = key(0x0f, 0xa5);
    const std::string hex = zorn_fingerprint_hex(fingerprint);
    std::string expected = "0f";
    for (int i = 1; i < zorn_fingerprint_size; ++i) expected += "a5";
    EXPECT_EQ(hex, expected);
    EXPECT_EQ(zorn_fingerprint_display(fingerprint).size(), 71u);
    EXPECT_EQ(zorn_fingerprint_display(fingerprint).substr(0, 18), "0fa5a5a5 a5a5a5a5 ");
    zorn_key_fingerprint back{};
    ASSERT_TRUE(zorn_fingerprint_from_hex(hex.c_str(), &back));
    EXPECT_EQ(back, fingerprint);
    EXPECT_FALSE(zorn_fingerprint_from_hex(nullptr, &back));
    EXPECT_FALSE(zorn_fingerprint_from_hex((hex + "0").c_str(), &back));
    EXPECT_FALSE(zorn_fingerprint_from_hex(("x" + hex.substr(1)).c_str(), &back));
    EXPECT_EQ(back, fingerprint);  // unchanged by the failures
}

// The connect-time sequence on a real file: first visit, match, a changed key, trust, damage.
TEST(ServerPin, FirstVisitMatchMismatchTrust) {
    temp_dir dir;
    const std::string path = dir / zorn_known_servers_file_name;
    zorn_pin_check check = zorn_check_server_pin(path, "play.example", 3102, key(1));
    EXPECT_EQ(check.verdict, zorn_pin_verdict::first_visit);
    EXPECT_TRUE(check.saved);
    EXPECT_FALSE(check.file_damaged);
    ASSERT_TRUE(std::filesystem::exists(path));

    EXPECT_EQ(zorn_check_server_pin(path, "PLAY.EXAMPLE", 3102, key(1)).verdict, zorn_pin_verdict::match);
    // Another port of the same host is another server.
    EXPECT_EQ(zorn_check_server_pin(path, "play.example", 4000, key(9)).verdict, zorn_pin_verdict::first_visit);

    check = zorn_check_server_pin(path, "play.example", 3102, key(2));
    EXPECT_EQ(check.verdict, zorn_pin_verdict::mismatch);
    EXPECT_TRUE(check.has_pin);
    EXPECT_EQ(check.stored, key(1));
    // A mismatch stores nothing: asking again gives the same answer.
    EXPECT_EQ(zorn_check_server_pin(path, "play.example", 3102, key(2)).verdict, zorn_pin_verdict::mismatch);

    ASSERT_TRUE(zorn_trust_server_pin(path, "play.example", 3102, key(2)));
    EXPECT_EQ(zorn_check_server_pin(path, "play.example", 3102, key(2)).verdict, zorn_pin_verdict::match);
    EXPECT_EQ(zorn_check_server_pin(path, "play.example", 4000, key(9)).verdict, zorn_pin_verdict::match);
}

TEST(ServerPin, DamagedFileIsAMismatchAndTrustKeepsWhatCouldBeRead) {
    temp_dir dir;
    const std::string path = dir / zorn_known_servers_file_name;
    zorn_check_server_pin(path, "a.example", 1, key(1));
    zorn_check_server_pin(path, "b.example", 2, key(2));
    const std::string whole = read_file(path);
    // Cut inside the second server: the first is still readable, the second is gone.
    write_file(path, whole.substr(0, whole.find("b.example") + 3));

    zorn_pin_check check = zorn_check_server_pin(path, "a.example", 1, key(1));
    EXPECT_EQ(check.verdict, zorn_pin_verdict::mismatch);  // even its own pin can't be trusted now
    EXPECT_TRUE(check.file_damaged);
    EXPECT_TRUE(check.has_pin);
    check = zorn_check_server_pin(path, "b.example", 2, key(2));
    EXPECT_EQ(check.verdict, zorn_pin_verdict::mismatch);
    EXPECT_FALSE(check.has_pin);

    ASSERT_TRUE(zorn_trust_server_pin(path, "b.example", 2, key(3)));
    zorn_known_servers known;
    ASSERT_EQ(known.load_file(path), zorn_known_servers::load_result::loaded);
    EXPECT_EQ(listed(known), "a.example:1=" + zorn_fingerprint_hex(key(1)) + " b.example:2=" + zorn_fingerprint_hex(key(3)));

    write_file(path, "");  // a file emptied by a crash counts as damaged too
    EXPECT_EQ(zorn_check_server_pin(path, "a.example", 1, key(1)).verdict, zorn_pin_verdict::mismatch);
}

TEST(ServerPin, NoDirectoryPinsNothingAndAnUnwritableFileIsReported) {
    EXPECT_EQ(zorn_check_server_pin("", "h", 1, key(1)).verdict, zorn_pin_verdict::first_visit);
    EXPECT_FALSE(zorn_check_server_pin("", "h", 1, key(1)).saved);
    EXPECT_FALSE(zorn_trust_server_pin("", "h", 1, key(1)));

    temp_dir dir;
    const std::string missing_dir = dir / "no/such/dir/known_servers.cfg";
    const zorn_pin_check check = zorn_check_server_pin(missing_dir, "h", 1, key(1));
    EXPECT_EQ(check.verdict, zorn_pin_verdict::first_visit);
    EXPECT_FALSE(check.saved);

    zorn_known_servers known;
    EXPECT_EQ(known.load_file(dir / "absent.cfg"), zorn_known_servers::load_result::missing);
    write_file(dir / "big.cfg", std::string(zorn_known_servers_file_limit + 1, ' '));
    EXPECT_EQ(known.load_file(dir / "big.cfg"), zorn_known_servers::load_result::damaged);
}
