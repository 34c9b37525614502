#include "Uninstaller/AppKit/GNUstep/Display.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

static int windowManagerRuns(Display* display) {
    const Atom check = XInternAtom(display, "_NET_SUPPORTING_WM_CHECK", True);
    if (check == None) {
        return 0;
    }
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* value = NULL;
    const int status = XGetWindowProperty(display, DefaultRootWindow(display), check, 0, 1, False, XA_WINDOW,
                                          &type, &format, &count, &left, &value);
    if (value != NULL) {
        XFree(value);
    }
    return status == Success && type == XA_WINDOW && count == 1;
}

int SNTProbeDisplay(int* hasWindowManager, char* name, unsigned long size) {
    Display* display = XOpenDisplay(NULL);
    if (display == NULL) {
        snprintf(name, size, "%s", XDisplayName(NULL));
        return 0;
    }
    *hasWindowManager = windowManagerRuns(display);
    XCloseDisplay(display);
    return 1;
}

/// The connection's locks are held and nothing of the application can be relied on.
static int endProcess(Display* display) {
    static const char line[] =
        "The window is gone because its display has ended. A removal that has begun goes on.\n";
    (void)display;
    // Standard error may be gone, too.
    const ssize_t written = write(STDERR_FILENO, line, sizeof line - 1);
    (void)written;
    _exit(EXIT_SUCCESS);
}

void SNTEndWithDisplay(void) {
    XSetIOErrorHandler(endProcess);
}
