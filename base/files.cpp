#include "base/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "base/fixed_string.h"
#include "config/debug_log.h"

// Nothing here allocates; paths are built in zorn_fixed_string and cut at its size.

namespace {

bool is_path_separator(char c) { return c == '/' || c == '\\'; }

void report_overflow(const char* function, const char* text) {
    zorn_fixed_string message;
    message.appendf("Warning in %s(), string overflow.  String was:", function);
    zorn_client_debug_event(message.c_str(), zorn_cat_warning);
    zorn_client_debug_event(text, zorn_cat_warning);
}

}  // namespace

bool zorn_recursive_mkdir(const char* path, int mode, zorn_fixed_string* failed_path) {
    if (!path) {
        zorn_client_debug_event("Error in zorn_recursive_mkdir(), NULL path.", zorn_cat_error);
        return false;
    }
    zorn_fixed_string built;
    const char* p = path;
    if (is_path_separator(*p)) built.append_char('/');
    for (;;) {
        while (is_path_separator(*p)) ++p;
        const char* start = p;
        while (*p && !is_path_separator(*p)) ++p;
        // The last component has no separator behind it: it names a file, which is not ours to make.
        if (!*p) return true;
        if (!built.empty() && built.c_str()[built.size() - 1] != '/') built.append_char('/');
        built.append(start, static_cast<int>(p - start));
        if (::mkdir(built.c_str(), static_cast<mode_t>(mode)) != 0 && errno != EEXIST) {
            if (failed_path) failed_path->append(built.c_str());
            return false;
        }
    }
}

bool zorn_create_and_check_writeable_directory(const char* path, int mode, zorn_fixed_string* failed_path) {
    if (!path) {
        zorn_client_debug_event("Error in zorn_create_and_check_writeable_directory(), NULL path.", zorn_cat_error);
        return false;
    }
    zorn_fixed_string probe;
    if (*path) {
        probe.append(path);
        probe.append("/");
        if (!zorn_recursive_mkdir(probe.c_str(), mode, failed_path)) return false;
    }
    // mkdir's EEXIST says nothing about write access: only making a file proves it.
    probe.append(zorn_probe_file_name);
    FILE* file = std::fopen(probe.c_str(), "wb");
    if (!file) {
        if (failed_path) failed_path->append(probe.c_str());
        return false;
    }
    std::fclose(file);
    ::unlink(probe.c_str());
    return true;
}

