#pragma once
// Colour themes: nine button records of 26 triples and nine background records of three
// colours, plus one pointer to each record in force. Widgets read through the pointers each time
// they draw (buttons when they render their images), so a switch of the pointers and a repaint
// is all a theme change needs. The tables hold no wx code.

#include "base/rgb.h"

constexpr int zorn_button_theme_triples = 26;
constexpr int zorn_theme_count = 9;

// Values of `current_theme` and `current_background_theme` that select a record; every other
// value selects Blue.
enum : int {
    zorn_theme_yellow = 0,
    zorn_theme_blue = 1,
    zorn_theme_red = 2,
    zorn_theme_brown = 40,
    zorn_theme_ygreen = 50,
    zorn_theme_green = 60,
    zorn_theme_cyan = 70,
    zorn_theme_purple = 80,
    zorn_theme_grey = 90,
};

// Triple numbers of the button theme by role. 2, 8, 17 and 23 keep their places; nothing reads
// them.
enum : int {
    zorn_triple_frame_outer = 0,    // outer frame lines of the main frame and popups; automap frame
    zorn_triple_panel_frame = 1,    // frame of the group and status displays
    zorn_triple_lit_face = 3,       // lit face; inner frame lines; selected tab face
    zorn_triple_lit_label = 4,
    zorn_triple_lit_hover_edge = 5,
    zorn_triple_lit_hover_face = 6,
    zorn_triple_lit_hover_label = 7,
    zorn_triple_unlit_face = 9,
    zorn_triple_unlit_label = 10,
    zorn_triple_unlit_hover_edge = 11,
    zorn_triple_unlit_hover_face = 12,
    zorn_triple_unlit_hover_label = 13,
    zorn_triple_pressed_hover_edge = 14,
    zorn_triple_pressed_face = 15,
    zorn_triple_pressed_label = 16,
    zorn_triple_toggle_face = 18,   // toggle pressed face; face of other tabs
    zorn_triple_toggle_label = 19,
    zorn_triple_toggle_hover_edge = 20,
    zorn_triple_toggle_hover_face = 21,
    zorn_triple_toggle_hover_label = 22,
    zorn_triple_disabled_face = 24,
    zorn_triple_disabled_label = 25,
};

struct zorn_button_theme {
    zorn_rgb triple[zorn_button_theme_triples];
};

struct zorn_background_theme {
    zorn_rgb a;  // first
    zorn_rgb b;  // second
    zorn_rgb c;  // third
};

// The records in force; null until the first switch_themes.
extern zorn_button_theme* zorn_current_button_theme;
extern zorn_background_theme* zorn_current_background_theme;

// Once at start-up, before the configuration is read: allocates and fills the eighteen records.
// A second call does nothing.
void create_themes();

// The record for a setting value without touching the pointers: null before create_themes, and
// Blue's for any value that names no theme.
zorn_button_theme* zorn_button_theme_for(int index);
zorn_background_theme* zorn_background_theme_for(int index);
// Name of a theme value as the menus show it ("Yellow" ... "Grey"); "Blue" for unknown values.
const char* zorn_theme_name(int index);

// Set the pointer in force from `current_background_theme` / `current_theme` of the current
// character record.
void switch_background_theme();
void switch_button_theme();
// Background first, then buttons.
void switch_themes();
// The same selection from an explicit value (what the two above do with the setting).
void zorn_select_background_theme(int index);
void zorn_select_button_theme(int index);
