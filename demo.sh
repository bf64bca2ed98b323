#!/usr/bin/env bash
# Installs what is missing, builds and runs the demo host application. Without a display it
# renders the demo window offscreen to demo.png.
set -euo pipefail
cd "$(dirname "$0")"
source scripts/deps.sh
vde_ensure_packages
cmake --preset default >/dev/null
cmake --build --preset default --target vde_demo
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
    export QT_QPA_PLATFORM=offscreen
fi
exec ./build/apps/demo/vde_demo "$@"
