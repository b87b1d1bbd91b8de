#pragma once
// What a window shows on the X server, read back for pixel checks.

#include <wx/bitmap.h>
#include <wx/dcclient.h>
#include <wx/dcmemory.h>
#include <wx/image.h>
#include <wx/window.h>

#include <algorithm>

inline wxImage screen_of(wxWindow* window) {
    const wxSize size = window->GetClientSize();
    wxBitmap shot(size.GetWidth(), size.GetHeight(), 24);
    wxMemoryDC memory(shot);
    wxClientDC screen(window);
    memory.Blit(0, 0, size.GetWidth(), size.GetHeight(), &screen, 0, 0);
    memory.SelectObject(wxNullBitmap);
    return shot.ConvertToImage();
}

inline bool same_pixels(const wxImage& a, const wxImage& b) {
    if (a.GetWidth() != b.GetWidth() || a.GetHeight() != b.GetHeight()) return false;
    const size_t bytes = static_cast<size_t>(a.GetWidth()) * a.GetHeight() * 3;
    return std::equal(a.GetData(), a.GetData() + bytes, b.GetData());
}
