"""Makes what a board in the emulator boots from, below build/board: the player's package, and the
kernel, initrd and disk of a Debian system, which are made once for each list of packages.

The system's packages are unpacked but not configured, so nothing is emulated to make it. The steps of
their scripts that the board needs are done here. The board's second disk is an archive: at the first
boot the board unpacks it and installs the package from its folder /board."""
import hashlib
import inspect
import os
import re
import shutil
import subprocess
from pathlib import Path

TOP = Path(__file__).resolve().parents[1]
BUILD = TOP / "build/board"

KERNELS = {"amd64": "linux-image-amd64", "armhf": "linux-image-armmp-lpae", "arm64": "linux-image-arm64"}
PACKAGES = """base-files base-passwd bash busybox-static coreutils dash dbus diffutils dpkg findutils
    grep gzip init-system-helpers kmod libc-bin login mount passwd perl-base procps sed systemd-sysv
    tar udev util-linux fonts-wqy-zenhei libegl1 libgl1-mesa-dri libgles2""".split()
PACKAGES += ["gstreamer1.0-libav", "libyuv0"]  # for the stand-ins of the device's libraries
BOOT_MODULES = ["virtio_pci", "virtio_blk", "ext4"]  # the kernel needs them to mount its disk
MODULES = BOOT_MODULES + """virtio_gpu virtio_input virtio_console xhci_pci usbhid hid_generic usb_storage
    sd_mod evdev autofs4""".split()
LIBRARIES = "usr/lib/arm-linux-gnueabihf"
GROUPS = {"group": "input:*:101:\nrender:*:102:\n"}  # udev's package script makes them
MASKED = """dev-hugepages.mount dev-mqueue.mount kmod-static-nodes.service modprobe@configfs.service
    modprobe@dm_mod.service modprobe@efi_pstore.service modprobe@fuse.service modprobe@loop.service
    sys-kernel-debug.mount sys-kernel-tracing.mount""".split()  # the player needs none of them

# The first process mounts the disk, unpacks the archive at the first boot, and starts the system.
INIT = """#!/bin/busybox sh
alias b=/bin/busybox
b mount -t devtmpfs dev /dev
for module in {modules}; do b insmod /$module; done
b mount -t ext4 /dev/vda /root
b mount --move /dev /root/dev
b mount -t proc proc /root/proc
[ -e /root/board/installed ] || b chroot /root /bin/sh -ec '
    tar -x --no-same-owner -f /dev/vdb -C /
    dpkg -i /board/*.deb > /board/log 2>&1 || {{ tail /board/log; exit 1; }}
    systemctl --quiet enable quadplayer
    touch /board/installed' || b poweroff -f
b umount /root/proc
exec /bin/busybox switch_root /root /sbin/init
"""

# The checks have a root shell on a console of their own.
SHELL = """[Service]
ExecStart=/bin/bash --norc
Environment=PS1= PS2= HOME=/root TERM=dumb SYSTEMD_COLORS=0
StandardInput=tty
StandardOutput=tty
TTYPath=/dev/hvc0
Restart=always
"""


def run(*command, **options):
    """What the command prints."""
    return subprocess.run([str(c) for c in command], check=True, stdout=subprocess.PIPE, text=True,
                          **options).stdout


def digest(text):
    return hashlib.sha256(text.encode()).hexdigest()[:12]


def build_package(arch, platform="open", *arguments):
    """The package of the working tree. Builds it again only if files that it is made of have changed."""
    commit = run("git", "stash", "create", cwd=TOP).strip() or "HEAD"
    tree = re.sub(r".*\t(tests|bench|fuzz|\.ci|HACKING\.md)\n", "", run("git", "ls-tree", commit, cwd=TOP))
    out = BUILD / arch / f"package-{platform}" / digest(tree)
    name = "quadplayer-device" if platform == "device" else "quadplayer"
    if not list(out.glob(name + "_*.deb")):
        shutil.rmtree(out.parent, ignore_errors=True)
        out.mkdir(parents=True)
        if arch in ("armhf", "arm64"):
            run(TOP / "debian/build-arm", arch, platform, out, *arguments,
                env={**os.environ, "QP_COMMIT": commit})
        else:
            run("sh", "-c", f"git archive --prefix=source/ {commit} | tar -x -C {out}", cwd=TOP)
            run("dpkg-buildpackage", "-b", "-us", "-uc", "-Pnocheck", cwd=out / "source")
            shutil.rmtree(out / "source")
    return next(out.glob(name + "_*.deb"))


def build_stand_ins():
    """A folder with the stand-ins at the paths of the device's own libraries and decoder."""
    run(TOP / "tools/make-sysroot.sh")
    run("cmake", "--preset", "arm", cwd=TOP)
    run("cmake", "--build", "--preset", "arm", "--target", "vendor", cwd=TOP)
    root = BUILD / "device"
    shutil.rmtree(root, ignore_errors=True)
    plugins = root / LIBRARIES / "gstreamer-1.0"
    plugins.mkdir(parents=True)
    for file in (TOP / "build/arm/vendor").glob("*.so"):
        shutil.copy(file, plugins if "decoder" in file.name else plugins.parent)
    return root


def build_for_device(root):
    names = {"GSTFSL": "gstfsl", "GLESV2": "GLESv2", "COMMIF": "commif"}
    return build_package("armhf", "device", *(f"-D{variable}_LIBRARY={root / LIBRARIES}/lib{name}.so"
                                              for variable, name in names.items()))


