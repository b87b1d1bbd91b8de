#pragma once
// Test sounds made at test time with sox and oggenc, and read back with oggdec as the reference
// decoding. A sine at a level well away from the mixer's bend, so a mono file mixes unchanged.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"

namespace sound_fixture {

// An Ogg Vorbis file of a sine: rate in Hz, 1 or 2 channels, length in seconds as sox reads it.
inline bool make_ogg(const std::string& path, int rate, int channels, const std::string& seconds,
                     int frequency = 440) {
    const std::string command = "mkdir -p \"$(dirname '" + path + "')\" && sox -q -V1 -n -r " + std::to_string(rate) +
                                " -c " + std::to_string(channels) + " -b 16 -t wav - synth " + seconds + " sine " +
                                std::to_string(frequency) + " vol 0.4 | oggenc -Q -o '" + path + "' -";
    return std::system(command.c_str()) == 0;
}

// The file's samples as oggdec decodes them: 16-bit signed little-endian, interleaved.
inline std::vector<int16_t> reference_samples(const std::string& ogg_path) {
    const std::string raw = ogg_path + ".raw";
    const std::string command = "oggdec -Q -R -b 16 -e 0 -s 1 -o '" + raw + "' '" + ogg_path + "'";
    std::vector<int16_t> samples;
    if (std::system(command.c_str()) != 0) return samples;
    const std::string bytes = read_file(raw);
    for (size_t i = 0; i + 1 < bytes.size(); i += 2)
        samples.push_back(static_cast<int16_t>(static_cast<uint8_t>(bytes[i]) | (static_cast<uint8_t>(bytes[i + 1]) << 8)));
    return samples;
}

// The 5 ms fades in and out over single values, as the soundpack applies them to a loaded sound.
inline std::vector<int16_t> faded(std::vector<int16_t> values, int rate, int channels) {
    const long n = 5L * rate * channels / 1000;
    const long count = static_cast<long>(values.size());
    if (5L * rate * channels < 1000 || n > count / channels) return values;
    for (long k = 0; k < n; k++) values[k] = static_cast<int16_t>(values[k] * k / n);
    for (long k = 0; k < n; k++) values[count - 1 - k] = static_cast<int16_t>(values[count - 1 - k] * k / n);
    return values;
}

}  // namespace sound_fixture
