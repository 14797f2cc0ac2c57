#!/bin/bash
# make-seeds.sh DIR: with each encoder that is installed, a clip of four small pictures or a short
# tone, bare and in each usual container; and one of each other container. Skips what
# cannot be linked.
set -u
mkdir -p "${1:?usage: make-seeds.sh DIR}"
cd "$1" || exit # some muxers write beside their output

# names KIND: the elements of that kind, without libav's containers, which no program chooses.
names() {
    gst-inspect-1.0 --types="$1" 2>/dev/null | sed -n '/ avmux/d; s/^[^:]*: *\([^:]*\):.*/\1/p'
}

# clip NAME ELEMENTS...: large clips would only slow the fuzzer down.
clip() {
    timeout 5 gst-launch-1.0 -q ${@:2} ! filesink location="$1.part" >log 2>&1
    [ -s "$1.part" ] && [ "$(stat -c %s "$1.part")" -lt 60000 ] && mv "$1.part" "$1.clip"
}

picture="videotestsrc num-buffers=4 ! video/x-raw,width=64,height=48,framerate=25/1 ! videoconvert"
tone="audiotestsrc num-buffers=6 samplesperbuffer=1024 ! audioconvert ! audioresample"

# each_container NAME SOURCE
each_container() {
    clip "$1" "$2 ! $1"
    for muxer in avimux mp4mux matroskamux; do
        clip "$1-$muxer" "$2 ! $1 ! $muxer"
    done
}

for encoder in $(names Video/Encoder); do
    each_container "$encoder" "$picture"
done
for encoder in $(names Audio/Encoder); do
    each_container "$encoder" "$tone"
done
for muxer in $(names Muxer); do
    clip "both-$muxer" "$tone ! avenc_mp2 ! queue ! mux. $picture ! avenc_mpeg4 ! $muxer name=mux"
done
find . -type f ! -name '*.clip' -delete
