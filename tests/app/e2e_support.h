#pragma once
// The real client in-process against the real test world: the process-wide start-up that
// zorn_gui_app::OnInit does (TLS, config directory under a private HOME, themes, fonts, the system
// file), the main frame as OnInit builds it, typing into its line editor through the X server, and
// a probe that counts and times the frame's ticks from outside. Shared by the end-to-end tests and
// the flood benchmark.

#include <wx/event.h>
#include <wx/timer.h>

#include <cstdint>
#include <string>
#include <vector>

class zorn_mw;

namespace e2e {

// The system file in the form the client writes it, pointing the game connection at host:port.
std::string system_file_text(const std::string& host, int port);

// Once per process: HOME becomes home, its .config/EmberVale/ember_vale.cfg is written pointing at
// 127.0.0.1:port, and the client's start-up runs up to the frame. The debug log goes to
// home/debug.txt at the level given. False with a message on stderr when a step failed.
bool start_client_process(const std::string& home, int port, int debug_level = 2);

// The frame as OnInit makes it, shown; its first tick connects.
zorn_mw* make_frame();
// Stops the frame's timers and countdown, destroys it and lets the toolkit delete it.
void destroy_frame(zorn_mw* frame);

// Types the text into the frame's line editor as key presses through the X server, then Enter.
// False when the editor did not take the line (it is not emptied by Enter).
bool type_line(zorn_mw* frame, const std::string& text);

// The main display's text as stored: colour codes gone, line feeds kept.
std::string shown_text(zorn_mw* frame);

// Becomes the owner of the frame's 20 ms tick timer and hands each tick on to the frame, counting
// the ticks and timing each one. Detach (or destroy) before the frame goes.
class tick_probe : public wxEvtHandler {
public:
    explicit tick_probe(zorn_mw* frame);
    ~tick_probe() override;
    void detach();

    long long ticks = 0;
    int64_t longest_tick_us = 0;
    int64_t total_tick_us = 0;
    // Steady clock, microseconds: when the first tick began, when the last one ended.
    int64_t first_tick_start_us = 0;
    int64_t last_tick_end_us = 0;
    // Ran after each tick, on the main thread, when set.
    void (*after_tick)(void* context) = nullptr;
    void* after_tick_context = nullptr;

private:
    void on_timer(wxTimerEvent& event);
    zorn_mw* frame;
};

// The steady clock in microseconds.
int64_t now_us();

// Lines of a text file; the last one without its line feed when it has none.
std::vector<std::string> read_lines(const std::string& path);

}  // namespace e2e
