"""What the cases share: their register, their checks, and the programs under test in the guest."""

import json
import shlex
import time
import traceback

from guest import CLI, TOOL_ROOT, GuestError

_CASES = []


class Failure(Exception):
    """What a case found wrong."""


def case(sentence, boots, each=None):
    """Registers a test case; `each` maps the discs to the list of which each makes one case."""

    def register(function):
        _CASES.append((sentence, boots.split(), each, function))
        return function

    return register


def expect(condition, what):
    if not condition:
        raise Failure(what)


def expect_equal(found, wanted, what):
    expect(found == wanted, f"{what}: wanted {wanted!r}, found {found!r}")


def run_all(bench, boot, only=""):
    """Runs the cases of a boot in the order of their registration; true when all are well."""
    failed = 0
    for sentence, boots, each, function in _CASES:
        if boot not in boots:
            continue
        variants = each(bench.discs) if each else [None]
        for variant in variants:
            name = sentence if variant is None else sentence.format(
                family=variant.raw_type.split("-")[0], what=variant.what)
            if only not in name:
                continue
            failed += not _run_one(bench, name, function, variant)
    print(f"{failed} of the cases FAILED" if failed else "all cases ok", flush=True)
    return failed == 0


def _run_one(bench, name, function, variant):
    started = time.monotonic()
    problem = None
    try:
        bench.tidy()
        if variant is None:
            function(bench)
        else:
            function(bench, variant)
    except (Failure, GuestError) as reason:
        problem = str(reason)
    except Exception:  # a fault of the case itself is a failed case, and the others still run
        problem = traceback.format_exc()
    print(f"{'FAILED' if problem else 'ok':6} {time.monotonic() - started:5.1f} s  {name}",
          flush=True)
    if problem:
        print("              " + problem.replace("\n", "\n              "), flush=True)
    return problem is None


class Rip:
    """How `spindrift-cli rip --json` ended and what it published on the way."""

    def __init__(self, result):
        self.status = result.status
        self.text = str(result)
        self.published = [json.loads(line) for line in result.out.splitlines() if line]
        self.errors = result.err

    def last(self, name):
        values = [one["value"] for one in self.published if one.get("property") == name]
        return values[-1] if values else None


class Bench:
    """A guest, the discs for its drive, and the programs under test."""

    def __init__(self, guest, discs):
        self.guest = guest
        self.discs = discs

    def tidy(self):
        """What every case starts from: no disc, nothing mounted, nothing left from the last one."""
        self.guest.run("kill -9 $(pidof spindrift-cli hdiutil shasum); umount /mnt;"
                       " rm -rf /root/*.iso; cd /var/tmp && rm -rf -- *;"
                       " echo -1 >/sys/class/block/sr0/events_poll_msecs")
        self.guest.remove()
        self.guest.close_tray()
        self.guest.run(": </dev/sr0")  # opening it makes the kernel, and so udev, take notice
        self.guest.settle()

    def has_udev(self):
        return self.guest.run("pidof systemd-udevd").status == 0

    def start_udev(self):
        self.guest.check(
            "mkdir -p /run/udev; /lib/systemd/systemd-udevd --daemon;"
            " udevadm trigger --action=add --type=subsystems;"
            " udevadm trigger --action=add --type=devices; udevadm settle")

    def start_polkit(self, rules):
        """polkit and the system bus that it needs, with these rules and no others."""
        self.guest.check("mkdir -p /run/dbus /etc/polkit-1/rules.d; dbus-daemon --system --fork;"
                         f" echo {shlex.quote(rules)} >/etc/polkit-1/rules.d/10-test.rules;"
                         " rm -f /run/polkitd.log;"
                         " (/usr/lib/polkit-1/polkitd >/run/polkitd.log 2>&1 &)")
        if not self.guest.wait_until("grep Acquired /run/polkitd.log", 20):
            raise GuestError("polkitd did not start: " + self.guest.run("cat /run/polkitd.log").out)

    def stop_polkit(self):
        self._stop("polkitd dbus-daemon")

    def start_udisks(self):
        self.guest.check("mkdir -p /run/dbus; pidof dbus-daemon || dbus-daemon --system --fork;"
                         " (/usr/libexec/udisks2/udisksd >/run/udisksd.log 2>&1 &)")
        if not self.guest.wait_until("udisksctl info -b /dev/sr0", 20):
            raise GuestError("udisksd did not start: " + self.guest.run("cat /run/udisksd.log").out)

    def stop_udisks(self):
        self._stop("udisksd dbus-daemon")

    def _stop(self, programs):
        self.guest.check(f"kill $(pidof {programs})")
        self.guest.wait_until(f"! pidof {programs}")
        self.guest.check("rm -f /run/dbus/*")

    def cli(self, arguments, timeout=60):
        return self.guest.run(f"{CLI} {arguments}", timeout)

    def tool(self, command, timeout=60):
        """Runs a disc tool, given as "usr/bin/drutil status"."""
        return self.guest.run(f"{TOOL_ROOT}/{command}", timeout)

    def status(self):
        result = self.cli("status --json")
        try:
            return json.loads(result.out)
        except ValueError:
            raise Failure(f"status --json: {result}") from None

    def rip_script(self, output, options=""):
        return f"{CLI} rip --json {options} --output {shlex.quote(output)}"

    def rip(self, output, options="", timeout=120):
        return Rip(self.guest.run(self.rip_script(output, options), timeout))

    def wait_for_image(self, job, size):
        """Waits until the temporary image of a rip is larger than `size` bytes; a failure when the
        rip ends before that."""
        large = f"find /var/tmp -name 'spindrift-*.cdr' -size +{size >> 10}k | grep ."
        self.guest.wait_until(f"{large} || {job.ended}", 30)
        expect(self.guest.run(large).status == 0, "the rip does not get under way: "
               + (str(job.wait()) if not job.running() else "no image"))

    def expect_same_bytes(self, path, image, size=None):
        """The file of the guest's disk holds the image's bytes, or its first `size` ones."""
        wanted_size = size or image.stat().st_size
        expect_equal(int(self.guest.check(f"stat -c %s {path}")), wanted_size,
                     f"the size of {path}")
        at = 0
        with self.guest.reading(path) as reader, open(image, "rb") as file:
            while piece := reader.stdout.read(4 << 20):
                expect(piece == file.read(min(len(piece), wanted_size - at)),
                       f"{path} differs from {image.name} after {at} bytes")
                at += len(piece)
        expect_equal(at, wanted_size, f"the bytes of {path} that could be compared")

    def expect_no_file(self, path):
        expect(self.guest.run(f"test -e {path}").status != 0, f"there is a file {path}")
