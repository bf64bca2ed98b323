#!/usr/bin/env bash
# check_layers.sh [ROOT]: the library's layers run one way. Fails, naming file and line, on any
# #include in a library folder of ROOT/velDiagEdit (ROOT defaults to the repository) that reaches
# a folder its own folder may not stand on:
#
#   platform <- geometry <- blocks <- connections <- simulation <- editor <- commands <- package
#   handles, dialogs, timechart stand on platform only; editor and above may use them.
#
# An include names a folder as "velDiagEdit/<folder>/..." or <velDiagEdit/<folder>/...>, as a bare
# "<folder>/..." or as a path relative to the including file ("../<folder>/..."). The umbrella
# header velDiagEdit/velDiagEdit.h counts as package, and is checked as package; the generated export and version headers
# stand below everything. Any other velDiagEdit/ name is an error, so that a new folder gets a row
# in the table below before it is used. Tests, benchmarks and applications stand on top and are
# not checked.
set -euo pipefail

root=${1:-"$(cd "$(dirname "$0")/.." && pwd)"}
root=$(cd "$root" && pwd)
lib=$root/velDiagEdit

base="platform"
declare -A allowed=(
    [platform]="$base"
    [geometry]="$base geometry"
    [blocks]="$base geometry blocks"
    [connections]="$base geometry blocks connections"
    [simulation]="$base geometry blocks connections simulation"
    [handles]="$base handles"
    [dialogs]="$base dialogs"
    [timechart]="$base timechart"
    [editor]="$base geometry blocks connections simulation handles dialogs timechart editor"
    [commands]="$base geometry blocks connections simulation handles dialogs timechart editor commands"
    [package]="$base geometry blocks connections simulation handles dialogs timechart editor commands package"
)
generated="velDiagEdit/velDiagEdit_export.h velDiagEdit/velDiagEdit_version.h"

# The folder an included path belongs to, "" for a header outside the library (Qt, std, a file
# of the same folder), "?" for a velDiagEdit/ name that no folder answers to.
layer_of() {
    local from_dir=$1 path=$2
    local word
    for word in $generated; do
        [ "$path" = "$word" ] && { echo ""; return; }
    done
    if [ "$path" = "velDiagEdit/velDiagEdit.h" ]; then
        echo package
        return
    fi
    if [[ $path == velDiagEdit/* ]]; then
        local folder=${path#velDiagEdit/}
        folder=${folder%%/*}
        if [ -n "${allowed[$folder]+x}" ] && [[ $path == velDiagEdit/$folder/* ]]; then
            echo "$folder"
        else
            echo "?"
        fi
        return
    fi
    local first=${path%%/*}
    if [[ $path == */* ]] && [ -n "${allowed[$first]+x}" ]; then
        echo "$first"
        return
    fi
    if [[ $path == ../* || $path == ./* ]]; then
        local resolved
        resolved=$(realpath -m "$from_dir/$path")
        if [[ $resolved == "$lib"/* ]]; then
            local rel=${resolved#"$lib"/}
            first=${rel%%/*}
            if [ -n "${allowed[$first]+x}" ] && [[ $rel == */* ]]; then
                echo "$first"
                return
            fi
        fi
    fi
    echo ""
}

failures=0
files=0
includes=0
# check_file <file> <folder>: every include of one file against what <folder> may stand on.
check_file() {
    local file=$1 folder=$2
    files=$((files + 1))
    local rel_file=${file#"$root"/}
    local hit line text path target
    while IFS= read -r hit; do
        [ -n "$hit" ] || continue
        line=${hit%%:*}
        text=${hit#*:}
        path=$(sed -E 's/^[[:space:]]*#[[:space:]]*include[[:space:]]*["<]([^">]*)[">].*/\1/' <<<"$text")
        includes=$((includes + 1))
        target=$(layer_of "$(dirname "$file")" "$path")
        [ -n "$target" ] || continue
        if [ "$target" = "?" ]; then
            echo "$rel_file:$line: includes $path, which is in no layer of the library"
            failures=$((failures + 1))
        elif [[ " ${allowed[$folder]} " != *" $target "* ]]; then
            echo "$rel_file:$line: includes $path: $folder may not stand on $target" \
                "(it may use: ${allowed[$folder]})"
            failures=$((failures + 1))
        fi
    done < <(grep -nE '^[[:space:]]*#[[:space:]]*include[[:space:]]*["<]' "$file" || true)
}

for folder in "${!allowed[@]}"; do
    [ -d "$lib/$folder" ] || continue
    while IFS= read -r -d '' file; do
        check_file "$file" "$folder"
    done < <(find "$lib/$folder" -type f \( -name '*.h' -o -name '*.hpp' -o -name '*.cpp' \) -print0)
done
# The umbrella header stands where package does.
[ -f "$lib/velDiagEdit.h" ] && check_file "$lib/velDiagEdit.h" package

if [ "$failures" -ne 0 ]; then
    echo "layers: $failures include(s) run the wrong way ($files files, $includes includes read)"
    exit 1
fi
echo "layers: one way ($files files, $includes includes read)"