int zorn_lock_file(const char* path) {
    if (!path) return -1;
    // Close-on-exec keeps the descriptor out of programs we start (the browser).
    const int descriptor = ::open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0) return -1;
    // F_TLOCK: never wait for another process; the caller decides what a held lock means.
    if (::lockf(descriptor, F_TLOCK, 0) != 0) {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

bool zorn_unlock_file(int descriptor) {
    if (descriptor < 0) return false;
    const bool unlocked = ::lockf(descriptor, F_ULOCK, 0) == 0;
    ::close(descriptor);
    return unlocked;
}

int fget_line(FILE* stream, char* buffer, int size) {
    if (!stream || !buffer) return 0;
    int c = std::getc(stream);
    if (c == EOF) {
        if (size >= 1) buffer[0] = '\0';
        return 0;
    }
    if (size < 2) {
        // No room for a single character: nothing is taken from the line.
        std::ungetc(c, stream);
        if (size >= 1) buffer[0] = '\0';
        report_overflow("fget_line", "");
        return 1;
    }
    int length = 0;
    for (;; c = std::getc(stream)) {
        if (c == EOF || c == '\n' || c == '\0') break;
        if (c == '\r') continue;
        if (length == size - 1) {
            // The line goes on past the buffer: the rest stays for the next call.
            std::ungetc(c, stream);
            buffer[length] = '\0';
            report_overflow("fget_line", buffer);
            return length + 1;
        }
        buffer[length++] = static_cast<char>(c);
    }
    buffer[length] = '\0';
    return length + 1;
}

int fget_long(FILE* stream, char* buffer) {
    if (!stream || !buffer) return 0;
    constexpr int limit = fget_long_size - 1;
    int c = std::getc(stream);
    if (c == EOF) {
        buffer[0] = '\0';
        return 0;
    }
    int length = 0;
    for (;; c = std::getc(stream)) {
        if (c == EOF) break;
        if (c == '\0' || c == ';') {
            std::getc(stream);  // the line end behind the terminator
            break;
        }
        if (length == limit) {
            std::ungetc(c, stream);
            buffer[length] = '\0';
            report_overflow("fget_long", buffer);
            return length + 1;
        }
        buffer[length++] = static_cast<char>(c);
    }
    buffer[length] = '\0';
    return length + 1;
}

namespace {

void skip_rest_of_line(FILE* stream) {
    int c;
    do {
        c = std::getc(stream);
    } while (c != EOF && c != '\n' && c != '\0');
}

template <typename Number>
int read_block(FILE* stream, Number* numbers, const char* format, const char* eof_message) {
    if (!numbers) return 0;
    int count = 0;
    auto finish = [&]() {
        for (int i = count; i < fget_block_count; ++i) numbers[i] = 0;
        return count;
    };
    if (!stream) return finish();
    for (; count < fget_block_count; ++count) {
        const int c = std::getc(stream);
        if (c == '\n' || c == '\r') return finish();
        if (c == EOF) {
            zorn_client_debug_event(eof_message, zorn_cat_warning);
            return finish();
        }
        std::ungetc(c, stream);
        const int converted = std::fscanf(stream, format, &numbers[count]);
        if (converted == EOF) {
            zorn_client_debug_event(eof_message, zorn_cat_warning);
            return finish();
        }
        if (converted != 1) return finish();
    }
    skip_rest_of_line(stream);
    return count;
}

}  // namespace

int fget_block(FILE* stream, int* numbers) {
    return read_block(stream, numbers, "%20d", "Error in fget_block(), EOF encountered.");
}

int fget_dblock(FILE* stream, double* numbers) {
    return read_block(stream, numbers, "%20lf", "Error in fget_dblock(), EOF encountered.");
}

int fget_tilde_text(FILE* stream, char* buffer) {
    if (!buffer) return 0;
    // 3990 characters; an escaped pair may reach one further, which the 3992-byte buffer leaves room for.
    constexpr int limit = fget_tilde_size - 2;
    int length = 0;
    while (stream && length < limit) {
        const int c = std::getc(stream);
        if (c == EOF) break;
        if (c == '~') {
            const int after = std::getc(stream);
            if (after != '~' && !(after >= 'A' && after <= 'Z')) break;
            buffer[length++] = '~';
            buffer[length++] = static_cast<char>(after);
            continue;
        }
        buffer[length++] = static_cast<char>(c);
    }
    buffer[length] = '\0';
    return length + 1;
}

int fget_semicolon_text(FILE* stream, char* buffer) {
    if (!buffer) return 0;
    constexpr int limit = fget_semicolon_size - 1;
    int length = 0;
    if (stream) {
        std::getc(stream);  // the separator in front of the text
        while (length < limit) {
            const int c = std::getc(stream);
            if (c == EOF) break;
            if (c == ';') {
                std::getc(stream);  // the line end behind it
                break;
            }
            buffer[length++] = static_cast<char>(c);
        }
    }
    buffer[length] = '\0';
    return length + 1;
}

namespace {

int read_after_hash(FILE* stream, char* buffer, int size, const char* stops) {
    if (!buffer || size < 1) return 0;
    buffer[0] = '\0';
    if (!stream) return 0;
    int c;
    do {
        c = std::getc(stream);
        if (c == EOF) return 0;
    } while (c != '#');
    int length = 0;
    while (length < size - 1) {
        c = std::getc(stream);
        if (c == EOF) break;
        if (std::strchr(stops, c)) break;
        buffer[length++] = static_cast<char>(c);
    }
    buffer[length] = '\0';
    return length + 1;
}

}  // namespace

int fget_hash_line(FILE* stream, char* buffer, int size) { return read_after_hash(stream, buffer, size, "\n\r"); }

int fget_hash_word(FILE* stream, char* buffer, int size) {
    return read_after_hash(stream, buffer, size, "\t\n\r ");
}

bool fget_match_line(FILE* stream, const char* expected) {
    if (!stream) return false;
    int c = std::getc(stream);
    if (c == EOF) return false;
    // Compare as the line goes by, then drop what is left of it; no buffer limits the line.
    const char* wanted = expected ? expected : "";
    bool matching = expected != nullptr;
    for (; c != EOF && c != '\n' && c != '\0'; c = std::getc(stream)) {
        if (c == '\r' || !matching || !*wanted) continue;
        if (*wanted == c) {
            ++wanted;
        } else {
            matching = false;
        }
    }
    return matching && !*wanted;
}

bool text_starts_with(const char* text, const char* prefix) {
    if (!text || !prefix) return false;
    return std::strncmp(text, prefix, std::strlen(prefix)) == 0;
}

namespace {

constexpr int table_row_width = 10;

template <typename Number>
void put_table(FILE* stream, const char* label, const Number* numbers, int count) {
    if (!stream) return;
    if (!label) label = "";
    for (int row = 0; numbers && row * table_row_width < count; ++row) {
        std::fprintf(stream, "%s%d", label, row);
        for (int i = row * table_row_width; i < count && i < (row + 1) * table_row_width; ++i) {
            std::fprintf(stream, " %d", static_cast<int>(numbers[i]));
        }
        std::fputc('\n', stream);
    }
    std::fputc('\n', stream);
}

template <typename Number>
bool get_table_row(FILE* stream, const char* row_text, Number* numbers, int count) {
    // The block is read even for a bad row, so the stream stays at the next line.
    int block[fget_block_count];
    fget_block(stream, block);
    if (!row_text || !numbers) return false;
    const int row = std::atoi(row_text);
    if (row < 0 || row >= (count + table_row_width - 1) / table_row_width) return false;
    const int first = row * table_row_width;
    for (int i = 0; i < table_row_width && first + i < count; ++i) numbers[first + i] = static_cast<Number>(block[i]);
    return true;
}

}  // namespace

void fput_int_table(FILE* stream, const char* label, const int* numbers, int count) {
    put_table(stream, label, numbers, count);
}

void fput_byte_table(FILE* stream, const char* label, const signed char* numbers, int count) {
    put_table(stream, label, numbers, count);
}

bool fget_int_table_row(FILE* stream, const char* row_text, int* numbers, int count) {
    return get_table_row(stream, row_text, numbers, count);
}

bool fget_byte_table_row(FILE* stream, const char* row_text, signed char* numbers, int count) {
    return get_table_row(stream, row_text, numbers, count);
}
