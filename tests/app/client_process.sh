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
