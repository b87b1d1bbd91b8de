#pragma once
// main() of the benchmarks that need the toolkit: starts wx once (an X display is needed: run
// under xvfb-run), runs the benchmarks, stops it.

#include <benchmark/benchmark.h>
#include <wx/app.h>
#include <wx/init.h>

#include <cstdio>

class bench_app : public wxApp {
public:
    bool OnInit() override { return true; }
};

// `ready` runs once the toolkit is up, before the benchmarks.
inline int run_wx_benchmarks(int argc, char** argv, void (*ready)() = nullptr) {
    benchmark::Initialize(&argc, argv);
    wxApp::SetInstance(new bench_app);
    if (!wxEntryStart(argc, argv)) {
        std::fprintf(stderr, "no X display: run under xvfb-run\n");
        return 1;
    }
    wxTheApp->CallOnInit();
    if (ready) ready();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    wxTheApp->OnExit();
    wxEntryCleanup();
    return 0;
}
