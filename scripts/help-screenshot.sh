#!/bin/sh
# Saves a picture of the help viewer showing a help folder (default: the
# manual in resources/Help) to a PNG file (default: docs/help-viewer.png).
# Usage: scripts/help-screenshot.sh [help-folder] [picture.png] [--page file] [--size WxH]
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
folder=${1:-$root/resources/Help}
picture=${2:-$root/docs/help-viewer.png}
[ $# -gt 0 ] && shift
[ $# -gt 0 ] && shift
tool=$root/build/default/tools/help_screenshot
if [ ! -x "$tool" ]; then
    flock /tmp/vexil-build.lock cmake --build --preset default --target help_screenshot
fi
QT_QPA_PLATFORM=offscreen exec "$tool" "$@" "$folder" "$picture"
