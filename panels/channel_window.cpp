#include "panels/channel_window.h"

#include <wx/event.h>

#include <algorithm>
#include <cstring>

#include "config/debug_log.h"
#include "input/frame_link.h"
#include "theme/font.h"
#include "theme/theme.h"

namespace {

// Tab pictures: flat face, centred label, edges left, right and top with two lighter corners.
void render_tab(zorn_bitmap& bitmap, const zorn_rgb& face, const zorn_rgb& label_color, const zorn_rgb& edge,
                const char* label) {
    const int w = bitmap.GetWidth(), h = bitmap.GetHeight();
    draw_button_face(bitmap, face, zorn_bevel_none);
    zorn_font* font = zorn_status_font();
    const int fit = chars_that_fit(font, label, w);
    if (fit > 0) {
        char shown[zorn_fit_limit + 1];
        std::memcpy(shown, label, static_cast<size_t>(fit));
        shown[fit] = '\0';
        int text_width = 0, text_height = 0;
        font->measure_text(shown, &text_width, &text_height);
        bitmap.DrawTextTransparent(font, shown, std::max((w - text_width) / 2, 0), std::max((h - text_height) / 2, 0),
                                   label_color);
    }
    draw_edges(bitmap, w, h, zorn_edge_left | zorn_edge_right | zorn_edge_top, &edge);
    bitmap.SetPixel(2, 1, edge);
    bitmap.SetPixel(w - 3, 1, edge);
    bitmap.SetPixel(0, 0, zorn_black);
    bitmap.SetPixel(w - 1, 0, zorn_black);
}

// Picture state of a tab: selected 0, lit by new text 1, plain 2.
int tab_state(int selected, int has_new_text) {
    if (selected) return zorn_button_up;
    return has_new_text ? zorn_button_down : zorn_button_disabled;
}

zorn_frame_link* link() { return zorn_get_frame_link(); }

}  // namespace

// zorn_channel_paging_button ---------------------------------------------------------------------------

wxBEGIN_EVENT_TABLE(zorn_channel_paging_button, zorn_button)
    EVT_MOUSE_EVENTS(zorn_channel_paging_button::mouse_handler)
wxEND_EVENT_TABLE()

zorn_channel_paging_button::zorn_channel_paging_button(wxWindow* parent, zorn_channel_window* owner,
                                                       zorn_channel_record* record)
    : zorn_button(parent, wxID_ANY, wxDefaultPosition, wxSize(10, 10), wxBORDER_NONE, wxT("channel paging button")),
      channel(record),
      channel_window(owner) {
    render_images();
}

void zorn_channel_paging_button::render_images() {
    if (!zorn_current_button_theme) return;
    const zorn_button_theme& theme = *zorn_current_button_theme;
    const wxSize size = GetSize();
    const int w = std::max(size.GetWidth(), 1), h = std::max(size.GetHeight(), 1);
    zorn_bitmap picture(w, h);
    picture.Clear(theme.triple[zorn_triple_lit_face]);
    draw_rounded_edge(picture, zorn_white, w, h);
    picture.DrawLine(3, 3, w - 4, h - 4, zorn_white);
    normal_image.copy_from(picture);
    normal_hover_image.copy_from(picture);
    picture.Clear(theme.triple[zorn_triple_toggle_face]);
    draw_rounded_edge(picture, zorn_grey192, w, h);
    picture.DrawLine(3, h - 4, w - 4, 3, zorn_grey192);
    pressed_image.copy_from(picture);
    pressed_hover_image.copy_from(picture);
    disabled_image.copy_from(picture);
    Refresh(false);
}

// A press only; the button's own up, down and hover handling doesn't run.
void zorn_channel_paging_button::mouse_handler(wxMouseEvent& event) {
    if (event.GetEventType() != wxEVT_LEFT_DOWN) return;
    if (channel_window) channel_window->paging_clicked(channel);
    if (zorn_frame_link* frame = link()) frame->transfer_focus_main(this);
}

// zorn_channel_button -----------------------------------------------------------------------------------

