#include "audio/mixer.h"

#include <mutex>

std::atomic<int> audio_enabled{0};
std::atomic<int> audio_startup_in_progress{0};

namespace {

// Constant-initialised, so they exist before any constructor runs.
std::mutex active_lock;
std::mutex dead_lock;
zorn_audio_object* active_objects = nullptr;  // newest first
zorn_audio_object* dead_objects = nullptr;    // newest first

void destroy_list(zorn_audio_object* object) {
    while (object) {
        zorn_audio_object* following = object->next;
        delete object;
        object = following;
    }
}

}  // namespace

void add_audio_object(zorn_audio_object* object) {
    {
        std::lock_guard<std::mutex> hold(active_lock);
        object->next = active_objects;
        active_objects = object;
    }
    reap_audio_objects();
}

// The lists are detached under their lock and destroyed outside it, so the audio thread never
// waits for a destructor (a playout's takes its sound's mutex).
void reap_audio_objects() {
    if (!audio_enabled) {
        zorn_audio_object* taken;
        {
            std::lock_guard<std::mutex> hold(active_lock);
            taken = active_objects;
            active_objects = nullptr;
        }
        destroy_list(taken);
    }
    zorn_audio_object* taken;
    {
        std::lock_guard<std::mutex> hold(dead_lock);
        taken = dead_objects;
        dead_objects = nullptr;
    }
    destroy_list(taken);
}

void mix_sample_frame(int16_t* left, int16_t* right) {
    std::lock_guard<std::mutex> hold(active_lock);
    if (!active_objects) {
        *left = 0;
        *right = 0;
        return;
    }
    int32_t left_sum = 0, right_sum = 0;
    zorn_audio_object** link = &active_objects;
    for (zorn_audio_object* object = active_objects; object;) {
        zorn_audio_object* following = object->next;
        int16_t l = 0, r = 0;
        if (object->next_sample(&l, &r)) {
            left_sum += l;
            right_sum += r;
            link = &object->next;
        } else {
            *link = following;
            std::lock_guard<std::mutex> hold_dead(dead_lock);
            object->next = dead_objects;
            dead_objects = object;
        }
        object = following;
    }
    *left = soft_limit(left_sum);
    *right = soft_limit(right_sum);
}

void mix_buffer(int16_t* output, unsigned long frames) {
    for (unsigned long i = 0; i < frames; i++) mix_sample_frame(output + 2 * i, output + 2 * i + 1);
}

// Arithmetic shifts throughout; the negative side is one step off the mirror image at the last
// bend, as the curve was first tuned.
int16_t soft_limit(int32_t x) {
    int32_t y;
    if (x >= 0) {
        if (x <= 16383) y = x;
        else if (x <= 32767) y = (x >> 2) + 12288;
        else if (x <= 65535) y = (x >> 3) + 16384;
        else if (x <= 131071) y = (x >> 4) + 20480;
        else if (x <= 262143) y = (x >> 5) + 24576;
        else y = 32767;
    } else {
        if (x >= -16383) y = x;
        else if (x >= -32767) y = (x >> 2) - 12288;
        else if (x >= -65535) y = (x >> 3) - 16384;
        else if (x >= -131071) y = (x >> 4) - 20480;
        else if (x >= -262143) y = (x >> 5) - 24575;
        else y = -32767;
    }
    return static_cast<int16_t>(y);
}

int audio_active_count() {
    std::lock_guard<std::mutex> hold(active_lock);
    int count = 0;
    for (zorn_audio_object* object = active_objects; object; object = object->next) count++;
    return count;
}

int audio_dead_count() {
    std::lock_guard<std::mutex> hold(dead_lock);
    int count = 0;
    for (zorn_audio_object* object = dead_objects; object; object = object->next) count++;
    return count;
}
