#include "net/socket_data_queue.h"

#include <cstdlib>
#include <mutex>

#include "base/fixed_string.h"
#include "config/debug_log.h"

namespace {

constexpr int full = zorn_socket_data_buffer::data_size;
constexpr int line_limit = zorn_fixed_string::capacity - 1;

// The free list is one stack for the whole process. The soundpack updater and the download
// worker each run an HTTP processor, so two threads push and pop here at once. A mutex rather
// than a list per thread: a buffer freed on one thread must be reusable by the other (a list per
// thread would strand buffers on a thread that no longer needs them), and the lock is taken once
// per 4072 bytes, which costs nothing next to moving those bytes.
std::mutex free_list_lock;
zorn_socket_data_buffer* free_list = nullptr;
int free_count = 0;

zorn_socket_data_buffer* get_buffer() {
    zorn_socket_data_buffer* buffer = nullptr;
    {
        std::lock_guard<std::mutex> hold(free_list_lock);
        buffer = free_list;
        if (buffer) {
            free_list = buffer->next;
            --free_count;
        }
    }
    if (!buffer) buffer = static_cast<zorn_socket_data_buffer*>(std::malloc(sizeof(zorn_socket_data_buffer)));
    buffer->write_index = 0;
    buffer->read_index = 0;
    buffer->next = nullptr;
    buffer->data[0] = 0;
    return buffer;
}

// Pushes a chain (first to last, linked through next) on the free list in one locked step.
void release_chain(zorn_socket_data_buffer* first, zorn_socket_data_buffer* last, int count) {
    std::lock_guard<std::mutex> hold(free_list_lock);
    last->next = free_list;
    free_list = first;
    free_count += count;
}

void warn(const char* text) { zorn_client_debug_event(text, zorn_cat_error); }

}  // namespace

int zorn_socket_data_queue::free_list_size() {
    std::lock_guard<std::mutex> hold(free_list_lock);
    return free_count;
}

bool zorn_socket_data_queue::open_write_buffer() {
    if (maximum_buffers >= 1 && buffer_count >= maximum_buffers) {
        overflow = 1;
        return false;
    }
    zorn_socket_data_buffer* buffer = get_buffer();
    overflow = 0;
    if (!head) {
        head = buffer;
    } else {
        zorn_socket_data_buffer* tail = head;
        while (tail->next) tail = tail->next;
        tail->next = buffer;
    }
    write_buffer = buffer;
    ++buffer_count;
    return true;
}

bool zorn_socket_data_queue::add_buffer() { return open_write_buffer(); }

bool zorn_socket_data_queue::add_byte(unsigned char byte) {
    if (!write_buffer && !open_write_buffer()) return false;
    write_buffer->data[write_buffer->write_index++] = static_cast<char>(byte);
    if (write_buffer->write_index == full) write_buffer = nullptr;
    return true;
}

int zorn_socket_data_queue::add_block(const void* data, int count) {
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    if (!bytes) return 0;
    int stored = 0;
    while (stored < count) {
        if (!write_buffer && !open_write_buffer()) break;
        // Byte by byte in effect, but a run that fits the open buffer goes in one step.
        int room = full - write_buffer->write_index;
        if (room > count - stored) room = count - stored;
        char* target = write_buffer->data + write_buffer->write_index;
        for (int i = 0; i < room; ++i) target[i] = static_cast<char>(bytes[stored + i]);
        write_buffer->write_index += room;
        stored += room;
        if (write_buffer->write_index == full) write_buffer = nullptr;
    }
    return stored;
}

int zorn_socket_data_queue::add_string(const char* text) {
    if (!text) return 0;
    int stored = 0;
    while (text[stored] && add_byte(static_cast<unsigned char>(text[stored]))) ++stored;
    return stored;
}

int zorn_socket_data_queue::take_byte(unsigned char* byte, taker who) {
    if (!head) {
        warn(who == taker::get_line
                 ? "Error in zorn_socket_data_queue::get_line(), null top buffer should be empty instead."
                 : "Error in zorn_socket_data_queue::read_block(), null top buffer should be empty instead.");
        return -1;
    }
    *byte = static_cast<unsigned char>(head->data[head->read_index++]);
    if (head->read_index < head->write_index) return 1;
    if (head->write_index < full) {
        // The open buffer stays at the head; later writes go on behind its indices.
        if (head->next) {
            warn(who == taker::get_line
                     ? "Warning in zorn_socket_data_queue::get_line(), more buffers in list than expected."
                     : "Warning in zorn_socket_data_queue::read_block(), more buffers in list than expected.");
        }
        return 0;
    }
    zorn_socket_data_buffer* done = head;
    head = done->next;
    done->next = nullptr;
    if (write_buffer == done) write_buffer = nullptr;
    release_chain(done, done, 1);
    --buffer_count;
    overflow = 0;
    return head && head->read_index < head->write_index ? 1 : 0;
}

