#include "panels/group_model.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "base/words.h"
#include "config/debug_log.h"

namespace {

constexpr zorn_rgb black{0, 0, 0};
constexpr zorn_rgb white{255, 255, 255};

// The start of the next word of the line: a blank alone separates, a tab belongs to the word.
// Null when the line has no further word.
const char* next_word(const char* p, const char* end) {
    while (p < end && *p != ' ') p++;
    while (p < end && *p == ' ') p++;
    return p < end ? p : nullptr;
}

// parse_integer's acceptance, with the value kept within an int.
bool read_number(const char* p, const char* end, int* value) {
    if (!p || p >= end || !parse_integer(p, nullptr)) return false;
    const long long wide = std::strtoll(p, nullptr, 10);
    *value = static_cast<int>(std::clamp<long long>(wide, INT_MIN, INT_MAX));
    return true;
}

void add(std::vector<group_op>* ops, group_op::kind_t kind, int x1, int y1, int x2, int y2, const zorn_rgb& color) {
    group_op op;
    op.kind = kind;
    op.x1 = x1, op.y1 = y1, op.x2 = x2, op.y2 = y2;
    op.color = color;
    ops->push_back(op);
}

int row_height(const zorn_group_member& member, const group_metrics& metrics) {
    return member.row_kind == group_row_full ? metrics.full_row_height : metrics.compact_row_height;
}

}  // namespace

bool parse_update_line(const char* line, const char* end, zorn_group_member* out) {
    int* fields[6] = {&out->hp, &out->max_hp, &out->mana, &out->max_mana, &out->move, &out->max_move};
    const char* p = line < end && *line != ' ' ? line : next_word(line, end);
    for (int i = 0; i < 6; ++i) {
        if (i > 0) p = p ? next_word(p, end) : nullptr;
        if (!read_number(p, end, fields[i])) {
            if (zorn_debug_level >= 2)
                zorn_client_debug_printf("zorn_group_display::parse_update_line() - bad value at offset %d.\n", i);
            return false;
        }
    }
    const char* rest = next_word(p, end);
    out->name.clear();
    out->row_kind = group_row_full;
    if (!rest) return true;
    if (*rest != '-' && *rest != '.') {
        out->name.assign(rest, std::min<size_t>(end - rest, group_name_limit));
        return true;
    }
    out->row_kind = *rest == '-' ? group_row_divided : group_row_compact;
    // The marker and the character after it, then the name up to a closing marker at the end.
    const char* start = rest + 1;
    if (start < end) start++;
    const char* stop = start;
    while (stop < end && *stop != '\r' && !((*stop == '-' || *stop == '.') && stop + 1 == end)) stop++;
    out->name.assign(start, std::min<size_t>(stop - start, group_name_limit));
    return true;
}

std::vector<zorn_group_member> parse_group_lines(const char* payload) {
    std::vector<zorn_group_member> members;
    if (!payload) return members;
    for (const char* p = payload; *p;) {
        const char* end = std::strchr(p, '\n');
        if (!end) end = p + std::strlen(p);
        zorn_group_member member;
        if (!parse_update_line(p, end, &member)) break;
        members.push_back(std::move(member));
        p = *end ? end + 1 : end;
    }
    return members;
}

group_metrics group_metrics_for(int text_height) {
    group_metrics m;
    m.full_row_height = std::max(text_height * 2 - 6, 1);
    m.compact_row_height = std::max(text_height - 2, 1);
    return m;
}

int group_required_height(const std::vector<zorn_group_member>& members, const group_metrics& metrics) {
    int full = 0, compact = 0;
    for (const zorn_group_member& m : members) (m.row_kind == group_row_full ? full : compact)++;
    return full + compact + full * metrics.full_row_height + compact * metrics.compact_row_height +
           (compact ? 7 : 1);
}

group_places group_row_places(const std::vector<zorn_group_member>& members, const group_metrics& metrics) {
    group_places places;
    int y = 1;
    bool divider_seen = false;
    for (const zorn_group_member& m : members) {
        if (m.row_kind == group_row_divided && !divider_seen) {
            divider_seen = true;
            if (!places.rows.empty()) {
                y += 1;
                places.divider_y = y;
            }
            y += 3;
        }
        const int h = row_height(m, metrics);
        places.rows.push_back({y, h});
        y += h + 1;
    }
    return places;
}

int group_row_at(const std::vector<zorn_group_member>& members, const group_metrics& metrics, int y) {
    if (y <= 0) return -1;
    const group_places places = group_row_places(members, metrics);
    for (size_t i = 0; i < places.rows.size(); ++i)
        if (y <= places.rows[i].y + places.rows[i].height) return static_cast<int>(i);
    return -1;
}

int group_bar_fill(int v, int m, int b) {
    const long long p = static_cast<long long>(v) * b / std::max(m, 1);
    return static_cast<int>(std::clamp<long long>(p, 0, std::max(b, 0)));
}

