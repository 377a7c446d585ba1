#!/bin/sh
# Seeds the demo drive when the home has none, installs the app's desktop entry for the user
# (the handler of velloraapp: URLs, install-desktop-entry.sh), then starts the app.
#   ./scripts/run-demo.sh <builddir> [app arguments...]
# The home is $VELLORA_HOME, else $XDG_DATA_HOME/vellora (~/.local/share/vellora).
# Without a display (neither DISPLAY nor WAYLAND_DISPLAY), the app is served over VNC on the
# loopback address (serve-vnc.sh).
set -eu
BUILD="${1:-build}"
[ $# -gt 0 ] && shift
CTL="$BUILD/tools/velloractl/velloractl"
APP="$BUILD/src/app/vellora"

if [ ! -x "$CTL" ]; then
    echo "run-demo: $CTL is not built; run 'make build' first" >&2
    exit 1
fi

HOME_DIR="${VELLORA_HOME:-${XDG_DATA_HOME:-$HOME/.local/share}/vellora}"
if [ -d "$HOME_DIR/drive" ] && [ -n "$(ls -A "$HOME_DIR/drive" 2>/dev/null)" ]; then
    echo "Using the drive in $HOME_DIR"
else
    echo "Seeding the demo drive in $HOME_DIR"
    "$CTL" seed-demo
fi

if [ -x "$APP" ]; then
    "$(dirname "$0")/install-desktop-entry.sh" "$APP" ||
        echo "run-demo: velloraapp: URLs won't reach the app (see above)" >&2
    if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
        exec "$(dirname "$0")/serve-vnc.sh" "$APP" "$@"
    fi
    exec "$APP" "$@"
fi
"$CTL" status
echo "The app ($APP) is not built yet; the demo drive above is ready for it."
exit 0
