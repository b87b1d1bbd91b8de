// The automap's floating frame and the frame's side of the automap: the tags it takes, showing,
// hiding and docking the panel, and its sizes.
#include "app/automap_frame.h"

#include <wx/settings.h>

#include <cstring>

#include "automap/automap_display.h"
#include "automap/automap_renderer.h"
#include "base/words.h"
#include "config/debug_log.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "display/textctrl.h"
#include "input/button_sets.h"

wxBEGIN_EVENT_TABLE(zorn_automap_frame, zorn_frame)
    EVT_CLOSE(zorn_automap_frame::close_handler)
wxEND_EVENT_TABLE()

zorn_automap_frame::zorn_automap_frame(wxWindow* parent)
    : zorn_frame(parent, wxID_ANY, wxString::FromUTF8(zorn_automap_frame_title), wxDefaultPosition, wxSize(100, 100),
                 wxCAPTION | wxCLIP_CHILDREN | wxCLOSE_BOX | wxSYSTEM_MENU | wxMINIMIZE_BOX | wxFRAME_FLOAT_ON_PARENT |
                     wxFRAME_TOOL_WINDOW) {
    SetBackgroundColour(wxSystemSettings::GetColour(static_cast<wxSystemColour>(11)));
}

void zorn_automap_frame::close_handler(wxCloseEvent& event) {
    if (!event.CanVeto()) {
        Destroy();
        return;
    }
    event.Veto();
    if (zorn_mw* frame = zorn_main_frame()) frame->set_automap_display(0);
}

void zorn_mw::create_automap() {
    automap_frame = new zorn_automap_frame(this);
    automap = new zorn_automap_display(this, wxID_ANY, wxT("main automap"));
    main_display->automap_widget = automap;
    main_display->automap_inset = [] { return automap_text_inset; };
}

// Returns false for tags that aren't the automap's.
bool zorn_mw::automap_tag(const char* name, const char* payload, int length) {
    if (std::strcmp(name, "map") == 0) {
        automap->renderer->queue_socket_data(payload, length);
    } else if (std::strcmp(name, "walkfail") == 0) {
        automap->renderer->walk_failed(payload);
    } else if (std::strcmp(name, "areaname") == 0) {
        automap->set_area_name(payload);
    } else if (std::strcmp(name, "combat") == 0) {
        automap->set_combat(true);
    } else if (std::strcmp(name, "dirs") == 0) {
        tag_dirs(payload);
    } else {
        return false;
    }
    return true;
}

// "on" or "off" for the direction buttons, then two letters of the exits mask, 'A' to '`' each
// (five bits); a code of other bytes leaves the mask as it was.
void zorn_mw::tag_dirs(const char* payload) {
    const auto warn = [payload] {
        if (zorn_debug_level >= 2)
            zorn_client_debug_printf("Warning in zorn_mw::process_tagged_data(), bad dirs string '%s'.\n", payload);
    };
    if (word_equal(payload, "on"))
        direction_buttons->enable_all();
    else if (word_equal(payload, "off"))
        direction_buttons->disable_all();
    else
        warn();
    const char* code = next_arg(payload);
    if (!code || !code[0] || !code[1] || code[1] == ' ') return;
    int mask = 0;
    if (!parse_exits_code(code, &mask)) {
        warn();
        return;
    }
    automap->set_exits_mask(mask);
    direction_buttons->set_exits(mask);
}

void zorn_mw::set_automap_display(int value) {
    LConfig::instance().set_automap_display(value);
    enable_automap_size_items(value != 0);
    if (value) {
        if (!LConfig::instance().get_automap_docked()) automap_frame->Show();
        automap->Show();
    } else {
        automap->Hide();
        automap_frame->Hide();
    }
    layout_panels();
}

void zorn_mw::toggle_automap_docked() {
    LConfig& c = LConfig::instance();
    if (!c.get_automap_display()) set_automap_display(1);
    c.set_automap_docked(c.get_automap_docked() ? 0 : 1);
    reparent_automap();
    layout_and_refresh();
}

void zorn_mw::reparent_automap() {
    const LConfig& c = LConfig::instance();
    const bool shown = c.get_automap_display() != 0;
    automap->Show(shown);
    if (!c.get_automap_docked()) {
        if (automap->GetParent() != automap_frame) automap->Reparent(automap_frame);
        automap->set_size(0, 0, automap->get_width(), automap->get_height());
        automap_frame->SetClientSize(automap->get_width(), automap->get_height());
        automap_frame->Show(shown);
        automap_frame->Refresh(false);
        return;
    }
    wxWindow* parent = c.get_current_layout() == 0 ? static_cast<wxWindow*>(main_display->textctrl) : this;
    if (automap->GetParent() != parent) automap->Reparent(parent);
    automap_frame->Hide();
}

// Also redraws the panel: the title and the map follow the session.
void zorn_mw::update_automap_visibility() {
    const LConfig& c = LConfig::instance();
    automap->Refresh(false);
    automap->renderer->Refresh(false);
    if (!c.get_automap_display()) {
        automap->Hide();
        automap_frame->Hide();
        return;
    }
    if (!c.get_automap_docked()) automap_frame->Show();
    automap->Show();
}

void zorn_mw::set_automap_scale(int automap_size) {
    automap->set_scale(automap_size);
    layout_and_refresh();
}

void zorn_mw::automap_smaller() {
    automap->zoom_out();
    layout_and_refresh();
}

void zorn_mw::automap_larger() {
    automap->zoom_in();
    layout_and_refresh();
}

// Places the panel: in its own frame at (0, 0), or by the layout's rectangle when docked in a
// left column. Docked on the text (layout 0), the main display places it.
void zorn_mw::place_automap(bool placed, int x, int y, int width, int height) {
    const LConfig& c = LConfig::instance();
    if (!c.get_automap_docked()) {
        automap_frame->SetClientSize(automap->get_width(), automap->get_height());
        automap->set_size(0, 0, automap->get_width(), automap->get_height());
        return;
    }
    if (placed && automap->GetParent() == this) automap->set_size(x, y, width, height);
}
