#!/usr/bin/env bash
# Runs a program on a virtual X display and serves that display over VNC on the loopback address
# only, for machines without a display (a server, a container, an SSH login). Only this user can
# reach the display (an X authority cookie in a private folder) and only this machine the VNC port
# (the first free one from 5900 up). Qt's own VNC platform cannot be confined to loopback, so it
# is not used. Prints one line telling how to look at the window, then runs until the program
# ends or the script is interrupted, and stops both servers.
#   serve-vnc.sh <program> [arguments...]
set -u

for tool in Xvfb x11vnc xauth mcookie; do
    if ! command -v "$tool" >/dev/null; then
        echo "serve-vnc: $tool is not installed; run scripts/install-deps.sh" >&2
        exit 1
    fi
done

WORK=$(mktemp -d "${TMPDIR:-/tmp}/vellora-vnc-XXXXXX")
xvfb_pid="" vnc_pid="" program_pid=""
stop_servers() {
    for pid in $vnc_pid $xvfb_pid; do
        kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null
    done
    rm -rf "$WORK"
}
trap stop_servers EXIT
# The program quits through its own event loop on SIGTERM; the servers outlive it until then.
end_program() {
    if [ -n "$program_pid" ]; then
        kill -TERM "$program_pid" 2>/dev/null
    else
        exit 130
    fi
}
trap end_program INT TERM HUP

fail() {
    echo "serve-vnc: $*" >&2
    exit 1
}
# Waits up to ten seconds for `test` to hold, while process $1 runs.
wait_until() {
    local pid="$1"
    shift
    for _ in $(seq 100); do
        "$@" && return 0
        kill -0 "$pid" 2>/dev/null || return 1
        sleep 0.1
    done
    return 1
}

# The server reads every cookie of its authority file whatever display it names; clients look
# theirs up by display number, which Xvfb picks (-displayfd) only as it starts.
cookie=$(mcookie)
touch "$WORK/server-auth" "$WORK/auth"
xauth -q -f "$WORK/server-auth" add :0 . "$cookie"
Xvfb -displayfd 3 -auth "$WORK/server-auth" -nolisten tcp -screen 0 1280x800x24 \
    3>"$WORK/display" 2>"$WORK/xvfb.log" &
xvfb_pid=$!
wait_until "$xvfb_pid" test -s "$WORK/display" ||
    fail "the virtual display did not start: $(tail -n 3 "$WORK/xvfb.log")"
display=":$(head -n 1 "$WORK/display")"
export XAUTHORITY="$WORK/auth"
xauth -q add "$display" . "$cookie"

# -localhost binds 127.0.0.1 only; -noipv6 keeps x11vnc off every IPv6 address as well.
x11vnc -display "$display" -auth "$XAUTHORITY" -localhost -noipv6 -autoport 5900 -forever \
    -shared -nopw -quiet >"$WORK/x11vnc.out" 2>"$WORK/x11vnc.log" &
vnc_pid=$!
wait_until "$vnc_pid" grep -q '^PORT=' "$WORK/x11vnc.out" ||
    fail "the VNC server did not start: $(tail -n 3 "$WORK/x11vnc.log")"
port=$(sed -n 's/^PORT=//p' "$WORK/x11vnc.out" | head -n 1)

echo "No display here: serving the app over VNC on this machine only; open any VNC viewer at" \
    "localhost:$port (from another machine: ssh -L $port:localhost:$port ${USER:-you}@$(uname -n)," \
    "then the viewer at localhost:$port). Ctrl-C ends it."

DISPLAY="$display" "$@" &
program_pid=$!
# A trapped signal interrupts `wait` while the program is still ending; once it has ended, `wait`
# gives its status.
while kill -0 "$program_pid" 2>/dev/null; do
    wait "$program_pid"
done
wait "$program_pid"
