// The frame's menu bar: built from the table in menus.cpp, every id through one dispatcher, the
// check and radio items kept in step with the settings whoever changes them, the exit dialogs and
// the web links.
#include <wx/filedlg.h>
#include <wx/fontdlg.h>
#include <wx/menu.h>

#include <algorithm>
#include <map>
#include <string>

#include "app/automap_frame.h"
#include "app/dialogs.h"
#include "automap/automap_display.h"
#include "automap/automap_renderer.h"
#include "app/main_frame.h"
#include "app/menus.h"
#include "config/debug_log.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "display/ansi_palette.h"
#include "panels/channel_window.h"
#include "panels/group_display.h"
#include "theme/font.h"

namespace {

constexpr int smallest_font_points = 3;
constexpr int web_game_port = 8080;

void log2(const char* text) {
    if (zorn_debug_level >= 2) zorn_client_debug_printf("%s", text);
}

bool is_setting_row(const zorn_menu_row& row) {
    return row.setting != zorn_setting_count &&
           (row.kind == zorn_menu_kind::check || row.kind == zorn_menu_kind::radio);
}

}  // namespace

void zorn_mw::build_menu_bar() {
    auto* bar = new wxMenuBar();
    std::map<std::string, wxMenu*> menus, submenus;
    for (const char* title : zorn_menu_titles) {
        auto* menu = new wxMenu();
        menus[title] = menu;
        bar->Append(menu, wxString::FromUTF8(title));
    }
    popups_menu = menus["&Popups"];
    for (int i = 0; i < zorn_menu_row_count; ++i) {
        const zorn_menu_row& row = zorn_menu_rows[i];
        wxMenu* menu = menus[row.menu];
        if (row.submenu) {
            const std::string key = std::string(row.menu) + "/" + row.submenu;
            if (!submenus.count(key)) {
                submenus[key] = new wxMenu();
                menu->AppendSubMenu(submenus[key], wxString::FromUTF8(row.submenu));
            }
            menu = submenus[key];
        }
        const wxString label = row.label ? wxString::FromUTF8(row.label) : wxString();
        switch (row.kind) {
            case zorn_menu_kind::separator: menu->AppendSeparator(); break;
            case zorn_menu_kind::normal: menu->Append(row.id, label); break;
            case zorn_menu_kind::check: menu->AppendCheckItem(row.id, label); break;
            case zorn_menu_kind::radio: menu->AppendRadioItem(row.id, label); break;
        }
    }
    SetMenuBar(bar);
    reset_popup_menu();

    // The initial state: every item from the record in force.
    const LConfig& config = LConfig::instance();
    for (int i = 0; i < zorn_menu_row_count; ++i)
        if (is_setting_row(zorn_menu_rows[i]))
            sync_menu_item(zorn_menu_rows[i].setting, config.get(zorn_menu_rows[i].setting));
    sync_audio_menu_item(config.get_system_audio());
    enable_automap_size_items(config.get_automap_display() != 0);
}

// A check item shows its setting; in a radio group the item of the value is checked, and a value
// that no item has leaves the group alone. The palette follows its group.
void zorn_mw::sync_menu_item(zorn_setting key, int value) {
    if (key == zorn_setting_font_colors_setting) zorn_select_palette(value);
    if (key == zorn_setting_split_view && main_display) main_display->textctrl->Refresh(false);
    // The group display reads its two settings when it paints; a change shows at once.
    if ((key == zorn_setting_group_status_display || key == zorn_setting_group_status_inverted_bars) && group_display)
        group_display->Refresh(false);
    wxMenuBar* bar = GetMenuBar();
    if (!bar) return;
    for (int i = 0; i < zorn_menu_row_count; ++i) {
        const zorn_menu_row& row = zorn_menu_rows[i];
        if (row.setting != key || !is_setting_row(row)) continue;
        if (row.kind == zorn_menu_kind::check)
            bar->Check(row.id, value != 0);
        else if (row.value == value)
            bar->Check(row.id, true);
    }
}

void zorn_mw::sync_audio_menu_item(int value) {
    if (wxMenuBar* bar = GetMenuBar()) bar->Check(zorn_menu_enable_sounds, value != 0);
}

void zorn_mw::enable_automap_size_items(bool enable) {
    wxMenuBar* bar = GetMenuBar();
    if (!bar) return;
    for (int id = zorn_menu_big_map; id <= zorn_menu_decrease_map; ++id) bar->Enable(id, enable);
}

