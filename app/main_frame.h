#pragma once
// The one main frame. It owns the game connection and every panel, and its 20 ms tick is the
// client's heartbeat: socket traffic, animation, deferred work and the shutdown countdown all run
// from it. The frame is reached through one process-wide pointer (zorn_main_frame()).

#include <wx/frame.h>
#include <wx/timer.h>

#include <cstdint>

#include "app/background.h"
#include "app/client_commands.h"
#include "app/stream_parser.h"
#include "base/fixed_string.h"
#include "config/config_listener.h"
#include "config/known_servers.h"
#include "input/frame_link.h"
#include "net/tcp_socket.h"
#include "panels/popup_manager.h"

class wxIcon;
class wxFont;
class wxPaintEvent;
class wxEraseEvent;
class wxSizeEvent;
class wxFocusEvent;
class wxCloseEvent;
class wxMouseEvent;
class zorn_input_window;
class zorn_main_window;
class zorn_ansi_display;
class zorn_channel_window;
class wxMenu;
class wxDialog;
class zorn_newbie_quit_dialog;
class zorn_save_quit_dialog;
class zorn_pgm_exit_dialog;
class zorn_newbie_disconnect_dialog;
class zorn_disconnect_dialog;
class zorn_pin_dialog;
struct zorn_web_link;
class wxCommandEvent;
class zorn_status_display;
class zorn_status_bar;
class zorn_direction_buttons;
class zorn_hint_buttons;
class zorn_fkey_manager;
class zorn_group_display;
struct layout_result;
class zorn_automap_display;
class zorn_automap_frame;

// How far the player is; says nothing of the socket.
enum : int {
    session_none = 0,
    session_creating = 1,
    session_logged_in = 2,
    session_logging_off = 3,
};

