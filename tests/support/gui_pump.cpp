// Running the GUI event loop until a condition holds: shared by the GUI tests and the benchmarks
// that drive the real frame.
#include <wx/evtloop.h>
#include <wx/timer.h>
#include <wx/utils.h>

#include "tests/support/gui_main.h"

bool pump_until(const std::function<bool()>& done, int timeout_ms) {
    wxGUIEventLoop loop;
    const wxLongLong start = wxGetLocalTimeMillis();
    wxTimer poll;
    poll.Bind(wxEVT_TIMER, [&](wxTimerEvent&) {
        if (done() || wxGetLocalTimeMillis() - start > timeout_ms) loop.Exit();
    });
    poll.Start(5);
    if (!done()) loop.Run();
    return done();
}

void pump_for(int ms) {
    const wxLongLong end = wxGetLocalTimeMillis() + ms;
    pump_until([&] { return wxGetLocalTimeMillis() >= end; }, ms + 1000);
}
