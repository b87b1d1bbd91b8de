#pragma once
// Level-gated debug lines of the settings code: printed when zorn_debug_level is at least level.

#include "config/debug_log.h"

#define ZORN_SETTINGS_LOG(level, ...)                                    \
    do {                                                                 \
        if (zorn_debug_level >= (level)) zorn_client_debug_printf(__VA_ARGS__); \
    } while (0)
