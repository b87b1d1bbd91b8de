#include "theme/theme.h"

#include "config/debug_log.h"
#include "config/lconfig.h"

zorn_button_theme* zorn_current_button_theme = nullptr;
zorn_background_theme* zorn_current_background_theme = nullptr;

namespace {

// Column order of the tables below; index 1 (Blue) is also the fallback.
constexpr int theme_values[zorn_theme_count] = {
    zorn_theme_yellow, zorn_theme_blue,  zorn_theme_red,    zorn_theme_brown, zorn_theme_ygreen,
    zorn_theme_green,  zorn_theme_cyan,  zorn_theme_purple, zorn_theme_grey,
};
constexpr const char* theme_names[zorn_theme_count] = {
    "Yellow", "Blue", "Red", "Brown", "YGreen", "Green", "Cyan", "Purple", "Grey",
};
constexpr int blue_column = 1;

constexpr zorn_rgb white{255, 255, 255};
constexpr zorn_rgb yellow{255, 255, 0};
constexpr zorn_rgb unused{0, 0, 0};

#define ZORN_LABELS {white, yellow, white, white, white, white, white, white, white}
#define ZORN_ALL(v) {{v, v, v}, {v, v, v}, {v, v, v}, {v, v, v}, {v, v, v}, {v, v, v}, {v, v, v}, {v, v, v}, {v, v, v}}
#define ZORN_UNUSED {unused, unused, unused, unused, unused, unused, unused, unused, unused}

// One row per triple, one column per theme, laid out as the themes are usually read: by role.
const zorn_rgb button_table[zorn_button_theme_triples][zorn_theme_count] = {
    /* 0 */ {{192, 192, 0}, {48, 48, 192}, {192, 0, 0}, {160, 96, 64}, {144, 192, 0}, {0, 192, 0}, {48, 144, 192}, {192, 96, 192}, {192, 192, 192}},
    /* 1 */ {{192, 192, 0}, {48, 48, 192}, {192, 0, 0}, {160, 96, 64}, {144, 192, 0}, {0, 192, 0}, {48, 144, 192}, {192, 96, 192}, {192, 192, 192}},
    /* 2 */ ZORN_UNUSED,
    /* 3 */ {{96, 96, 96}, {0, 0, 80}, {80, 0, 0}, {80, 48, 32}, {72, 96, 0}, {0, 80, 0}, {0, 64, 80}, {80, 0, 80}, {80, 80, 80}},
    /* 4 */ ZORN_LABELS,
    /* 5 */ {{192, 192, 0}, {48, 48, 192}, {96, 96, 96}, {96, 96, 96}, {144, 192, 0}, {48, 96, 48}, {48, 144, 192}, {96, 48, 96}, {128, 128, 128}},
    /* 6 */ {{64, 64, 64}, {0, 0, 64}, {64, 0, 0}, {64, 48, 32}, {48, 64, 0}, {0, 64, 0}, {0, 48, 64}, {64, 0, 64}, {64, 64, 64}},
    /* 7 */ ZORN_LABELS,
    /* 8 */ ZORN_UNUSED,
    /* 9 */ {{48, 48, 48}, {0, 0, 48}, {48, 0, 0}, {48, 32, 16}, {32, 48, 0}, {0, 48, 0}, {0, 32, 48}, {48, 0, 48}, {48, 48, 48}},
    /* 10 */ ZORN_LABELS,
    /* 11 */ {{255, 255, 0}, {64, 64, 255}, {128, 128, 128}, {128, 128, 128}, {192, 255, 0}, {64, 128, 64}, {64, 192, 255}, {128, 64, 128}, {128, 128, 128}},
    /* 12 */ {{64, 64, 64}, {0, 0, 64}, {64, 0, 0}, {64, 48, 32}, {48, 64, 0}, {0, 64, 0}, {0, 48, 64}, {64, 0, 64}, {64, 64, 64}},
    /* 13 */ ZORN_LABELS,
    /* 14 */ {{128, 128, 0}, {0, 0, 128}, {64, 64, 64}, {64, 64, 64}, {96, 128, 0}, {32, 64, 32}, {0, 96, 128}, {64, 32, 64}, {64, 64, 64}},
    /* 15 */ {{48, 48, 48}, {0, 0, 48}, {48, 0, 0}, {48, 32, 16}, {32, 48, 0}, {0, 48, 0}, {0, 32, 48}, {48, 0, 48}, {32, 32, 32}},
    /* 16 */ ZORN_ALL(192),
    /* 17 */ ZORN_UNUSED,
    /* 18 */ {{48, 48, 48}, {0, 0, 48}, {48, 0, 0}, {48, 32, 16}, {32, 48, 0}, {0, 48, 0}, {0, 32, 48}, {48, 0, 48}, {48, 48, 48}},
    /* 19 */ ZORN_LABELS,
    /* 20 */ {{192, 192, 0}, {0, 0, 192}, {96, 96, 96}, {96, 96, 96}, {144, 192, 0}, {48, 96, 48}, {0, 144, 192}, {96, 48, 96}, {96, 96, 96}},
    /* 21 */ {{32, 32, 32}, {0, 0, 32}, {32, 0, 0}, {32, 24, 16}, {16, 32, 0}, {0, 32, 0}, {0, 24, 32}, {32, 0, 32}, {32, 32, 32}},
    /* 22 */ ZORN_LABELS,
    /* 23 */ ZORN_UNUSED,
    /* 24 */ {{32, 32, 32}, {0, 0, 32}, {32, 0, 0}, {32, 24, 16}, {16, 32, 0}, {0, 32, 0}, {0, 24, 32}, {32, 0, 32}, {32, 32, 32}},
    /* 25 */ ZORN_ALL(96),
};

#undef ZORN_LABELS
#undef ZORN_ALL
#undef ZORN_UNUSED

const zorn_background_theme background_table[zorn_theme_count] = {
    {{80, 80, 0}, {56, 56, 0}, {32, 32, 0}},      // Yellow
    {{0, 0, 96}, {0, 0, 64}, {0, 0, 32}},         // Blue
    {{80, 0, 0}, {56, 0, 0}, {32, 0, 0}},         // Red
    {{80, 32, 16}, {56, 24, 16}, {32, 16, 8}},    // Brown
    {{48, 80, 0}, {32, 56, 0}, {16, 32, 0}},      // YGreen
    {{0, 80, 0}, {0, 48, 0}, {0, 32, 0}},         // Green
    {{0, 56, 80}, {0, 40, 64}, {0, 24, 48}},      // Cyan
    {{80, 0, 80}, {56, 0, 56}, {32, 0, 32}},      // Purple
    {{64, 64, 64}, {32, 32, 32}, {16, 16, 16}},   // Grey
};

zorn_button_theme* button_records[zorn_theme_count] = {};
zorn_background_theme* background_records[zorn_theme_count] = {};

int column_of(int index) {
    for (int i = 0; i < zorn_theme_count; i++)
        if (theme_values[i] == index) return i;
    return blue_column;
}

}  // namespace

