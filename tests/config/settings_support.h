#pragma once
// Helpers of the settings tests: a private directory per test and a listener that records what
// the setters ask of the window.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "config/config_listener.h"

class temp_directory {
public:
    temp_directory() {
        char pattern[] = "/tmp/lantern_settings_XXXXXX";
        const char* made = mkdtemp(pattern);
        path_ = made ? made : "";
    }
    ~temp_directory() {
        std::error_code ignored;
        if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
    }
    const char* path() const { return path_.c_str(); }
    std::string file(const std::string& relative) const { return path_ + "/" + relative; }

private:
    std::string path_;
};

inline std::string read_file(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

inline void write_file(const std::string& path, const std::string& text) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

// Each call is one line: its name and arguments.
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
    void sync_menu_item(zorn_setting key, int value) override {
        add("menu:" + std::string(zorn_setting_table(key).name) + "=" + std::to_string(value));
    }
    void sync_audio_menu_item(int value) override { add("audio_menu=" + std::to_string(value)); }
    void mark_client_status_dirty() override { add("dirty"); }
    void layout_and_refresh() override { add("layout"); }
    void relayout_scrollbar() override { add("scrollbar"); }
    void switch_layout() override { add("switch_layout"); }
    void apply_theme(zorn_theme_part part) override {
        add(part == zorn_theme_part::button ? "theme:button" : "theme:background");
    }
    void show_status_bar(bool show) override { add("status_bar=" + std::to_string(show)); }
    void show_sky_bar(bool show) override { add("sky_bar=" + std::to_string(show)); }
    void set_status_display_flag(zorn_setting key, int value) override {
        add("flag:" + std::string(zorn_setting_table(key).name) + "=" + std::to_string(value));
    }
    void show_status_display(bool show) override { add("status_display=" + std::to_string(show)); }
    void hide_group_display() override { add("hide_group"); }
    void set_channel_window_enable(int value) override { add("channel_window=" + std::to_string(value)); }
    void set_automap_scale(int size) override { add("automap_scale=" + std::to_string(size)); }
    void enable_automap_size_items(bool enable) override { add("automap_items=" + std::to_string(enable)); }
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
};
