#!/bin/bash
# Launch URLs and state restoration over AT-SPI (tests/e2e/launch_test.py): the desktop entry
# installed by the set-up, `gio open` and `xdg-open` of velloraapp: URLs reaching the running
# instance (details of an item), a launch that names no sender refused, and after a quit and a
# new start the details screen back. The app is started as the automation runner starts it.
#   launch_test.sh <vellora> <velloractl> <install-desktop-entry.sh> <artefact folder>
set -u
APP="$1" CTL="$2" INSTALL="$3" OUT="$4"
HERE=$(cd "$(dirname "$0")" && pwd)
. "$HERE/atspi_session.sh"
atspi_display 1100x1000 gio xdg-open xdg-mime -- "$@"
atspi_home
# Before the desktop below: the bus launcher needs the system's settings schemas.
atspi_bus
# No desktop environment: xdg-open takes its generic road, gio its own; both find the handler
# only through the user's desktop entry and mimeapps.list.
unset XDG_CURRENT_DESKTOP DESKTOP_SESSION GNOME_DESKTOP_SESSION_ID KDE_FULL_SESSION
export XDG_DATA_DIRS="$WORK/system-data" XDG_CONFIG_DIRS="$WORK/system-config"
atspi_data_dir "$XDG_DATA_DIRS"

"$INSTALL" "$APP" >/dev/null || atspi_fail "the desktop entry was not installed"
[ "$(xdg-mime query default x-scheme-handler/velloraapp)" = com.tessaly.VelloraApp.desktop ] ||
    atspi_fail "xdg-mime does not name the app for velloraapp: URLs"
"$CTL" seed-demo >/dev/null || atspi_fail "seed-demo"
"$CTL" network wifi >/dev/null 2>&1

atspi_start_app "$APP" --source-application=com.tessaly.Drillbot
atspi_drive launch_test.py running "$LOG" "$OUT" "$WINDOW" "$APP" "$VELLORA_HOME" || exit 1
kill -0 "$APP_PID" || atspi_fail "the running instance ended"

# Quit as a session's end does, and start again: the details screen comes back.
kill -TERM "$APP_PID"
wait "$APP_PID"
status=$?
APP_PID=""
[ "$status" = 0 ] || atspi_fail "the app exited with $status on SIGTERM"
[ -f "$XDG_DATA_HOME/com.tessaly.VelloraApp/RestorationArchive.json" ] || atspi_fail "no archive saved"
atspi_start_app "$APP" --source-application=com.tessaly.Drillbot
atspi_drive launch_test.py restarted "$LOG" "$OUT" "$WINDOW" "$APP" "$VELLORA_HOME" || exit 1
echo "PASS: screenshots in $OUT"
