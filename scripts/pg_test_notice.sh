#!/usr/bin/env bash
# Says whether the storage tests have a PostgreSQL server. Exit 0: VDE_PG_URL names one. Exit 77
# (ctest's "skipped"): none, and the PostgreSQL cases are skipped. Exit 1: none, but
# VDE_REQUIRE_PG says one is needed (./test.sh sets it).
if [ -n "${VDE_PG_URL:-}" ]; then
    echo "The PostgreSQL cases of the storage tests use $VDE_PG_URL."
    exit 0
fi
notice='No PostgreSQL server for the storage tests: VDE_PG_URL is not set. ./test.sh starts a
throwaway server by itself; to run the PostgreSQL cases by hand start one with
  eval "$(scripts/pg_test_server.sh start)"
(needs the Debian package postgresql) and stop it afterwards with
  scripts/pg_test_server.sh stop "$VDE_PG_DIR"'
if [ -n "${VDE_REQUIRE_PG:-}" ]; then
    echo "$notice" >&2
    echo "VDE_REQUIRE_PG is set: the PostgreSQL cases fail without a server." >&2
    exit 1
fi
echo "$notice"
echo "Until then the PostgreSQL cases are skipped (set VDE_REQUIRE_PG=1 to make them fail)."
exit 77