wxBEGIN_EVENT_TABLE(zorn_channel_button, zorn_button)
    EVT_MOUSE_EVENTS(zorn_channel_button::mouse_handler)
wxEND_EVENT_TABLE()

zorn_channel_button::zorn_channel_button(wxWindow* parent, zorn_channel_window* owner, zorn_channel_record* record)
    : zorn_button(parent, wxID_ANY, wxDefaultPosition, wxSize(20, 20), wxBORDER_NONE, wxT("channel button")),
      paging_button(nullptr),
      channel(record),
      channel_window(owner) {
    Hide();
    paging_button = new zorn_channel_paging_button(this, owner, record);
}

void zorn_channel_button::render_images() {
    if (!zorn_current_button_theme) return;
    const zorn_button_theme& theme = *zorn_current_button_theme;
    const wxSize size = GetSize();
    zorn_bitmap picture(std::max(size.GetWidth(), 1), std::max(size.GetHeight(), 1));
    render_tab(picture, theme.triple[zorn_triple_lit_face], theme.triple[zorn_triple_lit_label], zorn_white, label);
    normal_image.copy_from(picture);
    normal_hover_image.copy_from(picture);
    has_normal_hover = 1;
    render_tab(picture, theme.triple[zorn_triple_toggle_face], zorn_rgb(255, 0, 0), zorn_grey128, label);
    pressed_image.copy_from(picture);
    pressed_hover_image.copy_from(picture);
    has_pressed_hover = 1;
    render_tab(picture, theme.triple[zorn_triple_toggle_face], zorn_grey192, zorn_grey128, label);
    disabled_image.copy_from(picture);
    if (paging_button) paging_button->render_images();
    Refresh(false);
}

void zorn_channel_button::resize_handler(bool size_changed) {
    zorn_button::resize_handler(size_changed);
    if (!paging_button) return;
    const wxSize size = GetSize();
    const int side = std::max(size.GetHeight() - 6, 1);
    paging_button->set_size(size.GetWidth() + 2 - size.GetHeight(), 3, side, side);
}

void zorn_channel_button::show_state(int selected, int has_new_text) {
    const int state = tab_state(selected, has_new_text);
    set_state(state);
    if (paging_button) paging_button->set_state(state);
}

void zorn_channel_button::mouse_handler(wxMouseEvent& event) {
    if (event.GetEventType() != wxEVT_LEFT_DOWN) return;
    if (channel_window && channel) channel_window->tab_clicked(channel);
    if (zorn_frame_link* frame = link()) frame->transfer_focus_main(this);
}

// zorn_channel_display ----------------------------------------------------------------------------------

zorn_channel_display::zorn_channel_display(wxWindow* parent, const wxString& name)
    : zorn_ansi_display(parent, wxID_ANY, name) {}

// The frame of the text as every display draws it, on black, with the top lines stopping at the
// tab's edges.
void zorn_channel_display::repaint_internal(zorn_bitmap& bitmap) {
    bitmap.Clear(zorn_black);
    const int w = bitmap.GetWidth(), h = bitmap.GetHeight();
    zorn_rgb outer, inner;
    frame_colors(&outer, &inner);
    const int right = w - get_scrollbar_width() - 1;
    const int bottom = h - 1;
    int tab_left = right + 1, tab_right = right + 1;  // no tab: an empty gap behind the right corner
    if (tab_button && tab_button->IsShown()) {
        tab_left = tab_button->GetPosition().x - GetPosition().x;
        tab_right = tab_left + tab_button->GetSize().GetWidth() - 1;
    }
    for (int inset = 0; inset < 2; ++inset) {
        const zorn_rgb& color = inset == 0 ? outer : inner;
        if (tab_left >= inset) bitmap.DrawLine(inset, inset, std::min(tab_left, right - inset), inset, color);
        if (tab_right <= right - inset) bitmap.DrawLine(std::max(tab_right, inset), inset, right - inset, inset, color);
        bitmap.DrawLine(inset, bottom - inset, right - inset, bottom - inset, color);
        bitmap.DrawLine(inset, inset, inset, bottom - inset, color);
        bitmap.DrawLine(right - inset, inset, right - inset, bottom - inset, color);
    }
}

