#pragma once
// How the desktop recognises the client: the program name (the Wayland app id and the X instance
// name, both the desktop entry's id), the X window class that the entry's StartupWMClass names,
// and the application icon drawn into every frame.

class wxApp;

// Before the toolkit starts: GTK reads the program name when it sets up the display.
void zorn_set_desktop_identity(wxApp* app);

// Decodes the built-in application icon in all its sizes and stores it for every frame to come.
// False, with a log line, when a size does not decode; the frames then get the sizes that did.
bool zorn_load_application_icon();
