#include "net/http_processor.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "base/words.h"
#include "config/debug_log.h"

namespace {

constexpr int line_limit = zorn_fixed_string::capacity - 1;

// Rows not listed (and anything outside 1..14) read "binary/unknown".
const char* const content_type_table[15] = {
    nullptr,
    "text/plain",
    "text/html",
    nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
    "application/x-www-form-urlencoded",
    "application/xml",
    "application/rss+xml",
    "application/json",
    "application/octet-stream",
};

bool is_blank(char c) { return c == ' ' || c == '\t'; }

// Copies count bytes of text into field, cut silently to what the field holds.
void copy_cut(char* field, int size, const char* text, size_t count) {
    if (count > static_cast<size_t>(size - 1)) count = static_cast<size_t>(size - 1);
    std::memcpy(field, text, count);
    field[count] = '\0';
}

void copy_cut(char* field, int size, const char* text) { copy_cut(field, size, text, std::strlen(text)); }

// Blank-separated words of a line (the line reader never leaves a line feed in it).
struct word_span {
    const char* start;
    size_t length;
};

int split_words(const char* text, word_span* words, int most) {
    int count = 0;
    while (*text) {
        while (is_blank(*text)) ++text;
        if (!*text) break;
        const char* start = text;
        while (*text && !is_blank(*text)) ++text;
        if (count < most) words[count] = {start, static_cast<size_t>(text - start)};
        ++count;
    }
    return count;
}

void blank_separators(char* text) {
    for (; *text; ++text) {
        if (*text == ',' || *text == ';') *text = ' ';
    }
}

void log_line(unsigned category, const char* before, const char* line, const char* after) {
    if (zorn_client_debug_event_wanted(category)) zorn_client_debug_eventf(category, "%s%s%s", before, line, after);
}

constexpr const char* parse_warning = "Warning in zorn_http_data_processor_oline::header_line_parse(), ";

// A chunk size: hexadecimal digits after optional blanks; text behind them (extensions) is
// ignored. A size that does not fit an int is refused.
bool parse_chunk_size(const char* line, int* size) {
    while (is_blank(*line)) ++line;
    long long value = 0;
    int digits = 0;
    for (; digits < 20; ++digits, ++line) {
        const char c = *line;
        int digit = -1;
        if (c >= '0' && c <= '9') digit = c - '0';
        if (c >= 'a' && c <= 'f') digit = c - 'a' + 10;
        if (c >= 'A' && c <= 'F') digit = c - 'A' + 10;
        if (digit < 0) break;
        value = value * 16 + digit;
        if (value > INT_MAX) return false;
    }
    if (digits == 0) return false;
    *size = static_cast<int>(value);
    return true;
}

// A whole word of decimal digits that fits an int.
bool parse_length(const char* text, size_t length, int* value) {
    if (length == 0) return false;
    long long total = 0;
    for (size_t i = 0; i < length; ++i) {
        if (text[i] < '0' || text[i] > '9') return false;
        total = total * 10 + (text[i] - '0');
        if (total > INT_MAX) return false;
    }
    *value = static_cast<int>(total);
    return true;
}

}  // namespace

const char* zorn_http_content_type_text(int identifier) {
    if (identifier >= 1 && identifier <= 14 && content_type_table[identifier]) return content_type_table[identifier];
    return "binary/unknown";
}

int zorn_http_content_type_from_text(const char* text) {
    if (!text) return zorn_http_content_unknown;
    size_t length = 0;
    while (text[length] && !is_blank(text[length]) && text[length] != ';') ++length;
    for (int identifier = 1; identifier <= 14; ++identifier) {
        const char* known = content_type_table[identifier];
        if (known && std::strlen(known) == length && strncasecmp(known, text, length) == 0) return identifier;
    }
    return zorn_http_content_unknown;
}

zorn_http_data_processor_oline::zorn_http_data_processor_oline() {
    sent_method[0] = '\0';
    user_name[0] = '\0';
    password[0] = '\0';
    cookie_prefix[0] = '\0';
    reset_message_fields();
}

