"""Polls: what they ask of the drive, and what they cost a rip."""

import math
import time

from cases import Failure, case, expect, expect_equal
from guest import TOOL_ROOT, Commands

PACE = 2 << 20  # bytes per second
# Imaging itself asks every so many seconds whether the disc is still the same, in a few commands.
QUESTION_EVERY = 2
ONE_QUESTION = 6  # commands
# What the program runs in one poll with a disc in the drive.
POLL = ["usr/bin/drutil status", "usr/sbin/diskutil info -plist /dev/sr0",
        "usr/sbin/diskutil list /dev/sr0", "usr/sbin/diskutil info -plist /dev/sr0"]
CREATE = "usr/bin/hdiutil create -srcdevice /dev/sr0 -format UDTO -puppetstrings -o /var/tmp/x.cdr"


def _without_kernel_polls(bench):
    """The kernel's own question for a changed disc, every two seconds, is not the program's."""
    bench.guest.check("echo 0 >/sys/class/block/sr0/events_poll_msecs")


def _poll(bench):
    expect_equal(bench.status()["disc"]["displayName"], "PLAIN_DISC", "the disc")
    for command in POLL:
        result = bench.tool(command)
        expect_equal(result.status, 0, f"the status of {command} ({result})")


def _image(bench, polls):
    """Images the paced disc; returns the seconds that it took in the guest's own time, the
    commands that the drive got and the number of polls in the meantime."""
    bench.guest.insert(bench.discs.named("cd", "plain").path, bytes_per_second=PACE)
    _without_kernel_polls(bench)
    # The paced drive lets one second's worth pass at once; both rips shall find that unspent.
    job = bench.guest.start("rm -f /var/tmp/x.cdr; sleep 2; cut -d' ' -f1 /proc/uptime;"
                            f" {TOOL_ROOT}/{CREATE} >/dev/null && cut -d' ' -f1 /proc/uptime")
    commands = bench.guest.commands()
    bench.guest.wait_until(f"test -e /var/tmp/x.cdr || {job.ended}", 30)
    done = 0
    while polls and job.running():
        _poll(bench)
        done += job.running()
        time.sleep(1)
    ended = job.wait(60)
    try:
        began, finished = (float(line) for line in ended.out.split())
    except ValueError:
        raise Failure(f"hdiutil: {ended}") from None
    return finished - began, commands.all(), done


@case("A poll with udev's record there sends the drive nothing", "udev")
def _silent(bench):
    bench.guest.insert(bench.discs.named("cd", "plain").path)
    _without_kernel_polls(bench)
    commands = bench.guest.commands()
    _poll(bench)
    expect_equal(commands.all(), [], "the commands that the drive got")


@case("Polls during a rip send the drive nothing", "udev")
def _during_a_rip(bench):
    # What the polls cost in time is printed only: it depends on the machine around the guest.
    alone, commands_alone, _ = _image(bench, polls=False)
    with_polls, commands, polls = _image(bench, polls=True)
    print(f"              alone {alone:.2f} s, with {polls} polls {with_polls:.2f} s"
          f" ({100 * (with_polls / alone - 1):+.2f} %),"
          f" {len(commands_alone)} and {len(commands)} commands")
    expect(polls >= 1, "no poll fell into the rip")

    def reads(of):
        return [(one.lba, one.sectors) for one in of if one.opcode == Commands.READ]

    def others(of):
        return len(of) - len(reads(of))

    expect_equal(sum(sectors for _, sectors in reads(commands)),
                 bench.discs.named("cd", "plain").sectors, "the sectors read")
    # One question more or less is the clock's doing, and a rip that took longer asked more often.
    questions = 1 + max(0, with_polls - alone) / QUESTION_EVERY
    expect(others(commands) <= others(commands_alone) + ONE_QUESTION * math.ceil(questions),
           f"commands beside the reads: {others(commands_alone)} alone, {others(commands)} with "
           f"{polls} polls")
