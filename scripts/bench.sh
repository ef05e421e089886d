#!/usr/bin/env bash
# Runs every benchmark and prints one table: the figure, its peer, the ratio
# (our time over the peer's, below 1 is faster) and the goal.
#   scripts/bench.sh          the full benchmarks (minutes)
#   scripts/bench.sh --short  each one once through the same code with fewer
#                             runs or less data, as CI does
# Fails when a benchmark reports an error, a benchmark expected to have a
# peer has none, or a benchmark program is missing or crashes. Goals are
# told, not enforced: a figure on a busy machine says little on its own.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ "${1:-}" = "--short" ]; then
  export VEXIL_BENCH_SHORT=1
fi
./scripts/setup-deps.sh >/dev/null
./scripts/build.sh default >/dev/null
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
status=0
for program in build/default/bench/bench_*; do
  name=$(basename "$program")
  # The bare window is the start-up benchmark's peer, not a benchmark.
  { [ -f "$program" ] && [ -x "$program" ] && [ "$name" != bench_bare_window ]; } || continue
  if ! QT_QPA_PLATFORM=offscreen "$program" --benchmark_out="$out/$name.json" --benchmark_out_format=json \
       >"$out/$name.log" 2>&1; then
    echo "bench: $name failed to run; its output:" >&2
    cat "$out/$name.log" >&2
    status=1
  fi
done
python3 - "$out" <<'PY' || status=1
import glob, json, os, sys

# Goals, from the architecture notes: (counter, limit) per benchmark name prefix.
goals = {
    "BM_MCULoaderVerify": ("ratio_vs_srec_info", 0.2),
    "BM_WholeLoad/0": ("us_per_packet", 50.0),
    "BM_WholeLoad/1000": ("ratio_vs_wire", 1.05),
    "BM_Fetch256MiB": ("ratio_vs_curl", 1.0),
    "BM_DownloadRun": ("ratio_vs_curl", 1.0),
    "BM_Search": ("ratio_vs_grep", 1.5),
    "BM_StartToMainWindow": ("ratio_vs_bare_window", 1.15),
}
# Measured without a peer on purpose: one exchange with the simulated device,
# and the FTP session's own operations, which have no outside counterpart.
no_peer = ("BM_ProgramPacketExchange", "BM_WholeLoad/0", "BM_LogonChangeDirLogoff")

failed = False
rows = []
for path in sorted(glob.glob(os.path.join(sys.argv[1], "*.json"))):
    try:
        report = json.load(open(path))
    except (OSError, ValueError):
        print(f"bench: {os.path.basename(path)} wrote no readable report", file=sys.stderr)
        failed = True
        continue
    for b in report.get("benchmarks", []):
        name = b["name"]
        if b.get("error_occurred"):
            print(f"bench: {name}: {b.get('error_message', 'error')}", file=sys.stderr)
            failed = True
            continue
        ratios = {k: v for k, v in b.items() if k.startswith("ratio_vs_")}
        if not ratios and not name.startswith(no_peer):
            print(f"bench: {name} has no peer (no ratio_vs_ counter)", file=sys.stderr)
            failed = True
        figure = f"{b['real_time']:.3g} {b.get('time_unit', '')}"
        goal = next((g for prefix, g in goals.items() if name.startswith(prefix)), None)
        peer, ratio = (next(iter(ratios.items())) if ratios else ("-", None))
        verdict = "-"
        if goal:
            value = b.get(goal[0])
            verdict = f"{goal[0]} <= {goal[1]}: " + ("met" if value is not None and value <= goal[1] else f"not met ({value:.3g})" if value is not None else "missing")
        rows.append((name, figure, peer.replace("ratio_vs_", ""), "-" if ratio is None else f"{ratio:.3g}", verdict))
widths = [max(len(r[i]) for r in rows + [("benchmark", "figure", "peer", "ratio", "goal")]) for i in range(5)]
for r in [("benchmark", "figure", "peer", "ratio", "goal")] + rows:
    print("  ".join(c.ljust(w) for c, w in zip(r, widths)))
sys.exit(1 if failed or not rows else 0)
PY
exit $status
