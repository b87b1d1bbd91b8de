#!/usr/bin/env bash
# The client as a player installs it: `cmake --install` into an empty prefix, then bin/lantern
# from there under a private Xvfb, from an empty folder, with a fresh HOME whose system file points
# at the test world, and (where a mount namespace can be had) with the source and build trees
# hidden behind empty folders. It must connect and identify itself with the version the installed
# metainfo names, show the world's text after a typed login, and carry the window class that the
# desktop entry names and an icon the window manager can show.
#
#   installed_client_test.sh BUILD_DIR SOURCE_DIR TESTWORLD SCREENSHOT.png
#
# LANTERN_UPDATE_REFERENCES=1 rewrites SCREENSHOT.png (the metainfo's picture) from this run.
set -u
here=$(cd "$(dirname "$0")" && pwd)
. "$here/install_prefix.sh"
. "$here/../app/client_process.sh"
build_dir=$(cd "$1" && pwd) source_dir=$(cd "$2" && pwd) testworld=$3 screenshot=$4

tmp=$(mktemp -d /tmp/lantern-installed-XXXXXX)
TEST_DIR=$tmp XVFB_PID="" APP_PID="" WORLD_PID=""
trap 'end_test_processes; rm -rf "$tmp"' EXIT
fail() { fail_with_logs "$tmp" "$@"; }

mkdir -p "$tmp/prefix" "$tmp/run"
install_into "$build_dir" "$tmp/prefix"
entry=$(ls "$tmp"/prefix/share/applications/*.desktop)
id=$(basename "$entry" .desktop)
release=$(sed -n 's/.*<release version="\([^"]*\)".*/\1/p' "$tmp/prefix/share/metainfo/$id.metainfo.xml")

start_private_xvfb "$tmp" || fail "Xvfb did not start: $(cat "$tmp/xvfb.log")"
start_test_world "$testworld" "$tmp" "$tmp/home" || fail "the test world did not start"

# A clean environment, as a desktop starts a program: no build paths in any variable.
client=(env -i PATH=/usr/bin:/bin HOME="$tmp/home" DISPLAY="$DISPLAY" NO_AT_BRIDGE=1 GDK_BACKEND=x11
        LANTERN_ASSERT_ABORT=1 "$tmp/prefix/bin/lantern")
hide=""
if command -v unshare >/dev/null && unshare --mount true 2>/dev/null; then
    # unshare execs, so the client keeps this process id.
    hide="mount -t tmpfs tmpfs '$source_dir' && mount -t tmpfs tmpfs '$build_dir' 2>/dev/null; exec \"\$@\""
    (cd "$tmp/run" && exec unshare --mount sh -c "$hide" sh "${client[@]}") >"$tmp/app.log" 2>&1 &
else
    echo "note: no mount namespace here; the source tree stays visible to the client"
    (cd "$tmp/run" && exec "${client[@]}") >"$tmp/app.log" 2>&1 &
fi
APP_PID=$!
WID=$(timeout 30 xdotool search --sync --name '^Ember Vale' | head -1)
[ -n "$WID" ] || fail "no client window"
[ -z "$hide" ] || [ -z "$(ls -A "/proc/$APP_PID/root$source_dir" 2>/dev/null)" ] ||
    fail "the source tree was visible to the client"

wait_for 100 grep -q '^_lantern ' "$tmp/received.log" || fail "the client did not identify itself"
identity=$(head -1 "$tmp/received.log")
[ "${identity##* }" = "$release" ] ||
    fail "the client reports '${identity##* }', the metainfo's release is '$release'"

# What the desktop reads from the window: the class that StartupWMClass names (the instance is the
# desktop entry's id), and an icon in the usual sizes.
class=$(xprop -id "$WID" WM_CLASS | sed -n 's/^WM_CLASS(STRING) = //p')
[ "$class" = "\"$id\", \"$(desktop_key "$entry" StartupWMClass)\"" ] ||
    fail "WM_CLASS is $class; the entry is $id with StartupWMClass $(desktop_key "$entry" StartupWMClass)"
sizes=$(xprop -id "$WID" _NET_WM_ICON | grep -o 'Icon ([0-9]* x [0-9]*)' | tr '\n' ' ')
for size in 48 64; do
    case "$sizes" in *"($size x $size)"*) ;; *) fail "_NET_WM_ICON has no $size pixel icon (it has: $sizes)" ;; esac
done

# The world's banner, then a typed login and the room it describes.
xdotool mousemove --window "$WID" 300 "$(($(xdotool getwindowgeometry "$WID" | sed -n 's/.*Geometry: [0-9]*x//p') - 20))"
sleep 0.5
for line in Wren hunter2; do
    xdotool type --delay 15 -- "$line"
    xdotool key Return
    wait_for 50 world_received "$line" || fail "the typed '$line' did not reach the world"
done

# Pictures until two in a row agree; then the story area must hold many lines of text.
shoot() { import -window "$WID" "$tmp/next.png" 2>/dev/null; }
stable=0
for ((n = 0; n < 40; n++)); do
    sleep 0.25
    client_ended && fail "the client ended"
    shoot || continue
    if [ -f "$tmp/shot.png" ] && compare -metric AE "$tmp/next.png" "$tmp/shot.png" null: 2>/dev/null; then
        stable=1
    fi
    mv "$tmp/next.png" "$tmp/shot.png"
    [ $stable = 1 ] && break
done
[ $stable = 1 ] || fail "the picture did not settle"

# Pixel rows of the story area (left of its scroll bar) that hold any lit pixel: "Connecting to
# server..." alone lights about a dozen; the banner, the welcome and a room many more.
lit_rows=$(convert "$tmp/shot.png" -crop 640x520+212+32 +repage -colorspace gray -threshold 25% \
    -filter box -resize '1x520!' -depth 8 txt:- | grep -vc 'gray(0)\|^#')
if [ "${LANTERN_UPDATE_REFERENCES:-}" = 1 ]; then
    mkdir -p "$(dirname "$screenshot")"
    convert "$tmp/shot.png" -alpha off -strip "png24:$screenshot"
    echo "screenshot rewritten: $screenshot"
fi
[ "$lit_rows" -ge 80 ] || {
    mkdir -p "$build_dir/tests/desktop/artifacts" && cp "$tmp/shot.png" "$build_dir/tests/desktop/artifacts/installed.png"
    fail "only $lit_rows lit pixel rows in the story area (picture kept in $build_dir/tests/desktop/artifacts)"
}
echo "PASS: the installed client connected as $release, showed the world's text ($lit_rows lit rows), class $class, icons $sizes"
