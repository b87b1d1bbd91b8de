#include "automap/automap_renderer.h"

#include <wx/rawbmp.h>

#include "automap/automap_painter.h"
#include "config/lconfig.h"
#include "input/frame_link.h"
#include "theme/font.h"

bool zorn_automap_logged_in() {
    zorn_frame_link* link = zorn_get_frame_link();
    return link && link->current_session_state() == 2;
}

wxBEGIN_EVENT_TABLE(zorn_automap_renderer, zorn_embedded_window)
    EVT_MOUSE_EVENTS(zorn_automap_renderer::on_mouse)
wxEND_EVENT_TABLE()

zorn_automap_renderer::zorn_automap_renderer(wxWindow* parent, wxWindowID id)
    : zorn_embedded_window(parent, id, wxDefaultPosition, wxSize(20, 20), wxBORDER_NONE, wxT("automap renderer")),
      view_size(0),
      map_size(0),
      mouse_inside(0),
      hover_direction(0) {
    model.client = this;
    const int setting = LConfig::instance().get_automap_size();
    model.cell_size = (setting < automap_minimum_cell_size ? automap_minimum_cell_size : setting) | 1;
    view_size = automap_view_size(model.cell_size);
    map_size = automap_map_size(model.cell_size);
    map_bitmap.resize(map_size + 1, map_size + 1);
    view.resize(view_size, view_size);
    set_size(view_size, view_size);
}

void zorn_automap_renderer::render_map() {
    model.animating = 0;
    map_bitmap.clear(zorn_rgb());
    if (zorn_automap_logged_in()) automap_render(model, model.cell_size, map_bitmap);
    model.animating = 1;
    Refresh(false);
}

void zorn_automap_renderer::set_cell_size(int size) {
    // The map's picture grows with the square of the size: 23 * 401 pixels square at most.
    if (size > automap_maximum_cell_size) size = automap_maximum_cell_size;
    model.cell_size = (size < automap_minimum_cell_size ? automap_minimum_cell_size : size) | 1;
    resize();
    render_map();
}

void zorn_automap_renderer::resize() {
    view_size = automap_view_size(model.cell_size);
    map_size = automap_map_size(model.cell_size);
    LConfig::instance().set_automap_size(model.cell_size);
    map_bitmap.resize(map_size + 1, map_size + 1);
}

void zorn_automap_renderer::repaint_internal(zorn_bitmap& bitmap) {
    const int width = bitmap.GetWidth(), height = bitmap.GetHeight();
    if (view.width() != width || view.height() != height) view.resize(width, height);
    automap_view_state state;
    state.logged_in = zorn_automap_logged_in();
    state.mouse_inside = mouse_inside != 0;
    state.hover_direction = hover_direction;
    automap_compose_view(model, map_bitmap, state, view);
    {
        wxAlphaPixelData data(bitmap);
        if (!data) return;
        wxAlphaPixelData::Iterator row(data);
        for (int y = 0; y < height; y++) {
            wxAlphaPixelData::Iterator p = row;
            const uint32_t* source = view.row(y);
            for (int x = 0; x < width; x++, ++p) {
                p.Red() = static_cast<unsigned char>(source[x] >> 16);
                p.Green() = static_cast<unsigned char>(source[x] >> 8);
                p.Blue() = static_cast<unsigned char>(source[x]);
                p.Alpha() = 255;
            }
            row.OffsetY(data, 1);
        }
    }
    if (!state.logged_in || model.level_step != 0 || !mouse_inside) return;
    zorn_font* font = zorn_main_font();
    if (!font) return;
    int plain_w = 0, plain_h = 0, wide_w = 0, wide_h = 0;
    font->measure_text("W", &plain_w, &plain_h);
    font->measure_text("NW", &wide_w, &wide_h);
    automap_compass_button buttons[automap_compass_button_count];
    automap_compass_buttons(view_size, buttons);
    for (const automap_compass_button& button : buttons) {
        const automap_button_colors colors =
            automap_button_state_colors((model.exits_mask & button.exit_bit) != 0, hover_direction == button.direction);
        const int half_w = (button.diagonal ? wide_w : plain_w) / 2, half_h = (button.diagonal ? wide_h : plain_h) / 2;
        bitmap.DrawTextTransparent(font, button.label, button.x - half_w, button.y - half_h, colors.text);
    }
}

void zorn_automap_renderer::on_mouse(wxMouseEvent& event) {
    event.Skip();
    if (!zorn_automap_logged_in()) return;
    const int direction = automap_direction_at(event.GetX(), event.GetY(), view_size, model.cell_size);
    bool changed = false;
    if (event.Entering() || (!mouse_inside && !event.Leaving())) {
        mouse_inside = 1;
        changed = true;
    } else if (event.Leaving()) {
        changed = mouse_inside != 0 || hover_direction != 0;
        mouse_inside = 0;
        hover_direction = 0;
        if (changed) Refresh(false);
        return;
    }
    if (event.LeftDown() && direction >= 1 && direction <= 10) {
        if (zorn_frame_link* link = zorn_get_frame_link()) link->process_user_command(automap_direction_word(direction), 1);
    }
    if (direction != hover_direction) changed = true;
    hover_direction = direction;
    if (changed) Refresh(false);
}
