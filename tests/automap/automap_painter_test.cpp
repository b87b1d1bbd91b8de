// The automap's pictures, pixel by pixel and against reference images: the fixture map at four
// cell sizes, the corner blend, roads and walls, marks, the marker's contrast, the compass.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "automap/automap_painter.h"
#include "tests/automap/automap_test_support.h"
#include "tests/automap/png_file.h"

namespace {

constexpr int reference_tolerance = 2;

std::vector<unsigned char> to_rgb(const automap_canvas& canvas) {
    std::vector<unsigned char> out;
    out.reserve(static_cast<size_t>(canvas.width()) * canvas.height() * 3);
    for (int y = 0; y < canvas.height(); y++) {
        for (int x = 0; x < canvas.width(); x++) {
            const zorn_rgb c = canvas.pixel(x, y);
            out.push_back(static_cast<unsigned char>(c.red));
            out.push_back(static_cast<unsigned char>(c.green));
            out.push_back(static_cast<unsigned char>(c.blue));
        }
    }
    return out;
}

automap_canvas render(const automap_model& model, int s) {
    automap_canvas map(automap_map_size(s) + 1, automap_map_size(s) + 1);
    automap_render(model, s, map);
    return map;
}

// Compares with tests/automap/reference/NAME.png; LANTERN_UPDATE_REFERENCES=1 rewrites it. A
// failing picture is kept in the build tree.
void expect_reference(const automap_canvas& canvas, const std::string& name) {
    const std::string reference = std::string(LANTERN_SOURCE_DIR) + "/tests/automap/reference/" + name + ".png";
    const std::vector<unsigned char> actual = to_rgb(canvas);
    const char* update = std::getenv("LANTERN_UPDATE_REFERENCES");
    if (update && std::string(update) == "1") {
        ASSERT_TRUE(write_png_rgb(reference, canvas.width(), canvas.height(), actual));
        return;
    }
    int width = 0, height = 0;
    std::vector<unsigned char> expected;
    ASSERT_TRUE(read_png_rgb(reference, &width, &height, &expected)) << reference;
    ASSERT_EQ(width, canvas.width());
    ASSERT_EQ(height, canvas.height());
    long bad = 0;
    std::string first;
    for (size_t i = 0; i < actual.size(); i += 3) {
        bool differs = false;
        for (size_t k = 0; k < 3; k++) differs = differs || std::abs(actual[i + k] - expected[i + k]) > reference_tolerance;
        if (!differs) continue;
        if (!bad++) {
            const int p = static_cast<int>(i / 3);
            first = "first bad pixel at " + std::to_string(p % width) + "," + std::to_string(p / width) + ": got " +
                    std::to_string(actual[i]) + "," + std::to_string(actual[i + 1]) + "," + std::to_string(actual[i + 2]) +
                    ", expected " + std::to_string(expected[i]) + "," + std::to_string(expected[i + 1]) + "," +
                    std::to_string(expected[i + 2]);
        }
    }
    if (bad) {
        const std::string dir = std::string(LANTERN_BINARY_DIR) + "/tests/automap/artifacts";
        mkdir(dir.c_str(), 0755);
        write_png_rgb(dir + "/" + name + ".png", canvas.width(), canvas.height(), actual);
        ADD_FAILURE() << name << ": " << bad << " pixels differ; " << first << "; kept in " << dir;
    }
}

void load_fixture(automap_model& model) {
    const std::string block = fixture_block();
    model.display_socket_data(block.data(), static_cast<int>(block.size()));
}

TEST(AutomapPainter, FixtureMapMatchesItsReferencesAndRedrawsIdentically) {
    automap_model model;
    load_fixture(model);
    ASSERT_EQ(model.level_kind, 0);
    for (int s : {5, 7, 11, 15}) {
        SCOPED_TRACE(s);
        const automap_canvas first = render(model, s);
        expect_reference(first, "map_" + std::to_string(s));
        EXPECT_TRUE(render(model, s) == first) << "a second render differs";
    }
}

void put_room(automap_model& model, int c, int r, int terrain, int flags = 0, int seed = 7) {
    automap_cell& cell = model.cell(c, r);
    cell.terrain = terrain;
    cell.flags = flags;
    cell.seed = seed;
}

// Nodes default to "no diagonal" so that only what a test sets is drawn.
void no_diagonals(automap_model& model) {
    for (int c = 0; c < automap_grid_size; c += 2)
        for (int r = 0; r < automap_grid_size; r += 2) model.cell(c, r).edge = 4 | (4 << 16);
}

TEST(AutomapPainter, CornerBlendInQuarters) {
    automap_model model;
    no_diagonals(model);
    put_room(model, 1, 1, 31);  // white
    put_room(model, 3, 1, 23);  // black
    put_room(model, 1, 3, 3);   // green
    put_room(model, 3, 3, 18);  // navy 0x000080
    const int s = 11, h = s / 2;
    const automap_canvas map = render(model, s);
    // Down each side in quarters truncated toward 0, then across in quarters.
    EXPECT_EQ(map.pixel(2 * s + h, 2 * s + h), zorn_rgb(144, 192, 152));
    EXPECT_EQ(map.pixel(2 * s + h + 2, 2 * s + h), zorn_rgb(48, 66, 72));
    EXPECT_EQ(map.pixel(2 * s + h, 2 * s + h + 2), zorn_rgb(50, 192, 73));
    EXPECT_EQ(map.pixel(2 * s + h + 2, 2 * s + h + 2), zorn_rgb(18, 66, 87));
    // No blend towards the outside: the grid's edge rows stay black beyond the rooms.
    EXPECT_EQ(map.pixel(s - h - 1, s), zorn_rgb(0, 0, 0));
}

TEST(AutomapPainter, TerrainTable) {
    const struct {
        int index;
        zorn_rgb base, dark, bright;
    } rows[] = {
        {0, {64, 64, 64}, {54, 54, 54}, {76, 76, 76}},
        {2, {128, 90, 34}, {108, 76, 28}, {153, 108, 40}},
        {19, {0, 240, 240}, {0, 192, 240}, {128, 255, 255}},
        {24, {216, 216, 216}, {192, 255, 255}, {216, 255, 255}},
        {25, {255, 32, 0}, {224, 0, 0}, {255, 160, 0}},
        {31, {255, 255, 255}, {216, 216, 216}, {255, 255, 255}},
        {23, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}},
        {34, {0, 96, 0}, {0, 81, 0}, {0, 115, 0}},
        {35, {64, 64, 64}, {54, 54, 54}, {76, 76, 76}},
        {-1, {64, 64, 64}, {54, 54, 54}, {76, 76, 76}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.index);
        const automap_terrain_colors c = automap_terrain(row.index);
        EXPECT_EQ(c.base, row.base);
        EXPECT_EQ(c.dark, row.dark);
        EXPECT_EQ(c.bright, row.bright);
    }
}

