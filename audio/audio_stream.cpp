#include "audio/audio_stream.h"

#include <portaudio.h>

#include "audio/mixer.h"
#include "config/debug_log.h"

namespace {

constexpr double stream_sample_rate = 44100.0;
constexpr unsigned long stream_frames_per_buffer = 1024;

PaStream* audio_stream = nullptr;

void log_pa_error(const char* where, const char* what, PaError code) {
    if (zorn_debug_level >= 2)
        zorn_client_debug_printf("Error in %s(), '%s' - err code %d '%s'.\n", where, what, code,
                                 Pa_GetErrorText(code));
}

void log_no_device(const char* what) {
    if (zorn_debug_level >= 2) zorn_client_debug_printf("Error in %s() - %s.\n", "start_audio_internal", what);
}

// The audio thread: no allocation, no lock beyond the mixer's two.
int audio_callback(const void*, void* output, unsigned long frames, const PaStreamCallbackTimeInfo*,
                   PaStreamCallbackFlags, void*) {
    mix_buffer(static_cast<int16_t*>(output), frames);
    audio_startup_in_progress = 0;
    return audio_enabled ? paContinue : paComplete;
}

bool open_and_start_stream() {
    PaError code = Pa_Initialize();
    if (code != paNoError) {
        log_pa_error("start_audio_internal", "unable to initialize", code);
        return false;
    }
    PaStreamParameters output = {};
    output.device = Pa_GetDefaultOutputDevice();
    if (output.device == paNoDevice) {
        log_no_device("no device available");
        return false;
    }
    const PaDeviceInfo* info = Pa_GetDeviceInfo(output.device);
    if (!info) {
        log_no_device("bad device index");
        return false;
    }
    output.channelCount = 2;
    output.sampleFormat = paInt16;
    output.suggestedLatency = info->defaultLowOutputLatency;
    output.hostApiSpecificStreamInfo = nullptr;
    if (zorn_debug_level >= 2) {
        zorn_client_debug_printf("Requested output latency = %.4f seconds.\n", output.suggestedLatency);
        zorn_client_debug_printf("%d frames per buffer.\n.", static_cast<int>(stream_frames_per_buffer));
    }
    code = Pa_OpenStream(&audio_stream, nullptr, &output, stream_sample_rate, stream_frames_per_buffer,
                         paClipOff | paDitherOff, audio_callback, nullptr);
    if (code != paNoError) {
        log_pa_error("start_audio_internal", "unable to open stream", code);
        return false;
    }
    code = Pa_StartStream(audio_stream);
    if (code != paNoError) {
        log_pa_error("start_audio_internal", "unable to start stream", code);
        return false;
    }
    audio_startup_in_progress = 1;
    return true;
}

}  // namespace

int start_audio() {
    if (audio_startup_in_progress) {
        if (zorn_debug_level >= 2) zorn_client_debug_printf("Error in start_audio(), startup already in progress.\n");
        return 0;
    }
    if (audio_enabled) {
        if (zorn_debug_level >= 2) zorn_client_debug_printf("Error in start_audio(), audio already enabled.\n");
        return 0;
    }
    reap_audio_objects();
    audio_enabled = 1;
    if (open_and_start_stream()) return 1;
    // Terminating closes a stream that was opened but didn't start.
    Pa_Terminate();
    audio_startup_in_progress = 0;
    audio_enabled = 0;
    audio_stream = nullptr;
    return 0;
}

void stop_audio() {
    if (!audio_enabled) {
        if (zorn_debug_level >= 2) zorn_client_debug_printf("Error in stop_audio(), audio not enabled.\n");
        return;
    }
    audio_enabled = 0;
    release_audio();
    reap_audio_objects();
}

// Each start initialises PortAudio anew, so a release terminates it in every case: the device is
// let go, and the next start sees the devices of that moment. Terminating also closes a stream
// that failed to stop or close, so the pointer is dropped then too.
void release_audio() {
    if (!audio_stream) return;
    PaError code = Pa_StopStream(audio_stream);
    if (code != paNoError) {
        log_pa_error("release_audio", "unable to stop stream", code);
        Pa_Terminate();
        audio_stream = nullptr;
        audio_startup_in_progress = 0;
        return;
    }
    code = Pa_CloseStream(audio_stream);
    if (code != paNoError) log_pa_error("release_audio", "unable to close stream", code);
    Pa_Terminate();
    audio_stream = nullptr;
    audio_startup_in_progress = 0;
}
