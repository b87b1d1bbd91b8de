// The tag table: what each out-of-band tag from the server does, the session's life (login and
// the session events), text diversion, the lag meter and the client status line.
#include <cstdlib>
#include <cstring>

#include "app/main_frame.h"
#include "audio/soundpack.h"
#include "automap/automap_display.h"
#include "automap/automap_renderer.h"
#include "base/threads.h"
#include "base/words.h"
#include "config/debug_log.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "input/button_sets.h"
#include "panels/channel_window.h"
#include "panels/group_display.h"
#include "panels/status_bar.h"
#include "panels/status_display.h"

namespace {

void no_handler(const char* name) {
    if (zorn_debug_level >= 2)
        zorn_client_debug_printf("Warning in zorn_mw::process_tagged_data(), no handler for tag '%s'.\n", name);
}

// "bf" or "b" and a number above 0; "b0", "bf0" and "bfx" are unknown tags.
bool numbered_tag(const char* name, const char* prefix) {
    const size_t length = std::strlen(prefix);
    return std::strncmp(name, prefix, length) == 0 && std::atoi(name + length) > 0;
}

}  // namespace

// The numbered button tags come last, so "bclear" never reaches them.
void zorn_mw::process_tagged_data(const char* name, const char* payload, int length) {
    if (!name) return;
    if (!payload) payload = "";
    if (std::strcmp(name, "login") == 0) {
        tag_login(payload, length);
    } else if (std::strcmp(name, "uuid") == 0) {
        LConfig::instance().set_uuid(payload);
    } else if (std::strcmp(name, "event") == 0) {
        tag_event(payload);
    } else if (std::strcmp(name, "divert") == 0) {
        divert_text(payload, true);
    } else if (std::strcmp(name, "append") == 0) {
        divert_text(payload, false);
    } else if (std::strcmp(name, "undivert") == 0) {
        undivert_text();
    } else if (std::strcmp(name, "unappend") == 0) {
        unappend_text();
    } else if (automap_tag(name, payload, length)) {
    } else if (std::strcmp(name, "chdiv") == 0) {
        channel_window->set_divert_channel(payload);
        channel_divert_active = 1;
    } else if (std::strcmp(name, "chudiv") == 0) {
        channel_window->clear_divert_channel();
        channel_divert_active = 0;
    } else if (std::strcmp(name, "window_create") == 0) {
        popup_manager->create_window(payload);
    } else if (std::strcmp(name, "hp") == 0) {
        set_hit_points(payload);
    } else if (std::strcmp(name, "enemyhp") == 0) {
        set_enemy(payload);
    } else if (std::strcmp(name, "xpp") == 0) {
        set_experience(payload);
    } else if (std::strcmp(name, "ncombat") == 0) {
        automap->set_combat(false);
        set_enemy("");
    } else if (std::strcmp(name, "skystate") == 0) {
        status_bar->update_sky_display(payload);
    } else if (std::strcmp(name, "icons") == 0) {
        status_bar->set_icons(payload);
    } else if (std::strcmp(name, "group") == 0) {
        group_display->parse_group_block(payload);
    } else if (std::strcmp(name, "bclear") == 0) {
        hint_buttons->clear_all();
    } else if (std::strcmp(name, "config") == 0) {
        config_cmd_process(payload);
    } else if (std::strcmp(name, "sound") == 0) {
        // With audio off the tag is ignored, and no file is looked for.
        if (LConfig::instance().get_system_audio()) zorn_soundpack::instance().parse_audio_tag(payload);
    } else if (numbered_tag(name, "bf")) {
        fkey_manager->setup_button(name, payload);
    } else if (numbered_tag(name, "b")) {
        hint_buttons->setup_button(name, payload);
    } else {
        no_handler(name);
    }
}

void zorn_mw::tag_login(const char* payload, int length) {
    if (length > 0 && *payload) {
        zorn_fixed_string name;  // cut at its 5999 characters
        name.append(payload, static_cast<int>(std::strcspn(payload, "\n")));
        SetTitle(wxString::FromUTF8(zorn_frame_title) + wxT(" - Player ") + wxString::FromUTF8(name.c_str()));
        LConfig::instance().switch_character(name.c_str());
    }
    session_state = session_logged_in;
    select_history_list(2);
    update_automap_visibility();
    fkey_manager->set_all_active(1);
    const LConfig& c = LConfig::instance();
    status_bar->Show(c.get_status_bar() != 0);
    status_bar->sky_bar->Show(c.get_sky_bar() != 0);
    status_display->Show(c.get_hpbar_enable() || c.get_exp_display() || c.get_enemy_hpbar_enable());
    status_display->set_flags(c.get_hpbar_enable(), c.get_exp_display(), c.get_enemy_hpbar_enable());
    leave_password_mode();
    layout_panels();
    Refresh(false);
    client_status_dirty = 1;
}