zorn_http_data_processor_oline::~zorn_http_data_processor_oline() {
    cookies_received.clear();
    cookies_send.clear();
    output.clear();
    for (char* field : {sent_method, version_text, transfer_encoding, content_type_text, reason_phrase, method, host,
                        path, query, user_name, password, cookie_prefix}) {
        std::memcpy(field, "dead", 5);
    }
}

void zorn_http_data_processor_oline::reset_message_fields() {
    version_text[0] = '\0';
    expect_seen = 0;
    transfer_encoding[0] = '\0';
    content_type_text[0] = '\0';
    content_type = 0;
    status_code = 0;
    reason_phrase[0] = '\0';
    method[0] = '\0';
    host[0] = '\0';
    path[0] = '\0';
    query[0] = '\0';
    content_length = -1;
    header_line_count = 0;
    rx_chunked = 0;
    rx_chunk_state = 0;
    rx_chunk_remaining = 0;
    rx_in_body = 0;
    rx_body_received = 0;
}

void zorn_http_data_processor_oline::reset() {
    // Callbacks and their context belong to the owner and stay.
    expect_continue = force_http10 = allow_chunked = fatal_error = discard_input = is_client = 0;
    tx_body_remaining = close_after_tx = close_after_rx = connection_close = tx_chunked = rx_closed = 0;
    sent_method[0] = '\0';
    clear_line_state();
    http_version = 20;
    reset_message_fields();
    in_message = 0;
    first_line.clear();
    user_name[0] = '\0';
    password[0] = '\0';
    cookie_prefix[0] = '\0';
    cookies_received.clear();
    cookies_send.clear();
    output.clear();
}

int zorn_http_data_processor_oline::fail() {
    fatal_error = 1;
    return -1;
}

// ---- receiving ----------------------------------------------------------------------------

void zorn_http_data_processor_oline::clear_line_state() {
    line_buffer.clear();
    line_complete = 0;
    previous_byte = 0;
}

int zorn_http_data_processor_oline::read_line(const char* data, int count) {
    for (int i = 0; i < count; ++i) {
        const int c = static_cast<unsigned char>(data[i]);
        if ((previous_byte == '\r' && c == '\n') || (previous_byte == '\n' && c == '\r')) {
            previous_byte = 0;
            line_complete = 1;
            return i + 1;
        }
        if (previous_byte == '\r' || previous_byte == '\n') {
            // A lone line end: this byte belongs to what follows.
            previous_byte = 0;
            line_complete = 1;
            return i;
        }
        if (c != '\r' && c != '\n' && line_buffer.length < line_limit) line_buffer.append_char(static_cast<char>(c));
        previous_byte = c;
    }
    return count;
}

int zorn_http_data_processor_oline::process_received_data(const char* data, int count) {
    if (!data || count < 1 || fatal_error) return -1;
    int at = 0;
    int idle_steps = 0;
    while (at < count) {
        const int result = process_step(data + at, count - at);
        if (result < 0) return -1;
        if (result > 0) {
            at += result;
            idle_steps = 0;
            continue;
        }
        if (discard_input) return 0;
        // A step that takes nothing has changed state (a line seen at its next byte, a body begun
        // or ended); a run of them would mean a loop that makes no progress.
        if (++idle_steps > 8) return fail();
    }
    return 1;
}

int zorn_http_data_processor_oline::process_step(const char* data, int count) {
    if (count < 1 || fatal_error) return -1;
    if (discard_input || rx_closed) return count;
    if (!rx_in_body) return step_head(data, count);
    if (rx_chunked) return step_chunked_body(data, count);
    return step_plain_body(data, count);
}

int zorn_http_data_processor_oline::step_head(const char* data, int count) {
    const int used = read_line(data, count);
    if (!line_complete) return used;
    if (line_buffer.length > 0) {
        ++header_line_count;
        const int result = header_line_parse(line_buffer.c_str());
        clear_line_state();
        if (is_client) {
            if (result == zorn_http_line_fatal) return fail();
            return used;
        }
        if (result == zorn_http_line_done) return used;
        if (!send_response_400("Bad Request")) return fail();
        close_after_tx = 1;
        discard_input = 1;
        return 0;
    }
    clear_line_state();
    // Blank lines before a start line (or between messages) do no harm.
    if (!in_message) return used;
    const int result = end_of_head();
    if (result < 0) return -1;
    return fatal_error ? 0 : used;
}

