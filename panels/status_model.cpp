#include "panels/status_model.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>

#include "base/random.h"
#include "base/words.h"
#include "config/debug_log.h"

namespace {

// The start of the first word at or after text, or null when only separators are left.
const char* word_at(const char* text) {
    if (!text) return nullptr;
    while (*text == ' ' || *text == '\t' || *text == '\n') ++text;
    return *text ? text : nullptr;
}

// Reads up to count numbers into the fields in turn; answers how many came.
int read_numbers(const char* payload, int* const* fields, int count) {
    const char* word = word_at(payload);
    int read = 0;
    while (word && read < count) {
        *fields[read++] = std::atoi(word);
        word = next_arg(word);
    }
    return read;
}

void log_sky(const char* what) {
    if (zorn_debug_level >= 2) zorn_client_debug_printf("zorn_status_bar::update_sky_display() - bad value for %s.\n", what);
}

const char* const label_texts[3][4] = {
    {" hp:0000/0000   ", " mana:0000/0000   ", " move:0000/0000   ", " exp: FULL "},
    {" hp:0000/0000 ", " mn:0000/0000 ", " mv:0000/0000 ", " xp: FULL"},
    {" hp:0000  ", " mn:0000  ", " mv:0000  ", " xp: FULL"},
};

}  // namespace

void zorn_status_numbers::reset_numbers() {
    hp = mana = move = -1;
    max_hp = max_mana = max_move = 1;
    std::fill(std::begin(xp), std::end(xp), 0);
    clear_enemy();
}

void zorn_status_numbers::clear_enemy() {
    enemy_percent = -1;
    enemy_name.set(zorn_no_enemy_name);
}

bool status_parse_hit_points(zorn_status_numbers* n, const char* payload) {
    const int before[6] = {n->hp, n->max_hp, n->mana, n->max_mana, n->move, n->max_move};
    int* const fields[6] = {&n->hp, &n->max_hp, &n->mana, &n->max_mana, &n->move, &n->max_move};
    if (read_numbers(payload, fields, 6) < 6) return false;
    for (int i = 0; i < 6; ++i)
        if (*fields[i] != before[i]) return true;
    return false;
}

zorn_enemy_update status_parse_enemy(zorn_status_numbers* n, const char* payload) {
    if (!payload || !*payload) {
        n->clear_enemy();
        return zorn_enemy_update::cleared;
    }
    const int old_percent = n->enemy_percent;
    n->enemy_percent = std::atoi(payload);
    const char* name = next_arg(payload);
    if (!name) return zorn_enemy_update::no_name;
    if (std::strcmp(name, n->enemy_name.c_str()) != 0) {
        n->enemy_name.set(name);  // cut at 5999 characters
        return zorn_enemy_update::changed;
    }
    return n->enemy_percent != old_percent ? zorn_enemy_update::changed : zorn_enemy_update::same;
}

bool status_parse_experience(zorn_status_numbers* n, const char* payload) {
    int values[zorn_xp_slots] = {};
    int* fields[zorn_xp_slots];
    for (int i = 0; i < zorn_xp_slots; ++i) fields[i] = &values[i];
    read_numbers(payload, fields, zorn_xp_slots);
    std::sort(std::begin(values), std::end(values), std::greater<int>());
    // The list is compared in its sorted form, so the same values in another order (as a prompt
    // repeats them) are no change.
    const bool changed = !std::equal(std::begin(values), std::end(values), std::begin(n->xp));
    std::copy(std::begin(values), std::end(values), std::begin(n->xp));
    return changed;
}

int status_gauge_fill(int value, int maximum, int width) {
    if (maximum < 1) maximum = 1;
    const int64_t fill = static_cast<int64_t>(value) * width / maximum;
    return static_cast<int>(std::clamp<int64_t>(fill, 0, std::max(width, 0)));
}

void status_experience_text(int first_xp, int compact_level, zorn_fixed_string* out) {
    const char* word = compact_level == 0 ? "exp" : "xp";
    const int percent = std::max(first_xp / 10, 0);
    out->clear();
    if (percent < 100)
        out->appendf(" %s: %d%%", word, percent);
    else
        out->appendf(" %s: FULL", word);
}

void status_gauge_texts(const zorn_status_numbers& n, int level, zorn_fixed_string* hp, zorn_fixed_string* mana,
                        zorn_fixed_string* move) {
    hp->clear();
    mana->clear();
    move->clear();
    if (level >= 2) {
        hp->appendf(" hp:%4d", n.hp);
        mana->appendf(" mn:%4d", n.mana);
        move->appendf(" mv:%4d", n.move);
        return;
    }
    hp->appendf(" hp:%4d/%d", n.hp, n.max_hp);
    mana->appendf(level == 0 ? " mana:%4d/%d" : " mn:%4d/%d", n.mana, n.max_mana);
    move->appendf(level == 0 ? " move:%4d/%d" : " mv:%4d/%d", n.move, n.max_move);
}

