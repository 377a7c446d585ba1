# Sourced by the AT-SPI tests' scripts (<name>_test.sh): the session the app runs in for them,
# as a screen reader user's desktop has it. Nothing here pauses for a fixed time.

# atspi_display <screen WxH> [tool...] -- <the script's arguments>: runs the script again under
# Xvfb and a D-Bus session bus of its own, or exits with 77 (skipped) when a tool is missing.
# Returns in that second run.
atspi_display() {
    local screen="$1" tools=(xvfb-run xdotool import xwd dbus-run-session dbus-send
        /usr/libexec/at-spi-bus-launcher)
    shift
    while [ "$1" != -- ]; do tools+=("$1"); shift; done
    shift
    [ -n "${VELLORA_E2E_DISPLAY:-}" ] && return 0
    for tool in "${tools[@]}"; do
        command -v "$tool" >/dev/null || { echo "SKIP: $tool is not installed"; exit 77; }
    done
    /usr/bin/python3 -c "import pyatspi" 2>/dev/null || { echo "SKIP: no python3-pyatspi"; exit 77; }
    VELLORA_E2E_DISPLAY=1 exec xvfb-run -a -s "-screen 0 ${screen}x24" \
        dbus-run-session -- "$0" "$@"
}

# atspi_home: a fresh home for the drive and the XDG folders under $WORK, removed at the end with
# the app and the accessibility bus; the artefact folder $OUT without earlier screenshots; $LOG,
# the app's log.
atspi_home() {
    WORK=$(mktemp -d "${TMPDIR:-/tmp}/vellora-e2e-XXXXXX")
    APP_PID="" BUS_PID=""
    trap atspi_cleanup EXIT
    export VELLORA_HOME="$WORK/home" XDG_CONFIG_HOME="$WORK/config" XDG_DATA_HOME="$WORK/data" \
        XDG_CACHE_HOME="$WORK/cache" XDG_STATE_HOME="$WORK/state" XDG_RUNTIME_DIR="$WORK/runtime"
    mkdir -p "$XDG_RUNTIME_DIR" "$XDG_CONFIG_HOME" "$OUT" && chmod 700 "$XDG_RUNTIME_DIR"
    rm -f "$OUT"/*.png
    unset QT_QPA_PLATFORM
    export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 NO_AT_BRIDGE=0
    LOG="$XDG_STATE_HOME/com.tessaly.VelloraApp/system.log"
}

atspi_cleanup() {
    [ -n "$APP_PID" ] && kill "$APP_PID" 2>/dev/null && wait "$APP_PID" 2>/dev/null
    [ -n "$BUS_PID" ] && kill "$BUS_PID" 2>/dev/null
    rm -rf "$WORK"
}

atspi_fail() {
    echo "FAIL: $*"
    [ -f "$LOG" ] && tail -n 30 "$LOG"
    [ -f "$WORK/app.out" ] && tail -n 30 "$WORK/app.out"
    exit 1
}

# atspi_data_dir <folder>: a data folder for XDG_DATA_DIRS with no applications in it and the
# system's MIME database.
atspi_data_dir() {
    mkdir -p "$1/applications" && ln -s /usr/share/mime "$1/mime"
}

# atspi_bus: the accessibility bus, started before the app, which asks for it as it starts.
atspi_bus() {
    /usr/libexec/at-spi-bus-launcher --launch-immediately &
    BUS_PID=$!
    for _ in $(seq 200); do
        dbus-send --session --print-reply --dest=org.freedesktop.DBus /org/freedesktop/DBus \
            org.freedesktop.DBus.NameHasOwner string:org.a11y.Bus 2>/dev/null |
            grep -q "boolean true" && return 0
        sleep 0.1
    done
    atspi_fail "the accessibility bus did not start in 20 s"
}

# atspi_start_app <command>...: starts the app, sets APP_PID and WINDOW once its window shows,
# and gives it the keyboard focus.
atspi_start_app() {
    "$@" >>"$WORK/app.out" 2>&1 &
    APP_PID=$!
    WINDOW=$(timeout 30 xdotool search --sync --onlyvisible --pid "$APP_PID" | head -n1)
    [ -n "$WINDOW" ] || atspi_fail "no window: $(cat "$WORK/app.out")"
    xdotool windowfocus --sync "$WINDOW"
}

# atspi_drive <script> <arguments>...: runs the Python script that drives the app; on a failure,
# the ends of the log and of the app's output follow its word.
atspi_drive() {
    PYTHONDONTWRITEBYTECODE=1 /usr/bin/python3 "$HERE/$1" "${@:2}" && return 0
    local status=$?
    [ -f "$LOG" ] && tail -n 30 "$LOG"
    tail -n 30 "$WORK/app.out"
    return $status
}
