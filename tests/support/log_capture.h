#pragma once
// Sends the debug log to a private file for the life of the object, at the given level.

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "config/debug_log.h"

class log_capture {
public:
    explicit log_capture(int level = 1) {
        char name[] = "/tmp/lantern_log_capture_XXXXXX";
        const int descriptor = mkstemp(name);
        if (descriptor >= 0) close(descriptor);
        path = name;
        if (zorn_client_debug_logfile_is_open()) zorn_client_debug_logfile_close();
        zorn_client_set_debug_logfile_name(path.c_str());
        saved_level = zorn_debug_level;
        zorn_debug_level = 1;  // keeps the log's own "opened" line out of the capture
        zorn_client_try_open_debug_logfile();
        zorn_debug_level = level;
    }
    ~log_capture() {
        zorn_debug_level = saved_level;
        if (zorn_client_debug_logfile_is_open()) zorn_client_debug_logfile_close();
        unlink(path.c_str());
    }
    log_capture(const log_capture&) = delete;
    log_capture& operator=(const log_capture&) = delete;

    std::string text() const {
        std::ifstream file(path);
        std::stringstream content;
        content << file.rdbuf();
        return content.str();
    }

private:
    std::string path;
    int saved_level = 1;
};
