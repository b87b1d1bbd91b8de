#include "app/stream_parser.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "tests/support/log_capture.h"

namespace {

// Records what the parser hands on; adjacent text runs are merged, since block cuts move run edges.
class recording_sink : public zorn_stream_sink {
public:
    void text_run(const char* bytes, int length) override {
        runs.push_back(length);
        if (events.empty() || events.back().rfind("text ", 0) != 0) events.push_back("text ");
        events.back().append(bytes, static_cast<size_t>(length));
    }
    void tagged_data(const char* name, const char* payload, int length) override {
        EXPECT_EQ(static_cast<size_t>(length), std::string(payload).size()) << name;
        events.push_back(std::string("tag ") + name + "=" + std::string(payload, static_cast<size_t>(length)));
    }
    void beep() override { events.push_back("beep"); }
    void enter_password_mode() override { events.push_back("password on"); }
    void leave_password_mode() override { events.push_back("password off"); }
    void begin_block() override { ++blocks; }

    std::vector<std::string> events;
    std::vector<int> runs;
    int blocks = 0;
};

std::string unescape(const std::string& s) {
    std::string out;
    for (size_t i = 0; i < s.size(); ++i) {
        if (s[i] != '\\' || i + 1 >= s.size()) {
            out += s[i];
            continue;
        }
        const char e = s[++i];
        if (e == 'n') out += '\n';
        else if (e == 'r') out += '\r';
        else if (e == 't') out += '\t';
        else if (e == 'x') {
            out += static_cast<char>(std::stoi(s.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else out += e;
    }
    return out;
}

struct stream_case {
    std::string name;
    std::string input;
    std::vector<std::string> expected;
};

std::vector<stream_case> load_cases() {
    std::ifstream in(LANTERN_SOURCE_DIR "/tests/app/stream_cases.txt");
    std::vector<stream_case> cases;
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("case ", 0) == 0) cases.push_back({line.substr(5), {}, {}});
        else if (line.rfind("in: ", 0) == 0) cases.back().input = unescape(line.substr(4));
        else if (line.rfind("out: ", 0) == 0) cases.back().expected.push_back(unescape(line.substr(5)));
    }
    return cases;
}

std::vector<std::string> parse_in_pieces(const std::string& input, const std::vector<size_t>& cuts) {
    recording_sink sink;
    zorn_stream_parser parser(sink);
    size_t from = 0;
    for (size_t cut : cuts) {
        parser.feed(reinterpret_cast<const unsigned char*>(input.data()) + from, static_cast<int>(cut - from));
        from = cut;
    }
    parser.feed(reinterpret_cast<const unsigned char*>(input.data()) + from, static_cast<int>(input.size() - from));
    return sink.events;
}

std::string feed_all(zorn_stream_parser& parser, const std::string& bytes) {
    parser.feed(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
    return bytes;
}

}  // namespace

TEST(StreamParser, GoldenCasesAtEveryCut) {
    const std::vector<stream_case> cases = load_cases();
    ASSERT_GE(cases.size(), 10u);
    for (const stream_case& c : cases) {
        EXPECT_EQ(parse_in_pieces(c.input, {}), c.expected) << c.name;
        for (size_t cut = 0; cut <= c.input.size(); ++cut)
            EXPECT_EQ(parse_in_pieces(c.input, {cut}), c.expected) << c.name << ", cut at " << cut;
        std::vector<size_t> every_byte;
        for (size_t i = 1; i < c.input.size(); ++i) every_byte.push_back(i);
        EXPECT_EQ(parse_in_pieces(c.input, every_byte), c.expected) << c.name << ", one byte a block";
    }
}

TEST(StreamParser, TextBeforeATrailingSemicolonIsShownAtOnce) {
    recording_sink sink;
    zorn_stream_parser parser(sink);
    feed_all(parser, "hello;");
    EXPECT_EQ(sink.events, std::vector<std::string>{"text hello"});
    EXPECT_EQ(parser.state(), zorn_stream_parser::after_semicolon);
    feed_all(parser, ";");
    EXPECT_EQ(sink.events, std::vector<std::string>{"text hello;"});
}

TEST(StreamParser, TagNameLimits) {
    for (const char* kind : {"s", "t"}) {
        recording_sink sink;
        zorn_stream_parser parser(sink);
        const std::string name63(63, 'n');
        const std::string close = std::string(kind) == "s" ? "d;e" + name63 + ";" : "";
        feed_all(parser, ";" + std::string(kind) + name63 + ";" + close);
        ASSERT_EQ(sink.events.size(), 1u) << kind;
        EXPECT_EQ(sink.events[0].substr(0, 4 + 63), "tag " + name63);

        sink.events.clear();
        const std::string name64(64, 'm');
        log_capture log(2);
        feed_all(parser, ";" + std::string(kind) + name64 + ";after");
        const char* form = std::string(kind) == "s" ? "lns" : "lnt";
        EXPECT_NE(log.text().find("Warning in zorn_mw::process_socket_data(), " + std::string(form) + " tag '" + name64 +
                                  "' too long?\n"),
                  std::string::npos)
            << log.text();
        // The name is dropped at its 64th byte; the semicolon after it is then a stray one.
        EXPECT_EQ(sink.events, std::vector<std::string>{"text ;after"}) << kind;
        EXPECT_EQ(parser.state(), zorn_stream_parser::plain_text);
    }
}

TEST(StreamParser, TagDataLimits) {
    recording_sink sink;
    zorn_stream_parser parser(sink);
    const std::string data14999(14999, 'd');
    feed_all(parser, ";sbig;" + data14999 + ";ebig;");
    ASSERT_EQ(sink.events.size(), 1u);
    EXPECT_EQ(sink.events[0].size(), std::string("tag big=").size() + 14999);

    sink.events.clear();
    feed_all(parser, ";sbig;" + std::string(15000, 'd') + "tail;ebig;next");
    // The data is dropped at 15000 bytes; the rest is text, and the end tag passes quietly.
    EXPECT_EQ(sink.events, std::vector<std::string>{"text tailnext"});
    EXPECT_EQ(parser.state(), zorn_stream_parser::plain_text);
}

TEST(StreamParser, RunsAreHandedOnAt2560Bytes) {
    recording_sink sink;
    zorn_stream_parser parser(sink);
    feed_all(parser, std::string(2560, 'a') + "b");
    EXPECT_EQ(sink.runs, (std::vector<int>{2560, 1}));
    sink.runs.clear();
    feed_all(parser, std::string(6000, 'c'));
    EXPECT_EQ(sink.runs, (std::vector<int>{2560, 2560, 880}));
}

TEST(StreamParser, EmptyFeedRunsEntryAndExitOnly) {
    recording_sink sink;
    zorn_stream_parser parser(sink);
    parser.feed(nullptr, 0);
    parser.feed(nullptr, -5);
    EXPECT_EQ(sink.blocks, 2);
    EXPECT_TRUE(sink.events.empty());
}

TEST(OutgoingBuffer, LinesQueueAndAFullBufferLosesTheTail) {
    zorn_outgoing_buffer out;
    out.send_line("look");
    out.send_line("say hi");
    EXPECT_EQ(std::string(out.bytes(), static_cast<size_t>(out.count())), "look\nsay hi\n");
    out.consume(5);
    EXPECT_EQ(std::string(out.bytes(), static_cast<size_t>(out.count())), "say hi\n");
    out.consume(100);
    EXPECT_EQ(out.count(), 0);

    const std::string nearly(zorn_outgoing_buffer::capacity - 3, 'x');
    out.send_line(nearly.c_str());
    EXPECT_EQ(out.count(), zorn_outgoing_buffer::capacity - 2);
    log_capture log(2);
    out.send_line("abc");  // "ab" fills the buffer; the line feed is lost
    EXPECT_EQ(log.text(), "Error in append_outgoing_string() - not enough space in outgoing buffer?\n"
                          "Error in append_outgoing_string() - not enough space in outgoing buffer?\n");
    EXPECT_EQ(out.count(), zorn_outgoing_buffer::capacity);
    EXPECT_EQ(std::string(out.bytes() + out.count() - 2, 2), "ab");
    out.send_line("lost");
    EXPECT_EQ(out.count(), zorn_outgoing_buffer::capacity);
}
