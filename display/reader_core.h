#pragma once
// The screen reader's logic without a window: game text made plain (ANSI sequences, carriage
// returns and control bytes gone) and cut into lines, chat lines led by their channel's name, a
// bounded queue in front of the speech output that counts what a flood made it drop, the rolling
// buffer of the accessible mirror, and the accessible names of the gauges and the map.
//
// The owner feeds text, and once per tick calls pump(): what came whole is spoken in order while
// the output keeps up; a line left open (a prompt) is said once a tick has passed without more.
// Allocation failure is not handled: the queue and the mirror are bounded, so memory stays small.

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

// Where speech goes: speech-dispatcher in the client, a recorder in tests.
class zorn_speech_output {
public:
    virtual ~zorn_speech_output() = default;
    // Hands one utterance over; it is said after those before it.
    virtual void speak(const std::string& text) = 0;
    // Stops what is being said and drops what waits.
    virtual void silence() = 0;
    // Utterances handed over and not yet finished (0: idle).
    virtual int pending() const = 0;
};

// Receives every cut line: the mirror shows them all, speech takes those worth saying.
class zorn_line_sink {
public:
    virtual ~zorn_line_sink() = default;
    // continues: the text goes on the line handed over last (a prompt that was said and then
    // completed); otherwise it starts a new line.
    virtual void line(const std::string& text, bool continues) = 0;
};

// Plain text from game bytes, line by line. The escape state carries across feeds, so a
// sequence split between reads is still removed.
class zorn_reader_lines {
public:
    // A longer line is handed on in pieces of this size, each continuing the one before.
    static constexpr size_t max_line_bytes = 4000;
    // Longest channel name kept for the prefix; a longer one is cut.
    static constexpr size_t max_channel_bytes = 39;

    explicit zorn_reader_lines(zorn_line_sink& sink) : sink(sink) {}

    void feed(const char* bytes, int length);
    // The channel of the text that follows, null or empty for the main text. A change ends an
    // open line: chat never continues a line of the main text.
    void set_channel(const char* name);
    // Hands on the open line, if any; text that follows on that line continues it.
    void flush();
    bool has_open_text() const { return !current.empty(); }

private:
    void end_line(bool complete);

    zorn_line_sink& sink;
    std::string current;
    std::string channel;
    // Part of the line now open was handed on already.
    bool open_continues = false;
    // 0 text, 1 after ESC, 2 inside ESC [ ... up to the final byte.
    int escape_state = 0;
};

// "Mana: 20" for the channel "gossip" gives "gossip: Mana: 20"; a line that already starts with
// the name (as "[gossip] ..." or "gossip: ...") stays as it is.
std::string zorn_reader_channel_line(const std::string& channel, const std::string& text);

// True when the line holds a letter or a digit: blank lines and bare prompt marks are not said.
bool zorn_reader_speakable(const std::string& text);

// The queue in front of the output. The output gets an utterance only while it has fewer than
// max_in_flight; what waits is bounded, and a flood drops the oldest waiting lines, counting
// them. Before the next line the count is said: "Skipped 4711 lines.".
class zorn_speech_queue {
public:
    static constexpr size_t max_waiting_lines = 100;
    static constexpr size_t max_waiting_bytes = 10000;
    static constexpr int max_in_flight = 1;

    explicit zorn_speech_queue(std::unique_ptr<zorn_speech_output> output);

    // A line worth saying joins the queue (others are passed over).
    void add(const std::string& text);
    // Hands lines to the output while it keeps up.
    void pump();
    // Ctrl: stops speech and forgets what waits.
    void silence();
    // Says the newest line worth saying again, at once.
    void repeat_last();
    // Said at once, ahead of what waits ("Screen reader on.").
    void announce(const std::string& text);

    size_t waiting() const { return queue.size(); }
    long long skipped() const { return skipped_lines; }
    const std::string& last_line() const { return last; }
    zorn_speech_output* output() { return out.get(); }

private:
    void drop_oldest();

    std::unique_ptr<zorn_speech_output> out;
    std::deque<std::string> queue;
    size_t queued_bytes = 0;
    long long skipped_lines = 0;
    std::string last;
};

// The text of the accessible mirror: the last max_lines lines, and what the native control must
// do to show them. Updates gather between take_update() calls, so the control is touched once a
// tick however many lines came.
class zorn_mirror_buffer {
public:
    static constexpr size_t max_lines = 2000;
    // A line continued beyond this starts a new one: a flood without line feeds stays bounded.
    static constexpr size_t max_line_chars = 10000;

    struct update {
        bool replace = false;     // set the whole text to `text`
        size_t remove_front = 0;  // else: characters to remove from the start
        std::string append;       // then: text to append at the end
        bool empty() const { return !replace && remove_front == 0 && append.empty(); }
    };

    void add(const std::string& text, bool continues);
    update take_update();
    // The whole text, lines joined by line feeds.
    std::string text() const;
    size_t line_count() const { return lines.size(); }

private:
    std::deque<std::string> lines;
    update pending;
    // Lines in the control that are older than what `pending.append` brings.
    size_t shown_lines = 0;
};

// The values of the gauges as the status display holds them.
struct zorn_gauge_values {
    bool hp_bars = false, exp_bar = false, enemy_bar = false;
    int hp = -1, max_hp = 1, mana = -1, max_mana = 1, move = -1, max_move = 1;
    int first_xp = 0;  // tenths of a percent
    std::string enemy_name;
    int enemy_percent = -1;
};

// "Health 120 of 150, Mana 80 of 90, Movement 100 of 110, Experience 42 percent, Enemy the
// goblin 60 percent"; only what is shown, "No gauges" when nothing is, values not yet received
// left out.
std::string zorn_gauge_accessible_name(const zorn_gauge_values& values);
// "Map, Ember Vale", "Map, in combat", "Map, not logged in".
std::string zorn_map_accessible_name(bool logged_in, bool in_combat, const std::string& area_name);
