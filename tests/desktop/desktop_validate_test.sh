#!/usr/bin/env bash
# The installed desktop entry and metainfo pass their validators and agree with each other and
# with the installed icons. Exits 77 (skipped) with the reason when the validator is missing.
#
#   desktop_validate_test.sh entry|metainfo BUILD_DIR
set -u
. "$(dirname "$0")/install_prefix.sh"
what=$1 build_dir=$2

tmp=$(mktemp -d /tmp/lantern-validate-XXXXXX)
trap 'rm -rf "$tmp" "$tmp.install.log"' EXIT
fail() { echo "FAIL: $*"; exit 1; }
skip() { echo "SKIP: $*"; exit 77; }

tool=desktop-file-validate package=desktop-file-utils
[ "$what" = metainfo ] && tool=appstreamcli package=appstream
command -v "$tool" >/dev/null || skip "$tool is not installed (Debian package $package)"

install_into "$build_dir" "$tmp"
entries=("$tmp"/share/applications/*.desktop)
[ ${#entries[@]} = 1 ] && [ -f "${entries[0]}" ] || fail "not one desktop entry: ${entries[*]}"
entry=${entries[0]}
id=$(basename "$entry" .desktop)

if [ "$what" = entry ]; then
    desktop-file-validate "$entry" >"$tmp/out" 2>&1 || { cat "$tmp/out"; fail "desktop-file-validate"; }
    # desktop-file-validate exits 0 on hints and warnings too: any output counts.
    [ ! -s "$tmp/out" ] || { cat "$tmp/out"; fail "desktop-file-validate had something to say"; }
    [ "$(desktop_key "$entry" Name)" = "Ember Vale" ] || fail "Name is not 'Ember Vale'"
    [ "$(desktop_key "$entry" Exec)" = lantern ] || fail "Exec is not 'lantern'"
    [ "$(desktop_key "$entry" Categories)" = "Game;RolePlaying;" ] || fail "Categories"
    [ -n "$(desktop_key "$entry" GenericName)" ] && [ -n "$(desktop_key "$entry" Comment)" ] ||
        fail "no GenericName or Comment"
    [ -n "$(desktop_key "$entry" StartupWMClass)" ] || fail "no StartupWMClass"
    icon=$(desktop_key "$entry" Icon)
    for size in 48x48 64x64 128x128 256x256; do
        [ -f "$tmp/share/icons/hicolor/$size/apps/$icon.png" ] || fail "no $size icon named '$icon'"
    done
    [ -f "$tmp/share/icons/hicolor/scalable/apps/$icon.svg" ] || fail "no scalable icon named '$icon'"
    echo "PASS: $(basename "$entry") is valid and its icon is installed in every size"
else
    metainfo=$tmp/share/metainfo/$id.metainfo.xml
    [ -f "$metainfo" ] || fail "no metainfo named after the desktop entry: $id.metainfo.xml"
    appstreamcli validate --no-net "$metainfo" >"$tmp/out" 2>&1 || { cat "$tmp/out"; fail "appstreamcli validate --no-net"; }
    grep -q "<id>$id</id>" "$metainfo" || fail "the metainfo's id is not $id"
    grep -q "<launchable type=\"desktop-id\">$id.desktop</launchable>" "$metainfo" || fail "the launchable is not $id.desktop"
    grep -q '<screenshot type="default">' "$metainfo" || fail "no default screenshot"
    grep -q '<release version="[^"]' "$metainfo" || fail "no release"
    echo "PASS: $(basename "$metainfo") is valid and launches $id.desktop"
fi
