// The display widgets under Xvfb: colours on screen, the lock frame, mouse selection and links,
// the flash animations.
#include <gtest/gtest.h>

#include <wx/dcclient.h>
#include <wx/dcmemory.h>
#include <wx/frame.h>
#include <wx/image.h>
#include <wx/imagpng.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "display/ansi_display.h"
#include "display/display_hooks.h"
#include "tests/support/gui_main.h"
#include "tests/support/screen.h"
#include "theme/font.h"

namespace {

std::vector<std::string> clipboard, opened;

// A fresh character's settings: no character record exists in these tests.
zorn_display_settings fresh_settings() { return zorn_display_settings(); }

struct display_window {
    display_window() {
        zorn_set_display_settings_source(fresh_settings);
        frame = new wxFrame(nullptr, wxID_ANY, wxT("display test"), wxPoint(0, 0), wxSize(400, 200));
        display = new zorn_main_window(frame);
        display->set_size(0, 0, 400, 200);
        frame->Show();
        zorn_get_display_hooks().set_clipboard_data = [](const char* text) { clipboard.push_back(text); };
        zorn_get_display_hooks().open_url = [](const char* url) { opened.push_back(url); };
        clipboard.clear();
        opened.clear();
        text()->get_max_char_size(&char_width, &line_height);
        bottom = text()->GetSize().GetHeight() - 1 - line_height;
    }
    ~display_window() {
        frame->Destroy();
        pump_for(30);
    }
    void feed(const std::string& s) {
        display->add_ansi_text(s.data(), static_cast<int>(s.size()));
        display->refresh_text();
    }
    zorn_textctrl* text() const { return display->textctrl; }
    void mouse(wxEventType type, int x, int y) {
        wxMouseEvent event(type);
        event.SetEventObject(text());
        event.m_x = x;
        event.m_y = y;
        event.m_leftDown = type != wxEVT_LEFT_UP;
        text()->GetEventHandler()->ProcessEvent(event);
    }

    wxFrame* frame;
    zorn_main_window* display;
    int char_width = 0, line_height = 0;
    int bottom = 0;  // y of the last line, where the newest text shows
};

zorn_rgb pixel_at(const wxImage& image, int x, int y) {
    return zorn_rgb(image.GetRed(x, y), image.GetGreen(x, y), image.GetBlue(x, y));
}

wxImage render(zorn_embedded_window* window) {
    zorn_bitmap bitmap(window->GetSize().GetWidth(), window->GetSize().GetHeight());
    window->repaint_internal(bitmap);
    return bitmap.ConvertToImage();
}

// The screen as the user sees it: what the window shows after its paint.
wxImage screenshot(wxWindow* window) { return screen_of(window); }

// The point of a glyph with the most coverage, and that coverage.
struct glyph_point {
    int x, y, coverage;
};

glyph_point strongest_point(char c) {
    wxImage image = zorn_main_font()->glyph(c)->ConvertToImage();
    glyph_point best{0, 0, -1};
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x)
            if (image.GetGreen(x, y) > best.coverage) best = {x, y, image.GetGreen(x, y)};
    return best;
}

// A glyph pixel of coverage a in colour c over black, as the blend computes it.
zorn_rgb over_black(const zorn_rgb& c, int a) { return zorn_rgb(c.red * a / 256, c.green * a / 256, c.blue * a / 256); }

