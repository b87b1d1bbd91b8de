#include "net/file_manifest.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>

#include "base/files.h"
#include "base/threads.h"
#include "config/debug_log.h"
#include "net/http_downloader.h"

// Allocation failure: entries and texts come from new and std::string; running out of memory here
// ends the process as anywhere else in the client.

namespace {

bool is_blank(char c) { return c == ' ' || c == '\t'; }
bool is_lower_hex(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

const char* skip_blanks(const char* p) {
    while (is_blank(*p)) ++p;
    return p;
}

int syntax_error(const char* source, const char* what, const char* line) {
    if (zorn_client_debug_event_wanted(zorn_cat_failure)) {
        zorn_client_debug_eventf(zorn_cat_failure, "Syntax error in %s%s", source, what);
        zorn_client_debug_event(line, zorn_cat_failure);
    }
    return -1;
}

uint32_t hash_entry(const void* thing) {
    return zorn_hash_text(static_cast<const kvu_manifest_entry*>(thing)->name.c_str());
}
uint32_t hash_key(const void* key) { return zorn_hash_text(static_cast<const char*>(key)); }
int entry_matches(const void* thing, const void* key) {
    return static_cast<const kvu_manifest_entry*>(thing)->name == static_cast<const char*>(key);
}

long long now_seconds() { return static_cast<long long>(std::time(nullptr)); }

constexpr int directory_mode = 0700;

}  // namespace

void kvu_free_manifest_entries(kvu_manifest_entry* list) {
    while (list) {
        kvu_manifest_entry* next = list->next;
        delete list;
        list = next;
    }
}

int kvu_parse_manifest_line(const char* line, const char* source, kvu_manifest_entry** entry) {
    *entry = nullptr;
    const char* p = skip_blanks(line);
    if (!*p || *p == '#') return 0;

    // At least ten lower-case hex digits; the hash is the whole word, whatever follows them.
    for (int i = 0; i < 10; ++i) {
        if (!is_lower_hex(p[i])) return syntax_error(source, " - bad or missing hash field for line:", line);
    }
    const char* hash_end = p + 10;
    while (*hash_end && !is_blank(*hash_end)) ++hash_end;

    const char* size_text = skip_blanks(hash_end);
    const bool size_ok = is_digit(*size_text) || *size_text == '+' || (*size_text == '-' && is_digit(size_text[1]));
    if (!size_ok) return syntax_error(source, " - bad or missing file size for line:", line);
    const int size = std::atoi(size_text);
    const char* size_end = size_text;
    while (*size_end && !is_blank(*size_end)) ++size_end;

    const char* name = skip_blanks(size_end);
    if (!*name) return syntax_error(source, " - missing file name for line:", line);

    auto* made = new kvu_manifest_entry;
    made->hash.assign(p, static_cast<size_t>(hash_end - p));
    made->size = size;
    made->name = name;
    *entry = made;
    return 1;
}

// ---------------------------------------------------------------------------------------------
// The remote manifest.

http_fetch_remote_manifest_data::~http_fetch_remote_manifest_data() {
    release_stream();
    clear();
}

void http_fetch_remote_manifest_data::clear() {
    kvu_free_manifest_entries(head);
    head = tail = nullptr;
    count = 0;
    line.clear();
}

void http_fetch_remote_manifest_data::release_stream() {
    if (stream_open) inflateEnd(&stream);
    stream_open = false;
}

kvu_manifest_entry* http_fetch_remote_manifest_data::take_entries() {
    kvu_manifest_entry* list = head;
    head = tail = nullptr;
    count = 0;
    return list;
}

bool http_fetch_remote_manifest_data::begin() {
    release_stream();
    clear();
    stream = z_stream{};
    stream_ended = false;
    failed = false;
    // 47: a 32 KB window with gzip and zlib framing told apart by their headers.
    if (inflateInit2(&stream, inflate_window) != Z_OK) {
        zorn_client_debug_event("Error in http_fetch_remote_manifest_data::begin(), inflateInit2 failed?",
                                zorn_cat_warning);
        failed = true;
        return false;
    }
    stream_open = true;
    return true;
}

bool http_fetch_remote_manifest_data::split_lines(const char* bytes, int length) {
    for (int i = 0; i < length; ++i) {
        if (bytes[i] != '\n') {
            // Longer lines are cut at the field's 5999 characters.
            line.append_char(bytes[i]);
            continue;
        }
        kvu_manifest_entry* entry = nullptr;
        const int parsed = kvu_parse_manifest_line(line.c_str(), "downloaded data", &entry);
        line.clear();
        if (parsed < 0) {
            clear();
            return false;
        }
        if (parsed == 0) continue;
        if (tail) {
            tail->next = entry;
        } else {
            head = entry;
        }
        tail = entry;
        ++count;
    }
    return true;
}

int http_fetch_remote_manifest_data::data(const char* bytes, int length) {
    if (failed || !stream_open) return 0;
    if (stream_ended) return 1;  // anything behind the compressed stream is not ours
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes));
    stream.avail_in = static_cast<uInt>(length);
    for (;;) {
        stream.next_out = output;
        stream.avail_out = output_size;
        const int result = inflate(&stream, Z_NO_FLUSH);
        const int produced = output_size - static_cast<int>(stream.avail_out);
        if (result < 0 && result != Z_BUF_ERROR) break;
        if (result > Z_STREAM_END) break;
        if (produced > 0 && !split_lines(reinterpret_cast<const char*>(output), produced)) {
            failed = true;
            return 0;
        }
        if (result == Z_STREAM_END) {
            stream_ended = true;
            return 1;
        }
        if (result == Z_BUF_ERROR) return 1;
        if (stream.avail_in == 0 && stream.avail_out != 0) return 1;
    }
    zorn_client_debug_event("Error in http_fetch_remote_manifest_data::download_data_callback(), ZLip inflate failed?",
                            zorn_cat_warning);
    failed = true;
    return 0;
}

