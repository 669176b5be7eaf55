"""Imaging, digests and polls against what a user would otherwise run."""

import json
import os
import shutil
import statistics
import subprocess
import tempfile
from dataclasses import dataclass

import measure
from measure import Figure, in_turn, ratios, run

MIB = 1 << 20
GIB = 1 << 30

# OpenSSL then works as on a CPU that has none; the system's shasum and sha256sum use none anyway.
WITHOUT_SHA_INSTRUCTIONS = {"OPENSSL_ia32cap": ":~0x20000000"}


@dataclass
class Setting:
    build: str
    folder: str
    full: bool
    machine: dict

    @property
    def rounds(self):
        return 7 if self.full else 5

    @property
    def size(self):
        """Bytes of the image of the comparisons that have no size of their own."""
        return GIB if self.full else 256 * MIB

    @property
    def seconds(self):
        """How long a share of a core is measured."""
        return 10 if self.full else 2

    def path(self, name):
        return os.path.join(self.folder, name)

    def tool(self, fixed):
        return os.path.join(self.build, "libexec/spindrift") + fixed

    def program(self, name):
        return os.path.join(self.build, "bin", name)

    def hdiutil(self, device, output):
        return [self.tool("/usr/bin/hdiutil"), "create", "-srcdevice", device, "-format", "UDTO", "-o", output]

    def image(self, name, size):
        """A file of bytes that do not repeat, made once."""
        path = self.path(name)
        if not os.path.exists(path):
            seed = subprocess.Popen(
                ["openssl", "enc", "-aes-128-ctr", "-nosalt", "-K", "0" * 32, "-iv", "0" * 32, "-in", "/dev/zero"],
                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
            with open(path, "wb") as file:
                subprocess.run(["head", "-c", str(size)], stdin=seed.stdout, stdout=file, check=True)
            seed.kill()
            seed.stdout.close()
            seed.wait()
        return path

    def practice_drive(self, name, image):
        folder = self.path(name)
        os.makedirs(folder, exist_ok=True)
        link = os.path.join(folder, "disc.iso")
        if not os.path.lexists(link):
            os.symlink(image, link)
        return {"SPINDRIFT_PRACTICE_DRIVE": folder}

    def restore_disc(self, image):
        """Puts the disc of the window's practice drive back into the tray after an eject."""
        self.practice_drive("window-" + os.path.basename(image), image)


def remove(path):
    if os.path.exists(path):
        os.unlink(path)


def image(setting):
    """Bar 1: a cold image to disk with a final sync, against dd."""
    source = setting.image("source.img", setting.size)
    with measure.loop_device(source) as device:
        def ours():
            output = setting.path("ours.cdr")
            remove(output)
            measure.drop_caches()
            return run(setting.hdiutil(device, output))

        def dd():
            output = setting.path("dd.iso")
            remove(output)
            measure.drop_caches()
            return run(["dd", f"if={device}", f"of={output}", "bs=1M", "conv=fsync", "status=none"])

        results = in_turn(setting.rounds, ours=ours, dd=dd)
    subprocess.run(["cmp", source, setting.path("ours.cdr")], check=True)
    yield Figure(1, "image, cold, synced: wall / dd bs=1M conv=fsync", ratios(results, "ours", "dd", lambda c: c.wall), 0.90)
    yield Figure(1, "image, cold, synced: CPU / dd bs=1M conv=fsync", ratios(results, "ours", "dd", lambda c: c.cpu), 0.60)


def paced(setting):
    """Bar 2: a drive of a fixed pace, with and without read-ahead of its own."""
    program = setting.program("paced-drive")
    for rate in ([10, 70] if setting.full else [70]):
        size = (64 if rate == 10 or not setting.full else 512) * MIB
        source = setting.image(f"paced-{size}.img", size)
        ideal = size / (rate * 1e6)
        for ahead in (2_000_000, 0):
            options = ["--rate", str(rate * 1_000_000), "--read-ahead", str(ahead)]
            with measure.paced_drive(program, source, setting.path("mnt"), options) as device:
                def ours():
                    output = setting.path("paced.cdr")
                    remove(output)
                    return run(setting.hdiutil(device, output))

                def dd():
                    return run(["dd", f"if={device}", "of=/dev/null", "bs=1M", "iflag=direct", "status=none"])

                if ahead:
                    results = in_turn(setting.rounds, ours=ours)
                    yield Figure(2, f"{rate} MB/s with read-ahead: elapsed / ideal",
                                 [cost.wall / ideal for cost in results["ours"]], 1.01)
                else:
                    results = in_turn(setting.rounds, ours=ours, dd=dd)
                    yield Figure(2, f"{rate} MB/s without read-ahead: wall / dd iflag=direct",
                                 ratios(results, "ours", "dd", lambda c: c.wall), 1.03)


def memory(setting):
    """Bar 3: peak memory and what is left in the page cache."""
    sizes = {"128 MiB": 128 * MIB, "8 GiB": 8 * GIB} if setting.full else {"128 MiB": 128 * MIB, "1 GiB": GIB}
    for name, size in sizes.items():
        source = setting.path("sparse.img")
        with open(source, "wb") as file:
            file.truncate(size)
        with measure.loop_device(source) as device:
            output = setting.path("memory.cdr")
            costs, cached = [], []
            for _ in range(1 if size > 2 * GIB else 3):
                remove(output)
                measure.drop_caches()
                costs.append(run(setting.hdiutil(device, output)))
                cached.append((measure.cached_bytes(output) + measure.cached_bytes(source)) / MIB)
            remove(output)
        os.unlink(source)
        yield Figure(3, f"{name}: peak memory, MiB", [cost.peak_memory / MIB for cost in costs], 16, "MiB")
        yield Figure(3, f"{name}: page cache left behind, MiB", cached, 16, "MiB")


def faults(setting):
    """Bar 4: one bad sector, 0.2 s for each failing command, against ddrescue.

    On a drive of 70 MB/s, and for comparison on one without a pace: there only the failing commands
    count, and a sector that gets a third chance costs one more of them than ddrescue's first pass.
    """
    paces = [("70 MB/s", ["--rate", "70000000", "--read-ahead", "2000000"], 1.0)]
    if setting.full:
        paces.append(("no pace", [], None))
    for name, pace, limit in paces:
        results = faulty_drive(setting, pace)
        yield Figure(4, f"one bad sector, {name}: wall / ddrescue -d -b 2048",
                     ratios(results, "ours", "ddrescue", lambda r: r[0].wall), limit)
        yield Figure(4, f"one bad sector, {name}: failing commands", [count for _, count in results["ours"]], 4,
                     note=f"ddrescue: {results['ddrescue'][0][1]} failing commands")


def faulty_drive(setting, pace):
    source = setting.image("faults.img", 64 * MIB)
    log = setting.path("commands.log")
    options = ["--bad", "16001", "--failure-seconds", "0.2", "--log", log, *pace]

    def failures():
        with open(log) as file:
            return sum(1 for line in file if line.endswith("failed\n"))

    def counted(action):
        before = failures()
        cost = action()
        return cost, failures() - before

    with measure.paced_drive(setting.program("paced-drive"), source, setting.path("mnt"), options) as device:
        def ours():
            output = setting.path("faults.cdr")
            remove(output)
            cost, count = counted(lambda: run(setting.hdiutil(device, output), expect=None))
            if cost.status == 0 or b"16001" not in cost.output:
                raise SystemExit("bench: the bad sector was not reported")
            return cost, count

        def ddrescue():
            output, map_file = setting.path("rescue.iso"), setting.path("rescue.map")
            remove(output)
            remove(map_file)
            return counted(lambda: run(["ddrescue", "-q", "-d", "-b", "2048", device, output, map_file], expect=None))

        return in_turn(setting.rounds, ours=ours, ddrescue=ddrescue)


def digest(setting):
    """Bar 5: SHA-256 of a file, against openssl and the system's shasum.

    Ours reads the file from its disk, the others whatever memory holds of it. So the digest alone is
    compared on a file that lives in memory, and the whole on a cold file of the disk.
    """
    source = setting.image("source.img", setting.size)
    ours = [setting.tool("/usr/bin/shasum"), "-a", "256"]
    openssl = ["openssl", "dgst", "-sha256"]

    with tempfile.TemporaryDirectory(dir="/dev/shm") as folder:
        held = shutil.copy(source, folder)
        results = in_turn(setting.rounds, ours=lambda: run([*ours, held]), openssl=lambda: run([*openssl, held]))
        yield Figure(5, "digest, file in memory: wall / openssl dgst -sha256",
                     ratios(results, "ours", "openssl", lambda c: c.wall), 1.05)
        per_byte = statistics.median(cost.wall for cost in results["openssl"]) / os.path.getsize(held)
        if setting.full or not setting.machine["sha_instructions"]:
            results = in_turn(setting.rounds, ours=lambda: run([*ours, held], WITHOUT_SHA_INSTRUCTIONS),
                              openssl=lambda: run([*openssl, held], WITHOUT_SHA_INSTRUCTIONS),
                              shasum=lambda: run(["/usr/bin/shasum", "-a", "256", held]))
            # On a CPU that has the instructions this only imitates one that has none.
            limit = None if setting.machine["sha_instructions"] else 0.60
            openssl_share = statistics.median(ratios(results, "openssl", "shasum", lambda c: c.wall))
            yield Figure(5, "digest without SHA instructions: wall / the system's shasum",
                         ratios(results, "ours", "shasum", lambda c: c.wall), limit,
                         note=f"openssl dgst -sha256 without them: {openssl_share:.3f}")

    big = setting.image("big.img", 4 * GIB) if setting.full else source

    def cold(arguments):
        def action():
            measure.drop_caches()
            return run(arguments)
        return action

    results = in_turn(
        setting.rounds,
        ours=cold([*ours, big]), openssl=cold([*openssl, big]),
        disk=cold(["dd", f"if={big}", "of=/dev/null", "bs=1M", "iflag=direct", "status=none"]))
    yield Figure(5, "digest, cold file: wall / openssl dgst -sha256", ratios(results, "ours", "openssl", lambda c: c.wall), 1.05)

    values = [a.wall / max(b.wall, per_byte * os.path.getsize(big)) for a, b in zip(results["ours"], results["disk"])]
    yield Figure(5, "digest, cold file: wall / the larger of disk and digest", values, 1.05)
    if big != source:
        os.unlink(big)


def thorough(setting):
    """Bar 6: a whole thorough rip, against dd twice and sha256sum twice."""
    source = setting.image("source.img", setting.size)
    environment = {**setting.practice_drive("thorough", source), "TMPDIR": setting.folder,
                   "XDG_DATA_HOME": setting.path("data"), "XDG_CONFIG_HOME": setting.path("config"),
                   "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"}

    def ours(more=None):
        output = setting.path("thorough.iso")
        remove(output)
        measure.drop_caches()
        return run([setting.program("spindrift-cli"), "rip", "--thorough", "--output", output], {**environment, **(more or {})})

    def by_hand():
        first, second = setting.path("first.iso"), setting.path("second.iso")
        remove(first)
        remove(second)
        measure.drop_caches()
        script = (f"dd if='{source}' of='{first}' bs=1M conv=fsync status=none && "
                  f"dd if='{source}' of='{second}' bs=1M conv=fsync status=none && "
                  f"sha256sum '{first}' && sha256sum '{second}'")
        cost = run(["sh", "-c", script])
        remove(second)
        return cost

    # What no imager can do without: the disc twice, and each image once, from where they are stored.
    def four_reads():
        measure.drop_caches()
        read = f"dd if='{source}' of=/dev/null bs=1M iflag=direct status=none"
        return run(["sh", "-c", " && ".join([read] * 4)])

    candidates = {"ours": ours, "by_hand": by_hand, "four_reads": four_reads}
    if setting.full and setting.machine["sha_instructions"]:
        candidates["plain"] = lambda: ours(WITHOUT_SHA_INSTRUCTIONS)
    results = in_turn(setting.rounds, **candidates)
    limit = 0.35 if setting.machine["sha_instructions"] else 0.60
    yield Figure(6, "thorough rip: wall / dd twice and sha256sum twice", ratios(results, "ours", "by_hand", lambda c: c.wall), limit)
    if "plain" in results:
        yield Figure(6, "the same without SHA instructions", ratios(results, "plain", "by_hand", lambda c: c.wall), 0.60)
    yield Figure(6, "its four reads alone / dd twice and sha256sum twice", ratios(results, "four_reads", "by_hand", lambda c: c.wall), None)


def poll(setting):
    """Bar 7: what a poll costs."""
    source = setting.image("poll.img", 16 * MIB)
    environment = setting.practice_drive("poll", source)
    device = "/dev/practice0"
    diskutil = setting.tool("/usr/sbin/diskutil")
    tools = [[setting.tool("/usr/bin/drutil"), "status"], [diskutil, "info", "-plist", device],
             [diskutil, "list", "-plist", device], [diskutil, "list", device], [diskutil, "info", "-plist", device]]
    trivial = [[setting.program("trivial-program")]] * 5

    def cost(commands, megabytes):
        joined = []
        for command in commands:
            joined += (["+"] if joined else []) + command
        text = subprocess.check_output(
            [setting.program("spawn-cost"), "--megabytes", str(megabytes), "--rounds", "40" if setting.full else "20", *joined],
            env={**os.environ, **environment}, text=True)
        return tuple(float(word) for word in text.split())

    results = in_turn(setting.rounds, ours=lambda: cost(tools, 50), trivial=lambda: cost(trivial, 50),
                      large=lambda: cost(tools, 500))
    yield Figure(7, "a poll's CPU / five trivial C++ programs'", ratios(results, "ours", "trivial", lambda c: c[0]), 1.5)
    yield Figure(7, "a poll's CPU from 500 MB / from 50 MB", ratios(results, "large", "ours", lambda c: c[0]), 1.3)
    yield Figure(7, "a poll's wall from 500 MB / from 50 MB", ratios(results, "large", "ours", lambda c: c[1]), 1.3)


def growth(setting):
    """Bar 8: cost per GB of a large image against a small one."""
    large = (16 if setting.full else 2) * GIB
    costs = {}
    for name, size in (("small", GIB), ("large", large)):
        source = setting.path(f"{name}.img")
        with open(source, "wb") as file:
            file.truncate(size)
        environment = setting.practice_drive(name, source)
        output = setting.path(f"{name}.cdr")

        def one(output=output, environment=environment, size=size):
            remove(output)
            cost = run(setting.hdiutil("/dev/practice0", output), environment)
            remove(output)
            return cost.wall / size, cost.cpu / size

        # What the disk itself does with that many bytes.
        def disk(output=output, source=source, size=size):
            remove(output)
            cost = run(["dd", f"if={source}", f"of={output}", "bs=1M", "oflag=direct", "conv=fsync", "status=none"])
            remove(output)
            return cost.wall / size, cost.cpu / size

        costs[name] = one
        if setting.full:
            costs[name + "_disk"] = disk
    results = in_turn(5, **costs)
    size = f"{large // GIB} GiB"
    note = ""
    if setting.full:
        control = statistics.median(ratios(results, "large_disk", "small_disk", lambda c: c[0]))
        note = f"dd oflag=direct on this disk: {control:.3f}"
    yield Figure(8, f"wall per byte: {size} / 1 GiB", ratios(results, "large", "small", lambda c: c[0]), 1.10, note=note)
    yield Figure(8, f"CPU per byte: {size} / 1 GiB", ratios(results, "large", "small", lambda c: c[1]), 1.10)


def history(setting):
    """Bar 11: what large files of the history and the nicknames cost a program that starts."""
    def shown(name, file_name, content, lines):
        data = setting.path(f"data-{name}")
        os.makedirs(os.path.join(data, "Spindrift"), exist_ok=True)
        with open(os.path.join(data, "Spindrift", file_name), "wb") as file:
            file.writelines(content)
        costs = []
        for _ in range(setting.rounds):
            with tempfile.TemporaryFile(dir=setting.folder) as output:
                costs.append(run([setting.program("spindrift-cli"), "history", "--json"],
                                 {"XDG_DATA_HOME": data}, output=output))
                output.seek(0)
                if sum(1 for _ in output) != lines:
                    raise SystemExit(f"bench: the history of {name} was not shown whole")
        return costs

    def walls(costs):
        return [cost.wall for cost in costs]

    nicknames = json.dumps({f"VENDOR|PRODUCT {number}|1.0": f"Drive {number}" for number in range(40000)}, indent=2)
    yield Figure(11, "40,000 nicknames: history's wall, seconds",
                 walls(shown("nicknames", "drivenicknames.json", [nicknames.encode()], 0)), 0.2)
    for file_name in ("speedlog.json", "drivenicknames.json"):
        costs = shown(f"junk-{file_name}", file_name, [b"junk" * (1 << 18)] * 100, 0)
        yield Figure(11, f"100 MiB that is no JSON, {file_name}: wall, seconds", walls(costs), 1.0)
        yield Figure(11, f"100 MiB that is no JSON, {file_name}: peak memory, MiB",
                     [cost.peak_memory / MIB for cost in costs], 32, "MiB")
    entry = {"id": "0A1B2C3D-4E5F-4A6B-8C7D-9E0F1A2B3C4D", "date": "2025-01-31T18:04:59Z", "driveKey": "A|B|1",
             "driveModelString": "A B 1", "discKind": "DVD", "discSizeBytes": 4700372992,
             "averageBytesPerSecond": 11080000.0, "source": "Rip"}
    count = 400000 if setting.full else 100000
    yield Figure(11, f"{count:,} results shown: wall, seconds",
                 walls(shown("results", "speedlog.json", [json.dumps([entry] * count, indent=2).encode()], count)), None)


ALL = {"image": image, "paced": paced, "memory": memory, "faults": faults, "digest": digest,
       "thorough": thorough, "poll": poll, "growth": growth, "history": history}
