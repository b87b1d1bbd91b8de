#include "app/stream_parser.h"

#include <algorithm>
#include <cstring>

#include "config/debug_log.h"

namespace {

constexpr unsigned char semicolon = ';';
constexpr unsigned char bell = 0x07;
constexpr unsigned char carriage_return = 0x0D;
constexpr unsigned char telnet_iac = 0xFF;
constexpr unsigned char telnet_will = 0xFB;
constexpr unsigned char telnet_do = 0xFD;
constexpr unsigned char telnet_dont = 0xFE;
constexpr unsigned char telnet_option_echo = 1;
constexpr int warning_level = 2;
constexpr int warning_text_limit = 5999;

bool warnings_on() { return zorn_debug_level >= warning_level; }

// Where the run of ordinary plain-text bytes that starts at `from` ends: at a semicolon, a bell,
// a telnet command or the end of the block. Most of a busy stream is such runs.
int ordinary_span_end(const unsigned char* bytes, int from, int length) {
    while (from < length) {
        const unsigned char c = bytes[from];
        if (c == semicolon || c == bell || c == telnet_iac) break;
        ++from;
    }
    return from;
}

}  // namespace

void zorn_stream_parser::reset() {
    parser_state = plain_text;
    tag_index = 0;
    start_name[0] = end_name[0] = data[0] = '\0';
}

void zorn_stream_parser::feed(const unsigned char* bytes, int length) {
    sink.begin_block();
    block_context block;
    block.bytes = bytes;
    for (block.position = 0; block.position < length; ++block.position) {
        const unsigned char c = bytes[block.position];
        switch (parser_state) {
            case plain_text: {
                const int end = ordinary_span_end(bytes, block.position, length);
                if (end == block.position) {
                    on_plain(block, c);
                } else {
                    append_run(block, reinterpret_cast<const char*>(bytes) + block.position, end - block.position);
                    block.position = end - 1;
                }
                break;
            }
            case telnet_command:
                telnet_command_byte = c;
                parser_state = (c >= telnet_will && c <= telnet_dont) ? telnet_option : plain_text;
                break;
            case telnet_option: on_telnet_option(block, c); break;
            case after_semicolon: on_after_semicolon(block, c); break;
            case start_tag_name: on_start_name(c); break;
            case end_tag_name: on_end_name(c); break;
            case tag_data: on_tag_data(c); break;
            case single_tag_name: on_single_name(c); break;
            default: break;  // an unknown state ignores the byte
        }
    }
    flush_run(block);
    sink.end_block();
}

void zorn_stream_parser::flush_run(block_context& block) {
    if (block.run_length == 0) return;
    sink.text_run(block.run, block.run_length);
    block.run_length = 0;
}

// Adds to the run, handing it on each time it holds text_run_limit bytes.
void zorn_stream_parser::append_run(block_context& block, const char* text, int count) {
    while (count > 0) {
        const int room = text_run_limit - block.run_length;
        const int take = count < room ? count : room;
        std::memcpy(block.run + block.run_length, text, static_cast<size_t>(take));
        block.run_length += take;
        text += take;
        count -= take;
        if (block.run_length >= text_run_limit) flush_run(block);
    }
}

void zorn_stream_parser::on_plain(block_context& block, unsigned char c) {
    switch (c) {
        case semicolon:
            flush_run(block);
            parser_state = after_semicolon;
            return;
        case bell:
            sink.beep();
            return;
        case telnet_iac:
            flush_run(block);
            parser_state = telnet_command;
            return;
        default: {
            const char byte = static_cast<char>(c);
            append_run(block, &byte, 1);
            return;
        }
    }
}

void zorn_stream_parser::on_telnet_option(block_context& block, unsigned char option) {
    parser_state = plain_text;
    if (option != telnet_option_echo) return;
    if (telnet_command_byte == telnet_do) {
        sink.leave_password_mode();
    } else if (telnet_command_byte == telnet_dont) {
        append_run(block, "\n", 1);
        flush_run(block);
        sink.enter_password_mode();
    }
}

void zorn_stream_parser::begin_tag() {
    if (start_name[0] && warnings_on())
        zorn_client_debug_printf("Warning in zorn_mw::process_socket_data(), double start tags?  Previous was '%s'.\n",
                                 start_name);
    tag_index = 0;
    start_name[0] = end_name[0] = '\0';
}

