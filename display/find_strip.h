#pragma once
// The find strip at the foot of a display: a box for the text to find and the count of hits
// ("3 of 17"). Typing finds the newest hit and jumps to it; Enter goes to the next older hit and
// Shift-Enter to the next newer one, each jump locking the scrollback there; Escape closes the
// strip and brings the display back to its end. The search itself is display/text_search.h;
// while the strip is open its hits are lit in the display.

#include <wx/panel.h>

#include "display/text_search.h"

class wxKeyEvent;
class wxCommandEvent;
class wxStaticText;
class wxTextCtrl;
class zorn_ansi_display;

class zorn_find_strip : public wxPanel {
public:
    explicit zorn_find_strip(zorn_ansi_display* display);

    // Shows the strip with the keyboard in its box; the text of an earlier search stays, selected.
    void open();
    // Hides the strip, puts the lights out and returns the display to its end.
    void close();
    bool is_open() const { return IsShown(); }
    // New text reached the display: new hits are counted, and lit at the next paint.
    void text_arrived();
    // Jumps to the current hit.
    void show_current();

    int strip_height() const;

    zorn_text_search search;
    wxTextCtrl* box;
    wxStaticText* count_label;

private:
    void key_handler(wxKeyEvent& event);
    void text_handler(wxCommandEvent& event);
    void update_count();
    void place_children();

    wxStaticText* find_label;
    zorn_ansi_display* display;
};
