#include "panels/channel_list.h"

#include <algorithm>
#include <cstring>

#include "base/words.h"

namespace {

// The stored form of a name: at most 39 characters.
void cut_name(const char* name, char* out) { safe_strcpy(out, name, zorn_channel_name_size); }

}  // namespace

zorn_channel_record* zorn_channel_list::find(const char* name) const {
    if (!name) return nullptr;
    char wanted[zorn_channel_name_size];
    cut_name(name, wanted);
    for (const auto& record : list)
        if (std::strcmp(record->name, wanted) == 0) return record.get();
    return nullptr;
}

zorn_channel_record* zorn_channel_list::create(const char* name, bool* made) {
    if (made) *made = false;
    if (!name) return nullptr;
    if (zorn_channel_record* existing = find(name)) return existing;
    auto record = std::make_unique<zorn_channel_record>();
    cut_name(name, record->name);
    record->page = page;
    zorn_channel_record* added = record.get();
    // Before the first name that is equal or greater: "(all)" sorts before any letter.
    const auto place = std::find_if(list.begin(), list.end(),
                                    [&](const auto& r) { return std::strcmp(r->name, added->name) >= 0; });
    list.insert(place, std::move(record));
    if (!current_channel) {
        current_channel = added;
        added->selected = 1;
    }
    if (made) *made = true;
    return added;
}

zorn_channel_record* zorn_channel_list::set_divert_channel(const char* name,
                                                           std::vector<zorn_channel_record*>* made_records) {
    bool made = false;
    if (!all_channel) {
        all_channel = create(zorn_all_channel_name, &made);
        if (made && made_records) made_records->push_back(all_channel);
    }
    divert_channel = create(name, &made);
    if (made && made_records) made_records->push_back(divert_channel);
    return divert_channel;
}

bool zorn_channel_list::clear_divert_channel() {
    const bool was_set = divert_channel != nullptr;
    divert_channel = nullptr;
    return was_set;
}

bool zorn_channel_list::text_arrived(std::vector<zorn_channel_record*>* lit) {
    if (!divert_channel || !all_channel) return false;
    for (zorn_channel_record* record : {divert_channel, all_channel}) {
        if (record == current_channel || record->has_new_text) continue;
        record->has_new_text = 1;
        if (lit) lit->push_back(record);
    }
    return true;
}

void zorn_channel_list::select(zorn_channel_record* record) {
    if (!record) return;
    // By name, as the tab knows its channel.
    if (zorn_channel_record* found = find(record->name)) current_channel = found;
    settle();
    if (record->has_new_text) record->has_new_text = 0;
}

void zorn_channel_list::move_to_other_page(zorn_channel_record* record) {
    if (record) record->page ^= 1;
}

void zorn_channel_list::flip_page() {
    page ^= 1;
    std::swap(current_channel, other_page_channel);
    if (!current_channel || current_channel->page != page) current_channel = first_on_page();
}

void zorn_channel_list::settle() {
    if (!current_channel || current_channel->page != page) {
        if (zorn_channel_record* first = first_on_page()) current_channel = first;
    }
    for (const auto& record : list)
        if (record->page == page) record->selected = record.get() == current_channel ? 1 : 0;
}

void zorn_channel_list::clear_all() {
    current_channel = other_page_channel = divert_channel = all_channel = nullptr;
    list.clear();
}

int zorn_channel_list::tabs_on_page() const {
    return static_cast<int>(std::count_if(list.begin(), list.end(), [&](const auto& r) { return r->page == page; }));
}

zorn_channel_record* zorn_channel_list::first_on_page() const {
    for (const auto& record : list)
        if (record->page == page) return record.get();
    return nullptr;
}
