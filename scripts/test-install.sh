#!/bin/sh
# Installs the build into a temporary prefix and checks it as a desktop would
# see it: the desktop entry and the AppStream data validate, the icons and
# manual pages are in place, both programs run from there, and an installed
# program logs its errors under $XDG_STATE_HOME, never beside itself.
# Usage: test-install.sh CMAKE BUILD_DIR VERSION APP_ID
set -eu
cmake=$1 build=$2 version=$3 id=$4
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
prefix=$tmp/prefix
fail() { echo "FAIL: $*" >&2; exit 1; }

"$cmake" --install "$build" --prefix "$prefix" >/dev/null
desktop-file-validate "$prefix/share/applications/$id.desktop"
appstreamcli validate --no-net "$prefix/share/metainfo/$id.metainfo.xml" >/dev/null ||
  appstreamcli validate --no-net "$prefix/share/metainfo/$id.metainfo.xml"
[ -f "$prefix/share/icons/hicolor/scalable/apps/$id.svg" ] || fail "no scalable icon"
for size in 16 32 48 64 128 256; do
  icon=$prefix/share/icons/hicolor/${size}x$size/apps/$id.png
  file "$icon" | grep -q "$size x $size" || fail "$icon is not $size px"
done
for page in pondera pondera-cli; do
  warnings=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$prefix/share/man/man1/$page.1.gz" 2>&1 >/dev/null)
  [ -z "$warnings" ] || fail "$page(1): $warnings"
done

for program in pondera pondera-cli; do
  # A build without the window has no pondera.
  [ "$program" = pondera ] && [ ! -e "$prefix/bin/pondera" ] && continue
  out=$("$prefix/bin/$program" --version) || fail "$program --version exits with $?"
  [ "$out" = "$program $version" ] || fail "$program --version says '$out'"
done

# An overflow goes to the error log: under the state folder, not the prefix.
unset PONDERA_ERROR_LOG
XDG_STATE_HOME=$tmp/state "$prefix/bin/pondera-cli" moments LogNormal 0 50 >/dev/null
[ -s "$tmp/state/Pondera/qarvPonderaErrorLog.txt" ] || fail "no log under XDG_STATE_HOME"
[ ! -e "$prefix/bin/qarvPonderaErrorLog.txt" ] || fail "the log went beside the program"
echo "installed tree OK"
