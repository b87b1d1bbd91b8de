#include "base/fixed_string.h"

#include <cstdio>
#include <cstring>

zorn_fixed_string::zorn_fixed_string(const zorn_fixed_string& other) : length(other.length) {
    std::memcpy(text, other.text, static_cast<size_t>(other.length < capacity ? other.length + 1 : capacity));
}

zorn_fixed_string& zorn_fixed_string::operator=(const zorn_fixed_string& other) {
    if (this != &other) {
        length = other.length;
        std::memcpy(text, other.text, static_cast<size_t>(other.length < capacity ? other.length + 1 : capacity));
    }
    return *this;
}

zorn_fixed_string::~zorn_fixed_string() {
    std::memcpy(text, "dead", 5);
    length = 4;
}

void zorn_fixed_string::append(const char* value) {
    append(value ? value : "(null)", capacity);
}

void zorn_fixed_string::append(const char* value, int count) {
    if (!value) value = "(null)";
    if (length >= capacity) return;
    int i = 0;
    while (i < count && value[i] && length < capacity) text[length++] = value[i++];
    if (length < capacity) {
        text[length] = '\0';
    } else {
        // No room for the terminator: the last byte gives way to it.
        text[capacity - 1] = '\0';
    }
}

void zorn_fixed_string::append_char(char c) {
    if (length >= capacity - 1) return;
    text[length++] = c;
    text[length] = '\0';
}

void zorn_fixed_string::append_int(long long value) {
    char digits[32];
    std::snprintf(digits, sizeof digits, "%lld", value);
    append(digits);
}

void zorn_fixed_string::appendf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    vappendf(format, args);
    va_end(args);
}

void zorn_fixed_string::vappendf(const char* format, va_list args) {
    if (length >= capacity) return;
    char buffer[capacity];
    std::vsnprintf(buffer, sizeof buffer, format, args);
    append(buffer);
}
