#pragma once
// Colour flashes of a text control's whole background, as the server's "colorflash" event asks
// for them: each flash walks from a start colour through steps of so many 20 ms ticks, and flashes
// that run at once mix by the brightest channel. Pure arithmetic; the widget owns the ticking.

#include "base/rgb.h"

struct flash_step {
    zorn_rgb to;
    int duration;  // animation ticks, at least 1
    int progress;  // ticks done, from 0
    flash_step* next;
};

struct color_flash {
    zorn_rgb from;  // where the running step starts
    flash_step* steps;
    color_flash* next;
};

// A duration below 1 would divide by zero in the step; one above this would overflow the tick
// count. Both are bent to the nearest allowed value.
constexpr int zorn_flash_max_duration = 1000000;

// The first six bytes of text as RRGGBB. Too short or not hex: black, with a log line.
zorn_rgb GetColorFromHexString(const char* text);

class zorn_color_flash_list {
public:
    zorn_color_flash_list() = default;
    ~zorn_color_flash_list() { clear(); }
    zorn_color_flash_list(const zorn_color_flash_list&) = delete;
    zorn_color_flash_list& operator=(const zorn_color_flash_list&) = delete;

    // Parses "from to ticks [to ticks]..." and puts the flash at the head of the list. Answers
    // the ticks the whole flash needs (the sum of each duration plus 1), or 0 when the payload
    // was dropped.
    int parse(const char* payload);
    // One tick of every flash: the mix of their colours now, or base when no flash was looked at.
    zorn_rgb step(const zorn_rgb& base);
    bool empty() const { return head == nullptr; }
    void clear();

    color_flash* head = nullptr;
};
