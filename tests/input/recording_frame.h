#pragma once
// A frame link for the input tests: records what the widgets ask of the frame; the main
// display's lock is a flag.
#include <string>
#include <utility>
#include <vector>

#include "input/frame_link.h"

class recording_frame : public zorn_frame_link {
public:
    void process_user_command(const char* text, int echo) override { commands.emplace_back(text, echo); }
    bool transfer_focus_main(wxWindow*) override {
        transfers++;
        return false;
    }
    void unlock_main_scrollback() override {
        unlocks++;
        main_following = true;
    }
    bool main_is_following() override { return main_following; }
    void lock_main_scrollback() override {
        locks++;
        main_following = false;
    }
    void main_scroll_up(int lines) override { scrolls.push_back(lines); }
    void main_scroll_down(int lines) override { scrolls.push_back(-lines); }
    void main_page_up() override { pages.push_back(1); }
    void main_page_down() override { pages.push_back(-1); }
    bool main_has_selection() override { return main_selection; }
    void main_clear_selection() override {
        main_selection = false;
        main_selection_clears++;
    }
    bool channel_is_following() override { return channel_following; }
    void unlock_channel_scrollback() override { channel_following = true; }
    void channel_clear_selection() override { ++channel_selection_clears; }
    int current_session_state() override { return session; }
    void begin_message() override { message = "<begin>"; }
    void print_message(const char* text) override { message += text; }
    void send_line(const char* text) override { sent.push_back(text); }
    void toggle_popup(int number) override { popups.push_back(number); }
    void layout_panels() override { ++layouts; }
    void refresh_main_font() override { ++font_refreshes; }
    void clipboard_set_text(const char* text) override { clipboard = text; }
    bool clipboard_get_text(std::string* text) override {
        *text = clipboard;
        return !clipboard.empty();
    }

    std::vector<std::pair<std::string, int>> commands;  // text and echo
    std::vector<std::string> sent;
    std::vector<int> scrolls, pages, popups;
    std::string message, clipboard;
    bool main_following = true, main_selection = false, channel_following = true;
    int session = 0, locks = 0, unlocks = 0, transfers = 0, layouts = 0, font_refreshes = 0;
    int main_selection_clears = 0, channel_selection_clears = 0;
};
