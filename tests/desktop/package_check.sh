#!/usr/bin/env bash
# Checks a built Debian package: it holds exactly the installed files of the list under /usr, is in
# section games, depends on the runtime libraries of wxWidgets, OpenSSL, PortAudio and Vorbis as
# dpkg-shlibdeps found them, and installs with dpkg into a throwaway root.
#
#   package_check.sh PACKAGE.deb EXPECTED_LIST
set -u
deb=$1 expected=$2

tmp=$(mktemp -d /tmp/lantern-deb-XXXXXX)
trap 'rm -rf "$tmp"' EXIT
fail() { echo "FAIL: $*"; exit 1; }

dpkg-deb -I "$deb" control >"$tmp/control" || fail "dpkg-deb -I cannot read $deb"
field() { sed -n "s/^$1: //p" "$tmp/control"; }
[ "$(field Package)" = lantern ] || fail "Package is '$(field Package)'"
[ "$(field Section)" = games ] || fail "Section is '$(field Section)'"
depends=$(field Depends)
# True when PATTERN (a basic regular expression) is the whole name of one dependency.
depends_on() { echo "$depends" | tr ',' '\n' | grep -q "^ *$1\( (.*\)\{0,1\}$"; }

# Every library the binary names must come from a package in Depends (dpkg-shlibdeps' work).
dpkg-deb -x "$deb" "$tmp/unpacked"
needed=$(readelf -d "$tmp/unpacked/usr/bin/lantern" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
[ -n "$needed" ] || fail "readelf found no NEEDED libraries in /usr/bin/lantern"
for soname in $needed; do
    path=$(ldconfig -p | awk -v so="$soname" '$1 == so && /x86-64|64bit/ { print $NF; exit }')
    [ -n "$path" ] || path=$(ldconfig -p | awk -v so="$soname" '$1 == so { print $NF; exit }')
    [ -n "$path" ] || fail "$soname, needed by lantern, is not on this system"
    package=$(dpkg -S "$(readlink -f "$path")" 2>/dev/null | head -1 | cut -d: -f1)
    [ -n "$package" ] || package=$(dpkg -S "$path" 2>/dev/null | head -1 | cut -d: -f1)
    [ -n "$package" ] || fail "no package owns $path ($soname)"
    depends_on "$package" || fail "lantern needs $soname from $package, which Depends lacks: $depends"
done

# The runtime libraries of the toolkit, TLS and sound, named as Debian 12 names them.
for library in 'libwxgtk3\.2-[0-9]' 'libwxbase3\.2-[0-9]' libssl3 libportaudio2 libvorbisfile3; do
    depends_on "$library" || fail "Depends has no $library: $depends"
done

# Regular files only: dpkg-deb also lists the folders that hold them.
dpkg-deb -c "$deb" | awk '$1 ~ /^-/ { print $6 }' | sed 's|^\./usr/||' | LC_ALL=C sort >"$tmp/files"
LC_ALL=C sort "$expected" | diff -u - "$tmp/files" ||
    fail "the package's files differ from $expected (- expected, + in the package)"

# A throwaway root with an empty package database: the dependencies are not there, which is what
# --force-depends is for; the files must land and dpkg must record them.
root=$tmp/root
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates"
touch "$root/var/lib/dpkg/status" "$root/var/lib/dpkg/available"
dpkg --root="$root" --force-depends --force-not-root --force-script-chrootless -i "$deb" >"$tmp/dpkg.log" 2>&1 ||
    { cat "$tmp/dpkg.log"; fail "dpkg -i into a throwaway root"; }
while read -r file; do
    [ -e "$root/usr/$file" ] || fail "dpkg did not install /usr/$file"
done <"$expected"
dpkg --root="$root" -s lantern | grep -q '^Status: install ok installed' || fail "dpkg does not record lantern as installed"
[ -x "$root/usr/bin/lantern" ] || fail "/usr/bin/lantern is not executable"
! readelf -S "$root/usr/bin/lantern" | grep -q '\.debug_info' || fail "/usr/bin/lantern still carries its debug information"
echo "PASS: $(basename "$deb"): $(wc -l <"$expected") files, section games, depends on $(echo "$depends" | tr -d '\n')"
