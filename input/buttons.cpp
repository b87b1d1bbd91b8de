#include "input/buttons.h"

#include <wx/event.h>

#include <algorithm>
#include <cstring>

#include "audio/audio_objects.h"
#include "input/frame_link.h"
#include "theme/font.h"
#include "theme/theme.h"

void (*zorn_button_click_sound)() = zorn_play_noise_tick;

namespace {

zorn_frame_link* frame_link = nullptr;

void copy_cut(char* dest, const char* src) {
    if (!src) {
        dest[0] = '\0';
        return;
    }
    std::strncpy(dest, src, zorn_label_limit);
    dest[zorn_label_limit] = '\0';
}

zorn_rgb bevel_dark(const zorn_rgb& c) { return zorn_rgb(c.red / 2, c.green / 2, c.blue / 2); }

zorn_rgb bevel_light(const zorn_rgb& c) {
    return zorn_rgb(std::min((3 * c.red + 96) / 2, 255), std::min((3 * c.green + 96) / 2, 255),
                    std::min((3 * c.blue + 96) / 2, 255));
}

}  // namespace

void zorn_set_frame_link(zorn_frame_link* link) { frame_link = link; }

zorn_frame_link* zorn_get_frame_link() { return frame_link; }

void draw_button_face(zorn_bitmap& bitmap, const zorn_rgb& face, int bevel_style) {
    bitmap.Clear(face);
    if (bevel_style == zorn_bevel_none) return;
    const int w = bitmap.GetWidth(), h = bitmap.GetHeight();
    const zorn_rgb light = bevel_light(face), dark = bevel_dark(face);
    const zorn_rgb& top_left = bevel_style == zorn_bevel_raised ? light : dark;
    const zorn_rgb& bottom_right = bevel_style == zorn_bevel_raised ? dark : light;
    bitmap.DrawLine(0, 1, 0, h - 1, top_left);
    bitmap.DrawLine(1, 1, 1, h - 2, top_left);
    bitmap.DrawLine(1, 0, w - 1, 0, top_left);
    bitmap.DrawLine(1, 1, w - 2, 1, top_left);
    bitmap.DrawLine(w - 1, 1, w - 1, h - 1, bottom_right);
    bitmap.DrawLine(w - 2, 2, w - 2, h - 2, bottom_right);
    bitmap.DrawLine(1, h - 1, w - 1, h - 1, bottom_right);
    bitmap.DrawLine(2, h - 2, w - 2, h - 2, bottom_right);
}

void draw_rounded_edge(zorn_bitmap& bitmap, const zorn_rgb& color, int width, int height) {
    bitmap.DrawLine(0, 0, width - 1, 0, color);
    bitmap.DrawLine(0, height - 1, width - 1, height - 1, color);
    bitmap.DrawLine(0, 0, 0, height - 1, color);
    bitmap.DrawLine(width - 1, 0, width - 1, height - 1, color);
    bitmap.SetPixel(0, 0, zorn_black);
    bitmap.SetPixel(width - 1, 0, zorn_black);
    bitmap.SetPixel(0, height - 1, zorn_black);
    bitmap.SetPixel(width - 1, height - 1, zorn_black);
}

void draw_edges(zorn_bitmap& bitmap, int width, int height, int mask, const zorn_rgb* color) {
    const zorn_rgb& line = color ? *color : zorn_white;
    const zorn_rgb& inner_left = color ? *color : zorn_grey128;
    if (mask & zorn_edge_left) {
        bitmap.DrawLine(0, 0, 0, height - 1, line);
        bitmap.DrawLine(1, 0, 1, height - 1, inner_left);
    }
    if (mask & zorn_edge_right) {
        bitmap.DrawLine(width - 1, 0, width - 1, height - 1, line);
        bitmap.DrawLine(width - 2, 0, width - 2, height - 1, line);
    }
    if (mask & zorn_edge_top) bitmap.DrawLine(0, 0, width - 1, 0, line);
    if (mask & zorn_edge_bottom) bitmap.DrawLine(0, height - 1, width - 1, height - 1, line);
}

int chars_that_fit(const zorn_font* font, const char* text, int width) {
    if (!text || !text[0]) return 0;
    if (!font) return 1;
    int count = 0, total = 0;
    for (const unsigned char* p = (const unsigned char*)text; *p && count < zorn_fit_limit; p++) {
        int char_width = 0;
        font->get_char_size(*p & 0x7f, &char_width, nullptr);
        if (total + char_width > width - 2) break;
        total += char_width;
        count++;
    }
    return std::max(count, 1);
}

