#pragma once
// The application object: the start-up order, and what happens to a failed toolkit assertion.

#include <wx/app.h>

// The start-up steps between the log's first line and the frame: TLS, the config directory, the
// random mix, themes, images, fonts, the system file, the command line and the themes in force.
// Null when all went well, else the boot failure's log line (the application then exits with 1).
const char* zorn_client_start_up(int argc, const char* const* argv);

class zorn_gui_app : public wxApp {
public:
    // Names the program for the desktop before the toolkit opens the display.
    bool Initialize(int& argc, wxChar** argv) override;
    bool OnInit() override;
    int OnExit() override;
    // Printed to standard error (and the log) instead of the toolkit's modal dialog, which would
    // hang a client that nobody watches; aborts when LANTERN_ASSERT_ABORT is set, for tests.
    void OnAssertFailure(const wxChar* file, int line, const wxChar* func, const wxChar* cond,
                         const wxChar* msg) override;
};
