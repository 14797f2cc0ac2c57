#!/bin/sh
# make-stubs.sh DIR CC: libraries in DIR with the names of the device's closed ones and nothing in
# them but empty functions, one for each that the tree's headers declare.
set -eu

dir=$1
cc=$2
top=$(dirname "$(dirname "$(dirname "$(realpath "$0")")")")

# stub LIBRARY HEADER
stub() {
    sed -n '/^extern "C"/,/^}$/{s,//.*,,;p}' "$top/$2" | grep -oE '\w+\(' | tr -d '(' | sort -u |
        sed 's/.*/void &(void) {}/' > "$dir/$1.c"
    "$cc" -shared -fPIC -Wno-builtin-declaration-mismatch -Wl,-soname,"$1.so" \
        -o "$dir/$1.so" "$dir/$1.c"
}

mkdir -p "$dir"
stub libgstfsl platform/phymem.h
stub libGLESv2 platform/direct_texture.h
stub libcommif platform/libcommif.h
