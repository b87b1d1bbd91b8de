#pragma once
// What the panel tests share: the screen's pixels of a window, waiting for a paint, and the
// comparison with a reference picture (per-channel tolerance; LANTERN_UPDATE_REFERENCES=1 rewrites
// the reference; a failing picture stays behind in the build tree).

#include <gtest/gtest.h>
#include <wx/dcclient.h>
#include <wx/dcmemory.h>
#include <wx/image.h>
#include <wx/imagpng.h>

#include <cstdlib>
#include <string>
#include <sys/stat.h>

#include "base/rgb.h"
#include "tests/support/gui_main.h"
#include "tests/support/screen.h"

inline zorn_rgb image_pixel(const wxImage& image, int x, int y) {
    return zorn_rgb(image.GetRed(x, y), image.GetGreen(x, y), image.GetBlue(x, y));
}

// What the window shows, read back from the screen.
inline wxImage screen_image(wxWindow* window) { return screen_of(window); }

// Runs the event loop until the counter passes `before`, then lets the screen settle.
inline bool wait_for_paint(const int& counter, int before) {
    const bool painted = pump_until([&] { return counter > before; });
    pump_for(20);
    return painted;
}

inline void ensure_png_handler() {
    if (!wxImage::FindHandler(wxBITMAP_TYPE_PNG)) wxImage::AddHandler(new wxPNGHandler);
}

// Compares with tests/panels/reference/<name>.png; reports the first pixel off by more than the
// tolerance in any channel.
inline void expect_reference(const wxImage& actual, const std::string& name, int tolerance = 24) {
    ensure_png_handler();
    const std::string reference = std::string(LANTERN_SOURCE_DIR) + "/tests/panels/reference/" + name + ".png";
    if (const char* update = std::getenv("LANTERN_UPDATE_REFERENCES"); update && std::string(update) == "1") {
        ASSERT_TRUE(actual.SaveFile(reference, wxBITMAP_TYPE_PNG)) << reference;
        return;
    }
    wxImage expected;
    ASSERT_TRUE(expected.LoadFile(reference, wxBITMAP_TYPE_PNG))
        << "no reference " << reference << " (LANTERN_UPDATE_REFERENCES=1 makes it)";
    bool same = expected.GetSize() == actual.GetSize();
    std::string first;
    long bad = 0;
    for (int y = 0; same && y < actual.GetHeight(); ++y) {
        for (int x = 0; x < actual.GetWidth(); ++x) {
            const zorn_rgb a = image_pixel(actual, x, y), e = image_pixel(expected, x, y);
            if (std::abs(a.red - e.red) <= tolerance && std::abs(a.green - e.green) <= tolerance &&
                std::abs(a.blue - e.blue) <= tolerance)
                continue;
            if (!bad++)
                first = "first bad pixel at " + std::to_string(x) + "," + std::to_string(y) + ": got " +
                        std::to_string(a.red) + "," + std::to_string(a.green) + "," + std::to_string(a.blue) +
                        ", expected " + std::to_string(e.red) + "," + std::to_string(e.green) + "," +
                        std::to_string(e.blue);
        }
    }
    if (same && bad == 0) return;
    const std::string artifacts = std::string(LANTERN_BINARY_DIR) + "/artifacts";
    mkdir(artifacts.c_str(), 0755);
    const std::string kept = artifacts + "/" + name + "_actual.png";
    actual.SaveFile(kept, wxBITMAP_TYPE_PNG);
    if (!same)
        ADD_FAILURE() << name << ": picture is " << actual.GetWidth() << "x" << actual.GetHeight() << ", reference "
                      << expected.GetWidth() << "x" << expected.GetHeight() << "; kept " << kept;
    else
        ADD_FAILURE() << name << ": " << first << " (" << bad << " pixels differ); kept " << kept;
}
