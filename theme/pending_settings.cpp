#include "theme/pending_settings.h"

#include <cstring>

namespace {

struct setting_default {
    const char* key;
    int value;
};

// Defaults of a fresh character record, and the system file's audio switch.
constexpr setting_default defaults[] = {
    {"font_size", 10},
    {"keypad_walking", 1},
    {"url_hotlinking", 1},
    {"compact_mode", 0},
    {"cmd_pushthrough", 0},
    {"local_echo", 1},
    {"cmd_separator", 1},
    {"direction_button_enable", 0},
    {"hint_button_enable", 1},
    {"fkey_button_display", 0},
    {"status_bar", 1},
    {"sky_bar", 1},
    {"exp_display", 1},
    {"hpbar_enable", 1},
    {"enemy_hpbar_enable", 1},
    {"popup_display", 1},
    {"mw_scrollbar_enable", 1},
    {"locking_scrollback_enable", 0},
    {"group_status_display", 1},
    {"group_status_inverted_bars", 1},
    {"current_layout", 2},
    {"current_theme", 1},
    {"current_background_theme", 2},
    {"font_colors_setting", 0},
    {"theme_bg_setting", 3},
    {"automap_docked", 1},
    {"automap_display", 1},
    {"automap_size", 11},
    {"input_height", 48},
    {"channel_window_enable", 0},
    {"channel_window_height", 25},
    {"channel_window_dupe", 1},
    {"colorflash_enable", 1},
    {"system_audio_enable", 1},
};

}  // namespace

int zorn_pending_setting(const char* key) {
    if (!key) return 0;
    for (const auto& d : defaults)
        if (std::strcmp(d.key, key) == 0) return d.value;
    return 0;
}
