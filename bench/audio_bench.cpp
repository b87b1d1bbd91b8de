// What sound costs: one 1024-frame callback of the mixer with 1, 8 and 32 objects playing (the
// callback has 23.2 ms of sound to fill; the goal is under 1% of that at 8 objects), and the
// decoding of a 10 s stereo sound file, which stalls the main thread at the sound's first use
// (goal under 60 ms). Figures: bench/README.md.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "audio/audio_objects.h"
#include "audio/mixer.h"
#include "audio/ogg_decode.h"
#include "config/debug_log.h"

namespace {

constexpr unsigned long callback_frames = 1024;
constexpr double callback_seconds = 1024.0 / 44100.0;

// Stereo and mono playouts over ten seconds of a ramp, with ticks and bumps among them, as a busy
// moment of the game would have them; refilled (outside the timing) as they end.
void BM_MixerCallback(benchmark::State& state) {
    const int objects = static_cast<int>(state.range(0));
    static std::vector<unsigned char> data = [] {
        std::vector<unsigned char> bytes(1764000);
        for (size_t i = 0; i < bytes.size(); i++) bytes[i] = static_cast<unsigned char>(i * 31 + (i >> 9));
        return bytes;
    }();
    audio_enabled = 1;
    std::vector<int16_t> output(2 * callback_frames);
    auto refill = [&] {
        reap_audio_objects();
        for (int i = audio_active_count(); i < objects; i++) {
            switch (i % 4) {
                case 0: new zorn_audio_playout_stereo_memory(data.data(), static_cast<long>(data.size()), nullptr); break;
                case 1: new zorn_audio_playout_mono_memory(data.data(), static_cast<long>(data.size()), nullptr); break;
                case 2: new zorn_audio_noise_tick(); break;
                default: new zorn_audio_wall_bump(); break;
            }
        }
    };
    refill();
    for (auto _ : state) {
        mix_buffer(output.data(), callback_frames);
        benchmark::DoNotOptimize(output.data());
        if (audio_active_count() < objects) {
            state.PauseTiming();
            refill();
            state.ResumeTiming();
        }
    }
    audio_enabled = 0;
    reap_audio_objects();
    // Time spent over sound made, in percent.
    state.counters["percent_of_buffer"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * callback_seconds / 100.0,
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_MixerCallback)->Arg(1)->Arg(8)->Arg(32)->Unit(benchmark::kMicrosecond);

void BM_DecodeTenSecondsStereo(benchmark::State& state) {
    const std::string path = "/tmp/lantern_bench_sound_" + std::to_string(getpid()) + ".ogg";
    const std::string make = "sox -q -V1 -n -r 44100 -c 2 -b 16 -t wav - synth 10 pinknoise vol 0.3 | oggenc -Q -o '" +
                             path + "' -";
    if (std::system(make.c_str()) != 0) {
        state.SkipWithError("sox and oggenc are needed");
        return;
    }
    zorn_client_debug_events_off();
    for (auto _ : state) {
        zorn_decoded_sound decoded;
        if (zorn_ogg_decode_from_file_to_memory(path.c_str(), zorn_sound_decode_limit, &decoded) != ogg_decode_ok)
            state.SkipWithError("decode failed");
        benchmark::DoNotOptimize(decoded.samples);
        std::free(decoded.samples);
    }
    std::remove(path.c_str());
}
BENCHMARK(BM_DecodeTenSecondsStereo)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
