#!/usr/bin/env bash
# The real client under a private Xvfb with an empty HOME: its first picture is compared with a
# stored reference (its game server refuses the connection), then the close box must end the process with status 0 within a second.
#
#   screenshot_test.sh LANTERN X11_CLOSE IMAGE_COMPARE REFERENCE.png MASK ARTIFACT_DIR
#
# LANTERN_UPDATE_REFERENCES=1 rewrites the reference from this run's picture instead of comparing.
# A failing picture is kept as ARTIFACT_DIR/frame_actual.png (and frame_diff.png).
set -u
. "$(dirname "$0")/client_process.sh"

lantern=$1 close_tool=$2 compare_tool=$3 reference=$4 mask=$5 artifacts=$6
tolerance=${LANTERN_SCREENSHOT_TOLERANCE:-12}

tmp=$(mktemp -d /tmp/lantern-shot-XXXXXX)
XVFB_PID="" APP_PID=""
cleanup() {
    { [ -n "$APP_PID" ] && kill -9 "$APP_PID" && wait "$APP_PID"; } 2>/dev/null
    { [ -n "$XVFB_PID" ] && kill "$XVFB_PID" && wait "$XVFB_PID"; } 2>/dev/null
    rm -rf "$tmp"
}
trap cleanup EXIT

fail() {
    echo "FAIL: $*"
    if [ -s "$tmp/app.log" ]; then tail -20 "$tmp/app.log" | sed 's/^/  client: /'; fi
    exit 1
}

keep_artifact() {
    mkdir -p "$artifacts"
    cp "$tmp/shot.png" "$artifacts/frame_actual.png"
    if [ -f "$reference" ]; then
        compare "$tmp/shot.png" "$reference" "$artifacts/frame_diff.png" 2>/dev/null
    fi
    echo "screenshot kept: $artifacts/frame_actual.png"
}

# Xvfb's output goes to a file: holding our stdout would keep a caller's pipe open forever.
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$tmp/display" >"$tmp/xvfb.log" 2>&1 &
XVFB_PID=$!
wait_for 100 test -s "$tmp/display" || fail "Xvfb did not start: $(cat "$tmp/xvfb.log")"
export DISPLAY=":$(cat "$tmp/display")"

# The game server is a closed port on loopback: the client tries it at its first tick and shows
# the same refusal every run, without leaving this machine.
mkdir -p "$tmp/home/.config/EmberVale"
cat >"$tmp/home/.config/EmberVale/ember_vale.cfg" <<'CFG'
<?xml version="1.0" encoding="ISO-8859-1"?>
<system_config_list>
  <server_host>127.0.0.1:1</server_host>
</system_config_list>
CFG
env HOME="$tmp/home" NO_AT_BRIDGE=1 GDK_BACKEND=x11 LANTERN_ASSERT_ABORT=1 "$lantern" >"$tmp/app.log" 2>&1 &
APP_PID=$!

WID=$(timeout 20 xdotool search --sync --onlyvisible --name '^Ember Vale$' 2>/dev/null | head -1)
[ -n "$WID" ] || fail "no window titled 'Ember Vale' appeared"

# The first paint may lag the map: take pictures until two in a row agree outside the mask.
shoot() {
    import -window "$WID" "$tmp/next.png" 2>/dev/null &&
        convert "$tmp/next.png" -alpha off -depth 8 "rgb:$tmp/next.rgb" 2>/dev/null
}
stable=0
for ((n = 0; n < 40; n++)); do
    sleep 0.15
    client_ended && fail "the client ended before its picture was taken"
    shoot || continue
    if [ -f "$tmp/shot.rgb" ] && [ "$(identify -format '%w %h' "$tmp/next.png")" = "$size" ] &&
        "$compare_tool" $size 0 "$tmp/next.rgb" "$tmp/shot.rgb" "$mask" >/dev/null; then
        stable=1
    fi
    size=$(identify -format '%w %h' "$tmp/next.png")
    mv "$tmp/next.png" "$tmp/shot.png"
    mv "$tmp/next.rgb" "$tmp/shot.rgb"
    [ $stable = 1 ] && break
done
[ $stable = 1 ] || { keep_artifact; fail "the picture did not settle"; }

if [ "${LANTERN_UPDATE_REFERENCES:-}" = 1 ]; then
    mkdir -p "$(dirname "$reference")"
    convert "$tmp/shot.png" -alpha off "png24:$reference"
    echo "reference rewritten: $reference"
elif [ ! -f "$reference" ]; then
    keep_artifact
    fail "no reference $reference (run with LANTERN_UPDATE_REFERENCES=1 to make it)"
else
    expected_size=$(identify -format '%w %h' "$reference")
    if [ "$expected_size" != "$size" ]; then
        keep_artifact
        fail "picture is $size, reference is $expected_size"
    fi
    convert "$reference" -alpha off -depth 8 "rgb:$tmp/expected.rgb"
    if ! "$compare_tool" $size "$tolerance" "$tmp/shot.rgb" "$tmp/expected.rgb" "$mask"; then
        keep_artifact
        fail "picture differs from $reference"
    fi
fi

# The close box: WM_DELETE_WINDOW, as a window manager sends it. The client asks nobody (no
# character is at stake), counts down ten ticks and exits with status 0.
"$close_tool" "$WID" || fail "x11-close could not reach the display"
wait_for 10 client_ended || fail "the client was still running a second after the close box"
wait "$APP_PID"
status=$?
APP_PID=""
[ "$status" = 0 ] || fail "the client exited with status $status"
echo "PASS: picture matches, close box ended the client with status 0"
