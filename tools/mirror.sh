#!/bin/sh
# mirror.sh: prints the mirror from which apt takes the main section of this machine's release. The
# mirrors of other sections may lack other architectures.
set -eu

. /etc/os-release
mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Component: main' \
    "Release: $VERSION_CODENAME" | head -n 1)
if [ -z "$mirror" ]; then
    echo "$0: apt knows no mirror of $VERSION_CODENAME; is there a package list? (apt-get update)" >&2
    exit 1
fi
echo "$mirror"