wxBEGIN_EVENT_TABLE(zorn_image_button, zorn_embedded_window)
    EVT_MOUSE_EVENTS(zorn_image_button::mouse_handler)
wxEND_EVENT_TABLE()

zorn_image_button::zorn_image_button(wxWindow* parent, wxWindowID id, const wxPoint& pos, const wxSize& size,
                                     long style, const wxString& name)
    : zorn_embedded_window(parent, id, pos, size, style, name),
      has_normal_hover(0),
      has_pressed_hover(0),
      toggle_mode(0),
      button_state(zorn_button_up),
      hover(0) {}

zorn_image_button::~zorn_image_button() = default;

void zorn_image_button::resize_handler(bool size_changed) {
    if (size_changed) render_images();
}

void zorn_image_button::repaint_internal(zorn_bitmap& bitmap) {
    const zorn_bitmap* image = &disabled_image;
    if (button_state == zorn_button_down)
        image = hover && has_pressed_hover ? &pressed_hover_image : &pressed_image;
    else if (button_state == zorn_button_up)
        image = hover && has_normal_hover ? &normal_hover_image : &normal_image;
    bitmap.DrawBitmapIgnoreAlpha(*image, 0, 0);
    if (anim_count > 0)
        draw_rounded_edge(bitmap, (anim_count & 1) ? zorn_white : zorn_black, bitmap.GetWidth(), bitmap.GetHeight());
}

bool zorn_image_button::animation_callback(int elapsed_ms) { return standard_animation_step(elapsed_ms); }

void zorn_image_button::set_normal_image(const zorn_bitmap& bitmap) {
    normal_image.copy_from(bitmap);
    Refresh(false);
}

void zorn_image_button::set_normal_hover_image(const zorn_bitmap& bitmap) {
    normal_hover_image.copy_from(bitmap);
    has_normal_hover = 1;
    Refresh(false);
}

void zorn_image_button::set_pressed_image(const zorn_bitmap& bitmap) {
    pressed_image.copy_from(bitmap);
    Refresh(false);
}

void zorn_image_button::set_pressed_hover_image(const zorn_bitmap& bitmap) {
    pressed_hover_image.copy_from(bitmap);
    has_pressed_hover = 1;
    Refresh(false);
}

void zorn_image_button::set_disabled_image(const zorn_bitmap& bitmap) {
    disabled_image.copy_from(bitmap);
    Refresh(false);
}

void zorn_image_button::set_state(int value) {
    button_state = value;
    Refresh(false);
}

void zorn_image_button::set_enabled(int value) {
    hover = 0;
    button_state = value ? zorn_button_up : zorn_button_disabled;
    Refresh(false);
}

void zorn_image_button::flash_button() { start_flash(); }

bool zorn_image_button::Show(bool show) {
    hover = 0;
    return zorn_embedded_window::Show(show);
}

void zorn_image_button::fire_click() {
    wxCommandEvent click(wxEVT_BUTTON, GetId());
    click.SetEventObject(this);
    GetEventHandler()->ProcessEvent(click);
    if (zorn_button_click_sound) zorn_button_click_sound();
}

// One handler for every mouse event. A double click counts as a press, or quick clicks would be
// lost (the toolkit sends the second press as a double click).
void zorn_image_button::mouse_handler(wxMouseEvent& event) {
    if (button_state == zorn_button_disabled) return;
    const int old_state = button_state, old_hover = hover;
    const wxEventType type = event.GetEventType();
    if (type == wxEVT_LEAVE_WINDOW)
        hover = 0;
    else if (type == wxEVT_ENTER_WINDOW)
        hover = 1;
    bool click = false;
    if (toggle_mode) {
        if (event.ButtonDown() || event.ButtonDClick()) {
            button_state = button_state == zorn_button_down ? zorn_button_up : zorn_button_down;
            click = true;
        }
    } else if (type == wxEVT_LEAVE_WINDOW) {
        button_state = zorn_button_up;
    } else if (type == wxEVT_LEFT_DOWN || type == wxEVT_LEFT_DCLICK) {
        button_state = zorn_button_down;
        click = true;
    } else if (type == wxEVT_LEFT_UP) {
        button_state = zorn_button_up;
    }
    if (click) fire_click();
    if (button_state != old_state || hover != old_hover) Refresh(false);
}

