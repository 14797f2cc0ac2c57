#!/usr/bin/python3
"""make-board.py ARCHITECTURE [PACKAGE | device]: makes what a board in the emulator boots from, below
build/board, and prints where: the player's package (of the working tree, unless PACKAGE is named),
and the folder with kernel, initrd and disk of a Debian system, made once for each list of packages.
`device` is the package of the working tree for the device; the folder with the stand-ins of the
device's own libraries, as they lie on its disk, is printed too.
The board installs the package itself when it first boots: from /board of an archive that is its
second disk, and whose other files it takes too.

The system's packages are unpacked and not configured; what their scripts would do and the board needs
is done here. So nothing has to be emulated to make it, whatever its architecture."""
import hashlib
import inspect
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

TOP = Path(__file__).resolve().parents[1]
BUILD = TOP / "build/board"

KERNELS = {"amd64": "linux-image-amd64", "armhf": "linux-image-armmp-lpae"}
PACKAGES = """base-files base-passwd bash busybox-static coreutils dash dbus diffutils dpkg findutils
    grep gzip init-system-helpers kmod libc-bin login mount passwd perl-base procps sed systemd-sysv
    tar udev util-linux fonts-wqy-zenhei libegl1 libgl1-mesa-dri libgles2""".split()
PACKAGES += ["gstreamer1.0-libav", "libyuv0"]  # what the stand-ins of a device's libraries need
BOOT_MODULES = ["virtio_pci", "virtio_blk", "ext4"]  # between the kernel and its disk
MODULES = BOOT_MODULES + """virtio_gpu virtio_input virtio_console xhci_pci usbhid hid_generic evdev
    autofs4""".split()
LIBRARIES = "usr/lib/arm-linux-gnueabihf"
GROUPS = {"group": "input:*:101:\nrender:*:102:\n"}  # those that udev's script makes
MASKED = """dev-hugepages.mount dev-mqueue.mount kmod-static-nodes.service modprobe@configfs.service
    modprobe@dm_mod.service modprobe@efi_pstore.service modprobe@fuse.service modprobe@loop.service
    sys-kernel-debug.mount sys-kernel-tracing.mount""".split()  # the player can do without

# The first process: mounts the disk, lets the board take the archive in once, starts the system.
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

# A root shell for the checks, on a console of its own.
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
    """The package of the working tree, built again only where it has changed outside of tests/."""
    commit = run("git", "stash", "create", cwd=TOP).strip() or "HEAD"
    tree = re.sub(r".*\t(tests|bench|fuzz|\.ci|HACKING\.md)\n", "", run("git", "ls-tree", commit, cwd=TOP))
    out = BUILD / arch / f"package-{platform}" / digest(tree)
    name = "quadplayer-device" if platform == "device" else "quadplayer"
    if not list(out.glob(name + "_*.deb")):
        shutil.rmtree(out.parent, ignore_errors=True)
        out.mkdir(parents=True)
        if arch == "armhf":
            run(TOP / "debian/build-armhf", platform, out, *arguments,
                env={**os.environ, "QP_COMMIT": commit})
        else:
            run("sh", "-c", f"git archive --prefix=source/ {commit} | tar -x -C {out}", cwd=TOP)
            run("dpkg-buildpackage", "-b", "-us", "-uc", "-Pnocheck", cwd=out / "source")
            shutil.rmtree(out / "source")
    return next(out.glob(name + "_*.deb"))


def build_stand_ins():
    """A folder with the stand-ins where the device has its own libraries and its decoder."""
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


def make_system(arch, deb):
    """A folder with kernel, initrd and disk, the package's dependencies included."""
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
    with open(tree / "var/lib/dpkg/status", "a") as status:  # or the package could not be installed
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
    for name in ("etc", "var"):  # what is made anew at the first start stays as it is
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
    for library in tree.glob("usr/lib/*/[bl]*a*/lib[bl]*.so.3"):  # BLAS and LAPACK have alternatives
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


def main(arch, wanted=None):
    extra = [build_stand_ins()] if wanted == "device" else []
    if extra:
        package = build_for_device(*extra)
    else:
        package = wanted or build_package(arch)
    print(package, make_system(arch, package), *extra, sep="\n")


if __name__ == "__main__":
    main(*sys.argv[1:])
