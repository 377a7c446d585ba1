#!/bin/bash
# Follows a previewed document while another device changes it, as a screen reader user would
# (tests/e2e/follow_test.py over AT-SPI): velloractl renames it, edits it and deletes it from
# the cloud side, and the preview takes the new name, shows the new text and leaves. Nothing on
# the desktop takes Markdown: XDG_DATA_DIRS names only this test's empty folder (with the
# system's MIME database linked in), so the document opens in the app's own preview.
#   follow_test.sh <vellora> <velloractl> <artefact folder>
set -u
APP="$1" CTL="$2" OUT="$3"
HERE=$(cd "$(dirname "$0")" && pwd)
. "$HERE/atspi_session.sh"
atspi_display 600x1000 -- "$@"
atspi_home
atspi_data_dir "$WORK/apps"
atspi_bus

"$CTL" seed-demo >/dev/null || atspi_fail "seed-demo"
"$CTL" network wifi >/dev/null 2>&1
atspi_start_app env XDG_DATA_DIRS="$WORK/apps" XDG_CONFIG_DIRS="$WORK/config-dirs" "$APP"
atspi_drive follow_test.py "$LOG" "$OUT" "$WINDOW" "$CTL" "$VELLORA_HOME"
