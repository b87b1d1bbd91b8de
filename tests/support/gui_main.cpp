// gtest main for tests that need wx: starts the toolkit once, turns wx asserts into failures.
#include "tests/support/gui_main.h"

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/init.h>

#include <cstdio>

namespace {

class TestApp : public wxApp {
public:
    bool OnInit() override { return true; }  // tests create their own windows
    // The default handler opens a modal dialog, which would hang a run under Xvfb.
    void OnAssertFailure(const wxChar* file, int line, const wxChar* func, const wxChar* cond,
                         const wxChar* msg) override {
        ADD_FAILURE() << "wxASSERT " << wxString(file) << ":" << line << " " << wxString(func) << ": "
                      << wxString(cond) << " " << wxString(msg);
    }
};

}  // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();  // listing needs no display
    wxApp::SetInstance(new TestApp);
    if (!wxEntryStart(argc, argv)) {
        std::fprintf(stderr, "no X display: use xvfb-run\n");
        return 1;
    }
    if (!wxTheApp->CallOnInit()) {
        wxEntryCleanup();
        return 1;
    }
    const int rc = RUN_ALL_TESTS();
    wxTheApp->OnExit();
    wxEntryCleanup();
    return rc;
}