bool zorn_http_data_processor_oline::message_has_body() const {
    if (status_code != 0) {
        if ((status_code >= 100 && status_code <= 199) || status_code == 204 || status_code == 304) return false;
        if (std::strcmp(sent_method, "HEAD") == 0) return false;
    }
    if (http_version >= 11 && transfer_encoding[0] && !word_in_list("identity", transfer_encoding)) return true;
    if (content_length > 0) return true;
    if (content_length == 0) return false;
    return status_code != 0;
}

// The empty line that ends a head. -1 failed; otherwise fatal_error tells whether a callback
// aborted.
int zorn_http_data_processor_oline::end_of_head() {
    ++header_line_count;
    if (is_client ? status_code == 0 : status_code != 0) return fail();
    // HTTP/1.0 knows no transfer codings: its body is framed by the length or the close alone.
    if (http_version < 11) rx_chunked = 0;
    if (message_has_body()) {
        rx_in_body = 1;
        rx_body_received = 0;
        clear_line_state();
    }
    const bool continue_wanted = expect_seen || std::strcmp(method, "PUT") == 0 || std::strcmp(method, "POST") == 0;
    if (http_version >= 11 && status_code == 0 && !force_http10 && continue_wanted && !send_response_100()) {
        return fail();
    }
    if (!callback_message_received || !callback_message_received(this, callback_context)) fatal_error = 1;
    if (fatal_error) return 0;
    if (rx_in_body) {
        in_message = 0;
        clear_line_state();
        return 0;
    }
    return finish_message();
}

int zorn_http_data_processor_oline::finish_message() {
    if (!callback_message_complete || !callback_message_complete(this, callback_context)) fatal_error = 1;
    if (fatal_error) return 0;
    in_message = 0;
    clear_line_state();
    if (!close_after_rx || (status_code >= 100 && status_code <= 199)) return 0;
    if (callback_close_connection) callback_close_connection(this, callback_context);
    close_after_tx = close_after_rx = connection_close = 0;
    // The owner closes the transport now: whatever follows in this read (trailers, a stray
    // byte) is swallowed.
    rx_closed = 1;
    return 0;
}

int zorn_http_data_processor_oline::step_plain_body(const char* data, int count) {
    int take = count;
    if (content_length >= 0 && take > content_length - rx_body_received) take = content_length - rx_body_received;
    if (take > 0) {
        if (!callback_content_data_received || !callback_content_data_received(this, callback_context, data, take)) {
            fatal_error = 1;
        }
        if (fatal_error) return 0;
        // Without a length the body runs until the transport ends; the count saturates.
        rx_body_received = take > INT_MAX - rx_body_received ? INT_MAX : rx_body_received + take;
    }
    if (content_length >= 0 && rx_body_received >= content_length) {
        in_message = 0;
        rx_in_body = 0;
        finish_message();
        if (fatal_error) return 0;
    }
    return take > 0 ? take : 0;
}

int zorn_http_data_processor_oline::step_chunked_body(const char* data, int count) {
    if (rx_chunk_state == 1) {
        const int used = read_line(data, count);
        if (!line_complete) return used;
        int size = 0;
        if (!parse_chunk_size(line_buffer.c_str(), &size)) return fail();
        clear_line_state();
        if (size > 0) {
            rx_chunk_remaining = size;
            rx_chunk_state = 2;
            return used;
        }
        // The last chunk ends the message; trailers are not read.
        in_message = 0;
        rx_in_body = 0;
        finish_message();
        return fatal_error ? 0 : used;
    }
    if (rx_chunk_state == 2) {
        int take = count < rx_chunk_remaining ? count : rx_chunk_remaining;
        if (take > 0) {
            if (!callback_content_data_received ||
                !callback_content_data_received(this, callback_context, data, take)) {
                fatal_error = 1;
            }
            if (fatal_error) return 0;
            rx_chunk_remaining -= take;
            rx_body_received = take > INT_MAX - rx_body_received ? INT_MAX : rx_body_received + take;
        }
        if (rx_chunk_remaining <= 0) rx_chunk_state = 3;
        return take > 0 ? take : 0;
    }
    const int used = read_line(data, count);
    if (!line_complete) return used;
    if (line_buffer.length != 0) return fail();
    clear_line_state();
    rx_chunk_state = 1;
    return used;
}

