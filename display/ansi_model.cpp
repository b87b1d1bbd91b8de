#include "display/ansi_model.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "base/random.h"
#include "config/debug_log.h"

namespace {

// What the text state does with each byte.
enum byte_action : unsigned char { keep, drop, dot, escape, line_feed };

struct byte_actions {
    byte_action of[256];
    constexpr byte_actions() : of() {
        for (int b = 0; b < 256; ++b) {
            if (b == 27) of[b] = escape;
            else if (b == '\n') of[b] = line_feed;
            else if (b == '\t') of[b] = keep;
            else if (b <= 26 || b == 127) of[b] = drop;  // carriage return among them
            else if (b >= 128) of[b] = dot;
            else of[b] = keep;
        }
    }
};
constexpr byte_actions actions;

zorn_rgb background_for(int attributes) {
    return (attributes & zorn_ansi_inverse) ? zorn_ansi_model::inverse_background : zorn_rgb(0, 0, 0);
}

}  // namespace

zorn_ansi_model::zorn_ansi_model(zorn_textctrl_model* text, zorn_ansi_view_client* client)
    : text(text), client(client) {
    static zorn_ansi_view_client no_client;
    if (!this->client) this->client = &no_client;
    reset_colors();
}

void zorn_ansi_model::add_ansi_text(const char* data, int length) {
    if (!data || length <= 0) return;
    text_received = 1;
    char run[run_limit];
    int used = 0;
    for (int i = 0; i < length; ++i) {
        const unsigned char byte = static_cast<unsigned char>(data[i]);
        if (ansi_state != 1) {
            if (escape_state == 0) {
                if (byte == '[') {
                    escape_state = 1;
                } else {
                    ansi_state = 1;
                    single_character(byte);
                }
            } else {
                escape_sequence_byte(byte);
            }
            continue;
        }
        switch (actions.of[byte]) {
        case keep:
            run[used++] = static_cast<char>(byte);
            break;
        case dot:
            run[used++] = '.';
            break;
        case drop:
            continue;
        case escape:
            if (used > 0) flush(run, used);
            used = 0;
            ansi_state = 2;
            escape_state = 0;
            escape_value = 0;
            continue;
        case line_feed:
            run[used++] = '\n';
            flush(run, used);
            used = 0;
            process_ansi_color();
            continue;
        }
        if (used == run_limit) {
            flush(run, used);
            used = 0;
        }
    }
    // Flushed even when empty: the text control's first-text flag counts on it.
    flush(run, used);
}

void zorn_ansi_model::single_character(unsigned char byte) {
    if (byte != 'c') {
        if (zorn_debug_level >= 2) zorn_client_debug_printf("process_ansi_code(1) - got unhandled code %d.\n", byte);
        return;
    }
    // Reset: normal colours, and enough empty lines to push the old text out of sight.
    reset_colors();
    const int feeds = 2 * text->get_visible_line_count() + 1;
    for (int i = 0; i < feeds; ++i) flush("\n", 1);
}

void zorn_ansi_model::escape_sequence_byte(unsigned char byte) {
    if (byte >= '0' && byte <= '9') {
        escape_value = static_cast<int>(static_cast<unsigned>(escape_value) * 16u + (byte - '0'));
        return;
    }
    ansi_state = 1;
    if (byte == 'm') {
        apply_code(escape_value);
        process_ansi_color();
        return;
    }
    if (zorn_debug_level >= 2) zorn_client_debug_printf("process_ansi_code(2) - ignoring unhandled code %d.\n", byte);
}

bool zorn_ansi_model::apply_code(int value) {
    switch (value) {
    case 0x00: ansi_attributes = zorn_ansi_plain; ansi_color = 0; return true;
    case 0x01: ansi_attributes = zorn_ansi_bright; return true;
    case 0x02: ansi_attributes = zorn_ansi_dim; return true;
    case 0x05: ansi_attributes = zorn_ansi_blink; return true;
    case 0x07: ansi_attributes = zorn_ansi_inverse; return true;
    case 0x22: ansi_attributes = zorn_ansi_plain; return true;
    default: break;
    }
    if (value >= zorn_ansi_red && value <= zorn_ansi_white) {
        ansi_color = value;
        return true;
    }
    if (zorn_debug_level >= 2)
        zorn_client_debug_printf("error in zorn_ansi_display::process_ansi_code() - bad value '%d'.\n", value);
    return false;
}

