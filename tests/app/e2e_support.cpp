#include "tests/app/e2e_support.h"

#include <sys/stat.h>
#include <wx/uiaction.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "app/gui_app.h"
#include "app/main_frame.h"
#include "base/files.h"
#include "base/fixed_string.h"
#include "base/random.h"
#include "config/config_directory.h"
#include "config/debug_log.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "input/input_window.h"
#include "net/ssl_context.h"
#include "tests/support/gui_main.h"
#include "theme/builtin_images.h"
#include "theme/font.h"
#include "theme/theme.h"

namespace e2e {

namespace {

bool fail(const char* step) {
    std::fprintf(stderr, "e2e start-up: %s failed\n", step);
    return false;
}

}  // namespace

int64_t now_us() {
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

std::string system_file_text(const std::string& host, int port) {
    return "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
           "<system_config_list>\n"
           "  <server_host>" + host + "</server_host>\n"
           "  <server_port>" + std::to_string(port) + "</server_port>\n"
           "</system_config_list>\n"
           "\n";
}

bool start_client_process(const std::string& home, int port, int debug_level) {
    setenv("HOME", home.c_str(), 1);
    const std::string config_dir = home + "/.config/EmberVale";
    zorn_fixed_string failed_path;
    // The directories up to the last slash are made.
    if (!zorn_recursive_mkdir((config_dir + "/").c_str(), 0700, &failed_path)) return fail("making the config directory");
    std::ofstream file(config_dir + "/ember_vale.cfg");
    file << system_file_text("127.0.0.1", port);
    file.close();
    if (!file) return fail("writing the system file");

    zorn_client_set_debug_logfile_name((home + "/debug.txt").c_str());
    zorn_debug_level = debug_level;
    if (const char* failure = zorn_client_start_up(0, nullptr)) return fail(failure);
    return true;
}

zorn_mw* make_frame() {
    auto* frame = new zorn_mw(nullptr, wxID_ANY, wxString::FromUTF8(zorn_frame_title), wxDefaultPosition,
                              wxSize(zorn_frame_width, zorn_frame_height), wxDEFAULT_FRAME_STYLE);
    frame->Show(true);
    return frame;
}

void destroy_frame(zorn_mw* frame) {
    if (!frame) return;
    frame->shutdown_countdown = 0;  // the exit step would end the test process
    frame->tick_timer.Stop();
    frame->socket.close();
    frame->Destroy();
    pump_for(30);
}

bool type_line(zorn_mw* frame, const std::string& text) {
    zorn_line_edit& editor = frame->input_window->line_edit;
    frame->Raise();
    editor.SetFocus();
    wxUIActionSimulator keys;
    // Without a window manager the X focus follows the pointer: it has to be over the editor.
    const wxPoint centre = editor.GetScreenRect().GetPosition() + wxPoint(8, editor.GetSize().GetHeight() / 2);
    keys.MouseMove(centre);
    pump_for(20);
    if (!text.empty()) {
        keys.Text(text.c_str());
        if (!pump_until([&] { return editor.GetValue().utf8_str().data() == text; }, 3000)) return false;
    }
    keys.Char(WXK_RETURN);
    return pump_until([&] { return editor.GetValue().empty(); }, 3000);
}

std::string shown_text(zorn_mw* frame) { return frame->main_display->textctrl->model.raw_text(); }

tick_probe::tick_probe(zorn_mw* owner) : frame(owner) {
    frame->tick_timer.SetOwner(this, zorn_tick_timer_id);
    Bind(wxEVT_TIMER, &tick_probe::on_timer, this, zorn_tick_timer_id);
}

tick_probe::~tick_probe() { detach(); }

void tick_probe::detach() {
    if (!frame) return;
    frame->tick_timer.SetOwner(frame, zorn_tick_timer_id);
    frame = nullptr;
}

void tick_probe::on_timer(wxTimerEvent& event) {
    if (!frame) return;
    const int64_t start = now_us();
    frame->GetEventHandler()->ProcessEvent(event);
    last_tick_end_us = now_us();
    const int64_t took = last_tick_end_us - start;
    if (ticks == 0) first_tick_start_us = start;
    ++ticks;
    total_tick_us += took;
    if (took > longest_tick_us) longest_tick_us = took;
    if (after_tick) after_tick(after_tick_context);
}

std::vector<std::string> read_lines(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(file, line)) lines.push_back(line);
    return lines;
}

}  // namespace e2e
