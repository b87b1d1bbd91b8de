#pragma once
// What the widgets of this folder need of the main frame, as an interface the frame implements.
// The frame registers itself when it is built; widgets made without one (tests, a frame being
// torn down) do nothing where they would have called it.

class wxWindow;

class zorn_frame_link {
public:
    virtual ~zorn_frame_link() = default;
    // The command interpreter: every typed line and every button command comes here.
    virtual void process_user_command(const char* text, int echo) = 0;
    // Hands the keyboard back to the command line after a click in a panel.
    virtual bool transfer_focus_main(wxWindow* window) = 0;
    // Lets the main display follow new text again.
    virtual void unlock_main_scrollback() = 0;
};

void zorn_set_frame_link(zorn_frame_link* link);
// Null while no frame is registered.
zorn_frame_link* zorn_get_frame_link();

// The click sound of a button. FIXME: a zorn_audio_noise_tick once the audio objects exist;
// until then a hook that nothing sets.
extern void (*zorn_button_click_sound)();
