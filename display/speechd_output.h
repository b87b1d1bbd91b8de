#pragma once
// Speech through speech-dispatcher. Its client library is loaded at run time, so a machine
// without it runs the client as before: no speech, one debug line, no error for the player.

#include <memory>

#include "display/reader_core.h"

inline constexpr const char* zorn_speechd_library = "libspeechd.so.2";

// A connection to the speech server (started on demand, as the library does), or null when the
// library or the server is missing.
std::unique_ptr<zorn_speech_output> zorn_open_speechd(const char* library = zorn_speechd_library);
