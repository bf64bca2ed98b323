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

tree 'platform/a.h=#include "velDiagEdit/platform/b.h"' 'platform/a.h=#include <QString>' \
    'blocks/c.cpp=#include "velDiagEdit/geometry/g.h"' 'blocks/c.cpp=#include "c.h"' \
    'editor/e.cpp=#include <velDiagEdit/dialogs/d.h>' 'editor/e.cpp=#include "velDiagEdit/handles/h.h"' \
    'package/velDiagEdit.h=#include "velDiagEdit/editor/e.h"' \
    'dialogs/d.h=#include "velDiagEdit/velDiagEdit_export.h"'
expect "includes that run down pass" pass "one way"

tree 'platform/dialog_service.cpp=#include <QString>' \
    'platform/dialog_service.cpp=#include "velDiagEdit/dialogs/dialog_controls.h"'
expect "platform including a dialog fails at its line" fail \
    "platform/dialog_service.cpp:2: includes velDiagEdit/dialogs/dialog_controls.h"

tree 'blocks/x.h=#include <velDiagEdit/connections/diag_connection.h>'
expect "angle-bracket include one layer up fails" fail "blocks may not stand on connections"

tree 'geometry/x.cpp=  #  include "velDiagEdit/editor/diag_container.h"'
expect "spaced-out directive fails" fail "geometry/x.cpp:1"

tree 'connections/x.cpp=#include "../editor/diag_container.h"'
expect "relative path up a layer fails" fail "connections may not stand on editor"

tree 'platform/x.cpp=#include "blocks/diag_object.h"'
expect "unprefixed folder path up a layer fails" fail "platform may not stand on blocks"

tree 'dialogs/x.cpp=#include "velDiagEdit/handles/move_resize.h"'
expect "one side layer including another fails" fail "dialogs may not stand on handles"

tree 'timechart/x.cpp=#include "velDiagEdit/geometry/geometry.h"'
expect "a side layer including geometry fails" fail "timechart may not stand on geometry"

tree 'blocks/x.cpp=#include "velDiagEdit/velDiagEdit.h"'
expect "the umbrella header below package fails" fail "blocks may not stand on package"

tree 'editor/x.cpp=#include "velDiagEdit/widgets/thing.h"'
expect "a folder in no layer fails" fail "in no layer of the library"

tree 'platform/x.cpp=// #include "velDiagEdit/editor/diag_container.h"' \
    'apps/demo/main.cpp=#include "velDiagEdit/commands/dm_diag_actions.h"' \
    'tests/platform/x_test.cpp=#include "velDiagEdit/dialogs/scripted_dialog_service.h"'
expect "comments, tests and applications are not checked" pass

tree 'platform/a.cpp=#include "velDiagEdit/blocks/b.h"' 'handles/b.cpp=#include "velDiagEdit/editor/c.h"'
expect "every wrong include is reported and counted" fail "2 include(s) run the wrong way"

if [ "$failed" -ne 0 ]; then
    echo "$failed of $case_no cases failed"
    exit 1
fi
echo "all $case_no cases passed"