const char* status_label_text(int level, int which) {
    if (level < 0 || level > 2 || which < 0 || which > 3) return "";
    return label_texts[level][which];
}

zorn_status_display_layout compute_status_display_layout(int w, int h, const zorn_status_flags& flags,
                                                         const zorn_text_measure& measure, int th) {
    zorn_status_display_layout out;
    if (!flags.enemy_bar && !flags.hp_bars && flags.exp_bar) {
        out.exp_x = 10;
        out.bar_width = 2 * w / 3;
    } else {
        // Four gauges share the row when the experience bar joins the hit point bars without an
        // enemy; otherwise three, the experience bar taking the movement gauge's place.
        const bool four = !flags.enemy_bar && flags.hp_bars && flags.exp_bar;
        const int gauges = four ? 4 : 3;
        const int limit = w / (four ? 10 : 7);
        int text[4] = {};
        int level = 0;
        for (; level < 3; ++level) {
            int sum = 0;
            for (int i = 0; i < gauges; ++i) sum += text[i] = measure ? measure(label_texts[level][i]) : 0;
            out.bar_width = (w - 20 - sum) / gauges;
            if (out.bar_width > limit) break;
        }
        out.compact_level = level;
        out.hp_x = 10;
        if (level == 3) {
            const int spare = w - 50;
            out.bar_width = spare < (four ? 60 : 45) ? 15 : spare / gauges;
            out.mana_x = out.bar_width + 20;
            out.move_x = 2 * out.bar_width + 30;
            out.exp_x = four ? 3 * out.bar_width + 40 : out.move_x;
        } else {
            out.mana_x = out.bar_width + text[0] + 10;
            out.move_x = out.mana_x + out.bar_width + text[1];
            out.exp_x = four ? out.move_x + out.bar_width + text[2] : out.move_x;
        }
    }
    if (flags.enemy_bar && flags.hp_bars) {
        out.bar_height = h / 4;
        out.bar_y = h / 2 + h / 8;
        out.enemy_bar_y = h / 8;
        out.enemy_text_y = (h / 2 - th) / 2;
        out.text_y = out.enemy_text_y + h / 2;
    } else {
        out.bar_height = h / 2;
        out.bar_y = out.enemy_bar_y = h / 4;
        out.text_y = out.enemy_text_y = (h - th) / 2;
    }
    return out;
}

void zorn_ping_meter::add_ping_sample(int milliseconds) {
    ping_samples[ping_index] = milliseconds;
    ping_index = (ping_index + 1) % zorn_ping_slots;
    if (ping_count < zorn_ping_slots) ping_count++;
    int64_t sum = 0;
    for (int i = 0; i < ping_count; ++i) sum += ping_samples[i];
    ping_average = static_cast<int>(sum / ping_count);
}

void zorn_ping_meter::clear() { *this = zorn_ping_meter(); }

bool status_parse_icons(int icon_on[zorn_icon_count], const char* payload) {
    bool changed = false;
    bool ended = !payload;
    for (int i = 0; i < zorn_icon_count; ++i) {
        if (!ended && payload[i] == '\0') ended = true;
        const int on = !ended && payload[i] == '1';
        changed = changed || icon_on[i] != on;
        icon_on[i] = on;
    }
    return changed;
}

zorn_status_bar_layout compute_status_bar_layout(int w, int h, int padlock_width, int th, int ping_width,
                                                 int clock_width) {
    zorn_status_bar_layout out;
    out.width = w;
    out.lock_x = w - padlock_width;
    out.text_y = (h - th) / 2;
    out.ping_right = out.lock_x - 10;
    out.ping_x = out.ping_right - ping_width;
    out.clock_right = out.ping_x - 10;
    out.clock_x = out.clock_right - clock_width;
    int sky_right = out.clock_x - 10;
    // Too narrow: the sky keeps its room and the right part runs off the end of the bar.
    if (out.clock_x < zorn_status_bar_clock_minimum) {
        const int shift = zorn_status_bar_clock_minimum - out.clock_x;
        out.clock_x += shift;
        out.clock_right += shift;
        out.ping_x += shift;
        out.ping_right += shift;
        out.lock_x += shift;
        sky_right = zorn_status_bar_clock_minimum - 10;
    }
    out.sky_height = h - 2;
    out.sky_width = sky_right - out.sky_x;
    return out;
}

