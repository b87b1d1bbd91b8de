#include "testworld/script.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

#include "testworld/tls_connection.h"
#include "testworld/wire.h"

namespace testworld {

namespace {

constexpr int default_expect_timeout_ms = 5000;
constexpr int stall_timeout_ms = 10000;

struct keyword_row {
    const char* word;
    step_kind kind;
};

const keyword_row keyword_table[] = {
    {"expect", step_kind::expect}, {"ignore", step_kind::ignore}, {"send", step_kind::send},
    {"sendfile", step_kind::sendfile},
    {"line", step_kind::line},     {"raw", step_kind::raw},       {"sleep", step_kind::sleep},
    {"timeout", step_kind::timeout}, {"close", step_kind::close}, {"drop", step_kind::drop},
    {"reset", step_kind::reset},
};

bool takes_text(step_kind kind) {
    return kind == step_kind::expect || kind == step_kind::ignore || kind == step_kind::send ||
           kind == step_kind::sendfile || kind == step_kind::line || kind == step_kind::raw;
}

bool takes_number(step_kind kind) { return kind == step_kind::sleep || kind == step_kind::timeout; }

// An unescaped star at the end: an even number of backslashes stands before it.
bool ends_in_wildcard(const std::string& text) {
    if (text.empty() || text.back() != '*') return false;
    size_t backslashes = 0;
    for (size_t i = text.size() - 1; i > 0 && text[i - 1] == '\\'; i--) backslashes++;
    return backslashes % 2 == 0;
}

bool read_whole_file(const std::string& path, std::string* bytes) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return false;
    std::ostringstream content;
    content << file.rdbuf();
    *bytes = content.str();
    return true;
}

// sendfile: the argument names the file; the step keeps its bytes.
bool load_step_file(script_step* step, const std::string& base_directory, std::string* reason) {
    std::string path = step->bytes;
    if (path.empty()) {
        *reason = "'sendfile' needs a file name";
        return false;
    }
    if (path[0] != '/' && !base_directory.empty()) path = base_directory + "/" + path;
    if (!read_whole_file(path, &step->bytes)) {
        *reason = "cannot read '" + path + "'";
        return false;
    }
    return true;
}

bool parse_step(const std::string& line, int line_number, const std::string& base_directory, script_step* step,
                std::string* reason) {
    const size_t blank = line.find(' ');
    const std::string word = line.substr(0, blank);
    const std::string argument = blank == std::string::npos ? "" : line.substr(blank + 1);
    const keyword_row* row = nullptr;
    for (const keyword_row& candidate : keyword_table)
        if (word == candidate.word) row = &candidate;
    if (!row) {
        *reason = "unknown step '" + word + "'";
        return false;
    }
    step->kind = row->kind;
    step->source_line = line_number;
    if (takes_text(row->kind)) {
        std::string text = argument;
        if (row->kind == step_kind::expect && ends_in_wildcard(text)) {
            step->prefix = true;
            text.pop_back();
        }
        size_t offset = 0;
        if (!unescape(text, &step->bytes, &offset)) {
            *reason = "bad escape at column " + std::to_string(blank + 2 + offset);
            return false;
        }
        return row->kind != step_kind::sendfile || load_step_file(step, base_directory, reason);
    }
    if (takes_number(row->kind)) {
        char* end = nullptr;
        errno = 0;
        const long value = std::strtol(argument.c_str(), &end, 10);
        if (argument.empty() || *end != '\0' || errno != 0 || value < 0 || value > INT_MAX) {
            *reason = "'" + word + "' needs a number of milliseconds";
            return false;
        }
        step->number = static_cast<int>(value);
        return true;
    }
    if (!argument.empty()) {
        *reason = "'" + word + "' takes no argument";
        return false;
    }
    return true;
}

bool is_ignored(const std::string& line, const std::vector<std::string>& ignored) {
    for (const std::string& prefix : ignored)
        if (line.compare(0, prefix.size(), prefix) == 0) return true;
    return false;
}

bool matches(const script_step& step, const std::string& line) {
    return step.prefix ? line.compare(0, step.bytes.size(), step.bytes) == 0 : line == step.bytes;
}

// Waits for the next line that is not ignored; "" and true when it matched.
bool run_expect(const script_step& step, tls_connection* connection, int timeout_ms,
                const std::vector<std::string>& ignored, std::string* failure) {
    const std::string wanted = "'" + escape_for_display(step.bytes) + (step.prefix ? "*'" : "'");
    const long long deadline = monotonic_ms() + timeout_ms;
    for (;;) {
        const long long remaining = deadline - monotonic_ms();
        if (remaining <= 0) {
            *failure = "timed out waiting for " + wanted;
            return false;
        }
        std::string line;
        const int result = connection->read_line(&line, static_cast<int>(remaining));
        if (result < 0) {
            *failure = "connection closed while waiting for " + wanted;
            return false;
        }
        if (result == 0 || is_ignored(line, ignored)) continue;
        if (matches(step, line)) return true;
        *failure = "expected " + wanted + ", got '" + escape_for_display(line) + "'";
        return false;
    }
}

void sleep_while_running(tls_connection* connection, int milliseconds) {
    const long long deadline = monotonic_ms() + milliseconds;
    while (!connection->stopping()) {
        const long long remaining = deadline - monotonic_ms();
        if (remaining <= 0) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(remaining < 50 ? remaining : 50));
    }
}

}  // namespace

