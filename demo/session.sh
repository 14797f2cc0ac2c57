# Sourced by demo/run and demo/drive.sh: the player and, beside it, the hub that stands for the
# device's other programs. Both write to files, which are shown in the end or when something fails.
demo=$top/build/demo
player_log=$demo/player.log
hub_log=$demo/hub.log
player=
hub=

end_session() {
    for process in $player $hub; do
        kill -TERM "$process" 2>/dev/null || true
    done
    wait
}
trap end_session EXIT

start_player() {
    # In a session of its own, it outlives the player that an interrupt from the terminal ends.
    setsid "$demo/quadplayer-hub" --no-prompt >"$hub_log" 2>&1 &
    hub=$!
    "$demo/quadplayer" "$@" >"$player_log" 2>&1 &
    player=$!
}

# Waits for the player to end and shows what the hub received.
finish_session() {
    local status=0
    trap : INT # the player gets the terminal's interrupt too, and ends
    wait "$player" || status=$?
    if [ $status -gt 128 ] && kill -0 "$player" 2>/dev/null; then
        status=0
        wait "$player" || status=$?
    fi
    player=
    echo
    echo "The player ended with status $status. What the device's other programs received from it:"
    cat "$hub_log"
    return $status
}
