#pragma once
// Plain text to and from the desktop's clipboard.

#include <wx/string.h>

// Puts the text on the clipboard; logs at level 2 when the clipboard can't be opened.
void set_clipboard_data(const wxString& text);
// True with the text when the clipboard holds text; false when it holds none or can't be opened.
bool get_clipboard_data(wxString* text);
