#!/usr/bin/env bash
# Installs the Debian packages Pondera needs, but only those dpkg says are missing.
set -euo pipefail
packages=(
  build-essential cmake pkg-config clang-format
  qt6-base-dev qt6-base-dev-tools libgl-dev
  libsqlite3-dev libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth xclip fonts-wine
  libcli11-dev
  desktop-file-utils appstream man-db file gzip dpkg-dev fakeroot lintian
)
missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0
echo "Installing: ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq "${missing[@]}"
