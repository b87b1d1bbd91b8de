// The test world's map blocks, decoded by the client's decoder: well formed, and saying what the
// world's rooms, exits and doors are.
#include <gtest/gtest.h>

#include "automap/automap_model.h"
#include "testworld/map_area.h"
#include "tests/support/log_capture.h"

namespace {

void decode(automap_model& model, const std::string& block) {
    model.cell_size = 11;
    model.display_socket_data(block.data(), static_cast<int>(block.size()));
}

constexpr int square = testworld::map_village_offset + 1;  // the village square, in land rooms

TEST(AutomapWorld, BlocksAreWellFormed) {
    log_capture capture(2);
    for (int level = 0; level <= 1; level++) {
        for (int y = 0; y < testworld::map_area_size; y++) {
            for (int x = 0; x < testworld::map_area_size; x++) {
                const std::string block = testworld::map_block(x, y, level, 'B', 'A');
                EXPECT_LT(block.size(), 1100u);
                EXPECT_EQ(block.find(';'), std::string::npos) << "a tag's data holds no semicolon";
                automap_model model;
                decode(model, block);
                EXPECT_EQ(model.level_kind, 1);
                EXPECT_EQ(model.scroll_x, -22);
            }
        }
    }
    EXPECT_EQ(capture.text(), "") << "no bogus characters";
}

TEST(AutomapWorld, TheVillageAndItsGates) {
    automap_model model;
    decode(model, testworld::map_block(square, square, 0, '@', 0));
    const automap_cell& player = model.cell(11, 11);
    EXPECT_NE(player.seed, 0);
    EXPECT_EQ(player.terrain, 10);
    EXPECT_EQ(player.flags, 2) << "the road runs through the square";
    // Open to all eight neighbours inside the village.
    EXPECT_EQ(model.cell(11, 10).edge, 1);
    EXPECT_EQ(model.cell(12, 11).edge, 1);
    EXPECT_EQ(model.cell(12, 12).edge, 1 | (1 << 16));
    // The village wall, its green north gate and red south and east gates.
    EXPECT_EQ(model.cell(8, 11).edge, 4) << "west of the smithy";
    EXPECT_EQ(model.cell(11, 8).edge, 2) << "north of North Road";
    EXPECT_EQ(model.cell(11, 14).edge, 3) << "south of South Gate";
    EXPECT_EQ(model.cell(14, 11).edge, 3) << "east of Market Row";
    EXPECT_EQ(model.cell(8, 8).edge & 63, 4) << "no diagonal out of the village";
    // Star and chevrons.
    EXPECT_EQ(model.cell(9, 9).flags, 1) << "the old watchtower";
    EXPECT_EQ(model.cell(13, 13).flags, 24) << "the chapel garden";
    // Many terrains round it.
    bool seen[64] = {};
    int kinds = 0;
    for (int c = 1; c < 23; c += 2)
        for (int r = 1; r < 23; r += 2)
            if (model.cell(c, r).seed && !seen[model.cell(c, r).terrain]) kinds += seen[model.cell(c, r).terrain] = true;
    EXPECT_GE(kinds, 30);
}

TEST(AutomapWorld, TheUpperLevelIsOneRoom) {
    automap_model model;
    decode(model, testworld::map_block(0, 0, 1, '@', 'A'));
    int rooms = 0;
    for (int c = 1; c < 23; c += 2)
        for (int r = 1; r < 23; r += 2) rooms += model.cell(c, r).seed != 0;
    EXPECT_EQ(rooms, 1);
    EXPECT_NE(model.cell(11, 11).seed, 0);
    EXPECT_EQ(model.cell(11, 10).edge, 4);
    EXPECT_EQ(model.level_step, 1);
}

}  // namespace
