#pragma once
// What the three button sets decide without a window: the direction block's table and the exits
// code of "dirs", the hint buttons' tag numbers, payload and column, and the function keys' tag
// numbers and two-line labels. The widgets (direction_buttons.h, hint_buttons.h, fkey_buttons.h)
// only apply these answers.

#include <functional>
#include <string>
#include <vector>

// ---- Direction buttons --------------------------------------------------------------------------

struct direction_button_row {
    const char* label;
    const char* command;
    int exit_bit;  // 0: "Out", which has no exit and is always lit
    int x, y, width, height;  // place in the block, from its top left corner
};

constexpr int direction_button_count = 11;
constexpr int direction_block_width = 97;
constexpr int direction_block_height = 130;
extern const direction_button_row direction_button_table[direction_button_count];

// The second word of "dirs": two bytes, each 'A' to '`' (five bits), the first the high half.
// False, and *mask untouched, for anything else.
bool parse_exits_code(const char* word, int* mask);

// ---- Hint buttons -------------------------------------------------------------------------------

constexpr int hint_button_count = 12;
constexpr int hint_button_width = 97;
constexpr int hint_button_height = 26;
constexpr int hint_button_step = 33;  // from one button's top to the next
constexpr int hint_group_gap = 16;    // before the first button after an unused number

// What a tag "b<n>..." asks for.
struct hint_tag {
    int number = 0;        // atoi of what follows the "b"
    bool bogus = false;    // number outside 1 to 12: logged and ignored
    bool tooltip = false;  // the digits are followed by "t": ignored
};
hint_tag parse_hint_tag(const char* tag);

// The payload: the label is the first line, the command all behind the first line feed. Without
// a line feed, or with nothing behind it, has_command is false and the button goes away.
struct hint_payload {
    std::string label;
    std::string command;
    bool has_command = false;
};
hint_payload split_hint_payload(const char* payload);

// The column: for each button whether it is shown (in use) and its y. A shown button stands at the
// running y, which grows by hint_button_step; a shown button behind an unused one (and the first)
// gets hint_group_gap more in front of it.
std::vector<int> hint_column_positions(const std::vector<bool>& shown, int top);

// ---- Function key buttons -----------------------------------------------------------------------

constexpr int fkey_button_count = 8;
constexpr int fkey_line_2_limit = 98;

// "bf<n>": 1 to 8 set a button, 9 to 12 are quietly ignored, anything else is logged.
enum class fkey_tag_action { setup, ignore, bogus };
fkey_tag_action classify_fkey_tag(const char* tag, int* number);

// The label of a "bf" payload: leading line feeds skipped, then the first line.
std::string fkey_payload_label(const char* payload);

// How many leading characters of a text fit on the button (chars_that_fit with its font and
// width): at least 1 for a non-empty text.
using fit_function = std::function<int(const char* text)>;

// The label laid out on two lines: a first word too long is cut after what fits and the second
// word starts line 2; otherwise line 1 breaks at the last blank, tab or line feed that fits. Tabs
// and line feeds show as blanks; line 2 takes what fits, at most 98 characters, without trailing
// blanks.
void fkey_label_split(const char* label, const fit_function& fit, std::string* line_1, std::string* line_2);

// Preferred width of the function key row for a height, and the buttons' side and places.
inline int fkey_row_width(int height) { return 8 * height - 10; }
int fkey_button_side(int row_height);
// x of button i (0 to 7) in a row starting at row_x.
inline int fkey_button_x(int row_x, int side, int index) { return row_x + 3 + index * (side + 3); }
