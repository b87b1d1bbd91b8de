#include "audio/soundpack.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "audio/audio_objects.h"
#include "audio/ogg_decode.h"
#include "base/fixed_string.h"
#include "config/config_directory.h"
#include "config/debug_log.h"

namespace {

constexpr int fade_milliseconds = 5;
constexpr long usable_rate = 44100;

int16_t value_at(const unsigned char* samples, long index) {
    return static_cast<int16_t>(samples[2 * index] | (samples[2 * index + 1] << 8));
}

void set_value(unsigned char* samples, long index, int32_t value) {
    const uint16_t bits = static_cast<uint16_t>(static_cast<int16_t>(value));
    samples[2 * index] = static_cast<unsigned char>(bits & 0xFF);
    samples[2 * index + 1] = static_cast<unsigned char>(bits >> 8);
}

// 5 ms in and out, counted in single values (not frames), to take the click off a sound that
// starts or stops away from zero. A sound too short for both is left alone.
void apply_fades(unsigned char* samples, long length, long rate, int channels) {
    const long scaled = fade_milliseconds * rate * channels;
    if (scaled < 1000) return;
    const long n = scaled / 1000;
    if (n > (length / channels) / 2) return;
    const long count = length / 2;
    for (long k = 0; k < n; k++) set_value(samples, k, value_at(samples, k) * k / n);
    for (long k = 0; k < n; k++) set_value(samples, count - 1 - k, value_at(samples, count - 1 - k) * k / n);
}

// The name of a tag: its first word, up to a blank, a tab, a line feed or 5999 characters.
void first_word(const char* payload, zorn_fixed_string* name) {
    const size_t length = std::strcspn(payload, " \t\n");
    name->append(payload, static_cast<int>(length < 5999 ? length : 5999));
}

}  // namespace

zorn_soundpack& zorn_soundpack::instance() {
    static zorn_soundpack* soundpack = new zorn_soundpack();
    return *soundpack;
}

zorn_soundpack::zorn_soundpack(const char* directory_path)
    : directory(directory_path ? directory_path : ""), use_config_directory(directory_path == nullptr) {}

zorn_soundpack::~zorn_soundpack() {
    while (head) {
        sound_data* following = head->next;
        std::free(head->samples);
        delete head;
        head = following;
    }
}

const char* zorn_soundpack::base_directory() const {
    if (!use_config_directory) return directory.c_str();
    const char* config = zorn_client_config_directory();
    return config ? config : ".";
}

int zorn_soundpack::record_count() {
    std::lock_guard<std::mutex> hold(list_lock);
    int count = 0;
    for (sound_data* record = head; record; record = record->next) count++;
    return count;
}

sound_data* zorn_soundpack::find_or_create(const char* key) {
    std::lock_guard<std::mutex> hold(list_lock);
    char cut[sound_data::name_size];
    std::snprintf(cut, sizeof cut, "%s", key);
    for (sound_data* record = head; record; record = record->next)
        if (std::strcmp(record->name, cut) == 0) return record;
    sound_data* record = new sound_data;
    std::memcpy(record->name, cut, sizeof cut);
    record->next = head;
    head = record;
    return record;
}

void zorn_soundpack::parse_audio_tag(const char* payload) {
    if (!payload) payload = "";
    zorn_fixed_string name;
    first_word(payload, &name);
    sound_data* sound = get_sound_data(name.c_str());
    if (!sound) {
        if (zorn_debug_level >= 1)
            zorn_client_debug_printf("zorn_soundpack::parse_audio_tag - no sound available for '%s'\n", payload);
        return;
    }
    // Playouts that have ended are destroyed first, so the count is current.
    reap_audio_objects();
    int playing;
    {
        std::lock_guard<std::mutex> hold(sound->lock);
        playing = sound->playout_count;
    }
    if (playing >= zorn_soundpack_playout_limit) {
        if (zorn_debug_level >= 3)
            zorn_client_debug_printf("zorn_soundpack::parse_audio_tag() - too many simultaneous playouts of '%s'\n",
                                     sound->name);
        return;
    }
    if (sound->channels == 1)
        new zorn_audio_playout_mono_memory(sound->samples, sound->length, sound);
    else if (sound->channels == 2)
        new zorn_audio_playout_stereo_memory(sound->samples, sound->length, sound);
    else if (zorn_debug_level >= 1)
        zorn_client_debug_printf("zorn_soundpack::parse_audio_tag() - data for '%s' has %d channel format?\n",
                                 sound->name, sound->channels);
}

