# Installs the Debian packages the build needs when any is missing (sourced by the scripts).
VDE_PACKAGES=(cmake ninja-build g++ clang libclang-rt-14-dev pkg-config
    qt6-base-dev qt6-svg-dev libqt6sql6-sqlite libqt6sql6-psql postgresql libgl-dev fonts-dejavu-core
    qt6-tools-dev qt6-l10n-tools qt6-tools-dev-tools libqt6designer6 libqt6opengl6-dev
    libgtest-dev libbenchmark-dev libssl-dev libpq-dev)

vde_ensure_packages() {
    local missing=()
    local p
    for p in "${VDE_PACKAGES[@]}"; do
        if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
            missing+=("$p")
        fi
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    echo "Installing: ${missing[*]}"
    local sudo=()
    [ "$(id -u)" -ne 0 ] && sudo=(sudo)
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -qq
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
}
