// The screen reader's headless core: line cutting from golden cases replayed at every cut, the
// speech queue's bounds and skip count, the mirror buffer replayed onto a model control, the
// accessible names, and speech-dispatcher missing.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "display/reader_core.h"
#include "display/speechd_output.h"
#include "tests/support/case_file.h"

namespace {

struct event_log : zorn_line_sink {
    std::vector<std::string> events;
    void line(const std::string& text, bool continues) override { events.push_back((continues ? "more:" : "new:") + text); }
};

// Feeds the input with its {markers}, the plain stretches split at `cut` (0: no split).
std::vector<std::string> run_lines(const std::string& input, size_t cut) {
    event_log log;
    zorn_reader_lines lines(log);
    size_t offset = 0;  // bytes of plain text fed so far, across markers
    auto feed = [&](const std::string& text) {
        size_t at = 0;
        while (at < text.size()) {
            size_t take = text.size() - at;
            if (cut && offset < cut && offset + take > cut) take = cut - offset;
            lines.feed(text.data() + at, static_cast<int>(take));
            at += take;
            offset += take;
        }
    };
    for (size_t i = 0; i < input.size();) {
        if (input[i] != '{') {
            const size_t end = input.find('{', i);
            feed(input.substr(i, end == std::string::npos ? std::string::npos : end - i));
            i = end == std::string::npos ? input.size() : end;
            continue;
        }
        const size_t close = input.find('}', i);
        const std::string marker = input.substr(i + 1, close - i - 1);
        if (marker == "flush")
            lines.flush();
        else
            lines.set_channel(marker.c_str());
        i = close + 1;
    }
    lines.flush();
    return log.events;
}

TEST(ReaderLines, GoldenCasesAtEveryCut) {
    for (const case_row& row : read_cases("display/reader_line_cases.txt")) {
        SCOPED_TRACE(row.where + " " + row.str(0));
        std::vector<std::string> expected;
        for (size_t i = 2; i < row.size(); ++i)
            if (!row.str(i).empty()) expected.push_back(row.str(i));
        for (size_t cut = 0; cut <= row.str(1).size(); ++cut) {
            SCOPED_TRACE("cut at " + std::to_string(cut));
            EXPECT_EQ(run_lines(row.str(1), cut), expected);
        }
    }
}

TEST(ReaderLines, LongLineGoesOnInPiecesOfTheLimit) {
    event_log log;
    zorn_reader_lines lines(log);
    const std::string text(zorn_reader_lines::max_line_bytes * 2 + 5, 'x');
    lines.feed(text.data(), static_cast<int>(text.size()));
    lines.feed("\n", 1);
    ASSERT_EQ(log.events.size(), 3u);
    EXPECT_EQ(log.events[0], "new:" + std::string(zorn_reader_lines::max_line_bytes, 'x'));
    EXPECT_EQ(log.events[1], "more:" + std::string(zorn_reader_lines::max_line_bytes, 'x'));
    EXPECT_EQ(log.events[2], "more:xxxxx");
}

TEST(ReaderLines, ChannelNameIsCutAtItsLimit) {
    event_log log;
    zorn_reader_lines lines(log);
    const std::string name(zorn_reader_lines::max_channel_bytes + 6, 'c');
    lines.set_channel(name.c_str());
    lines.feed("hi\n", 3);
    ASSERT_EQ(log.events.size(), 1u);
    EXPECT_EQ(log.events[0], "new:" + name.substr(0, zorn_reader_lines::max_channel_bytes) + ": hi");
}

// An output that records, and is busy as long as the test says.
struct recorder : zorn_speech_output {
    std::vector<std::string>* said;
    int* busy;
    int* silenced;
    recorder(std::vector<std::string>* s, int* b, int* c) : said(s), busy(b), silenced(c) {}
    void speak(const std::string& text) override { said->push_back(text); }
    void silence() override { ++*silenced; }
    int pending() const override { return *busy; }
};

struct speech_fixture : ::testing::Test {
    std::vector<std::string> said;
    int busy = 0, silenced = 0;
    zorn_speech_queue queue{std::make_unique<recorder>(&said, &busy, &silenced)};
};

TEST_F(speech_fixture, IdleOutputGetsEveryLineInOrderButNotTheEmptyOnes) {
    for (const char* line : {"One", "", "> ", "--- ", "Two 2", "3"}) queue.add(line);
    queue.pump();
    EXPECT_EQ(said, (std::vector<std::string>{"One", "Two 2", "3"}));
    EXPECT_EQ(queue.waiting(), 0u);
}

TEST_F(speech_fixture, LineLimitDropsTheOldestAndSaysHowMany) {
    busy = 1;
    for (size_t n = 0; n < zorn_speech_queue::max_waiting_lines; ++n) queue.add("line " + std::to_string(n));
    EXPECT_EQ(queue.skipped(), 0);  // at the limit nothing goes
    queue.add("line 100");
    EXPECT_EQ(queue.skipped(), 1);  // one past it, the oldest
    queue.pump();
    EXPECT_TRUE(said.empty());  // the output is busy
    busy = 0;
    queue.pump();
    ASSERT_EQ(said.size(), zorn_speech_queue::max_waiting_lines + 1);
    EXPECT_EQ(said[0], "Skipped 1 line.");
    EXPECT_EQ(said[1], "line 1");
    EXPECT_EQ(said.back(), "line 100");
}

TEST_F(speech_fixture, FloodQueuesBoundedSpeechAndAccountsForEveryLine) {
    busy = 1;
    const int flood = 50000;
    for (int n = 0; n < flood; ++n) queue.add("Line number " + std::to_string(n) + " of the flood.");
    busy = 0;
    queue.pump();
    ASSERT_FALSE(said.empty());
    size_t bytes = 0;
    for (const std::string& s : said) bytes += s.size();
    EXPECT_LE(bytes, zorn_speech_queue::max_waiting_bytes + 64);
    const std::string head = "Skipped ";
    ASSERT_EQ(said[0].compare(0, head.size(), head), 0) << said[0];
    const long long skipped = std::stoll(said[0].substr(head.size()));
    EXPECT_EQ(skipped + static_cast<long long>(said.size()) - 1, flood);
    EXPECT_EQ(said.back(), "Line number 49999 of the flood.");
}

TEST_F(speech_fixture, ByteLimitHoldsWithFewLongLines) {
    busy = 1;
    const std::string long_line(zorn_speech_queue::max_waiting_bytes / 2 + 1, 'a');
    queue.add(long_line);
    queue.add(long_line);
    EXPECT_EQ(queue.waiting(), 1u);
    EXPECT_EQ(queue.skipped(), 1);
}

TEST_F(speech_fixture, OneInFlightAtATime) {
    queue.add("first");
    queue.add("second");
    // With one pending nothing goes; idle, both go.
    busy = 1;
    queue.pump();
    EXPECT_TRUE(said.empty());
    busy = 0;
    queue.pump();
    EXPECT_EQ(said.size(), 2u);
}

TEST_F(speech_fixture, SilenceForgetsWhatWaitsAndRepeatSaysTheNewestLine) {
    busy = 1;
    for (int n = 0; n < 300; ++n) queue.add("l" + std::to_string(n));
    queue.silence();
    EXPECT_EQ(silenced, 1);
    busy = 0;
    queue.pump();
    EXPECT_TRUE(said.empty());  // no lines and no skip count after a silence
    queue.add("> ");
    queue.repeat_last();
    EXPECT_EQ(silenced, 2);
    EXPECT_EQ(said, std::vector<std::string>{"l299"});
}

TEST(SpeechQueue, WithoutAnOutputNothingBreaks) {
    zorn_speech_queue queue(nullptr);
    queue.add("text");
    queue.pump();
    queue.silence();
    queue.repeat_last();
    queue.announce("on");
    EXPECT_EQ(queue.waiting(), 0u);
}

// A model of the native control: applies updates as the mirror does.
void apply_update(std::string* control, const zorn_mirror_buffer::update& u) {
    if (u.replace) {
        *control = u.append;
        return;
    }
    control->erase(0, u.remove_front);
    *control += u.append;
}

TEST(MirrorBuffer, UpdatesKeepTheControlEqualToTheBuffer) {
    zorn_mirror_buffer buffer;
    std::string control;
    // Batches below, at and above the limit, with continued lines between.
    const size_t batches[] = {1, 5, zorn_mirror_buffer::max_lines - 1, 1, 2, zorn_mirror_buffer::max_lines,
                              zorn_mirror_buffer::max_lines + 1, 3, 7000};
    int n = 0;
    for (size_t batch : batches) {
        for (size_t i = 0; i < batch; ++i, ++n) {
            buffer.add("line " + std::to_string(n), false);
            if (n % 7 == 0) buffer.add(" more", true);
        }
        apply_update(&control, buffer.take_update());
        ASSERT_EQ(control, buffer.text()) << "after a batch of " << batch;
        EXPECT_LE(buffer.line_count(), zorn_mirror_buffer::max_lines);
    }
    EXPECT_EQ(buffer.line_count(), zorn_mirror_buffer::max_lines);
    EXPECT_TRUE(buffer.take_update().empty());
}

TEST(MirrorBuffer, TheLimitAndOneMore) {
    zorn_mirror_buffer buffer;
    std::string control;
    for (size_t n = 0; n < zorn_mirror_buffer::max_lines; ++n) buffer.add(std::to_string(n), false);
    apply_update(&control, buffer.take_update());
    EXPECT_EQ(control.substr(0, 2), "0\n");
    buffer.add("next", false);
    const zorn_mirror_buffer::update u = buffer.take_update();
    EXPECT_FALSE(u.replace);
    EXPECT_EQ(u.remove_front, 2u);  // "0" and its line feed
    apply_update(&control, u);
    EXPECT_EQ(control, buffer.text());
    EXPECT_EQ(control.substr(0, 2), "1\n");
}

TEST(MirrorBuffer, EndlessContinuationStartsNewLines) {
    zorn_mirror_buffer buffer;
    buffer.add("", false);
    const std::string piece(1000, 'x');
    for (int i = 0; i < 25; ++i) buffer.add(piece, true);
    EXPECT_EQ(buffer.line_count(), 3u);  // 10,000 characters a line at most
}

TEST(AccessibleNames, GaugesAndMap) {
    zorn_gauge_values v;
    EXPECT_EQ(zorn_gauge_accessible_name(v), "No gauges");
    v.hp_bars = true;
    EXPECT_EQ(zorn_gauge_accessible_name(v), "No gauges");  // nothing received yet
    v.hp = 120, v.max_hp = 150, v.mana = 80, v.max_mana = 90, v.move = 0, v.max_move = 110;
    EXPECT_EQ(zorn_gauge_accessible_name(v), "Health 120 of 150, Mana 80 of 90, Movement 0 of 110");
    v.hp_bars = false, v.exp_bar = true, v.first_xp = 425;
    EXPECT_EQ(zorn_gauge_accessible_name(v), "Experience 42 percent");
    v.first_xp = 1000;
    EXPECT_EQ(zorn_gauge_accessible_name(v), "Experience full");
    v.exp_bar = false, v.enemy_bar = true;
    EXPECT_EQ(zorn_gauge_accessible_name(v), "No enemy");
    v.enemy_name = "the goblin", v.enemy_percent = 60;
    EXPECT_EQ(zorn_gauge_accessible_name(v), "Enemy the goblin 60 percent");
    EXPECT_EQ(zorn_map_accessible_name(false, false, "Ember Vale"), "Map, not logged in");
    EXPECT_EQ(zorn_map_accessible_name(true, true, "Ember Vale"), "Map, in combat");
    EXPECT_EQ(zorn_map_accessible_name(true, false, "Ember Vale"), "Map, Ember Vale");
    EXPECT_EQ(zorn_map_accessible_name(true, false, ""), "Map");
}

TEST(SpeechDispatcher, MissingLibraryOrFunctionsGiveNoSpeechAndNoError) {
    EXPECT_EQ(zorn_open_speechd("libspeechd-not-installed.so.9"), nullptr);
    EXPECT_EQ(zorn_open_speechd("libz.so.1"), nullptr);  // loads, but is not the speech library
}

}  // namespace
