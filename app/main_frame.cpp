#include "app/main_frame.h"

#include <wx/dcclient.h>
#include <wx/font.h>
#include <wx/icon.h>
#include <wx/iconbndl.h>
#include <wx/menu.h>
#include <wx/pen.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "app/automap_frame.h"
#include "app/dialogs.h"
#include "base/boot.h"
#include "app/layout.h"
#include "app/menus.h"
#include "audio/audio_stream.h"
#include "base/threads.h"
#include "base/words.h"
#include "config/debug_log.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "display/ansi_palette.h"
#include "display/display_hooks.h"
#include "app/clipboard.h"
#include "automap/automap_display.h"
#include "automap/automap_renderer.h"
#include "input/embedded_window.h"
#include "input/button_sets.h"
#include "input/input_window.h"
#include "panels/channel_window.h"
#include "panels/group_display.h"
#include "panels/status_bar.h"
#include "panels/status_display.h"
#include "theme/builtin_images.h"
#include "theme/font.h"
#include "theme/theme.h"

int constructor_finished = 0;
int deferred_focus = 0;
int screen_width = 0;
int screen_height = 0;
char launcher_version[257] = "";
char url_request[zorn_url_request_size] = "";
int url_request_set = 0;

namespace {

zorn_mw* main_frame = nullptr;
wxIconBundle* frame_icons = nullptr;

void log2(const char* text) {
    if (zorn_debug_level >= 2) zorn_client_debug_printf("%s", text);
}

wxColour to_wx(const zorn_rgb& c) { return wxColour((unsigned char)c.red, (unsigned char)c.green, (unsigned char)c.blue); }

}  // namespace

zorn_mw* zorn_main_frame() { return main_frame; }

const char* zorn_web_host() { return LConfig::instance().get_web_host(); }

void zorn_web_main_page(zorn_fixed_string* out) {
    out->set("http://");
    out->append(zorn_web_host());
    if (LConfig::instance().get_web_port() != 80) out->appendf(":%d", LConfig::instance().get_web_port());
    out->append("/?ln");
}

void zorn_set_frame_icon(const wxIcon& icon) { zorn_set_frame_icons(wxIconBundle(icon)); }

void zorn_set_frame_icons(const wxIconBundle& icons) {
    delete frame_icons;
    frame_icons = new wxIconBundle(icons);
}

zorn_frame::zorn_frame(wxWindow* parent, wxWindowID id, const wxString& title, const wxPoint& pos,
                       const wxSize& size, long style)
    : wxFrame(parent, id, title, pos, size, style) {
    SetName(wxT("zorn frame ") + title);
    if (frame_icons) SetIcons(*frame_icons);
}

wxBEGIN_EVENT_TABLE(zorn_mw, zorn_frame)
    EVT_TIMER(zorn_tick_timer_id, zorn_mw::OnTimer)
    EVT_TIMER(zorn_ping_timer_id, zorn_mw::ping_handler)
    EVT_TIMER(zorn_autosave_timer_id, zorn_mw::autosave_handler)
    EVT_SIZE(zorn_mw::OnResize)
    EVT_SET_FOCUS(zorn_mw::focus_handler)
    EVT_CLOSE(zorn_mw::close_handler)
    EVT_PAINT(zorn_mw::repaint_handler)
    EVT_ERASE_BACKGROUND(zorn_mw::erase_handler)
    EVT_MOUSE_EVENTS(zorn_mw::mouse_handler)
    EVT_MENU_RANGE(zorn_popup_menu_first_id, zorn_popup_menu_first_id + zorn_popup_menu_items - 1,
                   zorn_mw::popup_menu_handler)
    EVT_MENU(zorn_popup_menu_reset_id, zorn_mw::reset_positions_handler)
    EVT_MENU_RANGE(1, zorn_menu_last_fixed_id, zorn_mw::menu_handler)
    EVT_MENU_RANGE(zorn_menu_find_text, zorn_menu_split_view, zorn_mw::menu_handler)
wxEND_EVENT_TABLE()

