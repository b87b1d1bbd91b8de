#include "display/ansi_display.h"

#include <wx/event.h>

#include <algorithm>
#include <cstdio>

#include "display/display_hooks.h"
#include "display/find_strip.h"
#include "display/glyph_painter.h"
#include "input/frame_link.h"
#include "theme/font.h"

wxBEGIN_EVENT_TABLE(zorn_ansi_display, zorn_embedded_window)
    EVT_MOUSEWHEEL(zorn_ansi_display::wheel_handler)
    EVT_SCROLL(zorn_ansi_display::scroll_event_handler)
    EVT_SET_FOCUS(zorn_ansi_display::focus_handler)
wxEND_EVENT_TABLE()

zorn_ansi_scrollbar::zorn_ansi_scrollbar(wxWindow* parent, wxWindowID id)
    : wxScrollBar(parent, id, wxDefaultPosition, wxDefaultSize, wxSB_VERTICAL, wxDefaultValidator, wxT("scrollBar")) {}

zorn_ansi_display::zorn_ansi_display(wxWindow* parent, wxWindowID id, const wxString& name)
    : zorn_embedded_window(parent, id, wxDefaultPosition, wxSize(20, 20), wxBORDER_NONE, name),
      textctrl(new zorn_textctrl(this, id)),
      scrollbar(new zorn_ansi_scrollbar(this, id)),
      ansi(&textctrl->model, this),
      scrollbar_width(std::max(1, scrollbar->GetBestSize().GetWidth())) {
    textctrl->owner = this;
    scrollbar->Bind(wxEVT_SET_FOCUS, &zorn_ansi_display::focus_handler, this);
    resize_handler(true);
}

void zorn_ansi_display::refresh_text() {
    if (find_strip) find_strip->text_arrived();
    textctrl->Refresh(false);
    update_scrollbar();
}

// The value is set twice, one below first, so that the toolkit always takes it as a change.
void zorn_ansi_display::update_scrollbar() {
    int position = 0, range = 0, page = 0;
    textctrl->get_scroll_info(&position, &range, &page);
    scrollbar->SetScrollbar(position - 1, page, range, page, true);
    scrollbar->SetScrollbar(position, page, range, page, true);
}

int zorn_ansi_display::get_scroll_position() const { return scrollbar->GetThumbPosition(); }

void zorn_ansi_display::enable_scrollbar(int value) {
    if (value == scrollbar_enabled) return;
    scrollbar_enabled = value;
    resize_handler(true);
}

int zorn_ansi_display::get_scrollbar_width() const { return scrollbar_enabled ? scrollbar_width : 0; }

void zorn_ansi_display::set_display_font(zorn_font* font) {
    textctrl->set_font(font);
    ansi.shown_attributes = -1;
    ansi.process_ansi_color();
    update_scrollbar();
    repaint_display();
}

void zorn_ansi_display::set_word_wrap(int value) {
    ansi.set_word_wrap(value);
    textctrl->Refresh(false);
}

void zorn_ansi_display::flash_border() {
    start_animation(zorn_flash_count, zorn_default_anim_period);
    Refresh(false);
}

bool zorn_ansi_display::animation_callback(int elapsed_ms) {
    anim_elapsed += elapsed_ms;
    if (anim_elapsed >= anim_period) {
        anim_elapsed = anim_period > elapsed_ms ? anim_elapsed - anim_period : 0;
        --anim_count;
    }
    if (anim_shown != anim_count) {
        anim_shown = anim_count;
        Refresh(false);
        update_scrollbar();
    }
    return anim_count > 0;
}

void zorn_ansi_display::debug_fill() {
    ansi.debug_fill();
    std::printf("size of zorn_textctrl_chunk %5d\n", static_cast<int>(sizeof(zorn_textctrl_chunk)));
    std::printf("size of zorn_textctrl_line  %5d\n", static_cast<int>(sizeof(zorn_textctrl_line)));
    std::printf("size of wxString            %5d\n", static_cast<int>(sizeof(wxString)));
    std::printf("size of zorn_render_list    %5d\n", static_cast<int>(zorn_render_record_bytes));
    std::printf("entries in render list   %8d\n", static_cast<int>(ansi.render_record_count()));
    std::fflush(stdout);
}

void zorn_ansi_display::repaint_display() {
    Refresh(false);
    textctrl->Refresh(false);
}

void zorn_ansi_display::lock_changed() { zorn_get_display_hooks().repaint_status_bar(); }

void zorn_ansi_display::resize_handler(bool) {
    const wxSize size = GetSize();
    const int width = size.GetWidth(), height = size.GetHeight();
    scrollbar->SetSize(width - scrollbar_width, 0, std::max(scrollbar_width, 1), std::max(height, 1));
    // A resize always ends the lock.
    if (!ansi.following) ansi.unlock_scrollback();
    scrollbar->Show(scrollbar_enabled != 0);
    layout_foot();
}

