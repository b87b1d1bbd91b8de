#include "theme/font.h"

#include <wx/dcmemory.h>

#include "theme/bitmap.h"

zorn_font::zorn_font(int point_size, wxFontFamily family, wxFontStyle style, wxFontWeight weight, bool underlined,
                     const wxString& face_name, wxFontEncoding encoding) {
    for (auto& slot : glyphs) slot = nullptr;
    Create(point_size, family, style, weight, underlined, face_name, encoding);
    render_glyphs();
}

zorn_font::~zorn_font() {
    for (auto& slot : glyphs) {
        delete slot;
        slot = nullptr;
    }
}

// 95 small bitmaps per call: a font change costs this once so that painting text never needs a
// device context.
void zorn_font::render_glyphs() {
    zorn_bitmap scratch(16, 16);
    wxMemoryDC measure_dc(scratch);
    measure_dc.SetFont(*this);
    for (int code = zorn_first_glyph; code <= zorn_last_glyph; code++) {
        const wxString text((wxChar)code);
        wxCoord width = 0, height = 0;
        measure_dc.GetTextExtent(text, &width, &height);
        zorn_bitmap* glyph = nullptr;
        // A character the system gives no area has no picture: it measures and draws as nothing.
        if (width > 0 && height > 0) {
            glyph = new zorn_bitmap(width, height);
            glyph->Clear(zorn_black);
            wxMemoryDC dc(*glyph);
            dc.SetFont(*this);
            dc.SetTextForeground(*wxWHITE);
            dc.SetTextBackground(*wxBLACK);
            dc.DrawText(text, 0, 0);
            dc.SelectObject(wxNullBitmap);
        }
        delete glyphs[code];
        glyphs[code] = glyph;
    }
    measure_dc.SelectObject(wxNullBitmap);
}

void zorn_font::SetPointSize(int size) {
    wxFont::SetPointSize(size);
    render_glyphs();
}

void zorn_font::copy_from(const wxFont& other) {
    if (!other.IsOk()) return;
    SetFaceName(other.GetFaceName());
    SetStyle(other.GetStyle());
    SetUnderlined(other.GetUnderlined());
    SetWeight(other.GetWeight());
    SetPointSize(other.GetPointSize());
}

bool zorn_font::set_native_description(const wxString& description) {
    wxFont candidate;
    if (description.empty() || !candidate.SetNativeFontInfo(description) || !candidate.IsOk()) return false;
    wxFont::operator=(candidate);
    render_glyphs();
    return true;
}

const zorn_bitmap* zorn_font::glyph(int code) const {
    if (code < zorn_first_glyph || code > zorn_last_glyph) return nullptr;
    return glyphs[code];
}

void zorn_font::get_char_size(int ch, int* width, int* height) const {
    const zorn_bitmap* g = glyph(ch);
    if (width) *width = g ? g->GetWidth() : 0;
    if (height) *height = g ? g->GetHeight() : 0;
}

void zorn_font::measure_text(const char* text, int* width, int* height) const {
    if (!text) return;
    int total = 0, last_height = 0;
    for (const unsigned char* p = (const unsigned char*)text; *p; p++) {
        const zorn_bitmap* g = glyph(*p & 0x7f);
        if (!g) continue;
        total += g->GetWidth();
        last_height = g->GetHeight();
    }
    if (width) *width = total;
    if (height) *height = last_height;
}

namespace {

zorn_font* main_font = nullptr;
zorn_font* button_font = nullptr;
zorn_font* status_font = nullptr;

}  // namespace

void zorn_create_fonts(int main_size) {
    if (!main_font)
        main_font = new zorn_font(main_size, wxFONTFAMILY_MODERN, wxFONTSTYLE_NORMAL, wxFONTWEIGHT_NORMAL);
    if (!button_font)
        button_font = new zorn_font(zorn_default_button_font_size, wxFONTFAMILY_TELETYPE, wxFONTSTYLE_NORMAL,
                                    wxFONTWEIGHT_NORMAL);
    if (!status_font)
        status_font = new zorn_font(zorn_default_status_font_size, wxFONTFAMILY_TELETYPE, wxFONTSTYLE_NORMAL,
                                    wxFONTWEIGHT_NORMAL);
}

zorn_font* zorn_main_font() {
    if (!main_font) zorn_create_fonts();
    return main_font;
}

zorn_font* zorn_button_font() {
    if (!button_font) zorn_create_fonts();
    return button_font;
}

zorn_font* zorn_status_font() {
    if (!status_font) zorn_create_fonts();
    return status_font;
}
