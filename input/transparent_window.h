#pragma once
// A group of widgets with no window of its own. Its buttons are direct children of `parent` at
// absolute positions, so the frame's painted background shows between them: that is the
// transparency. Subclasses place (layout), show (set_visible) and recolour (change_theme) them.

class wxWindow;

class zorn_transparent_window {
public:
    explicit zorn_transparent_window(wxWindow* parent_window) : parent(parent_window) {}
    virtual ~zorn_transparent_window() = default;
    zorn_transparent_window(const zorn_transparent_window&) = delete;
    zorn_transparent_window& operator=(const zorn_transparent_window&) = delete;

    virtual void set_visible(int value) = 0;
    virtual void layout() = 0;
    // Renders the images of every button again from the current button theme.
    virtual void change_theme() = 0;

    // Stores the rectangle and calls layout.
    void set_rect(int new_x, int new_y, int new_width, int new_height) {
        x = new_x;
        y = new_y;
        width = new_width;
        height = new_height;
        layout();
    }
    // Stores visible and calls set_visible.
    void show(int value) {
        visible = value;
        set_visible(value);
    }

    int x = 0;
    int y = 0;
    int width = 10;
    int height = 10;
    int visible = 1;
    wxWindow* parent;
};
