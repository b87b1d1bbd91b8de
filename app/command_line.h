#pragma once
// The launcher's flags on the command line: "-l VERSION" and "-n" (an older launcher).

// launcher_version holds at most this many characters.
constexpr int zorn_launcher_version_limit = 256;

// Walks the arguments from argument 0 as start-up does, logging each at debug level 2, and leaves
// the launcher's version in out (size bytes, at least 1): empty when neither flag was given. The
// word after "-l" is always the version, even when it is "-l" or "-n" itself. Flags are whole
// words, case ignored.
void zorn_parse_command_line(int argc, const char* const* argv, char* out, int size);
