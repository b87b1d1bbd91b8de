#include "theme/builtin_images.h"

#include <wx/image.h>
#include <wx/mstream.h>

#include "config/debug_log.h"
#include "theme/bitmap.h"

extern const unsigned char* const zorn_builtin_png_data[zorn_builtin_image_count];
extern const std::size_t zorn_builtin_png_size[zorn_builtin_image_count];

namespace {

zorn_bitmap* images[zorn_builtin_image_count] = {};
bool loaded = false;

}  // namespace

bool zorn_load_builtin_images() {
    if (loaded) return true;
    if (!wxImage::FindHandler(wxBITMAP_TYPE_PNG)) wxImage::AddHandler(new wxPNGHandler);
    bool all = true;
    for (int i = 0; i < zorn_builtin_image_count; i++) {
        wxMemoryInputStream stream(zorn_builtin_png_data[i], zorn_builtin_png_size[i]);
        wxImage image;
        if (!image.LoadFile(stream, wxBITMAP_TYPE_PNG)) {
            if (zorn_debug_level >= 1)
                zorn_client_debug_printf("Error in zorn_load_builtin_images(), image %d does not decode.\n", i);
            all = false;
            continue;
        }
        images[i] = new zorn_bitmap(image);
    }
    loaded = true;
    return all;
}

const zorn_bitmap* zorn_builtin_image(int index) {
    if (index < 0 || index >= zorn_builtin_image_count) return nullptr;
    return images[index];
}

const unsigned char* zorn_builtin_image_png(int index, std::size_t* size) {
    const bool good = index >= 0 && index < zorn_builtin_image_count;
    if (size) *size = good ? zorn_builtin_png_size[index] : 0;
    return good ? zorn_builtin_png_data[index] : nullptr;
}
