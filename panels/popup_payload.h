#pragma once
// The payload of "window_create", free of any window: five lines (name, title, size in characters,
// the command sent when the window opens, flags), each cut at 5999 bytes. A payload that ends
// before its fifth line is refused with the message of the first missing line.

#include <string>

struct zorn_popup_description {
    std::string name;
    std::string title;
    int columns = 0;
    int rows = 0;
    std::string command;  // at most 399 characters
    bool noscroll = false;
    bool nowrap = false;
    bool menuonly = false;
};

// Longest command a popup window keeps.
constexpr int zorn_popup_command_limit = 399;

// True with *out filled; false with the log line of the missing part in *error (when given).
bool zorn_parse_window_create(const char* payload, zorn_popup_description* out, const char** error = nullptr);
