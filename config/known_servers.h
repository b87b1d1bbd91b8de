#pragma once
// The game servers the client has met: for each host and port, the SHA-256 of the public key its
// certificate carried at the first visit ("known_servers.cfg" in the config directory). At each
// TLS connect the key seen is compared with the pin; a changed key, or a pin file that can't be
// read whole, makes the frame ask the player before a single byte goes out.
//
// The file, XML with a header:
//   <known_servers>
//     <server>
//       <host>play.embervale.example</host>
//       <port>3102</port>
//       <sha256>64 lower-case hexadecimal digits</sha256>
//     </server>
//   </known_servers>
// Unknown tags are skipped. Anything else that isn't so (no header, a root or server left open,
// a missing or bad leaf, too many servers, a file too large) makes the whole file damaged: no pin
// in it is trusted, and the servers read before the damage are kept only for a later rewrite.

#include <array>
#include <cstddef>
#include <string>
#include <vector>

constexpr int zorn_fingerprint_size = 32;
using zorn_key_fingerprint = std::array<unsigned char, zorn_fingerprint_size>;

// More servers than this, a host longer than this, or a file larger than this: damaged.
constexpr int zorn_known_servers_limit = 256;
constexpr int zorn_known_host_limit = 255;
constexpr size_t zorn_known_servers_file_limit = 256 * 1024;

inline constexpr const char* zorn_known_servers_file_name = "known_servers.cfg";

// 64 lower-case hexadecimal digits, as the file holds them.
std::string zorn_fingerprint_hex(const zorn_key_fingerprint& fingerprint);
// For the player: the same digits in eight groups of eight, separated by blanks.
std::string zorn_fingerprint_display(const zorn_key_fingerprint& fingerprint);
// Exactly 64 hexadecimal digits (either case); false leaves *fingerprint unchanged.
bool zorn_fingerprint_from_hex(const char* text, zorn_key_fingerprint* fingerprint);

class zorn_known_servers {
public:
    struct entry {
        std::string host;
        int port = 0;
        zorn_key_fingerprint fingerprint{};
    };
    enum class load_result { loaded, missing, damaged };

    // A missing file is an empty list; any other failure to read it whole is damage.
    load_result load_file(const std::string& path);
    // False when the bytes are damaged; the servers read before the damage stay in the list.
    bool parse(const char* bytes, size_t length);
    // The file's text, header to the final empty line.
    std::string text() const;
    // Through a temporary file renamed over the target; false (target untouched) on failure.
    bool save_file(const std::string& path) const;

    // Host names compare without regard to ASCII case. Null when the server is unknown.
    const entry* find(const std::string& host, int port) const;
    // Replaces the pin of a known server in place, or adds the server at the end.
    void store(const std::string& host, int port, const zorn_key_fingerprint& fingerprint);

    const std::vector<entry>& entries() const { return list; }

private:
    bool parse_server(class zorn_xml_reader& reader);

    std::vector<entry> list;
};

// What a connect found.
enum class zorn_pin_verdict {
    first_visit,  // no pin for this host and port: now pinned (saved unless the save failed)
    match,        // the key is the pinned one
    mismatch,     // another key is pinned, or the pin file is damaged
};

struct zorn_pin_check {
    zorn_pin_verdict verdict = zorn_pin_verdict::first_visit;
    bool file_damaged = false;
    bool has_pin = false;  // stored holds the pin of this server (also when the file is damaged)
    zorn_key_fingerprint stored{};
    bool saved = false;  // first visit: the new pin reached the file
};

// Loads the pin file at path, compares, and on a first visit stores the key seen. An empty path
// (no config directory) keeps nothing: every visit is a first one.
zorn_pin_check zorn_check_server_pin(const std::string& path, const std::string& host, int port,
                                     const zorn_key_fingerprint& seen);
// The player trusts the key seen: the file is rewritten with it, keeping every other server that
// could be read. False when the file could not be written.
bool zorn_trust_server_pin(const std::string& path, const std::string& host, int port,
                           const zorn_key_fingerprint& seen);
