#include "config/xml.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

std::string written(void (*write)(zorn_xml_writer&)) {
    zorn_xml_string_writer writer;
    write(writer);
    return writer.text();
}

TEST(XmlWriter, WritesTheDialectByteForByte) {
    const std::string text = written([](zorn_xml_writer& w) {
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
    });
    EXPECT_EQ(text,
              "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
              "<root>\n"
              "  <font_size>12</font_size>\n"
              "  <a&amp;b x=\"1\">1 &lt; 2 &gt; 0 &amp; \"q\"</a&amp;b>\n"
              "  <empty k=v />\n"
              "  <inner>\n"
              "    <v></v>\n"
              "  </inner>\n"
              "</root>\n");
}

TEST(XmlWriter, EndTagTakesItsNameFromTheStack) {
    EXPECT_EQ(written([](zorn_xml_writer& w) { w.end_tag("x", 1); }), "</_BOGUS_ENDING_TAG_>\n");
    EXPECT_EQ(written([](zorn_xml_writer& w) {
                  w.write_tag("real", 0);
                  w.end_tag("other", 0);
              }),
              "<real></real>\n");
    // A null tag or value writes nothing and leaves the depth alone.
    EXPECT_EQ(written([](zorn_xml_writer& w) {
                  w.write_tag(nullptr, 1);
                  w.write_string(nullptr);
                  w.write_single_tag("s");
              }),
              "<s />\n");
}

TEST(XmlWriter, CdataIsAHexDumpOf32BytesALine) {
    EXPECT_EQ(written([](zorn_xml_writer& w) { w.write_cdata(nullptr, 0); }), "<![CDATA[\n]]>\n");
    const std::string text = written([](zorn_xml_writer& w) {
        unsigned char bytes[33];
        for (int i = 0; i < 33; ++i) bytes[i] = static_cast<unsigned char>(i * 8);
        w.write_cdata(bytes, 33);
    });
    std::string expected = "<![CDATA[\n";
    for (int i = 0; i < 32; ++i) {
        char hex[3];
        std::snprintf(hex, sizeof hex, "%02x", (i * 8) & 255);
        expected += hex;
    }
    expected += "\n00\n]]>\n";
    EXPECT_EQ(text, expected);
}

struct header_case {
    const char* line;
    int result;
};

TEST(XmlReader, HeaderCheck) {
    const header_case cases[] = {
        {"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>", 1},
        {"<?xml encoding=\"UTF-8\" version=\"9\"?>", 1},
        {"<?xml version = \"1.0\"   encoding  =\"x\" ?>", 1},
        {"<?XML version=\"1.0\" encoding=\"x\"", 1},
        {"<?xml version=\"1.0\"?>", 0},
        {"<?xml encoding=\"x\"?>", 0},
        {"<?xml", 0},
        {"<?xml ?>", 0},
        {"<?xml version=\"1.0\" encoding=\"x\" standalone=\"yes\"?>", 0},
        {"<?xml version=1.0 encoding=\"x\"?>", 0},
        {"<?xml version \"1.0\" encoding=\"x\"?>", 0},
        {"<?xml version=\"1.0", 0},
        {"<system_config_list>", 0},
        {"", 0},
        {nullptr, 0},
    };
    for (const header_case& c : cases) {
        EXPECT_EQ(zorn_xml_reader::check_xml_header_string(c.line), c.result) << (c.line ? c.line : "(null)");
    }
}

TEST(XmlReader, CompactStringUndoesTheThreeEscapesOnly) {
    char text[] = "a&lt;b&gt;c&amp;d&quot;e&&amp;";
    zorn_xml_reader::compact_string(text);
    EXPECT_STREQ(text, "a<b>c&d&quot;e&&");
}

// Reads one leaf "<tag>value</tag>" and what follows it.
struct leaf_reader {
    explicit leaf_reader(const std::string& text) : bytes(text), reader(bytes.data(), bytes.size()) {}
    std::string bytes;
    zorn_xml_memory_reader reader;
    char tag[zorn_xml_tag_size] = {};
};

TEST(XmlReader, WriterAndReaderAgreeOnEscapes) {
    zorn_xml_string_writer writer;
    writer.write_tag("list", 1);
    writer.write_leaf("x<y>&z", "<b>&amp; \"fish\"</b>");
    writer.end_tag("list", 1);
    leaf_reader r(writer.text());
    ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);
    ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);
    EXPECT_STREQ(r.tag, "x<y>&z");
    char value[100];
    ASSERT_EQ(r.reader.read_data(value, sizeof value), 1);
    EXPECT_STREQ(value, "<b>&amp; \"fish\"</b>");
    EXPECT_EQ(r.reader.stack_depth(), 1);
    EXPECT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 0);
    EXPECT_EQ(r.reader.stack_depth(), 0);
    EXPECT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 0);
    EXPECT_TRUE(r.reader.at_end());
}

