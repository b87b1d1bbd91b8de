#include "config/xml.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/case_file.h"

namespace {

std::string written(void (*write)(zorn_xml_writer&)) {
    zorn_xml_string_writer writer;
    write(writer);
    return writer.text();
}

TEST(XmlWriter, WritesTheDialectByteForByte) {
    EXPECT_EQ(written([](zorn_xml_writer& w) {
                  w.write_xml_header();
                  w.write_tag("root", 1);
                  w.write_leaf("font_size", 12);
                  w.write_tag("a&b", 0, "x=\"1\"");
                  w.write_string("1 < 2 > 0 & \"q\"");
                  w.end_tag("a&b", 0);
                  w.write_single_tag("empty", "k=v");
                  w.write_tag("inner", 1);
                  w.write_leaf("v", "");
                  w.end_tag("inner", 1);
                  w.end_tag("root", 1);
              }),
              "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
              "<root>\n"
              "  <font_size>12</font_size>\n"
              "  <a&amp;b x=\"1\">1 &lt; 2 &gt; 0 &amp; \"q\"</a&amp;b>\n"
              "  <empty k=v />\n"
              "  <inner>\n"
              "    <v></v>\n"
              "  </inner>\n"
              "</root>\n");
    // end_tag takes its name from the stack; a null tag or value writes nothing.
    EXPECT_EQ(written([](zorn_xml_writer& w) { w.end_tag("x", 1); }), "</_BOGUS_ENDING_TAG_>\n");
    EXPECT_EQ(written([](zorn_xml_writer& w) {
                  w.write_tag("real", 0);
                  w.end_tag("other", 0);
                  w.write_tag(nullptr, 1);
                  w.write_string(nullptr);
                  w.write_single_tag("s");
              }),
              "<real></real>\n<s />\n");
}

TEST(XmlWriter, CdataIsAHexDumpOf32BytesALineAndReadsBack) {
    EXPECT_EQ(written([](zorn_xml_writer& w) { w.write_cdata(nullptr, 0); }), "<![CDATA[\n]]>\n");
    std::vector<unsigned char> bytes(100);
    std::string dump = "<![CDATA[\n";
    for (size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<unsigned char>(i * 37 + 11);
        char hex[3];
        std::snprintf(hex, sizeof hex, "%02x", bytes[i]);
        dump += hex;
        if (i % 32 == 31 || i + 1 == bytes.size()) dump += "\n";
    }
    zorn_xml_string_writer writer;
    writer.write_cdata(bytes.data(), static_cast<int>(bytes.size()));
    EXPECT_EQ(writer.text(), dump + "]]>\n");

    const std::string text = "<blob>\n" + writer.text() + "</blob>\n<after>1</after>\n";
    zorn_xml_memory_reader reader(text.data(), text.size());
    char tag[zorn_xml_tag_size];
    ASSERT_EQ(reader.read_tag(tag, sizeof tag), 1);
    unsigned char out[200];
    ASSERT_EQ(reader.read_cdata(out, sizeof out), 100);
    EXPECT_EQ(std::memcmp(out, bytes.data(), bytes.size()), 0);
    EXPECT_EQ(reader.stack_depth(), 0);
    ASSERT_EQ(reader.read_tag(tag, sizeof tag), 1);
    EXPECT_STREQ(tag, "after");
}

TEST(XmlReader, HeaderCheckAndCompactString) {
    for (const case_row& c : read_cases("config/xml_cases.txt", "header")) {
        EXPECT_EQ(zorn_xml_reader::check_xml_header_string(c.text(1)), c.number(2)) << c.where;
    }
    char text[] = "a&lt;b&gt;c&amp;d&quot;e&&amp;";
    zorn_xml_reader::compact_string(text);
    EXPECT_STREQ(text, "a<b>c&d&quot;e&&");
}

// Runs one step of a case line: "op result" and after a ":" what it read (see xml_cases.txt).
void run_step(zorn_xml_reader& reader, const std::string& step) {
    const size_t colon = step.find(':');
    const std::string op = step.substr(0, step.find(' '));
    const int result = std::atoi(step.c_str() + op.size());
    const bool checked = colon != std::string::npos;
    const std::string expected = checked ? step.substr(colon + 1) : "";
    char text[zorn_xml_tag_size] = {};
    if (op == "tag" || op == "child") {
        EXPECT_EQ(op == "tag" ? reader.read_tag(text, sizeof text) : reader.read_child(text, sizeof text), result);
        EXPECT_EQ(text, checked ? expected : std::string(text));
    } else if (op == "data") {
        EXPECT_EQ(reader.read_data(text, 100), result);
        EXPECT_EQ(text, checked ? expected : std::string(text));
    } else if (op == "int") {
        int number = 99;
        EXPECT_EQ(reader.read_data(&number), result);
        EXPECT_EQ(std::to_string(number), checked ? expected : std::to_string(number));
    } else if (op == "cdata") {
        unsigned char bytes[200];
        EXPECT_EQ(reader.read_cdata(bytes, sizeof bytes), result);
        EXPECT_EQ(checked ? std::strtol(expected.c_str(), nullptr, 16) : bytes[0], bytes[0]);
    } else if (op == "depth") {
        EXPECT_EQ(reader.stack_depth(), result);
    } else if (op == "end") {
        EXPECT_EQ(reader.at_end(), result != 0);
    } else if (op == "skip") {
        reader.skip_data();
    } else if (op == "drain") {
        while (!reader.at_end()) {
            if (reader.read_tag(text, sizeof text)) {
                int number = 0;
                reader.read_data(text, 100);
                reader.read_data(&number);
                reader.skip_data();
            }
        }
    } else {
        ADD_FAILURE() << "unknown step " << step;
    }
}

TEST(XmlReader, CasesStepByStep) {
    for (const case_row& c : read_cases("config/xml_cases.txt", "read")) {
        zorn_xml_memory_reader reader(c.str(1).data(), c.str(1).size());
        for (size_t i = 2; i < c.size(); ++i) {
            SCOPED_TRACE(c.where + " step " + c.str(i));
            run_step(reader, c.str(i));
        }
    }
}

TEST(XmlReader, LongValuesAndTagsAreCut) {
    const std::string long_tag(1500, 't');
    const std::string text = "<k>" + std::string(100000, 'v') + "</k><" + long_tag + ">x</" + long_tag + "><next>1</next>";
    zorn_xml_memory_reader reader(text.data(), text.size());
    char tag[2000];
    ASSERT_EQ(reader.read_tag(tag, zorn_xml_tag_size), 1);
    char value[10000];
    EXPECT_EQ(reader.read_data(value, sizeof value), 1);
    EXPECT_EQ(std::strlen(value), 9999u);
    EXPECT_EQ(reader.stack_depth(), 0);
    ASSERT_EQ(reader.read_tag(tag, sizeof tag), 1);
    EXPECT_EQ(std::strlen(tag), 1500u);
    EXPECT_EQ(reader.read_data(value, sizeof value), 1);
    EXPECT_EQ(reader.stack_depth(), 0);
    ASSERT_EQ(reader.read_tag(tag, zorn_xml_tag_size), 1);
    EXPECT_STREQ(tag, "next");
}

TEST(XmlReader, DepthBeyondTheLimitIsCountedNotStored) {
    std::string text;
    const int levels = zorn_xml_depth_limit * 4;
    for (int i = 0; i < levels; ++i) text += "<n" + std::to_string(i) + ">";
    for (int i = levels - 1; i >= 0; --i) text += "</n" + std::to_string(i) + ">";
    text += "<last>";
    char tag[zorn_xml_tag_size];
    zorn_xml_memory_reader reader(text.data(), text.size());
    for (int i = 0; i < levels; ++i) ASSERT_EQ(reader.read_tag(tag, sizeof tag), 1);
    EXPECT_EQ(reader.stack_depth(), levels);
    for (int i = 0; i < levels; ++i) ASSERT_EQ(reader.read_tag(tag, sizeof tag), 0);
    EXPECT_EQ(reader.stack_depth(), 0);
    ASSERT_EQ(reader.read_tag(tag, sizeof tag), 1);

    zorn_xml_memory_reader skip(text.data(), text.size());  // a skip from the top level passes it all
    ASSERT_EQ(skip.read_tag(tag, sizeof tag), 1);
    skip.skip_data();
    EXPECT_EQ(skip.stack_depth(), 0);
    ASSERT_EQ(skip.read_tag(tag, sizeof tag), 1);
    EXPECT_STREQ(tag, "last");
}

TEST(XmlFiles, FailedWriteAndMissingStream) {
    FILE* full = std::fopen("/dev/full", "wb");
    ASSERT_NE(full, nullptr);
    std::setvbuf(full, nullptr, _IONBF, 0);
    zorn_xml_file_writer writer(full);
    EXPECT_LE(writer.write_xml_header(), 0);
    EXPECT_TRUE(writer.failed());
    std::fclose(full);

    zorn_xml_file_writer unusable(nullptr);
    EXPECT_LT(unusable.write_text("x"), 0);
    zorn_xml_file_reader no_stream(nullptr);
    char tag[10];
    EXPECT_EQ(no_stream.read_tag(tag, sizeof tag), 0);
    EXPECT_TRUE(no_stream.at_end());
}

}  // namespace
