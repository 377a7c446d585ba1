#!/bin/bash
# Organizes the demo drive as a screen reader user would (tests/e2e/organize_test.py over
# AT-SPI): a new folder, a move through the chooser, a rename, a delete and an app library's
# deletion, each checked in the drive and in the cloud copy. Keeps the screenshots
# prompt-red-message.png, chooser.png, undo-bar.png, delete-warning.png and
# delete-library-warning.png.
#   organize_test.sh <vellora> <velloractl> <artefact folder>
set -u
APP="$1" CTL="$2" OUT="$3"
HERE=$(cd "$(dirname "$0")" && pwd)
. "$HERE/atspi_session.sh"
atspi_display 600x1000 -- "$@"
atspi_home
atspi_bus

"$CTL" seed-demo >/dev/null || atspi_fail "seed-demo"
"$CTL" network wifi >/dev/null 2>&1
atspi_start_app "$APP"
atspi_drive organize_test.py "$LOG" "$OUT" "$WINDOW" "$CTL" "$VELLORA_HOME"
