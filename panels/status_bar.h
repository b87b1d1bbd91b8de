#pragma once
// The status bar under the command line: five condition icons, the sky bar, the ping time, the
// game clock and the scroll-lock padlock. A click on the padlock lets the main text follow again.

#include "panels/sky_bar.h"
#include "panels/status_display.h"

inline constexpr zorn_rgb zorn_clock_colour_live{192, 192, 192};
inline constexpr zorn_rgb zorn_clock_colour_reset{191, 191, 191};
// Icon i stands at (2 + 18 i, 2).
constexpr int zorn_icon_step = 18;

class zorn_status_bar : public zorn_status_display_base, public zorn_ping_meter, public zorn_status_bar_layout {
public:
    explicit zorn_status_bar(wxWindow* parent, wxWindowID id = wxID_ANY, const wxString& name = wxT("main status bar"));

    void set_icons(const char* payload);
    // Parses "skystate"; on success the clock text and colour change and the sky follows.
    void update_sky_display(const char* payload);
    // Stores the sample and repaints.
    void add_ping_sample(int milliseconds);

    void resize_handler(bool size_changed) override;
    void repaint_internal(zorn_bitmap& bitmap) override;
    // Clears ping, clock and icons, hides the bar; the sky bar follows the setting sky_bar.
    void reset() override;

    zorn_fixed_string clock_text;
    zorn_rgb clock_colour;
    int icon_on[zorn_icon_count];
    zorn_sky_bar* sky_bar;

private:
    bool scrollback_locked() const;
    const char* tooltip_at(int x, int y) const;
    void mouse_handler(wxMouseEvent& event);

    wxDECLARE_EVENT_TABLE();
};
