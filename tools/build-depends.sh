#!/bin/sh
# build-depends.sh [PROFILE...]: prints what a build needs, one Debian package a line, from the one
# list of it: Build-Depends of debian/control, and build-essential, which that list implies.
# Packages of the profiles `lint` (format and tidy checks), `arm` (cross build), `board` (a booted
# system) and `docs` (drawings, moving picture) are printed where the profile is named; those marked
# <!nocheck> (what tests need) are not where nocheck is named.
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
