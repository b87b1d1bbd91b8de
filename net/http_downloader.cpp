#include "net/http_downloader.h"

#include <unistd.h>

#include <cstring>

#include "config/debug_log.h"
#include "net/http_processor.h"

namespace {

void log_at(unsigned category, const char* text) { zorn_client_debug_event(text, category); }

void log_file_message(const char* before, const char* name, const char* after) {
    if (zorn_client_debug_event_wanted(zorn_cat_warning)) {
        zorn_client_debug_eventf(zorn_cat_warning, "%s%s%s", before, name, after);
    }
}

zorn_http_downloader* owner_of(void* context) { return static_cast<zorn_http_downloader*>(context); }

constexpr const char* short_write_message =
    "Warning in zorn_http_downloader::callback_content_data_received(), unable to write all data to disk.  Bailing.";

}  // namespace

zorn_http_downloader::~zorn_http_downloader() {
    close_output_file();
    destination_file_name.set("dead");
}

bool zorn_http_downloader::set_connection(const char* host_name, int port_number, int ssl) {
    if (!host_name) {
        log_at(zorn_cat_error, "Error in zorn_http_downloader::set_connection(), NULL host name.");
        return false;
    }
    use_ssl = ssl;
    port = port_number;
    return zorn_lookup_host(host_name, &address);
}

bool zorn_http_downloader::download(const char* host, const char* path, const char* destination_file) {
    if (!host) {
        log_at(zorn_cat_error, "Error in zorn_http_downloader::download(), NULL host.");
        return false;
    }
    if (!path) {
        log_at(zorn_cat_error, "Error in zorn_http_downloader::download(), NULL path.");
        return false;
    }
    if (!destination_file) {
        log_at(zorn_cat_error, "Error in zorn_http_downloader::download(), NULL destination file name.");
        return false;
    }
    if (data_callback) {
        log_at(zorn_cat_error,
               "Error in zorn_http_downloader::download(), attempt to do file based download after setting data "
               "callback.");
        return false;
    }
    destination_file_name.set(destination_file);
    return download(host, path);
}

bool zorn_http_downloader::download(const char* host, const char* path) {
    if (destination_file_name.empty() && !data_callback) {
        log_at(zorn_cat_error,
               "Error in zorn_http_downloader::download(), NULL destination file name and NULL download data "
               "callback.");
        return false;
    }
    if (!host || !path) {
        log_at(zorn_cat_error, host ? "Error in zorn_http_downloader::download(), NULL path."
                                    : "Error in zorn_http_downloader::download(), NULL host.");
        return false;
    }
    expected_bytes = -1;
    received_bytes = 0;
    file_created = false;
    head_received = false;
    bool result = transfer(host, path);
    // However it ended: the file is closed and the connection dropped. Buffered bytes that don't
    // reach the disk at the close make a failure like any short write.
    if (!close_output_file()) result = false;
    socket.close();
    return result;
}

bool zorn_http_downloader::send_request(zorn_http_data_processor_oline& processor) {
    char block[block_size];
    while (socket.get_state() == socket_connected) {
        const int count = processor.get_data_to_send(block, block_size);
        if (count <= 0) break;
        for (int sent = 0; sent < count;) {
            const int written = socket.blocking_write(block + sent, count - sent, write_timeout_ms);
            if (written < 0) {
                log_at(zorn_cat_warning, "Error in zorn_http_downloader::download(), blocking write failed.");
                return false;
            }
            sent += written;
        }
    }
    return true;
}

bool zorn_http_downloader::transfer(const char* host, const char* path) {
    if (use_ssl) {
        socket.enable_ssl();
    } else {
        socket.disable_ssl();
    }
    if (socket.blocking_connect(address, port, connect_timeout_ms) < 1) {
        log_at(zorn_cat_128, "Error in zorn_http_downloader::download(), connect failed.");
        return false;
    }

    zorn_http_data_processor_oline processor;
    processor.callback_context = this;
    processor.callback_close_connection = on_close_connection;
    processor.callback_message_received = on_message_received;
    processor.callback_message_complete = on_message_complete;
    processor.callback_content_data_received = on_content_data;
    processor.callback_content_body_get_tx_data = on_get_tx_data;
    processor.connection_close = 1;
    if (!processor.start_http_GET(host, path)) {
        log_at(zorn_cat_warning, "Error in zorn_http_downloader::download(), unable to start HTTP GET?");
        return false;
    }
    if (!send_request(processor)) return false;

    char block[block_size];
    for (;;) {
        // The processor's close callback closes the socket at the end of the body.
        if (socket.get_state() == socket_closed) return true;
        const int count = socket.blocking_read(block, block_size, read_step_ms);
        if (count == 0) continue;
        if (count < 0) {
            if (socket.get_read_error() == 0 && clean_close_is_complete(processor)) return true;
            return read_failed();
        }
        const int result = processor.process_received_data(block, count);
        if (result < 0) {
            log_at(zorn_cat_warning, "Error in zorn_http_downloader::download(), http data fetch failed.");
            return false;
        }
        if (result == 0) return true;
    }
}

