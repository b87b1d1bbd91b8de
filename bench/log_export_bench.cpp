// Saving the log: both writers over 100 MB of history in one main display. The export runs on the
// main thread to its end, so the game stands still for as long as it takes. Figures and the
// machine they ran on: bench/README.md.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "bench/corpus.h"
#include "display/ansi_model.h"

namespace {

constexpr size_t history_bytes = 100u * 1000 * 1000;
constexpr size_t read_block = 10000;

// The history only: the text control is left out (updates suspended), since export never reads it.
struct filled_display {
    filled_display() : ansi(&text) {
        int widths[256];
        for (int& w : widths) w = 8;
        text.set_metrics(widths, 16);
        ansi.suspend_updates();
        // The parser drops escape sequences and carriage returns: about 8% of the corpus.
        const std::string corpus = make_game_corpus(history_bytes / 100 * 109);
        for (size_t at = 0; at < corpus.size(); at += read_block) {
            const size_t n = std::min(read_block, corpus.size() - at);
            ansi.add_ansi_text(corpus.data() + at, static_cast<int>(n));
        }
        ansi.rerender_flush();
        const zorn_render_store& store = ansi.render_store();
        for (size_t i = 0; i < store.count(); ++i) stored += store.record_length(i);
    }
    zorn_textctrl_model text;
    zorn_ansi_model ansi;
    size_t stored = 0;  // history bytes after the parser (escape sequences and CRs gone)
};

filled_display& display() {
    static filled_display d;
    return d;
}

// target "/dev/null" measures the writer alone; a file under /tmp adds the page cache.
void run_export(benchmark::State& state, bool html, const char* target) {
    filled_display& d = display();
    long written = 0;
    for (auto _ : state) {
        FILE* file = std::fopen(target, "wb");
        if (!file) {
            state.SkipWithError("cannot open the output");
            return;
        }
        if (html) d.ansi.export_html(file);
        else d.ansi.export_text(file);
        written = std::ftell(file);
        std::fclose(file);
    }
    const bool to_file = std::string(target) != "/dev/null";
    if (to_file) std::remove(target);
    state.SetBytesProcessed(static_cast<int64_t>(d.stored * state.iterations()));
    state.counters["records"] = static_cast<double>(d.ansi.render_record_count());
    state.counters["history_MB"] = static_cast<double>(d.stored) / 1e6;
    if (to_file) state.counters["file_MB"] = static_cast<double>(written) / 1e6;
}

void BM_export_html_null(benchmark::State& state) { run_export(state, true, "/dev/null"); }
void BM_export_text_null(benchmark::State& state) { run_export(state, false, "/dev/null"); }
void BM_export_html_file(benchmark::State& state) { run_export(state, true, "/tmp/lantern_bench_log.html"); }
void BM_export_text_file(benchmark::State& state) { run_export(state, false, "/tmp/lantern_bench_log.txt"); }

BENCHMARK(BM_export_html_null)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_export_text_null)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_export_html_file)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_export_text_file)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

BENCHMARK_MAIN();
