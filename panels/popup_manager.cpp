#include "panels/popup_manager.h"

#include <wx/dcclient.h>
#include <wx/pen.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "base/words.h"
#include "config/debug_log.h"
#include "config/lconfig.h"
#include "input/frame_link.h"
#include "theme/font.h"
#include "theme/theme.h"

namespace {

constexpr int default_position = 48;

void log2(const char* text) {
    if (zorn_debug_level >= 2) zorn_client_debug_printf("%s", text);
}

// A line to the server as the client's own text: never echoed.
void send_quietly(const std::string& text) {
    if (zorn_frame_link* link = zorn_get_frame_link()) link->process_user_command(text.c_str(), 0);
}

}  // namespace

// zorn_popup_window ---------------------------------------------------------------------------------------

wxBEGIN_EVENT_TABLE(zorn_popup_window, wxFrame)
    EVT_CLOSE(zorn_popup_window::close_handler)
    EVT_SIZE(zorn_popup_window::size_handler)
    EVT_PAINT(zorn_popup_window::paint_handler)
    EVT_ERASE_BACKGROUND(zorn_popup_window::erase_handler)
wxEND_EVENT_TABLE()

zorn_popup_window::zorn_popup_window(wxWindow* parent, const char* name, const char* title)
    : wxFrame(parent, wxID_ANY, wxString::FromUTF8(title), wxDefaultPosition, wxDefaultSize,
              wxDEFAULT_FRAME_STYLE | wxFRAME_TOOL_WINDOW | wxFRAME_FLOAT_ON_PARENT,
              wxT("popup window ") + wxString::FromUTF8(name)),
      display(nullptr) {
    command[0] = '\0';
    SetBackgroundStyle(wxBG_STYLE_PAINT);
    if (auto* top = wxDynamicCast(parent, wxTopLevelWindow)) SetIcons(top->GetIcons());
    display = new zorn_ansi_display(this, wxID_ANY, wxString::FromUTF8(name) + wxT(" display"));
    display->set_display_font(zorn_main_font());
}

zorn_popup_window::~zorn_popup_window() {
    if (controller) controller->unlink_window(this);
}

void zorn_popup_window::set_size_in_characters(int columns, int rows) {
    columns = std::max(columns, 1);
    rows = std::max(rows, 1);
    int char_width = 0, char_height = 0;
    display->textctrl->get_max_char_size(&char_width, &char_height);
    SetClientSize(columns * char_width + 4, rows * char_height + char_height / 2 + 2);
}

void zorn_popup_window::set_command(const char* text) { safe_strcpy(command, text ? text : "", sizeof command); }

void zorn_popup_window::run_command() {
    if (command[0]) send_quietly(command);
}

bool zorn_popup_window::Show(bool show) {
    if (show && IsIconized()) Iconize(false);
    return wxFrame::Show(show);
}

// The title bar's close box tells the server too; the window is only hidden.
void zorn_popup_window::close_handler(wxCloseEvent& event) {
    if (!event.CanVeto()) {
        event.Skip();
        return;
    }
    event.Veto();
    if (!controller) {
        log2("Error in zorn_popup_window::close_handler(), no controller?\n");
        Hide();
        return;
    }
    controller->close_window();
}

void zorn_popup_window::size_handler(wxSizeEvent&) {
    place_display();
    Refresh(false);
}

void zorn_popup_window::place_display() {
    if (!display) return;
    const wxSize client = GetClientSize();
    const int height = client.GetHeight() < 24 ? 22 : client.GetHeight() - 2;
    display->set_size(2, 0, std::max(client.GetWidth() - 4, 1), std::max(height, 1));
}

// Two pixel lines left, right and below the text in the button theme's colours.
void zorn_popup_window::paint_handler(wxPaintEvent&) {
    wxPaintDC dc(this);
    if (!zorn_current_button_theme) return;
    const wxSize client = GetClientSize();
    const int w = client.GetWidth(), h = client.GetHeight();
    const auto pen_of = [](const zorn_rgb& c) { return wxPen(wxColour(c.red, c.green, c.blue), 1, wxPENSTYLE_SOLID); };
    dc.SetPen(pen_of(zorn_current_button_theme->triple[zorn_triple_lit_face]));
    dc.DrawLine(1, 0, 1, h - 1);
    dc.DrawLine(w - 2, 0, w - 2, h - 1);
    dc.DrawLine(1, h - 2, w - 1, h - 2);
    dc.SetPen(pen_of(zorn_current_button_theme->triple[zorn_triple_frame_outer]));
    dc.DrawLine(0, 0, 0, h);
    dc.DrawLine(w - 1, 0, w - 1, h);
    dc.DrawLine(0, h - 1, w, h - 1);
}

