#!/bin/sh
# make-clips.sh DIR: makes the clips that bench/compare plays into DIR, once. All are 1080p30 H.264
# with a tone; bars, and below them noise that has to be decoded.
#
#   plain/plain.mp4       20 s, 600 frames, no B-frames
#   bframes/bframes.mp4   the same with B-frames
#   short/1.mp4, 3.mp4    2 s, 60 frames
#   short/2.mp4           the same, left and right exchanged
set -eu

dir=${1:?usage: make-clips.sh DIR}
[ -e "$dir/.made" ] && [ "$dir/.made" -nt "$0" ] && exit

# clip FILE SECONDS B-FRAMES PICTURE
clip() {
    mkdir -p "$dir/${1%/*}"
    gst-launch-1.0 -q videotestsrc num-buffers=$(($2 * 30)) pattern=smpte \
        ! video/x-raw,format=I420,width=1920,height=1080,framerate=30/1 ! $4 \
        ! x264enc speed-preset=veryfast bitrate=6000 key-int-max=60 bframes="$3" ! h264parse ! queue \
        ! mp4mux name=mux ! filesink location="$dir/$1" \
        audiotestsrc num-buffers=$(($2 * 44100 / 1024)) freq=440 volume=0.1 \
        ! audio/x-raw,rate=44100,channels=2 ! audioconvert ! avenc_aac ! aacparse ! queue ! mux.
}

clip plain/plain.mp4 20 0 identity
clip bframes/bframes.mp4 20 2 identity
clip short/1.mp4 2 0 identity
clip short/2.mp4 2 0 "videoflip video-direction=horiz"
cp "$dir/short/1.mp4" "$dir/short/3.mp4"
touch "$dir/.made"
