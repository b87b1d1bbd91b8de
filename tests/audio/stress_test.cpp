// The main thread adds and reaps objects while another thread runs the stream's callback work as
// fast as it can. Meant to be run under ThreadSanitizer as well: the lists, the locks and the
// playout counts are the only shared state.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "audio/audio_objects.h"
#include "audio/mixer.h"
#include "audio/sound_data.h"

TEST(AudioStress, ObjectsComeAndGoWhileTheCallbackRuns) {
    std::vector<unsigned char> data(4 * 300);
    for (size_t i = 0; i < data.size(); i++) data[i] = static_cast<unsigned char>(i * 7);
    sound_data sound;
    audio_enabled = 1;
    std::atomic<bool> running{true};
    std::atomic<long> buffers{0};
    std::thread callback([&] {
        std::vector<int16_t> output(2 * 1024);
        while (running) {
            mix_buffer(output.data(), 1024);
            buffers++;
        }
    });
    for (int i = 0; i < 4000; i++) {
        switch (i % 4) {
            case 0: new zorn_audio_noise_tick(); break;
            case 1: new zorn_audio_wall_bump(); break;
            case 2: new zorn_audio_playout_stereo_memory(data.data(), static_cast<long>(data.size()), &sound); break;
            case 3: new zorn_audio_playout_mono_memory(data.data(), static_cast<long>(data.size()) - 1, &sound); break;
        }
        if (i % 64 == 0) std::this_thread::yield();
    }
    // Let the callback finish off what is left, then stop it.
    while (audio_active_count() > 0) std::this_thread::yield();
    running = false;
    callback.join();
    EXPECT_GT(buffers.load(), 0);
    reap_audio_objects();
    EXPECT_EQ(audio_dead_count(), 0);
    {
        std::lock_guard<std::mutex> hold(sound.lock);
        EXPECT_EQ(sound.playout_count, 0);
    }
    audio_enabled = 0;
}
