#pragma once
// The five small dialogs that stand between the player and a careless exit. Each is built once
// with the frame, shown and hidden, never modal: the game goes on behind it.

#include <wx/dialog.h>

#include <utility>
#include <vector>

class zorn_mw;

// Caption, text centred with a border of 10, and the buttons below it. wxID_OK is the affirmative
// button, wxID_NO the negative one, wxID_CANCEL just closes.
class zorn_warning_dialog : public wxDialog {
public:
    zorn_warning_dialog(zorn_mw* frame, const char* title, const char* text,
                        const std::vector<std::pair<int, const char*>>& buttons);
    // Shown with the affirmative button focused, so Enter answers yes.
    bool Show(bool show = true) override;

protected:
    // The five lines that log a character off: an empty line, then "recall" and the quit line
    // twice; the very last with echo when asked.
    void send_logoff_lines(const char* quit_line, int last_echo);
    void log_handler(const char* name);
    void cancel_handler(wxCommandEvent& event);

    zorn_mw* frame;
};

class zorn_newbie_quit_dialog : public zorn_warning_dialog {
public:
    explicit zorn_newbie_quit_dialog(zorn_mw* frame);
    void quit_handler(wxCommandEvent& event);
};

class zorn_save_quit_dialog : public zorn_warning_dialog {
public:
    explicit zorn_save_quit_dialog(zorn_mw* frame);
    void logoff_handler(wxCommandEvent& event);
};

class zorn_pgm_exit_dialog : public zorn_warning_dialog {
public:
    explicit zorn_pgm_exit_dialog(zorn_mw* frame);
    void logoff_handler(wxCommandEvent& event);
    void quit_handler(wxCommandEvent& event);
};

class zorn_newbie_disconnect_dialog : public zorn_warning_dialog {
public:
    explicit zorn_newbie_disconnect_dialog(zorn_mw* frame);
    void disconnect_handler(wxCommandEvent& event);
};

class zorn_disconnect_dialog : public zorn_warning_dialog {
public:
    explicit zorn_disconnect_dialog(zorn_mw* frame);
    void logoff_handler(wxCommandEvent& event);
    void disconnect_handler(wxCommandEvent& event);
};

// The game server's key differs from the pinned one. Disconnect is the default, and closing the
// dialog or Escape disconnects too: the connection must not stay held without an answer.
class zorn_pin_dialog : public zorn_warning_dialog {
public:
    explicit zorn_pin_dialog(zorn_mw* frame);
    void disconnect_handler(wxCommandEvent& event);
    void trust_handler(wxCommandEvent& event);
    void close_handler(wxCloseEvent& event);
};
