#!/bin/sh
# make-clips.sh DIR: makes the clips that the tests play into DIR. Each is written beside its
# place and moved, so an interrupted run leaves no half clip; .made comes last.
#
#   talking.mp4           2 s, 320x240, 25 fps H.264 with a 440 Hz tone in AAC
#   silent.mp4            2 s, 320x240, 30 fps H.264, no audio: 60 frames
#   bframes.avi           1 s, 320x240, 25 fps MPEG-4 with B-frames: 25 frames, but 23 decoded
#                         timestamps, for AVI knows no presentation times
#   long.mp4              80 s, 320x240, 10 fps H.264, a key frame every 2 s, no audio
#   quads.mp4             1 s, 320x240, 25 fps H.264, still: red upper left, the rest white
#   odd.avi               0.5 s, 53x41, 10 fps MJPEG: both sizes odd, as many frames as there are
#                         in physical memory
#   tiny.avi              1 s, 1x1, 10 fps raw I420, brighter from frame to frame: the smallest
#                         picture (in Matroska, which takes any size; GStreamer goes by content,
#                         not by name)
#   resized.mp4           13 frames of 320x240, then 13 of 160x120, 25 fps bare H.264
#   damaged.mp4           silent.mp4 with zeros for pictures: starts, then ends in an error
#   notvideo.mp4          a text
#   名 mit Ümlaut.mp4     silent.mp4 under a name with blanks and characters beyond ASCII
#   a#b.mp4               silent.mp4 under a name that is no part of an address
set -eu

dir=${1:?usage: make-clips.sh DIR}
mkdir -p "$dir"
work=$dir/.work
rm -rf "$work" "$dir/.made"
mkdir "$work"

launch() {
    # gst-launch speaks on stdout; what it says matters only when it fails.
    timeout 60 gst-launch-1.0 -q "$@" >"$work/log" 2>&1 || {
        cat "$work/log" >&2
        echo "make-clips.sh: could not make a clip: $*" >&2
        exit 1
    }
}

keep() {
    mv "$work/$1" "$dir/$1"
}

# raw FORMAT WIDTH HEIGHT FPS
raw() {
    echo "video/x-raw,format=$1,width=$2,height=$3,framerate=$4/1"
}

# One thread: every machine makes the same clip. No B-frames: the first picture is at 0.
h264="x264enc threads=1 bframes=0 speed-preset=veryfast"

launch videotestsrc num-buffers=50 pattern=ball ! "$(raw I420 320 240 25)" ! $h264 ! h264parse \
    ! mp4mux name=mux ! filesink location="$work/talking.mp4" \
    audiotestsrc num-buffers=86 samplesperbuffer=1024 freq=440 volume=0.1 \
    ! audio/x-raw,rate=44100,channels=1 ! audioconvert ! avenc_aac ! aacparse ! mux.
keep talking.mp4

launch videotestsrc num-buffers=60 pattern=ball ! "$(raw I420 320 240 30)" ! $h264 ! h264parse \
    ! mp4mux ! filesink location="$work/silent.mp4"
keep silent.mp4

launch videotestsrc num-buffers=25 pattern=ball ! "$(raw I420 320 240 25)" \
    ! avenc_mpeg4 max-bframes=2 gop-size=6 bitrate=400000 ! avimux ! filesink location="$work/bframes.avi"
keep bframes.avi

launch videotestsrc num-buffers=800 pattern=ball ! "$(raw I420 320 240 10)" \
    ! $h264 key-int-max=20 ! h264parse ! mp4mux ! filesink location="$work/long.mp4"
keep long.mp4

launch videotestsrc num-buffers=25 pattern=solid-color foreground-color=0xffff0000 \
    ! "$(raw I420 160 120 25)" ! compositor background=white ! "$(raw I420 320 240 25)" \
    ! $h264 quantizer=10 pass=quant ! h264parse ! mp4mux ! filesink location="$work/quads.mp4"
keep quads.mp4

launch videotestsrc num-buffers=5 ! "$(raw I420 53 41 10)" ! jpegenc ! avimux \
    ! filesink location="$work/odd.avi"
keep odd.avi

# One picture: the brightness in a row of eight bytes, then the two colours.
for brightness in A B C D E F G H I J; do
    printf '%s-------zzzzzzzz' $brightness
done > "$work/pixels"
launch filesrc location="$work/pixels" ! rawvideoparse format=i420 width=1 height=1 framerate=10/1 \
    ! matroskamux ! filesink location="$work/tiny.avi"
keep tiny.avi

for size in "320 240" "160 120"; do
    launch videotestsrc num-buffers=13 pattern=ball ! "$(raw I420 $size 25)" ! $h264 \
        ! video/x-h264,stream-format=byte-stream ! filesink location="$work/part"
    cat "$work/part" >>"$work/resized.mp4"
done
keep resized.mp4

# The index at the end stays; the pictures it points to, from behind the first headers, become
# zeros.
index=$(grep -abo moov "$dir/silent.mp4" | head -n 1 | cut -d : -f 1)
cp "$dir/silent.mp4" "$work/damaged.mp4"
dd if=/dev/zero of="$work/damaged.mp4" bs=1 seek=64 count=$((index - 70)) conv=notrunc 2>"$work/log"
keep damaged.mp4

echo "This is a text that only calls itself a video." >"$work/notvideo.mp4"
keep notvideo.mp4
for name in "名 mit Ümlaut.mp4" "a#b.mp4"; do
    cp "$dir/silent.mp4" "$work/$name"
    keep "$name"
done

rm -r "$work"
touch "$dir/.made"
