#include "tests/automap/png_file.h"

#include <zlib.h>

#include <cstring>
#include <fstream>
#include <iterator>

namespace {

const unsigned char signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};

void put32(std::string& out, unsigned long v) {
    for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>((v >> shift) & 255);
}

unsigned long get32(const unsigned char* p) {
    return (static_cast<unsigned long>(p[0]) << 24) | (p[1] << 16) | (p[2] << 8) | p[3];
}

void chunk(std::string& out, const char* type, const std::string& data) {
    put32(out, data.size());
    const std::string body = std::string(type, 4) + data;
    out += body;
    put32(out, crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size())));
}

}  // namespace

bool write_png_rgb(const std::string& path, int width, int height, const std::vector<unsigned char>& rgb) {
    std::string raw;
    for (int y = 0; y < height; y++) {
        raw += '\0';
        raw.append(reinterpret_cast<const char*>(&rgb[static_cast<size_t>(y) * width * 3]), static_cast<size_t>(width) * 3);
    }
    uLongf packed_size = compressBound(raw.size());
    std::string packed(packed_size, '\0');
    if (compress2(reinterpret_cast<Bytef*>(&packed[0]), &packed_size, reinterpret_cast<const Bytef*>(raw.data()),
                  raw.size(), 9) != Z_OK)
        return false;
    packed.resize(packed_size);
    std::string header;
    put32(header, width);
    put32(header, height);
    header += std::string("\x08\x02\x00\x00\x00", 5);
    std::string file(reinterpret_cast<const char*>(signature), 8);
    chunk(file, "IHDR", header);
    chunk(file, "IDAT", packed);
    chunk(file, "IEND", "");
    std::ofstream out(path, std::ios::binary);
    out.write(file.data(), static_cast<std::streamsize>(file.size()));
    return static_cast<bool>(out);
}

bool read_png_rgb(const std::string& path, int* width, int* height, std::vector<unsigned char>* rgb) {
    std::ifstream in(path, std::ios::binary);
    const std::string file((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const unsigned char* p = reinterpret_cast<const unsigned char*>(file.data());
    if (file.size() < 33 || std::memcmp(p, signature, 8) != 0) return false;
    std::string packed;
    size_t at = 8;
    while (at + 12 <= file.size()) {
        const unsigned long length = get32(p + at);
        if (at + 12 + length > file.size()) return false;
        const std::string type(file, at + 4, 4);
        if (type == "IHDR") {
            *width = static_cast<int>(get32(p + at + 8));
            *height = static_cast<int>(get32(p + at + 12));
            if (p[at + 16] != 8 || p[at + 17] != 2) return false;
        } else if (type == "IDAT") {
            packed.append(file, at + 8, length);
        }
        at += 12 + length;
    }
    const size_t row = static_cast<size_t>(*width) * 3 + 1;
    std::string raw(row * *height, '\0');
    uLongf raw_size = raw.size();
    if (uncompress(reinterpret_cast<Bytef*>(&raw[0]), &raw_size, reinterpret_cast<const Bytef*>(packed.data()),
                   packed.size()) != Z_OK ||
        raw_size != raw.size())
        return false;
    rgb->clear();
    for (int y = 0; y < *height; y++) {
        if (raw[y * row] != 0) return false;
        rgb->insert(rgb->end(), raw.begin() + static_cast<long>(y * row + 1), raw.begin() + static_cast<long>((y + 1) * row));
    }
    return true;
}