void zorn_stream_parser::on_after_semicolon(block_context& block, unsigned char c) {
    switch (c) {
        case semicolon:
            append_run(block, ";", 1);
            parser_state = plain_text;
            return;
        case 's':
            begin_tag();
            parser_state = start_tag_name;
            return;
        case 't':
            begin_tag();
            parser_state = single_tag_name;
            return;
        case 'e':
            if (warnings_on()) {
                if (end_name[0])
                    zorn_client_debug_printf(
                        "Warning in zorn_mw::process_socket_data(), double end tags?  Previous was '%s'.\n", end_name);
                if (!start_name[0])
                    zorn_client_debug_printf(
                        "Warning in zorn_mw::process_socket_data(), end tag '%s' without start tag.\n", end_name);
            }
            tag_index = 0;
            end_name[0] = '\0';
            parser_state = end_tag_name;
            return;
        default:
            if (warnings_on()) {
                const int shown = std::min(block.position + 1, warning_text_limit);
                zorn_client_debug_printf("Warning in zorn_mw::process_socket_data(), semicolon found?\n");
                zorn_client_debug_printf("Current string data ->%.*s<-\n", shown,
                                         reinterpret_cast<const char*>(block.bytes));
            }
            const char pair[2] = {';', static_cast<char>(c)};
            append_run(block, pair, 2);
            parser_state = plain_text;
            return;
    }
}

void zorn_stream_parser::on_start_name(unsigned char c) {
    if (c == semicolon) {
        start_name[tag_index] = '\0';
        tag_index = 0;
        parser_state = tag_data;
        return;
    }
    start_name[tag_index++] = static_cast<char>(c);
    if (tag_index >= tag_name_size - 1) {
        start_name[tag_index] = '\0';
        if (warnings_on())
            zorn_client_debug_printf("Warning in zorn_mw::process_socket_data(), lns tag '%s' too long?\n", start_name);
        tag_index = 0;
        start_name[0] = '\0';
        parser_state = plain_text;
    }
}

void zorn_stream_parser::on_tag_data(unsigned char c) {
    if (c == carriage_return) return;
    if (c == semicolon) {
        data[tag_index] = '\0';
        sink.tagged_data(start_name, data, tag_index);
        parser_state = after_semicolon;
        return;
    }
    data[tag_index++] = static_cast<char>(c);
    if (tag_index >= tag_data_size) {
        if (warnings_on())
            zorn_client_debug_printf("Warning in zorn_mw::process_socket_data(), tagged data was too long, discarding.\n");
        // The start name stays, so the end tag that follows the rest of the data passes quietly.
        tag_index = 0;
        end_name[0] = '\0';
        parser_state = plain_text;
    }
}

void zorn_stream_parser::on_end_name(unsigned char c) {
    if (c == semicolon) {
        end_name[tag_index] = '\0';
        if (std::strcmp(end_name, start_name) != 0 && warnings_on())
            zorn_client_debug_printf("Warning zorn_mw::process_socket_data(), lne tag '%s' does not match lns tag '%s'.\n",
                                     end_name, start_name);
        tag_index = 0;
        start_name[0] = end_name[0] = '\0';
        parser_state = plain_text;
        return;
    }
    end_name[tag_index++] = static_cast<char>(c);
    if (tag_index >= tag_name_size - 1) {
        end_name[tag_index] = '\0';
        if (warnings_on())
            zorn_client_debug_printf("Warning in zorn_mw::process_socket_data(), lne tag '%s' too long?\n", end_name);
        tag_index = 0;
        end_name[0] = '\0';
        parser_state = plain_text;
    }
}

void zorn_stream_parser::on_single_name(unsigned char c) {
    if (c == semicolon) {
        start_name[tag_index] = '\0';
        tag_index = 0;
        sink.tagged_data(start_name, "", 0);
        start_name[0] = '\0';
        parser_state = plain_text;
        return;
    }
    start_name[tag_index++] = static_cast<char>(c);
    if (tag_index >= tag_name_size - 1) {
        start_name[tag_index] = '\0';
        if (warnings_on())
            zorn_client_debug_printf("Warning in zorn_mw::process_socket_data(), lnt tag '%s' too long?\n",
                                     start_name);
        tag_index = 0;
        start_name[0] = '\0';
        parser_state = plain_text;
    }
}

void zorn_outgoing_buffer::append_outgoing_string(const char* text) {
    const int length = static_cast<int>(std::strlen(text));
    const int space = capacity - outgoing_count;
    int copied = length;
    if (space <= length) {
        if (zorn_debug_level >= warning_level)
            zorn_client_debug_printf("Error in append_outgoing_string() - not enough space in outgoing buffer?\n");
        copied = space;
    }
    std::memcpy(outgoing_buffer + outgoing_count, text, static_cast<size_t>(copied));
    outgoing_count += copied;
}

void zorn_outgoing_buffer::send_line(const char* text) {
    append_outgoing_string(text);
    append_outgoing_string("\n");
}

void zorn_outgoing_buffer::consume(int count) {
    if (count >= outgoing_count) {
        outgoing_count = 0;
        return;
    }
    if (count <= 0) return;
    std::memmove(outgoing_buffer, outgoing_buffer + count, static_cast<size_t>(outgoing_count - count));
    outgoing_count -= count;
}
