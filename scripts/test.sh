#!/usr/bin/env bash
# Installs what is missing, then builds and runs the whole test suite twice:
# once plain ("default") and once under AddressSanitizer + UBSan ("asan").
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup-deps.sh
for preset in default asan; do
  echo "== $preset =="
  ./scripts/build.sh "$preset"
  ctest --preset "$preset"
done
