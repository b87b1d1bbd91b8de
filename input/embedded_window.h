#pragma once
// Base of all own widgets: a wxWindow that draws itself completely into a backing zorn_bitmap
// (repaint_internal) which its paint handler copies to the screen. Nothing else draws to the
// screen, so every update is a full redraw and there is no flicker. Sizes change only through
// set_size; wx size events are swallowed.
//
// The animation list: one process-wide list of windows whose animation_callback runs on each
// 20 ms tick of the main frame. Every flash and blink in the client rests on it. Main thread only.

#include <wx/window.h>

#include "theme/bitmap.h"

class wxPaintEvent;
class wxEraseEvent;
class wxSizeEvent;

// Default animation period, milliseconds.
constexpr int zorn_default_anim_period = 200;
// The standard flash: 16 periods of 200 ms, odd counts drawn white, even ones black.
constexpr int zorn_flash_count = 16;
// The frame's tick: what animation_run is given each time.
constexpr int zorn_tick_ms = 20;

class zorn_embedded_window : public wxWindow {
public:
    zorn_embedded_window(wxWindow* parent, wxWindowID id, const wxPoint& pos = wxDefaultPosition,
                         const wxSize& size = wxSize(20, 20), long style = wxBORDER_NONE,
                         const wxString& name = wxT("embedded window"));
    // Leaves the animation list if still in it.
    ~zorn_embedded_window() override;

    // Runs after every set_size; size_changed is true when width or height differ.
    virtual void resize_handler(bool size_changed) = 0;
    // Draws the whole window into the bitmap (the backing bitmap, of the window's size).
    virtual void repaint_internal(zorn_bitmap& bitmap) = 0;
    // Called by animation_run; answers whether the window stays in the animation list. The base
    // logs an error and answers false.
    virtual bool animation_callback(int elapsed_ms);
    // Both sizes at least 1; a changed size replaces the backing bitmap. Calls resize_handler.
    virtual void set_size(int x, int y, int width, int height);
    // The same at position -1, -1 with flags 0.
    virtual void set_size(int width, int height);
    // resize_handler(true).
    virtual void force_resize();

    // The standard animation step of buttons and the input window: advance the period clock, take
    // one off anim_count per period, Refresh when the count shown is stale. Answers anim_count > 0.
    bool standard_animation_step(int elapsed_ms);
    // anim_shown 0, anim_count count, anim_elapsed 0, anim_period period_ms, join the list (a
    // window already in it stays where it is). No repaint.
    void start_animation(int count, int period_ms);
    // The 16-phase flash of 200 ms: start_animation and a repaint. Restarts a running flash.
    void start_flash();

    zorn_bitmap* backing_bitmap;       // owned; the window's size, at least 1 by 1
    zorn_embedded_window* anim_next;   // link of the animation list
    int anim_shown;                    // last anim_count that was repainted
    int anim_count;                    // periods still to run
    int anim_elapsed;                  // milliseconds into the period
    int anim_period;                   // length of a period in milliseconds

private:
    bool resize_backing(int width, int height);
    void paint_handler(wxPaintEvent& event);
    void erase_handler(wxEraseEvent& event);
    void size_handler(wxSizeEvent& event);

    wxDECLARE_EVENT_TABLE();
};

// Puts the window at the head of the list unless it is in it already.
void animation_add(zorn_embedded_window* window);
void animation_remove(zorn_embedded_window* window);
// Calls animation_callback(elapsed_ms) on each window of the list; a window that answers false
// leaves it. Safe against callbacks that remove themselves or add others.
void animation_run(int elapsed_ms);
// Whether the window is in the list, and how many are (for tests and diagnostics).
bool animation_contains(const zorn_embedded_window* window);
int animation_length();
