#!/bin/sh
# make-clips.sh DIR: makes the clips that the tests play into DIR. Each is written beside its
# place and moved, so an interrupted run leaves no half clip; .made comes last.
set -eu

dir=${1:?usage: make-clips.sh DIR}
mkdir -p "$dir"
work=$dir/.work
rm -rf "$work" "$dir/.made"
mkdir "$work"

keep() {
    mv "$work/$1" "$dir/$1"
}

# clip NAME ELEMENTS...: gst-launch speaks on stdout; what it says matters only when it fails.
clip() {
    name=$1
    shift
    timeout 60 gst-launch-1.0 -q "$@" ! filesink location="$work/$name" >"$work/log" 2>&1 || {
        cat "$work/log" >&2
        echo "make-clips.sh: could not make $name" >&2
        exit 1
    }
    keep "$name"
}

# raw FORMAT WIDTH HEIGHT FPS
raw() {
    echo "video/x-raw,format=$1,width=$2,height=$3,framerate=$4/1"
}

ball="videotestsrc pattern=ball num-buffers"
# One thread: every machine makes the same clip. No B-frames: the first picture is at 0.
h264="x264enc threads=1 bframes=0 speed-preset=veryfast"

# 2 s, 25 fps, with a 440 Hz tone.
clip talking.mp4 audiotestsrc num-buffers=86 samplesperbuffer=1024 freq=440 volume=0.1 \
    ! audio/x-raw,rate=44100,channels=1 ! audioconvert ! avenc_aac ! aacparse ! mux. \
    $ball=50 ! "$(raw I420 320 240 25)" ! $h264 ! h264parse ! mp4mux name=mux

# 2 s, 30 fps; under two more names: one beyond ASCII, with blanks, and one that is no part of an
# address.
clip silent.mp4 $ball=60 ! "$(raw I420 320 240 30)" ! $h264 ! h264parse ! mp4mux
for name in "名 mit Ümlaut.mp4" "a#b.mp4"; do
    cp "$dir/silent.mp4" "$work/$name"
    keep "$name"
done

# 1 s, 25 frames, but 23 decoded timestamps, for AVI knows no presentation times.
clip bframes.avi $ball=25 ! "$(raw I420 320 240 25)" \
    ! avenc_mpeg4 max-bframes=2 gop-size=6 bitrate=400000 ! avimux

# 80 s, 10 fps, a key frame every 2 s.
clip long.mp4 $ball=800 ! "$(raw I420 320 240 10)" ! $h264 key-int-max=20 ! h264parse ! mp4mux

# 1 s, 25 fps, still: red upper left, the rest white; twice as many colours as the screen takes.
clip quads.mp4 videotestsrc num-buffers=25 pattern=solid-color foreground-color=0xffff0000 \
    ! "$(raw I420 160 120 25)" ! compositor background=white ! "$(raw Y42B 320 240 25)" \
    ! $h264 quantizer=10 pass=quant ! h264parse ! mp4mux

# 0.5 s, 10 fps: both sizes odd, as many frames as there are in physical memory.
clip odd.avi videotestsrc num-buffers=5 ! "$(raw I420 53 41 10)" ! jpegenc ! avimux

# 1 s, 10 fps, 3x3, the first pixel brighter from frame to frame: rows of brightness, then two of
# each colour, at four bytes. In Matroska, which takes any size; GStreamer goes by content.
for first in A B C D E F G H I J; do
    printf '%sbc-def-ghi-----UX--ux--VY--vy--' $first
done > "$work/pixels"
clip tiny.avi filesrc location="$work/pixels" \
    ! rawvideoparse format=i420 width=3 height=3 framerate=10/1 ! matroskamux

# 13 frames of 320x240, then 13 of 160x120, 25 fps, bare H.264.
for size in "320 240" "160 120"; do
    clip part $ball=13 ! "$(raw I420 $size 25)" ! $h264 ! video/x-h264,stream-format=byte-stream
    cat "$dir/part" >>"$work/resized.mp4"
done
rm "$dir/part"
keep resized.mp4

# Starts, then ends in an error: the index at the end stays; the pictures it points to, from behind
# the first headers, become zeros.
index=$(grep -abo moov "$dir/silent.mp4" | head -n 1 | cut -d : -f 1)
cp "$dir/silent.mp4" "$work/damaged.mp4"
dd if=/dev/zero of="$work/damaged.mp4" bs=1 seek=64 count=$((index - 70)) conv=notrunc 2>"$work/log"
keep damaged.mp4

echo "This is a text that only calls itself a video." >"$dir/notvideo.mp4"

rm -r "$work"
touch "$dir/.made"
