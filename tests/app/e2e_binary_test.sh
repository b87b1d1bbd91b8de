#!/usr/bin/env bash
# The real client binary against the test world under a private Xvfb, with a HOME whose system file
# points at the world: it connects by itself, the name and password typed through the X server
# reach the world (read back from its --log), the "login" tag changes the window title, and the
# close box ends the client with status 0.
#
#   e2e_binary_test.sh LANTERN TESTWORLD X11_CLOSE
set -u
. "$(dirname "$0")/client_process.sh"

lantern=$1 testworld=$2 close_tool=$3

tmp=$(mktemp -d /tmp/lantern-e2e-XXXXXX)
TEST_DIR=$tmp XVFB_PID="" APP_PID="" WORLD_PID=""
trap 'end_test_processes; rm -rf "$tmp"' EXIT
fail() { fail_with_logs "$tmp" "$@"; }
received() { world_received "$1"; }
title_is() { [ "$(xdotool getwindowname "$WID" 2>/dev/null)" = "$1" ]; }
type_line() {
    xdotool type --delay 15 -- "$1"
    xdotool key Return
}

start_private_xvfb "$tmp" || fail "Xvfb did not start: $(cat "$tmp/xvfb.log")"
export NO_AT_BRIDGE=1 GDK_BACKEND=x11 LANTERN_ASSERT_ABORT=1
start_test_world "$testworld" "$tmp" "$tmp/home" || fail "the test world did not start"

HOME=$tmp/home "$lantern" >"$tmp/app.log" 2>&1 &
APP_PID=$!
WID=$(timeout 30 xdotool search --sync --name '^Ember Vale' | head -1)
[ -n "$WID" ] || fail "no client window"

wait_for 100 grep -q '^_lantern DFLT[0-9a-f]\{28\} ' "$tmp/received.log" || fail "the client did not identify itself"
[ "$(wc -l <"$tmp/received.log")" -eq 1 ] || fail "the identity was not the first line"

# Without a window manager the keyboard follows the pointer.
xdotool mousemove --window "$WID" 300 "$(($(xdotool getwindowgeometry "$WID" | sed -n 's/.*Geometry: [0-9]*x//p') - 20))"
sleep 0.5
type_line Binary
wait_for 50 received Binary || fail "the typed name did not reach the world"
type_line hunter2
wait_for 50 received hunter2 || fail "the typed password did not reach the world"
wait_for 50 title_is "Ember Vale - Player Binary" || fail "title '$(xdotool getwindowname "$WID")' after login"
type_line look
wait_for 50 received look || fail "a command after login did not reach the world"

# While a character is in play the close box asks first, and asks the world whether it may go.
"$close_tool" "$WID"
wait_for 50 received "quit -check" || fail "the close box did not send quit -check"
DID=$(timeout 10 xdotool search --sync --name '^Logoff Warning$' | head -1)
[ -n "$DID" ] || fail "no Logoff Warning dialog"
where=$(xdotool getwindowgeometry "$DID" | grep Position)
"$close_tool" "$WID"
asked_twice() { [ "$(grep -cxF -- "quit -check" "$tmp/received.log")" -eq 2 ]; }
wait_for 50 asked_twice || fail "a second close did not ask again"
[ "$(xdotool getwindowgeometry "$DID" | grep Position)" = "$where" ] || fail "the dialog moved"
client_ended && fail "the client ended while the dialog asked"

# Logoff: an empty line, recall and quit -f twice; the world closes and the client runs on offline.
xdotool windowfocus --sync "$DID"
xdotool key Return
wait_for 50 received "quit -f" || fail "Logoff did not send quit -f"
[ "$(sed -n '/^quit -check$/,$p' "$tmp/received.log" | sed -n '3,5p' | tr '\n' '|')" = "|recall|quit -f|" ] ||
    fail "the logoff lines came in another order"
sleep 0.5
client_ended && fail "the client ended with the session"

# No character at stake any more: the close box ends the client at once.
"$close_tool" "$WID"
wait_for 100 client_ended || fail "the close box did not end the client"
wait "$APP_PID"
status=$?
APP_PID=""
[ "$status" -eq 0 ] || fail "exit status $status"
echo "PASS"
