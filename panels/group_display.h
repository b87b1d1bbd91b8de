#pragma once
// The group display: the members of the player's group, each with bars for hit points, mana and
// movement, in tall or compact rows. The server sends the whole list in the tag "group"; the panel
// sizes itself to it. It stands in the main frame's left column (mode 1) or on top of the main
// text (mode 2). Parsing and geometry live in group_model.h; this widget applies and paints them.

#include <vector>

#include <wx/string.h>

#include "input/embedded_window.h"
#include "panels/group_model.h"

class wxMouseEvent;

class zorn_group_display : public zorn_embedded_window {
public:
    explicit zorn_group_display(wxWindow* parent, wxWindowID id = wxID_ANY,
                                const wxString& name = wxT("main group display"));

    // Hidden, and the list gone.
    virtual void reset();
    // The tag's handler: replaces the list; with nothing parsed hides the panel and answers false.
    // Otherwise resizes to fit, shows the panel if the setting allows it, repaints, and answers
    // whether the height changed.
    bool parse_group_block(const char* payload);
    // Sets the height for the list; in layout 2 the bottom edge stays where it is. True when the
    // height changed.
    bool resize_to_fit();
    int required_height() const;
    // After a change of the status font: the row heights follow it.
    void change_font();

    void resize_handler(bool size_changed) override;
    void repaint_internal(zorn_bitmap& bitmap) override;

    int mode;  // 1 in the main frame, 2 embedded in the text
    std::vector<zorn_group_member> members;
    int full_row_height;
    int compact_row_height;
    // Paints so far, for tests and diagnostics.
    int repaints;

private:
    void motion_handler(wxMouseEvent& event);
    group_metrics metrics() const;

    wxString tooltip_shown;

    wxDECLARE_EVENT_TABLE();
};