TEST(XmlReader, ValueWithABadByteFailsButKeepsTheRawText) {
    leaf_reader r("<a>\n<v>one\ttwo &amp;</v>\n<w>3</w>\n</a>");
    ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);
    ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);
    char value[100];
    EXPECT_EQ(r.reader.read_data(value, sizeof value), 0);
    EXPECT_STREQ(value, "one\ttwo &amp;");
    // The closing tag stays unread and the entry on the stack; the next tag still reads.
    EXPECT_EQ(r.reader.stack_depth(), 2);
    ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);
    EXPECT_STREQ(r.tag, "w");
    int number = 0;
    EXPECT_EQ(r.reader.read_data(&number), 1);
    EXPECT_EQ(number, 3);
    // "</a>" takes the stale entry, with a mismatch warning.
    EXPECT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 0);
    EXPECT_EQ(r.reader.stack_depth(), 1);
}

TEST(XmlReader, LongValuesAndTagsAreCut) {
    const std::string long_value(100000, 'v');
    const std::string long_tag(1500, 't');
    leaf_reader r("<k>" + long_value + "</k><" + long_tag + ">x</" + long_tag + "><next>1</next>");
    ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);
    char value[10000];
    EXPECT_EQ(r.reader.read_data(value, sizeof value), 1);
    EXPECT_EQ(std::strlen(value), 9999u);
    EXPECT_EQ(r.reader.stack_depth(), 0);
    char big_tag[2000];
    ASSERT_EQ(r.reader.read_tag(big_tag, sizeof big_tag), 1);
    EXPECT_EQ(std::strlen(big_tag), 1500u);
    EXPECT_EQ(r.reader.read_data(value, sizeof value), 1);
    EXPECT_EQ(r.reader.stack_depth(), 0);
    ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);
    EXPECT_STREQ(r.tag, "next");
}

TEST(XmlReader, IntegerValues) {
    struct int_case {
        const char* value;
        int result;
        int number;
    };
    const int_case cases[] = {
        {"12", 1, 12}, {"+5", 1, 5}, {"-3", 1, -3}, {"7abc", 1, 7}, {"+x", 1, 0},
        {"x", 0, 99},  {"", 0, 99},  {"- 1", 0, 99}, {"1\t", 0, 99},
    };
    for (const int_case& c : cases) {
        leaf_reader r(std::string("<n>") + c.value + "</n><after>");
        ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);
        int number = 99;
        EXPECT_EQ(r.reader.read_data(&number), c.result) << c.value;
        EXPECT_EQ(number, c.number) << c.value;
        ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1) << c.value;
        EXPECT_STREQ(r.tag, "after");
    }
}

TEST(XmlReader, SingleTagFormReadsAsAnOpeningTag) {
    leaf_reader r("<name />");
    ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);
    EXPECT_STREQ(r.tag, "name /");
    EXPECT_EQ(r.reader.stack_depth(), 1);
}

TEST(XmlReader, SkipDataPassesNestedTagsAndComments) {
    leaf_reader r("<root><unknown><!-- note --><deep><deeper>x</deeper></deep></unknown><known>5</known></root>");
    ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);
    ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);
    r.reader.skip_data();
    EXPECT_EQ(r.reader.stack_depth(), 1);
    ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);
    EXPECT_STREQ(r.tag, "known");

    // The dialect has no empty-element form: "<e/>" opens a level, so the skip ends one closing
    // tag later and takes the rest of the container with it.
    leaf_reader self_closing("<root><u><e/></u><known>5</known></root>");
    ASSERT_EQ(self_closing.reader.read_tag(self_closing.tag, sizeof self_closing.tag), 1);
    ASSERT_EQ(self_closing.reader.read_tag(self_closing.tag, sizeof self_closing.tag), 1);
    self_closing.reader.skip_data();
    EXPECT_EQ(self_closing.reader.stack_depth(), 1);
    EXPECT_EQ(self_closing.reader.read_tag(self_closing.tag, sizeof self_closing.tag), 0);
    EXPECT_TRUE(self_closing.reader.at_end());

    leaf_reader empty("<a>text</a>");
    empty.reader.skip_data();  // nothing read yet: refused, nothing consumed
    ASSERT_EQ(empty.reader.read_tag(empty.tag, sizeof empty.tag), 1);
    empty.reader.skip_data();
    EXPECT_EQ(empty.reader.stack_depth(), 0);
    EXPECT_FALSE(empty.reader.at_end());
}

