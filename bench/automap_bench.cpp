// The automap's work per map and per frame, headless: decoding a block from the test world and
// drawing the whole map (render_map's five passes) at cell sizes 7, 15 and 41, and one frame of a
// slide at 15 (the copy at the scroll offset, the marker, the compass of ten arrows).

#include <benchmark/benchmark.h>

#include <string>

#include "automap/automap_painter.h"
#include "testworld/map_area.h"

namespace {

const std::string& village_block() {
    static const std::string block = testworld::map_block(testworld::map_village_offset + 1,
                                                          testworld::map_village_offset + 1, 0, 'A', 0);
    return block;
}

void BM_decode_and_render_map(benchmark::State& state) {
    const int s = static_cast<int>(state.range(0));
    automap_model model;
    model.cell_size = s;
    automap_canvas map(automap_map_size(s) + 1, automap_map_size(s) + 1);
    const std::string& block = village_block();
    for (auto _ : state) {
        model.display_socket_data(block.data(), static_cast<int>(block.size()));
        map.clear(zorn_rgb());
        automap_render(model, s, map);
        benchmark::DoNotOptimize(map.row(0));
    }
    state.counters["map_px"] = static_cast<double>(map.width()) * map.height();
}
BENCHMARK(BM_decode_and_render_map)->Arg(7)->Arg(15)->Arg(41)->ArgNames({"cell_size"})->Unit(benchmark::kMicrosecond);

void BM_slide_frame(benchmark::State& state) {
    const int s = static_cast<int>(state.range(0));
    automap_model model;
    model.cell_size = s;
    const std::string& block = village_block();
    model.display_socket_data(block.data(), static_cast<int>(block.size()));
    automap_canvas map(automap_map_size(s) + 1, automap_map_size(s) + 1);
    automap_render(model, s, map);
    automap_canvas view(automap_view_size(s), automap_view_size(s));
    automap_view_state view_state;
    view_state.logged_in = true;
    view_state.mouse_inside = true;
    view_state.hover_direction = 8;
    model.exits_mask = 255;
    for (auto _ : state) {
        model.scroll_y = s;  // mid-slide
        automap_compose_view(model, map, view_state, view);
        benchmark::DoNotOptimize(view.row(0));
    }
}
BENCHMARK(BM_slide_frame)->Arg(15)->ArgNames({"cell_size"})->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