void zorn_ansi_display::layout_foot() {
    const wxSize size = GetSize();
    const int margin = draw_frame ? 2 : 0;
    const int width = std::max(1, size.GetWidth() - 2 * margin - get_scrollbar_width());
    const int foot = find_strip && find_strip->IsShown() ? find_strip->strip_height() : 0;
    const int text_height = std::max(1, size.GetHeight() - 2 * margin - foot);
    textctrl->set_size(margin, margin, width, text_height);
    if (foot) find_strip->SetSize(margin, margin + text_height, width, foot);
    update_scrollbar();
}

void zorn_ansi_display::frame_colors(zorn_rgb* outer, zorn_rgb* inner) const {
    if (anim_count > 0) {
        *outer = *inner = (anim_count & 1) ? zorn_rgb(255, 255, 255) : zorn_rgb(0, 0, 0);
    } else if (!ansi.following) {
        *outer = zorn_rgb(255, 0, 0);
        *inner = zorn_rgb(192, 0, 0);
    } else {
        *outer = zorn_rgb(255, 255, 255);
        *inner = zorn_rgb(128, 128, 128);
    }
}

// The frame runs round the text area, that is the window less the scrollbar.
void zorn_ansi_display::repaint_internal(zorn_bitmap& bitmap) {
    if (!draw_frame) return;
    zorn_pixel_painter painter(bitmap);
    if (!painter.ok()) return;
    zorn_rgb outer, inner;
    frame_colors(&outer, &inner);
    const int right = painter.width() - get_scrollbar_width() - 1;
    const int bottom = painter.height() - 1;
    for (int inset = 0; inset < 2; ++inset) {
        const zorn_rgb& color = inset == 0 ? outer : inner;
        painter.fill_rectangle(inset, inset, right - inset, inset, color);
        painter.fill_rectangle(inset, bottom - inset, right - inset, bottom - inset, color);
        painter.fill_rectangle(inset, inset, inset, bottom - inset, color);
        painter.fill_rectangle(right - inset, inset, right - inset, bottom - inset, color);
    }
}

void zorn_ansi_display::wheel_handler(wxMouseEvent& event) {
    const int rotation = event.GetWheelRotation();
    if (rotation == 0) return;
    lock_scrollback();
    if (rotation < 0)
        scroll_down(3);
    else
        scroll_up(3);
}

void zorn_ansi_display::scroll_event_handler(wxScrollEvent&) {
    ansi.scroll_thumb_moved(scrollbar->GetThumbPosition());
    zorn_frame_link* frame = zorn_get_frame_link();
    if (!frame || !frame->transfer_focus_main(this)) SetFocus();
}

void zorn_ansi_display::focus_handler(wxFocusEvent& event) {
    zorn_frame_link* frame = zorn_get_frame_link();
    if (!frame || !frame->transfer_focus_main(this)) event.Skip();
}

// zorn_main_window -------------------------------------------------------------------------------------

zorn_main_window::zorn_main_window(wxWindow* parent, wxWindowID id)
    : zorn_ansi_display(parent, id, wxT("main window")) {
    textctrl->split_allowed = 1;
    find_strip = new zorn_find_strip(this);
}

void zorn_main_window::resize_handler(bool force) {
    const zorn_display_settings settings = zorn_get_display_settings();
    if (scrollbar_enabled != settings.mw_scrollbar_enable || force) {
        scrollbar_enabled = settings.mw_scrollbar_enable;
        zorn_ansi_display::resize_handler(force);
    }
    const int text_width = textctrl->GetSize().GetWidth();
    int place_width = text_width / 5;
    int x = text_width - 10 - place_width;
    int y = 10;
    if (automap_widget) {
        const wxSize automap_size = automap_widget->GetSize();
        y = 2 * (automap_inset ? automap_inset() : 0);
        x = text_width - automap_size.GetWidth() - y;
        place_width = automap_size.GetWidth();
        if (automap_widget->GetParent() == textctrl) {
            automap_widget->set_size(x, y, std::max(1, automap_size.GetWidth()), std::max(1, automap_size.GetHeight()));
            const bool shown = zorn_get_display_hooks().session_logged_in() && settings.automap_display;
            automap_widget->Show(shown);
            if (shown) y += automap_size.GetHeight() + 10;
        }
    }
    if (group_widget && group_widget->GetParent() == textctrl) {
        const int needed = group_needed_height ? group_needed_height() : 1;
        group_widget->set_size(x, y, std::max(1, place_width), std::max(1, needed));
        if (!settings.group_status_display || !(group_has_members && group_has_members())) group_widget->Show(false);
    }
}