// Panels and dialogs of later subsystems join in the places their steps name.
zorn_mw::zorn_mw(wxWindow* parent, wxWindowID id, const wxString& title, const wxPoint& pos, const wxSize& size,
                 long style)
    : zorn_frame(parent, id, title, pos, size, style),
      shutdown_countdown(0),
      client_status_dirty(0),
      parser(*this),
      main_display(nullptr),
      text_target(nullptr),
      saved_scroll_position(0),
      input_window(nullptr),
      popup_manager(nullptr),
      channel_window(nullptr),
      popups_menu(nullptr),
      newbie_quit_dialog(nullptr),
      save_quit_dialog(nullptr),
      pgm_exit_dialog(nullptr),
      newbie_disconnect_dialog(nullptr),
      disconnect_dialog(nullptr),
      popup_count(0),
      status_display(nullptr),
      status_bar(nullptr),
      direction_buttons(nullptr),
      hint_buttons(nullptr),
      fkey_manager(nullptr),
      group_display(nullptr),
      automap(nullptr),
      automap_frame(nullptr),
      tick_timer(this, zorn_tick_timer_id),
      ping_timer(this, zorn_ping_timer_id),
      autosave_timer(this, zorn_autosave_timer_id),
      ping_sent_time(0),
      pending_message_set(0),
      session_state(session_none),
      last_width(-1),
      last_height(-1),
      channel_divert_active(0),
      first_pass_done(0),
      connection_seen(0),
      last_ping_ms(-1),
      link_font(nullptr) {
    // The panels reach the frame through this pointer while they are being built.
    main_frame = this;
    zorn_set_frame_link(this);
    SetBackgroundStyle(wxBG_STYLE_PAINT);

    // The frame always has a character record in force, also before any login.
    if (!LConfig::instance().current()) LConfig::instance().setup_default_config(nullptr);

    input_window = new zorn_input_window(this, wxID_ANY, wxDefaultPosition, wxSize(20, 20), wxBORDER_NONE,
                                         wxT("main input window"));
    main_display = new zorn_main_window(this, wxID_ANY);
    text_target = main_display;
    direction_buttons = new zorn_direction_buttons(this);
    hint_buttons = new zorn_hint_buttons(this);
    fkey_manager = new zorn_fkey_manager(this);
    popup_manager = new zorn_popup_manager(this, this);
    channel_window = new zorn_channel_window(this);
    group_display = new zorn_group_display(this, wxID_ANY, wxT("main group display"));
    group_display->Show(false);
    main_display->group_widget = group_display;
    main_display->group_needed_height = [this] { return group_display->required_height(); };
    main_display->group_has_members = [this] { return !group_display->members.empty(); };
    newbie_quit_dialog = new zorn_newbie_quit_dialog(this);
    save_quit_dialog = new zorn_save_quit_dialog(this);
    pgm_exit_dialog = new zorn_pgm_exit_dialog(this);
    newbie_disconnect_dialog = new zorn_newbie_disconnect_dialog(this);
    disconnect_dialog = new zorn_disconnect_dialog(this);
    build_menu_bar();
    // Both strips stay hidden until a login shows them by the settings.
    status_display = new zorn_status_display(this, wxID_ANY);
    status_display->Show(false);
    status_bar = new zorn_status_bar(this, wxID_ANY);
    create_automap();

    SetBackgroundColour(*wxBLACK);
    input_window->line_edit.set_line_font();
    input_window->line_edit.SetFocus();
    main_display->set_display_font(zorn_main_font());
    zorn_set_config_listener(this);
    connect_display_hooks();
    reparent_automap();
    reparent_group_display();
    update_automap_visibility();
    // Text from the first byte on uses the record's palette.
    zorn_select_palette(LConfig::instance().get_font_colors_setting());

    direction_buttons->setup();
    layout_panels();
    Refresh(false);
    constructor_finished = 1;
    delayed_initialization();
}