// The records live as long as the process.
void create_themes() {
    if (button_records[0]) return;
    for (int column = 0; column < zorn_theme_count; column++) {
        button_records[column] = new zorn_button_theme;
        for (int t = 0; t < zorn_button_theme_triples; t++) button_records[column]->triple[t] = button_table[t][column];
    }
    for (int column = 0; column < zorn_theme_count; column++)
        background_records[column] = new zorn_background_theme(background_table[column]);
}

zorn_button_theme* zorn_button_theme_for(int index) { return button_records[column_of(index)]; }

zorn_background_theme* zorn_background_theme_for(int index) { return background_records[column_of(index)]; }

const char* zorn_theme_name(int index) { return theme_names[column_of(index)]; }

void zorn_select_button_theme(int index) {
    zorn_button_theme* record = zorn_button_theme_for(index);
    if (!record) {
        if (zorn_debug_level >= 2)
            zorn_client_debug_printf("Error in switch_button_theme() - null theme for index %d.\n", index);
        record = button_records[blue_column];
    }
    zorn_current_button_theme = record;
}

void zorn_select_background_theme(int index) {
    zorn_background_theme* record = zorn_background_theme_for(index);
    if (!record) {
        if (zorn_debug_level >= 2)
            zorn_client_debug_printf("Error in switch_background_theme() - null theme for index %d.\n", index);
        record = background_records[blue_column];
    }
    zorn_current_background_theme = record;
}

void switch_background_theme() { zorn_select_background_theme(LConfig::instance().get_current_background_theme()); }

void switch_button_theme() { zorn_select_button_theme(LConfig::instance().get_current_theme()); }

void switch_themes() {
    switch_background_theme();
    switch_button_theme();
}
