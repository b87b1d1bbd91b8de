#pragma once
// Popup windows: small floating frames, each with a text display, that the server defines at run
// time ("window_create") and fills by diverting text into them. A square button in the popup row
// toggles each one, and the frame's "&Popups" menu lists them. The client tells the server when a
// window opens and closes, and keeps each window's place and size in the character's settings.
// Main thread only.

#include <wx/frame.h>

#include "display/ansi_display.h"
#include "input/buttons.h"
#include "input/transparent_window.h"
#include "panels/popup_payload.h"

class wxCloseEvent;
class wxEraseEvent;
class wxPaintEvent;
class wxSizeEvent;
class zorn_font;
class zorn_popup_button;
class zorn_popup_window;

// What the popups need of the main frame beyond the frame link: its "&Popups" menu, the screen's
// size as read at start, and word of a display that goes away while text may be led to it.
class zorn_popup_host {
public:
    virtual ~zorn_popup_host() = default;
    virtual void add_popup_menu_item(zorn_popup_button* button) = 0;
    virtual void check_popup_menu_item(zorn_popup_button* button, bool checked) = 0;
    // Back to the single "Not Connected" entry.
    virtual void reset_popup_menu() = 0;
    virtual int screen_width() = 0;
    virtual int screen_height() = 0;
    virtual void popup_display_destroyed(zorn_ansi_display* display) = 0;
};

class zorn_popup_window : public wxFrame {
public:
    zorn_popup_window(wxWindow* parent, const char* name, const char* title);
    ~zorn_popup_window() override;

    // Client size for that many characters of the main font (each at least 1).
    void set_size_in_characters(int columns, int rows);
    void set_command(const char* text);
    // Sends the command, with no echo, when it isn't empty.
    void run_command();
    // A window shown from the icon is restored first.
    bool Show(bool show = true) override;

    zorn_ansi_display* display;
    zorn_popup_button* controller = nullptr;
    char command[zorn_popup_command_limit + 1];

private:
    void close_handler(wxCloseEvent& event);
    void size_handler(wxSizeEvent& event);
    void paint_handler(wxPaintEvent& event);
    void erase_handler(wxEraseEvent& event);
    void place_display();

    wxDECLARE_EVENT_TABLE();
};

class zorn_popup_button : public zorn_button {
public:
    // The button owns the window from here on and destroys it with itself.
    zorn_popup_button(wxWindow* parent, zorn_popup_window* target, const char* name, zorn_popup_host* host);
    ~zorn_popup_button() override;

    // Opens the window (telling the server first) or closes it.
    void toggle_state();
    void close_window();
    // The window is going away.
    void unlink_window(zorn_popup_window* target);
    const char* name() const { return label; }

    zorn_popup_window* window;
    zorn_popup_button* next = nullptr;
    int menu_id = -1;  // its "&Popups" item, -1 without one

private:
    void click_handler(wxCommandEvent& event);

    zorn_popup_host* host;

    wxDECLARE_EVENT_TABLE();
};

class zorn_popup_manager : public zorn_transparent_window {
public:
    zorn_popup_manager(wxWindow* parent_window, zorn_popup_host* menu_host);
    ~zorn_popup_manager() override;

    // "window_create".
    void create_window(const char* payload);
    zorn_popup_window* find_window(const char* name) const;
    zorn_ansi_display* find_display(const char* name) const;
    // The window numbered 1 (the newest with a button) onward, through the menu-only ones; null
    // for a number that has no window.
    zorn_popup_button* button_at(int index) const;
    void save_window_positions();
    void destroy_all();
    void reset_window_positions();
    void change_font(zorn_font* font);
    void flash_buttons();

    void set_visible(int value) override;
    void layout() override;
    void change_theme() override;

    zorn_popup_button* buttons = nullptr;            // newest first
    zorn_popup_button* menu_only_buttons = nullptr;  // newest first

private:
    zorn_popup_host* host;
};