// ---- header lines -------------------------------------------------------------------------

int zorn_http_data_processor_oline::try_extract_http_version_number(const char* text) {
    if (!text || std::strncmp(text, "HTTP/", 5) != 0) {
        log_line(zorn_cat_64,
                 "Warning in zorn_http_data_processor_oline::try_extract_http_version_number(), got bad http version '",
                 text ? text : "(null)", "'.");
        return 20;
    }
    const char* number = text + 5;
    if (std::strcmp(number, "1.0") == 0) return 10;
    if (std::strcmp(number, "1.1") == 0) return 11;
    const double value = std::strtod(number, nullptr);
    if (value <= 0) return 20;
    if (value < 1) return 0;
    return 20;
}

int zorn_http_data_processor_oline::header_line_parse(const char* line) {
    if (!line) return zorn_http_line_bad;
    if (!in_message) return parse_start_line(line);
    const char* value = next_arg(line);
    if (word_equal(line, "Content-Length:")) return parse_content_length(line, value);
    if (word_equal(line, "Content-Type:")) {
        if (!value) {
            log_line(zorn_cat_64, parse_warning, "got bad content type line: ", line);
            return zorn_http_line_bad;
        }
        copy_cut(content_type_text, content_type_size, value);
        content_type = zorn_http_content_type_from_text(value);
        return zorn_http_line_done;
    }
    if (word_equal(line, "Connection:")) return parse_connection(line, value);
    if (word_equal(line, "Expect:")) return parse_expect(line, value);
    if (word_equal(line, "Transfer-Encoding:")) return parse_transfer_encoding(line, value);
    if (word_equal(line, "Host:")) return parse_host(line, value);
    if (word_equal(line, "Cookie:")) {
        parse_cookie_header(value);
        return zorn_http_line_done;
    }
    return zorn_http_line_done;
}

int zorn_http_data_processor_oline::parse_start_line(const char* line) {
    reset_message_fields();
    in_message = 1;
    header_line_count = 1;
    first_line.set(line);
    if (std::strncmp(line, "HTTP/", 5) == 0) return parse_status_line(line);
    return parse_request_line(line);
}

int zorn_http_data_processor_oline::parse_request_line(const char* line) {
    word_span words[3];
    if (split_words(line, words, 3) != 3) return zorn_http_line_fatal;
    copy_cut(method, method_size, words[0].start, words[0].length);

    const char* url = words[1].start;
    const char* url_end = url + words[1].length;
    while (url < url_end && *url == '/') ++url;
    const char* mark = static_cast<const char*>(std::memchr(url, '?', static_cast<size_t>(url_end - url)));
    if (mark) {
        if (mark + 1 < url_end) copy_cut(query, query_size, mark + 1, static_cast<size_t>(url_end - mark - 1));
        url_end = mark;
    }
    const char* scheme_end = nullptr;
    for (const char* at = url; at + 3 < url_end; ++at) {
        if (std::strncmp(at, "://", 3) == 0) {
            scheme_end = at + 3;
            break;
        }
    }
    if (scheme_end) {
        const char* slash = static_cast<const char*>(std::memchr(scheme_end, '/', static_cast<size_t>(url_end - scheme_end)));
        const char* host_end = slash ? slash : url_end;
        copy_cut(host, host_size, scheme_end, static_cast<size_t>(host_end - scheme_end));
        if (slash) copy_cut(path, path_size, slash + 1, static_cast<size_t>(url_end - slash - 1));
    } else {
        copy_cut(path, path_size, url, static_cast<size_t>(url_end - url));
    }

    copy_cut(version_text, version_size, words[2].start, words[2].length);
    http_version = try_extract_http_version_number(version_text);
    return zorn_http_line_done;
}

