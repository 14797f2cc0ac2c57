#!/bin/sh
# make-sysroot.sh [DIR]: unpacks Debian's armhf packages of what the build reads and the program
# loads (nothing in them is run), so that the cross compiler and the emulator find them.
# Safe to run again: a complete sysroot of the same packages is left alone, any other is remade.
set -eu

here=$(dirname "$(realpath "$0")")
dir=$(realpath -m "${1:-$here/../build/sysroot-armhf}")
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
mmdebstrap --quiet --variant=extract --architectures=armhf --components=main \
    --skip=cleanup/apt/cache --include="$packages" "$VERSION_CODENAME" "$half" "$mirror"

# Nothing in it is run by its own name: emulated programs that start another one, or open a file in
# one of these folders, mean this machine's.
rm -rf "$half/bin" "$half/sbin" "$half/usr/bin" "$half/usr/sbin" "$half/dev" "$half/tmp"

# Links that start at the root would lead into this machine's own files.
find "$half/usr" "$half/lib" -type l -lname '/*' | while read -r link; do
    target=$half$(readlink "$link")
    if [ -e "$target" ]; then
        ln -sfr "$target" "$link"
    fi
done

# Links that the packages' own scripts would have made.
ln -s blas/libblas.so.3 lapack/liblapack.so.3 "$half/usr/lib/arm-linux-gnueabihf/"

# Qt's CMake files name these tools below the sysroot, but the build runs them here.
for tool in usr/lib/qt5/bin/moc usr/lib/qt5/bin/rcc usr/lib/qt5/bin/uic \
        usr/lib/arm-linux-gnueabihf/qt5/bin/qmake; do
    ln -sf "/usr/lib/qt5/bin/${tool##*/}" "$half/$tool"
done

echo "$packages" > "$half/.packages"
mv "$half" "$dir"
