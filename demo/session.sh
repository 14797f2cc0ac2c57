# Sourced by demo/run and demo/drive.sh. Starts the player and the hub, which plays the device's other
# programs. Both write to log files, which are shown at the end or after a failure.
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
    # In a session of its own, or Ctrl+C would end the hub before the player's last message.
    setsid "$demo/quadplayer-hub" --no-prompt >"$hub_log" 2>&1 &
    hub=$!
    "$demo/quadplayer" "$@" >"$player_log" 2>&1 &
    player=$!
}

# Waits for the player to end and shows what the hub received.
finish_session() {
    local status=0
    trap : INT # Ctrl+C reaches the player too and ends it
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
