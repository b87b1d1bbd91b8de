#pragma once
// Finding the web link under a clicked offset of one display line. Pure text work, no window.

// Finds the link that covers offset in text[0, length). On success *first and *last are the
// offsets of its first and last byte (both included). Brackets that enclose the link and
// punctuation that ends a sentence are left out; a bracket that belongs to the link stays.
bool find_url_in_text(const char* text, int length, int offset, int* first, int* last);