TEST(display_gui, coloured_text_shows_in_the_palette_colours) {
    display_window w;
    w.feed("\x1b[31m###\x1b[1m\x1b[32m###\x1b[0m\x1b[34m###");
    ASSERT_GT(w.char_width, 0);
    const glyph_point p = strongest_point('#');
    ASSERT_GT(p.coverage, 128);
    // The one line sits on the bottom edge, starting at x 1.
    const int y = w.bottom + p.y;
    const int x_red = 1 + p.x, x_green = 1 + 3 * w.char_width + p.x, x_blue = 1 + 6 * w.char_width + p.x;

    const wxImage drawn = render(w.text());
    EXPECT_EQ(pixel_at(drawn, x_red, y), over_black({0xaa, 0, 0}, p.coverage));
    EXPECT_EQ(pixel_at(drawn, x_green, y), over_black({0x55, 0xff, 0x55}, p.coverage));
    EXPECT_EQ(pixel_at(drawn, x_blue, y), over_black({0, 0, 0xcc}, p.coverage));
    EXPECT_EQ(pixel_at(drawn, x_red, 2), zorn_rgb(0, 0, 0));

    // And on the screen, once the window has painted.
    pump_for(100);
    const wxImage screen = screenshot(w.display);
    const wxPoint origin = w.text()->GetPosition();
    EXPECT_EQ(pixel_at(screen, origin.x + x_red, origin.y + y), over_black({0xaa, 0, 0}, p.coverage));
    EXPECT_EQ(pixel_at(screen, origin.x + x_blue, origin.y + y), over_black({0, 0, 0xcc}, p.coverage));
    EXPECT_EQ(pixel_at(screen, 0, 0), zorn_rgb(255, 255, 255));
    // The picture stays behind for a look when the test fails, or when asked for.
    if (::testing::Test::HasFailure() || std::getenv("LANTERN_KEEP_SCREENSHOTS")) {
        if (!wxImage::FindHandler(wxBITMAP_TYPE_PNG)) wxImage::AddHandler(new wxPNGHandler);
        screen.SaveFile(LANTERN_BINARY_DIR "/display_gui_colours.png", wxBITMAP_TYPE_PNG);
    }

    // Top-anchored text starts at the top instead.
    w.text()->model.top_anchored = 1;
    EXPECT_EQ(pixel_at(render(w.text()), x_red, p.y), over_black({0xaa, 0, 0}, p.coverage));
}

TEST(display_gui, a_locked_display_shows_the_red_frame) {
    display_window w;
    for (int i = 0; i < 40; ++i) w.feed("a line of text\n");
    wxImage frame = render(w.display);
    EXPECT_EQ(pixel_at(frame, 0, 0), zorn_rgb(255, 255, 255));
    EXPECT_EQ(pixel_at(frame, 1, 1), zorn_rgb(128, 128, 128));
    w.display->lock_scrollback();
    frame = render(w.display);
    EXPECT_EQ(pixel_at(frame, 0, 0), zorn_rgb(255, 0, 0));
    EXPECT_EQ(pixel_at(frame, 1, 50), zorn_rgb(192, 0, 0));
    EXPECT_EQ(pixel_at(frame, 0, frame.GetHeight() - 1), zorn_rgb(255, 0, 0));
    pump_for(100);
    EXPECT_EQ(pixel_at(screenshot(w.display), 0, 10), zorn_rgb(255, 0, 0));
    // Page down to the end unlocks, and the frame is white and grey again.
    for (int i = 0; i < 10; ++i) w.display->page_down();
    EXPECT_TRUE(w.display->is_following());
    frame = render(w.display);
    EXPECT_EQ(pixel_at(frame, 0, 0), zorn_rgb(255, 255, 255));
    EXPECT_EQ(pixel_at(frame, 1, 1), zorn_rgb(128, 128, 128));
    // A resize unlocks too.
    w.display->lock_scrollback();
    w.display->set_size(0, 0, 380, 180);
    EXPECT_TRUE(w.display->is_following());
}

TEST(display_gui, the_text_control_sits_inside_the_frame_beside_the_scrollbar) {
    display_window w;
    const int bar = w.display->get_scrollbar_width();
    ASSERT_GT(bar, 0);
    EXPECT_EQ(w.text()->GetPosition(), wxPoint(2, 2));
    EXPECT_EQ(w.text()->GetSize(), wxSize(400 - 4 - bar, 196));
    // The main window follows the main scrollbar setting on every resize.
    zorn_set_display_settings_source([] {
        zorn_display_settings settings;
        settings.mw_scrollbar_enable = 0;
        return settings;
    });
    w.display->force_resize();
    zorn_set_display_settings_source(fresh_settings);
    EXPECT_EQ(w.text()->GetSize(), wxSize(396, 196));
    EXPECT_EQ(w.display->get_scrollbar_width(), 0);
}

