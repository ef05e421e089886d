#!/usr/bin/env bash
# Builds the fuzz targets (preset "fuzz": clang, libFuzzer, ASan, UBSan) and
# runs one of them for the given number of seconds (default 600): hex_reader
# (the default), prefs_reader, ftp_reply, ftp_dirlist or help_text.
# It works on a copy of the seed corpus, so the inputs it finds never land in
# fuzz/corpus/; a crash input is written to build/fuzz/<target>/artifacts/.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-600}"
target="${2:-hex_reader}"
./scripts/setup-deps.sh
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

work="build/fuzz/$target"
rm -rf "$work/corpus"
mkdir -p "$work/corpus" "$work/artifacts"
cp "fuzz/corpus/$target"/* "$work/corpus/"
dict=()
if [ -f "fuzz/$target.dict" ]; then dict=(-dict="fuzz/$target.dict"); fi

status=0
"build/fuzz/fuzz/fuzz_$target" -max_total_time="$seconds" -print_final_stats=1 \
  "${dict[@]}" -artifact_prefix="$work/artifacts/" \
  "$work/corpus" >"$work/fuzz.log" 2>&1 || status=$?

# The last progress line carries executions, coverage and exec/s; then the totals.
grep -E '^#[0-9]+' "$work/fuzz.log" | tail -n 1
grep -E '^(stat::|Done )' "$work/fuzz.log" || true
if [ "$status" -ne 0 ]; then
  echo "fuzz: the target failed (exit $status); see $work/fuzz.log and $work/artifacts/" >&2
  grep -E 'ERROR|invariant violated|Test unit written' "$work/fuzz.log" >&2 || true
fi
exit "$status"
