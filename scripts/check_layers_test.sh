#!/usr/bin/env bash
# Runs check_layers.sh on small made-up trees: every way of writing an include that runs up (or
# across) a layer must fail and name the file and line; includes that run down must pass.
set -uo pipefail

checker="$(cd "$(dirname "$0")" && pwd)/check_layers.sh"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failed=0
case_no=0

# tree <file>=<line> ...: a fresh tree with one line in each file.
tree() {
    case_no=$((case_no + 1))
    dir="$scratch/case$case_no"
    mkdir -p "$dir"
    local entry
    for entry in "$@"; do
        mkdir -p "$dir/$(dirname "${entry%%=*}")"
        printf '%s\n' "${entry#*=}" >>"$dir/${entry%%=*}"
    done
}

# expect <name> pass|fail [text the report must hold]
expect() {
    local name=$1 want=$2 text=${3:-}
    local out rc
    out=$(bash "$checker" "$dir" 2>&1)
    rc=$?
    local ok=1
    if [ "$want" = pass ] && [ "$rc" -ne 0 ]; then ok=0; fi
    if [ "$want" = fail ] && [ "$rc" -ne 1 ]; then ok=0; fi
    if [ -n "$text" ] && [[ $out != *"$text"* ]]; then ok=0; fi
    if [ "$ok" -eq 1 ]; then
        echo "ok   $name"
    else
        echo "FAIL $name (exit $rc, wanted $want${text:+ with \"$text\"}):"
        sed 's/^/     /' <<<"$out"
        failed=$((failed + 1))
    fi
}

tree 'velDiagEdit/platform/a.h=#include "velDiagEdit/platform/b.h"' 'velDiagEdit/platform/a.h=#include <QString>' \
    'velDiagEdit/blocks/c.cpp=#include "velDiagEdit/geometry/g.h"' 'velDiagEdit/blocks/c.cpp=#include "c.h"' \
    'velDiagEdit/editor/e.cpp=#include <velDiagEdit/dialogs/d.h>' 'velDiagEdit/editor/e.cpp=#include "velDiagEdit/handles/h.h"' \
    'velDiagEdit/velDiagEdit.h=#include "velDiagEdit/editor/e.h"' \
    'velDiagEdit/dialogs/d.h=#include "velDiagEdit/velDiagEdit_export.h"'
expect "includes that run down pass" pass "one way"

tree 'velDiagEdit/platform/dialog_service.cpp=#include <QString>' \
    'velDiagEdit/platform/dialog_service.cpp=#include "velDiagEdit/dialogs/dialog_controls.h"'
expect "platform including a dialog fails at its line" fail \
    "velDiagEdit/platform/dialog_service.cpp:2: includes velDiagEdit/dialogs/dialog_controls.h"

tree 'velDiagEdit/blocks/x.h=#include <velDiagEdit/connections/diag_connection.h>'
expect "angle-bracket include one layer up fails" fail "blocks may not stand on connections"

tree 'velDiagEdit/geometry/x.cpp=  #  include "velDiagEdit/editor/diag_container.h"'
expect "spaced-out directive fails" fail "velDiagEdit/geometry/x.cpp:1"

tree 'velDiagEdit/connections/x.cpp=#include "../editor/diag_container.h"'
expect "relative path up a layer fails" fail "connections may not stand on editor"

tree 'velDiagEdit/platform/x.cpp=#include "blocks/diag_object.h"'
expect "unprefixed folder path up a layer fails" fail "platform may not stand on blocks"

tree 'velDiagEdit/dialogs/x.cpp=#include "velDiagEdit/handles/move_resize.h"'
expect "one side layer including another fails" fail "dialogs may not stand on handles"

tree 'velDiagEdit/timechart/x.cpp=#include "velDiagEdit/geometry/geometry.h"'
expect "a side layer including geometry fails" fail "timechart may not stand on geometry"

tree 'velDiagEdit/blocks/x.cpp=#include "velDiagEdit/velDiagEdit.h"'
expect "the umbrella header below package fails" fail "blocks may not stand on package"

tree 'velDiagEdit/editor/x.cpp=#include "velDiagEdit/widgets/thing.h"'
expect "a folder in no layer fails" fail "in no layer of the library"

tree 'velDiagEdit/platform/x.cpp=// #include "velDiagEdit/editor/diag_container.h"' \
    'apps/demo/main.cpp=#include "velDiagEdit/commands/dm_diag_actions.h"' \
    'tests/platform/x_test.cpp=#include "velDiagEdit/dialogs/scripted_dialog_service.h"'
expect "comments, tests and applications are not checked" pass

tree 'velDiagEdit/platform/a.cpp=#include "velDiagEdit/blocks/b.h"' 'velDiagEdit/handles/b.cpp=#include "velDiagEdit/editor/c.h"'
expect "every wrong include is reported and counted" fail "2 include(s) run the wrong way"

tree 'velDiagEdit/velDiagEdit.h=#include "velDiagEdit/editor/e.h"' \
    'velDiagEdit/simulation/s.cpp=#include "velDiagEdit/connections/c.h"'
expect "the simulation stands on connections" pass "one way"

tree 'velDiagEdit/simulation/s.cpp=#include "velDiagEdit/editor/diag_container.h"'
expect "simulation including the editor fails" fail "simulation may not stand on editor"

tree 'velDiagEdit/connections/c.cpp=#include "velDiagEdit/simulation/s.h"'
expect "connections including the simulation fails" fail "connections may not stand on simulation"

if [ "$failed" -ne 0 ]; then
    echo "$failed of $case_no cases failed"
    exit 1
fi
echo "all $case_no cases passed"