// zorn_channel_window -----------------------------------------------------------------------------------

zorn_channel_window::zorn_channel_window(wxWindow* parent_window)
    : zorn_transparent_window(parent_window),
      placeholder_button(new zorn_channel_button(parent_window, this, nullptr)),
      blank_display(new zorn_channel_display(parent_window, wxT("Blank Channel Tab"))),
      page_button(new zorn_channel_paging_button(parent_window, this, nullptr)) {
    placeholder_button->set_label("(no channel)");
    placeholder_button->show_state(1, 0);
    placeholder_button->SetToolTip(
        wxT("There are no channels to display yet. When there are,\nuse the buttons here to switch between channels."));
    blank_display->tab_button = placeholder_button;
    blank_display->Hide();
    blank_display->set_display_font(zorn_main_font());
    blank_display->add_text(" \n(Tabbed channel window - messages from other players will appear here.)\n");
    blank_display->SetToolTip(
        wxT("There are no channels to display yet. When\nthere are, they will be displayed here."));
    page_button->Hide();
    page_button->set_state(zorn_button_up);
}

// The widgets belong to the frame, which deletes them with itself.
zorn_channel_window::~zorn_channel_window() = default;

zorn_channel_record* zorn_channel_window::create_channel(const char* name, int is_all) {
    bool made = false;
    zorn_channel_record* record = channels.create(name, &made);
    if (!made) return record;
    make_widgets(record, is_all);
    layout();
    set_visible(visible);
    return record;
}

void zorn_channel_window::make_widgets(zorn_channel_record* record, int is_all) {
    auto* tab = new zorn_channel_button(parent, this, record);
    tab->set_label(record->name);
    auto* display = new zorn_channel_display(parent, wxString::FromUTF8(record->name));
    display->Hide();
    display->tab_button = tab;
    display->set_display_font(zorn_main_font());
    record->button = tab;
    record->display = display;
    if (is_all) {
        const wxString tip = wxT("Display of all channels combined.");
        tab->SetToolTip(tip);
        display->SetToolTip(tip);
        display->add_text(" \nTabbed display for all channels combined.\n");
    } else {
        const wxString tip = wxString::Format(wxT("Tabbed display for channel '%s'."), wxString::FromUTF8(record->name));
        tab->SetToolTip(tip);
        display->SetToolTip(tip);
        display->add_text(" \nTabbed display for channel '");
        display->add_text(record->name);
        display->add_text("'\n");
    }
    tab->show_state(record->selected, record->has_new_text);
}

zorn_channel_record* zorn_channel_window::set_divert_channel(const char* name) {
    std::vector<zorn_channel_record*> made;
    zorn_channel_record* record = channels.set_divert_channel(name, &made);
    if (made.empty()) return record;
    for (zorn_channel_record* added : made) make_widgets(added, added == channels.all_channel);
    layout();
    set_visible(visible);
    return record;
}

void zorn_channel_window::clear_divert_channel() {
    if (!channels.clear_divert_channel() && zorn_debug_level >= 1)
        zorn_client_debug_printf("Error in zorn_channel_window::clear_divert_channel(), null divert channel?\n");
}

void zorn_channel_window::display_socket_data(const char* data, int length) {
    zorn_channel_record* divert = channels.divert_channel;
    zorn_channel_record* all = channels.all_channel;
    if (!divert || !all) {
        if (zorn_debug_level >= 1)
            zorn_client_debug_printf("Error in zorn_channel_window::display_socket_data(), null divert channel?\n");
        return;
    }
    // A channel named "(all)" gets the text twice, as the server asked for it twice.
    divert->display->add_ansi_text(data, length);
    all->display->add_ansi_text(data, length);
    std::vector<zorn_channel_record*> lit;
    channels.text_arrived(&lit);
    for (zorn_channel_record* record : lit) show_lit(record);
}

void zorn_channel_window::show_lit(zorn_channel_record* record) {
    record->button->show_state(record->selected, record->has_new_text);
    record->button->set_lit(1);
}

