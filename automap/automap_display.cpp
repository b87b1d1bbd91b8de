#include "automap/automap_display.h"

#include "automap/automap_renderer.h"
#include "theme/font.h"
#include "theme/theme.h"

zorn_automap_display::zorn_automap_display(wxWindow* parent, wxWindowID id, const wxString& name)
    : zorn_embedded_window(parent, id, wxDefaultPosition, wxSize(20, 20), wxBORDER_NONE, name),
      renderer(nullptr),
      in_combat(0) {
    renderer = new zorn_automap_renderer(this);
    apply_scale();
    animation_add(this);
}

void zorn_automap_display::apply_scale() {
    const int v = renderer->view_size;
    set_size(v + 2, v + 23);
    renderer->set_size(1, automap_renderer_top, v, v);
    Refresh(false);
}

void zorn_automap_display::set_scale(int size) {
    renderer->set_cell_size(size);
    apply_scale();
}

void zorn_automap_display::zoom_in() {
    renderer->zoom_in();
    apply_scale();
}

void zorn_automap_display::zoom_out() {
    renderer->zoom_out();
    apply_scale();
}

void zorn_automap_display::flash() {
    start_animation(zorn_flash_count, zorn_default_anim_period);
}

void zorn_automap_display::reset() {
    in_combat = 0;
    area_name.clear();
    renderer->reset_map();
    Refresh(false);
}

void zorn_automap_display::set_area_name(const char* name) {
    area_name.set(name ? name : "");
    Refresh(false);
}

void zorn_automap_display::set_combat(bool on) {
    in_combat = on ? 1 : 0;
    Refresh(false);
}

void zorn_automap_display::set_exits_mask(int mask) {
    renderer->model.exits_mask = mask;
    renderer->Refresh(false);
}

void zorn_automap_display::resize_handler(bool) {}

void zorn_automap_display::repaint_internal(zorn_bitmap& bitmap) {
    const int w = bitmap.GetWidth(), h = bitmap.GetHeight();
    bitmap.DrawFilledRectangle(1, 1, w - 2, automap_title_height, zorn_black);
    zorn_font* font = zorn_status_font();
    int tw = 0, th = 0;
    bitmap.MeasureText(font, "Combat!", &tw, &th);
    const int y = (automap_title_height - th) / 2 + 1;
    int x = w / 2 - tw / 2;
    if (x < 5) x = 5;
    if (!zorn_automap_logged_in())
        bitmap.DrawTextTransparent(font, "  Map  ", x, y, zorn_white);
    else if (in_combat)
        bitmap.DrawTextTransparent(font, "Combat!", x, y, zorn_rgb(255, 128, 128));
    else
        bitmap.DrawTextTransparent(font, area_name.c_str(), 4, y, zorn_white);
    zorn_rgb border = zorn_current_button_theme ? zorn_current_button_theme->triple[zorn_triple_frame_outer] : zorn_grey128;
    if (anim_count > 0) border = (anim_count & 1) ? zorn_white : zorn_black;
    bitmap.DrawLine(0, 0, w - 1, 0, border);
    bitmap.DrawLine(0, 0, 0, h - 1, border);
    bitmap.DrawLine(0, h - 1, w - 1, h - 1, border);
    bitmap.DrawLine(w - 1, 0, w - 1, h - 1, border);
    bitmap.DrawLine(0, automap_title_height + 1, w - 1, automap_title_height + 1, border);
    for (const int cx : {0, w - 1})
        for (const int cy : {0, h - 1}) bitmap.SetPixel(cx, cy, zorn_black);
}

// The slide runs from here, so it goes on wherever the panel lives; the border flash counts down
// beside it.
bool zorn_automap_display::animation_callback(int elapsed_ms) {
    renderer->animate_step();
    if (anim_shown != anim_count) {
        anim_shown = anim_count;
        Refresh(false);
    }
    if (anim_count > 0) {
        anim_elapsed += elapsed_ms;
        if (anim_elapsed >= anim_period) {
            anim_elapsed = anim_period > elapsed_ms ? anim_elapsed - anim_period : 0;
            anim_count--;
        }
    }
    return true;
}
