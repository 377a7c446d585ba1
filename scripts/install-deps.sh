#!/usr/bin/env bash
# Installs the Debian 12 packages the build, the tests and the demo need.
# Idempotent: installs only what is missing. Runs as root or through sudo.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config git
  clang-14 libclang-rt-14-dev clang-format
  qt6-base-dev qt6-base-dev-tools qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools
  qt6-svg-dev libgl-dev
  qt6-pdf-dev qt6-multimedia-dev qt6-image-formats-plugins
  gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-libav
  libgtest-dev libgmock-dev libbenchmark-dev libspdlog-dev
  libsystemd-dev libicu-dev libglib2.0-dev shared-mime-info
  xvfb xauth x11-apps imagemagick xdotool x11vnc iproute2 qt6-wayland weston
  python3-pyatspi at-spi2-core dbus
  xdg-utils libglib2.0-bin desktop-file-utils
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "error: need root or sudo to install ${missing[*]}" >&2; exit 1; }
  SUDO="sudo"
fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