void zorn_popup_window::erase_handler(wxEraseEvent&) { log2("zorn_popup_window::discard_erase_event()\n"); }

// zorn_popup_button -----------------------------------------------------------------------------------------

wxBEGIN_EVENT_TABLE(zorn_popup_button, zorn_button)
    EVT_BUTTON(wxID_ANY, zorn_popup_button::click_handler)
wxEND_EVENT_TABLE()

zorn_popup_button::zorn_popup_button(wxWindow* parent, zorn_popup_window* target, const char* name,
                                     zorn_popup_host* owner)
    : zorn_button(parent, wxID_ANY, wxDefaultPosition, wxSize(20, 20), wxBORDER_NONE, wxT("popup button")),
      window(target),
      host(owner) {
    toggle_mode = 1;
    set_label(name);
    SetToolTip(wxString::FromUTF8(name));
    if (window) window->controller = this;
}

zorn_popup_button::~zorn_popup_button() {
    if (!window) return;
    window->controller = nullptr;
    window->Destroy();
    window = nullptr;
}

void zorn_popup_button::click_handler(wxCommandEvent& event) {
    if (event.GetEventObject() != this) {
        event.Skip();
        return;
    }
    toggle_state();
}

void zorn_popup_button::toggle_state() {
    if (!window) {
        log2("Error in zorn_popup_button::toggle_state(), no target?\n");
        return;
    }
    if (window->IsShown()) {
        close_window();
        return;
    }
    if (host) host->check_popup_menu_item(this, true);
    set_state(zorn_button_down);
    send_quietly(std::string("lnlwindow open ") + label);
    window->run_command();
    window->Show(true);
    int x = 0, y = 0;
    window->GetPosition(&x, &y);
    const int w = window->GetSize().GetWidth();
    if (zorn_debug_level >= 2) zorn_client_debug_printf("zorn_popup_button::toggle_state(), position %d, %d.\n", x, y);
    const int screen_w = host ? host->screen_width() : 640, screen_h = host ? host->screen_height() : 480;
    // A window stored on a display that is gone comes back where it can be reached.
    if (x < 1 - w / 2 || x >= screen_w - w / 2) {
        if (zorn_debug_level >= 2)
            zorn_client_debug_printf(
                "Warning in zorn_popup_button::toggle_state(), X value %d too near display edge %d, resetting.\n", x,
                screen_w);
        x = default_position;
    }
    if (y < 0 || y >= screen_h - 20) {
        if (zorn_debug_level >= 2)
            zorn_client_debug_printf(
                "Warning in zorn_popup_button::toggle_state(), Y value %d too near display edge %d, resetting.\n", y,
                screen_h);
        y = default_position;
    }
    window->Move(x, y);
    if (zorn_frame_link* link = zorn_get_frame_link()) link->transfer_focus_main(this);
}

void zorn_popup_button::close_window() {
    send_quietly(std::string("lnlwindow close ") + label);
    if (host) host->check_popup_menu_item(this, false);
    set_state(zorn_button_up);
    if (window) window->Hide();
}

void zorn_popup_button::unlink_window(zorn_popup_window* target) {
    if (target == window)
        window = nullptr;
    else
        log2("Error in zorn_popup_button::unlink_window(), bad target?\n");
}

// zorn_popup_manager ----------------------------------------------------------------------------------------

zorn_popup_manager::zorn_popup_manager(wxWindow* parent_window, zorn_popup_host* menu_host)
    : zorn_transparent_window(parent_window), host(menu_host) {}

zorn_popup_manager::~zorn_popup_manager() = default;

