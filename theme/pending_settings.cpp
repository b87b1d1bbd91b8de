#include "theme/pending_settings.h"

int zorn_pending_current_theme() { return 1; }
int zorn_pending_current_background_theme() { return 2; }
int zorn_pending_theme_bg_setting() { return 3; }
int zorn_pending_current_layout() { return 2; }
int zorn_pending_font_size() { return 10; }
int zorn_pending_system_audio() { return 1; }
