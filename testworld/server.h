#pragma once
// The test world's server: listens with TLS on 127.0.0.1, serves each accepted client on a thread
// of its own in one of three modes, and stops cleanly on SIGTERM or SIGINT.

#include <string>

namespace testworld {

enum class serve_mode { world, script, flood };

struct server_options {
    int port = 3102;          // 0 picks a free port
    std::string log_path;     // every received line is appended here
    std::string key_path;     // the TLS key is kept here (made at the first start); empty: a new key
    serve_mode mode = serve_mode::world;
    std::string script_path;  // script mode
    std::string flood_path;   // flood mode
    int repeat = 1;           // flood mode: times the file is sent
    bool once = false;        // serve one connection, then exit
};

// Parses the command line; false with a message in *error.
bool parse_options(int argc, char** argv, server_options* options, std::string* error);
const char* usage_text();

// Runs until a signal, or after one connection with --once. The exit status: 0, or 1 when the
// server could not start or a script failed.
int run_server(const server_options& options);

}  // namespace testworld
