#!/bin/sh
# build-depends.sh [PROFILE...]: prints the Debian packages that a build needs, one a line: those of
# Build-Depends in debian/control, and build-essential, which that list implies. Packages marked with a
# profile, such as `lint` or `arm`, are printed only if it is named. Packages that only the tests need
# (<!nocheck>) are left out if `nocheck` is named.
set -eu

echo build-essential
sed -n '/^Build-Depends:/,/^[A-Z].*:/s/^ \(.*\),$/\1/p' "$(dirname "$0")/../debian/control" |
while read -r package rest; do
    for profile in $(echo "$rest" | grep -o "<[^>]*>" || echo always); do
        profile=$(echo "$profile" | sed 's/^<\(pkg\.quadplayer\.\)\{0,1\}//; s/>$//')
        case " $* " in
            *" ${profile#!} "*) named=yes ;;
            *) named=no ;;
        esac
        case "$profile/$named" in
            always/* | !*/no | [!!]*/yes) echo "${package%-compat}" ;;
        esac
    done
done
