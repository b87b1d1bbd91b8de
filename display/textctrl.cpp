#include "display/textctrl.h"

#include <wx/event.h>

#include <algorithm>
#include <climits>
#include <string>

#include "base/fixed_string.h"
#include "config/debug_log.h"
#include "display/ansi_display.h"
#include "display/display_hooks.h"
#include "input/frame_link.h"
#include "theme/font.h"

namespace {

constexpr int drag_period_ms = 15;
constexpr int drag_count = 15;
constexpr int flash_period_ms = 15;

}  // namespace

wxBEGIN_EVENT_TABLE(zorn_textctrl, zorn_embedded_window)
    EVT_MOUSE_EVENTS(zorn_textctrl::mouse_handler)
    EVT_MOUSE_CAPTURE_LOST(zorn_textctrl::mouse_event_handler)
    EVT_SET_FOCUS(zorn_textctrl::focus_handler)
wxEND_EVENT_TABLE()

zorn_textctrl::zorn_textctrl(wxWindow* parent, wxWindowID id, const wxPoint& pos, const wxSize& size)
    : zorn_embedded_window(parent, id, pos, size, wxBORDER_NONE, wxT("text control")),
      model(std::max(1, GetSize().GetWidth()), std::max(1, GetSize().GetHeight())) {
    model.view = this;
    set_font(zorn_main_font());
}

void zorn_textctrl::set_font(zorn_font* new_font) {
    font = new_font;
    glyphs.load(font);
    int widths[256] = {};
    int height = 0;
    if (font) {
        for (int code = 32; code <= 126; ++code) font->get_char_size(code, &widths[code], nullptr);
        font->get_char_size('f', nullptr, &height);
        if (zorn_get_display_settings().compact_mode) height -= 1;
    }
    model.set_metrics(widths, height);
    relayout();
}

void zorn_textctrl::relayout() {
    model.relayout();
    Refresh(false);
}

void zorn_textctrl::clear_text() {
    model.clear_text();
    Refresh(false);
}

void zorn_textctrl::resize_handler(bool) {
    const wxSize size = GetSize();
    // A re-wrap walks the whole scrollback: only a change of width pays for it.
    model.resize(size.GetWidth(), size.GetHeight());
    Refresh(false);
}

// Painting ----------------------------------------------------------------------------------------

void zorn_textctrl::repaint_internal(zorn_bitmap& bitmap) {
    zorn_pixel_painter painter(bitmap);
    if (!painter.ok()) {
        if (zorn_debug_level >= 2) zorn_client_debug_printf("Error in zorn_bitmap::Clear(), pixel data failed?\n");
        return;
    }
    painter.clear(model.background_color);
    const int line_height = model.font_height;
    if (line_height < 1) {
        if (zorn_debug_level >= 2)
            zorn_client_debug_printf("Error in zorn_textctrl::repaint_internal(), font height %d.\n", line_height);
        return;
    }
    auto guard = model.lock();
    const int window_height = painter.height();
    if (model.top_anchored) {
        for (int line = model.scroll_line, y = 0; line <= model.current_line && y < window_height; ++line, y += line_height)
            paint_line(painter, line, y);
    } else {
        // The lowest line sits on the bottom edge; the one above the last full line is cut by the top.
        for (int line = model.scroll_line, y = window_height - 1 - line_height; line >= 0 && y > -line_height;
             --line, y -= line_height)
            paint_line(painter, line, y);
        if (const int lines = split_lines()) paint_live_end(painter, lines);
    }
}

int zorn_textctrl::split_lines() const {
    if (!split_allowed || model.top_anchored || !model.frozen || model.scroll_line >= model.current_line) return 0;
    const int visible = model.get_visible_line_count();
    if (visible < 3 || !zorn_get_display_settings().split_view) return 0;
    return visible / 3;
}

// The live end over the lower third: the newest lines on the bottom edge, below a divider, as a
// following view would show them. The scrolled-back view above keeps its place.
void zorn_textctrl::paint_live_end(zorn_pixel_painter& painter, int lines) {
    const int line_height = model.font_height;
    const int bottom = painter.height() - 1;
    const int top = bottom - lines * line_height;
    const int right = painter.width() - 1;
    painter.fill_rectangle(0, top, right, bottom, model.background_color);
    painter.fill_rectangle(0, top - split_divider_height, right, top - 1, split_divider_color);
    for (int i = 0, line = model.current_line; i < lines && line >= 0; ++i, --line)
        paint_line(painter, line, bottom - (i + 1) * line_height);
}

