// The frame's side of the popup windows and channel tabs: the "&Popups" menu, Ctrl and a digit,
// and the channel display now shown for the keys of the command line.
#include <wx/menu.h>

#include "app/main_frame.h"
#include "config/debug_log.h"
#include "display/ansi_display.h"
#include "panels/channel_window.h"

void zorn_mw::reset_popup_menu() {
    if (!popups_menu) return;
    while (popups_menu->GetMenuItemCount() > 0) popups_menu->Destroy(popups_menu->FindItemByPosition(0));
    popups_menu->Append(zorn_popup_menu_empty_id, wxT("Not Connected"));
    popups_menu->Enable(zorn_popup_menu_empty_id, false);
    popup_count = 0;
}

// Items are inserted at the top, so the newest window comes first, as in the button row.
void zorn_mw::add_popup_menu_item(zorn_popup_button* button) {
    if (!popups_menu || !button) return;
    if (popup_count >= zorn_popup_menu_items) {
        if (zorn_debug_level >= 2) zorn_client_debug_printf("zorn_mw::add_popup_menu_item : too many popup windows!\n");
        return;
    }
    if (popup_count == 0) {
        popups_menu->Destroy(zorn_popup_menu_empty_id);
        popups_menu->AppendSeparator();
        popups_menu->Append(zorn_popup_menu_reset_id, wxT("&Reset Window Positions"));
    }
    button->menu_id = zorn_popup_menu_first_id + popup_count;
    popups_menu->InsertCheckItem(0, button->menu_id, wxString::FromUTF8(button->name()));
    ++popup_count;
}

void zorn_mw::check_popup_menu_item(zorn_popup_button* button, bool checked) {
    if (popups_menu && button && button->menu_id >= 0 && popups_menu->FindItem(button->menu_id))
        popups_menu->Check(button->menu_id, checked);
}

// Item k, counting from 0 at the first window, stands for window number popup_count - k.
void zorn_mw::popup_menu_handler(wxCommandEvent& event) {
    const int item = event.GetId() - zorn_popup_menu_first_id;
    if (zorn_popup_button* button = popup_manager->button_at(popup_count - item)) button->toggle_state();
}

void zorn_mw::reset_positions_handler(wxCommandEvent&) { popup_manager->reset_window_positions(); }

void zorn_mw::toggle_popup(int number) {
    if (session_state != session_logged_in) return;
    if (zorn_popup_button* button = popup_manager->button_at(number)) button->toggle_state();
}

int zorn_mw::screen_width() { return ::screen_width; }
int zorn_mw::screen_height() { return ::screen_height; }

void zorn_mw::popup_display_destroyed(zorn_ansi_display* display) {
    if (text_target == display) text_target = main_display;
}

bool zorn_mw::channel_is_following() { return channel_window->current_following(); }
void zorn_mw::unlock_channel_scrollback() { channel_window->set_current_following(1); }
void zorn_mw::channel_clear_selection() { channel_window->clear_current_selection(); }