zorn_button::zorn_button(wxWindow* parent, wxWindowID id, const wxPoint& pos, const wxSize& size, long style,
                         const wxString& name)
    : zorn_image_button(parent, id, pos, size, style, name), lit(1) {
    label[0] = '\0';
}

namespace {

struct face_recipe {
    int face;
    int bevel;
    int edge;  // -1: none
    int label;
};

void render_one(zorn_bitmap& scratch, const zorn_button_theme& theme, const face_recipe& recipe, const char* label) {
    const int w = scratch.GetWidth(), h = scratch.GetHeight();
    draw_button_face(scratch, theme.triple[recipe.face], recipe.bevel);
    if (recipe.edge >= 0) draw_rounded_edge(scratch, theme.triple[recipe.edge], w, h);
    zorn_font* font = zorn_status_font();
    const int fit = chars_that_fit(font, label, w);
    if (fit <= 0) return;
    char shown[zorn_fit_limit + 1];
    std::memcpy(shown, label, fit);
    shown[fit] = '\0';
    int text_width = 0, text_height = 0;
    font->measure_text(shown, &text_width, &text_height);
    scratch.DrawTextTransparent(font, shown, std::max((w - text_width) / 2, 0), std::max((h - text_height) / 2, 0),
                                theme.triple[recipe.label]);
}

}  // namespace

// Triples by state: pressed (toggle / momentary), pressed hover, normal (lit / unlit), normal
// hover, disabled.
void zorn_button::render_images() {
    if (!zorn_current_button_theme) return;
    const zorn_button_theme& theme = *zorn_current_button_theme;
    const wxSize size = GetSize();
    zorn_bitmap scratch(std::max(size.GetWidth(), 1), std::max(size.GetHeight(), 1));

    render_one(scratch, theme, toggle_mode ? face_recipe{18, zorn_bevel_sunk, -1, 19} : face_recipe{15, zorn_bevel_sunk, -1, 16},
               label);
    pressed_image.copy_from(scratch);
    render_one(scratch, theme, toggle_mode ? face_recipe{21, zorn_bevel_sunk, 20, 22} : face_recipe{15, zorn_bevel_sunk, 14, 16},
               label);
    pressed_hover_image.copy_from(scratch);
    has_pressed_hover = 1;
    render_one(scratch, theme, lit ? face_recipe{3, zorn_bevel_raised, -1, 4} : face_recipe{9, zorn_bevel_raised, -1, 10},
               label);
    normal_image.copy_from(scratch);
    render_one(scratch, theme, lit ? face_recipe{6, zorn_bevel_raised, 5, 7} : face_recipe{12, zorn_bevel_raised, 11, 13},
               label);
    normal_hover_image.copy_from(scratch);
    has_normal_hover = 1;
    render_one(scratch, theme, face_recipe{24, zorn_bevel_raised, -1, 25}, label);
    disabled_image.copy_from(scratch);
    Refresh(false);
}

void zorn_button::set_label(const char* text) {
    copy_cut(label, text);
    render_images();
}

void zorn_button::set_lit(int value) {
    lit = value;
    render_images();
}

wxBEGIN_EVENT_TABLE(zorn_command_button, zorn_button)
    EVT_BUTTON(wxID_ANY, zorn_command_button::click_handler)
wxEND_EVENT_TABLE()

zorn_command_button::zorn_command_button(wxWindow* parent, wxWindowID id, const wxPoint& pos, const wxSize& size,
                                         long style, const wxString& name)
    : zorn_button(parent, id, pos, size, style, name) {
    command[0] = '\0';
    set_enabled(0);
}

void zorn_command_button::setup(const char* new_label, const char* new_command, int enabled) {
    copy_cut(command, new_command);
    set_label(new_label);
    set_enabled(enabled);
}

void zorn_command_button::clear() { setup("", nullptr, 0); }

void zorn_command_button::click_handler(wxCommandEvent& event) {
    if (event.GetEventObject() != this) {
        event.Skip();
        return;
    }
    zorn_frame_link* link = zorn_get_frame_link();
    if (!link) return;
    if (button_state != zorn_button_disabled) link->process_user_command(command, 1);
    link->transfer_focus_main(this);
    link->unlock_main_scrollback();
}
