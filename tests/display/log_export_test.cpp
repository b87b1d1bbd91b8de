// Log export from a display's history: the web page and the plain text compared byte for byte with
// files under tests/display/log_export/ (the time in the title masked), the style classes, the cut
// at the fixed field, and the save step's files and messages. LANTERN_UPDATE_REFERENCES=1 rewrites
// the files from what the code writes now.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <regex>
#include <string>

#include "display/ansi_model.h"
#include "display/log_export.h"
#include "tests/display/display_test_support.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"

namespace {

const std::string reference_dir = std::string(LANTERN_SOURCE_DIR) + "/tests/display/log_export/";

struct display_fixture {
    display_fixture() { set_uniform_widths(&text); }
    zorn_textctrl_model text;
    zorn_ansi_model ansi{&text};
    void feed(const std::string& bytes) { ansi.add_ansi_text(bytes.data(), static_cast<int>(bytes.size())); }
};

enum class format { html, text };

std::string exported(zorn_ansi_model& ansi, format kind) {
    FILE* file = std::tmpfile();
    if (kind == format::html) ansi.export_html(file);
    else ansi.export_text(file);
    std::string out;
    std::rewind(file);
    char block[4096];
    for (size_t n; (n = std::fread(block, 1, sizeof(block), file)) > 0;) out.append(block, n);
    std::fclose(file);
    return out;
}

// The page with the title's time replaced by "<time>"; the time must look like ctime's.
std::string masked(const std::string& page) {
    static const std::regex title("<title>Ember Vale Logfile - [A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9][0-9] "
                                  "[0-9]{2}:[0-9]{2}:[0-9]{2} [0-9]{4}\n</title>");
    std::smatch found;
    EXPECT_TRUE(std::regex_search(page, found, title)) << page.substr(0, 200);
    if (found.empty()) return page;
    return found.prefix().str() + "<title>Ember Vale Logfile - <time>\n</title>" + found.suffix().str();
}

void expect_reference(const std::string& actual, const std::string& name) {
    const std::string path = reference_dir + name;
    if (const char* update = std::getenv("LANTERN_UPDATE_REFERENCES"); update && std::string(update) == "1")
        write_file(path, actual);
    EXPECT_EQ(actual, read_file(path)) << "reference " << path;
}

// Every family at every level that has a class, the attributes that add nothing, characters the
// page must escape, bytes outside plain text from the server and from a client message, and a tail
// still pending at the time of the export.
const std::string mixed_input =
    "\x1b[1m\x1b[31mbright red\n\x1b[2mdim red\n\x1b[5mblink red\n\x1b[7minverse red\n"
    "\x1b[0mdefault colour\n\x1b[37mwhite\x1b[1m bright white\x1b[2m dim white\n"
    "\x1b[22m\x1b[32mgreen \x1b[33myellow \x1b[34mblue \x1b[35mpurple \x1b[36mcyan\n"
    "\x1b[1m\x1b[32mG\x1b[33mY\x1b[34mB\x1b[35mP\x1b[36mC\x1b[2m\x1b[32mg\x1b[33my\x1b[34mb\x1b[35mp\x1b[36mc\n"
    "\x1b[0ma<b&c>d \"quoted\" caf\xe9 \xe2\x82\xac\n";

void feed_mixed(display_fixture& d) {
    d.feed(mixed_input);
    d.ansi.add_text("message: na\xc3\xafve\ttab\r\n");
    d.feed("\x1b[1m\x1b[34mpending tail");
}

TEST(log_export, page_and_text_hold_every_class_escape_and_the_pending_tail) {
    display_fixture d;
    feed_mixed(d);
    const std::string page = exported(d.ansi, format::html);
    expect_reference(masked(page), "mixed.html");
    expect_reference(exported(d.ansi, format::text), "mixed.txt");
}

TEST(log_export, another_palette_changes_neither_classes_nor_style_values) {
    display_fixture d;
    feed_mixed(d);
    const std::string under_default = masked(exported(d.ansi, format::html));

    zorn_select_palette(2);
    display_fixture other;
    feed_mixed(other);
    zorn_select_palette(0);
    zorn_render_list first;
    other.ansi.render_record(0, &first);
    ASSERT_EQ(color_tag(zorn_rgb(first.red, first.green, first.blue)), "{ff0000}") << "the other palette was not in force";
    EXPECT_EQ(masked(exported(other.ansi, format::html)), under_default);
}

TEST(log_export, empty_history_gives_an_empty_page_and_an_empty_file) {
    display_fixture d;
    expect_reference(masked(exported(d.ansi, format::html)), "empty.html");
    d.feed("\x1b[1m\x1b[31mgone\nand this pending");
    d.ansi.clear_display();
    EXPECT_EQ(masked(exported(d.ansi, format::html)), read_file(reference_dir + "empty.html"));
    EXPECT_EQ(exported(d.ansi, format::text), "");
}

// The page of a single white record holding text.
std::string page_of(const std::string& span_text) {
    std::string page = read_file(reference_dir + "empty.html");
    const std::string body = "<body><pre><tt>\n";
    return page.insert(page.find(body) + body.size(), "<span class=\"white\">" + span_text + "</span>");
}

TEST(log_export, a_record_is_cut_to_the_fields_5999_bytes) {
    struct cut_case {
        const char* name;
        std::string input, text_file, page_text;
    };
    std::string euros;
    for (int i = 0; i < 7000; ++i) euros += "\xe2\x82\xac";
    std::string lts;
    for (int i = 0; i < 5999; ++i) lts += "&lt;";
    const cut_case cases[] = {
        {"5999 plain bytes stay whole", std::string(5999, 'x'), std::string(5999, 'x'), std::string(5999, 'x')},
        {"6000 lose the last", std::string(6000, 'y'), std::string(5999, 'y'), std::string(5999, 'y')},
        {"7000 lose the rest", std::string(6999, 'z') + "\n", std::string(5999, 'z'), std::string(5999, 'z')},
        {"escaped after the cut", std::string(6500, '<'), std::string(5999, '<'), lts},
        {"each three-byte character is one dot", euros, std::string(5999, '.'), std::string(5999, '.')},
    };
    for (const cut_case& c : cases) {
        SCOPED_TRACE(c.name);
        display_fixture d;
        d.ansi.add_text(c.input.c_str());
        EXPECT_EQ(exported(d.ansi, format::text), c.text_file);
        EXPECT_EQ(masked(exported(d.ansi, format::html)), page_of(c.page_text));
    }
}

TEST(log_export, class_names_by_colour_and_attributes) {
    struct class_case {
        int color, attributes;
        const char* name;
    };
    const class_case cases[] = {
        {0, zorn_ansi_plain, "white"},          {zorn_ansi_white, zorn_ansi_plain, "white"},
        {0, zorn_ansi_bright, "bwhite"},        {zorn_ansi_white, zorn_ansi_dim, "dwhite"},
        {zorn_ansi_red, zorn_ansi_bright, "bred"}, {zorn_ansi_red, zorn_ansi_dim, "dred"},
        {zorn_ansi_red, zorn_ansi_blink, "red"},   {zorn_ansi_red, zorn_ansi_inverse, "red"},
        {zorn_ansi_red, zorn_ansi_bright | zorn_ansi_dim, "bred"},
        {zorn_ansi_green, zorn_ansi_plain, "green"}, {zorn_ansi_yellow, zorn_ansi_bright, "byellow"},
        {zorn_ansi_blue, zorn_ansi_dim, "dblue"},    {zorn_ansi_purple, zorn_ansi_plain, "purple"},
        {zorn_ansi_cyan, zorn_ansi_bright, "bcyan"},
    };
    log_capture log(2);
    for (const class_case& c : cases)
        EXPECT_STREQ(render_get_html_color(c.color, c.attributes), c.name) << c.color << " " << c.attributes;
    EXPECT_EQ(log.text(), "");
    EXPECT_STREQ(render_get_html_color(48, zorn_ansi_bright), "bogus");
    EXPECT_STREQ(render_get_html_color(56, 0), "bogus");
    EXPECT_EQ(log.text(), "error in render_get_html_color() - bad color '48'?\n"
                          "error in render_get_html_color() - bad color '56'?\n");
}

TEST(log_save, files_and_messages_of_both_formats) {
    temp_dir dir;
    display_fixture d;
    d.feed("\x1b[1m\x1b[31mbright red\n\x1b[0mplain a<b\n");
    std::string message;

    const std::string html_path = dir / "log.html";
    write_file(html_path, std::string(100000, '#'));  // replaced, not appended to
    ASSERT_TRUE(zorn_save_logfile(&d.ansi, html_path.c_str(), 0, &message));
    EXPECT_EQ(message, "\n\nHTML log saved to file '" + html_path + "'.\n\n");
    EXPECT_EQ(masked(read_file(html_path)), masked(exported(d.ansi, format::html)));

    for (int filter : {1, 2, -1}) {
        const std::string text_path = dir / ("log" + std::to_string(filter) + ".txt");
        ASSERT_TRUE(zorn_save_logfile(&d.ansi, text_path.c_str(), filter, &message));
        EXPECT_EQ(message, "\n\nPlain text log saved to file '" + text_path + "'.\n\n");
        EXPECT_EQ(read_file(text_path), "bright red\nplain a<b\n");
    }
}

TEST(log_save, the_saved_message_is_only_in_the_next_export) {
    temp_dir dir;
    display_fixture d;
    d.feed("before\n");
    std::string message;
    const std::string first = dir / "first.txt", second = dir / "second.txt";
    ASSERT_TRUE(zorn_save_logfile(&d.ansi, first.c_str(), 1, &message));
    d.ansi.add_text(message.c_str());  // as the frame prints it on the main display
    ASSERT_TRUE(zorn_save_logfile(&d.ansi, second.c_str(), 1, &message));
    EXPECT_EQ(read_file(first), "before\n");
    EXPECT_EQ(read_file(second), "before\n\n\nPlain text log saved to file '" + first + "'.\n\n");
}

TEST(log_save, the_path_is_cleaned_and_an_unwritable_one_writes_nothing) {
    temp_dir dir;
    display_fixture d;
    d.feed("text\n");
    std::string message;

    const std::string typed = dir / "caf\xc3\xa9.txt", cleaned = dir / "caf..txt";
    ASSERT_TRUE(zorn_save_logfile(&d.ansi, typed.c_str(), 1, &message));
    EXPECT_EQ(message, "\n\nPlain text log saved to file '" + cleaned + "'.\n\n");
    EXPECT_EQ(read_file(cleaned), "text\n");
    EXPECT_NE(access(typed.c_str(), F_OK), 0);

    for (const std::string& path : {dir / "no-such-dir/log.html", dir.path()}) {
        EXPECT_FALSE(zorn_save_logfile(&d.ansi, path.c_str(), 0, &message));
        EXPECT_EQ(message, "\n\nError - unable to open file '" + path + "'.\nLogfile was not saved!\n\n");
    }
    EXPECT_NE(access((dir / "no-such-dir").c_str(), F_OK), 0);
    // The history is untouched by a failed save.
    EXPECT_EQ(exported(d.ansi, format::text), "text\n");
}

}  // namespace
