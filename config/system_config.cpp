// The system file "ember_vale.cfg": what belongs to the installation rather than a character.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <ctime>

#include "base/files.h"
#include "base/fixed_string.h"
#include "base/random.h"
#include "base/words.h"
#include "config/lconfig.h"
#include "config/replace_file.h"
#include "config/settings_log.h"
#include "config/xml.h"

#ifndef LANTERN_GAME_HOST
#define LANTERN_GAME_HOST "play.embervale.example"
#endif
#ifndef LANTERN_GAME_PORT
#define LANTERN_GAME_PORT 3102
#endif
#ifndef LANTERN_WEB_HOST
#define LANTERN_WEB_HOST "www.embervale.example"
#endif
static_assert(LANTERN_GAME_PORT > 0 && LANTERN_GAME_PORT < 65536, "LANTERN_GAME_PORT must be a TCP port");

namespace {

constexpr const char* system_file_name = "/ember_vale.cfg";
constexpr int tag_buffer_size = 10000;
constexpr int leaf_buffer_size = 1000;
constexpr int uuid_read_length = 32;
constexpr int default_web_port = 80;

bool valid_port(int port) { return port > 0 && port < 65536; }

// "host" or "host:port". False for an empty host, a second colon or a port that isn't one.
bool split_host_port(const char* text, std::string* host, int* port) {
    host->clear();
    *port = 0;
    if (!text || !*text) return false;
    const char* colon = std::strchr(text, ':');
    if (!colon) {
        *host = text;
        return std::strpbrk(text, " \t") == nullptr;
    }
    if (colon == text || std::strchr(colon + 1, ':')) return false;
    const char* digits = colon + 1;
    if (!*digits || std::strspn(digits, "0123456789") != std::strlen(digits) || std::strlen(digits) > 5) return false;
    const int value = std::atoi(digits);
    if (!valid_port(value)) return false;
    host->assign(text, colon - text);
    *port = value;
    return std::strpbrk(host->c_str(), " \t") == nullptr;
}

void warn_unusable_host(const char* leaf, const char* text) {
    ZORN_SETTINGS_LOG(1, "Warning in LConfig::set_%s(), unusable value '%s', using the built-in default.\n", leaf, text);
}

// Fills host and port from a leaf; both cleared when the leaf is unset or unusable.
void parse_host_leaf(const char* leaf, const std::optional<std::string>& text, std::string* host, int* port) {
    if (text && !split_host_port(text->c_str(), host, port)) {
        warn_unusable_host(leaf, text->c_str());
        host->clear();
        *port = 0;
    } else if (!text) {
        host->clear();
        *port = 0;
    }
}

}  // namespace

void LConfig::load_system_config() {
    load_system_config_file();
    ZORN_SETTINGS_LOG(3, "load_system_config() - finished\n\n");
    if (const char* base = directory()) {
        zorn_fixed_string path;
        path.appendf("%s/bootname.txt", base);
        ::unlink(path.c_str());
    }
}

void LConfig::load_system_config_file() {
    const char* base = directory();
    if (!base) {
        ZORN_SETTINGS_LOG(1, "Unable to load system config - no config file directory.\n");
        return;
    }
    zorn_fixed_string path;
    path.appendf("%s/sound_version.cfg", base);
    ::unlink(path.c_str());
    path.set(base);
    path.append(system_file_name);
    ZORN_SETTINGS_LOG(3, "load_system_config_file() - using core config file name '%s'.\n", path.c_str());

    zorn_fixed_string curr_config;
    if (FILE* file = std::fopen(path.c_str(), "rb")) {
        char line[tag_buffer_size];
        line[0] = '\0';
        const bool has_line = fget_line(file, line, sizeof line) > 0;
        zorn_xml_file_reader reader(file);
        // A file that doesn't begin with the header line is ignored as a whole.
        if (has_line && zorn_xml_reader::check_xml_header_string(line)) {
            load_system_config_stream(reader, &curr_config);
        } else {
            ZORN_SETTINGS_LOG(1, "Warning in load_system_config_file() - bad XML header, bailing.\n");
        }
        std::fclose(file);
    } else {
        ZORN_SETTINGS_LOG(1, "Unable to load system config - cannot open config file '%s'.\n", path.c_str());
    }
    if (!uuid[0]) {
        create_default_uuid();
        ZORN_SETTINGS_LOG(3, "load_system_config_file() - created default uuid '%s'.\n", uuid);
    }
    setup_default_config(curr_config.c_str());
    apply_font();
}