int count_color(const automap_canvas& map, const zorn_rgb& color) {
    int n = 0;
    for (int y = 0; y < map.height(); y++)
        for (int x = 0; x < map.width(); x++) n += map.pixel(x, y) == color;
    return n;
}

TEST(AutomapPainter, SpeckleCountAtTheSmallestSize) {
    automap_model model;
    no_diagonals(model);
    put_room(model, 11, 11, 10);
    const automap_canvas map = render(model, 5);
    // w = 7: 49 / 32 = one bright and one dark pixel.
    const automap_terrain_colors c = automap_terrain(10);
    EXPECT_EQ(count_color(map, c.bright) + count_color(map, c.dark), 2);
}

TEST(AutomapPainter, RoadsJoinUnlessAWallStandsBetween) {
    const zorn_rgb core(92, 51, 23), rim(131, 90, 34);
    const struct {
        int edge;
        int flags_west, flags_east;
        bool core_seen, rim_seen;
    } rows[] = {
        {0, 2, 2, true, true}, {1, 2, 2, true, true}, {2, 2, 2, true, true}, {3, 2, 2, true, true},
        {4, 2, 2, false, false}, {1, 2, 4, true, false}, {1, 4, 4, true, false}, {1, 2, 0, false, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.edge) + " " + std::to_string(row.flags_west) + " " + std::to_string(row.flags_east));
        automap_model model;
    no_diagonals(model);
        put_room(model, 9, 11, 23, row.flags_west, 5);
        put_room(model, 11, 11, 23, row.flags_east, 9);
        model.cell(10, 11).edge = row.edge;
        const automap_canvas map = render(model, 11);
        EXPECT_EQ(count_color(map, core) > 0, row.core_seen);
        EXPECT_EQ(count_color(map, rim) > 0, row.rim_seen);
    }
}

TEST(AutomapPainter, AStarIgnoresTheChevronBits) {
    automap_model star, both, plain;
    for (automap_model* m : {&star, &both, &plain}) no_diagonals(*m);
    put_room(star, 11, 11, 31, 1);
    put_room(both, 11, 11, 31, 1 | 8 | 16);
    put_room(plain, 11, 11, 31, 8 | 16);
    EXPECT_TRUE(render(star, 11) == render(both, 11));
    EXPECT_FALSE(render(plain, 11) == render(both, 11));
}

automap_canvas view_of(const automap_model& model, const automap_view_state& state) {
    const int s = model.cell_size;
    const automap_canvas map = render(model, s);
    automap_canvas view(automap_view_size(s), automap_view_size(s));
    automap_compose_view(model, map, state, view);
    return view;
}

TEST(AutomapPainter, MarkerContrastsWithThePlayersRoom) {
    const struct {
        int terrain;  // -99: no room
        zorn_rgb marker;
    } rows[] = {{31, {0, 0, 0}}, {24, {0, 0, 0}}, {2, {255, 255, 255}}, {25, {0, 255, 255}}, {-99, {255, 255, 255}}};
    automap_view_state state;
    state.logged_in = true;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.terrain);
        automap_model model;
    no_diagonals(model);
        model.cell_size = 11;
        if (row.terrain != -99) put_room(model, 11, 11, row.terrain);
        const automap_canvas view = view_of(model, state);
        const int m = view.width() / 2, e = 11 / 2;
        const int points[4][2] = {{m, m - e}, {m + e, m}, {m, m + e - 1}, {m - e + 1, m}};
        for (const auto& p : points) EXPECT_EQ(view.pixel(p[0], p[1]), row.marker) << p[0] << "," << p[1];
    }
}

