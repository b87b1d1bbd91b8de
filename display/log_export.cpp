#include "display/log_export.h"

#include <sys/time.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string_view>

#include "base/fixed_string.h"
#include "config/debug_log.h"
#include "display/ansi_model.h"
#include "input/line_edit_model.h"

namespace {

// Class names by family and level (dim, normal, bright), in the order of the palette's rows, which
// is also the order of the style lines.
constexpr int family_count = 7;
constexpr const char* class_names[family_count][3] = {
    {"dwhite", "white", "bwhite"},    {"dred", "red", "bred"},          {"dyellow", "yellow", "byellow"},
    {"dgreen", "green", "bgreen"},    {"dcyan", "cyan", "bcyan"},       {"dblue", "blue", "bblue"},
    {"dpurple", "purple", "bpurple"},
};

// A cleaned record never holds more than this many bytes of the field's 6000.
constexpr size_t clean_limit = zorn_fixed_string::capacity - 1;
// Cleaning turns at most four input bytes into one, so this much input always fills the field.
constexpr size_t input_limit = 4 * clean_limit;

// The record's text, cleaned and cut to the field. The raw bytes go through a buffer on the
// caller's stack, so that no record costs an allocation and the history is never copied whole.
void clean_record(const zorn_render_store& store, size_t i, char* buffer, zorn_fixed_string* out) {
    const size_t n = store.record_text(i, buffer, input_limit);
    out->clear();
    clean_text(std::string_view(buffer, n), out);
}

// Writes the text with "&", "<" and ">" as entities; runs between them go out whole.
void write_escaped(const char* text, size_t length, FILE* file) {
    const char* end = text + length;
    while (text < end) {
        const char* run = text;
        while (text < end && *text != '&' && *text != '<' && *text != '>') ++text;
        if (text > run) std::fwrite(run, 1, static_cast<size_t>(text - run), file);
        if (text == end) break;
        std::fputs(*text == '&' ? "&amp;" : *text == '<' ? "&lt;" : "&gt;", file);
        ++text;
    }
}

void write_page_head(FILE* file) {
    timeval now{};
    gettimeofday(&now, nullptr);
    const time_t second = now.tv_sec;
    char stamp[64] = "";
    if (!ctime_r(&second, stamp)) stamp[0] = '\0';
    std::fputs("<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\">\n", file);
    std::fprintf(file, "<html>\n<head>\n<title>Ember Vale Logfile - %s</title>\n", stamp);
    std::fputs("<meta http-equiv=\"Content-Type\" content=\"text/html;charset=utf-8\" >\n", file);
    std::fputs("<style type=\"text/css\">\n", file);
    std::fputs("body     {background-color:#000000}\n", file);
    // Always the default palette, whichever the player has chosen: a record's class comes from its
    // colour code and attributes, not from the colour it was shown in.
    const zorn_ansi_palette& palette = zorn_ansi_palettes[0];
    for (int family = 0; family < family_count; ++family) {
        for (int level = 0; level < 3; ++level) {
            const zorn_rgb& c = palette.color[family][level];
            std::fprintf(file, ".%-8s{color:%06x}\n", class_names[family][level],
                         static_cast<unsigned>((c.red << 16) | (c.green << 8) | c.blue));
        }
    }
    std::fputs("</style>\n", file);
    std::fputs("</head>\n", file);
    std::fputs("<body><pre><tt>\n", file);
}

}  // namespace

const char* render_get_html_color(int color, int attributes) {
    int family;
    switch (color) {
    case 0: family = 0; break;
    case zorn_ansi_red: family = 1; break;
    case zorn_ansi_green: family = 3; break;
    case zorn_ansi_yellow: family = 2; break;
    case zorn_ansi_blue: family = 5; break;
    case zorn_ansi_purple: family = 6; break;
    case zorn_ansi_cyan: family = 4; break;
    case zorn_ansi_white: family = 0; break;
    default:
        if (zorn_debug_level >= 2) zorn_client_debug_printf("error in render_get_html_color() - bad color '%d'?\n", color);
        return "bogus";
    }
    const int level = (attributes & zorn_ansi_bright) ? 2 : (attributes & zorn_ansi_dim) ? 0 : 1;
    return class_names[family][level];
}

void zorn_ansi_model::export_html(FILE* file) {
    if (!render.pending_empty()) rerender_flush();
    write_page_head(file);
    zorn_fixed_string cleaned;
    char buffer[input_limit];
    zorn_render_list record;
    for (size_t i = 0; i < render.count(); ++i) {
        render.record(i, &record, false);
        clean_record(render, i, buffer, &cleaned);
        std::fprintf(file, "<span class=\"%s\">", render_get_html_color(record.color, record.attributes));
        write_escaped(cleaned.text, static_cast<size_t>(cleaned.length), file);
        std::fputs("</span>", file);
    }
    std::fputs("\n</tt></pre></body>\n</html>\n", file);
}

void zorn_ansi_model::export_text(FILE* file) {
    if (!render.pending_empty()) rerender_flush();
    zorn_fixed_string cleaned;
    char buffer[input_limit];
    for (size_t i = 0; i < render.count(); ++i) {
        clean_record(render, i, buffer, &cleaned);
        std::fputs(cleaned.text, file);
    }
}

bool zorn_save_logfile(zorn_ansi_model* display, const char* path, int filter_index, std::string* message) {
    zorn_fixed_string cleaned;
    clean_text(path ? std::string_view(path) : std::string_view(), &cleaned);
    FILE* file = display ? std::fopen(cleaned.text, "wb") : nullptr;
    if (!file) {
        *message = std::string("\n\nError - unable to open file '") + cleaned.text + "'.\nLogfile was not saved!\n\n";
        return false;
    }
    if (filter_index == 0) {
        display->export_html(file);
        *message = "\n\nHTML log saved to file '";
    } else {
        display->export_text(file);
        *message = "\n\nPlain text log saved to file '";
    }
    *message += cleaned.text;
    *message += "'.\n\n";
    std::fclose(file);
    return true;
}