// The text widgets reach the clipboard, the browser queue and the session through these.
void zorn_mw::connect_display_hooks() {
    zorn_display_hooks& hooks = zorn_get_display_hooks();
    hooks.set_clipboard_data = [](const char* text) { set_clipboard_data(wxString::FromUTF8(text ? text : "")); };
    hooks.open_url = [](const char* url) {
        if (zorn_mw* frame = zorn_main_frame()) frame->open_url(url);
    };
    hooks.repaint_status_bar = [] {
        if (zorn_mw* frame = zorn_main_frame()) frame->status_bar->Refresh(false);
    };
    hooks.session_logged_in = [] {
        const zorn_mw* frame = zorn_main_frame();
        return frame && frame->session_state == session_logged_in;
    };
}

zorn_mw::~zorn_mw() {
    tick_timer.Stop();
    ping_timer.Stop();
    autosave_timer.Stop();
    // The popup windows go while the frame can still be told about their displays.
    popup_manager->destroy_all();
    delete popup_manager;
    delete channel_window;
    // The buttons themselves are child windows, deleted with the frame.
    delete direction_buttons;
    delete hint_buttons;
    delete fkey_manager;
    main_display->group_widget = nullptr;
    main_display->group_needed_height = nullptr;
    main_display->group_has_members = nullptr;
    zorn_set_frame_link(nullptr);
    if (zorn_get_config_listener() == this) zorn_set_config_listener(nullptr);
    if (main_frame == this) main_frame = nullptr;
    delete link_font;
}

// A machine without a sound device switches audio off in the settings and plays on silently.
void zorn_mw::delayed_initialization() {
    tick_timer.Start(zorn_tick_period_ms);
    ping_timer.Start(zorn_ping_period_ms);
    autosave_timer.Start(zorn_autosave_period_ms);
    if (LConfig::instance().get_system_audio() && !::start_audio()) {
        log2("Warning in zorn_mw::delayed_initialization() - unable to open audio path.  Disabling in config.\n");
        LConfig::instance().SetSystemAudio(0);
    }
}

void zorn_mw::OnTimer(wxTimerEvent&) {
    if (!constructor_finished) {
        log2("zorn_mw::OnTimer() - constructor not finished?\n");
        return;
    }
    if (deferred_focus) {
        input_window->SetFocus();
        Raise();
        deferred_focus = 0;
    }
    socket_handler();
    animation_run(zorn_tick_ms);
    // Changes made before login stay pending and reach the server right after it.
    if (session_state == session_logged_in && client_status_dirty) {
        client_status_dirty = 0;
        send_client_status();
    }
    if (pending_message_set) {
        begin_message();
        print_message(pending_message.c_str());
        refresh_text();
        pending_message.clear();
        pending_message_set = 0;
    }
    if (url_request_set) {
        url_request_set = 0;
        open_browser(url_request);
    }
    if (shutdown_countdown > 0) {
        shutdown_countdown--;
        if (shutdown_countdown == 1) exit_step();
    }
}

void zorn_mw::ping_handler(wxTimerEvent&) { send_ping(); }

void zorn_mw::autosave_handler(wxTimerEvent&) {
    popup_manager->save_window_positions();
    LConfig::instance().save_system_config_file();
}

void zorn_mw::queue_message(const char* text) {
    pending_message.append(text);
    pending_message_set = 1;
}

void zorn_mw::OnResize(wxSizeEvent&) {
    if (!constructor_finished) {
        log2("zorn_mw::OnResize() - windows bug triggered, constructor not yet finished.  Ignoring.\n");
        return;
    }
    const wxSize size = GetClientSize();
    if (size.GetWidth() == last_width && size.GetHeight() == last_height) {
        log2("zorn_mw::OnResize() - ignoring double resize.\n");
        return;
    }
    if (size.GetWidth() != 0 && size.GetHeight() != 0) {
        last_width = size.GetWidth();
        last_height = size.GetHeight();
    }
    layout_panels();
    Refresh(false);
}

