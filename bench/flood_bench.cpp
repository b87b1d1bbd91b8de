// bench_flood: how fast the whole client takes a flood of game text over loopback TLS, end to end.
// The real main frame runs in-process (start-up as the application does it, private HOME) against
// `lantern-testworld --flood F --repeat N --once`, F being numbered game text from
// testworld/flood_text.h. Measured from the start of the first tick (which connects) to the end of
// the tick that reads the server's close; also every tick is timed from outside the frame.
// Needs an X server: xvfb-run -a build/bench/bench_flood [--megabytes N] [--trials N] [--screen-reader 1]
// (the last with the screen reader on: line cutting and the accessible mirror, speech if present).

#include <wx/app.h>
#include <wx/evtloop.h>
#include <wx/init.h>
#include <wx/timer.h>
#include <wx/utils.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>

#include "app/main_frame.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "tests/app/e2e_support.h"
#include "tests/net/net_test_support.h"
#include "tests/support/gui_main.h"
#include "testworld/flood_text.h"

namespace {

constexpr size_t flood_file_bytes = 5u << 20;

class bench_app : public wxApp {
public:
    bool OnInit() override { return true; }
    void OnAssertFailure(const wxChar* file, int line, const wxChar*, const wxChar* cond, const wxChar*) override {
        std::fprintf(stderr, "wxASSERT %s:%d %s\n", (const char*)wxString(file).utf8_str(), line,
                     (const char*)wxString(cond).utf8_str());
    }
};

struct run_result {
    bool ok = false;
    double seconds = 0;
    long long ticks = 0;
    double longest_tick_ms = 0;
    double mean_tick_ms = 0;
    int lines = 0;
};

// Watches each tick's end: the connection came up, then went down.
struct close_watch {
    zorn_mw* frame;
    e2e::tick_probe* probe;
    bool connected = false;
    int64_t closed_at_us = 0;
};

void after_tick(void* context) {
    auto* w = static_cast<close_watch*>(context);
    if (w->closed_at_us) return;
    if (w->frame->socket.get_state() == socket_connected) {
        w->connected = true;
    } else if (w->connected) {
        w->closed_at_us = w->probe->last_tick_end_us;
    }
}

run_result run_once(const std::string& flood_path, int repeat) {
    run_result result;
    net_test::temp_dir dir;
    net_test::testworld_process world;
    if (!world.start({"--flood", flood_path, "--repeat", std::to_string(repeat), "--once"}, dir.file("world.err"))) {
        std::fprintf(stderr, "bench_flood: the test world did not start\n");
        return result;
    }
    LConfig::instance().set_server_port(world.port());
    zorn_mw* frame = e2e::make_frame();
    e2e::tick_probe probe(frame);
    close_watch watch{frame, &probe};
    probe.after_tick = after_tick;
    probe.after_tick_context = &watch;
    result.ok = pump_until([&] { return watch.closed_at_us != 0; }, 600000);
    result.seconds = (watch.closed_at_us - probe.first_tick_start_us) / 1e6;
    result.ticks = probe.ticks;
    result.longest_tick_ms = probe.longest_tick_us / 1000.0;
    result.mean_tick_ms = probe.ticks ? probe.total_tick_us / 1000.0 / probe.ticks : 0;
    result.lines = frame->main_display->textctrl->model.line_count();
    probe.detach();
    e2e::destroy_frame(frame);
    return result;
}

int run(int megabytes, int trials, bool screen_reader) {
    net_test::temp_dir dir;
    const std::string flood = testworld::make_flood_text(flood_file_bytes);
    net_test::write_file(dir.file("flood.txt"), flood);
    const size_t wanted = static_cast<size_t>(megabytes) << 20;
    const int repeat = std::max(1, static_cast<int>((wanted + flood.size() / 2) / flood.size()));
    const double total_mb = static_cast<double>(flood.size()) * repeat / (1 << 20);
    if (!e2e::start_client_process(dir.path(), 1, 1)) return 1;
    LConfig::instance().set_screen_reader(screen_reader ? 1 : 0);
    std::printf("flood: %d x %zu bytes (%.1f MB) of numbered game text, %zu lines each\n", repeat, flood.size(),
                total_mb, testworld::count_flood_lines(flood));
    std::printf("%-6s %10s %10s %8s %12s %12s %10s\n", "trial", "seconds", "MB/s", "ticks", "longest ms", "mean ms",
                "lines");
    int failures = 0;
    for (int trial = 1; trial <= trials; ++trial) {
        const run_result r = run_once(dir.file("flood.txt"), repeat);
        if (!r.ok) {
            std::printf("%-6d did not finish\n", trial);
            ++failures;
            continue;
        }
        std::printf("%-6d %10.3f %10.1f %8lld %12.1f %12.2f %10d\n", trial, r.seconds, total_mb / r.seconds, r.ticks,
                    r.longest_tick_ms, r.mean_tick_ms, r.lines);
        std::fflush(stdout);
    }
    return failures ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    int megabytes = 50;
    int trials = 3;
    bool screen_reader = false;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (std::strcmp(argv[i], "--megabytes") == 0) megabytes = std::atoi(argv[i + 1]);
        else if (std::strcmp(argv[i], "--trials") == 0) trials = std::atoi(argv[i + 1]);
        else if (std::strcmp(argv[i], "--screen-reader") == 0) screen_reader = std::atoi(argv[i + 1]) != 0;
    }
    if (megabytes < 1 || trials < 1) {
        std::fprintf(stderr, "usage: bench_flood [--megabytes N] [--trials N] [--screen-reader 0|1]\n");
        return 2;
    }
    wxApp::SetInstance(new bench_app);
    int wx_argc = 1;
    if (!wxEntryStart(wx_argc, argv)) {
        std::fprintf(stderr, "bench_flood: no X display; run it under xvfb-run -a\n");
        return 1;
    }
    wxTheApp->CallOnInit();
    const int status = run(megabytes, trials, screen_reader);
    wxTheApp->OnExit();
    wxEntryCleanup();
    return status;
}
