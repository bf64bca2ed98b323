#!/usr/bin/env bash
# Installs what is missing, builds and runs every test twice: a normal build and an
# AddressSanitizer + UndefinedBehaviorSanitizer build. The last line gives the counts.
set -euo pipefail
cd "$(dirname "$0")"
source scripts/deps.sh
vde_ensure_packages
export QT_QPA_PLATFORM=offscreen
# A throwaway PostgreSQL server for the storage tests (VDE_PG_URL), removed on exit.
pg_env=$(scripts/pg_test_server.sh start)
eval "$pg_env"
# Here the PostgreSQL cases must run: without a server they fail instead of being skipped.
export VDE_REQUIRE_PG=1
trap 'scripts/pg_test_server.sh stop "$VDE_PG_DIR"' EXIT

total_pass=0
total_fail=0
status=0
run_suite() {
    local preset=$1
    echo "=== $preset build ==="
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset"
    local log
    log=$(mktemp)
    set +e
    ctest --preset "$preset" 2>&1 | tee "$log" | grep -v -E '^\s+Start |Test +#[0-9]+: .* Passed'
    local rc=${PIPESTATUS[0]}
    set -e
    local line
    line=$(grep -E 'tests passed, [0-9]+ tests failed out of [0-9]+' "$log" | tail -n 1 || true)
    if [ -n "$line" ]; then
        local failed all
        failed=$(sed -E 's/.* ([0-9]+) tests failed out of ([0-9]+).*/\1/' <<<"$line")
        all=$(sed -E 's/.* ([0-9]+) tests failed out of ([0-9]+).*/\2/' <<<"$line")
        total_pass=$((total_pass + all - failed))
        total_fail=$((total_fail + failed))
    else
        total_fail=$((total_fail + 1))
    fi
    rm -f "$log"
    [ "$rc" -eq 0 ] || status=1
}

run_suite default
run_suite asan
echo "normal + sanitizer builds: ${total_pass} passed, ${total_fail} failed"
exit $status
