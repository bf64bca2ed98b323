#!/usr/bin/env bash
# A throwaway PostgreSQL server for the tests, on loopback only.
#
#   eval "$(scripts/pg_test_server.sh start)"   # prints export lines: VDE_PG_URL, VDE_PG_DIR
#   scripts/pg_test_server.sh halt   [DIR]       # stops the server, keeps its data (outage tests)
#   scripts/pg_test_server.sh crash  [DIR]       # stops it at once (-m immediate), keeps its data
#   scripts/pg_test_server.sh resume [DIR]       # starts it again on the same port
#   scripts/pg_test_server.sh stop   [DIR]       # stops it and removes the folder
#
# DIR defaults to $VDE_PG_DIR. The server runs as a non-root user (postgres, or a system user
# created for it) when the script runs as root, because PostgreSQL refuses to run as root.
# Authentication is "trust" on 127.0.0.1: the server holds nothing but test tables.
set -euo pipefail

PG_USER_NAME=vde
PG_DB_NAME=vde_test

die() {
    echo "pg_test_server: $*" >&2
    exit 1
}

pg_bindir() {
    local d
    if command -v pg_config >/dev/null 2>&1; then
        d=$(pg_config --bindir 2>/dev/null || true)
        [ -x "$d/initdb" ] && {
            echo "$d"
            return
        }
    fi
    for d in /usr/lib/postgresql/*/bin; do
        [ -x "$d/initdb" ] && {
            echo "$d"
            return
        }
    done
    command -v initdb >/dev/null 2>&1 && {
        dirname "$(command -v initdb)"
        return
    }
    die "initdb not found; install the Debian package 'postgresql' (./test.sh does this)"
}

# The OS user that owns and runs the server.
os_user() {
    if [ "$(id -u)" -ne 0 ]; then
        id -un
        return
    fi
    if id -u postgres >/dev/null 2>&1; then
        echo postgres
        return
    fi
    if ! id -u vde-pg >/dev/null 2>&1; then
        useradd --system --no-create-home --shell /usr/sbin/nologin vde-pg >/dev/null
    fi
    echo vde-pg
}

as_user() {
    local user=$1
    shift
    if [ "$(id -u)" -eq 0 ]; then
        runuser -u "$user" -- "$@"
    else
        "$@"
    fi
}

free_port() {
    local p
    for _ in $(seq 1 200); do
        p=$((20000 + RANDOM % 40000))
        if ! (exec 3<>/dev/tcp/127.0.0.1/$p) 2>/dev/null; then
            echo "$p"
            return
        fi
    done
    die "no free loopback port found"
}

start_server() {
    local dir=$1 port=$2 user bindir
    user=$(stat -c %U "$dir")
    bindir=$(pg_bindir)
    as_user "$user" "$bindir/pg_ctl" -D "$dir/data" -l "$dir/server.log" -w -t 30 \
        -o "-c listen_addresses=127.0.0.1 -c port=$port -c unix_socket_directories='$dir'" \
        start >/dev/null
}

cmd_start() {
    local bindir user dir port
    bindir=$(pg_bindir)
    user=$(os_user)
    dir=$(mktemp -d "${TMPDIR:-/tmp}/vde-pg.XXXXXX")
    [ "$(id -u)" -eq 0 ] && chown "$user" "$dir"
    chmod 700 "$dir"
    if ! as_user "$user" "$bindir/initdb" -D "$dir/data" -U "$PG_USER_NAME" --auth=trust \
        -E UTF8 --locale=C.UTF-8 >"$dir/initdb.log" 2>&1; then
        cat "$dir/initdb.log" >&2
        rm -rf "$dir"
        die "initdb failed"
    fi
    # A port can be taken between the check and the start; try a few.
    local ok=0
    for _ in 1 2 3 4 5; do
        port=$(free_port)
        if start_server "$dir" "$port" 2>>"$dir/start.err"; then
            ok=1
            break
        fi
    done
    if [ $ok -ne 1 ]; then
        cat "$dir/start.err" "$dir/server.log" >&2 || true
        rm -rf "$dir"
        die "the server did not start"
    fi
    echo "$port" >"$dir/port"
    as_user "$user" "$bindir/createdb" -h 127.0.0.1 -p "$port" -U "$PG_USER_NAME" "$PG_DB_NAME"
    echo "export VDE_PG_DIR='$dir'"
    echo "export VDE_PG_URL='postgresql://$PG_USER_NAME@127.0.0.1:$port/$PG_DB_NAME'"
}

server_dir() {
    local dir=${1:-${VDE_PG_DIR:-}}
    [ -n "$dir" ] || die "no server folder given and VDE_PG_DIR is not set"
    [ -f "$dir/data/PG_VERSION" ] || die "$dir is not a server folder made by this script"
    echo "$dir"
}

cmd_halt() {
    local dir user
    dir=$(server_dir "${1:-}")
    user=$(stat -c %U "$dir")
    as_user "$user" "$(pg_bindir)/pg_ctl" -D "$dir/data" -w -t 30 -m fast stop >/dev/null
}

# No shutdown checkpoint and no goodbye to the clients: the next start recovers from the WAL, as
# after a power cut.
cmd_crash() {
    local dir user
    dir=$(server_dir "${1:-}")
    user=$(stat -c %U "$dir")
    as_user "$user" "$(pg_bindir)/pg_ctl" -D "$dir/data" -w -t 30 -m immediate stop >/dev/null
}

cmd_resume() {
    local dir
    dir=$(server_dir "${1:-}")
    start_server "$dir" "$(cat "$dir/port")"
}

cmd_stop() {
    local dir user
    dir=$(server_dir "${1:-}")
    user=$(stat -c %U "$dir")
    if [ -f "$dir/data/postmaster.pid" ]; then
        as_user "$user" "$(pg_bindir)/pg_ctl" -D "$dir/data" -w -t 30 -m immediate stop \
            >/dev/null 2>&1 || true
    fi
    rm -rf "$dir"
}

case "${1:-}" in
start) cmd_start ;;
halt) cmd_halt "${2:-}" ;;
crash) cmd_crash "${2:-}" ;;
resume) cmd_resume "${2:-}" ;;
stop) cmd_stop "${2:-}" ;;
*) die "usage: $0 start | halt [DIR] | crash [DIR] | resume [DIR] | stop [DIR]" ;;
esac
