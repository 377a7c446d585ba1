#!/bin/sh
# Installs the app's desktop entry and icon for the user and makes the app the handler of
# "velloraapp:" URLs, so that xdg-open, gio open, file managers and browsers hand such URLs to it
# (the entry names the desktop's launcher as their sender). No desktop environment is needed:
# both tools read $XDG_DATA_HOME/applications and $XDG_CONFIG_HOME/mimeapps.list.
#   ./scripts/install-desktop-entry.sh <path of the built vellora>
set -eu
APP="${1:?usage: install-desktop-entry.sh <path of the built vellora>}"
HERE=$(cd "$(dirname "$0")" && pwd)
RESOURCES="$HERE/../resources"
ID=com.tessaly.VelloraApp
SCHEME=x-scheme-handler/velloraapp

[ -x "$APP" ] || { echo "install-desktop-entry: $APP is not an executable" >&2; exit 1; }
APP="$(cd "$(dirname "$APP")" && pwd)/$(basename "$APP")"

DATA="${XDG_DATA_HOME:-$HOME/.local/share}"
CONFIG="${XDG_CONFIG_HOME:-$HOME/.config}"
mkdir -p "$DATA/applications" "$DATA/icons/hicolor/scalable/apps" "$CONFIG"

# The desktop entry's quoting: a path with blanks or quotes goes in double quotes, with ", `, $
# and \ escaped, and every \ doubled again for the key's string value. (xdg-open without a
# desktop splits Exec at blanks whatever the quotes, so it needs a path without them.)
case "$APP" in
*[!A-Za-z0-9/._+-]*)
    quoted=$(printf '%s' "$APP" | sed -e 's/[\\"`$]/\\&/g' -e 's/\\/\\\\/g')
    EXEC="\"$quoted\""
    echo "install-desktop-entry: note: xdg-open without a desktop can't start a path with blanks: $APP" >&2
    ;;
*) EXEC="$APP" ;;
esac
sed_value=$(printf '%s' "$EXEC" | sed -e 's/[\\&|]/\\&/g')
sed_path=$(printf '%s' "$APP" | sed -e 's/[\\&|]/\\&/g')

ENTRY="$DATA/applications/$ID.desktop"
sed -e "s|^Exec=vellora |Exec=$sed_value |" -e "s|^TryExec=vellora\$|TryExec=$sed_path|" \
    "$RESOURCES/$ID.desktop" > "$ENTRY.tmp"
mv "$ENTRY.tmp" "$ENTRY"
cp "$RESOURCES/$ID.svg" "$DATA/icons/hicolor/scalable/apps/$ID.svg"

# The default handler of the scheme: xdg-mime when it is there, else mimeapps.list by hand.
if command -v xdg-mime >/dev/null 2>&1; then
    XDG_CURRENT_DESKTOP="" xdg-mime default "$ID.desktop" "$SCHEME"
else
    LIST="$CONFIG/mimeapps.list"
    touch "$LIST"
    grep -v "^$SCHEME=" "$LIST" > "$LIST.tmp" || true
    if grep -q '^\[Default Applications\]' "$LIST.tmp"; then
        sed -e "/^\[Default Applications\]/a $SCHEME=$ID.desktop" "$LIST.tmp" > "$LIST"
    else
        { cat "$LIST.tmp"; printf '[Default Applications]\n%s=%s.desktop\n' "$SCHEME" "$ID"; } > "$LIST"
    fi
    rm -f "$LIST.tmp"
fi
if command -v update-desktop-database >/dev/null 2>&1; then
    update-desktop-database -q "$DATA/applications" 2>/dev/null || true
fi
echo "Installed $ENTRY for velloraapp: URLs"
