#pragma once
// A transport-free HTTP/1.0 and 1.1 state machine for both roles. The owner feeds received bytes
// to process_received_data, drains what is to be sent with get_data_to_send, and hears of a
// message through the callbacks. As a client it builds requests and parses responses; as a server
// it parses requests and builds responses.
//
// Received bytes go through a line reader (any of CR LF, LF CR, CR, LF ends a line; a lone end is
// seen when the next byte comes) while a head is read, and straight to the owner once a body is
// under way:
//
//   head lines --empty line--> [body: plain | chunked: size line, data, line end] --> finished
//
// A header is handled as soon as its line ends, so no whole head is ever buffered. After
// fatal_error every entry fails: the owner should drop the connection.

#include "base/fixed_string.h"
#include "net/http_cookie.h"
#include "net/socket_data_queue.h"

class zorn_http_data_processor_oline;

// Content type identifiers; the texts stand in zorn_http_content_type_text.
enum : int {
    zorn_http_content_none = 0,
    zorn_http_content_text_plain = 1,
    zorn_http_content_text_html = 2,
    zorn_http_content_form_urlencoded = 10,
    zorn_http_content_xml = 11,
    zorn_http_content_rss_xml = 12,
    zorn_http_content_json = 13,
    zorn_http_content_octet_stream = 14,
    zorn_http_content_unknown = 99,
};
const char* zorn_http_content_type_text(int identifier);
// The identifier of a received type, compared without case up to TAB, blank, ";" or the end.
int zorn_http_content_type_from_text(const char* text);

// Results of header_line_parse.
enum : int {
    zorn_http_line_done = 0,
    zorn_http_line_fatal = 1,
    zorn_http_line_bad = 2,
};

class zorn_http_data_processor_oline {
public:
    // Each receives the processor and the context first. A zero result aborts (sets fatal_error).
    using close_callback = int (*)(zorn_http_data_processor_oline*, void*);
    using event_callback = int (*)(zorn_http_data_processor_oline*, void*);
    using data_callback = int (*)(zorn_http_data_processor_oline*, void*, const char* data, int count);
    // Bytes written; 0 nothing at present; -1 end of body; below -1 failure.
    using tx_data_callback = int (*)(zorn_http_data_processor_oline*, void*, char* buffer, int capacity);

    static constexpr int method_size = 32;
    static constexpr int version_size = 32;
    static constexpr int transfer_encoding_size = 256;
    static constexpr int content_type_size = 64;
    static constexpr int reason_size = 256;
    static constexpr int host_size = 256;
    static constexpr int path_size = 256;
    static constexpr int query_size = 256;
    static constexpr int credential_size = 64;
    static constexpr int cookie_prefix_size = 32;
    // Bytes asked of the body callback at a time.
    static constexpr int tx_block = 8192;

    zorn_http_data_processor_oline();
    ~zorn_http_data_processor_oline();
    zorn_http_data_processor_oline(const zorn_http_data_processor_oline&) = delete;
    zorn_http_data_processor_oline& operator=(const zorn_http_data_processor_oline&) = delete;

    // 1 all taken; 0 stopped, the rest is discarded; -1 failed (also for a count below 1).
    int process_received_data(const char* data, int count);
    // Bytes placed in buffer; 0 nothing; -1 failed.
    int get_data_to_send(char* buffer, int capacity);

    bool start_http_GET(const char* host, const char* path);
    bool start_http_HEAD(const char* host, const char* path);
    // A body length below 0 is a body of unknown length.
    bool start_http_POST(const char* host, const char* path, int content_type, int body_length);
    bool send_response(int code, int content_type, int body_length, const char* reason);
    bool send_response_100();
    bool send_response_301(const char* target_url);
    bool send_response_400(const char* reason);
    bool send_response_413(const char* reason);
    bool send_response_415(const char* reason);
    bool send_response_501();
    bool fill_content_body();

    bool set_basic_authenticaion_credentials(const char* user, const char* password);
    void reset();

    // Cookies. Keys are compared as words, without regard to case.
    bool set_cookie_prefix(const char* prefix);
    void add_cookie(const char* key, const char* value, const char* domain, int max_age, int secure);
    void add_received_cookie(const char* key, const char* value);
    void add_cookie_domain(const char* key, const char* domain);
    const char* find_received_cookie(const char* key) const;
    const char* find_cookie_to_send(const char* key) const;
    void delete_received_cookie(const char* key);
    // The pairs of a "Cookie:" header's value; the number of cookies taken.
    int parse_cookie_header(const char* value);
    const zorn_http_cookie_list& received_cookies() const { return cookies_received; }
    const zorn_http_cookie_list& cookies_to_send() const { return cookies_send; }

