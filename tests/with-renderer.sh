#!/bin/sh
# with-renderer.sh COMMAND...: runs an emulated program that draws. Mesa's own renderer takes 8 s
# for a full screen when it is emulated, so Mesa hands the drawing (GALLIUM_DRIVER=virpipe) to this
# server, which is not; without a driver of its own it would hand it on to itself. Its socket has one
# name on the whole machine: programs take turns.
set -eu

socket=/tmp/.virgl_test

exec 9< "$(command -v virgl_test_server)"
flock 9
rm -f "$socket"
GALLIUM_DRIVER=llvmpipe virgl_test_server --use-egl-surfaceless --use-gles > /dev/null 2>&1 9<&- &
server=$!
trap 'kill $server; rm -f "$socket"' EXIT
until [ -S "$socket" ]; do
    kill -0 $server
    sleep 0.05
done
"$@" 9<&-
