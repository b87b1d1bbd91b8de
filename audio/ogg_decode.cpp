#include "audio/ogg_decode.h"

#include <vorbis/vorbisfile.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "config/debug_log.h"

namespace {

constexpr int read_piece = 4096;

}  // namespace

int zorn_ogg_decode_from_file_to_memory(const char* path, long max_size, zorn_decoded_sound* result) {
    *result = zorn_decoded_sound();
    if (max_size < 1024) {
        zorn_client_debug_event("zorn_ogg_decode_from_file_to_memory() - max size smaller than 1024 bytes.",
                                zorn_cat_warning);
        return ogg_decode_too_large;
    }
    FILE* file = std::fopen(path, "rb");
    if (!file) {
        zorn_client_debug_eventf(zorn_cat_64,
                                 "Warning in zorn_ogg_decode_from_file_to_memory() - unable to open file '%s'.", path);
        return ogg_decode_cannot_open;
    }
    OggVorbis_File vorbis;
    if (ov_open(file, &vorbis, nullptr, 0) < 0) {
        zorn_client_debug_event("Warning in zorn_ogg_decode_from_file_to_memory() - not an Ogg bitstream?", zorn_cat_64);
        std::fclose(file);
        return ogg_decode_bad_format;
    }
    // From here on ov_clear closes the file.
    const vorbis_info* info = ov_info(&vorbis, -1);
    if (!info) {
        zorn_client_debug_event("Warning in zorn_ogg_decode_from_file_to_memory() - unable to fetch vfile info.",
                                zorn_cat_64);
        ov_clear(&vorbis);
        return ogg_decode_bad_format;
    }
    result->rate = info->rate;
    result->channels = info->channels;
    // A length the file can't tell (or no channels at all) leaves nothing to decode into.
    const ogg_int64_t frames = ov_pcm_total(&vorbis, -1);
    if (frames < 0 || info->channels < 1) {
        ov_clear(&vorbis);
        return ogg_decode_failed;
    }
    const ogg_int64_t bytes_per_frame = static_cast<ogg_int64_t>(info->channels) * 2;
    const ogg_int64_t estimated = frames > INT64_MAX / bytes_per_frame ? INT64_MAX : frames * bytes_per_frame;
    if (estimated > max_size) {
        zorn_client_debug_eventf(
            zorn_cat_64,
            "Warning in zorn_ogg_decode_from_file_to_memory() - file is too large for constraint, estimated size %ld.",
            static_cast<long>(estimated));
        ov_clear(&vorbis);
        return ogg_decode_too_large;
    }
    const long size = static_cast<long>(estimated);
    unsigned char* buffer = static_cast<unsigned char*>(std::malloc(size > 0 ? size : 1));
    if (!buffer) {
        ov_clear(&vorbis);
        return ogg_decode_failed;
    }
    long total = 0;
    char piece[read_piece];
    while (total < size) {
        int stream = 0;
        long got = ov_read(&vorbis, piece, read_piece, 0, 2, 1, &stream);
        if (got == 0) break;
        if (got < 0) {
            zorn_client_debug_event("Warning in zorn_ogg_decode_from_file_to_memory() - error in ogg bitstream.",
                                    zorn_cat_64);
            std::free(buffer);
            ov_clear(&vorbis);
            return ogg_decode_bad_format;
        }
        if (total + got > size) {
            zorn_client_debug_eventf(
                zorn_cat_128,
                "Warning in zorn_ogg_decode_from_file_to_memory() - read data past end of buffer?  Got %ld, expected %ld.",
                total + got, size);
            got = size - total;
        }
        std::memcpy(buffer + total, piece, static_cast<size_t>(got));
        total += got;
    }
    if (total != size)
        zorn_client_debug_eventf(
            zorn_cat_128,
            "Warning in zorn_ogg_decode_from_file_to_memory() - done reading, total size %ld, expected %ld.", total,
            size);
    ov_clear(&vorbis);
    result->samples = buffer;
    result->length = total;
    return ogg_decode_ok;
}