void zorn_textctrl::collect_hits(int line) {
    line_hits.clear();
    if (!search || !search->active()) return;
    search->for_each_hit_in(model.line_stream_start(line), model.line_stream_end(line),
                            [&](int from, int to, bool current) { line_hits.push_back({from, to, current}); });
}

// Offsets inside [selected_from, selected_to) are drawn opaque on the selection background, those
// of a search hit on the hit's background, the rest transparent; a chunk that holds a boundary is
// drawn in pieces so that x runs on unbroken. The selection wins over a hit.
void zorn_textctrl::paint_line(zorn_pixel_painter& painter, int line, int y) {
    if (!model.line_exists(line)) return;
    int selected_from = 0, selected_to = 0;
    if (model.selection_active && line >= model.selection_start_line && line <= model.selection_end_line) {
        selected_from = line == model.selection_start_line ? model.selection_start_offset : 0;
        selected_to = line == model.selection_end_line ? model.selection_end_offset + 1 : INT_MAX;
    }
    collect_hits(line);
    size_t hit = 0;
    int x = 1;
    int offset = 0;
    const int right = painter.width();
    model.for_each_piece(line, [&](const char* text, int length, uint32_t rgb) {
        const zorn_rgb color = zorn_unpack_rgb(rgb);
        int at = 0;
        while (at < length) {
            const int position = offset + at;
            const bool selected = position >= selected_from && position < selected_to;
            int boundary = selected ? selected_to : (position < selected_from ? selected_from : INT_MAX);
            const zorn_rgb* background = selected ? &selection_background : nullptr;
            while (hit < line_hits.size() && line_hits[hit].to <= position) ++hit;
            if (hit < line_hits.size()) {
                const hit_range& range = line_hits[hit];
                if (range.from > position) {
                    boundary = std::min(boundary, range.from);
                } else {
                    boundary = std::min(boundary, range.to);
                    if (!selected) background = range.current ? &search_current_background : &search_hit_background;
                }
            }
            const int run = static_cast<int>(std::min<long long>(length - at, static_cast<long long>(boundary) - position));
            x = painter.draw_text(glyphs, text + at, run, x, y, color, background);
            at += run;
        }
        offset += length;
        return x < right;
    });
}

// Mouse ---------------------------------------------------------------------------------------------

void zorn_textctrl::move_cursor_to(int x, int y) {
    model.translate_xy_to_line_and_offset(x, y, &model.cursor_line, &model.cursor_offset);
}

void zorn_textctrl::mouse_handler(wxMouseEvent& event) {
    // Any mouse event stops a running drag-scroll; only further motion past the edge restarts it.
    drag_scroll_speed = 0;
    const wxEventType type = event.GetEventType();
    const int rotation = event.GetWheelRotation();
    const bool any_button = event.LeftIsDown() || event.MiddleIsDown() || event.RightIsDown();
    if (!any_button && rotation == 0 && type != wxEVT_LEFT_UP) return;
    if (url_click_active) {
        // A link click starts no selection: everything up to the release is swallowed.
        if (type == wxEVT_LEFT_UP) url_click_active = 0;
        return;
    }
    if (rotation != 0) {
        if (owner) {
            owner->lock_scrollback();
            if (rotation > 0)
                owner->scroll_up(3);
            else
                owner->scroll_down(3);
        }
        return;
    }
    if (event.MiddleIsDown() || event.RightIsDown()) {
        if (owner) owner->unlock_scrollback();
        return;
    }
    int x = event.GetX(), y = event.GetY();
    const int window_height = model.window_height();
    if (x < 0) {
        // Dragging out over the left edge reaches the end of the line above.
        x = model.window_width();
        y += model.font_height;
    }
    int line = 0, offset = 0;
    // Below the divider of a split view lie the newest lines, not those of the scrolled-back view.
    const int live = split_lines();
    const bool in_live_end = live > 0 && y >= window_height - 1 - live * model.font_height;
    model.translate_xy_to_line_and_offset(x, y, &line, &offset, in_live_end ? model.current_line : -1);
    if (type == wxEVT_LEFT_DOWN) {
        if (url_clicked_on(line, offset)) return;
        model.selecting = 1;
        model.selection_active = 0;
        model.anchor_line = model.cursor_line = line;
        model.anchor_offset = model.cursor_offset = offset;
        Refresh(false);
        if (!HasCapture()) CaptureMouse();
    } else if (type == wxEVT_MOTION) {
        model.cursor_line = line;
        model.cursor_offset = offset;
        if (y < 0) {
            drag_scroll_speed = y * model.font_height * 2 / window_height;
            start_drag_timer();
            move_cursor_to(0, 0);
        } else if (y >= window_height) {
            drag_scroll_speed = (y - window_height) * model.font_height * 2 / window_height;
            start_drag_timer();
            move_cursor_to(0, 2 * window_height);
        } else if ((model.anchor_line != model.cursor_line || model.anchor_offset != model.cursor_offset) && owner) {
            owner->lock_scrollback();  // a selection in progress freezes the view
        }
    } else if (type == wxEVT_LEFT_UP && model.selecting) {
        model.selecting = 0;
        model.cursor_line = line;
        model.cursor_offset = offset;
        if (HasCapture()) ReleaseMouse();
    }
    const bool moved = model.anchor_line != model.cursor_line || model.anchor_offset != model.cursor_offset;
    // A plain click selects nothing and leaves the clipboard alone.
    if (!moved && !model.selection_active) return;
    if (moved) model.selection_active = 1;
    model.normalise_selection();
    copy_selection_to_clipboard();
    Refresh(false);
}

