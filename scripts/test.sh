#!/usr/bin/env bash
# Installs what is missing, then builds and runs the whole test suite twice:
# once plain ("default") and once under AddressSanitizer + UBSan ("asan"),
# and then every benchmark once in its short mode: a benchmark that errors or
# has lost its peer fails the run like a test.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup-deps.sh
for preset in default asan; do
  echo "== $preset =="
  ./scripts/build.sh "$preset"
  ctest --preset "$preset"
done
echo "== benchmarks, short mode =="
./scripts/bench.sh --short
