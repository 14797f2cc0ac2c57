#!/bin/sh
# link-check.sh DIR LIBRARIES CC TOOLCHAIN: builds the program for the device in DIR, against the
# stand-ins that have the names of its closed libraries, and compares what it asks of them with what
# it may ask.
set -eu

dir=$1
libraries=$2
cc=$3
toolchain=$4
here=$(dirname "$(realpath "$0")")

cmake -S "$here/../.." -B "$dir/build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
    -DPLATFORM=device -DBUILD_TESTING=OFF -DQP_WERROR=ON \
    -DGSTFSL_LIBRARY="$libraries/libgstfsl.so" -DGLESV2_LIBRARY="$libraries/libGLESv2.so" \
    -DCOMMIF_LIBRARY="$libraries/libcommif.so"
cmake --build "$dir/build" --target quadplayer

"${cc%gcc}nm" -D --undefined-only "$dir/build/quadplayer" | awk '{print $2}' |
    grep -E '^(gst_buffer_.*phymem|KvrComm_|TlvPacket_|glTexDirect)' | LC_ALL=C sort > "$dir/asked"
diff - "$dir/asked" <<END
KvrComm_Exit
KvrComm_GetInnerErrorCode
KvrComm_Init
KvrComm_IsReady
KvrComm_SendMsg
TlvPacket_Init
TlvPacket_ReadBody
TlvPacket_ReadHead
TlvPacket_WriteBody_U4B
TlvPacket_WriteHead
glTexDirectInvalidateVIV
glTexDirectVIV
glTexDirectVIVMap
gst_buffer_is_phymem
gst_buffer_query_phymem_block
END
