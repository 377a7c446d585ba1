#!/bin/bash
# Keeps a folder of cloud-only photos offline and removes its download again, as a screen reader
# user would (tests/e2e/offline_test.py over AT-SPI), with velloractl throttling the downloads so
# that their progress shows. Keeps the screenshots offline-progress.png, offline-kept.png,
# offline-kept-inside.png and offline-removed.png.
#   offline_test.sh <vellora> <velloractl> <artefact folder>
set -u
APP="$1" CTL="$2" OUT="$3"
HERE=$(cd "$(dirname "$0")" && pwd)

if [ -z "${VELLORA_E2E_DISPLAY:-}" ]; then
    for tool in xvfb-run xdotool import dbus-run-session /usr/libexec/at-spi-bus-launcher; do
        command -v "$tool" >/dev/null || { echo "SKIP: $tool is not installed"; exit 77; }
    done
    /usr/bin/python3 -c "import pyatspi" 2>/dev/null || { echo "SKIP: no python3-pyatspi"; exit 77; }
    VELLORA_E2E_DISPLAY=1 exec xvfb-run -a -s "-screen 0 600x1000x24" \
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
export VELLORA_HOME="$WORK/home" XDG_CONFIG_HOME="$WORK/config" XDG_DATA_HOME="$WORK/data" \
    XDG_CACHE_HOME="$WORK/cache" XDG_STATE_HOME="$WORK/state" XDG_RUNTIME_DIR="$WORK/runtime"
mkdir -p "$XDG_RUNTIME_DIR" "$OUT" && chmod 700 "$XDG_RUNTIME_DIR"
rm -f "$OUT"/*.png
unset QT_QPA_PLATFORM
export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 NO_AT_BRIDGE=0
LOG="$XDG_STATE_HOME/com.tessaly.VelloraApp/system.log"

/usr/libexec/at-spi-bus-launcher --launch-immediately &
BUS_PID=$!
sleep 1

# The demo drive, and a folder "Album" that is here with three photos only in the cloud.
"$CTL" seed-demo >/dev/null || { echo "FAIL: seed-demo"; exit 1; }
mkdir -p "$WORK/src/Album"
"$CTL" import "$WORK/src/Album" "Album" >/dev/null || { echo "FAIL: import Album"; exit 1; }
for name in Harbour Lighthouse Market; do
    head -c 600000 /dev/urandom >"$WORK/src/$name.jpg"
    "$CTL" import "$WORK/src/$name.jpg" "Album/$name.jpg" --cloud-only >/dev/null ||
        { echo "FAIL: import $name"; exit 1; }
done
"$CTL" network wifi >/dev/null 2>&1
# About three seconds a photo.
"$CTL" throttle 200000 >/dev/null

"$APP" >"$WORK/app.out" 2>&1 &
APP_PID=$!
WINDOW=$(timeout 30 xdotool search --sync --onlyvisible --pid "$APP_PID" | head -n1)
[ -n "$WINDOW" ] || { echo "FAIL: no window: $(cat "$WORK/app.out")"; exit 1; }
xdotool windowfocus --sync "$WINDOW"

/usr/bin/python3 "$HERE/offline_test.py" "$LOG" "$OUT" "$WINDOW" "$CTL" "$VELLORA_HOME"
status=$?
[ $status -ne 0 ] && [ -f "$LOG" ] && tail -n 20 "$LOG"
exit $status
