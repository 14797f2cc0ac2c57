#!/usr/bin/env bash
# exit-message.sh BUILD_DIR CLIP RUNS: lets the player leave RUNS times by its Exit button and RUNS
# times by an interrupt while CLIP plays, and fails unless the hub received the message of the exit
# exactly once each time. On the current display; the build needs a DEVICE_ROOT of its own.
set -euo pipefail

build=$(realpath "$1")
clip=$(realpath "$2")
runs=$3
message="received type=1 tag=1 value=8 tag=2 value=1"
device=$(sed -n 's/^DEVICE_ROOT:STRING=//p' "$build/CMakeCache.txt")
work=$(mktemp -d)
export XDG_RUNTIME_DIR=$work
player=
hub=

cleanup() {
    kill -KILL $player $hub 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT

fail() {
    echo "$1" >&2
    tail -n 20 "$work/hub.log" "$work/player.log" >&2
    exit 1
}

# until_true COMMAND...: repeats it until it succeeds, 20 s at most.
until_true() {
    for _ in $(seq 400); do
        "$@" 2>/dev/null && return
        sleep 0.05
    done
    fail "waited in vain for: $*"
}

has_keys() { [ "$(xdotool getwindowfocus getwindowpid)" = "$player" ]; }
screen_sum() { import -window root rgb:- | cksum; }
screen_moves() {
    local before
    before=$(screen_sum)
    sleep 0.25
    [ "$before" != "$(screen_sum)" ]
}
has_ended() { ! kill -0 "$1"; }

# An empty list gives the focus to Exit; with one clip, it stands on the clip.
set_device() {
    rm -rf "$work/video" && mkdir "$work/video"
    [ -z "$1" ] || ln -s "$1" "$work/video/"
    mkdir -p "$device/home/kvr/1_morvastine"
    echo "$work/video" >"$device/home/kvr/1_morvastine/cfg_system.txt"
}

start() {
    "$build/quadplayer-hub" --no-prompt >"$work/hub.log" 2>&1 &
    hub=$!
    until_true grep -q listening "$work/hub.log"
    stdbuf -oL "$build/quadplayer" >"$work/player.log" 2>&1 &
    player=$!
    until_true grep -q "player connected" "$work/hub.log"
    until_true has_keys
}

leave_by_button() {
    xdotool key Return
}

leave_while_playing() {
    xdotool key Return Down Return
    until_true grep -q "CPlayer::stop() end" "$work/player.log"
    until_true screen_moves # from the list to the player
    until_true screen_moves # from frame to frame
    kill -INT "$player"
}

finish() {
    local status=0
    until_true has_ended "$player"
    wait "$player" || status=$?
    kill -TERM "$hub"
    until_true has_ended "$hub"
    [ "$status" = 0 ] || fail "the player ended with status $status"
    [ "$(grep -cxF "$message" "$work/hub.log")" = 1 ] || fail "the message came not once"
    [ "$(grep -c "^received" "$work/hub.log")" = 1 ] || fail "other messages came"
}

# check NAME CLIP LEAVE
check() {
    set_device "$2"
    for _ in $(seq "$runs"); do
        start
        "$3"
        finish
    done
    echo "$1: the message came exactly once in each of $runs runs"
}

check "Exit button" "" leave_by_button
check "interrupt while playing" "$clip" leave_while_playing
