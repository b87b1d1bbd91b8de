#include "config/lconfig.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "base/files.h"
#include "base/fixed_string.h"
#include "base/words.h"
#include "config/config_directory.h"
#include "config/config_listener.h"
#include "config/replace_file.h"
#include "config/settings_log.h"
#include "config/xml.h"

namespace {

zorn_config_listener* registered_listener = nullptr;

constexpr const char* char_config_folder = "/char_configs";
// The system file's own name, which the old location of character files would shadow.
constexpr const char* system_file_stem = "ember_vale";
constexpr int tag_buffer_size = 10000;

bool same_name(const std::string& a, const char* b) { return a == (b ? b : ""); }

// A name goes into the path unchanged, so one that could leave the folder or is too long to
// be a file name never gets a file.
bool usable_file_name(const char* name) {
    if (!name || !*name) return false;
    if (std::strchr(name, '/')) return false;
    return std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0;
}

}  // namespace

zorn_config_listener* zorn_get_config_listener() { return registered_listener; }
void zorn_set_config_listener(zorn_config_listener* listener) { registered_listener = listener; }

LConfig& LConfig::instance() {
    static LConfig the_config;
    return the_config;
}

LConfig::LConfig() = default;
LConfig::~LConfig() = default;

void LConfig::set_directory(const char* path) {
    if (path) {
        directory_override = path;
    } else {
        directory_override.reset();
    }
}

const char* LConfig::directory() const {
    if (directory_override) return directory_override->c_str();
    return zorn_client_config_directory();
}

void LConfig::set_font_defaults(const char* main_description, const char* button_description, int button_size) {
    default_font = main_description ? main_description : "";
    default_button_font = button_description ? button_description : "";
    default_button_font_size = button_size;
}

char_config LConfig::make_default_record() const {
    char_config record;
    record.font = default_font;
    record.font_size = default_font_size;
    record.button_font = default_button_font;
    record.button_font_size = default_button_font_size;
    return record;
}

char_config* LConfig::find(const char* name) {
    for (const auto& record : config_list) {
        if (same_name(record->name, name)) return record.get();
    }
    return nullptr;
}

char_config* LConfig::add(const char_config& record) {
    if (char_config* existing = find(record.name.c_str())) {
        ZORN_SETTINGS_LOG(3, "LConfig::add(), replacing config for %s.\n", record.name.c_str());
        if (existing != &record) *existing = record;
        return existing;
    }
    config_list.push_back(std::make_unique<char_config>(record));
    return config_list.back().get();
}

bool LConfig::char_config_path(const char* name, zorn_fixed_string* path) const {
    path->clear();
    const char* base = directory();
    if (!base || !usable_file_name(name)) return false;
    path->appendf("%s%s/%s.cfg", base, char_config_folder, name);
    return !path->full();
}

void LConfig::load_xml_single_system_config(zorn_xml_reader& reader, const char* expected_name) {
    char_config record = make_default_record();
    read_char_config_fields(reader, &record);
    validate(&record);
    if (!record.has_name()) {
        ZORN_SETTINGS_LOG(1,
                          "Error in LConfig::load_xml_single_system_config(), missing name for loaded config.  "
                          "Ignoring.\n");
        return;
    }
    if (expected_name && record.name != expected_name) {
        ZORN_SETTINGS_LOG(1,
                          "Error in LConfig::load_xml_single_system_config(), got bad name '%s' for loaded config "
                          "'%s'.\n",
                          record.name.c_str(), expected_name);
        return;
    }
    add(record);
    ZORN_SETTINGS_LOG(3, "LConfig::load_xml_single_system_config() - Font size %d, '%s'.\n", record.font_size,
                      record.font.c_str());
    ZORN_SETTINGS_LOG(3, "LConfig::load_xml_single_system_config() - Button font size %d, '%s'.\n",
                      record.button_font_size, record.button_font.c_str());
}