int zorn_http_data_processor_oline::parse_status_line(const char* line) {
    word_span words[2];
    const int count = split_words(line, words, 2);
    long status = 0;
    const char* reason = nullptr;
    if (count >= 2) {
        char number[16];
        copy_cut(number, sizeof number, words[1].start, words[1].length);
        status = std::strtol(number, nullptr, 10);
        reason = words[1].start + words[1].length;
        while (is_blank(*reason)) ++reason;
    }
    if (count < 2 || status < 1 || status > INT_MAX || !reason || !*reason) {
        log_line(zorn_cat_64, "Warning in zorn_http_data_processor_oline::header_line_parse(), failed to parse response "
                 "line '", line, "'.");
        return zorn_http_line_fatal;
    }
    copy_cut(version_text, version_size, words[0].start, words[0].length);
    http_version = try_extract_http_version_number(version_text);
    status_code = static_cast<int>(status);
    copy_cut(reason_phrase, reason_size, reason);
    return zorn_http_line_done;
}

int zorn_http_data_processor_oline::parse_content_length(const char* line, const char* value) {
    int length = 0;
    size_t word = 0;
    if (value) {
        while (value[word] && !is_blank(value[word])) ++word;
    }
    if (!value || !parse_length(value, word, &length)) {
        log_line(zorn_cat_64, parse_warning, "got bad content length, line: ", line);
        return zorn_http_line_fatal;
    }
    content_length = length;
    return zorn_http_line_done;
}

int zorn_http_data_processor_oline::parse_connection(const char* line, const char* value) {
    if (!value) {
        log_line(zorn_cat_64, parse_warning, "got bad Connection: line: ", line);
        return zorn_http_line_bad;
    }
    zorn_fixed_string words(value);
    blank_separators(words.text);
    for (const char* word = words.text; word; word = next_arg(word)) {
        while (is_blank(*word)) ++word;
        if (!*word) break;
        if (word_equal(word, "close")) {
            if (status_code == 0) {
                close_after_tx = 1;
                connection_close = 1;
            } else {
                close_after_rx = 1;
            }
        } else if (!word_equal(word, "te") && !word_equal(word, "keep-alive")) {
            log_line(zorn_cat_128, parse_warning, "got questionable Connection: line: ", line);
        }
    }
    return zorn_http_line_done;
}

int zorn_http_data_processor_oline::parse_expect(const char* line, const char* value) {
    if (value) {
        word_span words[16];
        const int count = split_words(value, words, 16);
        for (int i = 0; i < count && i < 16; ++i) {
            const char* semicolon = static_cast<const char*>(std::memchr(words[i].start, ';', words[i].length));
            const size_t length = semicolon ? static_cast<size_t>(semicolon - words[i].start) : words[i].length;
            if (length == 12 && strncasecmp(words[i].start, "100-continue", 12) == 0) expect_seen = 1;
        }
    }
    if (!value || !expect_seen) {
        log_line(zorn_cat_64, parse_warning, "got bad Expect: line: ", line);
        return zorn_http_line_bad;
    }
    return zorn_http_line_done;
}

int zorn_http_data_processor_oline::parse_transfer_encoding(const char* line, const char* value) {
    if (!value) {
        log_line(zorn_cat_64, parse_warning, "got bad transfer encoding line: ", line);
        return zorn_http_line_bad;
    }
    copy_cut(transfer_encoding, transfer_encoding_size, value);
    blank_separators(transfer_encoding);
    if (word_in_list("chunked", transfer_encoding)) {
        rx_chunked = 1;
        rx_chunk_state = 1;
    }
    return zorn_http_line_done;
}

