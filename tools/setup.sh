# Sourced by demo/run, tests/run and .ci/run. They run as root, or as a user who may use sudo, which
# only the installation of packages needs.
set -euo pipefail

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$top"

step() {
    printf '\n== %s\n' "$*" >&2
}

# missing_packages [PROFILE...]: the build dependencies that are not installed, one a line.
missing_packages() {
    local wanted
    wanted=$(tools/build-depends.sh "$@" | sort -u)
    # A package of a foreign architecture counts as installed too; none of these is likely to be one.
    comm -23 <(echo "$wanted") \
        <(dpkg-query -W -f '${Package} ${db:Status-Status}\n' $wanted 2>/dev/null |
            sed -n 's/ installed$//p' | sort -u)
}

# install_packages [PROFILE...]: installs the missing build dependencies; does nothing if none is.
install_packages() {
    local missing as_root=
    missing=$(missing_packages "$@")
    if [ -z "$missing" ]; then
        return
    fi
    if [ "$(id -u)" != 0 ]; then
        as_root=sudo
    fi
    step "Installing $(echo "$missing" | wc -l) packages"
    $as_root apt-get -q update >&2
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=300 \
        -o Dpkg::Use-Pty=0 --no-install-recommends -y install $missing >&2
}

# build PRESET: configures and builds below build/PRESET.
build() {
    step "Building preset $1"
    cmake --preset "$1" >&2 &&
        cmake --build --preset "$1" >&2
}

# keep_below DIR: makes libraries keep their caches below DIR instead of the home directory.
keep_below() {
    mkdir -p "$1/cache"
    export XDG_CACHE_HOME=$1/cache GST_REGISTRY=$1/cache/gst-registry.bin
}

# Qt and the link's socket need a runtime directory. It stands in a temporary folder because the
# address of a socket holds a short path only.
make_runtime_dir() {
    if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
        XDG_RUNTIME_DIR=$(mktemp -d)
        export XDG_RUNTIME_DIR
        trap 'rm -rf "$XDG_RUNTIME_DIR"' EXIT
    fi
}
