#include "app/command_line.h"

#include "base/words.h"
#include "config/debug_log.h"

void zorn_parse_command_line(int argc, const char* const* argv, char* out, int size) {
    if (!out || size < 1) return;
    out[0] = '\0';
    if (!argv || argc < 1) return;
    const bool log = zorn_debug_level >= 2;
    if (log && argv[0]) zorn_client_debug_printf("DEBUG - Command line executable name:  %s\n", argv[0]);
    bool version_next = false;
    for (int i = 1; i < argc; i++) {
        const char* arg = argv[i] ? argv[i] : "";
        if (version_next) {
            if (log) zorn_client_debug_printf("DEBUG - Command line launcher version: %s\n", arg);
            safe_strcpy(out, arg, size);
            version_next = false;
        } else if (word_equal(arg, "-l")) {
            if (log) zorn_client_debug_printf("DEBUG - Command line launcher flag:    %s\n", arg);
            version_next = true;
        } else if (word_equal(arg, "-n")) {
            if (log) zorn_client_debug_printf("DEBUG - Command line old launcher:     %s\n", arg);
            safe_strcpy(out, "(old style launcher)", size);
        } else if (log) {
            zorn_client_debug_printf("DEBUG - Unknown command line arg:      %s\n", arg);
        }
    }
}