void http_fetch_remote_manifest_data::received(int received_bytes, int expected_bytes) {
    if (received_bytes == expected_bytes && !failed && !split_lines("\n", 1)) failed = true;
    if (progress_callback) progress_callback(progress_context, received_bytes, expected_bytes);
}

bool http_fetch_remote_manifest_data::finish() {
    release_stream();
    if (failed) {
        clear();
        return false;
    }
    // A compressed stream cut short would pass for a shorter manifest whose last name is cut.
    if (!stream_ended) {
        zorn_client_debug_event("Error in http_fetch_remote_manifest_data::finish(), compressed data ended early.",
                                zorn_cat_warning);
        clear();
        return false;
    }
    // A reply without a length ends by the server's close: its last line may lack a line feed.
    if (!line.empty() && !split_lines("\n", 1)) return false;
    return true;
}

int http_fetch_remote_manifest_data::fetch(const char* host, int port, const char* path) {
    if (!begin()) return -1;
    struct relay {
        static int data(void* context, const char* bytes, int length) {
            return static_cast<http_fetch_remote_manifest_data*>(context)->data(bytes, length);
        }
        static void progress(void* context, int received_bytes, int expected_bytes) {
            static_cast<http_fetch_remote_manifest_data*>(context)->received(received_bytes, expected_bytes);
        }
    };
    auto downloader = std::make_unique<zorn_http_downloader>();
    downloader->data_callback = relay::data;
    downloader->progress_callback = relay::progress;
    downloader->callback_context = this;
    const bool downloaded = downloader->set_connection(host, port, 0) && downloader->download(host, path);
    const bool parsed = downloaded && finish();
    release_stream();
    if (!parsed) {
        clear();
        return -1;
    }
    return count;
}

// ---------------------------------------------------------------------------------------------
// The manifest of what the client has.

kvu_file_manifest::kvu_file_manifest() : local_index(hash_entry, hash_key, entry_matches) {}

kvu_file_manifest::~kvu_file_manifest() {
    local_index.clear();
    kvu_free_manifest_entries(local_list);
    kvu_free_manifest_entries(exclude_list);
}

void kvu_file_manifest::message(const char* text) {
    if (message_callback) message_callback(callback_context, text);
}

