// Compares two raw 8-bit RGB images of one size with a per-channel tolerance, skipping masked
// rectangles. Prints the first bad pixel (reading order) and the count; exit 0 same, 1 differ,
// 2 usage or read error.
//
//   image_compare WIDTH HEIGHT TOLERANCE ACTUAL.rgb EXPECTED.rgb [MASK_FILE]
//
// A mask file holds one rectangle per line, "x y width height", with "#" comments.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct rect {
    int x, y, width, height;
    bool contains(int px, int py) const { return px >= x && py >= y && px < x + width && py < y + height; }
};

bool read_file(const char* path, size_t size, std::vector<unsigned char>* out) {
    std::ifstream in(path, std::ios::binary);
    out->assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    if (out->size() != size) {
        std::fprintf(stderr, "%s: %zu bytes, expected %zu\n", path, out->size(), size);
        return false;
    }
    return true;
}

std::vector<rect> read_mask(const char* path) {
    std::vector<rect> out;
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        line = line.substr(0, line.find('#'));
        std::istringstream fields(line);
        rect r{};
        if (fields >> r.x >> r.y >> r.width >> r.height) out.push_back(r);
    }
    return out;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 6) {
        std::fprintf(stderr, "usage: %s WIDTH HEIGHT TOLERANCE ACTUAL.rgb EXPECTED.rgb [MASK]\n", argv[0]);
        return 2;
    }
    const int width = std::atoi(argv[1]), height = std::atoi(argv[2]), tolerance = std::atoi(argv[3]);
    const size_t size = (size_t)width * height * 3;
    std::vector<unsigned char> actual, expected;
    if (width <= 0 || height <= 0 || !read_file(argv[4], size, &actual) || !read_file(argv[5], size, &expected))
        return 2;
    const std::vector<rect> mask = argc > 6 ? read_mask(argv[6]) : std::vector<rect>();
    long bad = 0;
    for (int y = 0; y < height; y++) {
        for (int x = 0; x < width; x++) {
            bool masked = false;
            for (const rect& r : mask) masked = masked || r.contains(x, y);
            if (masked) continue;
            const unsigned char* a = &actual[((size_t)y * width + x) * 3];
            const unsigned char* e = &expected[((size_t)y * width + x) * 3];
            bool differs = false;
            for (int c = 0; c < 3; c++) differs = differs || std::abs(a[c] - e[c]) > tolerance;
            if (!differs) continue;
            if (bad == 0)
                std::printf("first bad pixel at %d,%d: got %d,%d,%d, expected %d,%d,%d (tolerance %d)\n", x, y, a[0],
                            a[1], a[2], e[0], e[1], e[2], tolerance);
            bad++;
        }
    }
    if (bad) std::printf("%ld pixels differ\n", bad);
    return bad ? 1 : 0;
}
