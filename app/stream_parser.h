#pragma once
// Splits the game server's byte stream into plain text runs, tags and telnet commands.
//
// States:  plain text (1) --';'--> after semicolon (20) --'s'--> start name (21) --';'--> data (23)
//          data (23) --';'--> after semicolon (20) --'e'--> end name (22) --';'--> plain text (1)
//          after semicolon (20) --'t'--> single name (30) --';'--> plain text (1)
//          plain text (1) --0xFF--> telnet command (10) --WILL..DONT--> telnet option (11) --> plain text (1)
// A tag may be split across any number of blocks; the plain run is handed on before feed() returns.
// The parser owns no transport and no window: its owner feeds bytes and receives the pieces.

class zorn_stream_sink {
public:
    virtual ~zorn_stream_sink() = default;
    virtual void begin_block() {}
    virtual void text_run(const char* bytes, int length) = 0;
    // The payload is NUL-terminated; a single tag has an empty payload and length 0.
    virtual void tagged_data(const char* name, const char* payload, int length) = 0;
    virtual void beep() {}
    virtual void enter_password_mode() {}
    virtual void leave_password_mode() {}
    virtual void end_block() {}
};

class zorn_stream_parser {
public:
    enum state : int {
        plain_text = 1,
        telnet_command = 10,
        telnet_option = 11,
        after_semicolon = 20,
        start_tag_name = 21,
        end_tag_name = 22,
        tag_data = 23,
        single_tag_name = 30,
    };

    static constexpr int tag_name_size = 65;    // longest accepted name: 63
    static constexpr int tag_data_size = 15000;  // longest accepted payload: 14999
    static constexpr int text_run_limit = 2560;

    explicit zorn_stream_parser(zorn_stream_sink& sink) : sink(sink) { reset(); }

    // A length of 0 or below only runs the entry and exit steps.
    void feed(const unsigned char* bytes, int length);
    // Back to plain text, as on connect, disconnect and before a client message.
    void set_state(int new_state) { parser_state = new_state; }
    void reset();
    int state() const { return parser_state; }

private:
    // The plain text run lives only for one block: it is handed on before feed() returns.
    struct block_context {
        const unsigned char* bytes = nullptr;
        int position = 0;
        int run_length = 0;
        char run[text_run_limit];
    };
    void flush_run(block_context& block);
    void append_run(block_context& block, const char* text, int count);
    void on_plain(block_context& block, unsigned char c);
    void on_telnet_option(block_context& block, unsigned char option);
    void on_after_semicolon(block_context& block, unsigned char c);
    void on_start_name(unsigned char c);
    void on_end_name(unsigned char c);
    void on_tag_data(unsigned char c);
    void on_single_name(unsigned char c);
    void begin_tag();

    zorn_stream_sink& sink;
    int parser_state = plain_text;
    unsigned char telnet_command_byte = 0;
    int tag_index = 0;
    char start_name[tag_name_size];
    char end_name[tag_name_size];
    char data[tag_data_size];
};

// Bytes waiting for the socket. Text that does not fit is cut and logged; the connection stays.
class zorn_outgoing_buffer {
public:
    static constexpr int capacity = 10000;

    void append_outgoing_string(const char* text);
    // The text and one line feed; no carriage return, nothing escaped.
    void send_line(const char* text);
    // The socket took count bytes: the rest moves to the front.
    void consume(int count);
    void clear() { outgoing_count = 0; }

    const char* bytes() const { return outgoing_buffer; }
    int count() const { return outgoing_count; }

private:
    char outgoing_buffer[capacity];
    int outgoing_count = 0;
};