// Menu ids of the popup windows: one check item each, consecutive from the first.
enum : int {
    zorn_popup_menu_first_id = 94,
    zorn_popup_menu_items = 16,
    zorn_popup_menu_empty_id = 110,
    zorn_popup_menu_reset_id = 111,
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

// The icon every zorn_frame takes; none until stored. The bundle form gives the window manager
// every size at once.
void zorn_set_frame_icon(const wxIcon& icon);
void zorn_set_frame_icons(const wxIconBundle& icons);

class zorn_mw : public zorn_frame,
               public zorn_frame_link,
               public zorn_stream_sink,
               public zorn_config_listener,
               public zorn_popup_host {
public:
    zorn_mw(wxWindow* parent, wxWindowID id, const wxString& title, const wxPoint& pos, const wxSize& size,
            long style);
    ~zorn_mw() override;

    // zorn_frame_link (the keys of the command line; input_link.cpp)
    void process_user_command(const char* text, int echo) override;
    bool transfer_focus_main(wxWindow* window) override;
    void unlock_main_scrollback() override;
    bool main_is_following() override;
    void lock_main_scrollback() override;
    void main_scroll_up(int lines) override;
    void main_scroll_down(int lines) override;
    void main_page_up() override;
    void main_page_down() override;
    bool main_has_selection() override;
    void main_clear_selection() override;
    void open_main_find() override;
    bool function_key(const wxKeyEvent& event) override;
    int current_session_state() override { return session_state; }
    bool channel_is_following() override;
    void unlock_channel_scrollback() override;
    void channel_clear_selection() override;
    // Ctrl and a digit: popup window 1 to 10, while logged in.
    void toggle_popup(int number) override;

    // zorn_popup_host: the "&Popups" menu and the screen.
    void add_popup_menu_item(zorn_popup_button* button) override;
    void check_popup_menu_item(zorn_popup_button* button, bool checked) override;
    void reset_popup_menu() override;
    int screen_width() override;
    int screen_height() override;
    void popup_display_destroyed(zorn_ansi_display* display) override;
    void clipboard_set_text(const char* text) override;
    bool clipboard_get_text(std::string* text) override;

    // ---- The game connection (session.cpp) ----
    // Port 0 or below means the configured port.
    void socket_connect(int port);
    void socket_disconnect(const char* reason);
    // The pump of each tick: the first connect, then read all that waits, then write once.
    void socket_handler();
    void process_socket_data(const unsigned char* bytes, int length);
    void send_line(const char* text) override;
    void append_outgoing_string(const char* text);
    void enter_password_mode();
    void leave_password_mode();
    bool echo_allowed() const;
    void select_history_list(int list);

    // ---- The game server's identity (server_pin.cpp) ----
    // After the TLS handshake: true when the connect may go on (the key is the pinned one, or the
    // first one and now pinned). False holds the connection silent and asks the player.
    bool check_server_identity(int port);
    // The player's answers: the new key is pinned and the connect goes on, or the connection ends.
    void trust_server_identity();
    void refuse_server_identity();
    // //fingerprint
    void print_fingerprint();

    // ---- Tags (tags.cpp) ----
    void process_tagged_data(const char* name, const char* payload, int length);
    void send_client_status();
    // The lag meter's send step: "lnping" while logged in.
    void send_ping();
    // The status display's tags: "hp", "enemyhp" (and the enemy half of "ncombat"), "xpp".
    void set_hit_points(const char* payload);
    void set_enemy(const char* payload);
    void set_experience(const char* payload);

    // ---- Client commands (commands.cpp) ----
    void config_cmd_process(const char* text);
    void send_break() override;
    void send_abort() override;

    void begin_message() override;
    void print_message(const char* text) override;
    void refresh_text() override;
    // Text printed as a client message at the next tick.
    void queue_message(const char* text);

    void layout_panels() override;

    // ---- The automap (automap_frame.cpp) ----
    // Stores the setting, shows or hides the panel (and its frame when floating), lays out.
    void set_automap_display(int value) override;
    // "Docked Map": turns the map on if needed, flips the docking, re-parents, lays out.
    void toggle_automap_docked();
    void reparent_automap();
    void automap_smaller() override;
    void automap_larger() override;
    // After a change of the main font's glyphs: everything measured with it is laid out again.
    void refresh_main_font() override;
    // After a change of the button and status fonts.
    void refresh_button_font() override;
    void refresh_themes(bool force);
    void update_background(bool force);
    // The group display lives in the main frame in layouts 1 and 2 (mode 1), on the text in layout 0
    // (mode 2).
    void reparent_group_display();

    // Stores at most 1023 bytes of the URL; the next tick opens it.
    void open_url(const char* url);
    // Opens at once; on failure queues the apology with the URL and answers false.
    bool open_browser(const char* url);
    // Starts the exit countdown; every exit the user asks for comes here.
    void system_shutdown_handler();
    // The close box and every exit the player asks for: asks first while a character is in play.
    void verify_program_exit();
    void verify_disconnect();
    void menu_file_save_and_quit();
    // Centred on the frame; a dialog showing already is shown again there.
    void show_dialog_centered(wxDialog* dialog);

    // zorn_stream_sink: what the stream parser hands on.
    void begin_block() override;
    void text_run(const char* bytes, int length) override;
    void tagged_data(const char* name, const char* payload, int length) override;
    void beep() override;
    void end_block() override;

    // A "Font Colors" choice: stores the setting, makes the palette current for text that follows
    // and says so in the main display.
    void choose_font_colors(int font_colors_setting);

    // zorn_config_listener (settings_link.cpp): what a setting does to the window.
    bool is_logged_in() override;
    void sync_menu_item(zorn_setting key, int value) override;
    void sync_audio_menu_item(int value) override;
    void mark_client_status_dirty() override;
    void layout_and_refresh() override;
    void relayout_scrollbar() override;
    void switch_layout() override;
    void apply_theme(zorn_theme_part part) override;
    void show_status_bar(bool show) override;
    void show_sky_bar(bool show) override;
    void set_status_display_flag(zorn_setting key, int value) override;
    void show_status_display(bool show) override;
    void hide_group_display() override;
    void set_channel_window_enable(int value) override;
    void set_automap_scale(int automap_size) override;
    void enable_automap_size_items(bool enable) override;
    void update_automap_visibility() override;
    void apply_fonts(const char* main_description, int main_size, const char* button_description,
                     int button_size) override;
    bool start_audio() override;
    void stop_audio() override;

    // The link rectangle of the web link, as the last paint placed it.
    struct rect {
        int x = 0, y = 0, width = 0, height = 0;
    };

    int shutdown_countdown;
    zorn_tcp_socket socket;
    int client_status_dirty;
    zorn_stream_parser parser;
    zorn_outgoing_buffer outgoing;
    zorn_main_window* main_display;
    // Where plain server text goes: main_display unless diverted into a popup window.
    zorn_ansi_display* text_target;
    int saved_scroll_position;
    zorn_input_window* input_window;
    zorn_popup_manager* popup_manager;
    zorn_channel_window* channel_window;
    wxMenu* popups_menu;
    zorn_newbie_quit_dialog* newbie_quit_dialog;
    zorn_save_quit_dialog* save_quit_dialog;
    zorn_pgm_exit_dialog* pgm_exit_dialog;
    zorn_newbie_disconnect_dialog* newbie_disconnect_dialog;
    zorn_disconnect_dialog* disconnect_dialog;
    // Items in the "&Popups" menu.
    int popup_count;
    zorn_status_display* status_display;
    zorn_status_bar* status_bar;
    zorn_direction_buttons* direction_buttons;
    zorn_hint_buttons* hint_buttons;
    zorn_fkey_manager* fkey_manager;
    zorn_group_display* group_display;
    zorn_automap_display* automap;
    zorn_automap_frame* automap_frame;
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
    // The automatic first connect is done; the socket has been seen connected.
    int first_pass_done;
    int connection_seen;
    // The last lag sample in milliseconds, -1 before the first.
    int last_ping_ms;
    // A changed server key waiting for the player's answer: nothing is read or sent meanwhile.
    struct identity_question {
        bool pending = false;
        std::string host;
        int port = 0;
        zorn_key_fingerprint seen{};
    } server_identity;
    zorn_pin_dialog* pin_dialog = nullptr;  // made at the first question

private:
    void connect_display_hooks();
    void place_button_sets(const layout_result& placed);
    void create_automap();
    bool automap_tag(const char* name, const char* payload, int length);
    void tag_dirs(const char* payload);
    void place_automap(bool placed, int x, int y, int width, int height);
    void run_client_command(const client_command_match& match);
    void echo_line(const char* text);
    void print_command_list();
    void print_keyboard_list();
    void print_version();
    void print_debug_status();
    void debug_level_command(const char* argument);
    void debug_file_command(const char* argument);
    void print_highlight(const char* text);
    // The identification line, first of all the client sends, and the history of a connection.
    void send_identity();
    void tag_login(const char* payload, int length);
    void tag_event(const char* payload);
    void divert_text(const char* name, bool clear);
    void undivert_text();
    void unappend_text();
    void build_menu_bar();
    void menu_handler(wxCommandEvent& event);
    void save_logfile_dialog();
    void settings_menu_item(int id);
    void open_web_link(const zorn_web_link& link);
    void in_game_help(const char* command);
    void change_main_font_size(int delta);
    void choose_font(bool button_font);
    void set_automap_cell_size(int size);
    void popup_menu_handler(wxCommandEvent& event);
    void reset_positions_handler(wxCommandEvent& event);

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