void zorn_ansi_model::process_ansi_code(int first, int second) {
    apply_code(first);
    process_ansi_color();
    apply_code(second);
    process_ansi_color();
}

void zorn_ansi_model::process_ansi_color() {
    if (zorn_palette_slot(ansi_color) < 0) {
        if (zorn_debug_level >= 2)
            zorn_client_debug_printf("error in zorn_ansi_display::process_ansi_color() - bad color '%d'?\n", ansi_color);
        return;
    }
    if (ansi_attributes == shown_attributes && ansi_color == shown_color) return;
    const zorn_rgb color = zorn_palette_color(*zorn_current_palette, ansi_color, ansi_attributes);
    current_rgb = zorn_pack_rgb(color);
    current_attributes = ansi_attributes;
    current_color = ansi_color;
    if (render.pending_empty()) {
        pending_rgb = current_rgb;
        pending_attributes = current_attributes;
        pending_color = current_color;
    }
    // Inverse changes the background of the whole control, not of a run.
    if (!updates_suspended) text->set_colors(color, background_for(ansi_attributes));
    shown_attributes = ansi_attributes;
    shown_color = ansi_color;
}

void zorn_ansi_model::reset_colors() {
    ansi_attributes = zorn_ansi_plain;
    // The detour by yellow gets the change to white through the unchanged test.
    ansi_color = zorn_ansi_yellow;
    process_ansi_color();
    ansi_color = zorn_ansi_white;
    process_ansi_color();
}

void zorn_ansi_model::add_text(const char* plain) {
    if (!plain) return;
    flush(plain, static_cast<int>(std::strlen(plain)));
}

void zorn_ansi_model::flush(const char* run, int length) {
    add_to_render_list(run, length);
    if (!updates_suspended) text->add_text(run, static_cast<size_t>(length));
}

void zorn_ansi_model::add_to_render_list(const char* run, int length) {
    if (length <= 0) return;
    if (current_attributes != pending_attributes || current_rgb != pending_rgb) rerender_flush();
    render.append_pending(run, static_cast<size_t>(length));
}

void zorn_ansi_model::rerender_flush() {
    if (render.pending_empty()) {
        if (zorn_debug_level >= 2) zorn_client_debug_printf("zorn_ansi_display - rerender_flush() - temp space was empty, WTF?\n");
        return;
    }
    render.commit(pending_rgb, pending_attributes, pending_color);
    pending_rgb = current_rgb;
    pending_attributes = current_attributes;
    pending_color = current_color;
}

void zorn_ansi_model::clear_display() {
    if (!render.pending_empty()) rerender_flush();
    render.clear();
    if (!updates_suspended) text->clear_text();
    pending_rgb = current_rgb = 0;
    pending_attributes = current_attributes = 0;
    pending_color = current_color = 0;
    reset_colors();
}

void zorn_ansi_model::resume_updates() {
    if (!updates_suspended) {
        if (zorn_debug_level >= 2)
            zorn_client_debug_printf("Error in zorn_ansi_display::resume_updates(), updates were not suspended?\n");
        return;
    }
    updates_suspended = 0;
    rerender();
    client->repaint_display();
}

void zorn_ansi_model::rerender() {
    if (!render.pending_empty()) rerender_flush();
    text->clear_text();
    // Each record goes through a 5999-byte field, as add_text keeps no more of one call: a longer
    // stretch of one colour loses its tail here.
    char buffer[zorn_textctrl_model::chunk_text_limit];
    zorn_render_list record;
    for (size_t i = 0; i < render.count(); ++i) {
        render.record(i, &record, false);
        const size_t n = render.record_text(i, buffer, sizeof(buffer));
        text->set_colors(zorn_rgb(record.red, record.green, record.blue), background_for(record.attributes));
        text->add_text(buffer, n);
    }
    // Text that comes later is in the colours in force now, not in those of the last record.
    if (zorn_palette_slot(current_color) >= 0 && shown_attributes >= 0)
        text->set_colors(zorn_unpack_rgb(current_rgb), background_for(current_attributes));
    scroll_to_end();
}

void zorn_ansi_model::set_word_wrap(int value) {
    text->set_wrap(value);
    rerender();
}

