#pragma once
// A wxFont that keeps a picture of each printable character (codes 32 to 126), drawn white on
// black at the size the system gives for that character alone. Text is then painted by copying
// these pictures (zorn_bitmap::DrawText): no device context at paint time. Every change of the
// font renders all 95 glyphs again, so text drawn afterwards is right by itself.

#include <wx/font.h>
#include <wx/string.h>

class zorn_bitmap;

constexpr int zorn_glyph_slots = 128;
constexpr int zorn_first_glyph = 32;
constexpr int zorn_last_glyph = 126;

// Point sizes at start-up.
constexpr int zorn_default_font_size = 10;
constexpr int zorn_default_button_font_size = 7;
constexpr int zorn_default_status_font_size = 10;
// Later changes set the status font from the button font, this much larger.
constexpr int zorn_status_font_size_offset = 2;

class zorn_font : public wxFont {
public:
    // wxFont's Create with these arguments, then render_glyphs.
    zorn_font(int point_size, wxFontFamily family, wxFontStyle style, wxFontWeight weight,
              bool underlined = false, const wxString& face_name = wxEmptyString,
              wxFontEncoding encoding = wxFONTENCODING_DEFAULT);
    ~zorn_font() override;
    zorn_font(const zorn_font&) = delete;
    zorn_font& operator=(const zorn_font&) = delete;

    // Makes all glyph pictures anew.
    void render_glyphs();
    // wxFont's, then render_glyphs.
    void SetPointSize(int size) override;
    // Takes face name, style, underline flag, weight and, last, point size (not the family), then
    // renders the glyphs.
    void copy_from(const wxFont& other);
    // Sets this font from a native description, keeping the glyphs in step; false if the
    // description is not usable (the font is unchanged then).
    bool set_native_description(const wxString& description);

    // One character's size; 0, 0 for codes outside 32 to 126 or a missing glyph. Either pointer
    // may be null.
    void get_char_size(int ch, int* width, int* height) const;
    // As zorn_bitmap::MeasureText, for callers without a bitmap.
    void measure_text(const char* text, int* width, int* height) const;
    // The picture of a code, or null (codes outside 32 to 126).
    const zorn_bitmap* glyph(int code) const;

private:
    zorn_bitmap* glyphs[zorn_glyph_slots];
};

// The three global fonts. Made at first use (OnInit makes them in its order) and never replaced,
// only changed; they live until the process ends. Need a running wx application.
zorn_font* zorn_main_font();    // text displays, line editor, letters on the automap
zorn_font* zorn_button_font();  // key names on function key buttons
zorn_font* zorn_status_font();  // button labels, status displays, group display, map title
// Makes the three fonts (if not made yet) with the main font at main_size points.
void zorn_create_fonts(int main_size = zorn_default_font_size);