TEST(display_gui, dragging_selects_and_copies_across_a_wrapped_line) {
    display_window w;
    // Two lines: one that wraps into two display lines, then a short one.
    std::string words;
    while (static_cast<int>(words.size()) < w.text()->GetSize().GetWidth() / w.char_width + 5) words += "word ";
    w.feed(words + "\nend");
    ASSERT_EQ(w.text()->model.line_count(), 3);
    ASSERT_FALSE(w.text()->model.line_hard_newline(0));
    const int x2 = 2 * w.char_width + 1;
    w.mouse(wxEVT_LEFT_DOWN, 1, w.bottom - 2 * w.line_height + 2);
    w.mouse(wxEVT_MOTION, x2, w.bottom + 2);
    w.mouse(wxEVT_LEFT_UP, x2, w.bottom + 2);
    ASSERT_FALSE(clipboard.empty());
    EXPECT_EQ(clipboard.back(), words + "\nend");
    EXPECT_TRUE(w.text()->has_selection());
    EXPECT_FALSE(w.display->is_following());  // a selection in progress locked the view
    // A plain click selects nothing new and keeps the clipboard.
    const size_t copies = clipboard.size();
    w.mouse(wxEVT_LEFT_DOWN, 5, w.bottom + 2);
    w.mouse(wxEVT_LEFT_UP, 5, w.bottom + 2);
    EXPECT_EQ(clipboard.size(), copies);
    EXPECT_FALSE(w.text()->has_selection());
    // Dragged one character on and back again: that one character stays selected.
    w.mouse(wxEVT_LEFT_DOWN, x2 - w.char_width, w.bottom + 2);
    w.mouse(wxEVT_MOTION, x2, w.bottom + 2);
    w.mouse(wxEVT_MOTION, x2 - w.char_width, w.bottom + 2);
    w.mouse(wxEVT_LEFT_UP, x2 - w.char_width, w.bottom + 2);
    EXPECT_TRUE(w.text()->has_selection());
    EXPECT_EQ(clipboard.back(), "n");
}

TEST(display_gui, selection_is_drawn_on_grey) {
    display_window w;
    w.feed("ab  cd");
    w.text()->model.select_range(0, 2, 3);  // the two blanks
    const int y = w.bottom + w.line_height / 2;
    const wxImage drawn = render(w.text());
    EXPECT_EQ(pixel_at(drawn, 1 + 2 * w.char_width + 1, y), zorn_rgb(64, 64, 64));
    EXPECT_EQ(pixel_at(drawn, 1 + 4 * w.char_width - 1, y), zorn_rgb(64, 64, 64));
    EXPECT_EQ(pixel_at(drawn, 1 + 4 * w.char_width + 1, w.bottom + 1), zorn_rgb(0, 0, 0));
}

TEST(display_gui, clicking_a_link_opens_it_and_selects_nothing_more) {
    display_window w;
    w.feed("see (www.embervale.example.com) here");
    const int y = w.bottom + 2;
    w.mouse(wxEVT_LEFT_DOWN, 10 * w.char_width, y);
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_EQ(opened[0], "www.embervale.example.com");
    EXPECT_EQ(clipboard.back(), "www.embervale.example.com");
    EXPECT_EQ(w.text()->url_click_active, 1);
    w.mouse(wxEVT_MOTION, 20 * w.char_width, y);
    w.mouse(wxEVT_LEFT_UP, 20 * w.char_width, y);
    EXPECT_EQ(w.text()->url_click_active, 0);
    EXPECT_EQ(clipboard.size(), 1u);
    // A click on a blank opens nothing.
    w.mouse(wxEVT_LEFT_DOWN, 3 * w.char_width + 1, y);
    w.mouse(wxEVT_LEFT_UP, 3 * w.char_width + 1, y);
    EXPECT_EQ(opened.size(), 1u);
}

TEST(display_gui, flashes_run_on_the_animation_ticks) {
    display_window w;
    zorn_textctrl* text = w.text();
    text->parse_colorflash("000000 ff0000 10");
    animation_run(zorn_tick_ms);
    EXPECT_EQ(pixel_at(render(text), 5, 5), zorn_rgb(25, 0, 0));
    for (int tick = 2; tick <= 11; ++tick) animation_run(zorn_tick_ms);
    EXPECT_FALSE(animation_contains(text));
    EXPECT_EQ(pixel_at(render(text), 5, 5), text->model.base_background_color);

    // The border blinks sixteen periods: black on even counts, white on odd ones.
    w.display->flash_border();
    EXPECT_EQ(pixel_at(render(w.display), 0, 0), zorn_rgb(0, 0, 0));
    for (int i = 0; i < 10; ++i) animation_run(zorn_tick_ms);
    EXPECT_EQ(pixel_at(render(w.display), 0, 0), zorn_rgb(255, 255, 255));
    for (int i = 0; i < 150; ++i) animation_run(zorn_tick_ms);
    EXPECT_FALSE(animation_contains(w.display));
    EXPECT_EQ(pixel_at(render(w.display), 1, 1), zorn_rgb(128, 128, 128));
}

}  // namespace
