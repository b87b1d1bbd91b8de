#pragma once
// A corpus of game text as the server sends it: room descriptions, coloured chat, combat lines,
// tables with tabs, long unbroken lines, CR LF line ends and now and then a Windows-1252 byte.
// Made from a fixed seed, so every run measures the same bytes.

#include <cstddef>
#include <string>

// At least `bytes` bytes of server text, ending at a line end.
std::string make_game_corpus(size_t bytes, unsigned seed = 1);
