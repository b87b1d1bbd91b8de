#include "panels/sky_bar.h"

namespace {

struct body_colours {
    zorn_rgb outer, inner;
};
constexpr body_colours sun_clear{{255, 255, 0}, {255, 255, 255}};
constexpr body_colours sun_dim{{208, 208, 208}, {224, 224, 224}};
constexpr body_colours moon_clear{{192, 192, 192}, {255, 255, 255}};
constexpr body_colours moon_dim{{128, 128, 128}, {192, 192, 192}};

void draw_body(zorn_bitmap& b, int x, int cy, int r, const body_colours& colours) {
    b.DrawFilledCircle(x, cy, r + 1, colours.outer);
    b.DrawFilledCircle(x, cy, r, colours.inner);
}

}  // namespace

zorn_sky_bar::zorn_sky_bar(wxWindow* parent, wxWindowID id)
    : zorn_embedded_window(parent, id, wxDefaultPosition, wxSize(20, 20), wxBORDER_NONE, wxT("sky bar")),
      repaints(0) {
    make_stars(stars, zorn_star_count);
    SetToolTip(wxT("The current view of the sky is displayed here."));
}

void zorn_sky_bar::set_sky_state(int outdoors_flag, int visible, int overcast_flag, int terrain_value, int minute) {
    const zorn_sky_fields wanted{outdoors_flag, visible, overcast_flag, terrain_value, minute};
    const wxString tip = wxString::FromUTF8(sky_tooltip(wanted));
    if (!GetToolTip() || GetToolTipText() != tip) SetToolTip(tip);
    zorn_sky_fields& mine = *this;
    // The terrain isn't drawn: a new one alone is no reason to paint.
    const bool differs = mine.outdoors != wanted.outdoors || mine.sky_visible != wanted.sky_visible ||
                         mine.overcast != wanted.overcast || mine.current_minute != wanted.current_minute;
    mine = wanted;
    if (differs) Refresh(false);
}

void zorn_sky_bar::resize_handler(bool size_changed) {
    if (size_changed) Refresh(false);
}

void zorn_sky_bar::repaint_internal(zorn_bitmap& b) {
    repaints++;
    const int w = b.GetWidth(), h = b.GetHeight();
    if (!sky_visible) {
        b.Clear(zorn_black);
        b.DrawLine(0, 0, 0, h - 1, zorn_sky_edge_grey);
        b.DrawLine(w - 1, 0, w - 1, h - 1, zorn_sky_edge_grey);
        return;
    }
    const int offset = sky_offset(current_minute, w);
    const bool dim = sky_dim(*this);
    const int peak = sky_peak(dim);
    const int daylight = sky_daylight(current_minute, peak);
    const zorn_rgb sky = sky_colour(daylight);
    b.Clear(sky);
    draw_glow(b, sky);
    const int shine = dim ? (peak - daylight) / 2 : peak - daylight;
    draw_stars(b, offset, shine, peak, sky);
    draw_sun_and_moon(b, offset, dim);
    b.DrawLine(0, 0, 0, h - 1, zorn_white);
    b.DrawLine(w - 1, 0, w - 1, h - 1, zorn_white);
}

void zorn_sky_bar::draw_glow(zorn_bitmap& b, const zorn_rgb& sky) {
    const int w = b.GetWidth(), h = b.GetHeight();
    int g = 0;
    if (sky_dawn_glow(current_minute, &g)) b.DrawXGradientRectangle(0, 0, w / 8, h, sky_glow_colour(g, sky), sky);
    if (sky_dusk_glow(current_minute, &g))
        b.DrawXGradientRectangle(w - w / 8, 0, w - 1, h, sky, sky_glow_colour(g, sky));
}

// Half the stars fall below the strip; by day they sink into the sky colour.
void zorn_sky_bar::draw_stars(zorn_bitmap& b, int offset, int shine, int peak, const zorn_rgb& sky) {
    const int w = b.GetWidth(), h = b.GetHeight();
    for (const zorn_star& star : stars) {
        const int x = sky_wrapped_x(static_cast<int64_t>(star.x * w * 2), w, offset);
        if (x >= w) continue;
        const int y = static_cast<int>(star.y * h * 2);
        b.SetPixel(x, y, sky_star_colour(star, shine, peak, sky));
    }
}

void zorn_sky_bar::draw_sun_and_moon(zorn_bitmap& b, int offset, bool dim) {
    const int w = b.GetWidth(), h = b.GetHeight();
    const int cy = h / 2, r = h / 5;
    draw_body(b, sky_sun_x(w, offset), cy, r, dim ? sun_dim : sun_clear);
    draw_body(b, sky_moon_x(w, offset), cy, r, dim ? moon_dim : moon_clear);
}
