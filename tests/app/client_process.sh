# Shell helpers for the tests that drive the real client under Xvfb; sourced, not run.

# Runs "$@" until it succeeds or the time (in tenths of a second) runs out.
wait_for() {
    local tenths=$1
    shift
    for ((i = 0; i < tenths * 2; i++)); do
        "$@" && return 0
        sleep 0.05
    done
    return 1
}

# True once the client ($APP_PID) has ended: gone, or a zombie waiting to be reaped.
client_ended() {
    local state
    state=$(cut -d' ' -f3 "/proc/$APP_PID/stat" 2>/dev/null) || return 0
    [ -z "$state" ] || [ "$state" = Z ]
}

# Ends what a test started: the client (hard: it may be stuck on purpose), the world, the X server.
end_test_processes() {
    { [ -n "${APP_PID:-}" ] && kill -9 "$APP_PID" && wait "$APP_PID"; } 2>/dev/null
    { [ -n "${WORLD_PID:-}" ] && kill "$WORLD_PID" && wait "$WORLD_PID"; } 2>/dev/null
    { [ -n "${XVFB_PID:-}" ] && kill "$XVFB_PID" && wait "$XVFB_PID"; } 2>/dev/null
    return 0
}

# A private Xvfb (XVFB_PID) with its DISPLAY exported. Its output goes to DIR/xvfb.log: holding
# our stdout would keep a caller's pipe open forever.
start_private_xvfb() {
    local dir=$1
    Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$dir/display" >"$dir/xvfb.log" 2>&1 &
    XVFB_PID=$!
    wait_for 100 test -s "$dir/display" || return 1
    export DISPLAY=":$(cat "$dir/display")"
}

# The test world TESTWORLD (WORLD_PID) on a free port, every line it receives in DIR/received.log,
# and HOME_DIR's system file pointing the client at it.
start_test_world() {
    local testworld=$1 dir=$2 home_dir=$3 port
    "$testworld" --port 0 --log "$dir/received.log" >"$dir/world.out" 2>"$dir/world.err" &
    WORLD_PID=$!
    wait_for 100 grep -q '^listening on ' "$dir/world.out" || return 1
    port=$(sed -n 's/^listening on //p' "$dir/world.out")
    mkdir -p "$home_dir/.config/EmberVale"
    printf '%s\n' '<?xml version="1.0" encoding="ISO-8859-1"?>' '<system_config_list>' \
        '  <server_host>127.0.0.1</server_host>' "  <server_port>$port</server_port>" '</system_config_list>' '' \
        >"$home_dir/.config/EmberVale/ember_vale.cfg"
}

# Ends the test with FAIL and the message, and the last lines of the logs in DIR that exist.
fail_with_logs() {
    local dir=$1 f
    shift
    echo "FAIL: $*"
    for f in app.log world.err received.log; do
        [ -s "$dir/$f" ] && tail -20 "$dir/$f" | sed "s/^/  $f: /"
    done
    exit 1
}

# True when the world received exactly this line.
world_received() { grep -qxF -- "$1" "$TEST_DIR/received.log" 2>/dev/null; }
