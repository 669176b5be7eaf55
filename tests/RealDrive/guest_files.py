"""What the guest consists of: an initial RAM disk with drivers and a root disk with programs."""

import lzma
import os
import pathlib
import re
import shutil
import stat
import subprocess

HERE = pathlib.Path(__file__).resolve().parent
BUSYBOX = pathlib.Path("/usr/bin/busybox")
DRIVERS = ["virtio_pci", "virtio_blk", "virtio_console", "virtio_scsi", "sr_mod", "sg", "ata_piix",
           "isofs", "udf", "loop"]
INSTALLED_IN = "opt/spindrift"

# From the machine that runs the tests; what ldd names for them comes along.
MACHINE_PROGRAMS = ["/usr/bin/setpriv", "/usr/bin/timeout", "/usr/bin/env", "/usr/bin/pkill",
                    "/usr/bin/dbus-daemon", "/usr/sbin/usermod", "/usr/bin/gpasswd"]
# Opened by the programs while they run, so that ldd does not know them.
MACHINE_LIBRARIES = ["libudev.so.1", "libblkid.so.1", "libsystemd.so.0", "libcrypto.so.3",
                     "security/pam_permit.so"]
MACHINE_DATA = ["/usr/lib/locale/C.utf8", "/usr/share/dbus-1/system.conf", "/etc/login.defs"]
# From the packages that fetch-guest unpacks.
FETCHED = ["bin/udevadm", "lib/systemd/systemd-udevd", "lib/udev", "usr/bin/eject",
           "usr/bin/udisksctl", "usr/libexec/udisks2", "etc/udisks2", "usr/share/dbus-1",
           "usr/bin/pkexec", "usr/lib/polkit-1", "usr/share/polkit-1",
           "usr/lib/udev", "usr/lib/x86_64-linux-gnu"]

USERS = """root:x:0:0::/root:/bin/sh
messagebus:x:100:100::/nonexistent:/usr/sbin/nologin
polkitd:x:101:101::/nonexistent:/usr/sbin/nologin
visitor:x:1000:1000::/home/visitor:/bin/sh
"""
GROUPS = ["root:0", "tty:5", "disk:6", "lp:7", "kmem:15", "dialout:20", "cdrom:24", "floppy:25",
          "tape:26", "audio:29", "video:44", "input:101", "sgx:102", "kvm:103", "render:104",
          "plugdev:46", "messagebus:100", "polkitd:101",
          "visitor:1000"]


def fetched_root():
    """The folder that fetch-guest fills."""
    printed = subprocess.run([HERE / "fetch-guest", "--print"], check=True, text=True,
                             capture_output=True)
    return pathlib.Path(printed.stdout.strip()) / "root"


def what_is_missing():
    """The reason why no guest can run on this machine; absent when one can."""
    for program in ["qemu-system-x86_64", "mke2fs", "debugfs", "xorriso", "mkudffs", "ldd",
                    "setpriv"]:
        if not which(program):
            return f"{program} is not installed (scripts/bootstrap installs it)"
    if not BUSYBOX.exists():
        return "busybox is not installed (scripts/bootstrap installs it)"
    root = fetched_root()
    if not (root.parent / "contents").exists():
        return f"there is no guest kernel in {root} (tests/RealDrive/fetch-guest downloads it)"
    return None


def which(program):
    return shutil.which(program, path=os.environ.get("PATH", "") + ":/usr/sbin:/sbin")


def kernel():
    return next(fetched_root().glob("boot/vmlinuz-*"))