// A clean close by the server ends a body that has no length of its own. It is no success when
// no answer came at all, when a known length was not reached, or inside a chunked body: a short
// file must never be taken for a whole one.
bool zorn_http_downloader::clean_close_is_complete(const zorn_http_data_processor_oline& processor) const {
    if (!head_received) return false;
    if (processor.rx_in_body && processor.rx_chunked) return false;
    return expected_bytes < 0 || received_bytes == expected_bytes;
}

bool zorn_http_downloader::read_failed() {
    const bool all_received = received_bytes == expected_bytes;
    if (progress_callback) {
        log_at(zorn_cat_warning, all_received
                                     ? "Error in zorn_http_downloader::download(), blocking read failed but all data "
                                       "received."
                                     : "Error in zorn_http_downloader::download(), blocking read failed, not all bytes "
                                       "read.");
        return false;
    }
    if (all_received) {
        log_at(zorn_cat_warning,
               "Error in zorn_http_downloader::download(), blocking read failed but file seems ok.  Keeping file.");
        return false;
    }
    log_at(zorn_cat_warning,
           "Error in zorn_http_downloader::download(), blocking read failed, unknown file state.  Deleting file.");
    close_output_file();
    if (file_created) unlink(destination_file_name.c_str());
    return false;
}

bool zorn_http_downloader::close_output_file() {
    if (!output_file) return true;
    const bool written = std::fclose(output_file) == 0;
    output_file = nullptr;
    if (!written) log_at(zorn_cat_warning, short_write_message);
    return written;
}

int zorn_http_downloader::on_close_connection(zorn_http_data_processor_oline*, void* context) {
    owner_of(context)->socket.close();
    return 1;
}

int zorn_http_downloader::on_message_received(zorn_http_data_processor_oline* processor, void* context) {
    zorn_http_downloader* self = owner_of(context);
    if (self->destination_file_name.empty() && !self->data_callback) {
        log_at(zorn_cat_error,
               "Error in zorn_http_downloader::callback_message_received(), NULL destination file name and NULL "
               "download data callback.");
        return 0;
    }
    self->head_received = true;
    self->received_bytes = 0;
    self->expected_bytes = processor->get_content_length();
    const bool ok = processor->get_status_code() == 200;
    if (self->data_callback) {
        if (ok) return 1;
        log_at(zorn_cat_warning,
               "Warning in zorn_http_downloader::callback_message_received(), download failed in callback mode.");
        return 0;
    }
    const char* name = self->destination_file_name.c_str();
    if (!ok) {
        log_file_message("Warning in zorn_http_downloader::callback_message_received(), download failed for file '",
                         name, "'.  Aborting download.");
        return 0;
    }
    self->close_output_file();
    self->output_file = std::fopen(name, "wb");
    if (!self->output_file) {
        log_file_message("Warning in zorn_http_downloader::callback_message_received(), unable to open output file '",
                         name, "'.  Aborting download.");
        return 0;
    }
    // Bodies come in blocks of up to 8192 bytes; the file takes them far faster in writes of 64 KB.
    std::setvbuf(self->output_file, self->file_buffer, _IOFBF, sizeof self->file_buffer);
    self->file_created = true;
    return 1;
}

int zorn_http_downloader::on_message_complete(zorn_http_data_processor_oline*, void* context) {
    return owner_of(context)->close_output_file() ? 1 : 0;
}

int zorn_http_downloader::on_content_data(zorn_http_data_processor_oline*, void* context, const char* bytes,
                                          int count) {
    zorn_http_downloader* self = owner_of(context);
    if (count < 1) return 0;
    if (self->received_bytes == 0 && self->progress_callback) {
        self->progress_callback(self->callback_context, 0, self->expected_bytes);
    }
    int result = 1;
    if (self->data_callback) {
        result = self->data_callback(self->callback_context, bytes, count);
    } else if (self->output_file) {
        if (std::fwrite(bytes, 1, static_cast<size_t>(count), self->output_file) != static_cast<size_t>(count)) {
            log_at(zorn_cat_warning, short_write_message);
            return 0;
        }
    } else {
        log_at(zorn_cat_warning,
               "Warning in zorn_http_downloader::callback_content_data_received(), attempt to download data via "
               "callback, only no callback set.");
        return 0;
    }
    self->received_bytes += count;
    if (self->progress_callback) {
        self->progress_callback(self->callback_context, self->received_bytes, self->expected_bytes);
    }
    return result;
}

int zorn_http_downloader::on_get_tx_data(zorn_http_data_processor_oline*, void*, char*, int) {
    log_at(zorn_cat_error,
           "Error in zorn_http_downloader::callback_content_body_get_tx_data(), this callback should never be "
           "invoked.");
    return -1;
}
