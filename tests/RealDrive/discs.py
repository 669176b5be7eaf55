"""The disc images that go into the emulated drive, made once with the usual authoring tools."""

import dataclasses
import pathlib
import random
import shutil
import struct
import subprocess
import sys

import guest_files

SECTOR = 2048
# The emulated drive calls a medium with more sectors than this (80 minutes) a DVD.
LARGEST_CD = 80 * 60 * 75
DVD_SECTORS = LARGEST_CD + 4000


@dataclasses.dataclass
class Disc:
    path: pathlib.Path
    what: str  # for the test's sentence
    label: str | None  # as status shows it
    raw_type: str

    @property
    def size(self):
        return self.path.stat().st_size

    @property
    def sectors(self):
        return self.size // SECTOR

    def file_system_sectors(self):
        """The size that an ISO 9660 file system gives itself."""
        with open(self.path, "rb") as file:
            file.seek(16 * SECTOR + 80)
            return struct.unpack("<I", file.read(4))[0]


_KINDS = {
    "plain": ("an ISO 9660 file system", "PLAIN_DISC"),
    "joliet": ("Joliet names and blanks in its label", "Holiday Photos 2024"),
    "udf": ("a UDF file system", "Wedding film"),
    "hybrid": ("a partition table beside its file system", "HYBRID"),
    "bare": ("no file system at all", None),
}


class Discs:
    """All images, in `folder`; make() writes those that are missing."""

    def __init__(self, folder):
        self.folder = folder

    def cds(self):
        return [self.named("cd", kind) for kind in _KINDS]

    def dvds(self):
        return [self.named("dvd", kind) for kind in _KINDS]

    def named(self, size, kind):
        what, label = _KINDS[kind]
        return Disc(self.folder / f"{size}-{kind}.iso", what, label,
                    {"cd": "CD-ROM", "dvd": "DVD-ROM"}[size])

    def other_cd(self):
        """As large as the plain CD, with other bytes: what a swap puts in."""
        return Disc(self.folder / "cd-other.iso", "other files", "OTHER_DISC", "CD-ROM")

    def run_out_cd(self):
        """A CD whose last two sectors lie behind the end of its file system."""
        return Disc(self.folder / "cd-run-out.iso", "two run-out sectors", "TRACK_AT_ONCE",
                    "CD-ROM")

    def make(self):
        self.folder.mkdir(parents=True, exist_ok=True)
        cd, dvd = 16 << 20, DVD_SECTORS * SECTOR
        for size, length in [("cd", cd), ("dvd", dvd)]:
            _iso(self.named(size, "plain"), length, seed=1)
            _iso(self.named(size, "joliet"), length, seed=2)
            _udf(self.named(size, "udf"), length, seed=3)
            _iso(self.named(size, "hybrid"), length, seed=4, hybrid=True)
            _no_file_system(self.named(size, "bare"), length, seed=5)
        _iso(self.other_cd(), cd, seed=6)
        _iso(self.run_out_cd(), cd, seed=7)
        run_out = self.run_out_cd()
        with open(run_out.path, "r+b") as file:
            file.truncate((run_out.file_system_sectors() + 2) * SECTOR)


def _contents(length, seed):
    """A file's bytes: some that no other disc has, far apart, and nothing between them."""
    noise = random.Random(seed)
    offsets = range(0, length, max(length // 8, 1))
    pieces = {offset: noise.randbytes(256 << 10) for offset in offsets}

    def write(file, start=0):
        for offset, piece in pieces.items():
            file.seek(start + offset)
            file.write(piece[:length - offset])
        file.truncate(max(start + length, file.seek(0, 2)))

    return write


def _iso(disc, length, seed, hybrid=False):
    if disc.path.exists():
        return
    with _Workshop(disc) as work:
        files = work.folder / "files"
        (files / "letters").mkdir(parents=True)
        (files / "letters/Read me first.txt").write_text(f"This is disc {seed}.\n")
        with open(files / "film.bin", "wb") as file:
            _contents(length, seed)(file)
        extra = []
        if disc.label and " " in disc.label:
            extra += ["-J"]
        if hybrid:
            partition = work.folder / "partition"
            partition.write_bytes(random.Random(seed).randbytes(1 << 20))
            extra += ["-partition_offset", "16", "-append_partition", "2", "0xef", partition]
        work.run(["xorriso", "-as", "mkisofs", "-quiet", "-V", disc.label, "-r", *extra,
                  "-no-pad", "-o", work.image, files])
        work.run(["fallocate", "--dig-holes", work.image])


def _udf(disc, length, seed):
    if disc.path.exists():
        return
    with _Workshop(disc) as work:
        with open(work.image, "wb") as file:
            file.truncate(length)
        work.run([guest_files.which("mkudffs"), "--media-type=hd", "--blocksize=2048",
                  f"--label={disc.label}", work.image])
        # Free space, so that each disc has bytes of its own.
        with open(work.image, "r+b") as file:
            _contents(length // 2, seed)(file, start=length // 4)


def _no_file_system(disc, length, seed):
    if disc.path.exists():
        return
    with _Workshop(disc) as work, open(work.image, "wb") as file:
        _contents(length, seed)(file)


class _Workshop:
    """A folder beside the image; the finished image moves into place in one step."""

    def __init__(self, disc):
        self._disc = disc
        self.folder = disc.path.with_suffix(".making")
        self.image = self.folder / "image"

    def __enter__(self):
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder.mkdir()
        return self

    def __exit__(self, kind, *_):
        if kind is None:
            self.image.rename(self._disc.path)
        shutil.rmtree(self.folder)

    @staticmethod
    def run(command):
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        if done.returncode != 0:
            raise RuntimeError(f"{command[0]} failed: {done.stderr}")


if __name__ == "__main__":
    reason = guest_files.what_is_missing()
    if reason:
        print(f"discs: not made, because {reason}")
    else:
        Discs(pathlib.Path(sys.argv[1])).make()
