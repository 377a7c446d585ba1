#!/bin/bash
# Launch URLs and state restoration over AT-SPI (tests/e2e/launch_test.py): the desktop entry
# installed by the set-up, `gio open` and `xdg-open` of velloraapp: URLs reaching the running
# instance (details of an item), a launch that names no sender refused, and after a quit and a
# new start the details screen back. The app is started as the automation runner starts it.
#   launch_test.sh <vellora> <velloractl> <install-desktop-entry.sh> <artefact folder>
set -u
APP="$1" CTL="$2" INSTALL="$3" OUT="$4"
HERE=$(cd "$(dirname "$0")" && pwd)

if [ -z "${VELLORA_E2E_DISPLAY:-}" ]; then
    for tool in xvfb-run xdotool import dbus-run-session /usr/libexec/at-spi-bus-launcher gio \
        xdg-open xdg-mime; do
        command -v "$tool" >/dev/null || { echo "SKIP: $tool is not installed"; exit 77; }
    done
    /usr/bin/python3 -c "import pyatspi" 2>/dev/null || { echo "SKIP: no python3-pyatspi"; exit 77; }
    VELLORA_E2E_DISPLAY=1 exec xvfb-run -a -s "-screen 0 1100x1000x24" \
        dbus-run-session -- "$0" "$@"
fi

WORK=$(mktemp -d "${TMPDIR:-/tmp}/vellora-e2e-XXXXXX")
APP_PID="" BUS_PID=""
cleanup() {
    [ -n "$APP_PID" ] && kill "$APP_PID" 2>/dev/null && wait "$APP_PID" 2>/dev/null
    [ -n "$BUS_PID" ] && kill "$BUS_PID" 2>/dev/null
    rm -rf "$WORK"
}
trap cleanup EXIT
# No desktop environment: xdg-open takes its generic road, gio its own; both find the handler
# only through the user's desktop entry and mimeapps.list.
unset XDG_CURRENT_DESKTOP DESKTOP_SESSION GNOME_DESKTOP_SESSION_ID KDE_FULL_SESSION
export VELLORA_HOME="$WORK/home" XDG_CONFIG_HOME="$WORK/config" XDG_DATA_HOME="$WORK/data" \
    XDG_CACHE_HOME="$WORK/cache" XDG_STATE_HOME="$WORK/state" XDG_RUNTIME_DIR="$WORK/runtime" \
    XDG_DATA_DIRS="$WORK/system-data" XDG_CONFIG_DIRS="$WORK/system-config"
mkdir -p "$XDG_RUNTIME_DIR" "$OUT" "$XDG_DATA_DIRS" && chmod 700 "$XDG_RUNTIME_DIR"
ln -s /usr/share/mime "$XDG_DATA_DIRS/mime"
rm -f "$OUT"/*.png
unset QT_QPA_PLATFORM
export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 NO_AT_BRIDGE=0
LOG="$XDG_STATE_HOME/com.tessaly.VelloraApp/system.log"

fail() {
    echo "FAIL: $*"
    [ -f "$LOG" ] && tail -n 30 "$LOG"
    [ -f "$WORK/app.out" ] && tail -n 20 "$WORK/app.out"
    exit 1
}

/usr/libexec/at-spi-bus-launcher --launch-immediately &
BUS_PID=$!
sleep 1

"$INSTALL" "$APP" >/dev/null || fail "the desktop entry was not installed"
[ "$(xdg-mime query default x-scheme-handler/velloraapp)" = com.tessaly.VelloraApp.desktop ] ||
    fail "xdg-mime does not name the app for velloraapp: URLs"
"$CTL" seed-demo >/dev/null || fail "seed-demo"
"$CTL" network wifi >/dev/null 2>&1

start_app() {
    "$APP" --source-application=com.tessaly.Drillbot >>"$WORK/app.out" 2>&1 &
    APP_PID=$!
    WINDOW=$(timeout 30 xdotool search --sync --onlyvisible --pid "$APP_PID" | head -n1)
    [ -n "$WINDOW" ] || fail "no window: $(cat "$WORK/app.out")"
    xdotool windowfocus --sync "$WINDOW"
}

start_app
/usr/bin/python3 "$HERE/launch_test.py" running "$LOG" "$OUT" "$WINDOW" "$APP" "$VELLORA_HOME" ||
    fail "while running"
kill -0 "$APP_PID" || fail "the running instance ended"

# Quit as a session's end does, and start again: the details screen comes back.
kill -TERM "$APP_PID"
wait "$APP_PID"
status=$?
APP_PID=""
[ "$status" = 0 ] || fail "the app exited with $status on SIGTERM"
[ -f "$XDG_DATA_HOME/com.tessaly.VelloraApp/RestorationArchive.json" ] || fail "no archive saved"
start_app
/usr/bin/python3 "$HERE/launch_test.py" restarted "$LOG" "$OUT" "$WINDOW" "$APP" "$VELLORA_HOME" ||
    fail "after the restart"
echo "PASS: screenshots in $OUT"