int zorn_http_data_processor_oline::parse_host(const char* line, const char* value) {
    if (!value) {
        log_line(zorn_cat_128, "Warning in zorn_http_data_processor_oline::header_line_parse(), got empty host line '",
                 line, "'.");
        return zorn_http_line_bad;
    }
    size_t length = 0;
    while (value[length] && !is_blank(value[length])) ++length;
    char given[host_size];
    copy_cut(given, host_size, value, length);
    if (!host[0]) {
        std::memcpy(host, given, sizeof given);
        return zorn_http_line_done;
    }
    return std::strcmp(host, given) == 0 ? zorn_http_line_done : zorn_http_line_bad;
}

// ---- cookies ------------------------------------------------------------------------------

bool zorn_http_data_processor_oline::set_cookie_prefix(const char* prefix) {
    return zorn_http_set_text_field(cookie_prefix, cookie_prefix_size, prefix, "zorn_http_cookie::set_cookie_prefix()");
}

void zorn_http_data_processor_oline::add_cookie(const char* key, const char* value, const char* domain, int max_age,
                                                int secure) {
    cookies_send.add_or_update(key, value, domain, max_age, secure);
}

void zorn_http_data_processor_oline::add_received_cookie(const char* key, const char* value) {
    cookies_received.add_or_update(key, value, nullptr, 0, 0);
}

void zorn_http_data_processor_oline::add_cookie_domain(const char* key, const char* domain) {
    cookies_send.add_or_update(key, nullptr, domain, 0, 0);
}

const char* zorn_http_data_processor_oline::find_received_cookie(const char* key) const {
    const zorn_http_cookie* node = cookies_received.find(key);
    return node ? node->value : nullptr;
}

const char* zorn_http_data_processor_oline::find_cookie_to_send(const char* key) const {
    const zorn_http_cookie* node = cookies_send.find(key);
    return node ? node->value : nullptr;
}

void zorn_http_data_processor_oline::delete_received_cookie(const char* key) { cookies_received.remove(key); }

int zorn_http_data_processor_oline::parse_cookie_header(const char* value) {
    if (!value) return 0;
    const size_t prefix_length = std::strlen(cookie_prefix);
    int taken = 0;
    const char* at = value;
    for (;;) {
        while (is_blank(*at) || *at == ';') ++at;
        if (!*at) break;
        const char* start = at;
        while (*at && !is_blank(*at) && *at != ';') ++at;
        zorn_fixed_string name;
        name.append(start, static_cast<int>(at - start));
        char* equals = std::strchr(name.text, '=');
        const char* pair_value = "";
        if (equals) {
            *equals = '\0';
            pair_value = equals + 1;
        }
        if (prefix_length > 0 && word_prefix_match(cookie_prefix, name.text) <= 0) continue;
        cookies_received.add_or_update(name.text + prefix_length, pair_value, nullptr, 0, 0);
        ++taken;
    }
    return taken;
}

// ---- sending ------------------------------------------------------------------------------

bool zorn_http_data_processor_oline::is_busy(const char* name) {
    if (close_after_rx || fatal_error) return true;
    if (tx_body_remaining > 0) {
        log_line(zorn_cat_warning, "Error in zorn_http_data_processor_oline, attempt to '", name,
                 "' without completing previous message.");
        return true;
    }
    return false;
}

const char* zorn_http_data_processor_oline::version_string() const {
    return force_http10 ? "HTTP/1.0" : "HTTP/1.1";
}

void zorn_http_data_processor_oline::append_common_headers(zorn_fixed_string* head, bool is_request,
                                                           int body_length) {
    tx_chunked = 0;
    if (body_length == 0) {
        head->append("Content-Length: 0\r\n");
    } else if (allow_chunked && http_version >= 11 && !force_http10) {
        head->append("Transfer-Encoding: chunked\r\n");
        tx_chunked = 1;
    } else if (body_length > 0) {
        head->appendf("Content-Length: %d\r\n", body_length);
    }
    const bool old_peer = http_version < 11 || force_http10;
    if (!is_request) {
        if (connection_close || old_peer || body_length < 0) {
            head->append("Connection: close\r\n");
            close_after_tx = 1;
        }
        return;
    }
    if (user_name[0] || password[0]) {
        zorn_fixed_string credentials(user_name);
        credentials.append(":");
        credentials.append(password);
        head->append("Authorization: Basic ");
        base64_append_text(head, credentials.c_str());
        head->append("\r\n");
    }
    head->append("Accept-Encoding: identity\r\n");
    if (expect_continue) head->append("Expect: 100-continue\r\n");
    if (connection_close || old_peer) {
        head->append("Connection: close\r\n");
        close_after_rx = 1;
    }
}

