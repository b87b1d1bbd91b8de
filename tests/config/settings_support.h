#pragma once
// Helpers of the settings tests: files in a private directory and a listener that records what
// the setters ask of the window.

#include <filesystem>
#include <string>
#include <vector>

#include "config/config_listener.h"
#include "tests/support/temp_dir.h"

// write_file that makes the missing directories first.
inline void write_file_making_dirs(const std::string& path, const std::string& text) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    write_file(path, text);
}

// Each call is one word of joined(): its name and arguments.
class recording_listener : public zorn_config_listener {
public:
    recording_listener() { zorn_set_config_listener(this); }
    ~recording_listener() override { zorn_set_config_listener(nullptr); }

    bool logged_in = false;
    bool audio_works = true;
    std::vector<std::string> calls;

    std::string joined() const {
        std::string all;
        for (const std::string& call : calls) all += (all.empty() ? "" : " ") + call;
        return all;
    }

    bool is_logged_in() override { return logged_in; }
    void sync_menu_item(zorn_setting key, int value) override { add("menu:", key, value); }
    void sync_audio_menu_item(int value) override { add("audio_menu=", value); }
    void mark_client_status_dirty() override { add("dirty"); }
    void layout_and_refresh() override { add("layout"); }
    void relayout_scrollbar() override { add("scrollbar"); }
    void switch_layout() override { add("switch_layout"); }
    void apply_theme(zorn_theme_part part) override {
        add(part == zorn_theme_part::button ? "theme:button" : "theme:background");
    }
    void show_status_bar(bool show) override { add("status_bar=", show); }
    void show_sky_bar(bool show) override { add("sky_bar=", show); }
    void set_status_display_flag(zorn_setting key, int value) override { add("flag:", key, value); }
    void show_status_display(bool show) override { add("status_display=", show); }
    void hide_group_display() override { add("hide_group"); }
    void set_channel_window_enable(int value) override { add("channel_window=", value); }
    void set_automap_scale(int size) override { add("automap_scale=", size); }
    void enable_automap_size_items(bool enable) override { add("automap_items=", enable); }
    void update_automap_visibility() override { add("automap_visibility"); }
    void apply_fonts(const char* main_description, int main_size, const char* button_description,
                     int button_size) override {
        add(std::string("fonts:") + main_description + "/" + std::to_string(main_size) + "/" + button_description +
            "/" + std::to_string(button_size));
    }
    void refresh_main_font() override { add("refresh_main_font"); }
    void refresh_button_font() override { add("refresh_button_font"); }
    bool start_audio() override {
        add("start_audio");
        return audio_works;
    }
    void stop_audio() override { add("stop_audio"); }

private:
    void add(const std::string& call) { calls.push_back(call); }
    void add(const std::string& name, int value) { add(name + std::to_string(value)); }
    void add(const std::string& kind, zorn_setting key, int value) {
        add(kind + zorn_setting_table(key).name + "=" + std::to_string(value));
    }
};
