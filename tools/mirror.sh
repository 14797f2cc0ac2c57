#!/bin/sh
# mirror.sh: prints the mirror of this machine's release that apt takes its main section from. Other
# sections need not have armhf.
set -eu

. /etc/os-release
mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Component: main' \
    "Release: $VERSION_CODENAME" | head -n 1)
if [ -z "$mirror" ]; then
    echo "$0: apt knows no mirror of $VERSION_CODENAME; is there a package list? (apt-get update)" >&2
    exit 1
fi
echo "$mirror"
