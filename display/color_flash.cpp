#include "display/color_flash.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

#include "config/debug_log.h"

namespace {

bool is_separator(char c) { return c == ' ' || c == '\t' || c == '\n'; }

const char* skip_separators(const char* p) {
    while (*p && is_separator(*p)) ++p;
    return p;
}

const char* next_field(const char* p) {
    while (*p && !is_separator(*p)) ++p;
    return skip_separators(p);
}

int hex_value(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// A number passes when it starts with a digit, or a sign and a digit.
bool read_duration(const char* p, int* value) {
    const bool sign = (*p == '+' || *p == '-');
    if (!std::isdigit(static_cast<unsigned char>(sign ? p[1] : p[0]))) return false;
    const long long v = std::strtoll(p, nullptr, 10);
    *value = static_cast<int>(std::max<long long>(1, std::min<long long>(v, zorn_flash_max_duration)));
    return true;
}

void log_level2(const char* text) {
    if (zorn_debug_level >= 2) zorn_client_debug_printf("%s", text);
}

}  // namespace

zorn_rgb GetColorFromHexString(const char* text) {
    int digits[6];
    for (int i = 0; i < 6; ++i) {
        if (!text[i]) {
            log_level2("zorn_textctrl::GetColorFromHexString() - string too short.\n");
            return zorn_rgb(0, 0, 0);
        }
        digits[i] = hex_value(text[i]);
    }
    for (int d : digits) {
        if (d < 0) {
            log_level2("zorn_textctrl::GetColorFromHexString() - string doesn't appear to be hex.\n");
            return zorn_rgb(0, 0, 0);
        }
    }
    return zorn_rgb(digits[0] * 16 + digits[1], digits[2] * 16 + digits[3], digits[4] * 16 + digits[5]);
}

int zorn_color_flash_list::parse(const char* payload) {
    if (!payload) return 0;
    const char* p = skip_separators(payload);
    const zorn_rgb from = GetColorFromHexString(p);
    p = next_field(p);
    const zorn_rgb to = GetColorFromHexString(p);
    p = next_field(p);
    int duration = 0;
    if (!read_duration(p, &duration)) {
        log_level2("zorn_textctrl::parse_colorflash() - bad duration.\n");
        return 0;
    }
    p = next_field(p);
    auto* flash = new color_flash{from, new flash_step{to, duration, 0, nullptr}, head};
    head = flash;
    long long total = duration + 1;
    flash_step* tail = flash->steps;
    while (*p) {
        const zorn_rgb color = GetColorFromHexString(p);
        p = next_field(p);
        if (!read_duration(p, &duration)) {
            log_level2("zorn_textctrl::parse_colorflash() - bad subsequent duration.\n");
            break;
        }
        p = next_field(p);
        tail->next = new flash_step{color, duration, 0, nullptr};
        tail = tail->next;
        total += duration + 1;
    }
    return static_cast<int>(std::min<long long>(total, 1 << 30));
}

zorn_rgb zorn_color_flash_list::step(const zorn_rgb& base) {
    zorn_rgb mix(0, 0, 0);
    bool looked = false;
    for (color_flash** link = &head; *link;) {
        color_flash* flash = *link;
        if (!flash->steps) {
            // A finished flash leaves; the ones behind it wait for the next tick.
            *link = flash->next;
            delete flash;
            break;
        }
        flash_step* s = flash->steps;
        const int d = s->duration, t = s->progress;
        mix.red = std::max(mix.red, (s->to.red * t + flash->from.red * (d - t)) / d);
        mix.green = std::max(mix.green, (s->to.green * t + flash->from.green * (d - t)) / d);
        mix.blue = std::max(mix.blue, (s->to.blue * t + flash->from.blue * (d - t)) / d);
        looked = true;
        if (d - t < 1) {
            flash->from = s->to;
            flash->steps = s->next;
            delete s;
        } else {
            ++s->progress;
        }
        link = &flash->next;
    }
    return looked ? mix : base;
}

void zorn_color_flash_list::clear() {
    while (head) {
        color_flash* flash = head;
        head = flash->next;
        while (flash->steps) {
            flash_step* s = flash->steps;
            flash->steps = s->next;
            delete s;
        }
        delete flash;
    }
}
