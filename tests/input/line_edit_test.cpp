// The command line editor: its keys, the histories as the box shows them, paste and password
// mode. Keys are synthesized key events sent to the editor's own handlers (auto-repeat is two
// key-downs without a key-up); typing that the native control has to do goes through the
// toolkit's input simulator.
#include <gtest/gtest.h>
#include <wx/frame.h>
#include <wx/uiaction.h>

#include <string>
#include <utility>
#include <vector>

#include "config/lconfig.h"
#include "input/input_window.h"
#include "input/line_edit.h"
#include "tests/input/recording_frame.h"
#include "tests/support/gui_main.h"
#include "theme/font.h"

namespace {

constexpr int logged_in = 2;

enum : int { ctrl = 1, shift = 2, alt = 4 };

class LineEdit : public ::testing::Test {
protected:
    void SetUp() override {
        LConfig& config = LConfig::instance();
        if (!config.current()) config.setup_default_config(nullptr);
        config.use_default_preferences();
        zorn_set_frame_link(&link);
        frame = new wxFrame(nullptr, wxID_ANY, "line edit", wxPoint(0, 0), wxSize(400, 120));
        input = new zorn_input_window(frame, wxID_ANY, wxDefaultPosition, wxSize(20, 20), wxBORDER_NONE,
                                      "main input window");
        input->set_size(0, 0, 400, 48);
        edit = &input->line_edit;
        frame->Show();
    }
    void TearDown() override {
        zorn_set_frame_link(nullptr);
        frame->Destroy();
        pump_for(30);
    }

    // True when the editor took the key; false when it was left to the native control.
    bool key(int code, int modifiers = 0, wxEventType type = wxEVT_KEY_DOWN) {
        wxKeyEvent event(type);
        event.m_keyCode = code;
        event.SetControlDown(modifiers & ctrl);
        event.SetShiftDown(modifiers & shift);
        event.SetAltDown(modifiers & alt);
        event.SetEventObject(edit);
        return edit->GetEventHandler()->ProcessEvent(event);
    }
    bool press(int code, int modifiers = 0) {
        const bool taken = key(code, modifiers);
        key(code, modifiers, wxEVT_KEY_UP);
        return taken;
    }
    void type_line(const char* text) {
        edit->ChangeValue(text);
        edit->SetInsertionPointEnd();
        press(WXK_RETURN);
    }
    std::string text() const { return edit->GetValue().ToStdString(); }
    std::vector<std::string> command_texts() const {
        std::vector<std::string> out;
        for (const auto& c : link.commands) out.push_back(c.first);
        return out;
    }

