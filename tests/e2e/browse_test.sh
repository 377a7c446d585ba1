#!/bin/bash
# Browses the demo drive as a screen reader user would (tests/e2e/browse_test.py over AT-SPI):
# a folder, the status line, edit mode with a selection, a library without folders, search and
# the grid. Keeps the screenshots list.png, edit-selection.png, search-results.png, grid.png.
#   browse_test.sh <vellora> <velloractl> <artefact folder>
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
atspi_drive browse_test.py "$LOG" "$OUT" "$WINDOW"
