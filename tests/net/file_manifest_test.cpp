// kvu_file_manifest without a network: the line syntax as golden cases, the manifest as written,
// loading with pruning, the exclude list, and the remote manifest's bytes as they arrive.

#include "net/file_manifest.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <zlib.h>

#include <string>

#include "tests/net/net_test_support.h"
#include "tests/support/case_file.h"
#include "tests/support/log_capture.h"

namespace {

std::string gzip_text(const std::string& text, int window = 31) {
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, window, 8, Z_DEFAULT_STRATEGY);
    std::string out(deflateBound(&stream, text.size()) + 64, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(&out[0]);
    stream.avail_out = static_cast<uInt>(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

// Feeds bytes as a download would, in pieces of the given size; the entries' names joined by "|",
// or "failed".
std::string feed(const std::string& bytes, size_t piece, bool length_known = true) {
    http_fetch_remote_manifest_data fetch;
    EXPECT_TRUE(fetch.begin());
    bool going = true;
    for (size_t at = 0; going && at < bytes.size(); at += piece) {
        const std::string part = bytes.substr(at, piece);
        going = fetch.data(part.data(), static_cast<int>(part.size())) != 0;
        const int done = static_cast<int>(std::min(bytes.size(), at + piece));
        fetch.received(done, length_known ? static_cast<int>(bytes.size()) : -1);
    }
    if (!fetch.finish() || !going) return "failed";
    std::string names;
    kvu_manifest_entry* list = fetch.take_entries();
    for (kvu_manifest_entry* entry = list; entry; entry = entry->next) names += entry->name + "|";
    kvu_free_manifest_entries(list);
    return names;
}

const char* header =
    "# This is an automatically generated file - do not modify\n"
    "# It contains a list of the files currently managed by the\n"
    "# updater.  Changing or deleting it may cause your next\n"
    "# update to download far more things than it needs.\n"
    "\n";

}  // namespace

TEST(ManifestLine, GoldenCases) {
    for (const case_row& row : read_cases("net/manifest_line_cases.txt")) {
        SCOPED_TRACE(row.where);
        log_capture log(3);
        kvu_manifest_entry* entry = nullptr;
        const int result = kvu_parse_manifest_line(row.text(0), "file manifest", &entry);
        const std::string& kind = row.str(1);
        EXPECT_EQ(result, kind == "entry" ? 1 : kind == "none" ? 0 : -1);
        if (kind == "entry" && entry) {
            EXPECT_EQ(entry->hash, row.str(2));
            EXPECT_EQ(entry->size, row.number(3));
            EXPECT_EQ(entry->name, row.str(4));
        }
        EXPECT_EQ(entry != nullptr, kind == "entry");
        EXPECT_EQ(log.text(), row.str(5).empty() ? "" : row.str(5) + "\n");
        delete entry;
    }
}

TEST(ManifestFile, LoadPrunesAndSaveWritesTheSameBytes) {
    net_test::temp_dir dir;
    const std::string destination = dir.file("pack");
    const std::string lines =
        "0123456789abcdef0123456789 1234 name with  blanks.ogg\n"
        "# a comment\n"
        "\n"
        "abcdef0123456789abcdef        -3 sub/dir/gone.ogg\r\n"
        "fedcba9876543210fedcba 2147483647 sub/kept.ogg\n";
    net_test::write_file(dir.file("update_manifest.lst"), lines);
    kvu_file_manifest manifest;
    ASSERT_TRUE(manifest.set_destination(destination.c_str()));
    mkdir((destination + "/sub").c_str(), 0700);
    net_test::write_file(destination + "/name with  blanks.ogg", "x");
    net_test::write_file(destination + "/sub/kept.ogg", "x");
    std::string messages;
    manifest.verbose = 1;
    manifest.callback_context = &messages;
    manifest.message_callback = [](void* context, const char* text) { *static_cast<std::string*>(context) += std::string(text) + "\n"; };
    EXPECT_TRUE(manifest.load_manifest(dir.file("update_manifest.lst").c_str()));
    EXPECT_EQ(manifest.entries_loaded, 3);
    EXPECT_EQ(manifest.entries_remaining, 2);
    EXPECT_EQ(messages, "Loaded 3 entries from current manifest file '" + dir.file("update_manifest.lst") +
                            "'.\nSome files were deleted.  Only 2 entries remain.\n");
    EXPECT_EQ(manifest.find_local("sub/dir/gone.ogg"), nullptr);
    ASSERT_NE(manifest.find_local("sub/kept.ogg"), nullptr);

    log_capture log(3);
    ASSERT_TRUE(manifest.save_file(dir.file("saved.lst").c_str()));
    EXPECT_EQ(net_test::read_file(dir.file("saved.lst")),
              std::string(header) + "0123456789abcdef0123456789       1234 name with  blanks.ogg\n"
                                    "fedcba9876543210fedcba 2147483647 sub/kept.ogg\n");
    EXPECT_EQ(log.text(), "");

    // A short hash is written all the same, with a complaint.
    net_test::write_file(dir.file("short.lst"), "0123456789 5 name with  blanks.ogg\n");
    kvu_file_manifest small;
    ASSERT_TRUE(small.set_destination(destination.c_str()));
    EXPECT_TRUE(small.load_manifest(dir.file("short.lst").c_str()));
    EXPECT_TRUE(small.save_file(dir.file("short-saved.lst").c_str()));
    EXPECT_EQ(net_test::read_file(dir.file("short-saved.lst")),
              std::string(header) + "0123456789          5 name with  blanks.ogg\n");
    EXPECT_EQ(log.text(),
              "Error in kvu_file_manifest::save_file(), file 'name with  blanks.ogg' had short hash len of 10.\n");
    EXPECT_FALSE(small.save_file(dir.file("no/such/dir.lst").c_str()));
    EXPECT_NE(log.text().find("Error in kvu_file_manifest::save_file() - unable to save file '" +
                              dir.file("no/such/dir.lst") + "'.\n"),
              std::string::npos);
}

TEST(ManifestFile, LoadFailures) {
    net_test::temp_dir dir;
    kvu_file_manifest manifest;
    ASSERT_TRUE(manifest.set_destination(dir.path().c_str()));
    EXPECT_FALSE(manifest.load_manifest(dir.file("missing.lst").c_str()));
    EXPECT_FALSE(manifest.load_exclude_list(dir.file("missing.lst").c_str()));
    // A syntax error stops the reading; what came before stays.
    net_test::write_file(dir.file("a"), "x");
    net_test::write_file(dir.file("bad.lst"), "0123456789abcdefabcd 1 a\nNOTAHASH 1 b\n0123456789abcdefabcd 1 c\n");
    log_capture log(3);
    EXPECT_FALSE(manifest.load_manifest(dir.file("bad.lst").c_str()));
    EXPECT_NE(manifest.find_local("a"), nullptr);
    EXPECT_EQ(manifest.find_local("c"), nullptr);
    EXPECT_EQ(log.text(), "Syntax error in file manifest - bad or missing hash field for line:\nNOTAHASH 1 b\n");
}

TEST(RemoteManifest, BytesAsTheyArrive) {
    const std::string text = "0123456789 1 a\n# note\n\n0123456789 2 b c\n0123456789 3 last";
    for (size_t piece : {1, 2, 7, 64, 100000}) {
        SCOPED_TRACE(piece);
        EXPECT_EQ(feed(gzip_text(text), piece), "a|b c|last|");
        EXPECT_EQ(feed(gzip_text(text, 15), piece), "a|b c|last|") << "zlib framing";
        EXPECT_EQ(feed(gzip_text(text + "\n"), piece), "a|b c|last|");
        // Without a length, the end of the compressed stream still gives the last line.
        EXPECT_EQ(feed(gzip_text(text), piece, false), "a|b c|last|");
    }
    const std::string packed = gzip_text(text);
    EXPECT_EQ(feed(text, 5), "failed") << "not compressed";
    EXPECT_EQ(feed(packed.substr(0, packed.size() - 12), 5), "failed") << "cut short";
    std::string corrupt = packed;
    corrupt[corrupt.size() / 2] ^= 0x55;
    EXPECT_EQ(feed(corrupt, 5), "failed");
    EXPECT_EQ(feed(gzip_text("0123456789 1 a\nbad line\n0123456789 1 b\n"), 3), "failed") << "syntax error";
    EXPECT_EQ(feed(gzip_text(""), 3), "");
    // A line past 5999 characters is cut there.
    EXPECT_EQ(feed(gzip_text("0123456789 1 " + std::string(7000, 'n') + "\n"), 4096), std::string(5986, 'n') + "|");
}
