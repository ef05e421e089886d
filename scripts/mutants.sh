#!/usr/bin/env bash
# Applies the hand-made faults of tests/mutants.tsv one at a time to a scratch
# copy of the tree, rebuilds, runs the suite, and prints "N of M faults caught".
#
#   scripts/mutants.sh              every row
#   scripts/mutants.sh ftp/         only rows whose file or description matches the pattern
#
# tests/mutants.tsv: file <TAB> exact text <TAB> replacement <TAB> what the fault is.
# In the text and the replacement "\n" stands for a line break and "\t" for a tab.
# The exact text must occur exactly once in the file; a row whose text is gone
# is reported as stale and counts as not caught, so the list cannot rot unseen.
# A fault is caught when the suite fails (a test fails or times out).
# The scratch copy lives in $MUTANTS_DIR (default: a folder under $TMPDIR); the
# working tree is never touched.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
filter="${1:-}"
scratch="${MUTANTS_DIR:-${TMPDIR:-/tmp}/vexil-mutants}"
tree="$scratch/tree"
build="$tree/build/default"
list="$root/tests/mutants.tsv"

./scripts/setup-deps.sh

# The tree as it stands, uncommitted changes included, without build output.
# Modification times are kept, so a second run rebuilds only what changed.
mkdir -p "$tree"
find "$tree" -mindepth 1 -maxdepth 1 ! -name build -exec rm -rf {} +
git ls-files -z --cached --others --exclude-standard \
  | tar --null -T - -cf - | tar -xf - -C "$tree"

launcher=()
if command -v ccache >/dev/null 2>&1; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
# The same flags as the default preset, so a compiler cache shared with it hits.
(cd "$tree" && cmake --preset default -DVEXIL_BUILD_BENCH=OFF "${launcher[@]}" >/dev/null)
cmake --build "$build" >/dev/null

run_suite() {
  # The first failure decides; a hung test is a caught fault too.
  ctest --test-dir "$build" --stop-on-failure --timeout 120 >"$scratch/ctest.log" 2>&1
}

# A suite that fails without any fault would make every fault look caught.
if ! run_suite; then
  echo "mutants: the suite fails on the unchanged tree; see $scratch/ctest.log" >&2
  exit 2
fi

total=0
caught=0
missed=()
while IFS=$'\t' read -r file text replacement what <&3; do
  [ -z "${file:-}" ] && continue
  case "$file" in \#*) continue ;; esac
  if [ -n "$filter" ] && ! grep -q -- "$filter" <<<"$file $what"; then continue; fi
  total=$((total + 1))
  target="$tree/$file"
  [ -f "$target" ] && cp -p "$target" "$scratch/original"
  if ! python3 - "$target" "$text" "$replacement" <<'EOF'
import sys
path, text, repl = sys.argv[1:4]
unescape = lambda s: s.replace("\\n", "\n").replace("\\t", "\t")
text, repl = unescape(text), unescape(repl)
try:
    source = open(path, encoding="utf-8").read()
except OSError:
    sys.exit(1)
if source.count(text) != 1:
    sys.exit(1)
open(path, "w", encoding="utf-8").write(source.replace(text, repl))
EOF
  then
    printf 'STALE   %-45s %s\n' "$file" "$what"
    missed+=("$what (stale row)")
    continue
  fi
  result=missed
  if ! cmake --build "$build" >"$scratch/build.log" 2>&1; then
    result=nobuild
  elif ! run_suite; then
    result=caught
  fi
  cp "$scratch/original" "$target"
  case "$result" in
    caught)
      caught=$((caught + 1))
      failed=$(grep -m1 -oE '[0-9]+ - [A-Za-z0-9_./-]+' "$scratch/ctest.log" | head -n 1 || true)
      printf 'caught  %-45s %s  [%s]\n' "$file" "$what" "${failed#* - }" ;;
    nobuild)
      printf 'NOBUILD %-45s %s\n' "$file" "$what"
      missed+=("$what (does not build)") ;;
    *)
      printf 'MISSED  %-45s %s\n' "$file" "$what"
      missed+=("$what") ;;
  esac
done 3<"$list"

# Leave the scratch build matching the tree for the next run.
cmake --build "$build" >/dev/null 2>&1 || true
for m in "${missed[@]}"; do echo "not caught: $m"; done
echo "$caught of $total faults caught"
[ "$caught" -eq "$total" ]
