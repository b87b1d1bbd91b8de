#include "app/layout.h"

#include <algorithm>

namespace {

layout_rect place(int x, int y, int width, int height, bool shown = true) {
    // A panel never gets a side below 1, however small the window.
    return {x, y, std::max(width, 1), std::max(height, 1), true, shown};
}

// The right button column; gives the right limit of the text column.
int place_button_column(const layout_inputs& in, layout_result& out) {
    const layout_settings& s = in.settings;
    out.direction_buttons.shown = s.direction_button_enable;
    out.hint_buttons.shown = s.hint_button_enable;
    if (!s.direction_button_enable && !s.hint_button_enable) return in.width;
    const int x0 = in.width - (layout_button_column_width + 2);
    int next_y = 2;
    if (s.direction_button_enable) {
        out.direction_buttons = place(x0, 2, layout_button_column_width, layout_direction_block_height);
        next_y = layout_direction_block_height + 4;
    }
    if (s.hint_button_enable)
        out.hint_buttons = place(x0, next_y, layout_button_column_width, in.height - next_y);
    return in.width - (layout_button_column_width + 4);
}

// The left column of layouts 1 and 2; gives the left limit of the text column.
int place_left_column(const layout_inputs& in, layout_result& out) {
    const layout_settings& s = in.settings;
    if (s.current_layout != 1 && s.current_layout != 2) return 0;
    const bool map_here = s.automap_docked && s.automap_display;
    const int aw = in.automap_width, ah = in.automap_height;
    int column_width = layout_left_column_width;
    if (s.current_layout == 1) {
        int y = 2;
        if (map_here) {
            out.automap = place(2, 2, aw, ah);
            column_width = aw;
            y = ah + 12;
        }
        if (s.group_status_display) out.group_display = place(2, y, column_width, in.group_required_height);
    } else {
        int bottom;
        if (map_here) {
            out.automap = place(2, in.height - 2 - ah, aw, ah);
            column_width = aw;
            bottom = in.height - 2 - ah - 10;
        } else {
            bottom = in.height - 2 - (s.fkey_button_display || s.popup_display ? layout_button_row_height : 0);
        }
        if (s.group_status_display)
            out.group_display = place(2, bottom - in.group_required_height, column_width, in.group_required_height);
    }
    if (map_here) return aw + 4;
    return s.group_status_display ? layout_left_column_width + 4 : 0;
}

// Height of the status display: two rows only with both the enemy and the hit point bars.
int status_display_height(const layout_settings& s) {
    if (s.enemy_hpbar_enable) return s.hpbar_enable ? 2 * layout_status_row_height : layout_status_row_height;
    return s.hpbar_enable || s.exp_display ? layout_status_row_height : 0;
}

}  // namespace

layout_result compute_layout(const layout_inputs& in) {
    const layout_settings& s = in.settings;
    layout_result out;
    int right = place_button_column(in, out);
    const int left = place_left_column(in, out);
    if (right <= left) right = left + 1;
    out.left = left;
    out.right = right;

    // Rows from the bottom up.
    int y = in.height;
    if (s.fkey_button_display || s.popup_display) y = in.height - layout_button_row_height;
    int popup_x = left;
    out.fkey_row.shown = s.fkey_button_display;
    if (s.fkey_button_display) {
        out.fkey_row = place(left, y, layout_fkey_row_width, layout_button_row_height);
        popup_x = left + layout_fkey_row_width;
    }
    out.popup_row.shown = s.popup_display;
    if (s.popup_display) out.popup_row = place(popup_x, y, in.width - popup_x, layout_button_row_height);

    if (s.status_bar) {
        y -= layout_status_bar_height;
        out.status_bar = place(left, y, right - left, layout_status_bar_height);
    }
    const int column = std::max(right - left, 1);
    y -= s.input_height;
    out.input_window = place(left, y, column, s.input_height);

    if (const int height = status_display_height(s)) {
        y -= height;
        out.status_display = place(left, y, column, height);
    }

    int channel_height = 0;
    if (in.logged_in && s.channel_window_enable) {
        channel_height = std::max(s.channel_window_height * y / 100, 1);
        out.channel_window = place(left, 0, column, channel_height);
    } else {
        out.channel_window.shown = false;
    }
    out.main_display = place(left, channel_height, column, y - channel_height);
    return out;
}
