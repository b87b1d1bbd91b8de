#!/usr/bin/env bash
# An install into an empty prefix holds exactly the files in the list (one path a line, relative
# to the prefix): nothing missing, nothing stray; and each of them is usable: the binary runs, the
# PNGs are the sizes their folders name, the man page and the metainfo decode.
#
#   installed_files_test.sh BUILD_DIR EXPECTED_LIST
set -u
. "$(dirname "$0")/install_prefix.sh"
build_dir=$1 expected=$2

tmp=$(mktemp -d /tmp/lantern-install-XXXXXX)
trap 'rm -rf "$tmp" "$tmp.install.log"' EXIT
fail() { echo "FAIL: $*"; exit 1; }

install_into "$build_dir" "$tmp"
files_below "$tmp" >"$tmp.list"
if ! LC_ALL=C sort "$expected" | diff -u - "$tmp.list" >"$tmp.diff"; then
    sed 's/^/  /' "$tmp.diff"
    rm -f "$tmp.list" "$tmp.diff"
    fail "the installed files differ from $expected (- expected, + installed)"
fi
rm -f "$tmp.list" "$tmp.diff"

[ -x "$tmp/bin/lantern" ] || fail "bin/lantern is not executable"
for png in "$tmp"/share/icons/hicolor/*x*/apps/*.png; do
    folder=$(basename "$(dirname "$(dirname "$png")")")
    size=$(identify -format '%wx%h' "$png" 2>/dev/null) || fail "$png does not decode"
    [ "$size" = "$folder" ] || fail "$png is $size in the $folder folder"
done
grep -q '<svg' "$tmp"/share/icons/hicolor/scalable/apps/*.svg || fail "the scalable icon is not an SVG"
gzip -t "$tmp/share/man/man6/lantern.6.gz" || fail "the man page is not gzip"
zcat "$tmp/share/man/man6/lantern.6.gz" | grep -q '^\.TH LANTERN 6 ' || fail "the man page has no .TH line for section 6"
for word in '\\-l' '\\-n' 'ember_vale.cfg' 'char_configs' 'ember_vale_lantern.txt'; do
    zcat "$tmp/share/man/man6/lantern.6.gz" | grep -q -- "$word" || fail "the man page does not name $word"
done
echo "PASS: $(wc -l <"$expected") files, as listed"
