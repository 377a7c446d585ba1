#!/bin/bash
# Downloads cloud-only items of the demo drive as a screen reader user would
# (tests/e2e/download_test.py over AT-SPI): a small photo that downloads by itself on Wi-Fi and is
# previewed, then the large video, refused on cellular, started and cancelled on Wi-Fi (it stays
# cloud-only) and downloaded with the ring moving. Keeps the screenshots photo-preview.png,
# video-idle.png, cellular-refusal.png, ring-early.png, ring-later.png and video-preview.png.
#   download_test.sh <vellora> <velloractl> <artefact folder>
set -u
APP="$1" CTL="$2" OUT="$3"
HERE=$(cd "$(dirname "$0")" && pwd)
. "$HERE/atspi_session.sh"
atspi_display 600x1000 -- "$@"
atspi_home
# A desktop without applications: media of the drive go to the app's own preview.
atspi_data_dir "$WORK/apps"
atspi_bus

"$CTL" seed-demo >/dev/null || atspi_fail "seed-demo"
"$CTL" network wifi >/dev/null 2>&1
"$CTL" throttle 0 >/dev/null 2>&1
atspi_start_app env XDG_DATA_DIRS="$WORK/apps" XDG_CONFIG_DIRS="$WORK/config-dirs" "$APP"
atspi_drive download_test.py "$LOG" "$OUT" "$WINDOW" "$CTL" "$VELLORA_HOME"
