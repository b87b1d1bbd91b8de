#pragma once
// The map window: holds the automap model, draws each map once into an off-screen picture and
// each frame as one copy of it at the slide's offset, with the player's marker and, while the
// mouse is inside, a compass of ten walking buttons. A click walks through the frame's command
// path with echo on, whether or not the exit exists: the server answers it.

#include "automap/automap_canvas.h"
#include "automap/automap_model.h"
#include "input/embedded_window.h"

class wxMouseEvent;

class zorn_automap_renderer : public zorn_embedded_window, public automap_model_client {
public:
    explicit zorn_automap_renderer(wxWindow* parent, wxWindowID id = wxID_ANY);

    void queue_socket_data(const char* payload, int length) { model.queue_socket_data(payload, length); }
    void display_socket_data(const char* payload) { model.display_socket_data(payload); }
    void walk_failed(const char* payload) { model.walk_failed(payload); }
    void reset_map() { model.reset_map(); }
    void animate_step() { model.animate_step(); }

    // automap_model_client
    void render_map() override;
    void mark_repaint() override { Refresh(false); }

    // Odd sizes only: an even one goes up by 1. 5 to 401 (the setting's largest, made odd).
    void set_cell_size(int size);
    void zoom_in() { set_cell_size(model.cell_size + 2); }
    void zoom_out() { set_cell_size(model.cell_size - 2 < automap_minimum_cell_size ? automap_minimum_cell_size : model.cell_size - 2); }
    // New view and map sizes for the cell size, stored as the automap_size setting; a black map.
    void resize();

    void resize_handler(bool) override {}
    void repaint_internal(zorn_bitmap& bitmap) override;
    void on_mouse(wxMouseEvent& event);

    automap_model model;
    int view_size;
    int map_size;
    automap_canvas map_bitmap;  // map_size + 1 square
    int mouse_inside;
    int hover_direction;

private:
    automap_canvas view;  // the frame being composed

    wxDECLARE_EVENT_TABLE();
};

// Whether the frame says the player is logged in; false with no frame.
bool zorn_automap_logged_in();
