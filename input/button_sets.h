#pragma once
// The three button sets round the text, each a transparent window whose buttons are children of
// the main frame: the direction block, which lights the room's exits; the hint column, whose
// labels and commands the server sets; and the function key row, which shows the player's own
// aliases "f01" to "f08". The decisions behind them live in button_model.h.

#include <string>

#include "base/fixed_string.h"
#include "input/button_model.h"
#include "input/buttons.h"
#include "input/transparent_window.h"

class zorn_direction_buttons : public zorn_transparent_window {
public:
    explicit zorn_direction_buttons(wxWindow* parent_window);
    ~zorn_direction_buttons() override;

    // Labels and commands of the table, all disabled; "Out" lit, the others dim.
    void setup();
    void enable_all();
    void disable_all();
    // Each button bright when its exit bit is set; "Out" stays lit.
    void set_exits(int mask);

    // 1 lays the block out first; then all are shown or hidden.
    void set_visible(int value) override;
    void layout() override;
    void change_theme() override;

    // By table row (button_model.cpp): NW N NE W Out E SW S SE Up Down.
    zorn_command_button* buttons[direction_button_count];
};

class zorn_hint_buttons : public zorn_transparent_window {
public:
    explicit zorn_hint_buttons(wxWindow* parent_window);
    ~zorn_hint_buttons() override;

    // Tags "b1" to "b12": label, then command behind the first line feed.
    void setup_button(const char* tag, const char* payload);
    // "bclear": every button emptied, the column laid out again.
    void clear_all();
    // While disconnected: "Connect" first and "Quit" last.
    void set_connect_quit();
    void flash_all();

    void set_visible(int value) override;
    // Only while visible: buttons in use stand in a column, unused numbers leave gaps.
    void layout() override;
    void change_theme() override;

    zorn_command_button* buttons[hint_button_count];
};

// A function key button: its key name always, and the player's alias for it on two lines while
// logged in. A click while logged in sends the alias without echo.
class zorn_fkey_button : public zorn_image_button {
public:
    zorn_fkey_button(wxWindow* parent, int number);

    // Label (cut at 400 bytes), enabled and active; lays the label out and renders.
    void setup(const char* new_label, int new_enabled, int flag);
    // The same with no label.
    void clear_button();
    void set_active(int value);
    void render_images() override;

    char label[zorn_label_limit + 1];
    char alias[8];  // "f01" to "f08"
    int active;
    int enabled;
    int number;
    zorn_fixed_string key_text;  // "F1" to "F8"
    zorn_fixed_string line_1;
    zorn_fixed_string line_2;

private:
    void click_handler(wxCommandEvent& event);

    wxDECLARE_EVENT_TABLE();
};

class zorn_fkey_manager : public zorn_transparent_window {
public:
    explicit zorn_fkey_manager(wxWindow* parent_window);
    ~zorn_fkey_manager() override;

    // Tags "bf1" to "bf12".
    void setup_button(const char* tag, const char* payload);
    void clear_all();
    // 1 at login, 0 at disconnect.
    void set_all_active(int value);

    void set_visible(int value) override;
    void layout() override;
    void change_theme() override;

    zorn_fkey_button* buttons[fkey_button_count];  // F1 to F8
};