void zorn_mw::tag_event(const char* payload) {
    if (word_equal(payload, "colorflash")) {
        if (!LConfig::instance().get_colorflash_enable()) return;
        const char* rest = next_arg(payload);
        text_target->textctrl->parse_colorflash(rest ? rest : "");
        return;
    }
    if (std::strcmp(payload, "lnpong") == 0) {
        // A pong with no ping sent measures nothing.
        if (ping_sent_time == 0) return;
        last_ping_ms = static_cast<int>((zorn_gettimeofday_useconds() - ping_sent_time) / 1000);
        status_bar->add_ping_sample(last_ping_ms);
        if (zorn_debug_level >= 3) zorn_client_debug_printf("zorn_mw - lag sample %d ms.\n", last_ping_ms);
    } else if (std::strcmp(payload, "newcreate") == 0) {
        session_state = session_creating;
    } else if (std::strcmp(payload, "logoff") == 0) {
        session_state = session_logging_off;
    } else if (zorn_debug_level >= 2) {
        zorn_client_debug_printf("Warning in zorn_mw::process_tagged_data(), got unhandled event '%s'.\n", payload);
    }
}

// "divert" replaces a popup window's text with what follows, "append" adds to it.
void zorn_mw::divert_text(const char* name, bool clear) {
    if (zorn_ansi_display* display = popup_manager->find_display(name)) {
        text_target = display;
        if (clear) {
            display->suspend_updates();
            display->clear_display();
        }
        return;
    }
    text_target = main_display;
    main_display->reset_colors();
    print_message("\n");
    print_message("Sorry, no popup window by that name has been defined.\n");
    print_message("\n");
    refresh_text();
}

void zorn_mw::undivert_text() {
    text_target->refresh_text();
    // The reader's place survives a window that was rewritten while being read.
    saved_scroll_position = text_target->get_scroll_position();
    text_target->resume_updates();
    text_target->set_scroll_position(saved_scroll_position);
    text_target = main_display;
}

void zorn_mw::unappend_text() {
    text_target->refresh_text();
    text_target->scroll_to_end();
    text_target = main_display;
}

void zorn_mw::send_ping() {
    if (session_state != session_logged_in) return;
    send_line("lnping");
    ping_sent_time = zorn_gettimeofday_useconds();
}

void zorn_mw::set_hit_points(const char* payload) { status_display->store_hit_points(payload ? payload : ""); }

void zorn_mw::set_enemy(const char* payload) {
    const LConfig& c = LConfig::instance();
    // "ncombat" comes often with nothing to clear; only a real change is drawn.
    const bool had_enemy =
        status_display->enemy_percent != -1 || std::strcmp(status_display->enemy_name.c_str(), zorn_no_enemy_name) != 0;
    switch (status_display->store_enemy(payload ? payload : "")) {
        case zorn_enemy_update::cleared:
            if (c.get_enemy_hpbar_enable()) {
                if (had_enemy) status_display->Refresh(false);
            } else if (status_display->show_enemy_bar) {
                status_display->set_flags(status_display->show_hp_bars, status_display->show_exp_bar, 0);
            }
            return;
        case zorn_enemy_update::no_name: return;
        case zorn_enemy_update::same:
        case zorn_enemy_update::changed: break;
    }
    const bool any = c.get_enemy_hpbar_enable() || c.get_hpbar_enable() || c.get_exp_display();
    if (status_display->IsShown() != any) status_display->Show(any);
}

void zorn_mw::set_experience(const char* payload) {
    status_display->store_experience(payload ? payload : "", LConfig::instance().get_exp_display() != 0);
}

void zorn_mw::send_client_status() {
    const LConfig& c = LConfig::instance();
    client_status_fields f{};
    f.system_audio = c.get_system_audio();
    f.cmd_separator = c.get_cmd_separator();
    f.direction_button_enable = c.get_direction_button_enable();
    f.hint_button_enable = c.get_hint_button_enable();
    f.fkey_button_display = c.get_fkey_button_display();
    f.status_bar = c.get_status_bar();
    f.sky_bar = c.get_sky_bar();
    f.exp_display = c.get_exp_display();
    f.hpbar_enable = c.get_hpbar_enable();
    f.enemy_hpbar_enable = c.get_enemy_hpbar_enable();
    f.popup_display = c.get_popup_display();
    f.group_status_display = c.get_group_status_display();
    f.current_layout = c.get_current_layout();
    f.automap_display = c.get_automap_display();
    f.automap_docked = c.get_automap_docked();
    f.channel_window_enable = c.get_channel_window_enable();
    f.channel_window_dupe = c.get_channel_window_dupe();
    f.colorflash_enable = c.get_colorflash_enable();
    f.font_colors_setting = c.get_font_colors_setting();
    f.voting_reminders = c.get_voting_reminders();
    f.current_theme = c.get_current_theme();
    f.current_background_theme = c.get_current_background_theme();
    f.theme_bg_setting = c.get_theme_bg_setting();
    process_user_command(build_client_status_line(f).c_str(), 0);
}
