#pragma once
// Where every panel of the main frame goes, worked out from the client size and the settings.
// No sizer takes part; the frame applies the result with SetSize, set_rect and show.

struct layout_settings {
    int current_layout = 0;  // 0 embedded, 1 left top, 2 left bottom
    int group_status_display = 0;
    bool automap_docked = true;
    bool automap_display = false;
    bool direction_button_enable = false;
    bool hint_button_enable = false;
    bool fkey_button_display = false;
    bool popup_display = false;
    bool status_bar = false;
    bool hpbar_enable = false;
    bool exp_display = false;
    bool enemy_hpbar_enable = false;
    int input_height = 48;
    bool channel_window_enable = false;
    int channel_window_height = 25;  // percent of the height above the status display
};

struct layout_inputs {
    int width = 0;
    int height = 0;
    layout_settings settings;
    bool logged_in = false;
    int automap_width = 0;  // the automap's own size
    int automap_height = 0;
    int group_required_height = 0;
};

struct layout_rect {
    int x = 0, y = 0, width = 1, height = 1;
    bool placed = false;  // false: the panel keeps its old place
    bool shown = false;
};

struct layout_result {
    layout_rect direction_buttons, hint_buttons;
    layout_rect automap;        // placed only in layouts 1 and 2 when docked and displayed
    layout_rect group_display;  // placed only in layouts 1 and 2 when on
    layout_rect fkey_row, popup_row;
    layout_rect status_bar, input_window, status_display, channel_window, main_display;
    int left = 0, right = 0;  // the text column
};

constexpr int layout_button_column_width = 97;
constexpr int layout_direction_block_height = 130;
constexpr int layout_button_row_height = 46;
constexpr int layout_fkey_row_width = layout_button_row_height * 8 - 10;
constexpr int layout_status_bar_height = 21;
constexpr int layout_status_row_height = 21;
constexpr int layout_left_column_width = 160;

layout_result compute_layout(const layout_inputs& in);