void zorn_channel_window::release_widgets(zorn_channel_record* record) {
    if (record->button) record->button->Destroy();
    if (record->display) record->display->Destroy();
    record->button = nullptr;
    record->display = nullptr;
}

void zorn_channel_window::clear_all_channels() {
    for (const auto& record : channels.records()) release_widgets(record.get());
    channels.clear_all();
    layout();
    set_visible(visible);
}

void zorn_channel_window::begin_text_block() {
    for (const auto& record : channels.records()) record->display->ansi.text_received = 0;
}

void zorn_channel_window::end_text_block() {
    for (const auto& record : channels.records())
        if (record->display->ansi.text_received) record->display->refresh_text();
}

void zorn_channel_window::set_all_fonts(zorn_font* font) {
    for (const auto& record : channels.records()) record->display->set_display_font(font);
    blank_display->set_display_font(font);
}

zorn_ansi_display* zorn_channel_window::shown_display() const {
    zorn_channel_record* current = channels.current_channel;
    if (!current || current->page != channels.page) return blank_display;
    return current->display;
}

bool zorn_channel_window::current_following() const {
    const zorn_ansi_display* display = shown_display();
    return display ? display->is_following() : false;
}

void zorn_channel_window::set_current_following(int value) {
    zorn_ansi_display* display = shown_display();
    if (!display) return;
    if (value)
        display->unlock_scrollback();
    else
        display->lock_scrollback();
}

void zorn_channel_window::clear_current_selection() {
    zorn_ansi_display* display = shown_display();
    if (!display) return;
    display->textctrl->clear_selection();
    display->textctrl->Refresh(false);
}

void zorn_channel_window::tab_clicked(zorn_channel_record* record) {
    const int had_new_text = record->has_new_text;
    channels.select(record);
    set_visible(visible);
    if (had_new_text) record->button->show_state(record->selected, record->has_new_text);
}

void zorn_channel_window::paging_clicked(zorn_channel_record* record) {
    if (record) {
        channels.move_to_other_page(record);
    } else {
        channels.flip_page();
        page_button->set_state(channels.page == 1 ? zorn_button_down : zorn_button_up);
    }
    layout();
    set_visible(visible);
}

void zorn_channel_window::set_visible(int value) {
    channels.settle();
    const bool shown = value != 0;
    for (const auto& record : channels.records()) {
        if (record->page != channels.page) {
            record->button->Hide();
            record->display->Hide();
            continue;
        }
        record->button->show_state(record->selected, record->has_new_text);
        record->display->Show(shown && record.get() == channels.current_channel);
        record->button->Show(shown);
        record->button->Refresh(false);
    }
    const bool empty_page = channels.tabs_on_page() == 0;
    placeholder_button->Show(shown && empty_page);
    blank_display->Show(shown && empty_page);
    page_button->Show(shown);
}

void zorn_channel_window::layout() {
    int text_width = 0, text_height = 0;
    zorn_status_font()->measure_text("123456789012345678", &text_width, &text_height);
    const int count = std::max(channels.tabs_on_page(), 1);
    const int available = std::max(width - 4 - text_height - 1, 1);
    page_button->set_size(x + available + 2, y + 2, std::max(text_height, 1), std::max(text_height, 1));
    const int tab_width = std::max(std::min(available / count - 2, text_width + text_height), 1);
    const int tab_height = text_height + 4;
    placeholder_button->set_size(x + 1, y + 1, tab_width, tab_height);
    const int display_y = y + text_height + 5, display_height = std::max(height - text_height - 5, 1);
    blank_display->set_size(x, display_y, std::max(width, 1), display_height);
    blank_display->Refresh(false);
    int tab_x = x + 1;
    for (const auto& record : channels.records()) {
        record->display->set_size(x, display_y, std::max(width, 1), display_height);
        record->display->Refresh(false);
        if (record->page != channels.page) continue;
        record->button->set_size(tab_x, y + 1, tab_width, tab_height);
        tab_x += tab_width + 2;
    }
}

void zorn_channel_window::change_theme() {
    placeholder_button->render_images();
    page_button->render_images();
    for (const auto& record : channels.records()) record->button->render_images();
}