bool parse_script(const std::string& text, script* out, std::string* error, const std::string& base_directory) {
    out->steps.clear();
    std::istringstream input(text);
    std::string line;
    int line_number = 0;
    while (std::getline(input, line)) {
        line_number++;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() || line[0] == '#') continue;
        script_step step{step_kind::close, "", 0, false, 0};
        std::string reason;
        if (!parse_step(line, line_number, base_directory, &step, &reason)) {
            *error = "line " + std::to_string(line_number) + ": " + reason;
            return false;
        }
        out->steps.push_back(std::move(step));
    }
    return true;
}

bool load_script(const std::string& path, script* out, std::string* error) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        *error = "cannot read '" + path + "'";
        return false;
    }
    std::ostringstream text;
    text << file.rdbuf();
    const size_t slash = path.rfind('/');
    return parse_script(text.str(), out, error, slash == std::string::npos ? "" : path.substr(0, slash));
}

bool run_script(const script& steps, tls_connection* connection, std::string* failure) {
    int timeout_ms = default_expect_timeout_ms;
    std::vector<std::string> ignored;
    for (const script_step& step : steps.steps) {
        bool ok = true;
        switch (step.kind) {
        case step_kind::expect: ok = run_expect(step, connection, timeout_ms, ignored, failure); break;
        case step_kind::ignore: ignored.push_back(step.bytes); break;
        case step_kind::send:
        case step_kind::sendfile: ok = connection->write_all(step.bytes, stall_timeout_ms); break;
        case step_kind::line: ok = connection->write_all(step.bytes + "\r\n", stall_timeout_ms); break;
        case step_kind::raw: ok = connection->write_raw(step.bytes); break;
        case step_kind::sleep: sleep_while_running(connection, step.number); break;
        case step_kind::timeout: timeout_ms = step.number; break;
        case step_kind::close: connection->close_clean(); return true;
        case step_kind::drop: connection->close_drop(); return true;
        case step_kind::reset: connection->close_reset(); return true;
        }
        if (!ok) {
            if (failure->empty()) *failure = "connection lost";
            *failure = "line " + std::to_string(step.source_line) + ": " + *failure;
            connection->close_drop();
            return false;
        }
        if (connection->stopping()) {
            *failure = "server stopped";
            connection->close_drop();
            return false;
        }
    }
    connection->close_clean();
    return true;
}

}  // namespace testworld
