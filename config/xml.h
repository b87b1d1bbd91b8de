#pragma once
// The reduced XML of the settings files: a tree of tags, each holding child tags or one run of
// text. No attributes (text behind the name stays part of the tag text), no namespaces, no
// comments outside skip_data, one optional header line. The reader pulls one tag or value at a
// time from a byte source; the writer pushes to a text sink. The settings loaders drive them with
// a flat loop: read a tag, compare its name with word_equal, read its value or skip it.
//
// Allocation failure (std::bad_alloc from the tag stack) ends the process; nothing here catches it.

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

// A tag text keeps at most this many characters (999 and the terminator) on the stack.
constexpr int zorn_xml_tag_size = 1000;
// Open tags stored by name. Deeper levels are only counted, so a hostile file cannot make the
// stack grow with its length; closing such a level pops the count without a name check.
constexpr int zorn_xml_depth_limit = 64;

class zorn_xml_reader {
public:
    // The next byte, or -1 at the end of the source.
    virtual int read_char() = 0;
    virtual ~zorn_xml_reader() = default;

    zorn_xml_reader() = default;
    zorn_xml_reader(const zorn_xml_reader&) = delete;
    zorn_xml_reader& operator=(const zorn_xml_reader&) = delete;

    // 1 when an opening tag was read and pushed; 0 at the end of the source, on a failed read,
    // and after a closing tag (popped), which is how every loop over a container ends.
    int read_tag(char* dest, int size);
    // Like read_tag, but passes over tags that failed to read (bad bytes) while the source goes
    // on, so one damaged tag does not end its container. 0 at a closing tag or the end.
    int read_child(char* dest, int size);
    // For a leaf whose opening tag has been read. On a failed value read dest keeps the raw
    // text, the closing tag stays unread and the entry stays on the stack.
    int read_data(char* dest, int size);
    // A value that is no number leaves *dest unchanged and yields 0, its closing tag consumed.
    int read_data(int* dest);
    // The bytes of a hexadecimal CDATA dump; the count decoded, 0 on any failure.
    int read_cdata(unsigned char* dest, int size);
    // Skips past the closing tag of the tag on top of the stack, with everything inside.
    void skip_data();
    // Reads up to and including the next '<'; 0 at the end of the source.
    int skip_chunk();
    // The primitive below all of the above: tag mode ends at '>', data mode at '<'.
    int read_block(char* dest, int size, int tag_mode);
    void pop_stack_entry(const char* tag);

    // Checks a complete header line that the caller read itself (fget_line).
    static int check_xml_header_string(const char* line);
    // Undoes the writer's three escapes in place.
    static void compact_string(char* text);

    // Open tags, counted ones beyond the depth limit included.
    int stack_depth() const { return static_cast<int>(tag_stack.size()) + overflow_depth; }
    bool at_end() const { return end_seen; }

private:
    int next_byte();
    void push_stack_entry(const char* text);

    std::vector<std::string> tag_stack;  // newest last
    int overflow_depth = 0;
    bool overflow_reported = false;
    bool end_seen = false;
    bool last_tag_failed = false;
};

class zorn_xml_file_reader : public zorn_xml_reader {
public:
    // The caller opens and closes the stream.
    explicit zorn_xml_file_reader(FILE* stream);
    ~zorn_xml_file_reader() override { file = nullptr; }
    int read_char() override;

private:
    FILE* file;
};

// Reads from bytes in memory (fuzzing and tests); the bytes must outlive the reader.
class zorn_xml_memory_reader : public zorn_xml_reader {
public:
    zorn_xml_memory_reader(const char* data, size_t length) : data(data), length(length) {}
    int read_char() override;

private:
    const char* data;
    size_t length;
    size_t position = 0;
};

class zorn_xml_writer {
public:
    // Writes a terminated string; the number of bytes written, negative on failure.
    virtual int write_text(const char* text) = 0;
    virtual ~zorn_xml_writer() = default;

    zorn_xml_writer() = default;
    zorn_xml_writer(const zorn_xml_writer&) = delete;
    zorn_xml_writer& operator=(const zorn_xml_writer&) = delete;

    // The bytes written, 0 or less when the sink took nothing.
    int write_xml_header();
    // Indentation, '<', the escaped name, a blank and extra verbatim if given, '>', and a line
    // feed when newline is set. The depth goes up.
    void write_tag(const char* name, int newline, const char* extra = nullptr);
    // The text with '&', '<' and '>' escaped; every other byte unchanged.
    void write_string(const char* text);
    // Closes the tag on top of the stack (expected only serves a check); with indent set and a
    // depth of at least 1 left, indentation comes first.
    void end_tag(const char* expected, int indent);
    void write_indent();
    bool write_tag_start(const char* name, const char* extra);
    void write_newline();
    void write_single_tag(const char* name, const char* extra = nullptr);
    // Lower-case hexadecimal, 32 bytes to a line, between "<![CDATA[" and "]]>" lines.
    void write_cdata(const unsigned char* data, int length);

    // One leaf on its own line: write_tag and end_tag with flag 0 around the value.
    void write_leaf(const char* name, const char* value);
    void write_leaf(const char* name, int value);

    int current_depth() const { return depth; }

private:
    int depth = 0;
    std::vector<std::string> tag_stack;  // newest last
};

class zorn_xml_file_writer : public zorn_xml_writer {
public:
    // The caller opens and closes the stream.
    explicit zorn_xml_file_writer(FILE* stream);
    ~zorn_xml_file_writer() override { file = nullptr; }
    int write_text(const char* text) override;
    // True once any write failed.
    bool failed() const { return write_failed; }

private:
    FILE* file;
    bool write_failed = false;
};

// Collects the output in memory (tests).
class zorn_xml_string_writer : public zorn_xml_writer {
public:
    int write_text(const char* text) override;
    const std::string& text() const { return output; }

private:
    std::string output;
};
