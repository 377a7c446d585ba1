#!/bin/bash
# A start that cannot work ends with one line naming the cause and the remedy, and exit status 1,
# never with Qt's abort: a read-only log folder, a read-only drive home, no display at all, a
# display nobody serves, a platform plugin that is not installed.
#   start_failures_test.sh <vellora>
set -u
APP="$1"

WORK=$(mktemp -d "${TMPDIR:-/tmp}/vellora-start-XXXXXX")
trap 'chmod -R u+w "$WORK"; rm -rf "$WORK"' EXIT
export VELLORA_HOME="$WORK/home" XDG_CONFIG_HOME="$WORK/config" XDG_DATA_HOME="$WORK/data" \
    XDG_CACHE_HOME="$WORK/cache" XDG_STATE_HOME="$WORK/state" XDG_RUNTIME_DIR="$WORK/runtime"
mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
unset QT_QPA_PLATFORM WAYLAND_DISPLAY DISPLAY

# Folders are made read-only by their mode, which root ignores; root gets a read-only bind mount
# in a mount namespace of the app's own instead.
read_only=()
if [ "$(id -u)" = 0 ]; then
    if ! unshare -m sh -c 'mount --bind "$0" "$0" && mount -o remount,bind,ro "$0"' "$WORK" \
        2>/dev/null; then
        echo "SKIP: running as root without the right to make a read-only mount"
        exit 77
    fi
    read_only=(unshare -m sh -c
        'for d in $READ_ONLY; do mount --bind "$d" "$d" && mount -o remount,bind,ro "$d" || exit 99; done; exec "$@"'
        sh)
fi

failures=0
fail() {
    echo "FAIL: $*"
    failures=$((failures + 1))
}

# Runs the app with the given environment assignments and checks that it refused to start: exit
# status 1, one "cannot start" line, the last one on stderr, holding every fragment of $expected
# (separated by "|"), and nothing from Qt's abort.
expect_refusal() {
    local name="$1" expected="$2"
    shift 2
    env "$@" "${read_only[@]}" "$APP" >"$WORK/out" 2>"$WORK/err" </dev/null
    local status=$?
    local last
    last=$(tail -n 1 "$WORK/err")
    [ "$status" = 1 ] || fail "$name: exit status $status, not 1: $(tail -n 3 "$WORK/err")"
    [ -s "$WORK/out" ] && fail "$name: printed on stdout: $(head -n 3 "$WORK/out")"
    [ "$(grep -c 'cannot start' "$WORK/err")" = 1 ] || fail "$name: not one cause line: $(cat "$WORK/err")"
    case "$last" in
    "vellora: cannot start: "*) ;;
    *) fail "$name: the last line is not the cause: $last" ;;
    esac
    local fragment
    IFS='|' read -r -a fragments <<<"$expected"
    for fragment in "${fragments[@]}"; do
        [[ "$last" == *"$fragment"* ]] || fail "$name: \"$fragment\" is not in: $last"
    done
    grep -qiE 'qt\.qpa|abort|core dumped|platform plugin could be initialized' "$WORK/err" &&
        fail "$name: Qt's own failure text came through: $(cat "$WORK/err")"
    echo "ok: $name: $last"
}

mkdir -p "$WORK/state-ro" "$WORK/home-ro"
[ "$(id -u)" = 0 ] || chmod a-w "$WORK/state-ro" "$WORK/home-ro"

expect_refusal "read-only log folder" "log folder $WORK/state-ro/com.tessaly.VelloraApp|XDG_STATE_HOME" \
    XDG_STATE_HOME="$WORK/state-ro" READ_ONLY="$WORK/state-ro" DISPLAY=:0
expect_refusal "read-only drive home" "drive home $WORK/home-ro is not writable|VELLORA_HOME" \
    VELLORA_HOME="$WORK/home-ro" READ_ONLY="$WORK/home-ro" DISPLAY=:0

# The remaining starts find their folders writable.
read_only=()
expect_refusal "no display" "no display|DISPLAY|WAYLAND_DISPLAY|make run"

unserved=""
for n in $(seq 90 199); do
    if [ ! -e "/tmp/.X11-unix/X$n" ] && [ ! -e "/tmp/.X$n-lock" ]; then
        unserved=":$n"
        break
    fi
done
expect_refusal "display nobody serves" "X11 display \"$unserved\"|make run" DISPLAY="$unserved"
expect_refusal "platform plugin not installed" "\"vellora-none\" is not installed|QT_QPA_PLATFORM" \
    QT_QPA_PLATFORM=vellora-none
expect_refusal "Wayland display nobody serves" "WAYLAND_DISPLAY" \
    WAYLAND_DISPLAY=vellora-none-0

[ "$failures" = 0 ] || exit 1
echo "PASS"
