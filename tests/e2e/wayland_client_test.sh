#!/bin/bash
# Under a Wayland session the app is a native Wayland client: started with WAYLAND_DISPLAY naming
# a headless Weston (and no X11 display at all), it shows the demo drive's root list through Qt's
# Wayland plugin, and quits on SIGTERM.
#   wayland_client_test.sh <vellora> <velloractl>
set -u
APP="$1" CTL="$2"

command -v weston >/dev/null || { echo "SKIP: weston is not installed"; exit 77; }

WORK=$(mktemp -d "${TMPDIR:-/tmp}/vellora-wayland-XXXXXX")
WESTON_PID="" APP_PID=""
cleanup() {
    for pid in $APP_PID $WESTON_PID; do
        kill "$pid" 2>/dev/null && wait "$pid" 2>/dev/null
    done
    rm -rf "$WORK"
}
trap cleanup EXIT
export VELLORA_HOME="$WORK/home" XDG_CONFIG_HOME="$WORK/config" XDG_DATA_HOME="$WORK/data" \
    XDG_CACHE_HOME="$WORK/cache" XDG_STATE_HOME="$WORK/state" XDG_RUNTIME_DIR="$WORK/runtime"
mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
unset DISPLAY QT_QPA_PLATFORM
LOG="$XDG_STATE_HOME/com.tessaly.VelloraApp/system.log"

fail() {
    echo "FAIL: $*"
    cat "$WORK/app.out" 2>/dev/null
    tail -n 5 "$WORK/weston.log" 2>/dev/null
    exit 1
}
logged() { grep -qF "\"Message\":\"$1\"" "$LOG" 2>/dev/null; }

weston --backend=headless-backend.so --use-pixman --socket=vellora-test-0 --width=1024 \
    --height=768 --idle-time=0 >"$WORK/weston.log" 2>&1 &
WESTON_PID=$!
for _ in $(seq 100); do
    [ -S "$XDG_RUNTIME_DIR/vellora-test-0" ] && break
    sleep 0.1
done
[ -S "$XDG_RUNTIME_DIR/vellora-test-0" ] || fail "weston did not start"

"$CTL" seed-demo >/dev/null || fail "seed-demo"
WAYLAND_DISPLAY=vellora-test-0 "$APP" >"$WORK/app.out" 2>&1 &
APP_PID=$!
for _ in $(seq 300); do
    logged "First paint of the root list" && break
    kill -0 "$APP_PID" 2>/dev/null || fail "the app ended"
    sleep 0.1
done
logged "Showing the window through the wayland platform plugin" || fail "not a Wayland client"
logged "First paint of the root list" || fail "the root list was not painted"

kill -TERM "$APP_PID"
wait "$APP_PID"
status=$?
APP_PID=""
[ "$status" = 0 ] || fail "the app exited with $status on SIGTERM"
echo "PASS"
