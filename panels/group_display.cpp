#include "panels/group_display.h"

#include <wx/event.h>

#include "config/lconfig.h"
#include "theme/bitmap.h"
#include "theme/font.h"
#include "theme/theme.h"

namespace {

int group_text_height() {
    int width = 0, height = 0;
    zorn_status_font()->measure_text("Abcdefg", &width, &height);
    return height;
}

}  // namespace

wxBEGIN_EVENT_TABLE(zorn_group_display, zorn_embedded_window)
    EVT_MOTION(zorn_group_display::motion_handler)
wxEND_EVENT_TABLE()

zorn_group_display::zorn_group_display(wxWindow* parent, wxWindowID id, const wxString& name)
    : zorn_embedded_window(parent, id, wxDefaultPosition, wxSize(20, 20), wxBORDER_NONE, name),
      mode(1),
      full_row_height(1),
      compact_row_height(1),
      repaints(0) {
    const group_metrics m = group_metrics_for(group_text_height());
    full_row_height = m.full_row_height;
    compact_row_height = m.compact_row_height;
}

group_metrics zorn_group_display::metrics() const {
    group_metrics m;
    m.full_row_height = full_row_height;
    m.compact_row_height = compact_row_height;
    return m;
}

void zorn_group_display::reset() {
    Show(false);
    members.clear();
}

bool zorn_group_display::parse_group_block(const char* payload) {
    members = parse_group_lines(payload);
    if (members.empty()) {
        Show(false);
        return false;
    }
    const bool changed = resize_to_fit();
    Show(LConfig::instance().get_group_status_display() != 0);
    Refresh(false);
    return changed;
}

int zorn_group_display::required_height() const { return group_required_height(members, metrics()); }

bool zorn_group_display::resize_to_fit() {
    const int wanted = required_height();
    const wxRect now = GetRect();
    if (wanted == now.height) return false;
    // Above the function key row the panel hangs from its bottom edge and grows upward.
    const int top = LConfig::instance().get_current_layout() == 2 ? now.y - (wanted - now.height) : now.y;
    set_size(now.x, top, now.width, wanted);
    return true;
}

void zorn_group_display::change_font() {
    const group_metrics m = group_metrics_for(group_text_height());
    full_row_height = m.full_row_height;
    compact_row_height = m.compact_row_height;
    if (!members.empty()) resize_to_fit();
    Refresh(false);
}

void zorn_group_display::resize_handler(bool size_changed) {
    if (size_changed) Refresh(false);
}

void zorn_group_display::repaint_internal(zorn_bitmap& b) {
    repaints++;
    const LConfig& c = LConfig::instance();
    group_paint_settings s;
    s.mode = mode;
    s.vertical = c.get_group_status_display() == 1;
    s.inverted = c.get_group_status_inverted_bars() != 0;
    if (zorn_current_button_theme) s.frame = zorn_current_button_theme->triple[zorn_triple_panel_frame];
    zorn_font* font = zorn_status_font();
    const auto measure = [font](const char* text, int* width, int* height) { font->measure_text(text, width, height); };
    for (const group_op& op : group_paint(members, metrics(), s, b.GetWidth(), b.GetHeight(), measure)) {
        switch (op.kind) {
            case group_op::rect: b.DrawFilledRectangle(op.x1, op.y1, op.x2, op.y2, op.color); break;
            case group_op::line: b.DrawLine(op.x1, op.y1, op.x2, op.y2, op.color); break;
            case group_op::pixel: b.SetPixel(op.x1, op.y1, op.color); break;
            case group_op::text:
                b.DrawTextTransparent(font, members[op.member].name.c_str(), op.x1, op.y1, op.color);
                break;
        }
    }
}

void zorn_group_display::motion_handler(wxMouseEvent& event) {
    const int row = group_row_at(members, metrics(), event.GetY());
    wxString wanted;
    if (row >= 0) wanted = wxT("Status for group member '") + wxString::FromUTF8(members[row].name.c_str()) + wxT("'.");
    if (wanted != tooltip_shown) {
        tooltip_shown = wanted;
        if (wanted.empty())
            UnsetToolTip();
        else
            SetToolTip(wanted);
    }
    event.Skip();
}
