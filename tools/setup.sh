# What demo/run, tests/run and .ci/run share; they source it. Works as root, and as a user who may
# use sudo for the one step that installs packages.
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
    # An installed package of a foreign architecture prints the same name; that is near enough.
    comm -23 <(echo "$wanted") \
        <(dpkg-query -W -f '${Package} ${db:Status-Status}\n' $wanted 2>/dev/null |
            sed -n 's/ installed$//p' | sort -u)
}

# install_packages [PROFILE...]: installs what is missing and touches nothing where all is there.
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

# keep_below DIR: caches of the libraries go below DIR instead of the home directory.
keep_below() {
    mkdir -p "$1/cache"
    export XDG_CACHE_HOME=$1/cache GST_REGISTRY=$1/cache/gst-registry.bin
}

# Programs that draw or open the link's socket want a runtime directory; where there is none they get
# one of their own, in a temporary folder, as a socket's address has room for a short path only.
make_runtime_dir() {
    if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
        XDG_RUNTIME_DIR=$(mktemp -d)
        export XDG_RUNTIME_DIR
        trap 'rm -rf "$XDG_RUNTIME_DIR"' EXIT
    fi
}