void zorn_mw::menu_handler(wxCommandEvent& event) {
    const int id = event.GetId();
    if (const zorn_web_link* link = zorn_web_link_find(id)) {
        open_web_link(*link);
        return;
    }
    LConfig& config = LConfig::instance();
    switch (id) {
        case zorn_menu_connect:
            if (socket.current_state() == socket_connected) {
                begin_message();
                print_message("\nYou are already connected to the server.\n");
            } else {
                process_user_command("connect", 0);
            }
            refresh_text();
            return;
        case zorn_menu_disconnect:
            if (socket.current_state() != socket_connected) {
                begin_message();
                print_message("\nYou are not connected to the server.\n");
            } else if (session_state == session_creating || session_state == session_logged_in) {
                log2("zorn_mw::verify_disconnect\n");
                verify_disconnect();
            } else {
                process_user_command("//disconnect", 0);
            }
            refresh_text();
            return;
        case zorn_menu_save_logfile: save_logfile_dialog(); return;
        case zorn_menu_find_text: open_main_find(); return;
        case zorn_menu_clear_scrollback:
            main_display->clear_display();
            channel_window->clear_all_channels();
            begin_message();
            for (const char* part : {"\n", "\n", "Scrollback cleared.\n", "\n"}) print_message(part);
            refresh_text();
            return;
        case zorn_menu_save_and_quit: menu_file_save_and_quit(); return;
        case zorn_menu_enable_sounds: config.SetSystemAudio(config.get_system_audio() ? 0 : 1); return;
        case zorn_menu_default_preferences: config.use_default_preferences(); return;
        case zorn_menu_default_colors:
            config.set_current_theme(1);
            config.set_current_background_theme(2);
            config.set_theme_bg_setting(3);
            return;
        case zorn_menu_bigger_font: change_main_font_size(1); return;
        case zorn_menu_smaller_font: change_main_font_size(-1); return;
        case zorn_menu_change_font: choose_font(false); return;
        case zorn_menu_change_button_font: choose_font(true); return;
        case zorn_menu_automap:
            set_automap_display(config.get_automap_display() ? 0 : 1);
            sync_menu_item(zorn_setting_automap_display, config.get_automap_display());
            return;
        case zorn_menu_docked_map:
            toggle_automap_docked();
            sync_menu_item(zorn_setting_automap_display, config.get_automap_display());
            sync_menu_item(zorn_setting_automap_docked, config.get_automap_docked());
            return;
        case zorn_menu_big_map: set_automap_cell_size(15); return;
        case zorn_menu_medium_map: set_automap_cell_size(11); return;
        case zorn_menu_small_map: set_automap_cell_size(7); return;
        case zorn_menu_increase_map: automap_larger(); return;
        case zorn_menu_decrease_map: automap_smaller(); return;
        case zorn_menu_keyboard_shortcuts: print_keyboard_list(); return;
        case zorn_menu_basic_commands: in_game_help("help"); return;
        case zorn_menu_more_commands: in_game_help("help me"); return;
        case zorn_menu_about: print_version(); return;
        default: settings_menu_item(id); return;
    }
}

// Check items toggle their setting, radio items set their value; the setting's own setter moves
// the window, and the item is set again in case the setter doesn't touch the menu.
void zorn_mw::settings_menu_item(int id) {
    const zorn_menu_row* row = zorn_menu_find(id);
    if (!row || !is_setting_row(*row)) return;
    LConfig& config = LConfig::instance();
    if (row->setting == zorn_setting_font_colors_setting) {
        choose_font_colors(row->value);
    } else if (row->kind == zorn_menu_kind::check) {
        config.set(row->setting, config.get(row->setting) ? 0 : 1);
    } else {
        config.set(row->setting, row->value);
    }
    sync_menu_item(row->setting, config.get(row->setting));
}

void zorn_mw::open_web_link(const zorn_web_link& link) {
    zorn_fixed_string url("http://");
    if (link.game_host) {
        url.appendf("%s:%d", LConfig::instance().get_game_host(), web_game_port);
    } else {
        url.append(zorn_web_host());
        if (LConfig::instance().get_web_port() != 80) url.appendf(":%d", LConfig::instance().get_web_port());
    }
    url.append(link.path);
    if (!open_browser(url.c_str())) return;
    begin_message();
    for (const char* part : {"\n", link.text, "\n"}) print_message(part);
    refresh_text();
}

