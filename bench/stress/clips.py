"""Clips for the stress programs: short good ones of seven codecs, and randomly damaged ones. Needs
ffmpeg."""
import random
import subprocess

CODECS = {
    "h264.mp4": ["-c:v", "libx264", "-c:a", "aac"],
    "h264.avi": ["-c:v", "libx264", "-bf", "0", "-c:a", "libmp3lame"],
    "mpeg4.mp4": ["-c:v", "mpeg4", "-an"],
    "mpeg4.avi": ["-c:v", "mpeg4", "-bf", "2", "-c:a", "libmp3lame"],
    "mjpeg.mp4": ["-c:v", "mjpeg", "-pix_fmt", "yuvj420p", "-an"],
    "mjpeg.avi": ["-c:v", "mjpeg", "-pix_fmt", "yuvj420p", "-c:a", "pcm_s16le"],
    "hevc.mp4": ["-c:v", "libx265", "-x265-params", "log-level=none", "-an"],
    "mpeg2.mp4": ["-c:v", "mpeg2video", "-c:a", "aac"],
    "vp8.avi": ["-c:v", "libvpx", "-an"],
    "msmpeg4.avi": ["-c:v", "msmpeg4", "-c:a", "libmp3lame"],
}


def make(file, picture, seconds, options=("-c:v", "libx264", "-c:a", "aac")):
    """A clip of one of ffmpeg's test pictures, with a tone unless the options exclude it."""
    subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-y", "-f", "lavfi", "-i",
                    f"{picture}:rate=25:duration={seconds}", "-f", "lavfi", "-i",
                    f"sine=duration={seconds}", "-pix_fmt", "yuv420p", *options, file], check=True)


def make_whole(folder):
    """One of each kind, as bytes."""
    for kind, options in CODECS.items():
        make(folder / kind, "testsrc2=size=160x120", 0.8, options)
    return {kind: (folder / kind).read_bytes() for kind in CODECS}


def flip_bits(data, chance):
    for _ in range(chance.randint(1, 40)):
        data[chance.randrange(len(data))] ^= 1 << chance.randrange(8)


def block(data, chance):
    start = chance.randrange(len(data))
    return start, min(len(data), start + chance.randint(1, 4000))


def cut_out(data, chance):
    start, end = block(data, chance)
    del data[start:chance.choice((end, len(data)))]


def insert(data, chance):
    start, end = block(data, chance)
    data[start:start] = chance.randbytes(end - start)


def zero(data, chance):
    start, end = block(data, chance)
    data[start:end] = bytes(end - start)


def double(data, chance):
    start, end = block(data, chance)
    data[start:start] = data[start:end]


def break_length(data, chance):
    """Changes the size of a box or of a chunk: the 32 bits before or after its name."""
    names = (b"moov", b"trak", b"mdat", b"stsz", b"stco", b"stts", b"stsd", b"avcC", b"ftyp",
             b"RIFF", b"LIST", b"avih", b"strh", b"strf", b"idx1", b"00dc", b"01wb")
    places = [at for name in names if (at := data.find(name)) >= 4]
    if places:
        at = chance.choice(places) + chance.choice((-4, 4))
        value = chance.choice((0, 1, 7, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, chance.getrandbits(32)))
        data[at:at + 4] = value.to_bytes(4, chance.choice(("little", "big")))


def damaged(name, whole):
    """The clip of that name, the same in every run."""
    chance = random.Random(name)
    data = bytearray(whole)
    for _ in range(chance.randint(1, 3)):
        how = chance.choice((flip_bits, cut_out, insert, zero, double, break_length))
        if len(data) > 200:
            how(data, chance)
    return data