void zorn_popup_manager::create_window(const char* payload) {
    zorn_popup_description description;
    const char* error = nullptr;
    if (!zorn_parse_window_create(payload, &description, &error)) {
        log2(error);
        return;
    }
    const char* name = description.name.c_str();
    if (find_window(name)) return;  // a repeat changes nothing, not even the title

    auto* window = new zorn_popup_window(parent, name, description.title.c_str());
    popup_window_config stored = LConfig::instance().get_popup_window_config(name);
    stored.columns = description.columns;
    stored.rows = description.rows;
    if (stored.width != 0)
        window->SetSize(stored.width, stored.height);
    else
        window->set_size_in_characters(stored.columns, stored.rows);
    window->set_command(description.command.c_str());
    zorn_ansi_display* display = window->display;
    display->ansi.no_lock = 1;
    display->draw_frame = 0;
    display->force_resize();
    display->textctrl->model.top_anchored = 1;
    window->Move(stored.x, stored.y);
    LConfig::instance().set_popup_window_config(stored);
    if (description.noscroll) display->enable_scrollbar(0);
    if (description.nowrap) display->set_word_wrap(0);

    auto* button = new zorn_popup_button(parent, window, name, host);
    if (host) host->add_popup_menu_item(button);
    if (description.menuonly) {
        button->next = menu_only_buttons;
        menu_only_buttons = button;
        button->Hide();
    } else {
        button->next = buttons;
        buttons = button;
        button->Show(visible != 0);
        layout();
    }
}

zorn_popup_window* zorn_popup_manager::find_window(const char* name) const {
    if (!name) return nullptr;
    for (zorn_popup_button* list : {buttons, menu_only_buttons})
        for (zorn_popup_button* b = list; b; b = b->next)
            if (b->window && std::strcmp(b->name(), name) == 0) return b->window;
    return nullptr;
}

zorn_ansi_display* zorn_popup_manager::find_display(const char* name) const {
    zorn_popup_window* window = find_window(name);
    return window ? window->display : nullptr;
}

zorn_popup_button* zorn_popup_manager::button_at(int index) const {
    if (index < 1) return nullptr;
    int n = 1;
    for (zorn_popup_button* list : {buttons, menu_only_buttons})
        for (zorn_popup_button* b = list; b; b = b->next, ++n)
            if (n == index) return b;
    return nullptr;
}

void zorn_popup_manager::save_window_positions() {
    for (zorn_popup_button* list : {buttons, menu_only_buttons}) {
        for (zorn_popup_button* b = list; b; b = b->next) {
            if (!b->window) continue;
            popup_window_config stored = LConfig::instance().get_popup_window_config(b->name());
            b->window->GetPosition(&stored.x, &stored.y);
            b->window->GetSize(&stored.width, &stored.height);
            LConfig::instance().set_popup_window_config(stored);
        }
    }
}

void zorn_popup_manager::destroy_all() {
    save_window_positions();
    for (zorn_popup_button** list : {&buttons, &menu_only_buttons}) {
        while (zorn_popup_button* b = *list) {
            *list = b->next;
            // Text led to the window's display must find its way back before the window goes.
            if (host && b->window) host->popup_display_destroyed(b->window->display);
            b->Destroy();  // takes its window with it
        }
    }
    if (host) host->reset_popup_menu();
}

void zorn_popup_manager::reset_window_positions() {
    for (zorn_popup_button* list : {buttons, menu_only_buttons}) {
        for (zorn_popup_button* b = list; b; b = b->next) {
            if (!b->window) continue;
            popup_window_config stored = LConfig::instance().get_popup_window_config(b->name());
            b->window->Move(default_position, default_position);
            b->window->set_size_in_characters(stored.columns, stored.rows);
            stored.x = stored.y = stored.width = stored.height = 0;
            LConfig::instance().set_popup_window_config(stored);
        }
    }
}

void zorn_popup_manager::change_font(zorn_font* font) {
    for (zorn_popup_button* list : {buttons, menu_only_buttons}) {
        for (zorn_popup_button* b = list; b; b = b->next) {
            if (b->window)
                b->window->display->set_display_font(font);
            else
                log2("Error in zorn_popup_button::change_font(), no target?\n");
        }
    }
}

void zorn_popup_manager::flash_buttons() {
    for (zorn_popup_button* b = buttons; b; b = b->next) b->flash_button();
}

void zorn_popup_manager::set_visible(int value) {
    for (zorn_popup_button* b = buttons; b; b = b->next) b->Show(value != 0);
}

void zorn_popup_manager::layout() {
    const int side = std::max(height - 7, 1);
    int left = x + 4;
    for (zorn_popup_button* b = buttons; b; b = b->next) {
        b->set_size(left, y + 4, side, side);
        left += side + 4;
    }
}

void zorn_popup_manager::change_theme() {
    for (zorn_popup_button* list : {buttons, menu_only_buttons}) {
        for (zorn_popup_button* b = list; b; b = b->next) {
            b->render_images();
            if (b->window)
                b->window->Refresh(false);
            else
                log2("Error in zorn_popup_button::change_theme(), no target?\n");
        }
    }
}
