#pragma once
// The everyday text value: a fixed 6000-byte field, built on the stack and passed by pointer.
// Text that does not fit is cut (never grown): at most 5999 characters are usable.

#include <cstdarg>

struct zorn_fixed_string {
    static constexpr int capacity = 6000;

    zorn_fixed_string() { text[0] = '\0'; }
    explicit zorn_fixed_string(const char* initial) { append(initial); }
    zorn_fixed_string(const zorn_fixed_string& other);
    zorn_fixed_string& operator=(const zorn_fixed_string& other);
    // Leaves "dead" behind so a use after destruction shows in logs rather than as garbage.
    ~zorn_fixed_string();

    void clear() {
        length = 0;
        text[0] = '\0';
    }
    void set(const char* value) {
        clear();
        append(value);
    }
    // A null text appends "(null)".
    void append(const char* value);
    // Appends at most count bytes of value (stops early at a NUL).
    void append(const char* value, int count);
    // Stored only while the length is below capacity - 1.
    void append_char(char c);
    void append_int(long long value);
    void appendf(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void vappendf(const char* format, va_list args);

    const char* c_str() const { return text; }
    int size() const { return length; }
    bool empty() const { return length == 0; }
    // True once an append had to cut.
    bool full() const { return length >= capacity; }

    char text[capacity];
    int length = 0;
};
