#!/usr/bin/env bash
# make-recording.sh RECORDER SCENE SECONDS TONE FILE: records a drive with a tone of TONE hertz, as
# H.264 if FILE is an .mp4 and as MPEG-4 if it is an .avi. FILE appears when it is complete.
set -euo pipefail

recorder=$1 scene=$2 seconds=$3 tone=$4 file=$5
case $file in
*.mp4) video='x264enc speed-preset=superfast bitrate=4000 key-int-max=25 ! h264parse'
       sound='avenc_aac ! aacparse' mux=mp4mux ;;
*.avi) video='avenc_mpeg4 bitrate=6000000 gop-size=25'
       sound='lamemp3enc ! mpegaudioparse' mux=avimux ;;
*) echo "$0: $file is neither .mp4 nor .avi" >&2 && exit 1 ;;
esac

rate=44100
block=1024
mkdir -p "$(dirname "$file")"
"$recorder" "$scene" "$seconds" | gst-launch-1.0 -q \
    fdsrc ! rawvideoparse format=i420 width=1280 height=720 framerate=25/1 ! queue ! $video ! \
    queue ! $mux name=mux ! filesink location="$file.part" \
    audiotestsrc freq="$tone" volume=0.1 samplesperbuffer=$block \
    num-buffers=$((seconds * rate / block)) ! audio/x-raw,rate=$rate,channels=2 ! audioconvert ! \
    $sound ! queue ! mux.
mv "$file.part" "$file"
