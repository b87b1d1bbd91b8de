#pragma once
// The frame's screen reader: exists only while the character's screen_reader setting is on, so
// with it off the text path pays one pointer test. Game text and client messages go through the
// line cutter to the speech queue and to the accessible mirror; the frame's tick says what is
// due and updates the mirror and the accessible names of the gauges and the map.

#include <memory>
#include <string>

#include "display/reader_core.h"

class wxWindow;
class zorn_reader_mirror;

// Makes the speech output when the reader starts: speech-dispatcher unless a test puts its own.
// May give null (no speech; the mirror still works).
extern std::unique_ptr<zorn_speech_output> (*zorn_speech_output_factory)();

class zorn_screen_reader : public zorn_line_sink {
public:
    zorn_screen_reader(wxWindow* parent, std::unique_ptr<zorn_speech_output> output);
    ~zorn_screen_reader() override;

    // Text as it arrives; channel null or empty for the main text.
    void text(const char* bytes, int length, const char* channel);
    // Once per tick: a line left open a whole tick is said, the queue is pumped, the mirror shown.
    void tick();
    void line(const std::string& text, bool continues) override;

    zorn_reader_lines lines;
    zorn_speech_queue speech;
    zorn_mirror_buffer buffer;
    zorn_reader_mirror* mirror;
    // The names last given, so the toolkit is told only of a change.
    std::string gauge_name, map_name;

private:
    bool text_since_tick = false;
};
