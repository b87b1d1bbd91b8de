#pragma once
// Blocks the automap tests share: the "{N:TEXT}" repeats of the case files, the fixture map that
// holds every terrain, edge value, door, road and mark, and the test world's blocks.

#include <string>

// "{N:TEXT}" becomes TEXT N times.
std::string expand_repeats(const std::string& text);
// tests/automap/fixture_map.txt as one block (line feeds kept, the file's comments dropped).
std::string fixture_block();
std::string testworld_block(int x, int y, int level, char direction, char trailer);
