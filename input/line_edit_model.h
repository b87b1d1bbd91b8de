#pragma once
// The parts of the command line that need no window: the three command histories and the
// cleaning of typed or pasted text. The widget hands its text box in through zorn_line_box.

#include <string>
#include <string_view>

struct zorn_fixed_string;

// What the history needs of the text box it drives.
class zorn_line_box {
public:
    virtual ~zorn_line_box() = default;
    virtual std::string get_text() const = 0;
    // Replaces the text and leaves the insertion point at its end.
    virtual void set_text(const std::string& text) = 0;
    virtual long insertion_point() const = 0;
    virtual void set_insertion_point(long position) = 0;
};

// Three lists, one per stage of a session: 0 disconnected, 1 connected, 2 logged in.
// Entry 0 is always empty, entry 1 holds what is being typed, 2..99 are commands, newest at 2.
class zorn_command_history {
public:
    static constexpr int list_count = 3;
    static constexpr int entries = 100;

    zorn_command_history();

    void select_history_list(int list);
    void history_store(const std::string& text);
    void history_up(zorn_line_box& box);
    void history_down(zorn_line_box& box);
    // The lines of //history: entries 20 down to 2, numbered from 1 at the newest.
    std::string history_text() const;

    void set_password_mode(bool on) { password_mode = on; }
    bool in_password_mode() const { return password_mode; }

    int current_list() const { return history_list; }
    int index() const { return history_index; }
    // Null where the list ends.
    const std::string* entry(int position) const;

private:
    void show_entry(zorn_line_box& box);

    // Present entries of each list; an entry past the count is "missing".
    std::string history[list_count][entries];
    int used[list_count];
    int history_position[list_count];
    int history_index = 1;
    int history_list = 0;
    bool password_mode = false;
};

// Plain text of UTF-8: code points 32..126, tab, line feed and carriage return stay; every other
// code point, a malformed lead byte and a cut-off sequence each become one ".".
std::string clean_text(std::string_view utf8);
// The same into a fixed string (at most 5999 bytes; the rest is dropped).
void clean_text(std::string_view utf8, zorn_fixed_string* out);