sound_data* zorn_soundpack::get_sound_data(const char* name) {
    zorn_fixed_string key;
    key.append("soundpack/");
    key.append(name);
    key.append(".ogg");
    sound_data* record = find_or_create(key.c_str());

    if (record->state == sound_state_not_loaded) {
        // The custom folder is flat: a name's folders up to its first '/' are dropped.
        const char* slash = std::strchr(name, '/');
        zorn_fixed_string path;
        path.append(base_directory());
        path.append("/soundpack/custom/");
        path.append(slash ? slash + 1 : name);
        path.append(".ogg");
        if (load_from_file(record, path.c_str()) == 0) {
            if (zorn_debug_level >= 3)
                zorn_client_debug_printf("zorn_soundpack::get_sound_data() - unable to open custom soundpack file "
                                         "'%s'.  Falling back to normal locations.\n",
                                         record->name);
        } else if (record->state == sound_state_loaded) {
            record->state = sound_state_loaded_custom;
        } else {
            record->state = sound_state_not_loaded;  // a broken custom file falls back as well
        }
    }
    if (record->state == sound_state_failed) return nullptr;
    if (record->state == sound_state_loaded_custom) {
        if (zorn_debug_level >= 3) zorn_client_debug_printf("zorn_soundpack::get_sound_data() - got custom sound '%s'.\n", name);
        return record;
    }
    if (record->state == sound_state_loaded) return record;

    zorn_fixed_string path;
    path.append(base_directory());
    path.append("/");
    path.append(record->name);
    if (load_from_file(record, path.c_str()) == 0) {
        // Not there yet: the updater may bring it, so it is looked for again next time.
        if (zorn_debug_level >= 3)
            zorn_client_debug_printf("zorn_soundpack::get_sound_data() - file '%s' not found.\n", record->name);
        return nullptr;
    }
    if (record->state == sound_state_loaded) {
        if (zorn_debug_level >= 3) zorn_client_debug_printf("zorn_soundpack::get_sound_data() - loaded sound '%s'.\n", name);
        return record;
    }
    if (zorn_debug_level >= 3)
        zorn_client_debug_printf("zorn_soundpack::get_sound_data() - file '%s' failed decode.\n", record->name);
    return nullptr;
}

int zorn_soundpack::load_from_file(sound_data* record, const char* path) {
    FILE* probe = std::fopen(path, "rb");
    if (!probe) return 0;
    std::fclose(probe);

    zorn_decoded_sound decoded;
    const int code = zorn_ogg_decode_from_file_to_memory(path, zorn_sound_decode_limit, &decoded);
    const bool log = zorn_debug_level >= 2;
    switch (code) {
        case ogg_decode_ok:
            if (decoded.rate != usable_rate) {
                if (log)
                    zorn_client_debug_printf("Error in zorn_soundpack::load_from_file() - file '%s' had unusable "
                                             "sample rate %d.\n",
                                             path, static_cast<int>(decoded.rate));
            } else if (decoded.channels != 1 && decoded.channels != 2) {
                if (log)
                    zorn_client_debug_printf("Error in zorn_soundpack::load_from_file() - file '%s' had unusable "
                                             "channel count %d.\n",
                                             path, decoded.channels);
            } else {
                apply_fades(decoded.samples, decoded.length, decoded.rate, decoded.channels);
                record->samples = decoded.samples;
                record->length = decoded.length;
                record->channels = decoded.channels;
                record->state = sound_state_loaded;
                return 1;
            }
            std::free(decoded.samples);
            break;
        case ogg_decode_cannot_open:
            if (log) zorn_client_debug_printf("Error in zorn_soundpack::load_from_file() - cannot open '%s'.\n", path);
            return 0;
        case ogg_decode_bad_format:
            if (log) zorn_client_debug_printf("Error in zorn_soundpack::load_from_file() - bad file format for '%s'.\n", path);
            break;
        case ogg_decode_too_large:
            if (log)
                zorn_client_debug_printf("Error in zorn_soundpack::load_from_file() - file '%s' exceeds available "
                                         "decode space.\n",
                                         path);
            break;
        default:
            if (log)
                zorn_client_debug_printf("Error in zorn_soundpack::load_from_file() - decode failed for file '%s'.\n",
                                         path);
            break;
    }
    record->state = sound_state_failed;
    return 1;
}
