// The payloads of "hp", "enemyhp", "xpp", "icons" and "skystate" as the server may send them,
// each fed to its parser, then the picture's arithmetic on what was stored: fills, texts, the
// layouts at a width taken from the input, and the sky at the stored minute.

#include <cstdint>
#include <cstring>
#include <string>

#include "config/debug_log.h"
#include "panels/status_model.h"

namespace {

const bool log_to_null = [] {
    zorn_client_set_debug_logfile_name("/dev/null");
    zorn_debug_level = 3;
    return true;
}();

int measure(const char* text) { return 7 * static_cast<int>(std::strlen(text)); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const int width = (data[0] << 4) - 300;
    const int height = data[1] % 64;
    // Tag payloads are NUL-ended and at most 14999 bytes.
    std::string payload(reinterpret_cast<const char*>(data) + 2, std::min<size_t>(size - 2, 14999));
    payload = payload.substr(0, payload.find('\0'));
    const char* p = payload.c_str();

    zorn_status_numbers n;
    status_parse_hit_points(&n, p);
    status_parse_enemy(&n, p);
    status_parse_experience(&n, p);
    for (int i = 1; i < zorn_xp_slots; ++i)
        if (n.xp[i] > n.xp[i - 1]) __builtin_trap();
    int icons[zorn_icon_count] = {};
    status_parse_icons(icons, p);
    zorn_sky_fields sky;
    zorn_fixed_string clock;
    if (parse_sky_state(p, &sky, &clock) && (sky.current_minute < 0 || sky.current_minute >= zorn_minutes_per_day))
        __builtin_trap();

    for (int flags = 0; flags < 8; ++flags) {
        zorn_status_flags f;
        f.hp_bars = flags & 1, f.exp_bar = flags & 2, f.enemy_bar = flags & 4;
        const zorn_status_display_layout l = compute_status_display_layout(width, height, f, measure, 14);
        if (l.compact_level < 0 || l.compact_level > 3) __builtin_trap();
        for (int value : {n.hp, n.mana, n.move, n.enemy_percent, n.xp[0]}) {
            const int fill = status_gauge_fill(value, n.max_hp, l.bar_width);
            if (fill < 0 || (l.bar_width >= 0 && fill > l.bar_width)) __builtin_trap();
        }
        zorn_fixed_string a, b, c;
        status_gauge_texts(n, l.compact_level, &a, &b, &c);
        status_experience_text(n.xp[0], l.compact_level, &a);
    }
    compute_status_bar_layout(width, height, 21, 14, 64, 64);
    const int w = width > 0 ? width : 1;
    const int offset = sky_offset(sky.current_minute, w);
    if (offset < 0 || offset >= 2 * w) __builtin_trap();
    sky_sun_x(w, offset);
    sky_moon_x(w, offset);
    zorn_ping_meter meter;
    for (int value : {n.hp, n.max_hp, n.mana, n.max_mana, n.move}) meter.add_ping_sample(value);
    return 0;
}