void kvu_file_manifest::messagef(const char* format, ...) {
    char text[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    message(text);
}

void kvu_file_manifest::message_with_name(const char* before, const char* name, const char* after) {
    if (!message_callback) return;
    std::string text(before);
    text += name;
    text += after;
    message(text.c_str());
}

const kvu_manifest_entry* kvu_file_manifest::find_local(const char* name) const {
    return static_cast<const kvu_manifest_entry*>(local_index.find(name));
}

bool kvu_file_manifest::set_temporary_file(const char* path) {
    temporary_file_name = path ? path : "";
    have_temporary = path != nullptr;
    if (!path || !zorn_recursive_mkdir(path, directory_mode, nullptr)) return false;
    FILE* file = std::fopen(path, "wb");
    if (!file) return false;
    std::fclose(file);
    return true;
}

bool kvu_file_manifest::set_destination(const char* path) {
    destination_path = path ? path : "";
    have_destination = path != nullptr;
    return path && zorn_create_and_check_writeable_directory(path, directory_mode, nullptr);
}

bool kvu_file_manifest::load_manifest(const char* path) {
    manifest_file_name = path ? path : "";
    have_manifest_name = path != nullptr;
    if (!path) return false;
    FILE* file = std::fopen(path, "r");
    if (!file) return false;

    kvu_manifest_entry* last = local_list;
    while (last && last->next) last = last->next;
    char buffer[local_line_limit];
    bool syntax_ok = true;
    while (fget_line(file, buffer, sizeof buffer) > 0) {
        kvu_manifest_entry* entry = nullptr;
        const int parsed = kvu_parse_manifest_line(buffer, "file manifest", &entry);
        if (parsed < 0) {
            syntax_ok = false;
            break;
        }
        if (parsed == 0) continue;
        (last ? last->next : local_list) = entry;
        last = entry;
        local_index.add(entry);
        ++entries_loaded;
    }
    std::fclose(file);
    if (verbose) {
        const std::string text = "Loaded " + std::to_string(entries_loaded) + " entries from current manifest file '";
        message_with_name(text.c_str(), path, "'.");
    }
    prune_missing_files();
    return syntax_ok;
}

void kvu_file_manifest::prune_missing_files() {
    int dropped = 0;
    entries_remaining = 0;
    for (kvu_manifest_entry** link = &local_list; *link;) {
        kvu_manifest_entry* entry = *link;
        std::string path = destination_path;
        if (!path.empty()) path += "/";
        path += entry->name;
        struct stat info{};
        if (stat(path.c_str(), &info) == 0) {
            ++entries_remaining;
            link = &entry->next;
            continue;
        }
        // Deleted by hand, or never moved into place: fetched again by the next compare.
        *link = entry->next;
        local_index.remove(entry);
        delete entry;
        ++dropped;
    }
    if (dropped > 0 && verbose) messagef("Some files were deleted.  Only %d entries remain.", entries_remaining);
}

bool kvu_file_manifest::load_exclude_list(const char* path) {
    if (!path) return false;
    FILE* file = std::fopen(path, "r");
    if (!file) return false;
    char buffer[local_line_limit];
    int loaded = 0;
    while (fget_line(file, buffer, sizeof buffer) > 0) {
        const char* name = skip_blanks(buffer);
        if (!*name || *name == '#') continue;
        auto* entry = new kvu_manifest_entry;
        entry->name = name;
        entry->next = exclude_list;
        exclude_list = entry;
        ++loaded;
    }
    std::fclose(file);
    if (verbose) {
        std::string text = "Loaded " + std::to_string(loaded) + " entries from current exclude manifest file '";
        message_with_name(text.c_str(), path, "'.");
    }
    return true;
}

bool kvu_file_manifest::is_excluded(const char* name) const {
    for (const kvu_manifest_entry* entry = exclude_list; entry; entry = entry->next) {
        if (entry->name == name) return true;
    }
    return false;
}

bool kvu_file_manifest::needs_update(const kvu_manifest_entry& remote) {
    const kvu_manifest_entry* local = find_local(remote.name.c_str());
    if (!local) {
        if (verbose) message_with_name("File '", remote.name.c_str(), "' missing, should update.");
        return true;
    }
    if (local->size == remote.size && local->hash == remote.hash) return false;
    if (verbose) {
        char number[32];
        std::snprintf(number, sizeof number, "Expected %8d, ", remote.size);
        message_with_name(number, remote.hash.c_str(), "");
        std::snprintf(number, sizeof number, "Previous %8d, ", local->size);
        message((std::string(number) + local->hash + " - file '" + remote.name + "'").c_str());
    }
    return true;
}

int kvu_file_manifest::update(const char* host, const char* base_path, const char* manifest_name) {
    if (!have_manifest_name || manifest_file_name.empty()) {
        message("No manifest filename set.");
        return update_no_manifest_file;
    }
    if (!have_temporary || temporary_file_name.empty()) {
        message("No temporary download filename set.");
        return update_no_temporary_file;
    }
    if (!have_destination) {
        message("No destination path set to store downloaded files.");
        return update_no_destination;
    }

    std::string remote_path = std::string(base_path ? base_path : "") + "/" + (manifest_name ? manifest_name : "");
    auto fetcher = std::make_unique<http_fetch_remote_manifest_data>();
    fetcher->progress_callback = on_manifest_progress;
    fetcher->progress_context = this;
    const int records = fetcher->fetch(host, port, remote_path.c_str());
    if (records < 0) {
        message_with_name("Error fetching update file '", manifest_name ? manifest_name : "",
                          "' from remote server, aborting update.");
        return update_fetch_failed;
    }
    remote_records = records;
    if (verbose) messagef("Retrieved %d records from remote server.", remote_records);

    kvu_manifest_entry* remote_list = fetcher->take_entries();
    zorn_pointer_vector selected;
    for (kvu_manifest_entry* remote = remote_list; remote; remote = remote->next) {
        if (is_excluded(remote->name.c_str())) {
            ++files_skipped;
            message_with_name("Skipping file '", remote->name.c_str(), "'.");
            continue;
        }
        if (!needs_update(*remote)) continue;
        if (file_filter_callback && file_filter_callback(remote->name.c_str()) == 0) continue;
        selected.push_back(remote);
    }

    int result = update_finished;
    if (selected.size() == 0) {
        if (verbose) message("Everything appears to be up to date already.");
    } else {
        if (selected.size() == 1) {
            message("One file to update.");
        } else {
            messagef("%d files to update.", selected.size());
        }
        result = update_files(host, base_path, selected);
    }
    kvu_free_manifest_entries(remote_list);
    return result;
}

int kvu_file_manifest::update_files(const char* host, const char* base_path, zorn_pointer_vector& list) {
    if (!zorn_recursive_mkdir(temporary_file_name.c_str(), directory_mode, nullptr)) {
        message("Temporary file unwriteable.");
        return update_not_writeable;
    }
    if (FILE* file = std::fopen(temporary_file_name.c_str(), "wb")) {
        std::fclose(file);
    } else {
        message("Temporary file unwriteable.");
        return update_not_writeable;
    }
    if (!zorn_create_and_check_writeable_directory(destination_path.c_str(), directory_mode, nullptr)) {
        message("Download base path appears to be unwriteable.");
        return update_not_writeable;
    }

    for (int i = 0; i < list.size(); ++i) bytes_to_fetch += static_cast<kvu_manifest_entry*>(list[i])->size;
    files_to_update = list.size();
    last_save_time = now_seconds();
    manifest_dirty = 0;

    for (int i = 0; i < list.size(); ++i) {
        const kvu_manifest_entry& entry = *static_cast<kvu_manifest_entry*>(list[i]);
        const char* name = entry.name.c_str();
        const std::string final_path = destination_path + "/" + entry.name;
        if (verbose) message_with_name("Updating file '", name, "'.");
        if (!zorn_recursive_mkdir(final_path.c_str(), directory_mode, nullptr)) {
            message_with_name("Unable to update file '", name, "' - cannot create directory.");
            ++file_failures;
            continue;
        }
        const bool fetched = fetch_file(host, base_path, entry);
        bytes_received += entry.size;
        if (verbose) messagef("Received %10.0f / %10.0f bytes.", bytes_received, bytes_to_fetch);
        if (!fetched) {
            message_with_name("Unable to update file '", name, "' - download failed.");
            ++download_failures;
        } else if (::unlink(final_path.c_str()) != 0 && errno != ENOENT) {
            message_with_name("Unable to update file '", name, "' - cannot remove old version.");
            ++file_failures;
        } else if (std::rename(temporary_file_name.c_str(), final_path.c_str()) != 0) {
            message_with_name("Unable to update file '", name, "' - cannot write new version.");
            ++file_failures;
        } else {
            accept_file(entry);
        }
        if (file_delay_ms > 0) zorn_sleep_ms(file_delay_ms);
    }
    final_save();
    return update_finished;
}

bool kvu_file_manifest::fetch_file(const char* host, const char* base_path, const kvu_manifest_entry& entry) {
    std::string path = base_path ? base_path : "";
    if (entry.name[0] != '/') path += "/";
    path += entry.name;
    if (verbose) message_with_name("Starting download of file '", path.c_str(), "'.");
    current_file_bytes = 0;
    // Its 64 KB file buffer is better off the thread's stack.
    auto downloader = std::make_unique<zorn_http_downloader>();
    downloader->progress_callback = on_file_progress;
    downloader->callback_context = this;
    const bool fetched = downloader->set_connection(host, port, 0) &&
                         downloader->download(host, path.c_str(), temporary_file_name.c_str());
    current_file_bytes = 0;
    return fetched;
}

void kvu_file_manifest::accept_file(const kvu_manifest_entry& remote) {
    auto* local = static_cast<kvu_manifest_entry*>(local_index.find(remote.name.c_str()));
    if (local) {
        local->hash = remote.hash;
        local->size = remote.size;
    } else {
        local = new kvu_manifest_entry;
        local->name = remote.name;
        local->hash = remote.hash;
        local->size = remote.size;
        local->next = local_list;
        local_list = local;
        local_index.add(local);
    }
    bytes_updated += remote.size;
    ++files_updated;
    manifest_dirty = 1;
    periodic_save();
    bytes_done = bytes_received + current_file_bytes;
    report_total();
}

void kvu_file_manifest::report_total() {
    if (total_progress_callback) total_progress_callback(callback_context, bytes_done, bytes_to_fetch);
}

void kvu_file_manifest::on_manifest_progress(void* context, int received, int expected) {
    auto* self = static_cast<kvu_file_manifest*>(context);
    if (self->file_progress_callback) self->file_progress_callback(self->callback_context, received, expected);
}

void kvu_file_manifest::on_file_progress(void* context, int received, int expected) {
    auto* self = static_cast<kvu_file_manifest*>(context);
    if (self->file_progress_callback) self->file_progress_callback(self->callback_context, received, expected);
    if (received == expected) {
        self->current_file_bytes = 0;
        return;
    }
    self->current_file_bytes = received;
    self->periodic_save();
    self->bytes_done = self->bytes_received + self->current_file_bytes;
    self->report_total();
}

void kvu_file_manifest::periodic_save() {
    const long long now = now_seconds();
    if (!manifest_dirty) {
        last_save_time = now;
        return;
    }
    if (last_save_time + save_interval_seconds >= now) return;
    if (verbose) message("Saving file manifest.");
    save_or_bail();
    manifest_dirty = 0;
    last_save_time = now;
}

void kvu_file_manifest::final_save() {
    if (!manifest_dirty) return;
    if (verbose) message("Saving file manifest due to completion.");
    save_or_bail();
    manifest_dirty = 0;
    last_save_time = now_seconds();
}

void kvu_file_manifest::save_or_bail() {
    if (save_file(manifest_file_name.c_str())) return;
    // Files already moved into place would be fetched again and again if the list of them can't be
    // kept: better stop than loop.
    message("Error - unable to save manifest file.  Bailing out.");
    std::exit(1);
}

bool kvu_file_manifest::save_file(const char* path) {
    FILE* file = path ? std::fopen(path, "wb") : nullptr;
    if (!file) {
        if (zorn_client_debug_event_wanted(zorn_cat_failure)) {
            zorn_client_debug_eventf(zorn_cat_failure,
                                     "Error in kvu_file_manifest::save_file() - unable to save file '%s'.",
                                     path ? path : "(null)");
        }
        return false;
    }
    std::fputs("# This is an automatically generated file - do not modify\n"
               "# It contains a list of the files currently managed by the\n"
               "# updater.  Changing or deleting it may cause your next\n"
               "# update to download far more things than it needs.\n"
               "\n",
               file);
    for (const kvu_manifest_entry* entry = local_list; entry; entry = entry->next) {
        if (entry->hash.size() < 20 && zorn_client_debug_event_wanted(zorn_cat_32)) {
            zorn_client_debug_eventf(zorn_cat_32,
                                     "Error in kvu_file_manifest::save_file(), file '%s' had short hash len of %d.",
                                     entry->name.c_str(), static_cast<int>(entry->hash.size()));
        }
        std::fprintf(file, "%s %10d %s\n", entry->hash.c_str(), entry->size, entry->name.c_str());
    }
    const bool written = !std::ferror(file);
    return std::fclose(file) == 0 && written;
}