void zorn_mw::layout_panels() {
    update_background(false);
    wxSize size = GetClientSize();
    if (size.GetWidth() == 0 || size.GetHeight() == 0) size = wxSize(last_width, last_height);
    layout_inputs in;
    in.width = size.GetWidth();
    in.height = size.GetHeight();
    layout_settings& s = in.settings;
    const LConfig& c = LConfig::instance();
    s.current_layout = c.get_current_layout();
    s.group_status_display = c.get_group_status_display();
    s.automap_docked = c.get_automap_docked();
    s.automap_display = c.get_automap_display();
    in.automap_width = automap->get_width();
    in.automap_height = automap->get_height();
    s.direction_button_enable = c.get_direction_button_enable();
    s.hint_button_enable = c.get_hint_button_enable();
    s.fkey_button_display = c.get_fkey_button_display();
    s.popup_display = c.get_popup_display();
    s.status_bar = c.get_status_bar();
    s.hpbar_enable = c.get_hpbar_enable();
    s.exp_display = c.get_exp_display();
    s.enemy_hpbar_enable = c.get_enemy_hpbar_enable();
    s.input_height = c.get_input_height();
    s.channel_window_enable = c.get_channel_window_enable();
    s.channel_window_height = c.get_channel_window_height();
    in.logged_in = session_state == session_logged_in;
    in.group_required_height = group_display->required_height();
    const layout_result placed = compute_layout(in);
    place_button_sets(placed);
    const layout_rect& bar = placed.status_bar;
    if (bar.placed) status_bar->set_size(bar.x, bar.y, bar.width, bar.height);
    // The status display's own size decides its gauges; the frame only places it.
    status_display->border_mask = zorn_border_all;
    status_display->set_flags(s.hpbar_enable, s.exp_display, s.enemy_hpbar_enable);
    const layout_rect& status = placed.status_display;
    if (status.placed) status_display->set_size(status.x, status.y, status.width, status.height);
    const layout_rect& r = placed.input_window;
    input_window->set_size(r.x, r.y, r.width, r.height);
    const layout_rect& m = placed.main_display;
    main_display->set_size(m.x, m.y, m.width, m.height);
    const layout_rect& p = placed.popup_row;
    if (p.placed) popup_manager->set_rect(p.x, p.y, p.width, p.height);
    popup_manager->show(p.shown);
    const layout_rect& ch = placed.channel_window;
    if (ch.placed) channel_window->set_rect(ch.x, ch.y, ch.width, ch.height);
    channel_window->show(ch.shown);
    const layout_rect& a = placed.automap;
    place_automap(a.placed, a.x, a.y, a.width, a.height);
    const layout_rect& g = placed.group_display;
    if (g.placed) {
        group_display->set_size(g.x, g.y, g.width, g.height);
        group_display->Refresh(false);
    }
    // A group kept while the display was off shows again when it is switched on.
    const bool group_shown = s.group_status_display != 0 && !group_display->members.empty();
    if (group_display->IsShown() != group_shown) group_display->Show(group_shown);
    // A layout always brings the text back to its end.
    main_display->unlock_scrollback();
}

void zorn_mw::place_button_sets(const layout_result& placed) {
    const layout_rect& d = placed.direction_buttons;
    direction_buttons->show(d.shown);
    if (d.placed) direction_buttons->set_rect(d.x, d.y, d.width, d.height);
    const layout_rect& h = placed.hint_buttons;
    hint_buttons->show(h.shown);
    if (h.placed) hint_buttons->set_rect(h.x, h.y, h.width, h.height);
    const layout_rect& f = placed.fkey_row;
    fkey_manager->show(f.shown);
    if (f.placed) fkey_manager->set_rect(f.x, f.y, f.width, f.height);
}

void zorn_mw::reparent_group_display() {
    const int layout = LConfig::instance().get_current_layout();
    wxWindow* wanted = layout == 1 || layout == 2 ? static_cast<wxWindow*>(this) : main_display->textctrl;
    if (group_display->GetParent() != wanted) group_display->Reparent(wanted);
    group_display->mode = wanted == this ? 1 : 2;
}