bool parse_sky_state(const char* payload, zorn_sky_fields* fields, zorn_fixed_string* clock_text) {
    if (!payload) payload = "";
    int flags[3] = {};
    const char* p = payload;
    for (int i = 0; i < 3; ++i) {
        // Any other character counts as 0 and is left for the next flag to look at.
        if (*p == '0' || *p == '1') flags[i] = *p++ - '0';
    }
    const char* terrain_word = next_arg(payload);
    int terrain = 0, minute = 0;
    if (!parse_integer(terrain_word, &terrain)) {
        log_sky("terrain field");
        return false;
    }
    const char* minute_word = next_arg(terrain_word);
    if (!parse_integer(minute_word, &minute) || minute < 0 || minute >= zorn_minutes_per_day) {
        log_sky("current_minute");
        return false;
    }
    fields->outdoors = flags[0];
    fields->sky_visible = flags[1];
    fields->overcast = flags[2];
    fields->terrain = terrain;
    fields->current_minute = minute;
    clock_text->clear();
    if (const char* clock = next_arg_eol(minute_word)) {
        int length = static_cast<int>(std::strcspn(clock, "\r\n"));
        clock_text->append(clock, length);
    }
    return true;
}

void make_stars(zorn_star* stars, int count) {
    for (int i = 0; i < count; ++i) {
        zorn_star& s = stars[i];
        s.x = random_float();
        s.y = random_float();
        const int base = 192 + random_below(64);
        if ((random_next() & 3) != 0) {
            // Blue-white.
            s.blue = base;
            s.green = (random_below(s.blue) + 3 * s.blue) / 4;
            s.red = (random_below(s.green) + 3 * s.green) / 4;
        } else {
            // Red-white.
            s.red = base;
            s.green = (3 * random_below(s.red) + s.red) / 4;
            s.blue = (3 * random_below(s.green) + s.green) / 4;
        }
    }
}

bool sky_dim(const zorn_sky_fields& f) { return f.overcast || !f.outdoors; }

int sky_peak(bool dim) { return dim ? 208 : 255; }

int sky_daylight(int minute, int peak) {
    if (minute < 360) return 0;
    if (minute < 435) return (minute - 360) * peak / 75;
    if (minute < 1125) return peak;
    if (minute < 1200) return (1200 - minute) * peak / 75;
    return 0;
}

zorn_rgb sky_colour(int d) { return zorn_rgb(d / 3, 2 * d / 3, d); }

int sky_offset(int minute, int width) {
    return static_cast<int>(static_cast<int64_t>(minute) * 2 * width / zorn_minutes_per_day);
}

int sky_wrapped_x(int64_t base_x, int width, int offset) {
    int64_t x = base_x + offset;
    if (x > 2 * static_cast<int64_t>(width)) x -= 2 * static_cast<int64_t>(width);
    return static_cast<int>(x);
}

int sky_sun_x(int width, int offset) {
    return sky_wrapped_x(static_cast<int64_t>(width) * 2052 / zorn_minutes_per_day, width, offset);
}

int sky_moon_x(int width, int offset) {
    return sky_wrapped_x(static_cast<int64_t>(width) * 612 / zorn_minutes_per_day, width, offset);
}

bool sky_dawn_glow(int minute, int* g) {
    if (minute < 330 || minute > 479) return false;
    const int t = minute * 510 - 168300;
    *g = t < 38400 ? t / 150 : 510 - t / 150;
    return true;
}

bool sky_dusk_glow(int minute, int* g) {
    if (minute < 1050 || minute > 1229) return false;
    const int t = (1230 - minute) * 510;
    *g = t < 46080 ? t / 180 : 510 - t / 180;
    return true;
}

zorn_rgb sky_glow_colour(int g, const zorn_rgb& sky) {
    return zorn_rgb(std::max(g, sky.red), std::max(g / 2, sky.green), std::max(g / 3, sky.blue));
}

zorn_rgb sky_star_colour(const zorn_star& star, int shine, int peak, const zorn_rgb& sky) {
    if (peak < 1) peak = 1;
    return zorn_rgb(std::max(star.red * shine / peak, sky.red), std::max(star.green * shine / peak, sky.green),
                    std::max(star.blue * shine / peak, sky.blue));
}

const char* sky_tooltip(const zorn_sky_fields& f) {
    if (!f.sky_visible) return "You can't see the sky from here.";
    if (f.overcast) return f.outdoors ? "It is cloudy and overcast." : "You can see the overcast sky from here.";
    return f.outdoors ? "The sky is clear." : "You can see the clear sky from here.";
}
