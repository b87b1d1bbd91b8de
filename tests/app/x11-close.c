/* Sends WM_DELETE_WINDOW to a window, as a window manager does on a close-box click. */
#include <X11/Xlib.h>
#include <stdlib.h>
int main(int argc, char** argv) {
    Display* d = XOpenDisplay(NULL);
    if (argc != 2 || !d) return 2;
    XEvent e = {0};
    e.xclient.type = ClientMessage;
    e.xclient.window = (Window)strtoul(argv[1], NULL, 0);
    e.xclient.message_type = XInternAtom(d, "WM_PROTOCOLS", False);
    e.xclient.format = 32;
    e.xclient.data.l[0] = (long)XInternAtom(d, "WM_DELETE_WINDOW", False);
    e.xclient.data.l[1] = CurrentTime;
    XSendEvent(d, e.xclient.window, False, NoEventMask, &e);
    XCloseDisplay(d);
    return 0;
}
