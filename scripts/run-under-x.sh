#!/usr/bin/env bash
# Runs a command on the X server xvfb-run started, with a small window manager
# beside it (when one is installed) so that windows get the focus as on a desktop.
set -u
wm=""
if command -v openbox >/dev/null; then
  openbox >/dev/null 2>&1 &
  wm=$!
  # The manager has taken the screen once it has set its supporting window.
  for _ in $(seq 50); do
    xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id' && break
    sleep 0.1
  done
fi
"$@"
status=$?
[ -n "$wm" ] && kill "$wm" 2>/dev/null
exit $status
