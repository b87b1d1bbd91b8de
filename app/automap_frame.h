#pragma once
// The floating frame the automap panel lives in while it isn't docked. One exists for the
// program's life; closing it is a request to turn the automap off, not to destroy it.

#include "app/main_frame.h"

inline constexpr const char* zorn_automap_frame_title = "Ember Vale Map";

class zorn_automap_frame : public zorn_frame {
public:
    explicit zorn_automap_frame(wxWindow* parent);

private:
    void close_handler(wxCloseEvent& event);

    wxDECLARE_EVENT_TABLE();
};