void zorn_mw::update_background(bool force) {
    if (!zorn_current_background_theme) switch_themes();
    if (!zorn_current_background_theme) return;
    const wxSize size = GetClientSize();
    const LConfig& c = LConfig::instance();
    background.update(size.GetWidth(), size.GetHeight(), c.get_theme_bg_setting(), c.get_current_background_theme(),
                      *zorn_current_background_theme, force);
}

void zorn_mw::refresh_main_font() {
    zorn_font* font = zorn_main_font();
    main_display->set_display_font(font);
    channel_window->set_all_fonts(font);
    popup_manager->change_font(font);
    input_window->line_edit.set_line_font();
    automap->renderer->Refresh(false);
    LConfig::instance().store_main_font(font->GetNativeFontInfoDesc().utf8_str(), font->GetPointSize());
    layout_panels();
    Refresh(false);
}

void zorn_mw::refresh_button_font() {
    status_display->force_resize();
    status_bar->force_resize();
    group_display->change_font();
    hint_buttons->change_theme();
    hint_buttons->layout();
    fkey_manager->change_theme();
    zorn_font* font = zorn_button_font();
    channel_window->change_theme();
    channel_window->layout();
    popup_manager->change_theme();
    LConfig::instance().store_button_font(font->GetNativeFontInfoDesc().utf8_str(), font->GetPointSize());
    automap->Refresh(false);
    layout_panels();
    Refresh(false);
}

void zorn_mw::refresh_themes(bool force) {
    switch_themes();
    hint_buttons->change_theme();
    direction_buttons->change_theme();
    fkey_manager->change_theme();
    popup_manager->change_theme();
    channel_window->change_theme();
    status_display->Refresh(false);
    status_bar->Refresh(false);
    if (force) update_background(true);
    automap->Refresh(false);
    layout_panels();
    Refresh(false);
}

void zorn_mw::focus_handler(wxFocusEvent&) {
    if (input_window) input_window->SetFocus();
}

bool zorn_mw::transfer_focus_main(wxWindow* window) {
    if (!window) {
        log2("Error in transfer_focus_main() - null w?\n");
        return false;
    }
    for (wxWindow* w = window; w; w = w->GetParent()) {
        if (w == this) {
            input_window->SetFocus();
            Raise();
            deferred_focus = 1;
            return true;
        }
        // A floating window keeps the keyboard.
        if (w->GetWindowStyleFlag() & wxFRAME_FLOAT_ON_PARENT) return false;
    }
    wxWindow* parent = window->GetParent();
    if (!parent) return false;
    parent->SetFocus();
    return true;
}

void zorn_mw::open_url(const char* url) {
    if (!url) return;
    if (zorn_debug_level >= 2) zorn_client_debug_printf("open_url() - '%s'.\n", url);
    std::strncpy(url_request, url, zorn_url_request_size - 1);
    url_request[zorn_url_request_size - 1] = '\0';
    url_request_set = 1;
}

bool zorn_mw::open_browser(const char* url) {
    if (zorn_http_fork(url)) return true;
    for (const char* part : {"\n", "\n", "Sorry, but I can't seem open your browser.\n", "\n"}) pending_message.append(part);
    pending_message.append(url ? url : "");
    pending_message.append("\n");
    pending_message.append("\n");
    pending_message_set = 1;
    return false;
}

void zorn_mw::system_shutdown_handler() {
    log2("zorn_mw system_shutdown_handler.\n");
    shutdown_countdown = zorn_shutdown_ticks;
}


void zorn_mw::exit_step() {
    log2("zorn_mw::shutdown - requested exit\n");
    release_audio();
    popup_manager->destroy_all();
    LConfig::instance().save_system_config_file();
    Destroy();
    log2("zorn_mw::shutdown - exit forced to prevent hang due to close dialogs.\n");
    // An open dialog can't keep the process alive past this point.
    exit(0);
}

void zorn_mw::close_handler(wxCloseEvent& event) {
    if (shutdown_countdown != 1 && event.CanVeto()) {
        event.Veto();
        verify_program_exit();
        return;
    }
    release_audio();  // the process ends with the frame: let the device go
    popup_manager->destroy_all();
    LConfig::instance().save_system_config_file();
    Destroy();
}

