#include "input/embedded_window.h"

#include <wx/dcclient.h>

#include <algorithm>

#include "config/debug_log.h"

namespace {

zorn_embedded_window* animation_head = nullptr;

}  // namespace

wxBEGIN_EVENT_TABLE(zorn_embedded_window, wxWindow)
    EVT_PAINT(zorn_embedded_window::paint_handler)
    EVT_ERASE_BACKGROUND(zorn_embedded_window::erase_handler)
    EVT_SIZE(zorn_embedded_window::size_handler)
wxEND_EVENT_TABLE()

zorn_embedded_window::zorn_embedded_window(wxWindow* parent, wxWindowID id, const wxPoint& pos, const wxSize& size,
                                           long style, const wxString& name)
    : wxWindow(parent, id, pos, size, style, name),
      backing_bitmap(nullptr),
      anim_next(nullptr),
      anim_shown(0),
      anim_count(0),
      anim_elapsed(0),
      anim_period(zorn_default_anim_period) {
    // The paint handler covers every pixel; no toolkit background under it.
    SetBackgroundStyle(wxBG_STYLE_PAINT);
    const wxSize actual = GetSize();
    backing_bitmap = new zorn_bitmap(std::max(actual.GetWidth(), 1), std::max(actual.GetHeight(), 1));
}

zorn_embedded_window::~zorn_embedded_window() {
    animation_remove(this);
    delete backing_bitmap;
    backing_bitmap = nullptr;
}

bool zorn_embedded_window::animation_callback(int) {
    if (zorn_debug_level >= 1)
        zorn_client_debug_printf(
            "Error in zorn_embedded_window::animation_callback(), this handler should never be called.\n");
    return false;
}

// A new backing bitmap when the size differs from the window's or the bitmap's; true then.
bool zorn_embedded_window::resize_backing(int width, int height) {
    const wxSize present = GetSize();
    const bool changed = width != present.GetWidth() || height != present.GetHeight() || !backing_bitmap ||
                         backing_bitmap->GetWidth() != width || backing_bitmap->GetHeight() != height;
    if (changed) {
        delete backing_bitmap;
        backing_bitmap = new zorn_bitmap(width, height);
    }
    return changed;
}

void zorn_embedded_window::set_size(int x, int y, int width, int height) {
    width = std::max(width, 1);
    height = std::max(height, 1);
    const bool changed = resize_backing(width, height);
    SetSize(x, y, width, height, wxSIZE_AUTO);
    resize_handler(changed);
}

void zorn_embedded_window::set_size(int width, int height) {
    width = std::max(width, 1);
    height = std::max(height, 1);
    const bool changed = resize_backing(width, height);
    SetSize(-1, -1, width, height, 0);
    resize_handler(changed);
}

void zorn_embedded_window::force_resize() { resize_handler(true); }

bool zorn_embedded_window::standard_animation_step(int elapsed_ms) {
    anim_elapsed += elapsed_ms;
    if (anim_elapsed >= anim_period) {
        anim_elapsed = anim_period > elapsed_ms ? anim_elapsed - anim_period : 0;
        anim_count--;
    }
    if (anim_shown != anim_count) {
        anim_shown = anim_count;
        Refresh(false);
    }
    return anim_count > 0;
}

void zorn_embedded_window::start_animation(int count, int period_ms) {
    anim_shown = 0;
    anim_count = count;
    anim_elapsed = 0;
    anim_period = period_ms;
    animation_add(this);
}

void zorn_embedded_window::start_flash() {
    start_animation(zorn_flash_count, zorn_default_anim_period);
    Refresh(false);
}

void zorn_embedded_window::paint_handler(wxPaintEvent&) {
    wxPaintDC dc(this);
    if (!IsShown() || !backing_bitmap) return;
    repaint_internal(*backing_bitmap);
    dc.DrawBitmap(*backing_bitmap, 0, 0, false);
}

void zorn_embedded_window::erase_handler(wxEraseEvent&) {}

// Sizes change through set_size only; the toolkit's own size events carry nothing for us.
void zorn_embedded_window::size_handler(wxSizeEvent&) {}

void animation_add(zorn_embedded_window* window) {
    if (!window || animation_contains(window)) return;
    window->anim_next = animation_head;
    animation_head = window;
}

void animation_remove(zorn_embedded_window* window) {
    if (!window) return;
    for (zorn_embedded_window** link = &animation_head; *link; link = &(*link)->anim_next) {
        if (*link == window) {
            *link = window->anim_next;
            window->anim_next = nullptr;
            return;
        }
    }
}

// The next window is remembered before each callback, so a callback may take itself out. A
// window that leaves is unlinked by animation_remove, which also copes with a callback that
// removed a neighbour.
void animation_run(int elapsed_ms) {
    zorn_embedded_window* window = animation_head;
    while (window) {
        zorn_embedded_window* next = window->anim_next;
        if (!window->animation_callback(elapsed_ms)) animation_remove(window);
        window = next;
    }
}

bool animation_contains(const zorn_embedded_window* window) {
    for (const zorn_embedded_window* w = animation_head; w; w = w->anim_next)
        if (w == window) return true;
    return false;
}

int animation_length() {
    int count = 0;
    for (const zorn_embedded_window* w = animation_head; w; w = w->anim_next) count++;
    return count;
}