namespace {

// Every "single_config" at the top of a character file; a stray closing tag does not end it.
void load_char_file(LConfig& config, FILE* file, const char* name) {
    zorn_xml_file_reader reader(file);
    char tag[tag_buffer_size];
    while (!reader.at_end()) {
        if (!reader.read_tag(tag, sizeof tag)) continue;
        if (word_equal(tag, "single_config")) {
            config.load_xml_single_system_config(reader, name);
        } else {
            reader.skip_data();
        }
    }
}

}  // namespace

char_config* LConfig::get_or_load(const char* name) {
    if (char_config* found = find(name)) return found;
    zorn_fixed_string path;
    if (!char_config_path(name, &path)) return nullptr;
    ZORN_SETTINGS_LOG(2, "LConfig::get_or_load() - trying load of config '%s'.\n", name);

    // Older clients kept the file beside the system file; it moves into the folder once loaded.
    zorn_fixed_string old_path;
    old_path.appendf("%s/%s.cfg", directory(), name);
    bool old_style = false;
    if (std::strcmp(name, system_file_stem) != 0) {
        if (FILE* file = std::fopen(old_path.c_str(), "rb")) {
            ZORN_SETTINGS_LOG(1, "LConfig::get_or_load() - got old style per-char config file '%s'.\n",
                              old_path.c_str());
            load_char_file(*this, file, name);
            std::fclose(file);
            old_style = find(name) != nullptr;
        }
    }
    if (!old_style) {
        FILE* file = std::fopen(path.c_str(), "rb");
        if (!file) {
            ZORN_SETTINGS_LOG(2, "LConfig::get_or_load() - no config file for '%s'.\n", name);
            return nullptr;
        }
        load_char_file(*this, file, name);
        std::fclose(file);
    }
    char_config* record = find(name);
    // The old file goes only once the new one is safely written.
    if (record && old_style && save(*record)) ::unlink(old_path.c_str());
    ZORN_SETTINGS_LOG(2, "LConfig::get_or_load() - load of config '%s' success.\n", name);
    return record;
}

char_config* LConfig::create_new_config(const char* name, char_config* old) {
    if (!old) {
        ZORN_SETTINGS_LOG(1, "Error in LConfig::create_new_config(), NULL old config?  Creating new.\n");
        char_config record = make_default_record();
        record.name = name ? name : "";
        return add(record);
    }
    if (!old->has_name()) {
        // First login after installation: what was set before login stays with the character.
        ZORN_SETTINGS_LOG(3, "LConfig::create_new_config() - attaching name '%s' to current blank config.\n",
                          name ? name : "");
        old->name = name ? name : "";
        return old;
    }
    ZORN_SETTINGS_LOG(3, "LConfig::create_new_config() - making a copy of current config '%s' to create config '%s'.\n",
                      old->name.c_str(), name ? name : "");
    char_config copy = *old;
    copy.name = name ? name : "";
    return add(copy);
}

void LConfig::setup_default_config(const char* previous_name) {
    if (previous_name && *previous_name) {
        ZORN_SETTINGS_LOG(3, "LConfig::setup_default_config() - trying to use previous config '%s'.\n", previous_name);
        current_char_cfg = get_or_load(previous_name);
        if (current_char_cfg) return;
        ZORN_SETTINGS_LOG(3, "LConfig::setup_default_config() - unable to load or find previous config, using default.\n");
    } else {
        ZORN_SETTINGS_LOG(3, "LConfig::setup_default_config() - no previous config specified, using default.\n");
    }
    current_char_cfg = add(make_default_record());
}

void LConfig::switch_character(const char* name) {
    char_config* record = get_or_load(name);
    if (!record) record = create_new_config(name, current_char_cfg);
    current_char_cfg = record;
    if (zorn_config_listener* listener = zorn_get_config_listener()) {
        listener->sync_menu_item(zorn_setting_current_theme, get_current_theme());
        listener->sync_menu_item(zorn_setting_current_background_theme, get_current_background_theme());
        if (get_theme_bg_setting() <= 5) listener->sync_menu_item(zorn_setting_theme_bg_setting, get_theme_bg_setting());
        listener->sync_menu_item(zorn_setting_font_colors_setting, get_font_colors_setting());
        listener->apply_theme(zorn_theme_part::button);
        listener->apply_theme(zorn_theme_part::background);
    }
    apply_settings();
    apply_font();
    // The panels then hold the fonts, and the record what is really displayed.
    if (zorn_config_listener* listener = zorn_get_config_listener()) {
        listener->refresh_main_font();
        listener->refresh_button_font();
    }
}