TEST(XmlReader, StrayClosingTagLeavesTheReaderUsable) {
    leaf_reader r("</stray>\n<a>1</a>");
    EXPECT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 0);
    EXPECT_FALSE(r.reader.at_end());
    EXPECT_EQ(r.reader.stack_depth(), 0);
    ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);
    EXPECT_STREQ(r.tag, "a");
}

TEST(XmlReader, ReadChildPassesOverADamagedTag) {
    leaf_reader r("<list><b\x01x>1</b\x01x><c>2</c></list><after>");
    ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);
    ASSERT_EQ(r.reader.read_child(r.tag, sizeof r.tag), 1);
    EXPECT_STREQ(r.tag, "c");
    int number = 0;
    EXPECT_EQ(r.reader.read_data(&number), 1);
    EXPECT_EQ(r.reader.read_child(r.tag, sizeof r.tag), 0);
    EXPECT_EQ(r.reader.stack_depth(), 0);
    EXPECT_EQ(r.reader.read_child(r.tag, sizeof r.tag), 1);
}

TEST(XmlReader, TruncatedInputEndsEveryOperation) {
    const char* inputs[] = {"<a", "<a>val", "<a>val</a", "<a><b><c>", "<a>x</"};
    for (const char* input : inputs) {
        leaf_reader r(input);
        char value[100];
        int number = 0;
        while (!r.reader.at_end()) {
            if (r.reader.read_tag(r.tag, sizeof r.tag)) {
                r.reader.read_data(value, sizeof value);
                r.reader.read_data(&number);
                r.reader.skip_data();
            }
        }
        EXPECT_TRUE(r.reader.at_end()) << input;
    }
}

TEST(XmlReader, DepthBeyondTheLimitIsCountedNotStored) {
    std::string text;
    const int levels = zorn_xml_depth_limit * 4;
    for (int i = 0; i < levels; ++i) text += "<n" + std::to_string(i) + ">";
    for (int i = levels - 1; i >= 0; --i) text += "</n" + std::to_string(i) + ">";
    text += "<last>";
    leaf_reader r(text);
    for (int i = 0; i < levels; ++i) ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);
    EXPECT_EQ(r.reader.stack_depth(), levels);
    for (int i = 0; i < levels; ++i) ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 0);
    EXPECT_EQ(r.reader.stack_depth(), 0);
    ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);

    // A skip from the top level passes all of it.
    leaf_reader skip(text);
    ASSERT_EQ(skip.reader.read_tag(skip.tag, sizeof skip.tag), 1);
    skip.reader.skip_data();
    EXPECT_EQ(skip.reader.stack_depth(), 0);
    ASSERT_EQ(skip.reader.read_tag(skip.tag, sizeof skip.tag), 1);
    EXPECT_STREQ(skip.tag, "last");
}

TEST(XmlReader, CdataRoundTripAndOddCases) {
    std::vector<unsigned char> bytes(100);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i * 37 + 11);
    zorn_xml_string_writer writer;
    writer.write_tag("blob", 1);
    writer.write_cdata(bytes.data(), static_cast<int>(bytes.size()));
    writer.end_tag("blob", 1);
    writer.write_leaf("after", 1);

    leaf_reader r(writer.text());
    ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);
    unsigned char out[200];
    ASSERT_EQ(r.reader.read_cdata(out, sizeof out), 100);
    EXPECT_EQ(std::memcmp(out, bytes.data(), bytes.size()), 0);
    EXPECT_EQ(r.reader.stack_depth(), 0);
    ASSERT_EQ(r.reader.read_tag(r.tag, sizeof r.tag), 1);
    EXPECT_STREQ(r.tag, "after");

    struct cdata_case {
        const char* text;
        int count;
    };
    const cdata_case cases[] = {
        {"<b><![CDATA[\n]]>\n</b>", 0},      // empty dump
        {"<b><![CDATA[\nA0f\n]]></b>", 1},   // odd digit count loses the last one, upper case works
        {"<b><![DATA[\n00\n]]></b>", 0},     // wrong header
        {"<b><![CDATA[\n0011", 0},           // end of source
    };
    for (const cdata_case& c : cases) {
        leaf_reader cr(c.text);
        ASSERT_EQ(cr.reader.read_tag(cr.tag, sizeof cr.tag), 1);
        EXPECT_EQ(cr.reader.read_cdata(out, sizeof out), c.count) << c.text;
    }
    leaf_reader upper("<b><![CDATA[\nA0f\n]]></b>");
    ASSERT_EQ(upper.reader.read_tag(upper.tag, sizeof upper.tag), 1);
    ASSERT_EQ(upper.reader.read_cdata(out, sizeof out), 1);
    EXPECT_EQ(out[0], 0xa0);
}

TEST(XmlFileWriter, ReportsAFailedWrite) {
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
