// What the player sees of the main display in the real frame, driven through the X server: paging
// back and forth with the keys, the wheel and the scrollbar's thumb must bring older text onto the
// screen at every step, and a character's palette colours the text that follows its login.
#include <gtest/gtest.h>

#include <wx/dcclient.h>
#include <wx/dcmemory.h>
#include <wx/scrolbar.h>
#include <wx/uiaction.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>

#include "app/main_frame.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "display/ansi_palette.h"
#include "input/input_window.h"
#include "tests/app/offline_frame.h"
#include "tests/support/gui_main.h"
#include "tests/support/screen.h"
#include "theme/builtin_images.h"
#include "theme/font.h"
#include "theme/theme.h"

namespace {

// What the window would show if it were painted now from its state.
wxImage fresh_picture(zorn_embedded_window* window) {
    zorn_bitmap bitmap(window->GetSize().GetWidth(), window->GetSize().GetHeight());
    window->repaint_internal(bitmap);
    return bitmap.ConvertToImage();
}

class FrameView : public ::testing::Test {
protected:
    void SetUp() override {
        dir = offline_settings("view");
        ASSERT_FALSE(dir.empty());
    }
    void TearDown() override {
        if (frame) {
            frame->Destroy();
            pump_for(30);
        }
        zorn_select_palette(0);
        std::system(("rm -rf '" + dir + "'").c_str());
    }
    void make_frame() {
        frame = make_offline_frame();
    }
    void server(const std::string& bytes) {
        frame->begin_block();
        frame->process_socket_data(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
        frame->end_block();
    }
    zorn_textctrl* text() const { return frame->main_display->textctrl; }
    // The pointer over the line editor, so that keys reach it (no window manager gives focus).
    void point_at_editor() {
        zorn_line_edit& editor = frame->input_window->line_edit;
        editor.SetFocus();
        keys.MouseMove(editor.GetScreenRect().GetPosition() + wxPoint(8, editor.GetSize().GetHeight() / 2));
        pump_for(20);
    }
    // Runs the action and waits until the screen shows the view it moved to: the view must have
    // moved, and the screen must match a fresh picture of it and differ from what it showed before.
    void expect_view_moves(const char* what, const std::function<void()>& action) {
        SCOPED_TRACE(what);
        const int before = text()->model.scroll_line;
        const wxImage previous = screen_of(text());
        action();
        const bool shown = pump_until(
            [&] { return text()->model.scroll_line != before && same_pixels(screen_of(text()), fresh_picture(text())); },
            3000);
        EXPECT_TRUE(shown) << "line " << before << " -> " << text()->model.scroll_line << ": the screen is stale";
        EXPECT_FALSE(same_pixels(screen_of(text()), previous));
    }
    void fill_400_lines() {
        std::string lines;
        for (int i = 1; i <= 400; ++i) lines += "numbered line " + std::to_string(i) + " of the scrollback\n";
        server(lines);
        ASSERT_TRUE(pump_until([&] { return same_pixels(screen_of(text()), fresh_picture(text())); }));
    }

    wxUIActionSimulator keys;
    zorn_mw* frame = nullptr;
    std::string dir;
};

}  // namespace

TEST_F(FrameView, PagingBackAndForthShowsEveryStep) {
    make_frame();
    fill_400_lines();
    point_at_editor();
    for (int i = 0; i < 3; ++i) expect_view_moves("Page Up", [&] { keys.Char(WXK_PAGEUP); });
    EXPECT_FALSE(frame->main_display->is_following());
    expect_view_moves("Page Down", [&] { keys.Char(WXK_PAGEDOWN); });
}

TEST_F(FrameView, WheelNotchesOverTheTextShowEveryStep) {
    make_frame();
    fill_400_lines();
    const wxPoint centre = text()->GetScreenRect().GetPosition() + wxPoint(100, 100);
    keys.MouseMove(centre);
    pump_for(20);
    // Button 4 is a notch up, 5 a notch down, as a real mouse sends them.
    const auto notch = [&](int button) {
        return [button] { std::system(("xdotool click " + std::to_string(button)).c_str()); };
    };
    for (int i = 0; i < 3; ++i) expect_view_moves("notch up", notch(4));
    expect_view_moves("notch down", notch(5));
}

TEST_F(FrameView, DraggingTheThumbShowsWhereItStops) {
    make_frame();
    fill_400_lines();
    wxScrollBar* bar = frame->main_display->scrollbar;
    const wxRect rect = bar->GetScreenRect();
    const int x = rect.x + rect.width / 2;
    // The thumb sits at the bottom while the view follows; drag it up the trough in steps.
    expect_view_moves("drag to the middle", [&] {
        keys.MouseMove(x, rect.GetBottom() - 4);
        keys.MouseDown();
        keys.MouseMove(x, rect.y + rect.height / 2);
    });
    expect_view_moves("drag further up", [&] { keys.MouseMove(x, rect.y + rect.height / 4); });
    expect_view_moves("drag back down", [&] { keys.MouseMove(x, rect.y + rect.height / 3); });
    keys.MouseUp();
    pump_for(30);
    EXPECT_FALSE(frame->main_display->is_following());
}

// A character who chose the bright palette gets it at login, before a menu is touched: the red of
// the next line is the bright palette's red.
TEST_F(FrameView, StoredPaletteColoursTextAfterLogin) {
    ASSERT_EQ(std::system(("mkdir -p '" + dir + "/char_configs'").c_str()), 0);
    std::ofstream(dir + "/char_configs/Aria.cfg")
        << "<single_config>\n  <name>Aria</name>\n  <font_colors_setting>1</font_colors_setting>\n</single_config>\n";
    make_frame();
    server(";slogin;Aria;elogin;");
    ASSERT_EQ(LConfig::instance().get_font_colors_setting(), 1);
    server("\x1b[31m################\n");

    const zorn_rgb bright_red = zorn_palette_color(zorn_ansi_palettes[1], zorn_ansi_red, 0);
    ASSERT_NE(bright_red, zorn_palette_color(zorn_ansi_palettes[0], zorn_ansi_red, 0));
    ASSERT_TRUE(pump_until([&] { return same_pixels(screen_of(text()), fresh_picture(text())); }));
    // The fullest pixel of the line's row is a glyph pixel drawn at full coverage in the text colour.
    const wxImage screen = screen_of(text());
    int line_height = 0;
    text()->get_max_char_size(nullptr, &line_height);
    const int top = text()->GetSize().GetHeight() - 1 - 2 * line_height;  // the red line, above the empty last one
    int best = -1;
    zorn_rgb brightest;
    for (int y = top; y < top + line_height; ++y)
        for (int x = 1; x < 200; ++x) {
            const int sum = screen.GetRed(x, y) + screen.GetGreen(x, y) + screen.GetBlue(x, y);
            if (sum > best) best = sum, brightest = zorn_rgb(screen.GetRed(x, y), screen.GetGreen(x, y), screen.GetBlue(x, y));
        }
    // Full coverage is 255 of 256: the colour itself, or one below it.
    for (const auto& [seen, wanted] : {std::pair{brightest.red, bright_red.red}, std::pair{brightest.green, bright_red.green},
                                       std::pair{brightest.blue, bright_red.blue}})
        EXPECT_NEAR(seen, wanted, 1) << "bright red is " << bright_red.red << "," << bright_red.green << "," << bright_red.blue;
}

TEST_F(FrameView, ChoosingFontColorsChangesOnlyLaterTextAndSaysSo) {
    if (!LConfig::instance().current()) LConfig::instance().setup_default_config(nullptr);
    LConfig::instance().set_font_colors_setting(0);
    make_frame();
    server("\x1b[31mbefore\n");
    frame->choose_font_colors(2);
    EXPECT_EQ(LConfig::instance().get_font_colors_setting(), 2);
    EXPECT_EQ(zorn_current_palette, &zorn_ansi_palettes[2]);
    const std::string shown = text()->model.raw_text();
    EXPECT_NE(shown.find("\n\nFuture text will now use ZMud-style ansi colors.\n\n"), std::string::npos);
    server("\x1b[31mafter\n");
    const zorn_rgb old_red = zorn_palette_color(zorn_ansi_palettes[0], zorn_ansi_red, 0);
    const zorn_rgb new_red = zorn_palette_color(zorn_ansi_palettes[2], zorn_ansi_red, 0);
    const auto color_of = [&](const char* word) {
        for (int line = 0; line < text()->model.line_count(); ++line)
            for (const auto& chunk : text()->model.line_chunks(line))
                if (chunk.text.find(word) != std::string::npos) return chunk.color;
        return zorn_rgb(1, 2, 3);
    };
    EXPECT_EQ(color_of("before"), old_red);
    EXPECT_EQ(color_of("after"), new_red);
}
