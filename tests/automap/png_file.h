#pragma once
// Reference pictures as PNG files, written and read without a toolkit: 8-bit RGB, one IDAT,
// every row with filter 0. Reading takes only files of that form (those this writer made).

#include <string>
#include <vector>

bool write_png_rgb(const std::string& path, int width, int height, const std::vector<unsigned char>& rgb);
bool read_png_rgb(const std::string& path, int* width, int* height, std::vector<unsigned char>* rgb);
