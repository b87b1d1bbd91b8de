#include "app/gui_app.h"

#include <wx/display.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "app/command_line.h"
#include "app/desktop_identity.h"
#include "app/main_frame.h"
#include "base/random.h"
#include "config/config_directory.h"
#include "config/debug_log.h"
#include "config/lconfig.h"
#include "net/download_queue.h"
#include "net/soundpack_updater.h"
#include "net/ssl_context.h"
#include "theme/builtin_images.h"
#include "theme/font.h"
#include "theme/theme.h"

namespace {

void log_at(int level, const char* text) {
    if (zorn_debug_level >= level) zorn_client_debug_printf("%s", text);
}

// Step 14: the display that holds the frame; a bogus size falls back to 640 by 480.
void read_display_size(wxWindow* frame) {
    int index = wxDisplay::GetFromWindow(frame);
    if (index == wxNOT_FOUND) index = 0;
    const wxRect geometry = wxDisplay((unsigned)index).GetGeometry();
    screen_width = geometry.GetWidth();
    screen_height = geometry.GetHeight();
    if (screen_width < 1) {
        if (zorn_debug_level >= 1)
            zorn_client_debug_printf("Error in OnInit(), got bogus screen/display xsize of %d.  Setting to 640.\n",
                                     screen_width);
        screen_width = 640;
    }
    if (screen_height < 1) {
        if (zorn_debug_level >= 1)
            zorn_client_debug_printf("Error in OnInit(), got bogus screen/display ysize of %d.  Setting to 480.\n",
                                     screen_height);
        screen_height = 480;
    }
    if (zorn_debug_level >= 2)
        zorn_client_debug_printf("OnInit(), got screen/display size of %d, %d.\n", screen_width, screen_height);
}

}  // namespace

const char* zorn_client_start_up(int argc, const char* const* argv) {
    signal(SIGPIPE, SIG_IGN);
    if (!zorn_ssl_startup()) return "Boot failed, SSL startup is broken.\n";
    if (!zorn_client_set_up_config_directory("EmberVale"))
        return "Boot failed, unable to get at system config directory.\n";
    random_time_seed();
    create_themes();
    zorn_load_builtin_images();
    LConfig& config = LConfig::instance();
    zorn_create_fonts(config.get_default_font_size());
    // New character records start with the fonts as they were just made.
    config.set_font_defaults(zorn_main_font()->GetNativeFontInfoDesc().utf8_str(),
                             zorn_button_font()->GetNativeFontInfoDesc().utf8_str(), zorn_button_font()->GetPointSize());
    config.load_system_config();
    zorn_parse_command_line(argc, argv, launcher_version, zorn_launcher_version_limit + 1);
    switch_themes();
    return nullptr;
}

bool zorn_gui_app::Initialize(int& argc, wxChar** argv) {
    zorn_set_desktop_identity(this);
    return wxApp::Initialize(argc, argv);
}

bool zorn_gui_app::OnInit() {
    zorn_client_set_autoopen_debug_logfile_name("ember_vale_lantern.txt");
    log_at(2, "--------------------------- BOOT START --------------------------\n");

    const char* failure = zorn_client_start_up(argc, (const char* const*)argv);
    if (failure) {
        log_at(1, failure);
        exit(1);
    }

    zorn_load_application_icon();
    auto* frame = new zorn_mw(nullptr, wxID_ANY, wxString::FromUTF8(zorn_frame_title), wxDefaultPosition,
                              wxSize(zorn_frame_width, zorn_frame_height), wxDEFAULT_FRAME_STYLE);
    frame->Show(true);
    SetTopWindow(frame);
    read_display_size(frame);
    // The updater and the download queue fetch from the web host of the system file's "web_host".
    const LConfig& config = LConfig::instance();
    zorn_download::set_site(zorn_client_config_directory(), config.get_web_host(), config.get_web_port());
    zorn_start_soundpack_updater(zorn_client_config_directory(), config.get_web_host(), config.get_web_port());
    return true;
}

int zorn_gui_app::OnExit() {
    log_at(2, "--------------------------- PROGRAM EXIT --------------------------\n");
    return 0;
}

void zorn_gui_app::OnAssertFailure(const wxChar* file, int line, const wxChar* func, const wxChar* cond,
                                   const wxChar* msg) {
    const wxString text = wxString::Format("wxASSERT %s:%d %s: %s %s", wxString(file), line, wxString(func),
                                           wxString(cond), wxString(msg));
    std::fprintf(stderr, "%s\n", (const char*)text.utf8_str());
    if (zorn_debug_level >= 1) zorn_client_debug_printf("%s\n", (const char*)text.utf8_str());
    if (std::getenv("LANTERN_ASSERT_ABORT")) std::abort();
}