void zorn_mw::in_game_help(const char* command) {
    const bool connected = socket.current_state() == socket_connected;
    if (connected && session_state == session_logged_in) {
        send_line(command);
        return;
    }
    begin_message();
    print_message("\n");
    print_highlight(help_banner);
    print_message("\n");
    print_message(connected ? "\nSorry, but in-game help isn't available until after you have logged in."
                            : "\nYou must be connected to the server to view the in-game help.");
    print_message("\n(The on-line help is the same, you could try there instead.)");
    print_message("\n");
    print_highlight(help_banner);
    print_message("\n");
    refresh_text();
}

void zorn_mw::change_main_font_size(int delta) {
    zorn_font* font = zorn_main_font();
    const int size = font->GetPointSize();
    if (delta < 0 && size <= smallest_font_points) {
        if (size < smallest_font_points) font->SetPointSize(smallest_font_points);
        return;
    }
    font->SetPointSize(std::max(size + delta, smallest_font_points));
    main_display->set_display_font(font);
    refresh_main_font();
}

void zorn_mw::choose_font(bool button_font) {
    zorn_font* font = button_font ? zorn_button_font() : zorn_main_font();
    wxFontData data;
    data.SetInitialFont(*font);
    wxFontDialog dialog(this, data);
    if (dialog.ShowModal() != wxID_OK) return;
    const wxFont chosen = dialog.GetFontData().GetChosenFont();
    font->copy_from(chosen);
    if (button_font) {
        zorn_status_font()->copy_from(chosen);
        zorn_status_font()->SetPointSize(chosen.GetPointSize() + zorn_status_font_size_offset);
        refresh_button_font();
    } else {
        refresh_main_font();
    }
}

void zorn_mw::set_automap_cell_size(int size) {
    automap->set_scale(size);
    layout_and_refresh();
}

// "&Save Logfile": the messages go to the main display after the file is written, so they are
// only in the next export.
void zorn_mw::save_logfile_dialog() {
    wxFileDialog dialog(this, wxT("Save Logfile"), wxEmptyString, wxEmptyString,
                        wxT("Save as HTML|*.html|Save as Plain Text|*.txt"), wxFD_SAVE | wxFD_OVERWRITE_PROMPT,
                        wxDefaultPosition, wxDefaultSize, wxT("filedlg"));
    if (dialog.ShowModal() != wxID_OK) return;
    std::string message;
    zorn_save_logfile(main_display, dialog.GetPath().utf8_str(), dialog.GetFilterIndex(), &message);
    print_message(message.c_str());
    main_display->refresh_text();
}

// Dialogs -----------------------------------------------------------------------------------------------

void zorn_mw::show_dialog_centered(wxDialog* dialog) {
    const wxPoint origin = GetPosition();
    const wxSize frame_size = GetSize(), dialog_size = dialog->GetSize();
    if (dialog->IsShown()) dialog->Hide();
    dialog->Move(origin.x + (frame_size.GetWidth() - dialog_size.GetWidth()) / 2,
                 origin.y + (frame_size.GetHeight() - dialog_size.GetHeight()) / 2);
    dialog->Show();
}

void zorn_mw::verify_disconnect() {
    if (socket.current_state() != socket_connected) return;
    if (session_state == session_creating)
        show_dialog_centered(newbie_disconnect_dialog);
    else
        show_dialog_centered(disconnect_dialog);
}

void zorn_mw::menu_file_save_and_quit() {
    log2("zorn_mw::menu_file_save_and_quit()\n");
    const bool connected = socket.current_state() == socket_connected;
    if (connected && session_state == session_logged_in)
        show_dialog_centered(save_quit_dialog);
    else if (connected && session_state == session_creating)
        show_dialog_centered(newbie_quit_dialog);
    else
        system_shutdown_handler();
}

void zorn_mw::verify_program_exit() {
    log2("zorn_mw::verify_program_exit()\n");
    const bool connected = socket.current_state() == socket_connected;
    if (connected && session_state == session_logged_in) {
        process_user_command("quit -check", 0);
        show_dialog_centered(pgm_exit_dialog);
    } else if (connected && session_state == session_creating) {
        log2("zorn_mw::verify_program_exit() - raising dialog for newbie create mode\n");
        show_dialog_centered(newbie_quit_dialog);
    } else {
        system_shutdown_handler();
    }
}
