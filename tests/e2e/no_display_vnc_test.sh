#!/bin/bash
# `make run`'s start script on a machine without a display: it serves the app over VNC on
# 127.0.0.1 only, says so in one line with the port, shows the root list of the demo drive, and
# ends (servers included) on SIGTERM.
#   no_display_vnc_test.sh <run-demo.sh> <build folder>
set -u
START="$1" BUILD="$2"

for tool in Xvfb x11vnc xauth mcookie ss setsid; do
    command -v "$tool" >/dev/null || { echo "SKIP: $tool is not installed"; exit 77; }
done

WORK=$(mktemp -d "${TMPDIR:-/tmp}/vellora-vnc-test-XXXXXX")
SID=""
# The script runs in a session of its own, so that everything it started can be found and,
# should the test fail, ended.
session_pids() { [ -n "$SID" ] && ps -s "$SID" -o pid= 2>/dev/null | tr -d ' '; }
cleanup() {
    local pids
    pids=$(session_pids)
    [ -n "$pids" ] && kill $pids 2>/dev/null
    rm -rf "$WORK"
}
trap cleanup EXIT
export VELLORA_HOME="$WORK/home" XDG_CONFIG_HOME="$WORK/config" XDG_DATA_HOME="$WORK/data" \
    XDG_CACHE_HOME="$WORK/cache" XDG_STATE_HOME="$WORK/state" XDG_RUNTIME_DIR="$WORK/runtime"
mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
LOG="$XDG_STATE_HOME/com.tessaly.VelloraApp/system.log"

fail() {
    echo "FAIL: $*"
    echo "--- start script output:"
    cat "$WORK/out"
    [ -f "$LOG" ] && tail -n 20 "$LOG"
    exit 1
}

env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM setsid "$START" "$BUILD" \
    >"$WORK/out" 2>&1 </dev/null &
SID=$!

port=""
for _ in $(seq 600); do
    port=$(sed -n 's/.*VNC viewer at localhost:\([0-9]*\).*/\1/p' "$WORK/out" | head -n 1)
    [ -n "$port" ] && break
    kill -0 "$SID" 2>/dev/null || fail "the start script ended early"
    sleep 0.1
done
[ -n "$port" ] || fail "no line with the VNC port within a minute"
[ "$port" -ge 5900 ] || fail "port $port is below 5900"
line=$(grep -F "localhost:$port" "$WORK/out")
[ "$(printf '%s\n' "$line" | wc -l)" = 1 ] || fail "the port is told on more than one line"
[[ "$line" == *"ssh -L $port:localhost:$port"* ]] || fail "the line tells no SSH tunnel: $line"

# The port speaks VNC (the server's protocol banner) on 127.0.0.1.
exec 5<>"/dev/tcp/127.0.0.1/$port" || fail "nothing accepts connections on 127.0.0.1:$port"
read -r -t 5 banner <&5
exec 5<&-
[[ "$banner" == "RFB "* ]] || fail "127.0.0.1:$port does not speak VNC: $banner"

# The app comes up on the served display and paints the demo drive's root list there.
painted='"Message":"First paint of the root list"'
for _ in $(seq 300); do
    grep -qF "$painted" "$LOG" 2>/dev/null && break
    sleep 0.1
done
grep -qF '"Message":"Showing the window through the xcb platform plugin"' "$LOG" ||
    fail "the app did not come up on the served display"
grep -qF "$painted" "$LOG" || fail "the app painted no root list"

# Every listening socket of the script's session is the VNC port on 127.0.0.1.
pids=" $(session_pids | tr '\n' ' ')"
listening=$(ss -H -ltunp | while read -r line; do
    for pid in $(printf '%s\n' "$line" | grep -o 'pid=[0-9]*' | cut -d= -f2); do
        [[ "$pids" == *" $pid "* ]] && { printf '%s\n' "$line"; break; }
    done
done)
[ -n "$listening" ] || fail "no listening socket found for the session (pids$pids)"
others=$(printf '%s\n' "$listening" | awk '{print $5}' | grep -vxF "127.0.0.1:$port")
[ -z "$others" ] || fail "the session listens elsewhere too: $others"

kill -TERM "$SID"
for _ in $(seq 100); do
    [ -z "$(session_pids)" ] && break
    sleep 0.1
done
[ -z "$(session_pids)" ] || fail "still running 10 s after SIGTERM: $(ps -s "$SID" -o comm= | tr '\n' ' ')"
wait "$SID"
status=$?
[ "$status" = 0 ] || fail "the start script exited with $status on SIGTERM"
grep -qF '"Message":"Quitting on signal 15 (Terminated)"' "$LOG" || fail "the app did not quit on SIGTERM"
ss -H -ltn | awk '{print $4}' | grep -qxF "127.0.0.1:$port" && fail "port $port is still open"
echo "PASS: $line"