def write_initial_ram_disk(path):
    """Busybox, the drivers in the order in which they load, and the program that loads them."""
    modules = next(fetched_root().glob("lib/modules/*"))
    order = _load_order(modules)
    with open(path, "wb") as file:
        archive = _Archive(file)
        for folder in ["bin", "dev", "root", "modules"]:
            archive.add(folder, stat.S_IFDIR | 0o755)
        # The kernel's own console: without it the first program's words are lost.
        archive.add("dev/console", stat.S_IFCHR | 0o600, device=(5, 1))
        archive.add("bin/busybox", stat.S_IFREG | 0o755, BUSYBOX.read_bytes())
        archive.add("init", stat.S_IFREG | 0o755, (HERE / "guest/boot").read_bytes())
        for module in order:
            archive.add(f"modules/{_driver(module)}", stat.S_IFREG | 0o644, _unpacked(module))
        names = "".join(f"{_driver(module)}\n" for module in order)
        archive.add("modules/order", stat.S_IFREG | 0o644, names.encode())
        archive.end()


def write_root_disk(path, build, size):
    """An ext4 disk of `size` bytes (sparse) with the programs of the tree `build` and what they
    and the guest's services need."""
    staging = path.with_suffix(".d")
    _Root(staging).fill(build)
    # No journal: after a sync in the guest all is in its place, and the host can read files.
    subprocess.run([which("mke2fs"), "-q", "-t", "ext4", "-O", "^has_journal", "-E",
                    "root_owner=0:0,lazy_itable_init=1", "-d", staging, path, f"{size // 1024}k"],
                   check=True, capture_output=True)
    shutil.rmtree(staging)


def _load_order(modules):
    needs, by_name = {}, {}
    for line in (modules / "modules.dep").read_text().splitlines():
        file, others = line.split(":", 1)
        needs[file] = others.split()
        by_name[_driver(file)] = file
    built_in = {_driver(file) for file in (modules / "modules.builtin").read_text().splitlines()}
    order = []

    def visit(file):
        for other in needs[file]:
            visit(other)
        if file not in order:
            order.append(file)

    for driver in DRIVERS:
        if driver not in built_in:
            visit(by_name[driver])
    return [modules / file for file in order]


def _driver(module):
    """The driver in a file such as kernel/fs/udf/udf.ko.xz."""
    return pathlib.Path(module).name.split(".")[0]


def _unpacked(module):
    data = module.read_bytes()
    return lzma.decompress(data) if module.suffix == ".xz" else data


class _Archive:
    """A writer of the cpio format that the kernel unpacks; everything belongs to root."""

    def __init__(self, file):
        self._file = file
        self._number = 0

    def add(self, name, mode, data=b"", device=(0, 0)):
        self._number += 1
        fields = [self._number, mode, 0, 0, 1, 0, len(data), 0, 0, *device, len(name) + 1, 0]
        self._pad(b"070701" + b"".join(b"%08X" % field for field in fields) + name.encode() + b"\0")
        self._pad(data)

    def end(self):
        self.add("TRAILER!!!", 0)

    def _pad(self, data):
        self._file.write(data + b"\0" * (-len(data) % 4))


