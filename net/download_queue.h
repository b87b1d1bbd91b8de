#pragma once
// A queue of single-file downloads from the web site, fetched one at a time, oldest first, by a
// worker thread of its own that is made with the queue at first use and never ends. Callbacks run
// on the worker: one that wants the GUI must pass the matter to the main thread itself.

#include <pthread.h>

#include <string>

#include "base/threads.h"

class zorn_download {
public:
    using completion_callback_type = void (*)(void* context, int failed);
    using progress_callback_type = void (*)(void* context, int percent);

    static constexpr int text_size = 1000;
    static constexpr int default_port = 80;

    struct entry {
        char url_path[text_size];     // without the leading "/"
        char destination[text_size];  // relative to the base directory
        entry* next;
        completion_callback_type completion_callback;
        progress_callback_type progress_callback;
        void* context;
        int last_percent;
    };

    // Where files come from and go to: the web site's host and port, and the configuration
    // directory that destinations are relative to. Read by the worker at each download.
    static void set_site(const char* base_directory, const char* host, int port = default_port);

    // Copies the texts (each cut at 999 characters); a null destination means the url path.
    static void queue_download(const char* url_path, completion_callback_type completion,
                               progress_callback_type progress, void* context, const char* destination);

    // 0 on success, 1 on failure.
    static int http_download_single(entry* job);

private:
    zorn_download();
    static zorn_download& instance();
    static void worker(void* self);
    static void on_progress(void* context, int received, int expected);
    entry* dequeue_next();

    entry* queue = nullptr;  // newest first
    pthread_mutex_t mutex;
    zorn_thread_blocker blocker;
};