    recording_frame link;
    wxFrame* frame = nullptr;
    zorn_input_window* input = nullptr;
    zorn_line_edit* edit = nullptr;
};

TEST_F(LineEdit, KeypadWalksOncePerPress) {
    link.lock_main_scrollback();
    EXPECT_TRUE(key(WXK_NUMPAD8));
    EXPECT_TRUE(key(WXK_NUMPAD8));  // auto-repeat: taken, but no second step
    EXPECT_TRUE(key(WXK_NUMPAD8));
    ASSERT_EQ(link.commands.size(), 1u);
    EXPECT_EQ(link.commands[0], std::make_pair(std::string("north"), 1));
    EXPECT_TRUE(link.main_following);  // walking ends a lock first
    key(WXK_NUMPAD8, 0, wxEVT_KEY_UP);
    key(WXK_NUMPAD8);
    EXPECT_EQ(link.commands.size(), 2u);
    key(WXK_NUMPAD8, 0, wxEVT_KEY_UP);

    // The digit keys walk; with NumLock off the keypad's cursor keys don't, and its Home and End
    // move the insertion point as the plain ones do.
    const std::pair<int, const char*> table[] = {
        {WXK_NUMPAD1, "southwest"}, {WXK_NUMPAD2, "south"}, {WXK_NUMPAD5, "scan -ln"}, {WXK_NUMPAD9, "northeast"},
        {WXK_NUMPAD_ENTER, "down"}, {WXK_NUMPAD_SUBTRACT, "down"}, {WXK_NUMPAD_ADD, "up"},
    };
    link.commands.clear();
    for (const auto& [code, command] : table) {
        press(code);
        ASSERT_FALSE(link.commands.empty());
        EXPECT_EQ(link.commands.back().first, command) << code;
    }
    EXPECT_EQ(link.commands.size(), std::size(table));
    link.commands.clear();
    for (int code : {WXK_NUMPAD_HOME, WXK_NUMPAD_END, WXK_NUMPAD_UP, WXK_NUMPAD_DOWN, WXK_NUMPAD_LEFT,
                     WXK_NUMPAD_RIGHT, WXK_NUMPAD_PAGEUP, WXK_NUMPAD_PAGEDOWN, WXK_NUMPAD_BEGIN})
        press(code);
    EXPECT_TRUE(link.commands.empty());
    edit->ChangeValue("look");
    edit->SetInsertionPointEnd();
    EXPECT_TRUE(press(WXK_NUMPAD_HOME));
    EXPECT_EQ(edit->GetInsertionPoint(), 0);
    EXPECT_TRUE(press(WXK_NUMPAD_END));
    EXPECT_EQ(edit->GetInsertionPoint(), 4);
    edit->ChangeValue("");

    // Shift, Ctrl or the setting switched off leave the keypad to the other tables.
    link.commands.clear();
    press(WXK_NUMPAD8, shift);
    LConfig::instance().set_keypad_walking(0);
    press(WXK_NUMPAD8);
    EXPECT_TRUE(link.commands.empty());
}

TEST_F(LineEdit, HeldCtrlShortcutActsOnce) {
    key('Z', ctrl);
    key('Z', ctrl);
    key('Z', ctrl);
    EXPECT_EQ(link.locks, 1);
    key('Z', ctrl, wxEVT_KEY_UP);
    key('Z', ctrl);
    EXPECT_EQ(link.locks, 2);
    key('Z', ctrl, wxEVT_KEY_UP);
    // A held Ctrl-Backspace keeps going to the native control.
    EXPECT_FALSE(key(WXK_BACK, ctrl));
    EXPECT_FALSE(key(WXK_BACK, ctrl));
}

TEST_F(LineEdit, HistoryThroughTheBox) {
    type_line("alpha");
    type_line("beta");
    type_line("beta");  // a direct repeat is one entry
    EXPECT_EQ(command_texts(), (std::vector<std::string>{"alpha", "beta", "beta"}));
    EXPECT_EQ(text(), "");

    edit->ChangeValue("typed");
    edit->SetInsertionPointEnd();
    std::vector<std::string> shown;
    for (int code : {WXK_UP, WXK_UP, WXK_UP, WXK_UP, WXK_DOWN, WXK_DOWN, WXK_DOWN, WXK_DOWN, WXK_UP}) {
        press(code);
        shown.push_back(text());
    }
    // List 0 ends with "connect"; what was typed survives the walk.
    EXPECT_EQ(shown, (std::vector<std::string>{"beta", "alpha", "connect", "connect", "alpha", "beta", "typed", "",
                                               "typed"}));

    edit->history_show();
    EXPECT_EQ(link.message, "<begin>\nRecent Command History:\n 3 - connect\n 2 - alpha\n 1 - beta\n");

    // Each stage of the session has its own list.
    edit->select_history_list(2);
    edit->ChangeValue("");
    press(WXK_UP);
    EXPECT_EQ(text(), "");
}

TEST_F(LineEdit, LongCommandIsCut) {
    const std::string long_line(6000, 'a');
    type_line(long_line.c_str());
    ASSERT_EQ(link.commands.size(), 1u);
    EXPECT_EQ(link.commands[0].first.size(), static_cast<size_t>(zorn_line_edit::max_command_bytes));
    ASSERT_NE(edit->histories().entry(2), nullptr);
    EXPECT_EQ(edit->histories().entry(2)->size(), 5999u);
}

TEST_F(LineEdit, UpInsideTextOfSeveralLinesMovesByLines) {
    // Positions of the box count characters, those of the history bytes.
    edit->ChangeValue(wxString::FromUTF8("\xc3\xa9t\xc3\xa9\nab"));
    edit->SetInsertionPoint(5);  // between "a" and "b"
    press(WXK_UP);
    EXPECT_EQ(edit->GetInsertionPoint(), 3);  // at the line feed
    press(WXK_UP);
    EXPECT_EQ(edit->GetInsertionPoint(), 0);
    press(WXK_DOWN);
    EXPECT_EQ(edit->GetInsertionPoint(), 3);
    press(WXK_DOWN);
    EXPECT_EQ(edit->GetInsertionPoint(), edit->GetLastPosition());
    EXPECT_EQ(edit->GetValue(), wxString::FromUTF8("\xc3\xa9t\xc3\xa9\nab"));
}

TEST_F(LineEdit, PushthroughKeepsTheCommandSelected) {
    link.session = logged_in;
    LConfig::instance().set_cmd_pushthrough(1);
    edit->select_history_list(2);
    type_line("say hi");
    type_line("look");
    EXPECT_EQ(text(), "look");
    long from = -1, to = -1;
    edit->GetSelection(&from, &to);
    EXPECT_EQ(from, 0);
    EXPECT_EQ(to, 4);

    press(WXK_RETURN);  // sent again as it stands
    EXPECT_EQ(command_texts(), (std::vector<std::string>{"say hi", "look", "look"}));

    // A letter typed replaces the selected command; that goes through the native control.
    pump_until([&] { return edit->IsShownOnScreen(); });
    wxUIActionSimulator sim;
    sim.MouseMove(edit->ClientToScreen(wxPoint(edit->GetSize().GetWidth() / 2, 5)));
    pump_for(20);
    edit->SetFocus();
    pump_until([&] { return wxWindow::FindFocus() == edit; }, 1000);
    edit->SetSelection(-1, -1);
    sim.Char('n');
    pump_until([&] { return text() == "n"; }, 1000);
    EXPECT_EQ(text(), "n");
    press(WXK_RETURN);
    EXPECT_EQ(link.commands.back().first, "n");

    press(WXK_UP);  // "n" is selected: Up shows the command before it
    EXPECT_EQ(text(), "look");

    // Home takes the selection away and goes to the start.
    type_line("west");
    press(WXK_HOME);
    edit->GetSelection(&from, &to);
    EXPECT_EQ(from, to);
    EXPECT_EQ(edit->GetInsertionPoint(), 0);
}

TEST_F(LineEdit, FunctionKeyAliases) {
    link.session = logged_in;
    const struct {
        int code, modifiers;
        const char* alias;
    } rows[] = {
        {WXK_F1, shift, "sf01"}, {WXK_F3, ctrl, "cf03"}, {WXK_F12, ctrl | shift, "cf12"}, {WXK_F5, 0, "f05"},
    };
    for (const auto& r : rows) {
        link.commands.clear();
        EXPECT_TRUE(press(r.code, r.modifiers)) << r.alias;
        ASSERT_EQ(link.commands.size(), 1u) << r.alias;
        EXPECT_EQ(link.commands[0], std::make_pair(std::string(r.alias), 0));
    }
    link.commands.clear();
    EXPECT_FALSE(press(WXK_F1, alt));  // Alt-F1 isn't taken
    EXPECT_TRUE(link.commands.empty());

    // Not logged in: an ordinary key, which ends a lock.
    link.session = 0;
    link.lock_main_scrollback();
    EXPECT_FALSE(press(WXK_F1, shift));
    EXPECT_TRUE(link.commands.empty());
    EXPECT_TRUE(link.main_following);
}

TEST_F(LineEdit, ReturnAndTypingEndALockUnlessLocksSurvive) {
    LConfig::instance().set_cmd_pushthrough(1);
    link.lock_main_scrollback();
    type_line("look");
    EXPECT_EQ(text(), "");  // without a login pushthrough doesn't keep the line
    EXPECT_TRUE(link.main_following);
    link.lock_main_scrollback();
    EXPECT_FALSE(press('A'));
    EXPECT_TRUE(link.main_following);
    LConfig::instance().set_locking_scrollback_enable(1);
    link.lock_main_scrollback();
    EXPECT_FALSE(press('A'));
    EXPECT_FALSE(link.main_following);
}

TEST_F(LineEdit, CtrlCCopiesFirstAndBreaksLast) {
    edit->ChangeValue("take this");
    edit->SetSelection(5, 9);
    press('C', ctrl);
    EXPECT_EQ(link.clipboard, "this");
    EXPECT_FALSE(edit->HasSelection());
    EXPECT_EQ(text(), "take this");
    EXPECT_TRUE(link.sent.empty());

    link.main_selection = true;
    press('C', ctrl);
    EXPECT_EQ(text(), "");
    EXPECT_EQ(link.main_selection_clears, 1);
    EXPECT_TRUE(link.sent.empty());

    link.lock_main_scrollback();
    press('C', ctrl);
    EXPECT_EQ(link.sent, std::vector<std::string>{"\x03"});
    EXPECT_TRUE(link.main_following);  // a break lets the display follow again

    edit->ChangeValue("junk");
    press('\\', ctrl);
    EXPECT_EQ(text(), "");
    EXPECT_EQ(link.sent.back(), "\x1a");
    press('D', ctrl);
    EXPECT_EQ(link.sent.back(), "\x03");
}

TEST_F(LineEdit, CtrlShortcutsForFontPanelsAndSettings) {
    zorn_font* font = zorn_main_font();
    const int original = font->GetPointSize();
    font->SetPointSize(3);
    press('-', ctrl);
    EXPECT_EQ(font->GetPointSize(), 3);
    press('=', ctrl);
    EXPECT_EQ(font->GetPointSize(), 4);
    press(WXK_NUMPAD_SUBTRACT, ctrl);
    EXPECT_EQ(font->GetPointSize(), 3);
    EXPECT_EQ(link.font_refreshes, 3);
    font->SetPointSize(original);

    // With Shift: the channel window's height in steps of 5 between 10 and 80.
    LConfig& config = LConfig::instance();
    config.set_channel_window_height(78);
    press('=', ctrl | shift);
    EXPECT_EQ(config.get_channel_window_height(), 80);
    config.set_channel_window_height(12);
    press('-', ctrl | shift);
    EXPECT_EQ(config.get_channel_window_height(), 10);
    EXPECT_EQ(link.layouts, 2);

    press('3', ctrl);  // popups only while logged in
    EXPECT_TRUE(link.popups.empty());
    link.session = logged_in;
    press('3', ctrl);
    press('0', ctrl);
    EXPECT_EQ(link.popups, (std::vector<int>{3, 10}));
    const int hpbar = config.get_hpbar_enable();
    press('3', ctrl | shift);
    EXPECT_EQ(config.get_hpbar_enable(), hpbar ? 0 : 1);
    press('P', ctrl);
    EXPECT_EQ(config.get_hpbar_enable(), hpbar);
    EXPECT_EQ(link.popups.size(), 2u);
}

TEST_F(LineEdit, EscapeEndsLocksBeforeClearing) {
    edit->ChangeValue("half typed");
    link.lock_main_scrollback();
    link.channel_following = false;
    press(WXK_ESCAPE);
    EXPECT_TRUE(link.main_following);
    EXPECT_FALSE(link.channel_following);
    press(WXK_ESCAPE);
    EXPECT_TRUE(link.channel_following);
    EXPECT_EQ(text(), "half typed");
    press(WXK_ESCAPE);
    EXPECT_EQ(text(), "");
    EXPECT_EQ(link.main_selection_clears, 1);
    EXPECT_EQ(link.channel_selection_clears, 1);
}

TEST_F(LineEdit, PagingAndWheelScrollTheMainDisplay) {
    press(WXK_PAGEUP);
    press(WXK_DOWN, ctrl);
    EXPECT_EQ(link.pages, (std::vector<int>{1, -1}));
    EXPECT_EQ(link.locks, 2);

    for (int rotation : {120, -120, -120}) {
        wxMouseEvent wheel(wxEVT_MOUSEWHEEL);
        wheel.m_wheelRotation = rotation;
        wheel.m_wheelDelta = 120;
        edit->GetEventHandler()->ProcessEvent(wheel);
    }
    EXPECT_EQ(link.scrolls, (std::vector<int>{3, -3, -3}));
    EXPECT_EQ(link.locks, 5);
}

TEST_F(LineEdit, PasswordModeHidesTextAndHistory) {
    edit->ChangeValue("sec");
    edit->enter_password_mode();
    EXPECT_FALSE(edit->echo_allowed());
    EXPECT_EQ(edit->GetForegroundColour(), edit->GetBackgroundColour());
    EXPECT_EQ(edit->GetDefaultStyle().GetTextColour(), wxColour(64, 64, 64));
    wxTextAttr style;
    ASSERT_TRUE(edit->GetStyle(1, style));
    EXPECT_EQ(style.GetTextColour(), wxColour(64, 64, 64));  // text typed before is hidden too

    edit->AppendText("ret");
    edit->SetInsertionPointEnd();
    press(WXK_RETURN);
    EXPECT_EQ(link.commands.back().first, "secret");
    ASSERT_NE(edit->histories().entry(2), nullptr);
    EXPECT_EQ(*edit->histories().entry(2), "connect");
    EXPECT_EQ(edit->histories().entry(3), nullptr);

    edit->leave_password_mode();
    EXPECT_TRUE(edit->echo_allowed());
    EXPECT_EQ(edit->GetForegroundColour(), wxColour(255, 255, 255));
    EXPECT_EQ(edit->GetBackgroundColour(), wxColour(64, 64, 64));
}

TEST_F(LineEdit, PasteComesInCleaned) {
    link.clipboard = "north\nsouth \xc3\xa9\x01x";
    edit->ChangeValue("go ");
    edit->SetInsertionPointEnd();
    press('V', ctrl);
    EXPECT_EQ(text(), "go north\nsouth ..x");

    // The native paste is replaced by the same cleaning, over the selection.
    link.clipboard = "\xe2\x82\xac";
    edit->SetSelection(0, 2);
    wxClipboardTextEvent paste(wxEVT_TEXT_PASTE, edit->GetId());
    paste.SetEventObject(edit);
    edit->GetEventHandler()->ProcessEvent(paste);
    EXPECT_EQ(text(), ". north\nsouth ..x");
}

}  // namespace
