#include "input/input_window.h"

#include <wx/event.h>

#include <algorithm>

#include "input/buttons.h"

wxBEGIN_EVENT_TABLE(zorn_input_window, zorn_embedded_window)
    EVT_SET_FOCUS(zorn_input_window::focus_handler)
wxEND_EVENT_TABLE()

zorn_input_window::zorn_input_window(wxWindow* parent, wxWindowID id, const wxPoint& pos, const wxSize& size,
                                     long style, const wxString& name)
    : zorn_embedded_window(parent, id, pos, size, style, name),
      line_edit(this, wxID_ANY, wxPoint(2, 1), wxSize(std::max(size.GetWidth() - 4, 1), std::max(size.GetHeight() - 2, 1)),
                name + wxT(" input window")) {}

void zorn_input_window::resize_handler(bool) {
    const wxSize size = GetSize();
    line_edit.SetSize(2, 1, std::max(size.GetWidth() - 4, 1), std::max(size.GetHeight() - 2, 1));
}

void zorn_input_window::repaint_internal(zorn_bitmap& bitmap) {
    bitmap.Clear(zorn_black);
    const int w = bitmap.GetWidth(), h = bitmap.GetHeight();
    const int all_sides = zorn_edge_top | zorn_edge_right | zorn_edge_bottom | zorn_edge_left;
    if (anim_count > 0)
        draw_edges(bitmap, w, h, all_sides, (anim_count & 1) ? &zorn_white : &zorn_black);
    else
        draw_edges(bitmap, w, h, all_sides, nullptr);
}

bool zorn_input_window::animation_callback(int elapsed_ms) { return standard_animation_step(elapsed_ms); }

void zorn_input_window::focus_handler(wxFocusEvent&) { line_edit.SetFocus(); }
