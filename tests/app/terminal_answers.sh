#!/usr/bin/env bash
# --help and --version are answered in the terminal, without a display and
# without a window, by both window programs.
set -euo pipefail
version="$1"
shift
unset DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM
for program in "$@"; do
  name=$(basename "$program")
  out=$("$program" --version)
  [ "$out" = "$name $version" ] || { echo "$name --version said: $out" >&2; exit 1; }
  "$program" --help | grep -q -- "--version" || { echo "$name --help names no options" >&2; exit 1; }
done
echo "both programs answer --help and --version in the terminal"
