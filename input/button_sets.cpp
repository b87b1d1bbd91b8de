#include "input/button_sets.h"

#include <wx/event.h>

#include <cstdio>
#include <cstring>

#include "config/debug_log.h"
#include "input/frame_link.h"
#include "theme/font.h"
#include "theme/theme.h"

// ---- zorn_direction_buttons -------------------------------------------------------------------

zorn_direction_buttons::zorn_direction_buttons(wxWindow* parent_window) : zorn_transparent_window(parent_window) {
    for (zorn_command_button*& button : buttons) button = new zorn_command_button(parent_window);
}

// The buttons are children of the parent window, which deletes them.
zorn_direction_buttons::~zorn_direction_buttons() = default;

void zorn_direction_buttons::setup() {
    for (int i = 0; i < direction_button_count; ++i) {
        const direction_button_row& row = direction_button_table[i];
        buttons[i]->setup(row.label, row.command, 0);
        // No room known yet: only "Out" is bright.
        buttons[i]->set_lit(row.exit_bit == 0);
    }
    disable_all();
}

void zorn_direction_buttons::enable_all() {
    for (zorn_command_button* button : buttons) button->set_enabled(1);
}

void zorn_direction_buttons::disable_all() {
    for (zorn_command_button* button : buttons) button->set_enabled(0);
}

void zorn_direction_buttons::set_exits(int mask) {
    for (int i = 0; i < direction_button_count; ++i) {
        const int bit = direction_button_table[i].exit_bit;
        const int lit = bit == 0 || (mask & bit) != 0;
        if (buttons[i]->lit != lit) buttons[i]->set_lit(lit);
    }
}

void zorn_direction_buttons::set_visible(int value) {
    if (value == 1) layout();
    for (zorn_command_button* button : buttons) button->Show(value != 0);
}

void zorn_direction_buttons::layout() {
    for (int i = 0; i < direction_button_count; ++i) {
        const direction_button_row& row = direction_button_table[i];
        buttons[i]->set_size(x + row.x, y + row.y, row.width, row.height);
    }
}

void zorn_direction_buttons::change_theme() {
    for (zorn_command_button* button : buttons) button->render_images();
}

// ---- zorn_hint_buttons ------------------------------------------------------------------------

zorn_hint_buttons::zorn_hint_buttons(wxWindow* parent_window) : zorn_transparent_window(parent_window) {
    for (zorn_command_button*& button : buttons) {
        button = new zorn_command_button(parent_window);
        button->Show(false);
    }
}

zorn_hint_buttons::~zorn_hint_buttons() = default;

void zorn_hint_buttons::setup_button(const char* tag, const char* payload) {
    const hint_tag parsed = parse_hint_tag(tag);
    if (parsed.bogus) {
        if (zorn_debug_level >= 2)
            zorn_client_debug_printf(
                "Warning in zorn_hint_buttons::setup_button(), requested button number %d is bogus.  Ignoring.\n",
                parsed.number);
        return;
    }
    // A tooltip announcement: the client shows no tooltips for these.
    if (parsed.tooltip) return;
    zorn_command_button* button = buttons[parsed.number - 1];
    const hint_payload split = split_hint_payload(payload);
    if (split.has_command) {
        button->setup(split.label.c_str(), split.command.c_str(), 1);
        button->set_lit(1);
    } else {
        button->clear();
        button->set_lit(0);
    }
    if (visible) layout();
}

void zorn_hint_buttons::clear_all() {
    for (zorn_command_button* button : buttons) button->clear();
    layout();
}

void zorn_hint_buttons::set_connect_quit() {
    buttons[0]->setup("Connect", "connect", 1);
    buttons[0]->set_lit(1);
    buttons[hint_button_count - 1]->setup("Quit", "quit", 1);
    buttons[hint_button_count - 1]->set_lit(1);
    layout();
}

void zorn_hint_buttons::flash_all() {
    for (zorn_command_button* button : buttons) button->flash_button();
}

void zorn_hint_buttons::set_visible(int value) {
    if (value == 1) {
        layout();
        return;
    }
    for (zorn_command_button* button : buttons) button->Show(value != 0);
}

void zorn_hint_buttons::layout() {
    if (!visible) return;
    std::vector<bool> shown(hint_button_count);
    for (int i = 0; i < hint_button_count; ++i) shown[i] = buttons[i]->button_state != zorn_button_disabled;
    const std::vector<int> top = hint_column_positions(shown, y);
    for (int i = 0; i < hint_button_count; ++i) {
        if (!shown[i]) {
            buttons[i]->Show(false);
            continue;
        }
        buttons[i]->set_size(x, top[i], hint_button_width, hint_button_height);
        buttons[i]->Show(true);
        buttons[i]->Refresh(false);
    }
}

void zorn_hint_buttons::change_theme() {
    for (zorn_command_button* button : buttons) button->render_images();
}
