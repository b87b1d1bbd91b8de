#include "app/clipboard.h"

#include <wx/clipbrd.h>
#include <wx/dataobj.h>
#include <wx/log.h>

#include "config/debug_log.h"

void set_clipboard_data(const wxString& text) {
    // The toolkit's own log would open a message box over the client when the desktop refuses.
    wxLogNull quiet;
    if (!wxTheClipboard->Open()) {
        if (zorn_debug_level >= 2)
            zorn_client_debug_printf("Error in set_clipboard_data(), unable to open clipboard.\n");
        return;
    }
    wxTheClipboard->SetData(new wxTextDataObject(text));
    wxTheClipboard->Close();
}

bool get_clipboard_data(wxString* text) {
    if (!wxTheClipboard->Open()) {
        if (zorn_debug_level >= 2)
            zorn_client_debug_printf("Error in get_clipboard_data(), unable to open clipboard.\n");
        return false;
    }
    bool found = false;
    if (wxTheClipboard->IsSupported(wxDF_TEXT) || wxTheClipboard->IsSupported(wxDF_UNICODETEXT)) {
        wxTextDataObject data;
        if (wxTheClipboard->GetData(data)) {
            if (text) *text = data.GetText();
            found = true;
        }
    }
    wxTheClipboard->Close();
    return found;
}
