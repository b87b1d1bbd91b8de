#include "display/reader_window.h"

#include <dlfcn.h>
#include <wx/event.h>

#include <algorithm>

#include "input/frame_link.h"

namespace {

// The accessibility calls of the toolkit, found in the process when the toolkit is loaded.
struct atk_calls {
    void* (*get_accessible)(void* widget) = nullptr;
    void (*set_name)(void* accessible, const char* name) = nullptr;
    void (*set_role)(void* accessible, int role) = nullptr;
    int (*role_for_name)(const char* name) = nullptr;
    bool ok = false;

    atk_calls() {
        get_accessible = reinterpret_cast<void* (*)(void*)>(dlsym(RTLD_DEFAULT, "gtk_widget_get_accessible"));
        set_name = reinterpret_cast<void (*)(void*, const char*)>(dlsym(RTLD_DEFAULT, "atk_object_set_name"));
        set_role = reinterpret_cast<void (*)(void*, int)>(dlsym(RTLD_DEFAULT, "atk_object_set_role"));
        role_for_name = reinterpret_cast<int (*)(const char*)>(dlsym(RTLD_DEFAULT, "atk_role_for_name"));
        ok = get_accessible && set_name && set_role && role_for_name;
    }
};

const atk_calls& atk() {
    static const atk_calls calls;
    return calls;
}

void* accessible_of(wxWindow* window) {
    if (!window || !atk().ok) return nullptr;
    GtkWidget* widget = window->GetConnectWidget();
    return widget ? atk().get_accessible(widget) : nullptr;
}

}  // namespace

void zorn_set_accessible_name(wxWindow* window, const std::string& name) {
    if (void* accessible = accessible_of(window)) atk().set_name(accessible, name.c_str());
}

void zorn_set_accessible_password(wxWindow* window, bool password) {
    void* accessible = accessible_of(window);
    if (!accessible) return;
    const int role = atk().role_for_name(password ? "password text" : "text");
    if (role > 0) atk().set_role(accessible, role);
}

zorn_reader_mirror::zorn_reader_mirror(wxWindow* parent)
    : wxTextCtrl(parent, wxID_ANY, wxEmptyString, wxDefaultPosition, wxSize(20, 20),
                 wxTE_MULTILINE | wxTE_READONLY | wxTE_NOHIDESEL | wxBORDER_NONE, wxDefaultValidator,
                 wxT("screen reader mirror")) {
    SetBackgroundColour(wxColour(0, 0, 0));
    SetForegroundColour(wxColour(192, 192, 192));
    zorn_set_accessible_name(this, zorn_mirror_accessible_name);
    Bind(wxEVT_KEY_DOWN, &zorn_reader_mirror::key_down, this);
}

void zorn_reader_mirror::apply(const zorn_mirror_buffer::update& update) {
    if (update.empty()) return;
    const long old_end = GetLastPosition();
    long point = GetInsertionPoint();
    const bool following = point >= old_end;
    if (update.replace) {
        ChangeValue(wxString::FromUTF8(update.append.data(), update.append.size()));
        point = following ? GetLastPosition() : 0;
    } else {
        if (update.remove_front > 0) {
            const long removed = std::min(static_cast<long>(update.remove_front), old_end);
            Remove(0, removed);
            point = std::max(point - removed, 0L);
        }
        AppendText(wxString::FromUTF8(update.append.data(), update.append.size()));
        if (following) point = GetLastPosition();
    }
    SetInsertionPoint(point);
}

// Escape hands the keyboard back to the command line; the rest is the control's own review.
void zorn_reader_mirror::key_down(wxKeyEvent& event) {
    zorn_frame_link* link = zorn_get_frame_link();
    if (event.GetKeyCode() == WXK_ESCAPE && link && link->transfer_focus_main(this)) return;
    event.Skip();
}
