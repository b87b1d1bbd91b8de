#include "display/find_strip.h"

#include <wx/stattext.h>
#include <wx/textctrl.h>

#include <algorithm>

#include "display/ansi_display.h"
#include "input/frame_link.h"

namespace {

constexpr int padding = 3;
constexpr int box_width = 260;

}  // namespace

zorn_find_strip::zorn_find_strip(zorn_ansi_display* display)
    : wxPanel(display, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE, wxT("find strip")),
      box(nullptr),
      count_label(nullptr),
      find_label(nullptr),
      display(display) {
    SetBackgroundColour(wxColour(48, 48, 48));
    find_label = new wxStaticText(this, wxID_ANY, wxT("Find:"), wxPoint(padding, padding + 4));
    find_label->SetForegroundColour(*wxWHITE);
    box = new wxTextCtrl(this, wxID_ANY, wxEmptyString, wxDefaultPosition, wxSize(box_width, -1), wxTE_PROCESS_ENTER,
                         wxDefaultValidator, wxT("find box"));
    count_label = new wxStaticText(this, wxID_ANY, wxT("0 of 0"));
    count_label->SetForegroundColour(*wxWHITE);
    box->Bind(wxEVT_KEY_DOWN, &zorn_find_strip::key_handler, this);
    box->Bind(wxEVT_TEXT, &zorn_find_strip::text_handler, this);
    place_children();
    Hide();
}

int zorn_find_strip::strip_height() const { return box->GetBestSize().GetHeight() + 2 * padding; }

void zorn_find_strip::place_children() {
    const int label_width = find_label->GetBestSize().GetWidth();
    const int height = box->GetBestSize().GetHeight();
    box->SetSize(2 * padding + label_width, padding, box_width, height);
    count_label->SetPosition(wxPoint(3 * padding + label_width + box_width + padding, padding + 4));
}

void zorn_find_strip::open() {
    if (!IsShown()) {
        Show();
        display->textctrl->search = &search;
        display->layout_foot();
        if (search.update(display->textctrl->model)) display->textctrl->Refresh(false);
        update_count();
    }
    box->SetFocus();
    box->SelectAll();
}

void zorn_find_strip::close() {
    if (!IsShown()) return;
    Hide();
    display->textctrl->search = nullptr;
    display->layout_foot();
    if (display->is_following())
        display->scroll_to_end();
    else
        display->unlock_scrollback();
    display->textctrl->Refresh(false);
    if (zorn_frame_link* frame = zorn_get_frame_link()) frame->transfer_focus_main(display);
}

void zorn_find_strip::text_arrived() {
    if (!IsShown() || !search.active()) return;
    if (search.update(display->textctrl->model)) update_count();
}

void zorn_find_strip::show_current() {
    if (search.current() < 0) return;
    const zorn_text_search::place at = search.place_of(display->textctrl->model, static_cast<size_t>(search.current()));
    display->ansi.lock_at_lines(at.first_line, at.last_line);
    display->textctrl->Refresh(false);
}

void zorn_find_strip::update_count() { count_label->SetLabel(wxString::FromUTF8(search.count_text().c_str())); }

void zorn_find_strip::text_handler(wxCommandEvent&) {
    search.set_query(box->GetValue().ToStdString(wxConvUTF8));
    search.update(display->textctrl->model);
    search.select_newest();
    update_count();
    show_current();
    display->textctrl->Refresh(false);
}

void zorn_find_strip::key_handler(wxKeyEvent& event) {
    switch (event.GetKeyCode()) {
        case WXK_RETURN:
        case WXK_NUMPAD_ENTER:
            search.update(display->textctrl->model);
            if (event.ShiftDown() ? search.step_newer() : search.step_older()) show_current();
            update_count();
            return;
        case WXK_ESCAPE: close(); return;
        default: break;
    }
    // F3 and the other function keys stay the player's aliases here too.
    zorn_frame_link* frame = zorn_get_frame_link();
    if (event.GetKeyCode() >= WXK_F1 && event.GetKeyCode() <= WXK_F12 && frame && frame->function_key(event)) return;
    event.Skip();
}
