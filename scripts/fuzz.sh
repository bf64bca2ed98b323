#!/usr/bin/env bash
# Runs every libFuzzer target (ASan + UBSan, the "fuzz" preset) for a given time each, twice:
# once from the stored corpora and once from nothing (fresh seeds), and keeps what it finds.
#
#   scripts/fuzz.sh [-t SECONDS] [--only corpus|fresh] [TARGET...]
#
#   -t SECONDS   time per target and per run (default 1800)
#   --only X     run only from the corpora, or only from fresh seeds
#   TARGET       readers, diagram, container, text (default: all four)
#
# What is kept:
#   fuzz-finds/<target>/   every input that crashed or broke an invariant (crash-*, leak-*,
#                          timeout-*, oom-*), to be added to the target's corpus as regression
#                          data once fixed (tests/fuzz/corpus*, replayed by ctest).
#   build-fuzz/fuzz-corpus/<target>/
#                          the inputs that reached new code, kept between runs and given to the
#                          next run as its starting corpus.
# The last lines give, per target and run, the executions, the new finds and the time spent.
# The exit status is 1 when any run found something, 0 otherwise.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)

seconds=1800
only=""
targets=()
while [ $# -gt 0 ]; do
    case "$1" in
    -t)
        seconds=$2
        shift 2
        ;;
    --only)
        only=$2
        shift 2
        ;;
    -h | --help)
        sed -n '2,20p' "$0" | sed 's/^# \{0,1\}//'
        exit 0
        ;;
    -*)
        echo "fuzz.sh: unknown option $1" >&2
        exit 2
        ;;
    *)
        targets+=("$1")
        shift
        ;;
    esac
done
[ ${#targets[@]} -gt 0 ] || targets=(readers diagram container text)
case "$only" in "" | corpus | fresh) ;; *)
    echo "fuzz.sh: --only takes corpus or fresh" >&2
    exit 2
    ;;
esac
if ! [[ "$seconds" =~ ^[0-9]+$ ]] || [ "$seconds" -lt 1 ]; then
    echo "fuzz.sh: -t takes a whole number of seconds" >&2
    exit 2
fi

# The stored seeds of each target.
seeds_of() {
    case "$1" in
    readers) echo "$root/tests/fuzz/corpus" ;;
    diagram) echo "$root/tests/fuzz/corpus/diagram" ;;
    container) echo "$root/tests/fuzz/corpus-container $root/examples" ;;
    text) echo "$root/tests/fuzz/corpus-text $root/examples" ;;
    *)
        echo "fuzz.sh: unknown target $1" >&2
        exit 2
        ;;
    esac
}
for t in "${targets[@]}"; do seeds_of "$t" >/dev/null; done

cmake --preset fuzz >/dev/null
build_targets=()
for t in "${targets[@]}"; do build_targets+=("vde_fuzz_$t"); done
cmake --build build-fuzz --target "${build_targets[@]}" -j2

export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1}
export LSAN_OPTIONS=${LSAN_OPTIONS:-suppressions=$root/scripts/lsan.supp}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}

summary=()
found=0
run_one() {
    local target=$1 mode=$2
    local exe="$root/build-fuzz/tests/fuzz/vde_fuzz_$target"
    local finds="$root/fuzz-finds/$target"
    local work="$root/build-fuzz/fuzz-corpus/$target"
    local log="$root/build-fuzz/fuzz-$target-$mode.log"
    mkdir -p "$finds" "$work"
    local dirs=()
    if [ "$mode" = fresh ]; then
        # From nothing: a corpus of its own that starts empty each time.
        work="$root/build-fuzz/fuzz-fresh/$target"
        rm -rf "$work"
        mkdir -p "$work"
        dirs=("$work")
    else
        dirs=("$work")
        for d in $(seeds_of "$target"); do
            [ -d "$d" ] && dirs+=("$d")
        done
    fi
    local before
    before=$(find "$finds" -type f | wc -l)
    echo "=== $target ($mode), ${seconds}s ==="
    set +e
    "$exe" -max_total_time="$seconds" -timeout=25 -rss_limit_mb=2560 -print_final_stats=1 \
        -artifact_prefix="$finds/" "${dirs[@]}" >"$log" 2>&1
    local rc=$?
    set -e
    local runs
    runs=$(grep -E '^stat::number_of_executed_units' "$log" | tail -n 1 | awk '{print $2}')
    if [ -z "$runs" ]; then
        # A crash ends the run before the final statistics: take the last progress line.
        runs=$(grep -oE '^#[0-9]+' "$log" | tail -n 1 | tr -d '#')
    fi
    local after
    after=$(find "$finds" -type f | wc -l)
    local new=$((after - before))
    if [ "$rc" -ne 0 ] || [ "$new" -gt 0 ]; then
        found=1
        echo "  found something (exit $rc): see $log and $finds/"
        grep -E 'ERROR: |runtime error|fuzz invariant' "$log" | head -n 5 | sed 's/^/  /'
    fi
    summary+=("$(printf '%-10s %-7s %12s executions  %d new finds  exit %d' "$target" "$mode" \
        "${runs:-?}" "$new" "$rc")")
}

for t in "${targets[@]}"; do
    [ "$only" = fresh ] || run_one "$t" corpus
    [ "$only" = corpus ] || run_one "$t" fresh
done

echo "=== summary (${seconds}s per run) ==="
printf '%s\n' "${summary[@]}"
exit $found