class _Root:
    """The staged tree of the root disk."""

    def __init__(self, folder):
        self._folder = folder
        self._fetched = fetched_root()
        self._libraries = ":".join(str(self._fetched / part) for part in
                                   ["usr/lib/x86_64-linux-gnu", "lib/x86_64-linux-gnu",
                                    "usr/lib/x86_64-linux-gnu/systemd"])

    def fill(self, build):
        for folder in ["usr/bin", "usr/sbin", "usr/lib", "usr/lib64", "etc/udev", "root", "proc",
                       "sys", "dev", "run", "tmp", "var/tmp", "var/lib/udisks2", "mnt",
                       "home/visitor", INSTALLED_IN]:
            (self._folder / folder).mkdir(parents=True)
        for name in ["bin", "sbin", "lib", "lib64"]:
            (self._folder / name).symlink_to("usr/" + name)
        (self._folder / "var/run").symlink_to("/run")
        for file in MACHINE_PROGRAMS + MACHINE_DATA:
            if pathlib.Path(file).exists():
                self._take(pathlib.Path(file), file)
        for name in MACHINE_LIBRARIES:
            for file in pathlib.Path("/lib").glob(f"*/{name}"):
                self._take(file, file)
        for name in FETCHED:
            if os.path.lexists(self._fetched / name):
                self._take(self._fetched / name, name)
        for part in ["bin/spindrift-cli", "libexec"]:
            if (build / part).exists():
                self._take(build / part, f"{INSTALLED_IN}/{part}")
        self._settings()
        self._polkit(build)
        self._busybox()
        self._take_libraries()

    def _take(self, source, name):
        target = self._place(name)
        target.parent.mkdir(parents=True, exist_ok=True)
        if source.is_dir():
            shutil.copytree(source, target, symlinks=True, dirs_exist_ok=True)
        elif source.is_symlink() and not source.exists():
            target.symlink_to(os.readlink(source))
        elif not target.exists():
            shutil.copy2(source, target)

    def _place(self, name):
        """Where the absolute name goes: /bin and its like are links into /usr in the guest."""
        name = re.sub(r"^(bin|sbin|lib|lib64)/", r"usr/\1/", str(name).lstrip("/"))
        return self._folder / name

    def _busybox(self):
        self._take(BUSYBOX, "/usr/bin/busybox")
        applets = subprocess.run([BUSYBOX, "--list"], check=True, text=True, capture_output=True)
        for applet in applets.stdout.split():
            link = self._folder / "usr/bin" / applet
            elsewhere = self._folder / "usr/sbin" / applet
            if not link.exists() and not link.is_symlink() and not elsewhere.exists():
                link.symlink_to("busybox")

    def _settings(self):
        self._take(HERE / "guest/agent", "/agent")
        etc = self._folder / "etc"
        (etc / "passwd").write_text(USERS)
        (etc / "group").write_text("".join(f"{group.replace(':', ':x:')}:\n" for group in GROUPS))
        (etc / "nsswitch.conf").write_text("passwd: files\ngroup: files\nshadow: files\n")
        (etc / "shadow").write_text("root:*:1::::::\nvisitor:*:1::::::\n")
        (etc / "gshadow").write_text("")
        (etc / "machine-id").write_text("0123456789abcdef0123456789abcdef\n")
        (etc / "fstab").write_text("")
        (etc / "mtab").symlink_to("../proc/self/mounts")

    def _polkit(self, build):
        """The program's own action, which names the place of its helper."""
        for policy in (build / "share/polkit-1/actions").glob("*.policy"):
            helper = f">/{INSTALLED_IN}/libexec/spindrift/"
            moved = re.sub(r">/[^<]*/spindrift/(?=grant-disc-access<)", helper, policy.read_text())
            (self._folder / "usr/share/polkit-1/actions" / policy.name).write_text(moved)
        for service in ["polkit-1", "other"]:
            file = self._place(f"/etc/pam.d/{service}")
            file.parent.mkdir(exist_ok=True)
            file.write_text("".join(f"{kind} required pam_permit.so\n" for kind in
                                    ["auth", "account", "password", "session"]))

    def _take_libraries(self):
        programs = [path for path in self._folder.rglob("*")
                    if path.is_file() and not path.is_symlink() and _is_dynamic(path)]
        listed = subprocess.run(
            ["ldd", *programs], text=True, capture_output=True,
            env={**os.environ, "LC_ALL": "C", "LD_LIBRARY_PATH": self._libraries})
        lost = sorted(set(re.findall(r"(\S+) => not found", listed.stdout)))
        if lost:
            raise RuntimeError(f"the guest lacks the libraries {', '.join(lost)}")
        for file in sorted(set(re.findall(r"(?:=> |^\t)(/\S+) \(0x", listed.stdout, re.M))):
            inside = file.removeprefix(str(self._fetched))
            self._take(pathlib.Path(file), inside)


def _is_dynamic(path):
    with open(path, "rb") as file:
        head = file.read(4096)
    return head.startswith(b"\x7fELF") and (b"ld-linux" in head or b".so" in path.name.encode())