bool LConfig::save(const char_config& record) {
    zorn_fixed_string path;
    if (!char_config_path(record.name.c_str(), &path)) {
        if (record.has_name()) {
            ZORN_SETTINGS_LOG(1, "Unable to save config file '%s'.\n", record.name.c_str());
        }
        return false;
    }
    zorn_fixed_string folder;
    folder.appendf("%s%s", directory(), char_config_folder);
    if (!zorn_create_and_check_writeable_directory(folder.c_str(), 0700, nullptr)) {
        ZORN_SETTINGS_LOG(2, "Unable to create directory for config file '%s'.\n", folder.c_str());
        return false;
    }
    zorn_replace_file out(path.c_str());
    bool ok = out.stream() != nullptr;
    if (ok) {
        zorn_xml_file_writer writer(out.stream());
        write_char_config(writer, record);
        ok = !writer.failed() && out.commit();
    }
    if (!ok) ZORN_SETTINGS_LOG(1, "Unable to save config file '%s'.\n", path.c_str());
    return ok;
}

// ---------------------------------------------------------------------------------------------
// Settings and their effects on the window

int LConfig::get(zorn_setting key) const {
    if (!current_char_cfg || key < 0 || key >= zorn_setting_count) return 0;
    return current_char_cfg->value(key);
}

void LConfig::set(zorn_setting key, int value) {
    if (!current_char_cfg || key < 0 || key >= zorn_setting_count) return;
    const zorn_setting_info& info = zorn_setting_table(key);
    if (info.check == zorn_setting_check::lowest_bit) value = value != 0 ? 1 : 0;
    int& field = current_char_cfg->value(key);
    if (info.only_on_change && field == value) return;
    field = value;
    apply_effects(info, value);
}

void LConfig::apply_effects(const zorn_setting_info& info, int value) {
    zorn_config_listener* listener = zorn_get_config_listener();
    if (!listener) return;
    const unsigned effects = info.effects;
    if (effects & zorn_effect_menu) listener->sync_menu_item(info.key, value);
    if (effects & zorn_effect_refresh_main_font) listener->refresh_main_font();
    if ((effects & zorn_effect_status_bar) && listener->is_logged_in()) listener->show_status_bar(value != 0);
    if ((effects & zorn_effect_sky_bar) && listener->is_logged_in()) listener->show_sky_bar(value != 0);
    if (effects & zorn_effect_status_display) {
        listener->set_status_display_flag(info.key, value);
        if (listener->is_logged_in()) {
            listener->show_status_display(get_exp_display() || get_hpbar_enable() || get_enemy_hpbar_enable());
        }
    }
    if ((effects & zorn_effect_hide_group) && value == 0) listener->hide_group_display();
    if (effects & zorn_effect_channel_window) listener->set_channel_window_enable(value);
    if (effects & zorn_effect_layout) listener->layout_and_refresh();
    if (effects & zorn_effect_scrollbar) listener->relayout_scrollbar();
    if (effects & zorn_effect_switch_layout) listener->switch_layout();
    if (effects & zorn_effect_button_theme) listener->apply_theme(zorn_theme_part::button);
    if (effects & zorn_effect_background_theme) listener->apply_theme(zorn_theme_part::background);
    if (effects & zorn_effect_status_dirty) listener->mark_client_status_dirty();
}

