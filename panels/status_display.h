#pragma once
// The two strips under the text: the status display with its gauges for hit points, mana,
// movement, experience and the enemy, and (status_bar.h) the status bar. Both draw themselves in
// full into the backing bitmap, and repaint only when what they show changed: the tags that feed
// them come with every prompt, mostly unchanged.

#include <wx/string.h>

#include "input/embedded_window.h"
#include "panels/status_model.h"

// Sides of border_mask.
enum : int {
    zorn_border_left = 1,
    zorn_border_top = 2,
    zorn_border_right = 4,
    zorn_border_bottom = 8,
    zorn_border_all = 15,
};

class zorn_status_display_base : public zorn_embedded_window {
public:
    zorn_status_display_base(wxWindow* parent, wxWindowID id, const wxString& name);

    // The end of a session: back to the values of a new one, and hidden.
    virtual void reset() = 0;
    // The border flash: one step per period, a repaint when the phase shown changes.
    bool animation_callback(int elapsed_ms) override;

    int border_mask;
    // Paints drawn so far (repaint_internal calls), for tests and diagnostics.
    int repaints;

protected:
    // The theme's panel frame on the sides of border_mask; white or black while flashing.
    void draw_border(zorn_bitmap& bitmap);
    // Sets the tooltip, or removes it for null; nothing when it is already that.
    void show_tooltip(const char* text);

private:
    wxString tooltip_shown;
};

class zorn_status_display : public zorn_status_display_base,
                            public zorn_status_numbers,
                            public zorn_status_display_layout {
public:
    explicit zorn_status_display(wxWindow* parent, wxWindowID id = wxID_ANY,
                                 const wxString& name = wxT("main status display"));

    void resize_handler(bool size_changed) override;
    void repaint_internal(zorn_bitmap& bitmap) override;
    void reset() override;

    // The tags' halves on the display: store, and repaint on a difference.
    void store_hit_points(const char* payload);
    zorn_enemy_update store_enemy(const char* payload);
    // exp_display: the setting, without which a change of experience isn't drawn.
    void store_experience(const char* payload, bool exp_display);
    // The copies of hpbar_enable, exp_display and enemy_hpbar_enable. A change lays out again.
    void set_flags(int hp_bars, int exp_bar, int enemy_bar);

    int show_hp_bars;
    int show_exp_bar;
    int show_enemy_bar;

private:
    void draw_texts(zorn_bitmap& bitmap);
    void draw_gauges(zorn_bitmap& bitmap);
    void draw_experience_bar(zorn_bitmap& bitmap);
    const char* tooltip_at(int x, int y) const;
    void motion_handler(wxMouseEvent& event);

    wxDECLARE_EVENT_TABLE();
};

// Width of a text in the status font, and the font's text height: what the layouts measure.
int zorn_status_text_width(const char* text);
int zorn_status_text_height();

// A gauge: frame lines at both ends and across the middle, and a fill from the left with bright
// top and bottom rows.
void zorn_draw_gauge(zorn_bitmap& bitmap, int x, int y, int width, int height, int fill, const zorn_rgb& dark,
                     const zorn_rgb& bright);
