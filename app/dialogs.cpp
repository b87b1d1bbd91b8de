#include "app/dialogs.h"

#include <wx/button.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include "app/main_frame.h"
#include "config/debug_log.h"

zorn_warning_dialog::zorn_warning_dialog(zorn_mw* owner, const char* title, const char* text,
                                         const std::vector<std::pair<int, const char*>>& buttons)
    : wxDialog(owner, wxID_ANY, wxString::FromUTF8(title), wxDefaultPosition, wxDefaultSize,
               wxCAPTION | wxSYSTEM_MENU | wxCLOSE_BOX),
      frame(owner) {
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(new wxStaticText(this, wxID_ANY, wxString::FromUTF8(text), wxDefaultPosition, wxDefaultSize,
                                 wxALIGN_CENTRE_HORIZONTAL),
                0, wxALL | wxALIGN_CENTER_HORIZONTAL, 10);
    auto* row = new wxStdDialogButtonSizer();
    for (const auto& [id, label] : buttons) {
        auto* button = new wxButton(this, id, wxString::FromUTF8(label));
        // Enter takes the affirmative answer, as in every dialog of the desktop.
        if (id == wxID_OK) button->SetDefault();
        row->AddButton(button);
    }
    row->Realize();
    column->Add(row, 0, wxALL | wxALIGN_CENTER_HORIZONTAL, 10);
    SetSizerAndFit(column);
    Bind(wxEVT_BUTTON, &zorn_warning_dialog::cancel_handler, this, wxID_CANCEL);
    Hide();
}

bool zorn_warning_dialog::Show(bool show) {
    const bool changed = wxDialog::Show(show);
    if (show)
        if (wxWindow* yes = FindWindow(wxID_OK)) yes->SetFocus();
    return changed;
}

void zorn_warning_dialog::cancel_handler(wxCommandEvent&) { Hide(); }

void zorn_warning_dialog::send_logoff_lines(const char* quit_line, int last_echo) {
    const char* lines[] = {"", "recall", quit_line, "recall", quit_line};
    for (int i = 0; i < 5; ++i) frame->process_user_command(lines[i], i == 4 ? last_echo : 0);
}

void zorn_warning_dialog::log_handler(const char* name) {
    if (zorn_debug_level >= 2) zorn_client_debug_printf("%s", name);
}

zorn_newbie_quit_dialog::zorn_newbie_quit_dialog(zorn_mw* owner)
    : zorn_warning_dialog(owner, "Quit Ember Vale?",
                          "Your new character is not yet fully created.\nIf you quit now, your work may be lost.\n\n"
                          "Are you sure?",
                          {{wxID_OK, "&Quit"}, {wxID_CANCEL, "&Cancel"}}) {
    Bind(wxEVT_BUTTON, &zorn_newbie_quit_dialog::quit_handler, this, wxID_OK);
}

void zorn_newbie_quit_dialog::quit_handler(wxCommandEvent&) {
    log_handler("zorn_newbie_quit_dialog::quit_handler()\n");
    frame->system_shutdown_handler();
    Hide();
}

zorn_save_quit_dialog::zorn_save_quit_dialog(zorn_mw* owner)
    : zorn_warning_dialog(owner, "Save and Leave Ember Vale?", "Log off and save your character?",
                          {{wxID_OK, "&Save and Quit"}, {wxID_CANCEL, "&Cancel"}}) {
    Bind(wxEVT_BUTTON, &zorn_save_quit_dialog::logoff_handler, this, wxID_OK);
}

void zorn_save_quit_dialog::logoff_handler(wxCommandEvent&) {
    log_handler("zorn_save_quit_dialog::logoff_handler()\n");
    send_logoff_lines("quit -f", 0);
    Hide();
}

zorn_pgm_exit_dialog::zorn_pgm_exit_dialog(zorn_mw* owner)
    : zorn_warning_dialog(owner, "Logoff Warning", "You are currently connected to the game.\n\nLog off and save your character?",
                          {{wxID_OK, "&Logoff"}, {wxID_NO, "&Exit Program"}, {wxID_CANCEL, "&Cancel"}}) {
    Bind(wxEVT_BUTTON, &zorn_pgm_exit_dialog::logoff_handler, this, wxID_OK);
    Bind(wxEVT_BUTTON, &zorn_pgm_exit_dialog::quit_handler, this, wxID_NO);
}

