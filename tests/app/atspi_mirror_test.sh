#!/usr/bin/env bash
# The screen reader's mirror as assistive technology sees it: the real client under a private
# Xvfb and a private D-Bus session with the accessibility bus, the screen reader switched on with
# Ctrl-Shift-6, a password typed while the command line shows itself to AT-SPI as a password field,
# and then the world's last line read back from the mirror in the frame's accessible tree, without
# its escape codes; the gauges and the map carry names that say what they show. Skips (status 77) when the AT-SPI stack isn't there to start.
#
#   atspi_mirror_test.sh LANTERN TESTWORLD
set -u
here=$(dirname "$0")
lantern=$1 testworld=$2
python=/usr/bin/python3

skip() {
    echo "SKIP: $*"
    exit 77
}
command -v dbus-run-session >/dev/null || skip "dbus-run-session is missing (package dbus)"
[ -f /usr/share/dbus-1/services/org.a11y.Bus.service ] || skip "no accessibility bus service (package at-spi2-core)"
"$python" -c 'import gi; gi.require_version("Atspi", "2.0"); from gi.repository import Atspi' 2>/dev/null ||
    skip "no AT-SPI client library for Python (packages python3-gi, gir1.2-atspi-2.0)"
# Everything below runs inside its own session bus.
if [ -z "${LANTERN_ATSPI_SESSION:-}" ]; then
    LANTERN_ATSPI_SESSION=1 exec dbus-run-session -- "$0" "$@"
fi

. "$here/client_process.sh"
tmp=$(mktemp -d /tmp/lantern-atspi-XXXXXX)
XVFB_PID="" APP_PID="" WORLD_PID=""
cleanup() {
    { [ -n "$APP_PID" ] && kill -9 "$APP_PID" && wait "$APP_PID"; } 2>/dev/null
    { [ -n "$WORLD_PID" ] && kill "$WORLD_PID" && wait "$WORLD_PID"; } 2>/dev/null
    { [ -n "$XVFB_PID" ] && kill "$XVFB_PID" && wait "$XVFB_PID"; } 2>/dev/null
    rm -rf "$tmp"
}
trap cleanup EXIT
fail() {
    echo "FAIL: $*"
    for f in app.log world.err; do
        [ -s "$tmp/$f" ] && tail -20 "$tmp/$f" | sed "s/^/  $f: /"
    done
    exit 1
}

Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$tmp/display" >"$tmp/xvfb.log" 2>&1 &
XVFB_PID=$!
wait_for 100 test -s "$tmp/display" || fail "Xvfb did not start: $(cat "$tmp/xvfb.log")"
# The bridge to the accessibility bus stays on for this test: no NO_AT_BRIDGE.
unset NO_AT_BRIDGE
export DISPLAY=":$(cat "$tmp/display")" GDK_BACKEND=x11 LANTERN_ASSERT_ABORT=1

last_line="The world's last line, read back."
cat >"$tmp/world.script" <<SCRIPT
ignore lnlstatus\\s
ignore lnping
expect _lantern *
line Welcome to the \\e[1mmirror\\e[0m test.
expect reader
send Password: \\xff\\xfe\\x01
expect sesame
send \\xff\\xfd\\x01\\r\\n;slogin;reader;elogin;;shp;120 150 80 90 100 110;ehp;;sareaname;Ember Vale;eareaname;
line \\e[32mA line before the last.\\e[0m
send \\e[33mThe world's \\e[1mlast\\e[0m\\e[33m line, read back.\\e[0m\\r\\n> 
timeout 60000
expect quit
SCRIPT
"$testworld" --port 0 --script "$tmp/world.script" --once >"$tmp/world.out" 2>"$tmp/world.err" &
WORLD_PID=$!
wait_for 100 grep -q '^listening on ' "$tmp/world.out" || fail "the test world did not start"
port=$(sed -n 's/^listening on //p' "$tmp/world.out")

mkdir -p "$tmp/home/.config/EmberVale"
printf '%s\n' '<?xml version="1.0" encoding="ISO-8859-1"?>' '<system_config_list>' \
    '  <server_host>127.0.0.1</server_host>' "  <server_port>$port</server_port>" '</system_config_list>' '' \
    >"$tmp/home/.config/EmberVale/ember_vale.cfg"

HOME=$tmp/home "$lantern" >"$tmp/app.log" 2>&1 &
APP_PID=$!
WID=$(timeout 30 xdotool search --sync --name '^Ember Vale' | head -1)
[ -n "$WID" ] || fail "no client window"
"$python" "$here/atspi_probe.py" role "$APP_PID" frame present 20
case $? in
    0) ;;
    2) skip "the client did not reach the accessibility bus on this machine" ;;
    *) fail "no frame in the client's accessible tree" ;;
esac

xdotool mousemove --window "$WID" 300 "$(($(xdotool getwindowgeometry "$WID" | sed -n 's/.*Geometry: [0-9]*x//p') - 20))"
sleep 0.5
xdotool key ctrl+shift+6
xdotool type --delay 15 reader
xdotool key Return
"$python" "$here/atspi_probe.py" role "$APP_PID" "password text" present 20 ||
    fail "in password mode the command line is no password field to AT-SPI"
xdotool type --delay 15 sesame
xdotool key Return
"$python" "$here/atspi_probe.py" role "$APP_PID" "password text" absent 20 ||
    fail "after the password the command line stays a password field"
# The gauges and the map say what they show.
"$python" "$here/atspi_probe.py" name "$APP_PID" "Health 120 of 150, Mana 80 of 90, Movement 100 of 110, Experience 0 percent, No enemy" 20 ||
    fail "the gauges have no accessible name that says their values"
"$python" "$here/atspi_probe.py" name "$APP_PID" "Map, Ember Vale" 20 || fail "the map has no accessible name"
"$python" "$here/atspi_probe.py" mirror "$APP_PID" "$last_line" 20 || fail "the mirror did not show the last line"
echo "PASS"