void zorn_textctrl::mouse_event_handler(wxMouseCaptureLostEvent&) {
    if (zorn_debug_level >= 2) zorn_client_debug_printf("zorn_textctrl::mouse_event_handler()\n");
    if (!model.selection_active) return;
    model.normalise_selection();
    copy_selection_to_clipboard();
    Refresh(false);
    model.selecting = 0;
    model.selection_active = 0;
}

void zorn_textctrl::focus_handler(wxFocusEvent& event) {
    zorn_frame_link* frame = zorn_get_frame_link();
    if (!frame || !frame->transfer_focus_main(this)) event.Skip();
}

void zorn_textctrl::start_drag_timer() {
    if (anim_count == 0) {
        start_animation(drag_count, drag_period_ms);
    } else if (anim_count < drag_count) {
        anim_shown = 0;
        anim_count = drag_count;
        anim_elapsed = 0;
        anim_period = drag_period_ms;
    }
}

void zorn_textctrl::copy_selection_to_clipboard() {
    std::string text;
    if (!model.selection_text(&text)) return;
    zorn_get_display_hooks().set_clipboard_data(text.c_str());
}

bool zorn_textctrl::url_clicked_on(int line, int offset) {
    if (!zorn_get_display_settings().url_hotlinking) return false;
    zorn_fixed_string url;
    int first = 0, last = 0;
    if (!model.url_at(line, offset, &url, &first, &last)) return false;
    zorn_get_display_hooks().open_url(url.c_str());
    model.select_range(line, first, last);
    copy_selection_to_clipboard();
    Refresh(false);
    url_click_active = 1;
    return true;
}

// Animation: colour flashes and drag-scrolling share the window's one animation counter -------------

void zorn_textctrl::parse_colorflash(const char* payload) {
    const int ticks = flash_list.parse(payload);
    if (ticks <= 0) return;
    model.background_color = flash_list.step(model.base_background_color);
    if (anim_count == 0) {
        start_animation(ticks, flash_period_ms);
    } else if (anim_count < ticks) {
        anim_shown = 0;
        anim_count = ticks;
        anim_elapsed = 0;
        anim_period = flash_period_ms;
    }
    if (anim_shown != anim_count) Refresh(false);
}

bool zorn_textctrl::animation_callback(int elapsed_ms) {
    anim_elapsed += elapsed_ms;
    if (anim_elapsed >= anim_period) {
        anim_elapsed = anim_period > elapsed_ms ? anim_elapsed - anim_period : 0;
        --anim_count;
    }
    bool acted = false;
    if (!flash_list.empty()) {
        model.background_color = flash_list.step(model.base_background_color);
        acted = true;
    }
    // A drag past the edge scrolls every fourth tick, by a step that grows with the distance.
    if (drag_scroll_speed != 0 && anim_count % 4 == 1) {
        if (anim_count < 4) {
            anim_shown = 0;
            anim_count = 4;
            anim_elapsed = 0;
            anim_period = drag_period_ms;
        }
        if (owner) {
            owner->lock_scrollback();
            if (drag_scroll_speed < 0) {
                owner->scroll_up(-drag_scroll_speed);
                move_cursor_to(0, 0);
            } else {
                owner->scroll_down(drag_scroll_speed);
                move_cursor_to(0, 4 * model.window_height());
            }
            model.normalise_selection();
            copy_selection_to_clipboard();
            Refresh(false);
        }
        acted = true;
    }
    if (acted && anim_shown != anim_count) {
        anim_shown = anim_count;
        Refresh(false);
    }
    return anim_count > 0;
}
