#pragma once
// The character and system settings that the frame, the themes and the widgets read, in one place.
// FIXME: this answers the documented defaults of a fresh character record; it turns into the
// LConfig getters of the same keys once the character configuration is linked in.

// The int setting of that key (the file's key, e.g. "current_theme"); 0 for an unknown key, as a
// getter without a current record answers.
int zorn_pending_setting(const char* key);