def build_open_decoder(arch):
    """A folder with the decoder that delivers DMABUFs. No program uses it unless it is told where it is."""
    tree = BUILD / arch / "open-decoder"
    cross = []
    if arch in ("armhf", "arm64"):
        run(TOP / "tools/make-sysroot.sh", arch)
        cross = [f"-DCMAKE_TOOLCHAIN_FILE={TOP}/cmake/cross.cmake", f"-DQP_ARCH={arch}"]
    run("cmake", "-G", "Ninja", "-S", TOP, "-B", tree / "build", *cross)
    run("cmake", "--build", tree / "build", "--target", "dmabuf_decoder")
    plugins = tree / "files/board/plugins"
    plugins.mkdir(parents=True, exist_ok=True)
    shutil.copy(tree / "build/tests/vendor/libgstquadplayerdecoder.so", plugins)
    return tree / "files"


def make_system(arch, deb):
    """A folder with kernel, initrd and disk; the disk has the packages that `deb` depends on."""
    depends = re.sub(r"\([^)]*\)|\|[^,]*|\s", "", run("dpkg-deb", "-f", deb, "Depends")).split(",")
    packages = sorted({KERNELS[arch], *PACKAGES, *depends})
    recipe = repr([packages, MODULES, GROUPS, MASKED, INIT, SHELL]) + "".join(
        inspect.getsource(step) for step in (unpack, configure, make_disks))
    system = BUILD / arch / ("system-" + digest(recipe))
    if not system.exists():
        for old in (BUILD / arch).glob("system-*"):
            shutil.rmtree(old)
        half = BUILD / arch / "system-half"
        half.mkdir(parents=True)
        unpack(arch, packages, half / "tree")
        configure(half / "tree")
        make_disks(half / "tree", half)
        shutil.rmtree(half / "tree")
        half.rename(system)
    return system


def unpack(arch, packages, tree):
    release = re.search("^VERSION_CODENAME=(.*)", Path("/etc/os-release").read_text(), re.M)[1]
    run("mmdebstrap", "--quiet", "--variant=extract", "--architectures=" + arch,
        "--components=main", "--hook-dir=/usr/share/mmdebstrap/hooks/merged-usr",
        "--skip=cleanup/apt/cache", "--include=" + ",".join(packages), release, tree,
        run(TOP / "tools/mirror.sh").strip())
    archives = tree / "var/cache/apt/archives"
    with open(tree / "var/lib/dpkg/status", "a") as status:  # otherwise dpkg refuses to install the player
        for deb in archives.glob("*.deb"):
            status.write("Status: install ok installed\n" + run("dpkg-deb", "-f", deb) + "\n")
    for folder in (archives, *(tree / "usr/share" / name for name in ("doc", "locale", "man"))):
        shutil.rmtree(folder)


def configure(tree):
    for name in ("passwd", "group"):
        text = (tree / "usr/share/base-passwd" / (name + ".master")).read_text()
        (tree / "etc" / name).write_text(text.replace("root:*:", "root::") + GROUPS.get(name, ""))
    (tree / "etc/hostname").write_text("board\n")
    (tree / "etc/machine-id").write_text("b" * 32 + "\n")
    run("systemd-sysusers", "--root", tree)
    for name in ("etc", "var"):  # systemd would redo its first-boot set-up
        (tree / name / ".updated").touch()
    (tree / "etc/systemd/journald.conf").write_text("[Journal]\nRateLimitBurst=100\n")
    units = tree / "etc/systemd/system"
    (units / "board-shell.service").write_text(SHELL)
    for link, target in (("getty.target.wants/getty@tty1.service", "/lib/systemd/system/getty@.service"),
                         ("sysinit.target.wants/board-shell.service", "../board-shell.service")):
        (units / link).parent.mkdir()
        (units / link).symlink_to(target)
    for unit in MASKED:
        (units / unit).symlink_to("/dev/null")
    for library in tree.glob("usr/lib/*/[bl]*a*/lib[bl]*.so.3"):  # update-alternatives would link BLAS and LAPACK
        (library.parents[1] / library.name).symlink_to(f"{library.parent.name}/{library.name}")


def make_disks(tree, out):
    version = next((tree / "usr/lib/modules").iterdir()).name
    shutil.copy(next((tree / "boot").glob("vmlinuz-*")), out / "kernel")
    run("/sbin/depmod", "-b", tree, version)

    def needed(names):
        lines = run("/sbin/modprobe", "-d", tree, "-S", version, "-a", "--show-depends", *names)
        return list(dict.fromkeys(re.findall(r"^insmod \S*/(lib/modules/\S*\.ko)", lines, re.M)))

    keep = needed(MODULES)
    for module in (tree / "lib/modules").rglob("*.ko"):
        if str(module.relative_to(tree)) not in keep:
            module.unlink()
    run("/sbin/depmod", "-b", tree, version)

    first = out / "first"
    for path in ("bin/busybox", *needed(BOOT_MODULES)):
        (first / path).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(tree / path, first / path)
    for name in ("dev", "root"):
        (first / name).mkdir()
    (first / "init").write_text(INIT.format(modules=" ".join(needed(BOOT_MODULES))))
    (first / "init").chmod(0o755)
    run("sh", "-c", "find . | cpio --quiet -o -H newc -R 0:0 > ../initrd", cwd=first)
    shutil.rmtree(first)
    run("/sbin/mke2fs", "-q", "-t", "ext4", "-d", tree, out / "disk", "2G")


def make(arch, wanted=None):
    """The package, the folder of the system, and folders whose files the board's disk needs too.
    `wanted` is a package, or "device": the one for the device, with stand-ins of its libraries. Without
    it the package of the working tree is built."""
    if wanted == "device":
        more = build_stand_ins()
        package = build_for_device(more)
    else:
        more = build_open_decoder(arch)
        package = wanted or build_package(arch)
    return package, make_system(arch, package), [more]
