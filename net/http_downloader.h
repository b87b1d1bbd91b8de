#pragma once
// Fetches one URL with HTTP GET, blocking the calling thread until the transfer is over: into a
// file, or piece by piece through data_callback. Meant for background threads; the GUI never
// waits on it. One object serves one download at a time; it belongs to the thread that made it,
// and its callbacks run on that thread inside download. The object holds a 64 KB file buffer:
// mind the stack of the thread that makes one.

#include <netinet/in.h>

#include <cstdio>

#include "base/fixed_string.h"
#include "net/tcp_socket.h"

class zorn_http_data_processor_oline;

class zorn_http_downloader {
public:
    // A zero result aborts the download.
    using data_callback_type = int (*)(void* context, const char* bytes, int count);
    using progress_callback_type = void (*)(void* context, int received, int expected);

    static constexpr int block_size = 8192;
    static constexpr int default_port = 80;
    static constexpr int connect_timeout_ms = 5000;
    static constexpr int write_timeout_ms = 5000;
    // One wait for data; a silent server is waited on for ever, in steps of this length.
    static constexpr int default_read_step_ms = 5000;

    zorn_http_downloader() = default;
    ~zorn_http_downloader();
    zorn_http_downloader(const zorn_http_downloader&) = delete;
    zorn_http_downloader& operator=(const zorn_http_downloader&) = delete;

    // Looks the host up (blocking). True when it was found.
    bool set_connection(const char* host_name, int port_number, int ssl);
    // File mode. The host goes in the "Host:" header only; the connection goes where
    // set_connection pointed it.
    bool download(const char* host, const char* path, const char* destination_file);
    // Callback mode, or file mode with the file name set earlier.
    bool download(const char* host, const char* path);

    int use_ssl = 0;
    int port = default_port;
    sockaddr_in address{};
    zorn_fixed_string destination_file_name;
    FILE* output_file = nullptr;
    int expected_bytes = -1;
    int received_bytes = 0;
    zorn_tcp_socket socket;
    data_callback_type data_callback = nullptr;
    progress_callback_type progress_callback = nullptr;
    void* callback_context = nullptr;
    int read_step_ms = default_read_step_ms;

private:
    static int on_close_connection(zorn_http_data_processor_oline*, void* context);
    static int on_message_received(zorn_http_data_processor_oline* processor, void* context);
    static int on_message_complete(zorn_http_data_processor_oline*, void* context);
    static int on_content_data(zorn_http_data_processor_oline*, void* context, const char* bytes, int count);
    static int on_get_tx_data(zorn_http_data_processor_oline*, void* context, char* buffer, int capacity);

    bool transfer(const char* host, const char* path);
    bool send_request(zorn_http_data_processor_oline& processor);
    bool clean_close_is_complete(const zorn_http_data_processor_oline& processor) const;
    bool read_failed();
    // False when buffered bytes could not be written.
    bool close_output_file();

    // The file was created by this download, so a failure may remove it; a destination that
    // existed before a failed download is never touched.
    bool file_created = false;
    bool head_received = false;
    // The output file's buffer: part of the object, so a transfer allocates nothing for it.
    char file_buffer[65536];
};
