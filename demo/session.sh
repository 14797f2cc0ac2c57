# Sourced by demo/run and demo/drive.sh: the player and, beside it, the hub that stands for the
# device's other programs. Both write to files, which are shown in the end or when something fails.
demo=$top/build/demo
player_log=$demo/player.log
hub_log=$demo/hub.log
player=
hub=

# Both have to be told of the same folder, whose path must fit into a socket's address.
if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
    XDG_RUNTIME_DIR=$(mktemp -d)
    export XDG_RUNTIME_DIR
    made_runtime_dir=$XDG_RUNTIME_DIR
fi

end_session() {
    for process in $player $hub; do
        kill -TERM "$process" 2>/dev/null || true
    done
    wait
    [ -z "${made_runtime_dir:-}" ] || rm -rf "$made_runtime_dir"
}
trap end_session EXIT

start_player() {
    "$demo/quadplayer-hub" --no-prompt >"$hub_log" 2>&1 &
    hub=$!
    "$demo/quadplayer" "$@" >"$player_log" 2>&1 &
    player=$!
}

# Waits for the player to end and shows what the hub received.
finish_session() {
    local status=0
    wait "$player" || status=$?
    player=
    echo
    echo "The player ended with status $status. What the device's other programs received from it:"
    cat "$hub_log"
    return $status
}
