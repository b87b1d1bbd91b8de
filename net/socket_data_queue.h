#pragma once
// A FIFO of bytes built from fixed 4088-byte buffers. Buffers come from one process-wide free list
// and go back to it, never to the allocator, so steady traffic allocates nothing. A queue belongs
// to one thread; only the free list is shared (it is guarded by a mutex, see the .cpp).
//
// Invariant: every buffer but the last is full. Only the head is read from. The write buffer is
// the last buffer, or null right after it filled up. Allocation failure is not handled here.

struct zorn_fixed_string;

struct zorn_socket_data_buffer {
    static constexpr int data_size = 4072;

    int write_index;  // next free byte; also the count ever written to this buffer
    int read_index;   // next byte to read; never above write_index
    zorn_socket_data_buffer* next;
    char data[data_size];
};
static_assert(sizeof(zorn_socket_data_buffer) == 4088, "a buffer is one fixed record of 4088 bytes");

class zorn_socket_data_queue {
public:
    zorn_socket_data_queue() = default;
    // A maximum below 1 means no limit.
    explicit zorn_socket_data_queue(int maximum) : maximum_buffers(maximum) {}
    ~zorn_socket_data_queue() { clear(); }
    zorn_socket_data_queue(const zorn_socket_data_queue&) = delete;
    zorn_socket_data_queue& operator=(const zorn_socket_data_queue&) = delete;

    bool add_byte(unsigned char byte);
    // Stop at the first refusal; the count tells how far they got.
    int add_block(const void* data, int count);
    int add_string(const char* text);
    // Opens a new empty buffer at the tail.
    bool add_buffer();

    int read_block(void* destination, int capacity);
    // One line without its line feed (a carriage return is kept); characters stored.
    int get_line(zorn_fixed_string* destination);
    bool copy_text_without_remove(zorn_fixed_string* destination) const;

    bool is_empty() const;
    int get_length() const;
    // -1 when there is no limit.
    int get_remaining_space() const;
    // The overflow flag is left alone.
    void clear();

    void set_maximum_buffers(int maximum) { maximum_buffers = maximum; }
    int get_maximum_buffers() const { return maximum_buffers; }
    int get_buffer_count() const { return buffer_count; }
    bool get_overflow() const { return overflow != 0; }
    // For tests: the head's indices (-1 when there is no head) and whether a write buffer is open.
    int head_read_index() const { return head ? head->read_index : -1; }
    int head_write_index() const { return head ? head->write_index : -1; }
    bool has_write_buffer() const { return write_buffer != nullptr; }

    // Buffers now idle on the process-wide free list.
    static int free_list_size();

private:
    enum class taker { read_block, get_line };
    // 1 a byte taken, 0 the data ended, -1 the head vanished.
    int take_byte(unsigned char* byte, taker who);
    bool open_write_buffer();

    zorn_socket_data_buffer* head = nullptr;
    zorn_socket_data_buffer* write_buffer = nullptr;
    int maximum_buffers = -1;
    int buffer_count = 0;
    int overflow = 0;
};
