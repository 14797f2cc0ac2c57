#!/usr/bin/env bash
# Drives the player on the current display as a user with a keyboard would and leaves numbered
# screenshots; started by demo/run.
. "$(dirname "$0")/../cmake/setup.sh"
. demo/session.sh

shots=$demo/screenshots
count=0
rm -rf "$shots"
mkdir -p "$shots"

fail() {
    echo "$1; the player wrote:" >&2
    tail -n 20 "$player_log" >&2
    exit 1
}

# wait_for TEXT [TIMES]: until the player has written it TIMES times, 30 s at most.
wait_for() {
    for _ in $(seq 300); do
        [ "$(grep -cF -- "$1" "$player_log")" -ge "${2:-1}" ] && return
        kill -0 "$player" 2>/dev/null || fail "The player has ended"
        sleep 0.1
    done
    fail "Waited in vain for '$1'"
}

press() {
    xdotool key --delay 150 "$@"
}

# shot NAME: leaves the screen a moment to settle first.
shot() {
    count=$((count + 1))
    local file
    file=$shots/$(printf %02d $count)-$1.png
    sleep 1
    import -window root "$file"
    echo "  ${file#"$top"/}"
}

start_player
wait_for "-------ItemCount" 2 # the list is filled twice: when it is made and when it is entered
echo "Screenshots:"
shot list

press Return # the first row is the folder of events
wait_for "-------ItemCount" 3
shot folder
press BackSpace
wait_for "-------ItemCount" 4
press Right Right Down Return Down Return # over Exit to the first row, down, and mark two recordings
shot marked

press Left
shot play-button
press Return
wait_for "CPlayer::stop() end"
sleep 2
shot all-views
for view in 1 2 3 4; do
    press $view
    shot view-$view
done
press 0 Right Right Right Return # to the button that seeks forward
shot 34-seconds-on
press Left Left Left Return # play and pause
shot paused
sleep 10
shot bar-hidden
press Return # brings the bar back
press Left Return # from play over the left end to the last button, back to the list
wait_for "-------ItemCount" 5
shot list-again
press Right Return # Exit
finish_session
