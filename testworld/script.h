#pragma once
// Script mode: a fixed exchange with one client, for tests. A script is a text file of one step
// per line; blank lines and lines starting with '#' are skipped. Arguments run to the end of the
// line and take the escapes of wire.h (\\ \n \r \t \e \s \* \xHH).
//
//   expect TEXT    the next received line must be TEXT; a TEXT ending in an unescaped '*' matches
//                  any line that begins with the rest
//   ignore TEXT    from now on, received lines beginning with TEXT are passed over by expect
//   send TEXT      send the bytes over TLS, nothing added
//   sendfile PATH  send the bytes of a file (read when the script is loaded; a relative path is
//                  taken from the script's directory)
//   line TEXT      send the bytes and "\r\n"
//   raw TEXT       write the bytes to the TCP connection under TLS (the client sees a broken record)
//   sleep MS       wait
//   timeout MS     time limit of each later expect (5000 at start)
//   close          TLS close alert, then close the connection; the script ends
//   drop           close the connection with no close alert; the script ends
//   reset          abort the connection with a TCP reset; the script ends
//
// A script that runs out of steps ends as "close" does. An expect that fails ends the connection
// without a close alert and makes the script's result false.

#include <string>
#include <vector>

namespace testworld {

class tls_connection;

enum class step_kind { expect, ignore, send, sendfile, line, raw, sleep, timeout, close, drop, reset };

struct script_step {
    step_kind kind;
    std::string bytes;  // unescaped argument of expect, ignore, send, line, raw; sendfile: the file's bytes
    int number = 0;     // milliseconds of sleep and timeout
    bool prefix = false;  // expect: match the beginning only
    int source_line = 0;
};

struct script {
    std::vector<script_step> steps;
};

// False with "line N: reason" in *error for the first bad line. Relative sendfile paths are taken
// from base_directory (the working directory when empty).
bool parse_script(const std::string& text, script* out, std::string* error, const std::string& base_directory = "");
bool load_script(const std::string& path, script* out, std::string* error);

// Runs the steps over an open, handshaken connection and closes it. False, with the reason in
// *failure, when an expect failed or the connection was lost before the script's end.
bool run_script(const script& steps, tls_connection* connection, std::string* failure);

}  // namespace testworld
