// The map decoder and the painters on arbitrary server bytes. The first byte picks the cell size
// (small, 5 to 12) and whether the block goes through the queue; the rest is the block, given
// without a terminator so that a read past its end shows. Then the picture and a few frames of
// the view are drawn: every drawing operation must stay inside its canvas.

#include <cstdint>
#include <string>

#include "automap/automap_painter.h"
#include "config/debug_log.h"

namespace {

const bool log_to_null = [] {
    zorn_client_set_debug_logfile_name("/dev/null");
    zorn_debug_level = 3;
    return true;
}();

int fixed_jitter(int n) { return n - 1; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    automap_model model;
    model.random_below_fn = &fixed_jitter;
    model.cell_size = (5 + data[0] % 8) | 1;
    const bool queued = data[0] & 0x80;
    const std::string block(reinterpret_cast<const char*>(data) + 1, size - 1);
    if (queued) {
        model.display_socket_data("A", 1);
        model.queue_socket_data(block.data(), static_cast<int>(block.size()));
        while (model.animating) model.animate_step();
    } else {
        model.display_socket_data(block.data(), static_cast<int>(block.size()));
    }
    const int s = model.cell_size;
    automap_canvas map(automap_map_size(s) + 1, automap_map_size(s) + 1);
    automap_render(model, s, map);
    automap_canvas view(automap_view_size(s), automap_view_size(s));
    automap_view_state state;
    state.logged_in = true;
    state.mouse_inside = true;
    for (int frame = 0; frame < 12 && model.animating; frame++) {
        state.hover_direction = frame % 11;
        automap_compose_view(model, map, state, view);
        model.animate_step();
    }
    automap_compose_view(model, map, state, view);
    model.walk_failed(block.c_str());
    return 0;
}
