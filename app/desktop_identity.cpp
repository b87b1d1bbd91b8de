#include "app/desktop_identity.h"

#include <glib.h>
#include <wx/app.h>
#include <wx/iconbndl.h>
#include <wx/image.h>
#include <wx/mstream.h>

#include <cstddef>

#include "app/main_frame.h"
#include "config/debug_log.h"

// The icon's PNG files, rendered from the source picture at build time, smallest first.
extern const unsigned char* const zorn_app_icon_png_data[];
extern const std::size_t zorn_app_icon_png_size[];
extern const int zorn_app_icon_png_count;

void zorn_set_desktop_identity(wxApp* app) {
    // The program name, not argv[0]: a renamed or symlinked binary stays the same application.
    g_set_prgname(LANTERN_APP_ID);
    // wxGTK hands the class name to GDK as it starts.
    app->SetClassName(wxT(LANTERN_WINDOW_CLASS));
}

bool zorn_load_application_icon() {
    if (!wxImage::FindHandler(wxBITMAP_TYPE_PNG)) wxImage::AddHandler(new wxPNGHandler);
    wxIconBundle icons;
    bool all = true;
    for (int i = 0; i < zorn_app_icon_png_count; i++) {
        wxMemoryInputStream stream(zorn_app_icon_png_data[i], zorn_app_icon_png_size[i]);
        wxImage image;
        if (!image.LoadFile(stream, wxBITMAP_TYPE_PNG)) {
            if (zorn_debug_level >= 1)
                zorn_client_debug_printf("Error in zorn_load_application_icon(), size %d does not decode.\n", i);
            all = false;
            continue;
        }
        wxIcon icon;
        icon.CopyFromBitmap(wxBitmap(image));
        icons.AddIcon(icon);
    }
    if (!icons.IsEmpty()) zorn_set_frame_icons(icons);
    return all;
}