void zorn_mw::erase_handler(wxEraseEvent&) {}

void zorn_mw::repaint_handler(wxPaintEvent&) {
    wxPaintDC dc(this);
    if (!background.bitmap) {
        log2("Error in zorn_mw::repaint_handler() - no background image?\n");
        return;
    }
    dc.DrawBitmap(*background.bitmap, 0, 0, false);
    const wxSize size = GetClientSize();
    paint_link_and_logo(dc, size.GetWidth(), size.GetHeight());
    paint_bevel(dc, size.GetWidth(), size.GetHeight());
}

// The logo with the web site's name under it, in the corner that the layout leaves free.
void zorn_mw::paint_link_and_logo(wxDC& dc, int width, int height) {
    if (!link_font) link_font = new wxFont(9, wxFONTFAMILY_TELETYPE, wxFONTSTYLE_NORMAL, wxFONTWEIGHT_NORMAL, true);
    dc.SetFont(*link_font);
    dc.SetTextForeground(*wxWHITE);
    dc.SetTextBackground(*wxBLACK);
    const wxString text = wxString::FromUTF8(zorn_web_host());
    wxCoord text_width = 0, text_height = 0;
    dc.GetTextExtent(text, &text_width, &text_height);
    const zorn_bitmap* logo = zorn_builtin_image(zorn_image_logo);
    const int logo_width = logo ? logo->GetWidth() : 0, logo_height = logo ? logo->GetHeight() : 0;
    const int block_width = std::max(logo_width, (int)text_width);
    const int block_height = text_height + logo_height - 5;

    int logo_x = block_width / 2 - logo_width / 2, text_x = block_width / 2 - text_width / 2;
    int logo_y = 10 - logo_height + height - text_height, text_y = height - text_height;
    const int layout = LConfig::instance().get_current_layout();
    if (layout >= 2) {
        logo_y = 0;
        text_y = logo_height - 5;
        link_rect = {0, 0, block_width, block_height};
    } else if (layout == 1) {
        link_rect = {0, height - block_height, block_width, block_height};
    } else {
        logo_x = width - block_width / 2 - logo_width / 2;
        text_x = width - block_width / 2 - text_width / 2;
        link_rect = {width - block_width, height - block_height, block_width, block_height};
    }
    if (logo) dc.DrawBitmap(*logo, logo_x, logo_y, true);
    dc.DrawText(text, text_x, text_y);
}

void zorn_mw::paint_bevel(wxDC& dc, int width, int height) {
    if (!zorn_current_button_theme) return;
    const zorn_button_theme& theme = *zorn_current_button_theme;
    dc.SetPen(wxPen(to_wx(theme.triple[zorn_triple_lit_face]), 1, wxPENSTYLE_SOLID));
    dc.DrawLine(1, 0, 1, height);
    dc.DrawLine(width - 2, 0, width - 2, height);
    dc.DrawLine(0, height - 2, width, height - 2);
    dc.SetPen(wxPen(to_wx(theme.triple[zorn_triple_frame_outer]), 1, wxPENSTYLE_SOLID));
    dc.DrawLine(0, 0, 0, height);
    dc.DrawLine(width - 1, 0, width - 1, height);
    dc.DrawLine(0, height - 1, width, height - 1);
    dc.SetPen(wxNullPen);
}

void zorn_mw::mouse_handler(wxMouseEvent& event) {
    const wxPoint p = event.GetPosition();
    const bool inside = p.x > link_rect.x && p.x < link_rect.x + link_rect.width && p.y > link_rect.y &&
                        p.y < link_rect.y + link_rect.height;
    if (!event.LeftDown() || !inside) {
        event.Skip();
        return;
    }
    zorn_fixed_string page;
    zorn_web_main_page(&page);
    if (open_browser(page.c_str())) {
        begin_message();
        print_message("\n");
        print_message("\nOpening the main Ember Vale web page in your browser...");
        print_message("\n");
        refresh_text();
    }
}
