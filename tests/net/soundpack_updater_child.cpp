// soundpack_updater_child CONFIG_DIR PORT LOG_FILE: the soundpack updater thread as the client
// starts it, against 127.0.0.1:PORT, with waits of a few hundred milliseconds and a manifest saved
// after every file. Prints "started" and runs until killed.

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "config/debug_log.h"
#include "net/soundpack_updater.h"

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: soundpack_updater_child CONFIG_DIR PORT LOG_FILE\n");
        return 2;
    }
    std::signal(SIGPIPE, SIG_IGN);
    zorn_client_set_debug_logfile_name(argv[3]);
    zorn_client_try_open_debug_logfile();
    zorn_debug_level = 3;
    zorn_soundpack_updater_settings settings;
    settings.config_directory = argv[1];
    settings.web_host = "127.0.0.1";
    settings.web_port = std::atoi(argv[2]);
    settings.before_round_ms = 20;
    settings.after_failure_ms = 200;
    settings.after_success_ms = 200;
    settings.manifest_save_interval_seconds = -1;
    if (!zorn_start_soundpack_updater(settings)) return 1;
    std::printf("started\n");
    std::fflush(stdout);
    for (;;) pause();
}
