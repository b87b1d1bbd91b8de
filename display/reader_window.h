#pragma once
// The screen reader's native side: the accessible mirror (a read-only native text control that
// AT-SPI tools can read and review) and accessible names and roles on our own windows, set
// through the toolkit's accessibility objects (looked up at run time: nothing links against them).

#include <wx/textctrl.h>

#include <string>

#include "display/reader_core.h"

// The accessible name of the mirror, by which tools find it.
inline constexpr const char* zorn_mirror_accessible_name = "Game text";

class zorn_reader_mirror : public wxTextCtrl {
public:
    explicit zorn_reader_mirror(wxWindow* parent);

    // Shows the buffer's changes since the last call. A reader's caret stays on its text unless
    // it was at the end, where it follows the new lines.
    void apply(const zorn_mirror_buffer::update& update);

private:
    void key_down(wxKeyEvent& event);
};

// The name a screen reader says for the window; nothing when the toolkit has no accessibility.
void zorn_set_accessible_name(wxWindow* window, const std::string& name);
// A text box whose typing a screen reader must not echo (password mode), or a plain one again.
void zorn_set_accessible_password(wxWindow* window, bool password);
