// The find strip and the split view in the real frame, driven through the X server: Ctrl-F and
// typed text light the hits on the screen, Enter and Shift-Enter move the current one, Escape
// returns to the end; while the view is scrolled back during a flood its upper part stands still
// and its lower third shows the newest text.
#include <gtest/gtest.h>

#include <wx/menu.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/uiaction.h>

#include <cstdlib>
#include <string>

#include "app/main_frame.h"
#include "app/menus.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "display/find_strip.h"
#include "input/input_window.h"
#include "tests/panels/panel_support.h"
#include "tests/app/offline_frame.h"
#include "tests/support/gui_main.h"
#include "tests/support/screen.h"
#include "theme/builtin_images.h"
#include "theme/font.h"
#include "theme/theme.h"

namespace {

wxImage fresh_picture(zorn_embedded_window* window) {
    zorn_bitmap bitmap(window->GetSize().GetWidth(), window->GetSize().GetHeight());
    window->repaint_internal(bitmap);
    return bitmap.ConvertToImage();
}

bool near(const zorn_rgb& a, const zorn_rgb& b) {
    return std::abs(a.red - b.red) <= 8 && std::abs(a.green - b.green) <= 8 && std::abs(a.blue - b.blue) <= 8;
}

class ScrollbackView : public ::testing::Test {
protected:
    void SetUp() override {
        dir = offline_settings("find");
        ASSERT_FALSE(dir.empty());
        frame = make_offline_frame();
        pump_for(50);
    }
    void TearDown() override {
        frame->Destroy();
        pump_for(30);
        std::system(("rm -rf '" + dir + "'").c_str());
    }
    void server(const std::string& bytes) {
        frame->begin_block();
        frame->process_socket_data(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
        frame->end_block();
    }
    zorn_textctrl* text() const { return frame->main_display->textctrl; }
    zorn_find_strip* strip() const { return frame->main_display->find_strip; }
    std::string count() const { return strip()->count_label->GetLabel().ToStdString(); }
    bool screen_current() const { return same_pixels(screen_of(text()), fresh_picture(text())); }
    void point_at_editor() {
        zorn_line_edit& editor = frame->input_window->line_edit;
        editor.SetFocus();
        keys.MouseMove(editor.GetScreenRect().GetPosition() + wxPoint(8, editor.GetSize().GetHeight() / 2));
        pump_for(20);
    }
    void fill(int lines) {
        std::string text;
        for (int i = 1; i <= lines; ++i) text += "numbered line " + std::to_string(i) + " of the scrollback\n";
        server(text);
    }
    // Characters that fit on one display line (all glyphs of the main font are equally wide).
    int line_capacity() const {
        const int width = text()->model.char_width['x'];
        return (text()->model.window_width() - 1) / width;
    }
    // The share of the cell of (line, offset) on the screen painted in the colour.
    double cell_share(const wxImage& screen, int line, int offset, const zorn_rgb& color) const {
        const zorn_textctrl_model& m = text()->model;
        const int y = screen.GetHeight() - 1 - m.font_height - (m.scroll_line - line) * m.font_height;
        const int x = 1 + offset * m.char_width['x'];
        int same = 0, all = 0;
        for (int dy = 0; dy < m.font_height; ++dy)
            for (int dx = 0; dx < m.char_width['x']; ++dx, ++all)
                if (y + dy >= 0 && near(image_pixel(screen, x + dx, y + dy), color)) ++same;
        return static_cast<double>(same) / all;
    }
    void open_and_type(const char* query) {
        point_at_editor();
        keys.Char('f', wxMOD_CONTROL);
        ASSERT_TRUE(pump_until([&] { return strip()->IsShown() && wxWindow::FindFocus() == strip()->box; }));
        keys.Text(query);
        ASSERT_TRUE(pump_until([&] { return strip()->box->GetValue() == query && screen_current(); }, 3000));
    }

    wxUIActionSimulator keys;
    zorn_mw* frame = nullptr;
    std::string dir;
};

}  // namespace

// Three hits, the newest cut in two by the window's edge: typing makes it current and jumps there,
// and both of its pieces light in the current colour; Enter and Shift-Enter move the light.
TEST_F(ScrollbackView, FindLightsHitsAndStepsThroughThem) {
    fill(300);
    server("A Dragon sleeps here.\nnothing\nthe second dragon\n");
    const int n = line_capacity();
    server(std::string(static_cast<size_t>(n - 3), 'x') + "DRAGON tail\n");
    fill(60);
    ASSERT_TRUE(pump_until([&] { return screen_current(); }));
    open_and_type("dragon");
    EXPECT_EQ(count(), "3 of 3");
    EXPECT_FALSE(frame->main_display->is_following());
    const int wrapped = text()->model.line_at_offset(strip()->search.hit_start(2));
    std::string first;
    text()->model.line_text(wrapped, &first);
    ASSERT_EQ(first.substr(first.size() - 3), "DRA");
    const int second = text()->model.line_at_offset(strip()->search.hit_start(1));
    wxImage screen = screen_of(text());
    expect_reference(screen, "find_hits");
    const zorn_rgb current = zorn_textctrl::search_current_background, other = zorn_textctrl::search_hit_background;
    EXPECT_GT(cell_share(screen, wrapped, n - 2, current), 0.3);   // "R" at the end of the upper piece
    EXPECT_GT(cell_share(screen, wrapped + 1, 1, current), 0.3);   // "O" at the start of the lower one
    EXPECT_GT(cell_share(screen, second, 11, other), 0.3);
    EXPECT_LT(cell_share(screen, second - 1, 3, other), 0.05);     // "nothing" stays dark

    keys.Char(WXK_RETURN);  // the next older hit
    ASSERT_TRUE(pump_until([&] { return count() == "2 of 3" && screen_current(); }));
    screen = screen_of(text());
    EXPECT_GT(cell_share(screen, second, 11, current), 0.3);
    EXPECT_GT(cell_share(screen, wrapped + 1, 1, other), 0.3);
    keys.Char(WXK_RETURN, wxMOD_SHIFT);  // and back to the newer one
    ASSERT_TRUE(pump_until([&] { return count() == "3 of 3" && screen_current(); }));

    // F3 in the find box is the player's alias, as on the command line, which leaves the scrollback.
    frame->session_state = session_logged_in;
    keys.Char(WXK_F3);
    ASSERT_TRUE(pump_until([&] { return frame->main_display->is_following(); }));
    frame->session_state = session_none;
    keys.Char(WXK_RETURN);
    ASSERT_TRUE(pump_until([&] { return !frame->main_display->is_following() && screen_current(); }));

    keys.Char(WXK_ESCAPE);
    ASSERT_TRUE(pump_until([&] { return !strip()->IsShown() && screen_current(); }));
    EXPECT_TRUE(frame->main_display->is_following());
    EXPECT_EQ(text()->model.scroll_line, text()->model.current_line);
    EXPECT_LT(cell_share(screen_of(text()), text()->model.current_line - 1, 1, current), 0.05);
}

// The count and the hits follow 5 MB of text that arrives in socket-sized blocks while the strip
// is open, and the view stays on the hit the player jumped to.
TEST_F(ScrollbackView, SearchStaysRightDuringAFlood) {
    fill(50);
    server("the first Ogre\n");
    fill(50);
    open_and_type("ogre");
    ASSERT_EQ(count(), "1 of 1");
    const int locked_at = text()->model.scroll_line;
    std::string block;
    int ogres = 1;
    size_t sent = 0;
    for (int line = 0; sent < (5u << 20); ++line) {
        block += "\x1b[32mflood line " + std::to_string(line) + "\x1b[37m of the storm";
        if (line % 997 == 0) {
            block += " with an OGRE in it";
            ++ogres;
        }
        block += "\r\n";
        if (block.size() >= 10000) {
            sent += block.size();
            server(block);
            block.clear();
            pump_for(1);
        }
    }
    server(block);
    ASSERT_TRUE(pump_until([&] { return screen_current(); }, 5000));
    EXPECT_EQ(count(), "1 of " + std::to_string(ogres));
    EXPECT_EQ(text()->model.scroll_line, locked_at);
    // Every hit is where the text says it is.
    const std::string all = text()->model.raw_text();
    size_t hits = 0;
    for (size_t i = 0; i < strip()->search.count(); ++i, ++hits)
        ASSERT_EQ(wxString(all.substr(strip()->search.hit_start(i), 4)).Lower(), "ogre") << i;
    EXPECT_EQ(hits, static_cast<size_t>(ogres));
    keys.Char(WXK_RETURN, wxMOD_SHIFT);
    ASSERT_TRUE(pump_until([&] { return count() == "2 of " + std::to_string(ogres); }));
}

// Scrolled back during a flood: the upper part doesn't move a pixel and the lower third shows the
// newest line at every step; at the end the split goes away.
TEST_F(ScrollbackView, SplitViewShowsTheLiveEndDuringAFlood) {
    fill(400);
    ASSERT_TRUE(pump_until([&] { return screen_current(); }));
    point_at_editor();
    keys.Char(WXK_PAGEUP);
    ASSERT_TRUE(pump_until([&] { return !frame->main_display->is_following() && screen_current(); }));
    fill(1);  // one more line: now the live end differs from the view
    ASSERT_TRUE(pump_until([&] { return screen_current(); }));
    const int live = text()->split_lines();
    ASSERT_GT(live, 0);
    const int height = text()->GetClientSize().GetHeight();
    const int divider = height - 1 - live * text()->model.font_height - zorn_textctrl::split_divider_height;
    wxImage screen = screen_of(text());
    expect_reference(screen, "split_view");
    const wxImage upper = screen.GetSubImage(wxRect(0, 0, screen.GetWidth(), divider));
    EXPECT_TRUE(near(image_pixel(screen, 5, divider), zorn_textctrl::split_divider_color));
    const int scroll_line = text()->model.scroll_line;
    for (int tick = 0; tick < 40; ++tick) {
        std::string block;
        for (int i = 0; i < 50; ++i) block += "tick " + std::to_string(tick) + " line " + std::to_string(i) + "\n";
        const wxImage before = screen_of(text());
        server(block);
        ASSERT_TRUE(pump_until([&] { return screen_current(); }));
        screen = screen_of(text());
        ASSERT_TRUE(same_pixels(screen.GetSubImage(wxRect(0, 0, screen.GetWidth(), divider)), upper)) << tick;
        ASSERT_FALSE(same_pixels(screen, before)) << tick;
        std::string newest;
        text()->model.line_text(text()->model.current_line - 1, &newest);
        ASSERT_EQ(newest, "tick " + std::to_string(tick) + " line 49");
        ASSERT_EQ(text()->model.scroll_line, scroll_line);
    }
    // A drag over the newest full line selects that line, not the hidden one of the view above.
    const zorn_textctrl_model& m = text()->model;
    const wxPoint row = text()->GetScreenPosition() + wxPoint(0, height - 1 - 2 * m.font_height + m.font_height / 2);
    keys.MouseMove(row + wxPoint(3, 0));
    keys.MouseDown();
    keys.MouseMove(row + wxPoint(3 + 6 * m.char_width['x'], 0));
    keys.MouseUp();
    ASSERT_TRUE(pump_until([&] { return m.selection_active && !m.selecting; }));
    EXPECT_EQ(m.selection_start_line, m.current_line - 1);
    EXPECT_EQ(m.selection_end_line, m.current_line - 1);
    EXPECT_EQ(m.scroll_line, scroll_line);
    text()->clear_selection();
    point_at_editor();
    // Page Down to the end unlocks, and the whole window follows again.
    while (!frame->main_display->is_following()) {
        keys.Char(WXK_PAGEDOWN);
        pump_for(10);
    }
    ASSERT_TRUE(pump_until([&] { return screen_current(); }));
    EXPECT_EQ(text()->split_lines(), 0);
    EXPECT_FALSE(near(image_pixel(screen_of(text()), 5, divider), zorn_textctrl::split_divider_color));
}

// With the setting off (its menu check) a scrolled-back view is one piece, as before.
TEST_F(ScrollbackView, SplitViewOffKeepsTheOldView) {
    fill(400);
    wxCommandEvent toggle(wxEVT_MENU, zorn_menu_split_view);
    frame->GetEventHandler()->ProcessEvent(toggle);
    EXPECT_EQ(LConfig::instance().get_split_view(), 0);
    EXPECT_FALSE(frame->GetMenuBar()->IsChecked(zorn_menu_split_view));
    point_at_editor();
    keys.Char(WXK_PAGEUP);
    ASSERT_TRUE(pump_until([&] { return !frame->main_display->is_following() && screen_current(); }));
    const wxImage before = screen_of(text());
    fill(30);
    ASSERT_TRUE(pump_until([&] { return screen_current(); }));
    EXPECT_EQ(text()->split_lines(), 0);
    EXPECT_TRUE(same_pixels(screen_of(text()), before));  // nothing of the new text shows
    frame->GetEventHandler()->ProcessEvent(toggle);
    EXPECT_TRUE(frame->GetMenuBar()->IsChecked(zorn_menu_split_view));
    ASSERT_TRUE(pump_until([&] { return text()->split_lines() > 0 && screen_current(); }));
    EXPECT_FALSE(same_pixels(screen_of(text()), before));
}