// The drawn part shows what is left, or inverted what is lost; mode 2 mirrors mode 1, so the bars
// of an embedded panel grow from the right edge of the text.
void group_bar_ops(std::vector<group_op>* ops, const group_paint_settings& s, bool thin, int x, int y, int b, int h,
                   int v, int m, const zorn_rgb& fill, const zorn_rgb& top) {
    if (v < 1 && m < 1) return;
    const int p = group_bar_fill(v, m, b);
    const bool mode1 = s.mode != 2;
    int from, to;
    if (mode1) {
        from = s.inverted ? x + p - 1 : x;
        to = s.inverted ? x + b - 1 : x + p - 1;
    } else {
        from = s.inverted ? x : x + b - p;
        to = s.inverted ? (p < b ? x + b - p : x - 1) : x + b - 1;
    }
    const int moving_end = mode1 ? x + p - 1 : x + b - p;
    if (thin) add(ops, group_op::line, x + 1, y + h / 2 - 1, x + b - 2, y + h / 2 - 1, group_thin_frame);
    if (from <= to) {
        if (h >= 3) add(ops, group_op::rect, from, y + 1, to, y + h - 2, fill);
        add(ops, group_op::line, from, y, to, y, top);
        add(ops, group_op::pixel, moving_end, y, moving_end, y, black);
    }
    if (thin) {
        const int left = mode1 ? x - 1 : x, right = mode1 ? x + b - 1 : x + b;
        add(ops, group_op::line, left, y - 1, left, y + h - 1, group_thin_frame);
        add(ops, group_op::line, right, y - 1, right, y + h - 1, group_thin_frame);
        const int end_x = mode1 ? (s.inverted ? x + b - 1 : x + p - 1) : (s.inverted ? x : x + b - p);
        add(ops, group_op::pixel, end_x, y + h - 2, end_x, y + h - 2, black);
        return;
    }
    const int bottom = y + h - 1;
    if (mode1 && !s.inverted) {
        add(ops, group_op::line, x - 1, y - 1, x - 1, bottom, group_plain_frame);
        add(ops, group_op::line, x, bottom, x + b - 2, bottom, group_plain_frame);
    } else if (mode1) {
        add(ops, group_op::line, x + b - 1, y, x + b - 1, bottom, group_plain_frame);
        add(ops, group_op::line, x, bottom, x + b - 2, bottom, group_plain_frame);
    } else if (!s.inverted) {
        add(ops, group_op::line, x + b, y - 1, x + b, bottom, group_plain_frame);
        add(ops, group_op::line, x + 1, bottom, x + b - 1, bottom, group_plain_frame);
    } else {
        add(ops, group_op::line, x - 1, y, x - 1, bottom, group_plain_frame);
        add(ops, group_op::line, x, bottom, x + b - 1, bottom, group_plain_frame);
    }
}

namespace {

void row_ops(std::vector<group_op>* ops, const zorn_group_member& m, int index, const group_paint_settings& s, int x, int y,
             int w, int h, const group_measure& measure) {
    const bool vertical = s.vertical;
    const int b = std::max(vertical ? (w - 3) * 7 / 16 - 3 : (w - 3) / 3 - 3, 1);
    int tw = 0, th = 0;
    measure(m.name.c_str(), &tw, &th);
    const int centred = std::max(y + (h - th) / 2, 1);
    int text_x, text_y;
    if (m.row_kind != group_row_full) {
        const int hh = std::max((h - 3) / 2, 1), top = std::max(y + 1, 1);
        group_bar_ops(ops, s, false, x + 3, top, b, hh, m.hp, m.max_hp, group_hp_fill, group_hp_top);
        group_bar_ops(ops, s, false, x + 3, top + hh + 1, b, hh, m.move, m.max_move, group_move_fill, group_move_top);
        text_x = b + 6;
        text_y = centred;
        if (s.mode == 2 && vertical) text_y = centred + 1;
        if (s.mode == 2 && !vertical) text_x = std::max(w - tw, b + 6);
    } else if (vertical) {
        const int hh = std::max((h - 4) / 3, 1), top = std::max(y + 2, 1);
        group_bar_ops(ops, s, false, x + 3, top, b, hh, m.hp, m.max_hp, group_hp_fill, group_hp_top);
        group_bar_ops(ops, s, false, x + 3, top + hh + 1, b, hh, m.mana, m.max_mana, group_mana_fill, group_mana_top);
        group_bar_ops(ops, s, false, x + 3, top + 2 * (hh + 1), b, hh, m.move, m.max_move, group_move_fill,
                      group_move_top);
        text_x = b + 6;
        text_y = std::max(y + (h - th) / 2 + 1, 1);
    } else {
        const int hb = std::max(h / 4, 1), top = std::max(y + h - hb * 3 / 2, 1);
        group_bar_ops(ops, s, true, x + 3, top, b, hb, m.hp, m.max_hp, group_hp_fill, group_hp_top);
        group_bar_ops(ops, s, true, x + 3 + b + 3, top, b, hb, m.mana, m.max_mana, group_mana_fill, group_mana_top);
        group_bar_ops(ops, s, true, x + 3 + 2 * (b + 3), top, b, hb, m.move, m.max_move, group_move_fill,
                      group_move_top);
        text_x = s.mode == 2 ? w - tw : 3;
        text_y = y;
    }
    group_op text;
    text.kind = group_op::text;
    text.x1 = text_x;
    text.y1 = text_y;
    text.color = white;
    text.member = index;
    ops->push_back(text);
}

}  // namespace

std::vector<group_op> group_paint(const std::vector<zorn_group_member>& members, const group_metrics& metrics,
                                  const group_paint_settings& settings, int width, int height,
                                  const group_measure& measure) {
    std::vector<group_op> ops;
    add(&ops, group_op::rect, 0, 0, width - 1, height - 1, black);
    const group_places places = group_row_places(members, metrics);
    if (places.divider_y >= 0) add(&ops, group_op::line, 2, places.divider_y, width - 3, places.divider_y, settings.frame);
    for (size_t i = 0; i < members.size(); ++i)
        row_ops(&ops, members[i], static_cast<int>(i), settings, 1, places.rows[i].y, width - 2, places.rows[i].height,
                measure);
    add(&ops, group_op::line, 0, 0, width - 1, 0, settings.frame);
    add(&ops, group_op::line, 0, height - 1, width - 1, height - 1, settings.frame);
    add(&ops, group_op::line, 0, 0, 0, height - 1, settings.frame);
    add(&ops, group_op::line, width - 1, 0, width - 1, height - 1, settings.frame);
    return ops;
}
