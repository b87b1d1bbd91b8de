// The scrollback's own costs, without a window: ingestion of server text through the ANSI parser
// into a main display, a re-wrap of 100,000 lines after a change of width, and the resident memory
// that each byte of received text costs. Figures and the machine they ran on: bench/README.md.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>

#include "bench/corpus.h"
#include "display/ansi_model.h"
#include "display/text_search.h"

namespace {

// A main display 800 pixels wide: the text control inside its two-pixel frame, beside a 16-pixel
// scrollbar. Characters as the default 10-point monospace font measures them here.
constexpr int display_width = 800;
constexpr int text_width = display_width - 2 * 2 - 16;
constexpr int text_height = 1000;
constexpr int char_px = 8;
constexpr int line_px = 16;
constexpr size_t read_block = 10000;  // what one socket read hands over

const std::string& corpus() {
    static const std::string text = make_game_corpus(32u << 20);
    return text;
}

struct main_display {
    main_display() : text(text_width, text_height), ansi(&text) {
        int widths[256];
        for (int& w : widths) w = char_px;
        text.set_metrics(widths, line_px);
        text.resize(text_width, text_height);
    }
    void feed(const std::string& data, size_t limit = std::string::npos) {
        const size_t end = std::min(limit, data.size());
        for (size_t at = 0; at < end; at += read_block) {
            const size_t n = std::min(read_block, end - at);
            ansi.add_ansi_text(data.data() + at, static_cast<int>(n));
        }
    }
    zorn_textctrl_model text;
    zorn_ansi_model ansi;
};

size_t resident_bytes() {
    long pages = 0, resident = 0;
    FILE* f = std::fopen("/proc/self/statm", "r");
    if (!f) return 0;
    if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(f);
    return static_cast<size_t>(resident) * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

// Runs first, in a process that has not filled the pools yet: growth of the resident set while
// the whole corpus goes into one display, over the bytes received.
void BM_resident_memory_per_byte(benchmark::State& state) {
    const std::string& text = corpus();
    for (auto _ : state) {
        const size_t before = resident_bytes();
        auto display = std::make_unique<main_display>();
        display->feed(text);
        const size_t after = resident_bytes();
        state.counters["rss_bytes_per_byte"] = static_cast<double>(after - before) / static_cast<double>(text.size());
        state.counters["held_bytes_per_byte"] =
            static_cast<double>(display->text.memory_bytes() + display->ansi.render_store().memory_bytes()) /
            static_cast<double>(text.size());
        state.counters["received_MB"] = static_cast<double>(text.size()) / 1e6;
        state.counters["display_lines"] = display->text.line_count();
        state.counters["colour_records"] = static_cast<double>(display->ansi.render_record_count());
    }
}
BENCHMARK(BM_resident_memory_per_byte)->Iterations(1)->Unit(benchmark::kMillisecond);

void BM_ingest_add_ansi_text(benchmark::State& state) {
    const std::string& text = corpus();
    const size_t bytes = static_cast<size_t>(state.range(0)) << 20;
    for (auto _ : state) {
        auto display = std::make_unique<main_display>();
        display->feed(text, bytes);
        benchmark::DoNotOptimize(display->text.current_line);
        state.PauseTiming();
        display.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes));
}
BENCHMARK(BM_ingest_add_ansi_text)->Arg(16)->Unit(benchmark::kMillisecond);

// 100,000 display lines at the first width, then the window narrows and widens in turn.
void BM_rewrap_100k_lines(benchmark::State& state) {
    main_display display;
    const std::string& text = corpus();
    for (size_t at = 0; at < text.size() && display.text.line_count() < 100000; at += read_block)
        display.ansi.add_ansi_text(text.data() + at, static_cast<int>(std::min(read_block, text.size() - at)));
    const int lines_at_start = display.text.line_count();
    bool narrow = false;
    for (auto _ : state) {
        narrow = !narrow;
        display.text.resize(narrow ? text_width - 80 : text_width, text_height);
    }
    state.counters["lines"] = lines_at_start;
    state.counters["text_MB"] = static_cast<double>(display.text.raw_text().size()) / 1e6;
}
BENCHMARK(BM_rewrap_100k_lines)->Unit(benchmark::kMillisecond);

// The find strip's work over 100,000 display lines: a new query scans the whole stream, the newest
// hit is mapped to its display lines and the view locked there. Queries: two words that the text
// holds some 6,000 times each ("with", "dragon"), and one that never occurs.
void BM_search_and_jump_100k_lines(benchmark::State& state) {
    static const char* const queries[] = {"with", "dragon", "no such words"};
    main_display display;
    const std::string& text = corpus();
    for (size_t at = 0; at < text.size() && display.text.line_count() < 100000; at += read_block)
        display.ansi.add_ansi_text(text.data() + at, static_cast<int>(std::min(read_block, text.size() - at)));
    zorn_text_search search;
    for (auto _ : state) {
        search.set_query(queries[state.range(0)]);
        search.update(display.text);
        search.select_newest();
        search.step_older();
        if (search.current() >= 0) {
            const zorn_text_search::place at = search.place_of(display.text, static_cast<size_t>(search.current()));
            display.ansi.lock_at_lines(at.first_line, at.last_line);
        }
        benchmark::DoNotOptimize(display.text.scroll_line);
    }
    state.counters["lines"] = display.text.line_count();
    state.counters["text_MB"] = static_cast<double>(display.text.stream_size()) / 1e6;
    state.counters["hits"] = static_cast<double>(search.count());
}
BENCHMARK(BM_search_and_jump_100k_lines)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
