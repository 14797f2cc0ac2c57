#!/bin/sh
# make-clips.sh DIR: makes the clips that the tests play. The file .made comes last: without it, an
# interrupted run begins again.
set -eu

mkdir -p "${1:?usage: make-clips.sh DIR}"
cd "$1"
rm -f .made resized.mp4

# clip NAME ELEMENTS...: makes a clip. Shows the output of gst-launch only if it fails.
clip() {
    name=$1
    shift
    timeout 60 gst-launch-1.0 -q "$@" ! filesink location="$name" >log 2>&1 || {
        cat log >&2
        echo "make-clips.sh: could not make $name" >&2
        exit 1
    }
}

# raw FORMAT WIDTH HEIGHT FPS
raw() {
    echo "video/x-raw,format=$1,width=$2,height=$3,framerate=$4/1"
}

ball="videotestsrc pattern=ball num-buffers"
# With one thread, every machine makes the same clip. Without B-frames, the first picture is at 0.
h264="x264enc threads=1 bframes=0 speed-preset=veryfast"

# 2 s, 25 fps, with a 440 Hz tone.
clip talking.mp4 audiotestsrc num-buffers=86 samplesperbuffer=1024 freq=440 volume=0.1 \
    ! audio/x-raw,rate=44100,channels=1 ! audioconvert ! avenc_aac ! aacparse ! mux. \
    $ball=50 ! "$(raw I420 320 240 25)" ! $h264 ! h264parse ! mp4mux name=mux

# 2 s, 30 fps, under three names: one has blanks and is not ASCII, one has a # that no URI may have.
clip silent.mp4 $ball=60 ! "$(raw I420 320 240 30)" ! $h264 ! h264parse ! mp4mux
cp silent.mp4 "名 mit Ümlaut.mp4"
cp silent.mp4 "a#b.mp4"

# 1 s, 25 frames, but 23 decoded timestamps, because AVI has no presentation times.
clip bframes.avi $ball=25 ! "$(raw I420 320 240 25)" \
    ! avenc_mpeg4 max-bframes=2 gop-size=6 bitrate=400000 ! avimux

# 80 s, 10 fps, a key frame every 2 s.
clip long.mp4 $ball=800 ! "$(raw I420 320 240 10)" ! $h264 key-int-max=20 ! h264parse ! mp4mux

# 1 s, 25 fps, a still: red upper left, the rest white. In 4:2:2, which must be converted.
clip quads.mp4 videotestsrc num-buffers=25 pattern=solid-color foreground-color=0xffff0000 \
    ! "$(raw I420 160 120 25)" ! compositor background=white ! "$(raw Y42B 320 240 25)" \
    ! $h264 quantizer=10 pass=quant ! h264parse ! mp4mux

# bars NAME SIZE CAPS ENCODER...: half a second of SMPTE bars of 75 %; CAPS say how they are coded.
bars() {
    name=$1
    caps="video/x-raw,format=$3"
    size=$2
    shift 3
    clip "bars-$name" videotestsrc num-buffers=5 pattern=smpte75 ! "$(raw RGB $size 10)" \
        ! videoconvert ! "$caps" ! "$@"
}
# Bare H.264: mp4mux loses the full range.
bare="$h264 quantizer=4 pass=quant ! video/x-h264,stream-format=byte-stream"
for colours in 1:3 1:4 1:6 2:3 2:4 2:6; do
    bars $colours.mp4 "320 240" "I420,colorimetry=$colours:0:0" $bare
done
for format in Y444 I420_10LE; do
    bars $format.mp4 "320 240" "$format,colorimetry=bt709" $bare
done
bars interlaced.mp4 "320 240" "I420,colorimetry=bt709" interlace field-pattern=1:1 \
    ! $h264 quantizer=4 pass=quant interlaced=true
for format in I420 Y42B Y444; do
    bars jpeg-$format.avi "320 240" "$format,colorimetry=1:4:0:0" jpegenc quality=100 ! avimux
done
# MPEG-4 in AVI says nothing of its colours.
bars unmarked-sd.avi "320 576" "I420,colorimetry=bt601" avenc_mpeg4 bitrate=9000000 ! avimux
bars unmarked-hd.avi "320 720" "I420,colorimetry=bt709" avenc_mpeg4 bitrate=9000000 ! avimux

# 0.5 s, 10 fps. Width and height are odd. One frame more than the pool has.
clip odd.avi videotestsrc num-buffers=5 ! "$(raw I420 53 41 10)" ! jpegenc ! avimux

# 1 s, 10 fps, 3x3; the first pixel gets brighter from frame to frame. A frame is three rows of Y, then
# two of U and V each, with four bytes a row. In Matroska, which takes any size.
for first in A B C D E F G H I J; do
    printf '%sbc-def-ghi-----UX--ux--VY--vy--' $first
done >pixels
clip tiny.avi filesrc location=pixels \
    ! rawvideoparse format=i420 width=3 height=3 framerate=10/1 ! matroskamux

# 13 frames of 320x240, then 13 of 160x120, 25 fps, bare H.264.
for size in "320 240" "160 120"; do
    clip part $ball=13 ! "$(raw I420 $size 25)" ! $h264 ! video/x-h264,stream-format=byte-stream
    cat part >>resized.mp4
done

# Starts, then ends in an error: keeps its headers and its index, but all pictures are zeros.
index=$(grep -abo moov silent.mp4 | head -n 1 | cut -d : -f 1)
cp silent.mp4 damaged.mp4
dd if=/dev/zero of=damaged.mp4 bs=1 seek=64 count=$((index - 70)) conv=notrunc 2>log

echo "This is a text that only calls itself a video." >notvideo.mp4
touch .made
