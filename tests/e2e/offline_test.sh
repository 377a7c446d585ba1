#!/bin/bash
# Keeps a folder of cloud-only photos offline and removes its download again, as a screen reader
# user would (tests/e2e/offline_test.py over AT-SPI), with velloractl throttling the downloads so
# that their progress shows. Keeps the screenshots offline-progress.png, offline-kept.png,
# offline-kept-inside.png and offline-removed.png.
#   offline_test.sh <vellora> <velloractl> <artefact folder>
set -u
APP="$1" CTL="$2" OUT="$3"
HERE=$(cd "$(dirname "$0")" && pwd)
. "$HERE/atspi_session.sh"
atspi_display 600x1000 -- "$@"
atspi_home
atspi_bus

# The demo drive, and a folder "Album" that is here with three photos only in the cloud.
"$CTL" seed-demo >/dev/null || atspi_fail "seed-demo"
mkdir -p "$WORK/src/Album"
"$CTL" import "$WORK/src/Album" "Album" >/dev/null || atspi_fail "import Album"
for name in Harbour Lighthouse Market; do
    head -c 600000 /dev/urandom >"$WORK/src/$name.jpg"
    "$CTL" import "$WORK/src/$name.jpg" "Album/$name.jpg" --cloud-only >/dev/null ||
        atspi_fail "import $name"
done
"$CTL" network wifi >/dev/null 2>&1
# About three seconds a photo.
"$CTL" throttle 200000 >/dev/null

atspi_start_app "$APP"
atspi_drive offline_test.py "$LOG" "$OUT" "$WINDOW" "$CTL" "$VELLORA_HOME"
