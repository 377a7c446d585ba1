#!/bin/bash
# Cold start: from process start to the first painted root list of the demo drive, read from the
# app's log, against a minimal Qt Widgets program that paints one window (startup_reference),
# both started one after the other, many times, on the same Xvfb display. Prints the medians and
# their ratio (target <= 2).
#   bench/cold_start.sh <build folder>     (COLD_START_RUNS, default 15, sets the count)
set -u
BUILD=$(cd "${1:-build}" && pwd)
APP="$BUILD/src/app/vellora" CTL="$BUILD/tools/velloractl/velloractl"
REF="$BUILD/bench/startup_reference"
RUNS="${COLD_START_RUNS:-15}"

for program in "$APP" "$CTL" "$REF"; do
    [ -x "$program" ] || { echo "cold_start: $program is not built"; exit 1; }
done
if [ -z "${COLD_START_DISPLAY:-}" ]; then
    command -v xvfb-run >/dev/null || { echo "cold_start: xvfb-run is not installed"; exit 1; }
    COLD_START_DISPLAY=1 exec xvfb-run -a -s "-screen 0 1280x800x24 -nolisten tcp" "$0" "$@"
fi

WORK=$(mktemp -d "${TMPDIR:-/tmp}/vellora-cold-start-XXXXXX")
APP_PID=""
cleanup() {
    [ -n "$APP_PID" ] && kill "$APP_PID" 2>/dev/null && wait "$APP_PID" 2>/dev/null
    rm -rf "$WORK"
}
trap cleanup EXIT
export VELLORA_HOME="$WORK/home" XDG_CONFIG_HOME="$WORK/config" XDG_DATA_HOME="$WORK/data" \
    XDG_CACHE_HOME="$WORK/cache" XDG_STATE_HOME="$WORK/state" XDG_RUNTIME_DIR="$WORK/runtime"
mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
unset QT_QPA_PLATFORM WAYLAND_DISPLAY
LOG="$XDG_STATE_HOME/com.tessaly.VelloraApp/system.log"
"$CTL" seed-demo >/dev/null || { echo "cold_start: seed-demo failed"; exit 1; }

# Nanoseconds since the epoch, without starting a process.
now_ns() {
    local t="$EPOCHREALTIME"
    echo "${t%.*}${t#*.}000"
}

# Waits without starting a process: a read that times out on a pipe nobody writes to.
exec {NAP}<> <(:)
nap() { read -r -t "$1" -u "$NAP" _ || true; }

# Milliseconds from the app's start to the log record of its first painted root list. While the
# app starts, the wait for that record starts no process (the reference has no watcher taking
# the machine's two cores from it): it reads the lines the log gains through a descriptor opened
# at its end, with the shell's own read.
app_run() {
    local start record="" line partial="" log
    touch "$LOG" 2>/dev/null || { mkdir -p "$(dirname "$LOG")" && touch "$LOG"; }
    exec {log}<"$LOG"
    while IFS= read -r -u "$log" line; do :; done
    local t="$EPOCHREALTIME"
    start="${t%.*}${t#*.}000"
    "$APP" >/dev/null 2>&1 &
    APP_PID=$!
    for ((i = 0; i < 1500; i++)); do
        while IFS= read -r -u "$log" line || { partial+=$line; false; }; do
            line=$partial$line
            partial=""
            if [[ $line == *"\"PID\":\"$APP_PID\""* &&
                $line == *'"Message":"First paint of the root list"'* ]]; then
                record=$line
                break
            fi
        done
        [ -n "$record" ] && break
        kill -0 "$APP_PID" 2>/dev/null || break
        nap 0.005
    done
    exec {log}<&-
    kill -TERM "$APP_PID" 2>/dev/null
    wait "$APP_PID" 2>/dev/null
    APP_PID=""
    [ -n "$record" ] || return 1
    local seconds nanoseconds
    seconds=$(sed -n 's/.*"Time":"\([0-9]*\)".*/\1/p' <<<"$record")
    nanoseconds=$(sed -n 's/.*"TimeNanoSec":"\([0-9]*\)".*/\1/p' <<<"$record")
    awk -v s="$seconds" -v n="$nanoseconds" -v t0="$start" \
        'BEGIN { printf "%.1f\n", (s * 1e9 + n - t0) / 1e6 }'
}

# Milliseconds from the reference's start to its first paint.
reference_run() {
    local start painted
    start=$(now_ns)
    painted=$("$REF" 2>/dev/null) || return 1
    awk -v p="$painted" -v t0="$start" 'BEGIN { printf "%.1f\n", (p - t0) / 1e6 }'
}

median() { sort -n | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

# One run of each is not counted: it stores the account token and fills the page cache.
app_run >/dev/null || { echo "cold_start: the app logged no first paint of the root list"; tail -n 5 "$LOG"; exit 1; }
reference_run >/dev/null || { echo "cold_start: the reference did not paint"; exit 1; }
: >"$WORK/app.ms"
: >"$WORK/reference.ms"
for _ in $(seq "$RUNS"); do
    app_run >>"$WORK/app.ms" || { echo "cold_start: a run logged no first paint"; exit 1; }
    sleep 0.2
    reference_run >>"$WORK/reference.ms" || { echo "cold_start: a reference run failed"; exit 1; }
    sleep 0.2
done
app_ms=$(median <"$WORK/app.ms")
reference_ms=$(median <"$WORK/reference.ms")
echo "cold start to first paint, median of $RUNS runs each:"
echo "  vellora, root list of the demo drive:  $app_ms ms (runs: $(sort -n "$WORK/app.ms" | tr '\n' ' '))"
echo "  minimal Qt Widgets window (reference): $reference_ms ms (runs: $(sort -n "$WORK/reference.ms" | tr '\n' ' '))"
awk -v a="$app_ms" -v r="$reference_ms" \
    'BEGIN { printf "  ratio vellora / reference: %.2f (target <= 2)\n", a / r }'
