// One frame of a slide as the map window paints it at cell size 15: the view composed in memory,
// copied into the window's backing bitmap, and the compass's ten labels drawn in the main font.
// Needs an X display (xvfb-run).

#include <wx/frame.h>

#include <string>

#include "bench/wx_bench_main.h"

#include "automap/automap_renderer.h"
#include "input/frame_link.h"
#include "testworld/map_area.h"
#include "theme/font.h"

namespace {

// A frame that says the player is logged in, so the map is drawn.
class logged_in_link : public zorn_frame_link {
public:
    void process_user_command(const char*, int) override {}
    bool transfer_focus_main(wxWindow*) override { return false; }
    void unlock_main_scrollback() override {}
    int current_session_state() override { return 2; }
};

void BM_slide_frame_painted(benchmark::State& state) {
    logged_in_link link;
    zorn_set_frame_link(&link);
    auto* frame = new wxFrame(nullptr, wxID_ANY, wxT("automap bench"), wxPoint(0, 0), wxSize(400, 400));
    auto* renderer = new zorn_automap_renderer(frame);
    renderer->set_cell_size(static_cast<int>(state.range(0)));
    renderer->set_size(0, 0, renderer->view_size, renderer->view_size);
    const std::string block = testworld::map_block(7, 7, 0, 'A', 0);
    renderer->model.display_socket_data(block.data(), static_cast<int>(block.size()));
    renderer->model.exits_mask = 255;
    renderer->mouse_inside = 1;
    renderer->hover_direction = 8;
    for (auto _ : state) {
        renderer->model.scroll_y = 15;
        renderer->repaint_internal(*renderer->backing_bitmap);
    }
    frame->Destroy();
    zorn_set_frame_link(nullptr);
}
BENCHMARK(BM_slide_frame_painted)->Arg(15)->ArgNames({"cell_size"})->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) { return run_wx_benchmarks(argc, argv); }