    int header_line_parse(const char* line);
    // 10, 11, 0 or 20 (unknown and newer count as at least 1.1).
    static int try_extract_http_version_number(const char* text);

    // Received message.
    int get_status_code() const { return status_code; }
    int get_content_length() const { return content_length; }
    int get_content_type() const { return content_type; }
    int get_http_version() const { return http_version; }
    int get_header_line_count() const { return header_line_count; }
    const char* get_method() const { return method; }
    const char* get_host() const { return host; }
    const char* get_path() const { return path; }
    const char* get_query() const { return query; }
    const char* get_reason_phrase() const { return reason_phrase; }
    const char* get_version_text() const { return version_text; }
    const char* get_transfer_encoding() const { return transfer_encoding; }
    const char* get_content_type_text() const { return content_type_text; }
    const char* get_first_line() const { return first_line.c_str(); }
    const char* get_sent_method() const { return sent_method; }
    const char* get_user_name() const { return user_name; }
    const char* get_password() const { return password; }
    const char* get_cookie_prefix() const { return cookie_prefix; }
    bool get_expect_seen() const { return expect_seen != 0; }
    bool get_in_message() const { return in_message != 0; }
    int get_output_length() const { return output.get_length(); }

    int expect_continue = 0;
    int force_http10 = 0;
    int allow_chunked = 0;
    int fatal_error = 0;
    int discard_input = 0;
    int is_client = 0;
    int tx_body_remaining = 0;
    int close_after_tx = 0;
    int close_after_rx = 0;
    int connection_close = 0;
    int tx_chunked = 0;
    int rx_chunked = 0;
    int rx_chunk_state = 0;
    int rx_chunk_remaining = 0;
    int rx_in_body = 0;
    int rx_body_received = 0;

    void* callback_context = nullptr;
    close_callback callback_close_connection = nullptr;
    event_callback callback_message_received = nullptr;
    event_callback callback_message_complete = nullptr;
    data_callback callback_content_data_received = nullptr;
    tx_data_callback callback_content_body_get_tx_data = nullptr;

private:
    int process_step(const char* data, int count);
    int step_head(const char* data, int count);
    int end_of_head();
    int step_plain_body(const char* data, int count);
    int step_chunked_body(const char* data, int count);
    int finish_message();
    // Bytes consumed; line_complete is set once a whole line is in line_buffer.
    int read_line(const char* data, int count);
    void clear_line_state();
    bool message_has_body() const;
    int fail();

    void reset_message_fields();
    int parse_start_line(const char* line);
    int parse_request_line(const char* line);
    int parse_status_line(const char* line);
    int parse_content_length(const char* line, const char* value);
    int parse_connection(const char* line, const char* value);
    int parse_expect(const char* line, const char* value);
    int parse_transfer_encoding(const char* line, const char* value);
    int parse_host(const char* line, const char* value);

    bool is_busy(const char* name);
    const char* version_string() const;
    void append_common_headers(zorn_fixed_string* head, bool is_request, int body_length);
    bool queue_head(const zorn_fixed_string& head);
    bool start_request(const char* name, const char* method_text, const char* host_text, const char* path_text,
                       bool url_encode, int content_type_id, int body_length);
    bool send_simple_response(const char* name, const char* status_text, const char* reason, const char* fallback,
                              const char* location);
    bool add_chunk_end();

    char sent_method[method_size];
    zorn_fixed_string line_buffer;
    int line_complete = 0;
    int previous_byte = 0;
    char version_text[version_size];
    int http_version = 20;
    int expect_seen = 0;
    char transfer_encoding[transfer_encoding_size];
    char content_type_text[content_type_size];
    int content_type = 0;
    int status_code = 0;
    char reason_phrase[reason_size];
    char method[method_size];
    char host[host_size];
    char path[path_size];
    char query[query_size];
    int content_length = -1;
    int header_line_count = 0;
    int in_message = 0;
    zorn_fixed_string first_line;
    char user_name[credential_size];
    char password[credential_size];
    char cookie_prefix[cookie_prefix_size];
    zorn_http_cookie_list cookies_received;
    zorn_http_cookie_list cookies_send;
    zorn_socket_data_queue output{-1};
    // The owner was told to close at the end of a message: what follows belongs to no message.
    int rx_closed = 0;
};
