#!/usr/bin/env bash
# drive.sh drawn|own|tour: plays a user with a keyboard on the current display. Goes through the drawn
# recordings, or the user's own folder, and leaves numbered screenshots, or films a short tour. Started
# by demo/run.
. "$(dirname "$0")/../tools/setup.sh"
. demo/session.sh

shots=$demo/screenshots
film=$demo/tour.webp
count=0
lists=1 # how often the list was filled: once when it is made, then whenever it is entered

fail() {
    echo "$1; the player wrote:" >&2
    tail -n 20 "$player_log" >&2
    exit 1
}

# wait_for TEXT [TIMES]: waits until the player has written it TIMES times, for 30 s at most.
wait_for() {
    for _ in $(seq 300); do
        [ "$(grep -cF -- "$1" "$player_log")" -ge "${2:-1}" ] && return
        kill -0 "$player" 2>/dev/null || fail "The player has ended"
        sleep 0.1
    done
    fail "Waited in vain for '$1'"
}

wait_for_list() {
    lists=$((lists + 1))
    wait_for "-------ItemCount" $lists
}

# Waits for the first page; until then the screen has one colour.
wait_for_picture() {
    for _ in $(seq 100); do
        [ "$(import -window root png:- | identify -format %k -)" = 1 ] || return 0
    done
    fail "The screen stays empty"
}

press() {
    xdotool key --delay 150 "$@"
}

# shot NAME: saves a screenshot, a second later so that the screen has settled.
shot() {
    count=$((count + 1))
    local file
    file=$shots/$(printf %02d $count)-$1.png
    sleep 1
    import -window root "$file"
    echo "  ${file#"$top"/}"
}

# rows file|video: how many folders or videos the list shows.
rows() {
    sed -n "s/^-------$1 cout *//p" "$player_log" | tail -n 1
}

drive_drawn() {
    shot list
    press Return # the first row is the folder of events
    wait_for_list
    shot folder
    press BackSpace
    wait_for_list
    press Right Right Down Return Down Return # past Exit to the first row, down, mark two
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
    press Left Return # left of play is the last button: back to the list
    wait_for_list
    shot list-again
    press Right Return # Exit
}

# Plays the first recording. If a folder holds only folders, enters the first of them.
drive_own() {
    shot list
    while [ "$(rows video)" = 0 ] && [ "$(rows file)" != 0 ]; do
        press Return
        wait_for_list
        shot folder
    done
    if [ "$(rows video)" != 0 ]; then
        press $(yes Down | head -n "$(rows file)") Return
        shot marked
        press Left Return
        wait_for "CPlayer::stop() end"
        shot all-views
        press 1
        shot view-1
        if ! grep -qF "slotPagePlayerToPagePlayerList()" "$player_log"; then # the recording still plays
            press Left Return # left of play is the last button: back to the list
        fi
        wait_for_list
        shot list-again
    fi
    kill -INT "$player"
}

drive_tour() {
    ffmpeg -nostdin -loglevel error -y -f x11grab -framerate 10 -video_size 1280x720 -i "$DISPLAY" \
        -codec:v libx264 -preset ultrafast -qp 0 "$demo/tour.mkv" &
    local camera=$!
    sleep 2
    for key in Down Return Down Return Left Return; do
        press $key
        sleep 0.5
    done
    wait_for "CPlayer::stop() end"
    sleep 3
    for view in 1 4 0; do
        press $view
        sleep 2
    done
    press Left Return
    wait_for_list
    sleep 2
    kill -INT $camera
    wait $camera || true # interrupted, ffmpeg ends with 255
    press Right Return
    ffmpeg -nostdin -loglevel error -y -i "$demo/tour.mkv" -vf scale=720:-1:flags=lanczos \
        -codec:v libwebp_anim -quality 60 -loop 0 "$film"
    rm "$demo/tour.mkv"
    echo "  ${film#"$top"/}, $(stat -c %s "$film") bytes"
}

rm -rf "$shots"
mkdir -p "$shots"
start_player
wait_for_list
wait_for_picture
echo "Pictures:"
drive_"$1"
finish_session