bool zorn_http_data_processor_oline::queue_head(const zorn_fixed_string& head_text) {
    zorn_fixed_string head(head_text);
    head.append("\r\n");
    const int length = static_cast<int>(std::strlen(head.text));
    return output.add_block(head.text, length) == length;
}

bool zorn_http_data_processor_oline::start_request(const char* name, const char* method_text, const char* host_text,
                                                   const char* path_text, bool url_encode, int content_type_id,
                                                   int body_length) {
    if (is_busy(name)) return false;
    zorn_fixed_string head(method_text);
    head.append(" ");
    if (!path_text || !*path_text) path_text = "/";
    if (url_encode) {
        for (const unsigned char* at = reinterpret_cast<const unsigned char*>(path_text); *at; ++at) {
            if (*at >= 33 && *at <= 126) {
                head.append_char(static_cast<char>(*at));
            } else {
                head.appendf("%%%02x", *at);
            }
        }
    } else {
        head.append(path_text);
    }
    head.append(" ");
    head.append(version_string());
    head.append("\r\nHost: ");
    head.append(host_text ? host_text : "");
    head.append("\r\n");
    if (content_type_id != zorn_http_content_none) {
        head.append("Content-Type: ");
        head.append(zorn_http_content_type_text(content_type_id));
        head.append("; charset=utf-8\r\n");
    }
    append_common_headers(&head, true, body_length);
    cookies_send.append_set_cookie_lines(&head, cookie_prefix);
    copy_cut(sent_method, method_size, method_text);
    is_client = 1;
    return queue_head(head);
}

bool zorn_http_data_processor_oline::start_http_GET(const char* host_text, const char* path_text) {
    return start_request("start_http_GET", "GET", host_text, path_text, true, zorn_http_content_none, 0);
}

bool zorn_http_data_processor_oline::start_http_HEAD(const char* host_text, const char* path_text) {
    return start_request("start_http_HEAD", "HEAD", host_text, path_text, false, zorn_http_content_none, 0);
}

bool zorn_http_data_processor_oline::start_http_POST(const char* host_text, const char* path_text, int type,
                                                     int body_length) {
    // The Content-Type line goes in even for type 0, which reads "binary/unknown".
    const int shown_type = type == zorn_http_content_none ? -1 : type;
    if (!start_request("start_http_POST", "POST", host_text, path_text, false, shown_type, body_length)) return false;
    tx_body_remaining = body_length;
    return fill_content_body();
}

bool zorn_http_data_processor_oline::send_response(int code, int type, int body_length, const char* reason) {
    if (is_busy("send_response")) return false;
    zorn_fixed_string head(version_string());
    head.appendf(" %d ", code);
    head.append(reason ? reason : "");
    head.append("\r\nContent-Type: ");
    head.append(zorn_http_content_type_text(type));
    head.append("; charset=utf-8\r\n");
    append_common_headers(&head, false, body_length);
    cookies_send.append_set_cookie_lines(&head, cookie_prefix);
    if (!queue_head(head)) return false;
    tx_body_remaining = std::strcmp(method, "HEAD") == 0 ? 0 : body_length;
    return fill_content_body();
}

bool zorn_http_data_processor_oline::send_simple_response(const char* name, const char* status_text,
                                                          const char* reason, const char* fallback,
                                                          const char* location) {
    if (is_busy(name)) return false;
    zorn_fixed_string head(version_string());
    head.append(status_text);
    if (fallback) head.append(reason ? reason : fallback);
    head.append("\r\n");
    if (location) {
        head.append("Location: ");
        head.append(location);
        head.append("\r\n");
    }
    append_common_headers(&head, false, 0);
    return queue_head(head);
}

