# Shell helpers for the tests of the installed client; sourced, not run.

# Installs BUILD_DIR into the fresh directory PREFIX as a player's `cmake --install` would.
install_into() {
    local build_dir=$1 prefix=$2
    cmake --install "$build_dir" --prefix "$prefix" >"$prefix.install.log" 2>&1 || {
        echo "FAIL: cmake --install into $prefix"
        sed 's/^/  install: /' "$prefix.install.log"
        exit 1
    }
}

# Every file and link below DIR, relative to it, one a line, sorted.
files_below() {
    (cd "$1" && find . \( -type f -o -type l \) | sed 's|^\./||' | LC_ALL=C sort)
}

# The value of KEY in the desktop entry FILE.
desktop_key() {
    sed -n "s/^$2=//p" "$1" | head -1
}
