// The frame's side of the screen reader: turning it on and off with the setting, feeding it the
// game text and client messages, its tick, its keys, its place under the main display, and the
// accessible names of the gauges and the map.
#include <algorithm>

#include "display/reader_window.h"
#include "display/speechd_output.h"
#include "app/layout.h"
#include "app/main_frame.h"
#include "app/screen_reader.h"
#include "automap/automap_display.h"
#include "config/lconfig.h"
#include "display/ansi_display.h"
#include "panels/channel_window.h"
#include "panels/status_display.h"

namespace {

std::unique_ptr<zorn_speech_output> open_default_output() { return zorn_open_speechd(); }

// The mirror's strip under the main display: a quarter of its height, within these bounds.
constexpr int mirror_min_height = 40;
constexpr int mirror_max_height = 200;

}  // namespace

std::unique_ptr<zorn_speech_output> (*zorn_speech_output_factory)() = open_default_output;

zorn_screen_reader::zorn_screen_reader(wxWindow* parent, std::unique_ptr<zorn_speech_output> output)
    : lines(*this), speech(std::move(output)), mirror(new zorn_reader_mirror(parent)) {}

zorn_screen_reader::~zorn_screen_reader() { mirror->Destroy(); }

void zorn_screen_reader::text(const char* bytes, int length, const char* channel) {
    lines.set_channel(channel);
    lines.feed(bytes, length);
    text_since_tick = true;
}

void zorn_screen_reader::tick() {
    // A prompt has no line feed: once a tick passes without more of it, it is said.
    if (!text_since_tick) lines.flush();
    text_since_tick = false;
    speech.pump();
    mirror->apply(buffer.take_update());
}

void zorn_screen_reader::line(const std::string& text, bool continues) {
    buffer.add(text, continues);
    speech.add(text);
}

void zorn_mw::screen_reader_sync() {
    const bool on = LConfig::instance().get_screen_reader() != 0;
    if (on == (screen_reader != nullptr)) return;
    if (!on) {
        delete screen_reader;
        screen_reader = nullptr;
        return;
    }
    screen_reader = new zorn_screen_reader(this, zorn_speech_output_factory());
    screen_reader->speech.announce("Screen reader on.");
}

void zorn_mw::place_screen_reader(layout_rect* main_area) {
    screen_reader_sync();
    if (!screen_reader) return;
    const int height = std::clamp(main_area->height / 4, mirror_min_height, mirror_max_height);
    main_area->height = std::max(main_area->height - height, 1);
    screen_reader->mirror->SetSize(main_area->x, main_area->y + main_area->height, main_area->width, height);
    screen_reader->mirror->Show();
}

// Chat is said with its channel's name; text diverted into a popup window is not said: the
// server rewrites those windows whole, often.
void zorn_mw::screen_reader_text(const char* bytes, int length) {
    if (channel_divert_active) {
        const zorn_channel_record* channel = channel_window->channels.divert_channel;
        screen_reader->text(bytes, length, channel ? channel->name : nullptr);
    } else if (text_target == main_display) {
        screen_reader->text(bytes, length, nullptr);
    }
}

void zorn_mw::screen_reader_tick() {
    if (!screen_reader) return;
    screen_reader->tick();
    const zorn_status_display& d = *status_display;
    zorn_gauge_values values;
    values.hp_bars = d.show_hp_bars, values.exp_bar = d.show_exp_bar, values.enemy_bar = d.show_enemy_bar;
    values.hp = d.hp, values.max_hp = d.max_hp, values.mana = d.mana, values.max_mana = d.max_mana;
    values.move = d.move, values.max_move = d.max_move, values.first_xp = d.xp[0];
    values.enemy_name = d.enemy_name.c_str(), values.enemy_percent = d.enemy_percent;
    std::string name = zorn_gauge_accessible_name(values);
    if (name != screen_reader->gauge_name) {
        zorn_set_accessible_name(status_display, name);
        screen_reader->gauge_name.swap(name);
    }
    name = zorn_map_accessible_name(session_state == session_logged_in, automap->in_combat != 0,
                                    automap->area_name.c_str());
    if (name != screen_reader->map_name) {
        zorn_set_accessible_name(automap, name);
        screen_reader->map_name.swap(name);
    }
}

void zorn_mw::speech_silence() {
    if (screen_reader) screen_reader->speech.silence();
}

void zorn_mw::speech_repeat() {
    if (screen_reader) screen_reader->speech.repeat_last();
}
