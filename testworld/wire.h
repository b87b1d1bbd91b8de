#pragma once
// What the test world puts on the wire: plain text with ANSI colour (one SGR code per sequence,
// as the game does), semicolon-framed tags, and the two telnet ECHO negotiations the client
// reads as password mode. Plus the escape syntax of script files.

#include <string>

namespace testworld {

// SGR codes the world uses.
enum sgr_code : int {
    sgr_reset = 0,
    sgr_bold = 1,
    sgr_red = 31,
    sgr_green = 32,
    sgr_yellow = 33,
    sgr_blue = 34,
    sgr_magenta = 35,
    sgr_cyan = 36,
    sgr_white = 37,
};

// "\x1b[<code>m"
std::string sgr(int code);
// 0 to 15 for a hexadecimal digit of either case, -1 for anything else.
int hex_value(char c);
// Text wrapped in its colour codes and a reset, each in a sequence of its own.
std::string colored(const std::string& text, int color, bool bold = false);

// Plain text for the wire: a semicolon doubled. Text that came from a player also loses the
// bytes that would read as control (C0 controls other than TAB, DEL, 0xFF): they become '?'.
std::string escape_text(const std::string& text);
std::string sanitize_player_text(const std::string& text);

// ";s" name ";" data ";e" name ";". Tag data has no escape: a semicolon in it becomes a comma,
// a carriage return is dropped.
std::string tag(const std::string& name, const std::string& data);
// ";t" name ";"
std::string single_tag(const std::string& name);

// IAC DONT ECHO: the client hides what is typed. IAC DO ECHO: it shows it again.
std::string password_mode_on();
std::string password_mode_off();

// Script escapes: \\ \n \r \t \e (ESC) \s (blank) \* (star) \xHH. False, with the offset of the bad escape in
// *error_offset, for an unknown escape or a short \x.
bool unescape(const std::string& text, std::string* bytes, size_t* error_offset);
// The reverse, for messages: printable ASCII as is, everything else as an escape.
std::string escape_for_display(const std::string& bytes);

}  // namespace testworld
