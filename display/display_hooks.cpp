#include "display/display_hooks.h"

#include <wx/clipbrd.h>
#include <wx/dataobj.h>

#include "config/debug_log.h"
#include "config/lconfig.h"

namespace {

// With no current character record every getter answers 0, as everywhere in the client.
zorn_display_settings default_settings() {
    const LConfig& config = LConfig::instance();
    zorn_display_settings settings;
    settings.url_hotlinking = config.get_url_hotlinking();
    settings.compact_mode = config.get_compact_mode();
    settings.mw_scrollbar_enable = config.get_mw_scrollbar_enable();
    settings.automap_display = config.get_automap_display();
    settings.group_status_display = config.get_group_status_display();
    settings.split_view = config.get_split_view();
    return settings;
}

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
