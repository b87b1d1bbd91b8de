#pragma once
// The sky inside the status bar: daylight or night with stars, the sun and the moon sliding
// through two widths a day, and a glow at dawn and dusk. A picture only; it changes only when a
// "skystate" tag brings something new.

#include "input/embedded_window.h"
#include "panels/status_model.h"

inline constexpr zorn_rgb zorn_sky_edge_grey{160, 160, 160};

class zorn_sky_bar : public zorn_embedded_window, public zorn_sky_fields {
public:
    explicit zorn_sky_bar(wxWindow* parent, wxWindowID id = wxID_ANY);

    // Stores, sets the tooltip, and repaints when anything differs.
    void set_sky_state(int outdoors, int sky_visible, int overcast, int terrain, int current_minute);

    void resize_handler(bool size_changed) override;
    void repaint_internal(zorn_bitmap& bitmap) override;

    // Fixed at construction from the client's generator; they last the whole run.
    zorn_star stars[zorn_star_count];
    // Paints drawn so far, for tests and diagnostics.
    int repaints;

private:
    void draw_glow(zorn_bitmap& bitmap, const zorn_rgb& sky);
    void draw_stars(zorn_bitmap& bitmap, int offset, int shine, int peak, const zorn_rgb& sky);
    void draw_sun_and_moon(zorn_bitmap& bitmap, int offset, bool dim);
};
