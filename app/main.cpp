// The client's entry point: wx's main with zorn_gui_app.
#include <wx/app.h>

#include "app/gui_app.h"

wxIMPLEMENT_APP(zorn_gui_app);