int zorn_ansi_model::debug_fill(int line_total) {
    int characters = 0;
    char word[12];
    for (int line = 0; line < line_total; ++line) {
        const int words = random_below(50);
        for (int w = 0; w < words; ++w) {
            const int letters = 1 + random_below(10);
            for (int i = 0; i < letters; ++i) word[i] = static_cast<char>('a' + random_below(26));
            word[letters] = ' ';
            word[letters + 1] = '\0';
            const zorn_rgb fore(random_below(256), random_below(256), random_below(256));
            const zorn_rgb back(random_below(256), random_below(256), random_below(256));
            text->set_colors(fore, back);
            text->add_text(word, static_cast<size_t>(letters + 1));
            characters += letters + 1;
        }
        text->add_text("\n", 1);
        characters += 1;
    }
    char message[80];
    std::snprintf(message, sizeof(message), "%d characters written (%d kb).\n", characters, characters / 1000);
    text->add_text(message);
    return characters;
}

// View -------------------------------------------------------------------------------------------

int zorn_ansi_model::end_position() const {
    return text->top_anchored ? text->current_line + 1 - text->get_visible_line_count() : text->current_line;
}

void zorn_ansi_model::scroll_to_end() {
    view_line = end_position();
    text->set_scroll_line(view_line);
    client->update_scrollbar();
}

// Locked means following 0 and the text control frozen; the two always change together.
void zorn_ansi_model::set_locked(bool locked) {
    following = locked ? 0 : 1;
    text->frozen = locked ? 1 : 0;
}

void zorn_ansi_model::lock_scrollback() {
    if (!following) return;
    if (!no_lock) {
        set_locked(true);
        scroll_to_end();
    }
    client->repaint_display();
    client->lock_changed();
}

void zorn_ansi_model::unlock_scrollback() {
    if (following) return;
    set_locked(false);
    scroll_to_end();
    client->repaint_display();
    client->lock_changed();
}

void zorn_ansi_model::scroll_by(int delta) {
    const int low = text->top_anchored ? 0 : text->get_visible_line_count() - 1;
    const int end = end_position();
    long long line = static_cast<long long>(view_line) + delta;
    line = std::max<long long>(line, low);
    line = std::min<long long>(line, end);
    view_line = static_cast<int>(line);
    // Scrolling down to the end ends the lock.
    if (view_line == end && !following) unlock_scrollback();
    text->set_scroll_line(view_line);
    client->update_scrollbar();
}

void zorn_ansi_model::scroll_up(int count) {
    const int half = text->get_visible_line_count() * 50 / 100;
    scroll_by(-std::max(1, std::min(count, half)));
}

void zorn_ansi_model::scroll_down(int count) {
    const int half = text->get_visible_line_count() * 50 / 100;
    scroll_by(std::max(1, std::min(count, half)));
}

void zorn_ansi_model::page_up() { scroll_by(-std::max(1, text->get_visible_line_count() * 50 / 100)); }

void zorn_ansi_model::page_down() { scroll_by(std::max(1, text->get_visible_line_count() * 50 / 100)); }

void zorn_ansi_model::scroll_thumb_moved(int position) {
    const int visible = text->get_visible_line_count();
    const int last = text->top_anchored ? text->current_line + visible : text->current_line;
    if (last <= visible) {
        view_line = position;
        if (!following) unlock_scrollback();
        return;
    }
    view_line = text->set_top_line(position);
    if (view_line < last && following) {
        // The view stays where the thumb put it: lock without scroll_to_end.
        if (!no_lock) {
            set_locked(true);
            client->lock_changed();
        }
        client->repaint_display();
    } else if (view_line >= last && !following) {
        unlock_scrollback();
    }
}

void zorn_ansi_model::set_scroll_position(int position) {
    client->repaint_display();
    view_line = text->set_top_line(position);
    client->update_scrollbar();
}

void zorn_ansi_model::lock_at_lines(int first, int last) {
    const int visible = text->get_visible_line_count();
    const int low = text->top_anchored ? 0 : visible - 1;
    int target = text->top_anchored ? first - visible / 2 : last + (visible - 1) / 2;
    target = std::max(low, std::min(target, end_position()));
    const bool was_following = following != 0;
    if (!no_lock) set_locked(true);
    view_line = target;
    text->set_scroll_line(view_line);
    client->update_scrollbar();
    client->repaint_display();
    if (was_following && !following) client->lock_changed();
}
