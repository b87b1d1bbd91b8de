// The pin file of the game servers: parse (strict, since a half-read file must not pass for a
// shorter good one), write, compare.

#include "config/known_servers.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "base/words.h"
#include "config/replace_file.h"
#include "config/settings_log.h"
#include "config/xml.h"

namespace {

constexpr int value_buffer_size = 1000;
const char hex_digits[] = "0123456789abcdef";

int hex_value(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool same_host(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        const auto lower = [](char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; };
        if (lower(a[i]) != lower(b[i])) return false;
    }
    return true;
}

// One place for every kind of damage: a debug line and false.
bool damaged(const char* why) {
    ZORN_SETTINGS_LOG(1, "Warning in zorn_known_servers::parse(), damaged pin file: %s.\n", why);
    return false;
}

}  // namespace

std::string zorn_fingerprint_hex(const zorn_key_fingerprint& fingerprint) {
    std::string text;
    for (unsigned char byte : fingerprint) {
        text += hex_digits[byte >> 4];
        text += hex_digits[byte & 15];
    }
    return text;
}

std::string zorn_fingerprint_display(const zorn_key_fingerprint& fingerprint) {
    const std::string hex = zorn_fingerprint_hex(fingerprint);
    std::string text;
    for (size_t i = 0; i < hex.size(); i += 8) {
        if (i) text += ' ';
        text += hex.substr(i, 8);
    }
    return text;
}

bool zorn_fingerprint_from_hex(const char* text, zorn_key_fingerprint* fingerprint) {
    if (!text || std::strlen(text) != 2 * zorn_fingerprint_size) return false;
    zorn_key_fingerprint parsed{};
    for (int i = 0; i < zorn_fingerprint_size; ++i) {
        const int high = hex_value(text[2 * i]), low = hex_value(text[2 * i + 1]);
        if (high < 0 || low < 0) return false;
        parsed[i] = static_cast<unsigned char>(high * 16 + low);
    }
    *fingerprint = parsed;
    return true;
}

zorn_known_servers::load_result zorn_known_servers::load_file(const std::string& path) {
    list.clear();
    FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) {
        if (errno == ENOENT) return load_result::missing;
        ZORN_SETTINGS_LOG(1, "Warning in zorn_known_servers::load_file(), cannot open '%s'.\n", path.c_str());
        return load_result::damaged;
    }
    std::string bytes;
    char block[4096];
    size_t got = 0;
    while ((got = std::fread(block, 1, sizeof block, file)) > 0 && bytes.size() <= zorn_known_servers_file_limit)
        bytes.append(block, got);
    const bool read_failed = std::ferror(file) != 0;
    std::fclose(file);
    const bool whole = !read_failed && bytes.size() <= zorn_known_servers_file_limit;
    if (!whole) damaged(read_failed ? "read error" : "file too large");
    return whole && parse(bytes.data(), bytes.size()) ? load_result::loaded : load_result::damaged;
}

bool zorn_known_servers::parse(const char* bytes, size_t length) {
    list.clear();
    const void* line_end = std::memchr(bytes, '\n', length);
    if (!line_end) return damaged("no header line");
    const size_t header_length = static_cast<size_t>(static_cast<const char*>(line_end) - bytes);
    const std::string header(bytes, header_length);
    if (!zorn_xml_reader::check_xml_header_string(header.c_str())) return damaged("bad header");

    zorn_xml_memory_reader reader(bytes + header_length + 1, length - header_length - 1);
    char tag[zorn_xml_tag_size];
    if (!reader.read_tag(tag, sizeof tag) || !word_equal(tag, "known_servers")) return damaged("no known_servers root");
    while (reader.read_tag(tag, sizeof tag)) {
        if (!word_equal(tag, "server")) {
            reader.skip_data();
            continue;
        }
        if (!parse_server(reader)) return false;
    }
    // read_tag ends the loop at the root's closing tag, which empties the stack; the end of the
    // bytes or a tag that failed to read leave the root open.
    if (reader.stack_depth() != 0) return damaged("the root is not closed");
    return true;
}

