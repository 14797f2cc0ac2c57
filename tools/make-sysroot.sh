#!/bin/sh
# make-sysroot.sh [ARCHITECTURE]: unpacks Debian's packages of armhf (default) or arm64 that the build
# reads and the program loads, so that the cross compiler and the emulator find them. Nothing in them is
# run. A second run makes the sysroot again only if the list of packages has changed.
set -eu

here=$(dirname "$(realpath "$0")")
arch=${1:-armhf}
triplet=$(dpkg-architecture -f -a "$arch" -q DEB_HOST_MULTIARCH)
dir=$(realpath -m "$here/../build/sysroot-$arch")
half=$dir.half

# Headers and libraries, plugins and drivers; the other build dependencies run on this machine.
packages=$("$here/build-depends.sh" | grep -E -e '-dev$|^gstreamer1\.0-|^libgl1-mesa-dri$')
packages=$(echo libc6-dev libstdc++-12-dev $packages | tr ' ' ,)
if [ "$(cat "$dir/.packages" 2>/dev/null)" = "$packages" ]; then
    exit 0
fi

. /etc/os-release
mirror=$("$here/mirror.sh")
rm -rf "$dir" "$half"
mkdir -p "$(dirname "$dir")"
mmdebstrap --quiet --variant=extract --architectures="$arch" --components=main \
    --skip=cleanup/apt/cache --include="$packages" "$VERSION_CODENAME" "$half" "$mirror"

# An emulated program that starts another one, or opens a file in one of these folders, means this
# machine's; the emulator would take the sysroot's.
rm -rf "$half/bin" "$half/sbin" "$half/usr/bin" "$half/usr/sbin" "$half/dev" "$half/tmp"

# Links that start at / would lead to this machine's files.
find "$half/usr" "$half/lib" -type l -lname '/*' | while read -r link; do
    target=$half$(readlink "$link")
    if [ -e "$target" ]; then
        ln -sfr "$target" "$link"
    fi
done

# The packages' scripts did not run; they would have made these links.
ln -s blas/libblas.so.3 lapack/liblapack.so.3 "$half/usr/lib/$triplet/"

# Qt's CMake files name these tools below the sysroot, but the build runs them here.
for tool in usr/lib/qt5/bin/moc usr/lib/qt5/bin/rcc usr/lib/qt5/bin/uic \
        "usr/lib/$triplet/qt5/bin/qmake"; do
    ln -sf "/usr/lib/qt5/bin/${tool##*/}" "$half/$tool"
done

echo "$packages" > "$half/.packages"
mv "$half" "$dir"
