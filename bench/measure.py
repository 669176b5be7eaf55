"""Running a command and knowing what it cost; comparing commands in turn."""

import os
import statistics
import subprocess
import time
from contextlib import contextmanager
from dataclasses import dataclass, field


@dataclass
class Cost:
    """What one run of a command cost: seconds, seconds, bytes."""

    wall: float
    cpu: float
    peak_memory: int
    status: int
    output: bytes = b""


def run(arguments, environment=None, expect=0, output=None):
    """Runs a command to its end. `output` is a file object for standard output, or None to drop it."""
    full = dict(os.environ)
    full.update(environment or {})
    start = time.monotonic()
    with open(os.devnull, "wb") as null:
        child = subprocess.Popen(
            arguments, env=full, stdin=subprocess.DEVNULL, stdout=output or null, stderr=subprocess.PIPE
        )
        error = child.stderr.read()
        _, status, usage = os.wait4(child.pid, 0)
        child.returncode = os.waitstatus_to_exitcode(status)
    wall = time.monotonic() - start
    if expect is not None and child.returncode != expect:
        text = error.decode(errors="replace")
        raise SystemExit(f"bench: {' '.join(arguments)} ended with {child.returncode}: {text}")
    return Cost(wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024, child.returncode, error)


def drop_caches():
    os.sync()
    with open("/proc/sys/vm/drop_caches", "w") as file:
        file.write("3\n")


@contextmanager
def loop_device(path):
    """A read-only loop device of 2048-byte sectors over the file."""
    device = subprocess.check_output(
        ["losetup", "-f", "--show", "-r", "--sector-size", "2048", "--direct-io=on", path], text=True
    ).strip()
    try:
        yield device
    finally:
        subprocess.run(["losetup", "-d", device], check=True)


@contextmanager
def paced_drive(program, backing, mount_point, options):
    """A block device that answers as a drive of a given pace."""
    os.makedirs(mount_point, exist_ok=True)
    child = subprocess.Popen([program, backing, mount_point, *options])
    try:
        disc = os.path.join(mount_point, "disc")
        deadline = time.monotonic() + 10
        while not os.path.exists(disc):
            if time.monotonic() > deadline or child.poll() is not None:
                raise SystemExit("bench: the paced drive did not start (is /dev/fuse there?)")
            time.sleep(0.01)
        with loop_device(disc) as device:
            yield device
    finally:
        subprocess.run(["fusermount3", "-u", mount_point], check=False)
        child.wait()


def cached_bytes(path):
    text = subprocess.check_output(["fincore", "--bytes", "--noheadings", "--output", "RES", path], text=True)
    return int(text.split()[0])


def in_turn(rounds, **candidates):
    """Calls each candidate once a round, in turn; the results by name, one list each."""
    results = {name: [] for name in candidates}
    for number in range(rounds):
        names = list(candidates)
        if number % 2:
            names.reverse()
        for name in names:
            results[name].append(candidates[name]())
    return results


@dataclass
class Figure:
    """One measured ratio or amount beside its bar."""

    bar: int
    name: str
    values: list = field(default_factory=list)
    limit: float | None = 0.0  # None: no bar, told for comparison only
    unit: str = ""
    note: str = ""

    @property
    def median(self):
        return statistics.median(self.values)

    @property
    def spread(self):
        """Half the distance between the quartiles."""
        if len(self.values) < 3:
            return 0.0
        quartiles = statistics.quantiles(self.values, n=4)
        return (quartiles[2] - quartiles[0]) / 2

    @property
    def met(self):
        return self.limit is None or self.median <= self.limit

    @property
    def missed(self):
        return self.limit is not None and self.median - self.spread > self.limit

    def as_dict(self):
        return {
            "bar": self.bar, "name": self.name, "median": self.median, "spread": self.spread,
            "limit": self.limit, "unit": self.unit, "met": self.met, "values": self.values, "note": self.note,
        }


def ratios(results, ours, theirs, value):
    """Ours over theirs, round by round."""
    return [value(a) / value(b) for a, b in zip(results[ours], results[theirs])]
