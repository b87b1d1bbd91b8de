#pragma once
// The channel window: a row of tabs over a text display, one tab per chat channel the server has
// diverted text to, and an "(all)" tab that collects every channel. It has no window of its own:
// tabs and displays lie on the main frame, placed in the rectangle the layout gives it. Which tab
// is current, lit or on which page lives in zorn_channel_list (channel_list.h).

#include "display/ansi_display.h"
#include "input/buttons.h"
#include "input/transparent_window.h"
#include "panels/channel_list.h"

class zorn_channel_window;
class zorn_font;

// The small square at a tab's right end, or the window's own page switch.
class zorn_channel_paging_button : public zorn_button {
public:
    zorn_channel_paging_button(wxWindow* parent, zorn_channel_window* owner, zorn_channel_record* record);
    void render_images() override;

    zorn_channel_record* channel;  // null for the window's own button
    zorn_channel_window* channel_window;

private:
    void mouse_handler(wxMouseEvent& event);
    wxDECLARE_EVENT_TABLE();
};

// A tab. Its picture state follows the record: selected 0, lit by new text 1, plain 2.
class zorn_channel_button : public zorn_button {
public:
    zorn_channel_button(wxWindow* parent, zorn_channel_window* owner, zorn_channel_record* record);
    void render_images() override;
    void resize_handler(bool size_changed) override;
    // The picture state of the tab and its paging button from the flags.
    void show_state(int selected, int has_new_text);

    zorn_channel_paging_button* paging_button;
    zorn_channel_record* channel;  // null for the placeholder
    zorn_channel_window* channel_window;

private:
    void mouse_handler(wxMouseEvent& event);
    wxDECLARE_EVENT_TABLE();
};

// A channel's text. Its frame's top edge is broken under its tab, so tab and text read as one.
class zorn_channel_display : public zorn_ansi_display {
public:
    zorn_channel_display(wxWindow* parent, const wxString& name);
    void repaint_internal(zorn_bitmap& bitmap) override;

    zorn_channel_button* tab_button = nullptr;
};

class zorn_channel_window : public zorn_transparent_window {
public:
    explicit zorn_channel_window(wxWindow* parent_window);
    ~zorn_channel_window() override;

    // chdiv: "(all)" first if needed, then the named channel; answers its record.
    zorn_channel_record* set_divert_channel(const char* name);
    // chudiv.
    void clear_divert_channel();
    // A run of diverted text: into the channel and "(all)", lighting the tabs not shown.
    void display_socket_data(const char* data, int length);
    zorn_channel_record* find_channel(const char* name) const { return channels.find(name); }
    zorn_channel_record* create_channel(const char* name, int is_all);
    // Every channel goes, with its history; the next chdiv makes them again.
    void clear_all_channels();
    void begin_text_block();
    void end_text_block();
    void set_all_fonts(zorn_font* font);

    // The display shown now: the current channel's, or the blank one.
    bool current_following() const;
    void set_current_following(int value);
    void clear_current_selection();

    // Tab clicks.
    void tab_clicked(zorn_channel_record* record);
    void paging_clicked(zorn_channel_record* record);

    void set_visible(int value) override;
    void layout() override;
    void change_theme() override;

    zorn_channel_list channels;
    zorn_channel_button* placeholder_button;
    zorn_channel_display* blank_display;
    zorn_channel_paging_button* page_button;

private:
    zorn_ansi_display* shown_display() const;
    void make_widgets(zorn_channel_record* record, int is_all);
    void release_widgets(zorn_channel_record* record);
    void show_lit(zorn_channel_record* record);
};
