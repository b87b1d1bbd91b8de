#include "tests/automap/automap_test_support.h"

#include <cstdlib>
#include <fstream>

#include "testworld/map_area.h"

std::string expand_repeats(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); i++) {
        const size_t colon = text.find(':', i);
        const size_t close = text.find('}', i);
        if (text[i] == '{' && colon != std::string::npos && close != std::string::npos && colon < close) {
            const int count = std::atoi(text.substr(i + 1, colon - i - 1).c_str());
            for (int k = 0; k < count; k++) out += text.substr(colon + 1, close - colon - 1);
            i = close;
        } else {
            out += text[i];
        }
    }
    return out;
}

std::string fixture_block() {
    std::ifstream in(std::string(LANTERN_SOURCE_DIR) + "/tests/automap/fixture_map.txt");
    std::string block, line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        block += line + "\n";
    }
    return block;
}

std::string testworld_block(int x, int y, int level, char direction, char trailer) {
    return testworld::map_block(x, y, level, direction, trailer);
}
