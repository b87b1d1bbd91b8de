#include "net/download_queue.h"

#include <cstring>
#include <memory>
#include <mutex>

#include "base/files.h"
#include "base/fixed_string.h"
#include "config/debug_log.h"
#include "net/http_downloader.h"

namespace {

struct site {
    std::mutex lock;
    std::string base_directory = ".";
    std::string host = "localhost";
    int port = zorn_download::default_port;
};

site& the_site() {
    static site* made = new site;  // never freed: the worker may read it until the process ends
    return *made;
}

void copy_cut(char* field, const char* text) {
    std::strncpy(field, text, zorn_download::text_size - 1);
    field[zorn_download::text_size - 1] = '\0';
}

}  // namespace

void zorn_download::set_site(const char* base_directory, const char* host, int port) {
    site& current = the_site();
    std::lock_guard<std::mutex> hold(current.lock);
    if (base_directory) current.base_directory = base_directory;
    if (host) current.host = host;
    current.port = port;
}

zorn_download::zorn_download() {
    pthread_mutex_init(&mutex, nullptr);
    if (!zorn_thread_create("zorn_download thread", worker, this) && zorn_debug_level >= 1) {
        zorn_client_debug_printf("Error in zorn_download::zorn_download(), unable to create new thread?\n");
    }
}

zorn_download& zorn_download::instance() {
    // Made at first use, never destroyed: its thread runs until the process ends.
    static zorn_download* made = new zorn_download;
    return *made;
}

void zorn_download::queue_download(const char* url_path, completion_callback_type completion,
                                   progress_callback_type progress, void* context, const char* destination) {
    if (!url_path) return;
    auto* job = new entry{};
    copy_cut(job->url_path, url_path);
    copy_cut(job->destination, destination ? destination : url_path);
    job->completion_callback = completion;
    job->progress_callback = progress;
    job->context = context;
    job->last_percent = -1;
    if (zorn_debug_level >= 2) {
        zorn_client_debug_printf("zorn_download::queue_download() - adding '%s', dest filename '%s'.\n",
                                 job->url_path, job->destination);
    }
    zorn_download& self = instance();
    pthread_mutex_lock(&self.mutex);
    job->next = self.queue;
    self.queue = job;
    pthread_mutex_unlock(&self.mutex);
    self.blocker.wake();
}

zorn_download::entry* zorn_download::dequeue_next() {
    if (zorn_debug_level >= 3) zorn_client_debug_printf("zorn_download::dequeue_next()\n");
    pthread_mutex_lock(&mutex);
    // The list is newest first: the last entry is the oldest.
    entry** link = &queue;
    while (*link && (*link)->next) link = &(*link)->next;
    entry* job = *link;
    *link = nullptr;
    pthread_mutex_unlock(&mutex);
    return job;
}

void zorn_download::worker(void* raw) {
    auto* self = static_cast<zorn_download*>(raw);
    for (;;) {
        self->blocker.wait();
        entry* job = self->dequeue_next();
        if (!job) continue;
        const int failed = http_download_single(job);
        if (job->completion_callback) job->completion_callback(job->context, failed);
        delete job;
    }
}

int zorn_download::http_download_single(entry* job) {
    std::string host;
    std::string local_path;
    int port = default_port;
    {
        site& current = the_site();
        std::lock_guard<std::mutex> hold(current.lock);
        host = current.host;
        port = current.port;
        local_path = current.base_directory + "/" + job->destination;
    }
    const std::string url = std::string("/") + job->url_path;
    if (!zorn_recursive_mkdir(local_path.c_str(), 0700, nullptr)) {
        if (zorn_debug_level >= 1) {
            zorn_client_debug_printf("zorn_download::http_download_single() - bad path for  %s, aborting.\n",
                                     local_path.c_str());
        }
        return 1;
    }
    auto downloader = std::make_unique<zorn_http_downloader>();
    downloader->progress_callback = on_progress;
    downloader->callback_context = job;
    if (!downloader->set_connection(host.c_str(), port, 0)) {
        if (zorn_debug_level >= 1) {
            zorn_client_debug_printf("zorn_download::http_download_single() - unable to look up connection to '%s'.\n",
                                     host.c_str());
        }
        return 1;
    }
    if (!downloader->download(host.c_str(), url.c_str(), local_path.c_str())) {
        if (zorn_debug_level >= 1) {
            zorn_client_debug_printf("zorn_download::http_download_single() - download failed for url '%s', file '%s'.\n",
                                     url.c_str(), local_path.c_str());
        }
        return 1;
    }
    return 0;
}

void zorn_download::on_progress(void* context, int received, int expected) {
    auto* job = static_cast<entry*>(context);
    if (received == 0) {
        if (zorn_debug_level >= 2) {
            zorn_client_debug_printf(
                "zorn_download::http_download_single() - opened destination file '%s' for download '%s'.\n",
                job->destination, job->url_path);
        }
        if (zorn_debug_level >= 3) {
            zorn_client_debug_printf("zorn_download::http_download_single() - estimated download size %d bytes.\n",
                                     expected);
        }
    }
    if (expected < 1) return;
    const int percent = static_cast<int>(received * 100.0 / expected);
    if (percent == job->last_percent) return;
    if (zorn_debug_level >= 3) {
        zorn_client_debug_printf("Downloader got %8d/%-8d bytes, (%d%%)\n", received, expected, percent);
    }
    job->last_percent = percent;
    if (job->progress_callback) job->progress_callback(job->context, percent);
}