void LConfig::apply_settings() {
    zorn_config_listener* listener = zorn_get_config_listener();
    if (!listener) return;
    // With no current record every getter yields 0, so the radio groups go to their first value.
    for (int k = 0; k < zorn_setting_count; ++k) {
        const zorn_setting_info& info = zorn_setting_table(static_cast<zorn_setting>(k));
        if (info.menu_label) listener->sync_menu_item(info.key, get(info.key));
    }
    listener->set_status_display_flag(zorn_setting_exp_display, get_exp_display());
    listener->set_status_display_flag(zorn_setting_hpbar_enable, get_hpbar_enable());
    listener->set_status_display_flag(zorn_setting_enemy_hpbar_enable, get_enemy_hpbar_enable());
    if (listener->is_logged_in()) {
        listener->show_status_display(get_exp_display() || get_hpbar_enable() || get_enemy_hpbar_enable());
        listener->show_status_bar(get_status_bar() != 0);
    }
    listener->set_channel_window_enable(get_channel_window_enable());
    listener->set_automap_scale(get_automap_size());
    listener->enable_automap_size_items(get_automap_display() != 0);
    listener->update_automap_visibility();
    listener->relayout_scrollbar();
    listener->switch_layout();
    listener->mark_client_status_dirty();
}

void LConfig::apply_font() {
    if (!current_char_cfg) {
        ZORN_SETTINGS_LOG(1, "Error in LConfig::apply_font(), null current_char_cfg.\n");
        return;
    }
    default_font_size = current_char_cfg->font_size;
    if (zorn_config_listener* listener = zorn_get_config_listener()) {
        listener->apply_fonts(current_char_cfg->font.c_str(), current_char_cfg->font_size,
                              current_char_cfg->button_font.c_str(), current_char_cfg->button_font_size);
    }
}

void LConfig::store_main_font(const char* description, int size) {
    if (!current_char_cfg) return;
    current_char_cfg->font = description ? description : "";
    current_char_cfg->font_size = size;
}

void LConfig::store_button_font(const char* description, int size) {
    if (!current_char_cfg) return;
    current_char_cfg->button_font = description ? description : "";
    current_char_cfg->button_font_size = size;
}

void LConfig::use_default_preferences() {
    if (!current_char_cfg) return;
    const char_config defaults;
    for (int k = 0; k < zorn_setting_count; ++k) {
        const auto key = static_cast<zorn_setting>(k);
        if (key == zorn_setting_font_size || key == zorn_setting_button_font_size) continue;
        current_char_cfg->value(key) = defaults.value(key);
    }
    // The settings whose setters act on their own (no layout) hear of the new value directly.
    static const zorn_setting plain_setters[] = {
        zorn_setting_cmd_pushthrough,           zorn_setting_local_echo,     zorn_setting_cmd_separator,
        zorn_setting_keypad_walking,            zorn_setting_locking_scrollback_enable,
        zorn_setting_url_hotlinking,            zorn_setting_channel_window_dupe,
        zorn_setting_colorflash_enable,         zorn_setting_split_view,
    };
    for (zorn_setting key : plain_setters) set(key, get(key));
    apply_settings();
}

popup_window_config LConfig::get_popup_window_config(const char* name) const {
    if (current_char_cfg && name) {
        for (const popup_window_config& element : current_char_cfg->popup_window_list) {
            if (std::strcmp(element.name, name) == 0) return element;
        }
    }
    return popup_window_config(name);
}

void LConfig::set_popup_window_config(const popup_window_config& element) {
    if (!current_char_cfg) return;
    auto& list = current_char_cfg->popup_window_list;
    for (popup_window_config& stored : list) {
        if (std::strcmp(stored.name, element.name) != 0) continue;
        stored.x = element.x;
        stored.y = element.y;
        stored.columns = element.columns;
        stored.rows = element.rows;
        stored.width = element.width;
        stored.height = element.height;
        return;
    }
    list.insert(list.begin(), element);
}

void LConfig::SetSystemAudio(int value) {
    if (value == system_audio_enable) return;
    system_audio_enable = value;
    zorn_config_listener* listener = zorn_get_config_listener();
    if (!listener) return;
    listener->mark_client_status_dirty();
    if (value == 0) {
        listener->stop_audio();
    } else if (!listener->start_audio()) {
        ZORN_SETTINGS_LOG(1, "LConfig::SetSystemAudio() - unable to start audio.  Disabling.\n");
        system_audio_enable = 0;
        listener->stop_audio();
    }
    listener->sync_audio_menu_item(system_audio_enable);
}
