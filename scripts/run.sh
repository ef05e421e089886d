#!/usr/bin/env bash
# Installs what is missing, builds, and launches the utility.
#   scripts/run.sh          the utility on the real USB device
#   scripts/run.sh --demo   the same program on a simulated device (no hardware needed);
#                           further options go to the demo, see --demo --help
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup-deps.sh
# The first build takes minutes: its progress goes to the terminal (standard
# error), so a script that reads the program's own output is not disturbed.
echo "run: building (the first time takes a few minutes) ..." >&2
./scripts/build.sh default >&2
echo "run: starting" >&2
if [ "${1:-}" = "--demo" ]; then
  shift
  exec ./build/default/src/app/vexil-utility-demo "$@"
fi
exec ./build/default/src/app/vexil-utility