TEST(AutomapPainter, ViewCopiesTheMapAtTheScrollOffset) {
    automap_model model;
    load_fixture(model);
    model.cell_size = 15;
    const automap_canvas map = render(model, 15);
    automap_view_state state;
    state.logged_in = true;
    automap_canvas view(273, 273);
    const int m = 136, half = automap_map_size(15) / 2;
    for (const int scroll : {0, 30, -17}) {
        model.scroll_x = scroll;
        model.scroll_y = -scroll;
        automap_compose_view(model, map, state, view);
        // A corner away from the marker shows the map's pixel at the offset.
        const int x0 = -(scroll + half - m) - 1, y0 = -(half - m - scroll) - 1;
        EXPECT_EQ(view.pixel(10, 10), map.pixel(10 - x0, 10 - y0)) << scroll;
    }
    state.logged_in = false;
    automap_compose_view(model, map, state, view);
    EXPECT_EQ(count_color(view, zorn_rgb()), 273 * 273) << "not logged in: black";
}

TEST(AutomapPainter, LevelChangeShowsThreeSquares) {
    automap_model model;
    load_fixture(model);
    model.cell_size = 11;
    model.level_kind = 1;
    model.level_step = 2;
    automap_view_state state;
    state.logged_in = true;
    const automap_canvas view = view_of(model, state);
    const int m = 100, d = 22;
    for (int k = 0; k < 3; k++) EXPECT_EQ(view.pixel(m - d + k, m), zorn_rgb(255, 255, 255)) << k;
    EXPECT_EQ(view.pixel(m - d + 3, m), zorn_rgb(0, 0, 0));
    EXPECT_EQ(view.pixel(m, m), zorn_rgb(0, 0, 0)) << "no map, no marker";
    EXPECT_EQ(count_color(view, zorn_rgb(255, 255, 255)), 4 * (2 * d) + 4 * (2 * d - 2) + 4 * (2 * d - 4));
}

TEST(AutomapPainter, CompassButtonsShowExitsAndHover) {
    automap_model model;
    no_diagonals(model);
    model.cell_size = 11;
    automap_view_state state;
    state.logged_in = true;
    state.mouse_inside = true;
    // The "N" arrow stands at (100, 18) in a view of 201; (100, 24) lies in its shaft.
    const struct {
        int mask, hover;
        zorn_rgb fill;
    } rows[] = {{1, 7, {64, 160, 64}}, {1, 0, {32, 64, 32}}, {0, 7, {64, 32, 32}}, {0, 1, {32, 32, 32}}, {1022, 0, {32, 32, 32}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.mask) + " " + std::to_string(row.hover));
        model.exits_mask = row.mask;
        state.hover_direction = row.hover;
        EXPECT_EQ(view_of(model, state).pixel(100, 24), row.fill);
    }
    state.mouse_inside = false;
    EXPECT_EQ(view_of(model, state).pixel(100, 24), zorn_rgb(0, 0, 0)) << "no compass without the mouse";
}

TEST(AutomapPainter, ArrowPoints) {
    int points[14];
    automap_arrow_points(16, 0, points);
    const int up[14] = {0, -16, 16, 0, 8, 0, 8, 12, -8, 12, -8, 0, -16, 0};
    EXPECT_TRUE(std::equal(points, points + 14, up));
    automap_arrow_points(16, 90, points);
    const int right[14] = {16, 0, 0, 16, 0, 8, -12, 8, -12, -8, 0, -8, 0, -16};
    EXPECT_TRUE(std::equal(points, points + 14, right));
}

TEST(AutomapPainter, DirectionUnderTheMouse) {
    // A view of 201 (cell size 11): corners for up and down, a dead centre square, eight sectors.
    const struct {
        int x, y, direction;
    } rows[] = {
        {100, 100, 0}, {112, 112, 0}, {88, 88, 0}, {113, 100, 1}, {200, 0, 10}, {170, 32, 10}, {170, 33, 8},
        {200, 200, 9}, {168, 168, 9}, {167, 167, 2}, {100, 10, 7}, {30, 100, 5}, {100, 190, 3}, {160, 40, 8},
        {40, 40, 6}, {40, 160, 4}, {160, 160, 2}, {190, 100, 1}, {150, 120, 1}, {150, 130, 2},
    };
    for (const auto& row : rows)
        EXPECT_EQ(automap_direction_at(row.x, row.y, 201, 11), row.direction) << row.x << "," << row.y;
    const char* words[] = {nullptr, "east", "southeast", "south", "southwest", "west", "northwest", "north", "northeast",
                           "down", "up", nullptr};
    for (int d = 0; d <= 11; d++) EXPECT_STREQ(automap_direction_word(d), words[d]) << d;
}

}  // namespace
