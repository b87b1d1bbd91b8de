// The function key row: eight buttons that mirror F1 to F8 and show the player's aliases.
#include <wx/event.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "config/debug_log.h"
#include "input/button_sets.h"
#include "input/frame_link.h"
#include "theme/font.h"
#include "theme/theme.h"

namespace {

constexpr int logged_in_state = 2;

struct fkey_recipe {
    int face;
    int bevel;
    int edge;   // -1: none
    int label;  // -1: no label, also while active
};

}  // namespace

wxBEGIN_EVENT_TABLE(zorn_fkey_button, zorn_image_button)
    EVT_BUTTON(wxID_ANY, zorn_fkey_button::click_handler)
wxEND_EVENT_TABLE()

zorn_fkey_button::zorn_fkey_button(wxWindow* parent, int button_number)
    : zorn_image_button(parent), active(0), enabled(1), number(button_number) {
    label[0] = '\0';
    std::snprintf(alias, sizeof alias, "f%02d", number);
    key_text.appendf("F%d", number);
}

void zorn_fkey_button::setup(const char* new_label, int new_enabled, int flag) {
    std::strncpy(label, new_label ? new_label : "", zorn_label_limit);
    label[zorn_label_limit] = '\0';
    std::snprintf(alias, sizeof alias, "f%02d", number);
    key_text.set("");
    key_text.appendf("F%d", number);
    enabled = new_enabled;
    active = flag;
    render_images();
    set_enabled(enabled);
}

void zorn_fkey_button::clear_button() { setup("", enabled, active); }

void zorn_fkey_button::set_active(int value) {
    if (active == value) return;
    active = value;
    render_images();
}

// The label is laid out again with each rendering, since what fits depends on the button's size
// and the font, which change together with the pictures.
void zorn_fkey_button::render_images() {
    zorn_font* status_font = zorn_status_font();
    const int width = std::max(GetSize().GetWidth(), 1), height = std::max(GetSize().GetHeight(), 1);
    std::string first, second;
    fkey_label_split(label, [&](const char* text) { return chars_that_fit(status_font, text, width); }, &first, &second);
    line_1.set(first.c_str());
    line_2.set(second.c_str());
    if (!zorn_current_button_theme) return;
    const zorn_button_theme& theme = *zorn_current_button_theme;

    zorn_font* key_font = zorn_button_font();
    int key_width = 0, key_height = 0, line_width = 0, line_height = 0;
    key_font->measure_text(key_text.c_str(), &key_width, &key_height);
    status_font->measure_text(line_1.c_str(), &line_width, &line_height);
    zorn_bitmap scratch(width, height);
    const auto render = [&](const fkey_recipe& recipe, zorn_bitmap& image) {
        draw_button_face(scratch, theme.triple[recipe.face], recipe.bevel);
        if (recipe.edge >= 0) draw_rounded_edge(scratch, theme.triple[recipe.edge], width, height);
        scratch.DrawTextTransparent(key_font, key_text.c_str(), 2, 2, zorn_white);
        if (active && recipe.label >= 0) {
            scratch.DrawTextTransparent(status_font, line_1.c_str(), 2, key_height + 1, theme.triple[recipe.label]);
            scratch.DrawTextTransparent(status_font, line_2.c_str(), 2, key_height + line_height,
                                        theme.triple[recipe.label]);
        }
        image.copy_from(scratch);
    };
    render({zorn_triple_pressed_face, zorn_bevel_sunk, zorn_triple_pressed_hover_edge, zorn_triple_pressed_label},
           pressed_image);
    render({zorn_triple_pressed_face, zorn_bevel_sunk, zorn_triple_pressed_hover_edge, zorn_triple_pressed_label},
           pressed_hover_image);
    has_pressed_hover = 1;
    if (active) {
        render({zorn_triple_lit_face, zorn_bevel_raised, -1, zorn_triple_lit_label}, normal_image);
        render({zorn_triple_lit_hover_face, zorn_bevel_raised, zorn_triple_lit_hover_edge, zorn_triple_lit_hover_label},
               normal_hover_image);
    } else {
        render({zorn_triple_disabled_face, zorn_bevel_raised, -1, -1}, normal_image);
        render({zorn_triple_unlit_hover_face, zorn_bevel_raised, zorn_triple_unlit_hover_edge, -1}, normal_hover_image);
    }
    has_normal_hover = 1;
    render({zorn_triple_disabled_face, zorn_bevel_raised, -1, zorn_triple_disabled_label}, disabled_image);
    Refresh(false);
}

// Only a logged-in character has aliases to run; every click hands the keyboard back.
void zorn_fkey_button::click_handler(wxCommandEvent& event) {
    if (event.GetEventObject() != this) {
        event.Skip();
        return;
    }
    zorn_frame_link* link = zorn_get_frame_link();
    if (!link) return;
    if (link->current_session_state() == logged_in_state) link->process_user_command(alias, 0);
    link->transfer_focus_main(this);
    link->unlock_main_scrollback();
}

// ---- zorn_fkey_manager ------------------------------------------------------------------------

zorn_fkey_manager::zorn_fkey_manager(wxWindow* parent_window) : zorn_transparent_window(parent_window) {
    for (int i = 0; i < fkey_button_count; ++i) buttons[i] = new zorn_fkey_button(parent_window, i + 1);
}

zorn_fkey_manager::~zorn_fkey_manager() = default;

void zorn_fkey_manager::setup_button(const char* tag, const char* payload) {
    int number = 0;
    switch (classify_fkey_tag(tag, &number)) {
        case fkey_tag_action::ignore: return;  // F9 to F12 have no buttons
        case fkey_tag_action::bogus:
            if (zorn_debug_level >= 2)
                zorn_client_debug_printf(
                    "Warning in zorn_fkey_manager::setup_button(), requested button number %d is bogus.  Ignoring.\n",
                    number);
            return;
        case fkey_tag_action::setup: break;
    }
    const std::string label = fkey_payload_label(payload);
    if (label.empty())
        buttons[number - 1]->clear_button();
    else
        buttons[number - 1]->setup(label.c_str(), 1, 1);
}

void zorn_fkey_manager::clear_all() {
    for (zorn_fkey_button* button : buttons) button->clear_button();
}

void zorn_fkey_manager::set_all_active(int value) {
    for (zorn_fkey_button* button : buttons) button->set_active(value);
}

void zorn_fkey_manager::set_visible(int value) {
    if (value == 1) layout();
    for (zorn_fkey_button* button : buttons) button->Show(value != 0);
}

void zorn_fkey_manager::layout() {
    const int side = fkey_button_side(height);
    for (int i = 0; i < fkey_button_count; ++i) buttons[i]->set_size(fkey_button_x(x, side, i), y + 3, side, side);
}

void zorn_fkey_manager::change_theme() {
    for (zorn_fkey_button* button : buttons) button->render_images();
}
