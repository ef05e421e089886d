#!/usr/bin/env bash
# Start-up must not touch the network: run the demo from start to its shown
# main window under strace and fail on any Internet socket it opens.
set -euo pipefail
demo="$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# LeakSanitizer cannot run under ptrace; the sanitizers themselves stay on.
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0"
export QT_QPA_PLATFORM=offscreen XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" XDG_RUNTIME_DIR="$work"
strace -f -qq -e trace=socket,connect -o "$work/trace" "$demo" --absent --quit-when-shown
if grep -E 'AF_INET6?|AF_PACKET' "$work/trace"; then
  echo "start-up opened a network socket" >&2
  exit 1
fi
# The run got as far as start-up's own work: it made the preferences file.
test -f "$work/data/vexil-utility-demo/config/VexilUtilPrefs"
echo "no network socket during start-up"
