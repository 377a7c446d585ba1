#!/bin/bash
# Opens documents of the demo drive as a screen reader user would (tests/e2e/open_test.py over
# AT-SPI): Markdown, a photo, a PDF and a video in the app's own preview, a document handed to
# its default app (a desktop entry that records what it was given), the actions menus of a file,
# a folder and an app library, and the share sheet. The desktop's applications are this test's
# own: XDG_DATA_DIRS names only its folder (with the system's MIME database linked in).
#   open_test.sh <vellora> <velloractl> <artefact folder>
set -u
APP="$1" CTL="$2" OUT="$3"
HERE=$(cd "$(dirname "$0")" && pwd)
. "$HERE/atspi_session.sh"
atspi_display 1100x1000 -- "$@"
atspi_home

# The desktop: Recorder opens OpenDocument text in place and writes down the path it was given;
# Photo Viewer is the default for pictures; nothing takes Markdown, PDF or video.
APPS="$WORK/apps"
atspi_data_dir "$APPS"
LAUNCHES="$WORK/launches.txt"
printf '#!/bin/sh\nprintf "%%s\\n" "$*" >> "%s"\n' "$LAUNCHES" > "$WORK/record"
chmod +x "$WORK/record"
cat > "$APPS/applications/org.example.Recorder.desktop" <<ENTRY
[Desktop Entry]
Type=Application
Name=Recorder
Exec=$WORK/record Recorder %f
MimeType=application/vnd.oasis.opendocument.text;
ENTRY
cat > "$APPS/applications/org.example.Viewer.desktop" <<ENTRY
[Desktop Entry]
Type=Application
Name=Photo Viewer
Exec=$WORK/record Viewer %f
MimeType=image/jpeg;image/png;
ENTRY
printf '[MIME Cache]\napplication/vnd.oasis.opendocument.text=org.example.Recorder.desktop;\nimage/jpeg=org.example.Viewer.desktop;\nimage/png=org.example.Viewer.desktop;\n' \
    > "$APPS/applications/mimeinfo.cache"
printf '[Default Applications]\napplication/vnd.oasis.opendocument.text=org.example.Recorder.desktop\nimage/jpeg=org.example.Viewer.desktop\n' \
    > "$XDG_CONFIG_HOME/mimeapps.list"

atspi_bus

"$CTL" seed-demo >/dev/null || atspi_fail "seed-demo"
"$CTL" network wifi >/dev/null 2>&1
atspi_start_app env XDG_DATA_DIRS="$APPS" XDG_CONFIG_DIRS="$WORK/config-dirs" "$APP"
atspi_drive open_test.py "$LOG" "$OUT" "$WINDOW" "$CTL" "$VELLORA_HOME" "$LAUNCHES"