bool zorn_known_servers::parse_server(zorn_xml_reader& reader) {
    if (static_cast<int>(list.size()) >= zorn_known_servers_limit) return damaged("too many servers");
    entry server;
    bool has_host = false, has_port = false, has_key = false;
    char tag[zorn_xml_tag_size];
    char value[value_buffer_size];
    while (reader.read_tag(tag, sizeof tag)) {
        if (word_equal(tag, "host")) {
            if (!reader.read_data(value, sizeof value)) return damaged("unreadable host");
            if (!*value || std::strlen(value) > static_cast<size_t>(zorn_known_host_limit))
                return damaged("empty or overlong host");
            server.host = value;
            has_host = true;
        } else if (word_equal(tag, "port")) {
            int port = 0;
            if (!reader.read_data(&port) || port < 1 || port > 65535) return damaged("bad port");
            server.port = port;
            has_port = true;
        } else if (word_equal(tag, "sha256")) {
            if (!reader.read_data(value, sizeof value) || !zorn_fingerprint_from_hex(value, &server.fingerprint))
                return damaged("bad sha256");
            has_key = true;
        } else {
            reader.skip_data();
        }
    }
    // The server's closing tag leaves the root alone on the stack.
    if (reader.stack_depth() != 1) return damaged("a server is not closed");
    if (!has_host || !has_port || !has_key) return damaged("a server lacks host, port or sha256");
    store(server.host, server.port, server.fingerprint);
    return true;
}

std::string zorn_known_servers::text() const {
    zorn_xml_string_writer writer;
    writer.write_xml_header();
    writer.write_tag("known_servers", 1);
    for (const entry& server : list) {
        writer.write_tag("server", 1);
        writer.write_leaf("host", server.host.c_str());
        writer.write_leaf("port", server.port);
        writer.write_leaf("sha256", zorn_fingerprint_hex(server.fingerprint).c_str());
        writer.end_tag("server", 1);
    }
    writer.end_tag("known_servers", 1);
    writer.write_newline();
    return writer.text();
}

bool zorn_known_servers::save_file(const std::string& path) const {
    zorn_replace_file out(path.c_str());
    if (!out.stream()) return false;
    const std::string bytes = text();
    if (std::fwrite(bytes.data(), 1, bytes.size(), out.stream()) != bytes.size()) return false;
    return out.commit();
}

const zorn_known_servers::entry* zorn_known_servers::find(const std::string& host, int port) const {
    for (const entry& server : list)
        if (server.port == port && same_host(server.host, host)) return &server;
    return nullptr;
}

void zorn_known_servers::store(const std::string& host, int port, const zorn_key_fingerprint& fingerprint) {
    for (entry& server : list) {
        if (server.port == port && same_host(server.host, host)) {
            server.fingerprint = fingerprint;
            return;
        }
    }
    list.push_back({host, port, fingerprint});
}

zorn_pin_check zorn_check_server_pin(const std::string& path, const std::string& host, int port,
                                     const zorn_key_fingerprint& seen) {
    zorn_pin_check check;
    zorn_known_servers known;
    if (!path.empty()) check.file_damaged = known.load_file(path) == zorn_known_servers::load_result::damaged;
    if (const zorn_known_servers::entry* pin = known.find(host, port)) {
        check.has_pin = true;
        check.stored = pin->fingerprint;
    }
    if (check.file_damaged || (check.has_pin && check.stored != seen)) {
        check.verdict = zorn_pin_verdict::mismatch;
        return check;
    }
    if (check.has_pin) {
        check.verdict = zorn_pin_verdict::match;
        return check;
    }
    check.verdict = zorn_pin_verdict::first_visit;
    known.store(host, port, seen);
    check.saved = !path.empty() && known.save_file(path);
    if (!check.saved)
        ZORN_SETTINGS_LOG(1, "Warning in zorn_check_server_pin(), unable to save the pin of %s:%d to '%s'.\n",
                          host.c_str(), port, path.c_str());
    return check;
}

bool zorn_trust_server_pin(const std::string& path, const std::string& host, int port,
                           const zorn_key_fingerprint& seen) {
    if (path.empty()) return false;
    zorn_known_servers known;
    known.load_file(path);  // a damaged file gives what could be read before the damage
    known.store(host, port, seen);
    if (known.save_file(path)) return true;
    ZORN_SETTINGS_LOG(1, "Warning in zorn_trust_server_pin(), unable to save the pin of %s:%d to '%s'.\n",
                      host.c_str(), port, path.c_str());
    return false;
}