void LConfig::load_system_config_stream(zorn_xml_reader& reader, zorn_fixed_string* curr_config) {
    char tag[tag_buffer_size];
    // A stray closing tag at the top does not end the file.
    while (!reader.at_end()) {
        if (!reader.read_tag(tag, sizeof tag)) continue;
        if (word_equal(tag, "system_config_list")) {
            load_xml_system_config(reader, curr_config);
        } else {
            ZORN_SETTINGS_LOG(1, "LConfig::load_system_config_file() got unknown tag '%s'\n", tag);
            reader.skip_data();
        }
    }
}

void LConfig::load_xml_system_config(zorn_xml_reader& reader, zorn_fixed_string* curr_config) {
    char tag[tag_buffer_size];
    while (reader.read_child(tag, sizeof tag)) {
        if (!read_system_leaf(reader, tag, curr_config)) reader.skip_data();
    }
}

bool LConfig::read_system_leaf(zorn_xml_reader& reader, const char* tag, zorn_fixed_string* curr_config) {
    char value[leaf_buffer_size];
    value[0] = '\0';
    int* number = word_equal(tag, "system_audio_enable")         ? &system_audio_enable
                  : word_equal(tag, "uuid_create_time")          ? &uuid_create_time
                  : word_equal(tag, "last_voting_time")          ? &last_voting_time
                  : word_equal(tag, "last_voting_reminder_time") ? &last_voting_reminder_time
                  : word_equal(tag, "voting_reminders")          ? &voting_reminders
                                                                 : nullptr;
    if (number) {
        reader.read_data(number);
    } else if (word_equal(tag, "curr_config")) {
        reader.read_data(value, sizeof value);
        curr_config->set(value);
    } else if (word_equal(tag, "uuid")) {
        // The raw text is taken even when the reader finds bytes outside 32 to 126 in it: the
        // installation's identity must survive every restart, whatever the server gave it.
        value[0] = '\0';
        if (!reader.read_data(value, sizeof value)) {
            // A failed value read leaves its closing tag unread: take it, or the list would end here.
            char closing[zorn_xml_tag_size];
            reader.read_block(closing, sizeof closing, 1);
            reader.pop_stack_entry(closing);
            zorn_xml_reader::compact_string(value);
        }
        safe_strcpy(uuid, value, uuid_read_length + 1);
        ZORN_SETTINGS_LOG(3, "load_xml_system_config() - loaded uuid '%s'.\n", uuid);
    } else if (word_equal(tag, "single_config")) {
        load_xml_single_system_config(reader, nullptr);
    } else if (word_equal(tag, "server_host") || word_equal(tag, "web_host")) {
        const bool server = word_equal(tag, "server_host");
        if (reader.read_data(value, sizeof value)) (server ? set_server_host(value) : set_web_host(value));
    } else if (word_equal(tag, "server_port")) {
        int port = 0;
        if (reader.read_data(&port)) set_server_port(port);
    } else {
        for (int i = 0; i < vote_menu_count; ++i) {
            char name_tag[32];
            char url_tag[32];
            std::snprintf(name_tag, sizeof name_tag, "vote_menu%d_name", i);
            std::snprintf(url_tag, sizeof url_tag, "vote_menu%d_url", i);
            const bool is_name = word_equal(tag, name_tag);
            if (!is_name && !word_equal(tag, url_tag)) continue;
            reader.read_data(value, sizeof value);
            (is_name ? vote_menu[i].name : vote_menu[i].url) = std::string(value);
            return true;
        }
        // Values of older clients that are read and dropped take the same road as unknown ones.
        return false;
    }
    return true;
}

void LConfig::write_system_config(zorn_xml_writer& writer) {
    writer.write_tag("system_config_list", 1);
    writer.write_leaf("uuid", uuid);
    writer.write_leaf("uuid_create_time", uuid_create_time);
    if (current_char_cfg && current_char_cfg->has_name()) writer.write_leaf("curr_config", get_name());
    writer.write_leaf("system_audio_enable", system_audio_enable);
    writer.write_leaf("last_voting_time", last_voting_time);
    writer.write_leaf("last_voting_reminder_time", last_voting_reminder_time);
    writer.write_leaf("voting_reminders", voting_reminders);
    for (int i = 0; i < vote_menu_count; ++i) {
        if (!vote_menu[i].name) continue;
        char tag[32];
        std::snprintf(tag, sizeof tag, "vote_menu%d_name", i);
        writer.write_leaf(tag, vote_menu[i].name->c_str());
        std::snprintf(tag, sizeof tag, "vote_menu%d_url", i);
        // A null url is written as an empty value (write_string reports it).
        writer.write_leaf(tag, vote_menu[i].url ? vote_menu[i].url->c_str() : nullptr);
    }
    if (server_host) writer.write_leaf("server_host", server_host->c_str());
    if (server_port != 0) writer.write_leaf("server_port", server_port);
    if (web_host) writer.write_leaf("web_host", web_host->c_str());
}

