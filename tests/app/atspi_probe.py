"""Reads the client's accessible tree over AT-SPI, as a screen reader does.

  atspi_probe.py role PID ROLE present|absent SECONDS   waits until an object of that role is
                                                        (or no longer is) in the client's tree
  atspi_probe.py name PID NAME SECONDS                 waits until an object has the accessible name NAME
  atspi_probe.py mirror PID LINE SECONDS               waits until the mirror's last line is LINE
Exit status 0 when the condition came true, 1 when time ran out (with what was seen), 2 when the
client's application never appeared on the accessibility bus.
"""
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

MIRROR_NAME = "Game text"


def application(pid):
    desktop = Atspi.get_desktop(0)
    for i in range(desktop.get_child_count()):
        app = desktop.get_child_at_index(i)
        if app is not None and app.get_process_id() == pid:
            return app
    return None


def walk(node, depth=0):
    if node is None or depth > 40:
        return
    yield node
    for i in range(node.get_child_count()):
        yield from walk(node.get_child_at_index(i), depth + 1)


def find_mirror(app):
    # The mirror lies in the main frame's tree, not somewhere else in the process.
    for frame in walk(app):
        if frame.get_role() != Atspi.Role.FRAME:
            continue
        for node in walk(frame):
            if node.get_name() == MIRROR_NAME and node.get_role() == Atspi.Role.TEXT:
                return node
    return None


def mirror_last_line(app):
    mirror = find_mirror(app)
    if mirror is None:
        return None, None
    whole = Atspi.Text.get_text(mirror, 0, Atspi.Text.get_character_count(mirror))
    lines = [line for line in whole.split("\n") if line.strip(" >")]
    return (lines[-1] if lines else ""), whole


def main():
    mode, pid, want, seconds = sys.argv[1], int(sys.argv[2]), sys.argv[3], float(sys.argv[-1])
    Atspi.init()
    end = time.time() + seconds
    app = None
    seen = None
    while time.time() < end:
        app = app or application(pid)
        if app is not None:
            if mode == "role":
                roles = {node.get_role_name() for node in walk(app)}
                present = want in roles
                seen = sorted(roles)
                if present == (sys.argv[4] == "present"):
                    return 0
            elif mode == "name":
                names = {node.get_name() for node in walk(app)}
                seen = sorted(n for n in names if n)
                if want in names:
                    return 0
            else:
                last, whole = mirror_last_line(app)
                seen = whole
                if last == want and "\x1b" not in whole:
                    print("mirror's last line: " + last)
                    return 0
        time.sleep(0.2)
    if app is None:
        print("the client never appeared on the accessibility bus")
        return 2
    print("not seen in time; last seen: %r" % (seen,))
    return 1


if __name__ == "__main__":
    sys.exit(main())
