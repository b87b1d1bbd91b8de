#pragma once
// The button family. A button draws nothing at paint time: render_images builds the pictures of
// all its states up front, and a paint copies one of them. A button acts on press, not release.

#include "input/embedded_window.h"
#include "theme/bitmap.h"

class zorn_font;
class wxMouseEvent;
class wxCommandEvent;

// Longest label, name or command of a button, in bytes; longer text is cut.
constexpr int zorn_label_limit = 400;
// chars_that_fit counts at most this many characters.
constexpr int zorn_fit_limit = 254;

// Bevel styles of draw_button_face.
enum : int { zorn_bevel_none = 0, zorn_bevel_raised = 1, zorn_bevel_sunk = 2 };
// Sides of draw_edges.
enum : int { zorn_edge_top = 1, zorn_edge_right = 2, zorn_edge_bottom = 4, zorn_edge_left = 8 };
// button_state values.
enum : int { zorn_button_up = 0, zorn_button_down = 1, zorn_button_disabled = 2 };

// Clear with the face colour, then the two-pixel bevel of the style (none, raised, sunk).
void draw_button_face(zorn_bitmap& bitmap, const zorn_rgb& face, int bevel_style);
// A one-pixel rectangle at the edge, then the four corner pixels black.
void draw_rounded_edge(zorn_bitmap& bitmap, const zorn_rgb& color, int width, int height);
// mask: 8 left (x 0 and 1), 2 right (x w-1 and w-2), 1 top (y 0), 4 bottom (y h-1). With a null
// colour the inner left column is grey 128 and every other line white; otherwise all in it.
void draw_edges(zorn_bitmap& bitmap, int width, int height, int mask, const zorn_rgb* color);
// How many leading characters measure at most width - 2 pixels, counting up to 254; at least 1 for
// a non-empty text, 0 for an empty or null one.
int chars_that_fit(const zorn_font* font, const char* text, int width);

class zorn_image_button : public zorn_embedded_window {
public:
    // Borderless, 20 by 20, named "image button" unless told otherwise.
    zorn_image_button(wxWindow* parent, wxWindowID id = wxID_ANY, const wxPoint& pos = wxDefaultPosition,
                      const wxSize& size = wxSize(20, 20), long style = wxBORDER_NONE,
                      const wxString& name = wxT("image button"));
    ~zorn_image_button() override;

    // Builds the five state pictures.
    virtual void render_images() = 0;

    void resize_handler(bool size_changed) override;
    void repaint_internal(zorn_bitmap& bitmap) override;
    bool animation_callback(int elapsed_ms) override;

    // Copy the picture in and repaint.
    void set_normal_image(const zorn_bitmap& bitmap);
    void set_normal_hover_image(const zorn_bitmap& bitmap);
    void set_pressed_image(const zorn_bitmap& bitmap);
    void set_pressed_hover_image(const zorn_bitmap& bitmap);
    void set_disabled_image(const zorn_bitmap& bitmap);
    void set_state(int value);
    // hover 0, state up (value non-zero) or disabled, repaint.
    void set_enabled(int value);
    // The 16-phase flash of the edge.
    void flash_button();
    // Clears hover, then wxWindow's.
    bool Show(bool show = true) override;

    zorn_bitmap normal_image;
    zorn_bitmap normal_hover_image;
    zorn_bitmap pressed_image;
    zorn_bitmap pressed_hover_image;
    zorn_bitmap disabled_image;
    int has_normal_hover;
    int has_pressed_hover;
    int toggle_mode;
    int button_state;  // zorn_button_up, zorn_button_down, zorn_button_disabled
    int hover;

protected:
    // wxEVT_BUTTON to this window's own handler, and the click sound.
    void fire_click();

private:
    void mouse_handler(wxMouseEvent& event);

    wxDECLARE_EVENT_TABLE();
};

// A button with a text label in the status font, coloured from the current button theme.
class zorn_button : public zorn_image_button {
public:
    zorn_button(wxWindow* parent, wxWindowID id = wxID_ANY, const wxPoint& pos = wxDefaultPosition,
                const wxSize& size = wxSize(20, 20), long style = wxBORDER_NONE,
                const wxString& name = wxT("image button"));

    void render_images() override;
    // Copies the text (cut at 400 bytes; null empties it) and renders.
    void set_label(const char* text);
    // Bright (1) or dim colours; renders.
    void set_lit(int value);
    const char* get_label() const { return label; }

    char label[zorn_label_limit + 1];
    int lit;
};

// A button that sends a command line when clicked.
class zorn_command_button : public zorn_button {
public:
    // Empty label and command, disabled.
    zorn_command_button(wxWindow* parent, wxWindowID id = wxID_ANY, const wxPoint& pos = wxDefaultPosition,
                        const wxSize& size = wxSize(20, 20), long style = wxBORDER_NONE,
                        const wxString& name = wxT("image button"));

    // Label, command (cut at 400 bytes; null empties it) and enabled state.
    void setup(const char* new_label, const char* new_command, int enabled);
    // Empty label and command, disabled.
    void clear();
    const char* get_command() const { return command; }

    char command[zorn_label_limit + 1];

private:
    void click_handler(wxCommandEvent& event);

    wxDECLARE_EVENT_TABLE();
};
