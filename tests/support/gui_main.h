#pragma once
#include <functional>

// Runs the GUI event loop (timers, paints, pending events) until done() or the time-out.
bool pump_until(const std::function<bool()>& done, int timeout_ms = 2000);
// Runs the event loop for a fixed time, for things that must settle (deleted windows).
void pump_for(int ms);
