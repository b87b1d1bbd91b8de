// What a prompt costs the status strips: the five status tags of one prompt parsed and compared
// when nothing changed (the usual case) and when every number did, and the placement arithmetic
// of a resize. Then, under an X display, one full repaint of each strip into its bitmap. Figures
// and the machine they ran on: bench/README.md.
#include <benchmark/benchmark.h>

#include <wx/app.h>
#include <wx/frame.h>
#include <wx/init.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "bench/wx_bench_main.h"
#include "base/random.h"
#include "panels/status_bar.h"
#include "panels/status_display.h"
#include "theme/builtin_images.h"
#include "theme/theme.h"

namespace {

struct prompt_state {
    zorn_status_numbers numbers;
    int icons[zorn_icon_count] = {};
    zorn_sky_fields sky;
    zorn_fixed_string clock;
};

// Returns how many of the five would have asked for a repaint.
int one_prompt(prompt_state& s, const char* hp, const char* xpp, const char* enemy, const char* icons,
               const char* sky) {
    int repaints = status_parse_hit_points(&s.numbers, hp);
    repaints += status_parse_experience(&s.numbers, xpp);
    repaints += status_parse_enemy(&s.numbers, enemy) == zorn_enemy_update::changed;
    repaints += status_parse_icons(s.icons, icons);
    zorn_sky_fields fields;
    zorn_fixed_string clock;
    if (parse_sky_state(sky, &fields, &clock)) {
        repaints += std::memcmp(&fields, &s.sky, sizeof fields) != 0 || std::strcmp(clock.c_str(), s.clock.c_str());
        s.sky = fields;
        s.clock = clock;
    }
    return repaints;
}

void BM_prompt_tags_unchanged(benchmark::State& state) {
    prompt_state s;
    int repaints = 0;
    for (auto _ : state)
        repaints += one_prompt(s, "142 150 87 120 110 110", "450 120", "40 the training dummy", "10000",
                               "110 1 720 12:00 pm");
    state.counters["repaints"] = repaints;
}
BENCHMARK(BM_prompt_tags_unchanged);

void BM_prompt_tags_changing(benchmark::State& state) {
    prompt_state s;
    char hp[64], xpp[32], enemy[64], sky[64];
    int i = 0;
    for (auto _ : state) {
        ++i;
        std::snprintf(hp, sizeof hp, "%d 150 %d 120 %d 110", i % 150, i % 120, i % 110);
        std::snprintf(xpp, sizeof xpp, "%d 120", i % 1000);
        std::snprintf(enemy, sizeof enemy, "%d the training dummy", i % 100);
        std::snprintf(sky, sizeof sky, "110 1 %d 12:00 pm", i % 1440);
        benchmark::DoNotOptimize(one_prompt(s, hp, xpp, enemy, i & 1 ? "10000" : "01000", sky));
    }
}
BENCHMARK(BM_prompt_tags_changing);

int eight_per_character(const char* text) { return 8 * static_cast<int>(std::strlen(text)); }

void BM_display_layout(benchmark::State& state) {
    zorn_status_flags flags;
    flags.hp_bars = flags.exp_bar = flags.enemy_bar = true;
    int w = 200;
    for (auto _ : state) {
        w = w >= 1900 ? 200 : w + 1;
        benchmark::DoNotOptimize(compute_status_display_layout(w, 40, flags, eight_per_character, 14));
    }
}
BENCHMARK(BM_display_layout);

// One full paint of each strip at a width of 1280, as the paint handler runs it.
void BM_repaint_status_display_1280(benchmark::State& state) {
    auto* frame = new wxFrame(nullptr, wxID_ANY, wxT("status bench"), wxPoint(0, 0), wxSize(1300, 100));
    auto* d = new zorn_status_display(frame);
    d->border_mask = zorn_border_all;
    d->set_flags(1, 1, 1);
    d->set_size(0, 0, 1280, 42);
    d->store_hit_points("1420 1500 870 1200 1100 1100");
    d->store_enemy("40 the training dummy");
    d->store_experience("900 300 100", true);
    for (auto _ : state) d->repaint_internal(*d->backing_bitmap);
    frame->Destroy();
}
BENCHMARK(BM_repaint_status_display_1280)->Unit(benchmark::kMicrosecond);

void BM_repaint_status_bar_and_sky_1280(benchmark::State& state) {
    auto* frame = new wxFrame(nullptr, wxID_ANY, wxT("status bench"), wxPoint(0, 0), wxSize(1300, 100));
    auto* bar = new zorn_status_bar(frame);
    bar->set_size(0, 0, 1280, 21);
    bar->set_icons("11111");
    bar->add_ping_sample(42);
    bar->update_sky_display("110 1 1160 7:20 pm");
    for (auto _ : state) {
        bar->repaint_internal(*bar->backing_bitmap);
        bar->sky_bar->repaint_internal(*bar->sky_bar->backing_bitmap);
    }
    frame->Destroy();
}
BENCHMARK(BM_repaint_status_bar_and_sky_1280)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    return run_wx_benchmarks(argc, argv, [] {
        create_themes();
        switch_themes();
        zorn_load_builtin_images();
        random_seed(zorn_client_random(), 1);
    });
}
