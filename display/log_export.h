#pragma once
// Saving what a display has shown since it was last cleared, from its history of render records
// (never from the wrapped lines, so the window's width at the time doesn't matter): as a web page
// with one span per record, or as the plain text stream. The writers themselves are
// zorn_ansi_model::export_html and export_text.

#include <string>

class zorn_ansi_model;

// The style class of a record: "white", "red", ... by colour code (0 is white), with "b" in front
// for the bright attribute and "d" for dim; blink and inverse add nothing. An unknown colour code
// gives "bogus", which has no style line, and a log line.
const char* render_get_html_color(int color, int attributes);

// The save dialog's work once it has answered OK: the path is cleaned as typed text is, the file
// opened ("wb", replacing it), filter 0 writes the web page and any other the plain text. Answers
// whether the file was written, and in message the text for the player, which the caller prints
// after the writer ran so that it isn't in the file it talks about.
bool zorn_save_logfile(zorn_ansi_model* display, const char* path, int filter_index, std::string* message);
