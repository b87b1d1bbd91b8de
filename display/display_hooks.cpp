#include "display/display_hooks.h"

#include <wx/clipbrd.h>
#include <wx/dataobj.h>

#include "config/debug_log.h"

namespace {

zorn_display_settings default_settings() { return zorn_display_settings(); }

zorn_display_settings_source settings_source = default_settings;

void clipboard_default(const char* text) {
    if (!text || !wxTheClipboard->Open()) return;
    wxTheClipboard->SetData(new wxTextDataObject(wxString::FromUTF8(text)));
    wxTheClipboard->Close();
}

void open_url_default(const char* url) {
    if (zorn_debug_level >= 2) zorn_client_debug_printf("open_url() - '%s'.\n", url ? url : "");
}

void status_bar_default() {}

bool logged_in_default() { return false; }

}  // namespace

void zorn_set_display_settings_source(zorn_display_settings_source source) {
    settings_source = source ? source : default_settings;
}

zorn_display_settings zorn_get_display_settings() { return settings_source(); }

zorn_display_hooks& zorn_get_display_hooks() {
    static zorn_display_hooks hooks{clipboard_default, open_url_default, status_bar_default, logged_in_default};
    return hooks;
}