int zorn_socket_data_queue::read_block(void* destination, int capacity) {
    if (!head) return 0;
    if (head->read_index == head->write_index && head->next) {
        warn("Warning in zorn_socket_data_queue::read_block(), top buffer empty in list of other buffers.");
        return 0;
    }
    unsigned char* out = static_cast<unsigned char*>(destination);
    if (!out || head->read_index == head->write_index) return 0;
    int taken = 0;
    while (taken < capacity) {
        // Whole runs of the head at once; take_byte handles the buffer's end.
        const int available = head->write_index - head->read_index;
        int run = capacity - taken;
        if (run > available) run = available;
        for (int i = 0; i < run - 1; ++i) out[taken++] = static_cast<unsigned char>(head->data[head->read_index++]);
        const int more = take_byte(out + taken, taker::read_block);
        if (more < 0) break;
        ++taken;
        if (more == 0) break;
    }
    return taken;
}

int zorn_socket_data_queue::get_line(zorn_fixed_string* destination) {
    if (!head || !destination) return 0;
    if (head->read_index == head->write_index) {
        if (head->next) warn("Warning in zorn_socket_data_queue::get_line(), top buffer empty in list of other buffers.");
        return 0;
    }
    destination->clear();
    int count = 0;
    for (;;) {
        unsigned char byte = 0;
        const int more = take_byte(&byte, taker::get_line);
        if (more < 0) return count;
        if (byte == '\n') return count;
        destination->text[count++] = static_cast<char>(byte);
        destination->text[count] = '\0';
        destination->length = count;
        if (count == line_limit) {
            warn("Warning in zorn_socket_data_queue::get_line(), dest buffer full.");
            return count;
        }
        if (more == 0) return count;
    }
}

bool zorn_socket_data_queue::copy_text_without_remove(zorn_fixed_string* destination) const {
    if (!head) return true;
    if (!destination) return false;
    if (head->read_index == head->write_index) {
        if (head->next) {
            warn("Warning in zorn_socket_data_queue::copy_text_without_remove(), top buffer empty in list of other "
                 "buffers.");
        }
        return false;
    }
    destination->clear();
    int count = 0;
    for (const zorn_socket_data_buffer* buffer = head; buffer; buffer = buffer->next) {
        for (int i = buffer->read_index; i < buffer->write_index; ++i) {
            const char byte = buffer->data[i];
            if (byte == 0) {
                warn("Warning in zorn_socket_data_queue::copy_text_without_remove(), bailing on data zero.");
                return false;
            }
            destination->text[count++] = byte;
            destination->text[count] = '\0';
            destination->length = count;
            if (count == line_limit) {
                warn("Warning in zorn_socket_data_queue::copy_text_without_remove(), dest buffer full.");
                return false;
            }
        }
    }
    return true;
}

bool zorn_socket_data_queue::is_empty() const {
    if (!head) return true;
    if (head->next) return false;
    return head->read_index == head->write_index;
}

int zorn_socket_data_queue::get_length() const {
    if (!head) return 0;
    if (head->read_index == head->write_index && head->next) {
        warn("Warning in zorn_socket_data_queue::read_block(), top buffer empty in list of other buffers.");
        return 0;
    }
    int length = 0;
    for (const zorn_socket_data_buffer* buffer = head; buffer; buffer = buffer->next) {
        length += buffer->write_index - buffer->read_index;
    }
    return length;
}

int zorn_socket_data_queue::get_remaining_space() const {
    // A maximum of 0 means no limit here too, as it does to add_byte.
    if (maximum_buffers < 1) return -1;
    int space = full * maximum_buffers;
    for (const zorn_socket_data_buffer* buffer = head; buffer; buffer = buffer->next) space -= buffer->write_index;
    if (space < 0) {
        warn("Warning in zorn_socket_data_queue::get_remaining_space(), negative available space?");
        return 0;
    }
    return space;
}

void zorn_socket_data_queue::clear() {
    if (head) {
        zorn_socket_data_buffer* last = head;
        while (last->next) last = last->next;
        release_chain(head, last, buffer_count);
    }
    head = nullptr;
    write_buffer = nullptr;
    buffer_count = 0;
}
