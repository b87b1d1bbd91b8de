#pragma once
// The automap's panel: a title row with the area's name (or "Combat!"), a border that can flash,
// and the map window under it. One panel lives for the program's life and moves between the main
// frame and its own floating frame by re-parenting, so nothing of the map is lost on the way.
// It stays on the animation list from construction on: the list holds the panel, not the frame,
// so a slide goes on through every change of parent.

#include "base/fixed_string.h"
#include "input/embedded_window.h"

class zorn_automap_renderer;

// Heights of the title row and the separator under it.
constexpr int automap_title_height = 20;
constexpr int automap_renderer_top = 22;
// The docked panel's inset on the main text: it stands twice this from the top right corner.
constexpr int automap_text_inset = 1;

class zorn_automap_display : public zorn_embedded_window {
public:
    zorn_automap_display(wxWindow* parent, wxWindowID id = wxID_ANY, const wxString& name = wxT("main automap"));

    // The cell size through the renderer, then the panel's size from its view.
    void set_scale(int size);
    void zoom_in();
    void zoom_out();
    void flash();
    // End of a session: no combat, no area name, an empty map.
    void reset();
    void set_area_name(const char* name);
    void set_combat(bool on);
    void set_exits_mask(int mask);
    int get_width() const { return GetSize().GetWidth(); }
    int get_height() const { return GetSize().GetHeight(); }

    void resize_handler(bool size_changed) override;
    void repaint_internal(zorn_bitmap& bitmap) override;
    bool animation_callback(int elapsed_ms) override;

    zorn_automap_renderer* renderer;
    zorn_fixed_string area_name;
    int in_combat;

private:
    void apply_scale();
};
