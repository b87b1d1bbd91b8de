#pragma once
// Keeps a directory of files in step with a manifest that a web server publishes: a gzip text of
// "hash size name" lines. The client keeps its own manifest of what it fetched, compares the two
// by name and fetches only what differs, one file at a time through one temporary file that is
// moved into place. Knows nothing of sound or threads; every text for people goes through
// message_callback.
//
// Recovery: the local manifest names a file only after it was moved into place, and the
// temporary file is never trusted, so a process killed anywhere leaves every named file whole;
// the next update finds the rest again by comparing.

#include <zlib.h>

#include <string>

#include "base/containers.h"
#include "base/fixed_string.h"

struct kvu_manifest_entry {
    std::string name;  // relative to the destination path; may hold "/" and blanks
    std::string hash;  // compared as text, never computed here
    int size = 0;
    kvu_manifest_entry* next = nullptr;
};

void kvu_free_manifest_entries(kvu_manifest_entry* list);

// One manifest line, from a source named "file manifest" or "downloaded data". 1: *entry is a
// new entry; 0: blank or comment; -1: syntax error (logged at category 16).
int kvu_parse_manifest_line(const char* line, const char* source, kvu_manifest_entry** entry);

// The server's manifest as it arrives: inflated (gzip or zlib framing) and split into lines while
// downloading, never stored as a file.
class http_fetch_remote_manifest_data {
public:
    using progress_callback_type = void (*)(void* context, int received, int expected);
    static constexpr int inflate_window = 47;
    static constexpr int output_size = 65536;

    http_fetch_remote_manifest_data() = default;
    ~http_fetch_remote_manifest_data();
    http_fetch_remote_manifest_data(const http_fetch_remote_manifest_data&) = delete;
    http_fetch_remote_manifest_data& operator=(const http_fetch_remote_manifest_data&) = delete;

    // The entry count, or -1 when the download or the data failed.
    int fetch(const char* host, int port, const char* path);

    // The steps fetch takes, open for the fuzz target: begin, then data blocks (0 aborts), then
    // finish (true when the compressed stream was whole and every line parsed).
    bool begin();
    int data(const char* bytes, int count);
    // Called with the download's counts; at the expected total one extra line feed is fed, so a
    // last line without one is still taken.
    void received(int received, int expected);
    bool finish();

    // The list, handed over to the caller.
    kvu_manifest_entry* take_entries();
    int entry_count() const { return count; }

    progress_callback_type progress_callback = nullptr;
    void* progress_context = nullptr;

private:
    void clear();
    bool split_lines(const char* bytes, int length);
    void release_stream();

    zorn_fixed_string line;
    kvu_manifest_entry* head = nullptr;
    kvu_manifest_entry* tail = nullptr;
    int count = 0;
    z_stream stream{};
    bool stream_open = false;
    bool stream_ended = false;
    bool failed = false;
    unsigned char output[output_size];
};

class kvu_file_manifest {
public:
    using file_progress_type = void (*)(void* context, int received, int expected);
    using total_progress_type = void (*)(void* context, double done, double to_do);
    using message_type = void (*)(void* context, const char* text);
    using file_filter_type = int (*)(const char* file_name);

    enum status {
        update_finished = 0,
        update_no_temporary_file = 1,
        update_no_destination = 2,
        update_no_manifest_file = 3,
        update_fetch_failed = 4,
        update_not_writeable = 5,
    };

    static constexpr int default_port = 80;
    // A periodic save waits until this many seconds have passed since the last one.
    static constexpr int default_save_interval_seconds = 10;
    static constexpr int local_line_limit = 1024;

    kvu_file_manifest();
    ~kvu_file_manifest();
    kvu_file_manifest(const kvu_file_manifest&) = delete;
    kvu_file_manifest& operator=(const kvu_file_manifest&) = delete;

    bool set_temporary_file(const char* path);
    bool set_destination(const char* path);
    bool load_manifest(const char* path);
    bool load_exclude_list(const char* path);
    int update(const char* host, const char* base_path, const char* manifest_name);
    bool save_file(const char* path);

    // The local list, in order (for tests and tools).
    const kvu_manifest_entry* local_entries() const { return local_list; }
    const kvu_manifest_entry* find_local(const char* name) const;

    int port = default_port;
    int save_interval_seconds = default_save_interval_seconds;
    int manifest_dirty = 0;
    long long last_save_time = 0;
    int verbose = 0;
    int file_delay_ms = 0;
    double current_file_bytes = 0;
    void* callback_context = nullptr;
    file_progress_type file_progress_callback = nullptr;
    total_progress_type total_progress_callback = nullptr;
    message_type message_callback = nullptr;
    file_filter_type file_filter_callback = nullptr;

    int entries_loaded = 0;
    int entries_remaining = 0;
    int remote_records = 0;
    int files_skipped = 0;
    int files_to_update = 0;
    int files_updated = 0;
    int download_failures = 0;
    int file_failures = 0;
    double bytes_to_fetch = 0;
    double bytes_received = 0;
    double bytes_done = 0;
    double bytes_updated = 0;

private:
    static void on_manifest_progress(void* context, int received, int expected);
    static void on_file_progress(void* context, int received, int expected);

    void message(const char* text);
    void messagef(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void message_with_name(const char* before, const char* name, const char* after);
    bool is_excluded(const char* name) const;
    bool needs_update(const kvu_manifest_entry& remote);
    int update_files(const char* host, const char* base_path, zorn_pointer_vector& list);
    bool fetch_file(const char* host, const char* base_path, const kvu_manifest_entry& entry);
    void accept_file(const kvu_manifest_entry& remote);
    void prune_missing_files();
    void periodic_save();
    void final_save();
    void save_or_bail();
    void report_total();

    kvu_manifest_entry* exclude_list = nullptr;
    kvu_manifest_entry* local_list = nullptr;
    VoidPointerHashTable local_index;
    std::string manifest_file_name;
    std::string temporary_file_name;
    std::string destination_path;
    bool have_temporary = false;
    bool have_destination = false;
    bool have_manifest_name = false;
};
