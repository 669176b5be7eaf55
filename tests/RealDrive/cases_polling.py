"""Polls: what they ask of the drive, and what they cost a rip."""

import time

from cases import Failure, case, expect, expect_equal
from guest import TOOL_ROOT

PACE = 2 << 20  # bytes per second
GET_EVENT_STATUS = 0x4A
TEST_UNIT_READY = 0x00
# What the program runs in one poll with a disc in the drive.
POLL = ["usr/bin/drutil status", "usr/sbin/diskutil info -plist /dev/sr0",
        "usr/sbin/diskutil list /dev/sr0", "usr/sbin/diskutil info -plist /dev/sr0"]
CREATE = "usr/bin/hdiutil create -srcdevice /dev/sr0 -format UDTO -puppetstrings -o /var/tmp/x.cdr"


def _without_kernel_polls(bench):
    """The kernel's own question for a changed disc, every two seconds, is not the program's."""
    bench.guest.check("echo 0 >/sys/class/block/sr0/events_poll_msecs")


def _poll(bench):
    for command in POLL:
        result = bench.tool(command)
        expect_equal(result.status, 0, f"the status of {command} ({result})")


def _timed_rip(bench, polls):
    """Seconds that imaging the paced disc takes, in the guest's own time."""
    bench.guest.insert(bench.discs.named("cd", "plain").path, bytes_per_second=PACE)
    _without_kernel_polls(bench)
    # The paced drive lets one second's worth pass at once; both rips shall find that unspent.
    job = bench.guest.start("rm -f /var/tmp/x.cdr; sleep 2; cut -d' ' -f1 /proc/uptime;"
                            f" {TOOL_ROOT}/{CREATE} >/dev/null && cut -d' ' -f1 /proc/uptime")
    if polls:
        deadline = time.monotonic() + 60
        while job.running() and time.monotonic() < deadline:
            _poll(bench)
            time.sleep(1)
    ended = job.wait(60)
    try:
        began, done = (float(line) for line in ended.out.split())
    except ValueError:
        raise Failure(f"hdiutil: {ended}") from None
    return done - began


@case("A poll with udev's record there sends the drive nothing", "udev")
def _silent(bench):
    bench.guest.insert(bench.discs.named("cd", "joliet").path)
    _without_kernel_polls(bench)
    commands = bench.guest.commands()
    expect_equal(bench.status()["disc"]["displayName"], "Holiday Photos 2024", "the disc")
    _poll(bench)
    expect_equal(commands.all(), [], "the commands that the drive got")


@case("Polls during a rip send the drive nothing, and the rip reads every sector once", "udev")
def _silent_during_a_rip(bench):
    disc = bench.discs.named("cd", "plain")
    bench.guest.insert(disc.path, bytes_per_second=PACE)
    _without_kernel_polls(bench)
    job = bench.guest.start(bench.rip_script("/root/out.iso"))
    bench.wait_for_image(job, 2 << 20)
    commands = bench.guest.commands()
    polls = 0
    while job.running():
        if polls < 3:
            during = len(commands.all())
            expect_equal(bench.status()["disc"]["displayName"], "PLAIN_DISC", "the disc")
            _poll(bench)
            if job.running():
                polls += 1
                among = commands.all()[during:]
                others = [command for command in among if command.opcode != commands.READ]
                expect_equal(others, [], "commands other than the rip's reads")
    expect(polls >= 1, "no poll fell into the rip")
    expect_equal(job.wait().status, 0, "the rip's status")
    reads = commands.reads()
    for before, after in zip(reads, reads[1:]):
        expect_equal(after.lba, before.lba + before.sectors, "where a read goes on")


@case("Polls every second cost a rip less than one per cent of its speed", "udev")
def _cost(bench):
    alone = _timed_rip(bench, polls=False)
    with_polls = _timed_rip(bench, polls=True)
    cost = with_polls / alone - 1
    print(f"              alone {alone:.2f} s, with polls {with_polls:.2f} s: {100 * cost:+.2f} %")
    expect(cost < 0.01, f"the polls cost {100 * cost:.2f} %")
