#pragma once
// The frame around the command line: a black window with a two-pixel edge that can flash, and the
// line editor inside it, 2 pixels in from the sides and 1 from top and bottom. Focus given to this
// window goes on to the line editor.

#include "input/embedded_window.h"
#include "input/line_edit.h"

class wxFocusEvent;

class zorn_input_window : public zorn_embedded_window {
public:
    zorn_input_window(wxWindow* parent, wxWindowID id = wxID_ANY, const wxPoint& pos = wxDefaultPosition,
                      const wxSize& size = wxSize(20, 20), long style = wxBORDER_NONE,
                      const wxString& name = wxT("main input window"));

    void resize_handler(bool size_changed) override;
    void repaint_internal(zorn_bitmap& bitmap) override;
    bool animation_callback(int elapsed_ms) override;
    // The 16-phase flash of the edge (config tag "input_window" "flash").
    void flash_window() { start_flash(); }

    // The command line; a child of this window that lives as long as it does.
    zorn_line_edit line_edit;

private:
    void focus_handler(wxFocusEvent& event);

    wxDECLARE_EVENT_TABLE();
};