void zorn_pgm_exit_dialog::logoff_handler(wxCommandEvent&) {
    log_handler("zorn_pgm_exit_dialog::logoff_handler()\n");
    send_logoff_lines("quit -f", 0);
    Hide();
}

void zorn_pgm_exit_dialog::quit_handler(wxCommandEvent&) {
    log_handler("zorn_pgm_exit_dialog::quit_handler()\n");
    frame->system_shutdown_handler();
    Hide();
}

zorn_newbie_disconnect_dialog::zorn_newbie_disconnect_dialog(zorn_mw* owner)
    : zorn_warning_dialog(owner, "Disconnect Warning",
                          "If you disconnect now, your new character may be lost!\n\nAre you sure?",
                          {{wxID_OK, "&Disconnect"}, {wxID_CANCEL, "&Cancel"}}) {
    Bind(wxEVT_BUTTON, &zorn_newbie_disconnect_dialog::disconnect_handler, this, wxID_OK);
}

void zorn_newbie_disconnect_dialog::disconnect_handler(wxCommandEvent&) {
    log_handler("zorn_newbie_disconnect_dialog::disconnect_handler()\n");
    frame->process_user_command("//disconnect", 0);
    Hide();
}

zorn_disconnect_dialog::zorn_disconnect_dialog(zorn_mw* owner)
    : zorn_warning_dialog(owner, "Disconnect Warning",
                          "You are currently connected to the game.\n\nIf possible, you should 'recall' and 'quit'\n"
                          "to log off your character instead of disconnecting.\nOtherwise, your character may be "
                          "stranded in\nthe game world without you controlling it.\n\nTo try to log off the game, "
                          "click the 'Logoff' button.\nIf you really just want to disconnect, click 'Disconnect'.",
                          {{wxID_OK, "&Logoff"}, {wxID_NO, "&Disconnect"}, {wxID_CANCEL, "&Cancel"}}) {
    Bind(wxEVT_BUTTON, &zorn_disconnect_dialog::logoff_handler, this, wxID_OK);
    Bind(wxEVT_BUTTON, &zorn_disconnect_dialog::disconnect_handler, this, wxID_NO);
}

void zorn_disconnect_dialog::logoff_handler(wxCommandEvent&) {
    log_handler("zorn_disconnect_dialog::logoff_handler()\n");
    send_logoff_lines("quit", 1);
    Hide();
}

void zorn_disconnect_dialog::disconnect_handler(wxCommandEvent&) {
    log_handler("zorn_disconnect_dialog::disconnect_handler()\n");
    frame->process_user_command("//disconnect", 0);
    Hide();
}

zorn_pin_dialog::zorn_pin_dialog(zorn_mw* owner)
    : zorn_warning_dialog(owner, "Server Identity Changed",
                          "The game server's identity has changed since your last visit.\n\n"
                          "Someone may be posing as the server. Nothing has been sent to it.\n"
                          "Disconnect, unless you know that the server's certificate was replaced.",
                          {{wxID_OK, "&Disconnect"}, {wxID_NO, "&Trust New Certificate"}}) {
    SetEscapeId(wxID_OK);
    Bind(wxEVT_BUTTON, &zorn_pin_dialog::disconnect_handler, this, wxID_OK);
    Bind(wxEVT_BUTTON, &zorn_pin_dialog::trust_handler, this, wxID_NO);
    Bind(wxEVT_CLOSE_WINDOW, &zorn_pin_dialog::close_handler, this);
}

void zorn_pin_dialog::disconnect_handler(wxCommandEvent&) {
    log_handler("zorn_pin_dialog::disconnect_handler()\n");
    Hide();
    frame->refuse_server_identity();
}

void zorn_pin_dialog::trust_handler(wxCommandEvent&) {
    log_handler("zorn_pin_dialog::trust_handler()\n");
    Hide();
    frame->trust_server_identity();
}

void zorn_pin_dialog::close_handler(wxCloseEvent&) {
    Hide();
    frame->refuse_server_identity();
}
