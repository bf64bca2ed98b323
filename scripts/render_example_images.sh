#!/usr/bin/env bash
# Draws docs/images/example_<name>.png for every sample diagram examples/<name>.dgm, and
# docs/images/sim_<name>.png, the chart of its simulation on examples/<name>.stimuli.json, with
# the command-line tool, from a build of the default preset (or the build folder given).
#
#   scripts/render_example_images.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
tool=$build/apps/veldiag/veldiag
[ -x "$tool" ] || { echo "no $tool: cmake --build $build --target veldiag" >&2; exit 1; }
for f in "$root"/examples/*.dgm; do
    name=$(basename "$f" .dgm)
    "$tool" render "$f" -o "$root/docs/images/example_$name.png" --margin 16
    echo "docs/images/example_$name.png"
    stimuli="$root/examples/$name.stimuli.json"
    if [ -f "$stimuli" ]; then
        "$tool" simulate "$f" --stimuli "$stimuli" -o "$root/docs/images/sim_$name.png"
        echo "docs/images/sim_$name.png"
    fi
done
