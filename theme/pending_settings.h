#pragma once
// The character settings that the frame, the themes and the widgets read, in one place.
// FIXME: these answer the documented defaults of a fresh character record; they turn into the
// LConfig getters of the same names once the character configuration is linked in.

int zorn_pending_current_theme();             // button theme, default 1 (Blue)
int zorn_pending_current_background_theme();  // default 2 (Red)
int zorn_pending_theme_bg_setting();          // background style, default 3 (Maze2)
int zorn_pending_current_layout();            // default 2 (Left Bottom)
int zorn_pending_font_size();                 // main font size, default 10
int zorn_pending_system_audio();              // system-wide audio switch, default 1
