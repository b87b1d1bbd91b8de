#pragma once
// What the channel window knows without its widgets: the channel records in name order, the two
// pages of tabs, which channel is current on each, which one receives diverted text, and which
// tabs are lit by text the player hasn't seen. zorn_channel_window (channel_window.h) makes a tab
// and a display for each record and draws what these flags say.
//
// Records are owned here; their widget pointers are the window's and are never touched by this
// class. Main thread only.

#include <memory>
#include <vector>

class zorn_channel_button;
class zorn_channel_display;

constexpr int zorn_channel_name_size = 40;  // 39 characters and the terminator
constexpr char zorn_all_channel_name[] = "(all)";

struct zorn_channel_record {
    char name[zorn_channel_name_size];
    zorn_channel_button* button = nullptr;
    zorn_channel_display* display = nullptr;
    int page = 0;          // the page its tab stands on
    int has_new_text = 0;  // text came while it wasn't current
    int selected = 0;      // the current tab of the page shown
};

class zorn_channel_list {
public:
    zorn_channel_list() = default;
    zorn_channel_list(const zorn_channel_list&) = delete;
    zorn_channel_list& operator=(const zorn_channel_list&) = delete;

    // Exact name, compared with strcmp after the same cut as a new record's name; null if none.
    zorn_channel_record* find(const char* name) const;
    // The record of that name, made on the page shown if it is new (*made set then). A record made
    // while no channel is current becomes current and selected. A null name gives null.
    zorn_channel_record* create(const char* name, bool* made = nullptr);
    // chdiv: "(all)" first if it doesn't exist, then the named channel, which receives text from
    // now on. New records are appended to *made_records when given.
    zorn_channel_record* set_divert_channel(const char* name, std::vector<zorn_channel_record*>* made_records = nullptr);
    // chudiv: false when no channel was receiving.
    bool clear_divert_channel();
    // Text reached the divert channel and "(all)": each of the two that isn't current is lit, and
    // goes to *lit when its flag changed. False (text lost) without both records.
    bool text_arrived(std::vector<zorn_channel_record*>* lit = nullptr);
    // A click on a tab: that channel becomes current and its light goes out.
    void select(zorn_channel_record* record);
    // The paging button of a tab: the tab moves to the other page.
    void move_to_other_page(zorn_channel_record* record);
    // The window's own paging button: the other page is shown, with the channel that was current on it.
    void flip_page();
    // Makes sure the page shown has a current channel if it has tabs, and marks it alone as selected.
    void settle();
    // Gives up every record; the caller frees their widgets first. The list is as at start, but on
    // the page shown.
    void clear_all();

    int tabs_on_page() const;
    // In name order.
    const std::vector<std::unique_ptr<zorn_channel_record>>& records() const { return list; }

    zorn_channel_record* current_channel = nullptr;
    zorn_channel_record* other_page_channel = nullptr;
    zorn_channel_record* divert_channel = nullptr;
    zorn_channel_record* all_channel = nullptr;
    int page = 0;

private:
    zorn_channel_record* first_on_page() const;

    std::vector<std::unique_ptr<zorn_channel_record>> list;
};
