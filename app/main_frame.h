#pragma once
// The one main frame. It owns the game connection and every panel, and its 20 ms tick is the
// client's heartbeat: socket traffic, animation, deferred work and the shutdown countdown all run
// from it. The frame is reached through one process-wide pointer (zorn_main_frame()).

#include <wx/frame.h>
#include <wx/timer.h>

#include <cstdint>

#include "app/background.h"
#include "base/fixed_string.h"
#include "input/frame_link.h"
#include "net/tcp_socket.h"

class wxIcon;
class wxFont;
class wxPaintEvent;
class wxEraseEvent;
class wxSizeEvent;
class wxFocusEvent;
class wxCloseEvent;
class wxMouseEvent;
class zorn_input_window;

// How far the player is; says nothing of the socket.
enum : int {
    session_none = 0,
    session_creating = 1,
    session_logged_in = 2,
    session_logging_off = 3,
};

// Timer ids of the frame.
enum : int {
    zorn_tick_timer_id = 112,
    zorn_ping_timer_id = 113,
    zorn_autosave_timer_id = 114,
};

constexpr int zorn_tick_period_ms = 20;
constexpr int zorn_ping_period_ms = 15000;
constexpr int zorn_autosave_period_ms = 300000;
// Ticks from system_shutdown_handler to the exit step: it runs when the count reaches 1.
constexpr int zorn_shutdown_ticks = 10;
constexpr int zorn_url_request_size = 1024;

inline constexpr const char* zorn_client_version = "1.096-mst-alpha1";
inline constexpr const char* zorn_frame_title = "Ember Vale";
constexpr int zorn_frame_width = 984;
constexpr int zorn_frame_height = 728;

// Base of the main frame and the automap frame: names the window "zorn frame " + title and gives
// it the process-wide icon when one has been stored.
class zorn_frame : public wxFrame {
public:
    zorn_frame(wxWindow* parent, wxWindowID id, const wxString& title, const wxPoint& pos, const wxSize& size,
               long style);
};

// The icon every zorn_frame takes; none until stored.
void zorn_set_frame_icon(const wxIcon& icon);

class zorn_mw : public zorn_frame, public zorn_frame_link {
public:
    zorn_mw(wxWindow* parent, wxWindowID id, const wxString& title, const wxPoint& pos, const wxSize& size,
            long style);
    ~zorn_mw() override;

    // zorn_frame_link
    void process_user_command(const char* text, int echo) override;
    bool transfer_focus_main(wxWindow* window) override;
    void unlock_main_scrollback() override;

    void send_line(const char* text);
    void begin_message();
    void print_message(const char* text);
    void refresh_text();
    // Text printed as a client message at the next tick.
    void queue_message(const char* text);

    void layout_panels();
    // After a change of the main font's glyphs: everything measured with it is laid out again.
    void refresh_main_font();
    // After a change of the button and status fonts.
    void refresh_button_font();
    void refresh_themes(bool force);
    void update_background(bool force);

    // Stores at most 1023 bytes of the URL; the next tick opens it.
    void open_url(const char* url);
    // Opens at once; on failure queues the apology with the URL and answers false.
    bool open_browser(const char* url);
    // Starts the exit countdown; every exit the user asks for comes here.
    void system_shutdown_handler();
    // FIXME: asks first when a character is at stake, once the dialogs exist; until then it goes
    // straight to system_shutdown_handler, as it does with no character in the game.
    void verify_program_exit();

    // The socket pump of the tick. FIXME: connect, read and write arrive with the session code.
    void socket_handler();

    // The link rectangle of the web link, as the last paint placed it.
    struct rect {
        int x = 0, y = 0, width = 0, height = 0;
    };

    int shutdown_countdown;
    zorn_tcp_socket socket;
    int client_status_dirty;
    zorn_input_window* input_window;
    wxTimer tick_timer;
    wxTimer ping_timer;
    wxTimer autosave_timer;
    int64_t ping_sent_time;
    zorn_fixed_string pending_message;
    int pending_message_set;
    int session_state;
    int last_width;
    int last_height;
    zorn_background_cache background;
    rect link_rect;
    int channel_divert_active;

private:
    void delayed_initialization();
    void OnTimer(wxTimerEvent& event);
    void ping_handler(wxTimerEvent& event);
    void autosave_handler(wxTimerEvent& event);
    void OnResize(wxSizeEvent& event);
    void focus_handler(wxFocusEvent& event);
    void close_handler(wxCloseEvent& event);
    void repaint_handler(wxPaintEvent& event);
    void erase_handler(wxEraseEvent& event);
    void mouse_handler(wxMouseEvent& event);
    void exit_step();
    void paint_link_and_logo(wxDC& dc, int width, int height);
    void paint_bevel(wxDC& dc, int width, int height);

    wxFont* link_font;

    wxDECLARE_EVENT_TABLE();
};

// The frame, or null before its constructor ran.
zorn_mw* zorn_main_frame();

// Process-wide values of the frame's world.
extern int constructor_finished;
extern int deferred_focus;
extern int screen_width;
extern int screen_height;
extern char launcher_version[];  // at most 256 characters; empty without a launcher
// URL request of open_url, served by the tick.
extern char url_request[];
extern int url_request_set;

// The web site's host and its main page, "/" with the query "?ln".
const char* zorn_web_host();
void zorn_web_main_page(zorn_fixed_string* out);
