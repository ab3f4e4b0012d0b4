#!/usr/bin/env bash
# Installs the Debian packages Pondera needs, but only those dpkg says are missing,
# and generates the locales the decimal-separator tests run under.
set -euo pipefail
packages=(
  build-essential cmake pkg-config clang-format
  qt6-base-dev qt6-base-dev-tools libgl-dev
  libsqlite3-dev libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth xclip openbox x11-utils fonts-wine locales
  libcli11-dev nlohmann-json3-dev libcsv-dev
  libboost-math-dev libeigen3-dev qt6-svg-dev poppler-utils
  desktop-file-utils appstream man-db file gzip dpkg-dev fakeroot lintian
)
missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq "${missing[@]}"
fi
# en_US uses a point and de_DE a comma: the tests read numbers under both.
for loc in en_US de_DE; do
  if ! locale -a 2>/dev/null | grep -qix "$loc.utf-\?8"; then
    echo "Generating the $loc.UTF-8 locale"
    $sudo localedef -i "$loc" -f UTF-8 "$loc.UTF-8" || echo "could not generate $loc.UTF-8; its tests are skipped"
  fi
done