bool zorn_http_data_processor_oline::send_response_100() {
    return send_simple_response("send_response_100", " 100 continue", nullptr, nullptr, nullptr);
}

bool zorn_http_data_processor_oline::send_response_301(const char* target_url) {
    return send_simple_response("send_response_301", " 301 Moved Permanently", nullptr, nullptr,
                                target_url ? target_url : "");
}

bool zorn_http_data_processor_oline::send_response_400(const char* reason) {
    connection_close = 1;
    return send_simple_response("send_response_400", " 400 ", reason, "Bad request", nullptr);
}

bool zorn_http_data_processor_oline::send_response_413(const char* reason) {
    return send_simple_response("send_response_413", " 413 ", reason, "Content Body Too Large", nullptr);
}

bool zorn_http_data_processor_oline::send_response_415(const char* reason) {
    return send_simple_response("send_response_415", " 415 ", reason, "Content Body in Unsupported Format", nullptr);
}

bool zorn_http_data_processor_oline::send_response_501() {
    return send_simple_response("send_response_501", " 501 Unimplemented", nullptr, nullptr, nullptr);
}

bool zorn_http_data_processor_oline::add_chunk_end() { return output.add_string("0\r\n\r\n") == 5; }

bool zorn_http_data_processor_oline::fill_content_body() {
    if (tx_body_remaining == 0) return true;
    if (!callback_content_body_get_tx_data) {
        zorn_client_debug_event(
            "Error in zorn_http_data_processor_oline::fill_content_body(), tx callback function was NULL.",
            zorn_cat_warning);
        return false;
    }
    char block[tx_block];
    for (;;) {
        int wanted = tx_block;
        if (tx_body_remaining > 0 && tx_body_remaining < wanted) wanted = tx_body_remaining;
        int got = callback_content_body_get_tx_data(this, callback_context, block, wanted);
        if (got < -1) return false;
        if (got == 0) return true;
        if (got == -1) {
            if (tx_chunked) {
                tx_body_remaining = 0;
                return add_chunk_end();
            }
            // A body of unknown length ends here; a promised length that was not met is a failure.
            if (tx_body_remaining >= 0) return false;
            tx_body_remaining = 0;
            return true;
        }
        if (got > wanted) got = wanted;
        if (tx_chunked) {
            char size_line[16];
            std::snprintf(size_line, sizeof size_line, "%x\r\n", got);
            output.add_string(size_line);
        }
        output.add_block(block, got);
        if (tx_body_remaining > 0) tx_body_remaining -= got;
        if (tx_chunked) output.add_string("\r\n");
        if (tx_body_remaining == 0) return tx_chunked ? add_chunk_end() : true;
    }
}

int zorn_http_data_processor_oline::get_data_to_send(char* buffer, int capacity) {
    if (!buffer || capacity < 1 || fatal_error) return -1;
    if (tx_body_remaining != 0 && !fill_content_body()) return fail();
    if (!rx_in_body && output.is_empty()) {
        if (close_after_tx) {
            if (callback_close_connection) callback_close_connection(this, callback_context);
            close_after_tx = close_after_rx = connection_close = 0;
            in_message = 0;
        }
        if (discard_input) fatal_error = 1;
        return 0;
    }
    return output.read_block(buffer, capacity);
}

bool zorn_http_data_processor_oline::set_basic_authenticaion_credentials(const char* user, const char* pass) {
    user_name[0] = '\0';
    password[0] = '\0';
    bool fits = true;
    const char* texts[2] = {user ? user : "", pass ? pass : ""};
    char* fields[2] = {user_name, password};
    for (int i = 0; i < 2; ++i) {
        if (std::strlen(texts[i]) >= static_cast<size_t>(credential_size)) {
            log_line(zorn_cat_warning,
                     "Error in zorn_http_data_processor_oline::set_basic_authenticaion_credentials() - incoming string '",
                     texts[i], "' too long.");
            fits = false;
        }
        copy_cut(fields[i], credential_size, texts[i]);
    }
    return fits;
}
