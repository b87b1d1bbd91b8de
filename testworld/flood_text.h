#pragma once
// Flood text: game text as the server sends it (coloured room descriptions, chat, combat, tables
// with tabs, long unbroken lines, doubled semicolons, now and then a Windows-1252 byte), with every
// line numbered so a reader can prove that all of it arrived, in order. Made from a seed, so every
// run sends the same bytes.
//
// Each line, with its colour codes taken away, reads "NNNNNNN " (seven digits, counting from 0),
// then the text, then " ~N" (the number again, without leading zeros), then CR LF.

#include <cstddef>
#include <string>

namespace testworld {

// At least `bytes` bytes of whole lines.
std::string make_flood_text(size_t bytes, unsigned seed = 1);

// The number of lines in text made by make_flood_text.
size_t count_flood_lines(const std::string& flood);

// Checks text as a display shows it (colour codes gone, line feeds kept, carriage returns dropped
// or kept) for numbered lines 0 to expected_lines - 1, each once, whole and in order. Lines without
// a number are other text and are passed over. False with the first fault in *problem.
bool check_flood_lines(const std::string& shown, size_t expected_lines, std::string* problem);

}  // namespace testworld
