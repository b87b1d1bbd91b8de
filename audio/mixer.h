#pragma once
// The mixer: every sound object sits on one list that the audio thread sums one sample frame at a
// time. The main thread adds objects; the audio thread moves an object that has ended to a second
// list; the main thread destroys what is there later, so the audio thread never frees memory.
//
// Locks: active_lock guards the active list, dead_lock the dead list. Where both are held the order
// is always active_lock, then dead_lock; the main thread never holds both.

#include <atomic>
#include <cstdint>

// Base of everything that makes sound. Making an object plays it: the constructor of each concrete
// class ends with add_audio_object, and from then on the mixer owns it.
class zorn_audio_object {
public:
    zorn_audio_object() = default;
    virtual ~zorn_audio_object() = default;
    zorn_audio_object(const zorn_audio_object&) = delete;
    zorn_audio_object& operator=(const zorn_audio_object&) = delete;

    // One stereo sample; false when the object has ended (the samples are then unused). Runs on
    // the audio thread under active_lock: a few integer operations, no lock, no allocation.
    virtual bool next_sample(int16_t* left, int16_t* right) = 0;

    zorn_audio_object* next = nullptr;  // link of the active or the dead list
};

// Set from the start of start_audio until stop_audio or a failed start. Read by the audio thread.
extern std::atomic<int> audio_enabled;
// Set from a successful stream start until the first callback has run.
extern std::atomic<int> audio_startup_in_progress;

// Main thread. Puts the object at the head of the active list, then reaps: while audio is off the
// object is destroyed at once, so the caller must not touch it afterwards.
void add_audio_object(zorn_audio_object* object);
// Main thread. Destroys the dead objects, and every active one too while audio is off.
void reap_audio_objects();

// Audio thread: one sample frame of the whole mix.
void mix_sample_frame(int16_t* left, int16_t* right);
// Audio thread: frames interleaved stereo frames into output, as the stream callback wants them.
void mix_buffer(int16_t* output, unsigned long frames);

// The curve that leaves ordinary levels alone and bends the peaks of a crowded mix.
int16_t soft_limit(int32_t x);

// Objects on each list now (tests and benchmarks; takes the list's lock).
int audio_active_count();
int audio_dead_count();