bool LConfig::save_system_config_file() {
    const char* base = directory();
    if (!base) {
        ZORN_SETTINGS_LOG(1, "Unable to save system config - no config file directory.\n");
        return false;
    }
    zorn_fixed_string path(base);
    path.append(system_file_name);
    zorn_replace_file out(path.c_str());
    if (!out.stream()) {
        ZORN_SETTINGS_LOG(1, "Unable to save system config - cannot open config file '%s'.\n", path.c_str());
        return false;
    }
    zorn_xml_file_writer writer(out.stream());
    if (writer.write_xml_header() <= 0) {
        ZORN_SETTINGS_LOG(1, "Error in LConfig::save_system_config_file(), unable to write to system config file '%s'.\n",
                          path.c_str());
        return false;
    }
    write_system_config(writer);
    for (const auto& record : config_list) {
        if (record->has_name()) save(*record);
    }
    writer.end_tag("system_config_list", 1);
    writer.write_newline();
    if (writer.failed() || !out.commit()) {
        ZORN_SETTINGS_LOG(1, "Error in LConfig::save_system_config_file(), unable to write to system config file '%s'.\n",
                          path.c_str());
        return false;
    }
    std::fflush(nullptr);
    return true;
}

void LConfig::create_default_uuid() {
    static const char digits[] = "0123456789abcdef";
    for (int i = 0; i < uuid_read_length; ++i) uuid[i] = digits[random_next(zorn_client_random()) & 15];
    uuid[uuid_read_length] = '\0';
    // "DFLT" tells the server that this installation has no identity of its own yet.
    std::memcpy(uuid, "DFLT", 4);
    ZORN_SETTINGS_LOG(3, "create_default_uuid() - created default uuid '%s'.\n", uuid);
}

void LConfig::set_uuid(const char* text) {
    if (!text || !*text) {
        ZORN_SETTINGS_LOG(1, "Error in set_uuid(), null string?\n");
        create_default_uuid();
        return;
    }
    safe_strcpy(uuid, text, uuid_size);
    ZORN_SETTINGS_LOG(3, "Changed uuid to '%s'.\n", uuid);
    const int now = static_cast<int>(std::time(nullptr));
    uuid_create_time = now;
    last_voting_reminder_time = now;
    last_voting_time = now;
    save_system_config_file();
}

const char* LConfig::get_vote_menu_name(int index) const {
    if (index < 0 || index >= vote_menu_count || !vote_menu[index].name) return nullptr;
    return vote_menu[index].name->c_str();
}

const char* LConfig::get_vote_menu_url(int index) const {
    if (index < 0 || index >= vote_menu_count || !vote_menu[index].name || !vote_menu[index].url) return nullptr;
    return vote_menu[index].url->c_str();
}

void LConfig::set_vote_menu(int index, const char* name, const char* url) {
    if (index < 0 || index >= vote_menu_count) return;
    vote_entry& entry = vote_menu[index];
    entry = vote_entry();
    if (!name) return;
    entry.name = name;
    if (url) entry.url = url;
}

// ---------------------------------------------------------------------------------------------
// Hosts

void LConfig::set_server_host(const char* text) {
    if (text && *text) {
        server_host = text;
    } else {
        server_host.reset();
    }
    parse_host_leaf("server_host", server_host, &server_host_name, &server_host_port);
}

void LConfig::set_server_port(int port) {
    server_port = port;
    if (port != 0 && !valid_port(port)) {
        char text[16];
        std::snprintf(text, sizeof text, "%d", port);
        warn_unusable_host("server_port", text);
    }
}

void LConfig::set_web_host(const char* text) {
    if (text && *text) {
        web_host = text;
    } else {
        web_host.reset();
    }
    parse_host_leaf("web_host", web_host, &web_host_name, &web_host_port);
}

const char* LConfig::get_server_host_setting() const { return server_host ? server_host->c_str() : nullptr; }
const char* LConfig::get_web_host_setting() const { return web_host ? web_host->c_str() : nullptr; }

const char* LConfig::get_game_host() const {
    return server_host_name.empty() ? LANTERN_GAME_HOST : server_host_name.c_str();
}

int LConfig::get_game_port() const {
    if (server_host_port != 0) return server_host_port;
    if (valid_port(server_port)) return server_port;
    return LANTERN_GAME_PORT;
}

const char* LConfig::get_web_host() const { return web_host_name.empty() ? LANTERN_WEB_HOST : web_host_name.c_str(); }

int LConfig::get_web_port() const { return web_host_port != 0 ? web_host_port : default_web_port; }
