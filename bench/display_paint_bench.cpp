// One full repaint of a main display of 1920 by 1080 pixels filled with game text: the clear and
// every visible glyph, as the paint handler runs it into the backing bitmap. Needs an X display:
// run it under xvfb-run. Figures and the machine they ran on: bench/README.md.
#include <benchmark/benchmark.h>

#include <wx/app.h>
#include <wx/frame.h>
#include <wx/image.h>
#include <wx/imagpng.h>
#include <wx/init.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/corpus.h"
#include "bench/wx_bench_main.h"
#include "display/ansi_display.h"
#include "display/display_hooks.h"

namespace {

zorn_display_settings fresh_settings() { return zorn_display_settings(); }

zorn_main_window* make_display(wxFrame** frame) {
    *frame = new wxFrame(nullptr, wxID_ANY, wxT("paint bench"), wxPoint(0, 0), wxSize(1920, 1080));
    auto* display = new zorn_main_window(*frame);
    display->set_size(0, 0, 1920, 1080);
    const std::string text = make_game_corpus(2u << 20);
    for (size_t at = 0; at < text.size(); at += 10000)
        display->add_ansi_text(text.data() + at, static_cast<int>(std::min<size_t>(10000, text.size() - at)));
    display->refresh_text();
    return display;
}

void count_glyphs(benchmark::State& state, zorn_textctrl* text) {
    int glyphs = 0;
    const int rows = text->GetSize().GetHeight() / text->model.font_height + 1;
    for (int line = text->model.scroll_line; line > text->model.scroll_line - rows && line >= 0; --line)
        glyphs += text->model.line_length(line);
    state.counters["glyphs"] = glyphs;
    state.counters["text_px"] = text->GetSize().GetWidth() * text->GetSize().GetHeight();
}

void BM_full_repaint_1920x1080(benchmark::State& state) {
    wxFrame* frame = nullptr;
    zorn_main_window* display = make_display(&frame);
    zorn_textctrl* text = display->textctrl;
    if (state.range(0)) {
        // Everything on screen selected: every glyph cell painted opaque.
        auto& model = text->model;
        model.anchor_line = 0;
        model.anchor_offset = 0;
        model.cursor_line = model.current_line;
        model.cursor_offset = 0;
        model.selection_active = 1;
        model.normalise_selection();
    }
    for (auto _ : state) {
        display->repaint_internal(*display->backing_bitmap);
        text->repaint_internal(*text->backing_bitmap);
    }
    count_glyphs(state, text);
    // A picture of what was measured, for a look: LANTERN_BENCH_SNAPSHOT=path.png
    if (const char* path = std::getenv("LANTERN_BENCH_SNAPSHOT"); path && state.range(0) == 0) {
        if (!wxImage::FindHandler(wxBITMAP_TYPE_PNG)) wxImage::AddHandler(new wxPNGHandler);
        text->backing_bitmap->ConvertToImage().SaveFile(path, wxBITMAP_TYPE_PNG);
    }
    frame->Destroy();
}
BENCHMARK(BM_full_repaint_1920x1080)->Arg(0)->Arg(1)->ArgNames({"selected"})->Unit(benchmark::kMillisecond);

// For comparison: the same repaint asked of the toolkit, so the copy of the bitmap to the (virtual)
// screen is in it too.
void BM_repaint_and_show_1920x1080(benchmark::State& state) {
    wxFrame* frame = nullptr;
    zorn_main_window* display = make_display(&frame);
    frame->Show();
    wxTheApp->Yield();
    for (auto _ : state) {
        display->textctrl->Refresh(false);
        display->textctrl->Update();
    }
    frame->Destroy();
}
BENCHMARK(BM_repaint_and_show_1920x1080)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    return run_wx_benchmarks(argc, argv, [] { zorn_set_display_settings_source(fresh_settings); });
}
