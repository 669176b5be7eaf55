"""Sectors that cannot be read, and discs that are taken away while they are read."""

from cases import Rip, case, expect, expect_equal
from guest import CLI, Fault

BAD_SECTOR = 3333
HEAD_START = 6 << 20  # bytes that are read at once, so that a rip gets under way
HELD = 512 << 10  # bytes per second from then on: half a minute to change the disc in mid-rip
SLOW = 200 << 10  # bytes per second: a read of the usual size takes five seconds


def _failing_reads(commands, lba):
    return [read for read in commands.reads() if read.failed and
            read.lba <= lba < read.lba + read.sectors]


def _expect_failure(bench, rip):
    expect_equal(rip.status, 1, f"the rip's status ({rip.text[-600:]})")
    expect(not rip.last("finished"), "the rip published that it finished")
    expect(rip.last("error"), f"no error in {rip.text[-600:]}")
    bench.expect_no_file("/root/out.iso")


@case("An unreadable sector ends the rip with its number, after at most four failing commands",
      "udev bare")
def _unreadable(bench):
    bench.guest.insert(bench.discs.named("cd", "plain").path, [Fault(BAD_SECTOR)])
    commands = bench.guest.commands()
    rip = bench.rip("/root/out.iso", "--thorough")
    _expect_failure(bench, rip)
    expect(str(BAD_SECTOR) in str(rip.last("error")), f"no sector number in {rip.last('error')}")
    expect("No data available" not in rip.last("error"), f"the kernel's word: {rip.last('error')}")
    failing = _failing_reads(commands, BAD_SECTOR)
    expect(1 <= len(failing) <= 4, f"{len(failing)} failing commands: {failing}")
    expect_equal(failing[-1].sectors, 1, "the sectors of the last failing command")


@case("An unreadable sector ends the rip with its number on an IDE drive", "ide")
def _unreadable_on_ide(bench):
    bench.guest.insert(bench.discs.named("cd", "plain").path, [Fault(BAD_SECTOR)])
    rip = bench.rip("/root/out.iso")
    _expect_failure(bench, rip)
    expect(str(BAD_SECTOR) in str(rip.last("error")), f"no sector number in {rip.last('error')}")


@case("A sector that fails twice and then reads well is in the image", "udev bare ide")
def _flaky(bench):
    disc = bench.discs.named("cd", "plain")
    bench.guest.insert(disc.path, [Fault(BAD_SECTOR, times=2)])
    rip = bench.rip("/root/out.iso")
    expect_equal(rip.status, 0, f"the rip's status ({rip.text[-600:]})")
    bench.expect_same_bytes("/root/out.iso", disc.path)


@case("Two unreadable sectors at the end, behind the file system, are left out with a word",
      "udev bare")
def _run_out(bench):
    disc = bench.discs.run_out_cd()
    size = disc.file_system_sectors() * 2048
    expect_equal(disc.size - size, 2 * 2048, "the run-out on the disc")
    faults = [Fault(disc.sectors - 2), Fault(disc.sectors - 1)]
    bench.guest.insert(disc.path, faults)
    made = bench.tool("usr/bin/hdiutil create -srcdevice /dev/sr0 -format UDTO -o /root/x.cdr")
    expect_equal(made.status, 0, f"hdiutil: {made}")
    expect(str(disc.sectors - 2) in made.err, f"standard error does not say what is left: {made}")
    bench.expect_same_bytes("/root/x.cdr", disc.path, size)
    rip = bench.rip("/root/out.iso", "--thorough")
    expect_equal(rip.status, 0, f"the rip's status ({rip.text[-600:]})")
    bench.expect_same_bytes("/root/out.iso", disc.path, size)


@case("A readable end of the disc behind the file system is in the image", "udev bare")
def _readable_run_out(bench):
    disc = bench.discs.run_out_cd()
    bench.guest.insert(disc.path)
    rip = bench.rip("/root/out.iso")
    expect_equal(rip.status, 0, f"the rip's status ({rip.text[-600:]})")
    bench.expect_same_bytes("/root/out.iso", disc.path)


@case("An unreadable sector at the end, inside the file system, is an error", "udev bare")
def _error_at_the_end(bench):
    disc = bench.discs.named("cd", "plain")
    expect_equal(disc.sectors, disc.file_system_sectors(), "the file system's size")
    bench.guest.insert(disc.path, [Fault(disc.sectors - 1)])
    rip = bench.rip("/root/out.iso")
    _expect_failure(bench, rip)
    expect(str(disc.sectors - 1) in str(rip.last("error")),
           f"no sector number in {rip.last('error')}")


@case("An unreadable sector just before the run-out ones is an error", "udev")
def _error_before_the_run_out(bench):
    disc = bench.discs.run_out_cd()
    bad = disc.file_system_sectors() - 1
    bench.guest.insert(disc.path, [Fault(bad), Fault(bad + 1), Fault(bad + 2)])
    rip = bench.rip("/root/out.iso")
    _expect_failure(bench, rip)
    expect(str(bad) in str(rip.last("error")), f"no sector number in {rip.last('error')}")


def _rip_under_way(bench):
    bench.guest.insert(bench.discs.named("cd", "plain").path, bytes_per_second=HELD,
                       head_start=HEAD_START)
    job = bench.guest.start(bench.rip_script("/root/out.iso"))
    bench.wait_for_image(job, 3 << 20)
    expect(job.running(), "the rip is over before the disc is touched")
    return job


@case("A disc that is changed for another during a rip makes the rip fail", "udev bare ide")
def _swapped(bench):
    job = _rip_under_way(bench)
    bench.guest.swap(bench.discs.other_cd().path)
    _expect_failure(bench, Rip(job.wait(60)))


@case("A change that leaves the same disc in the drive, as a reset of the bus does, is passed over",
      "udev bare ide")
def _reset(bench):
    job = _rip_under_way(bench)
    disc = bench.discs.named("cd", "plain")
    bench.guest.swap(disc.path)
    rip = Rip(job.wait(60))
    expect_equal(rip.status, 0, f"the rip's status ({rip.text[-600:]})")
    bench.expect_same_bytes("/root/out.iso", disc.path)


@case("A disc that is changed so that no read notices makes the rip fail", "udev bare")
def _swapped_silently(bench):
    job = _rip_under_way(bench)
    bench.guest.check("kill -STOP $(pidof hdiutil)")
    bench.guest.swap(bench.discs.other_cd().path)
    # The first command after a change is told of it; this takes that from the rip's next read.
    bench.guest.check("dd if=/dev/sr0 of=/dev/null bs=2048 count=1 iflag=direct")
    bench.guest.check("kill -CONT $(pidof hdiutil)")
    rip = Rip(job.wait(60))
    _expect_failure(bench, rip)
    expect("chang" in rip.last("error"), f"the error: {rip.last('error')}")


@case("A disc that is taken out during a rip makes the rip fail", "udev bare ide")
def _taken_out(bench):
    job = _rip_under_way(bench)
    bench.guest.remove()
    rip = Rip(job.wait(60))
    _expect_failure(bench, rip)
    expect("remov" in rip.last("error"), f"the error: {rip.last('error')}")


@case("The drive's button, pressed during a rip, makes the rip fail when the tray opens for it",
      "udev")
def _button(bench):
    job = _rip_under_way(bench)
    bench.guest.press_button()
    rip = Rip(job.wait(60))
    expect_equal(bench.guest.tray()[0], "open", "the tray")
    _expect_failure(bench, rip)


@case("A disc that is changed during the second reading is not called verified", "udev")
def _swapped_while_verifying(bench):
    disc = bench.discs.named("cd", "plain")
    # The first reading is quick but for its end; what remains of the pace holds the second one.
    bench.guest.insert(disc.path, bytes_per_second=HELD, head_start=disc.size - (1 << 20))
    job = bench.guest.start(bench.rip_script("/root/out.iso", "--thorough"))
    bench.guest.wait_until(f"test -e /root/out.iso || {job.ended}", 30)
    bench.guest.insert(bench.discs.other_cd().path, noticed=False)
    rip = Rip(job.wait(60))
    expect(rip.status in (1, 2), f"the rip's status ({rip.text[-600:]})")
    expect_equal(rip.last("finished"), True, "finished")
    expect(rip.last("verifyStatus") and "matched" not in
           str(rip.last("verifyStatus")).replace("mismatched", ""),
           f"verifyStatus: {rip.last('verifyStatus')}")


@case("Ctrl-C during a rip ends it with status 130 and leaves no file", "udev")
def _interrupted(bench):
    job = _rip_under_way(bench)
    bench.guest.check("kill -INT $(pidof spindrift-cli)")
    ended = job.wait(30)
    expect_equal(ended.status, 130, f"the rip's status ({ended})")
    bench.expect_no_file("/root/out.iso")
    expect(bench.guest.wait_until("test -z \"$(ls /var/tmp)\"", 10), "temporary files are left")
    expect(bench.guest.wait_until("! pidof hdiutil", 10), "the imaging tool still runs")


@case("A disc that is being read is neither ejected nor read by another program", "udev bare")
def _eject_beside_a_rip(bench):
    job = _rip_under_way(bench)
    began = bench.guest.check("pidof spindrift-cli")
    reader = bench.guest.check("pidof hdiutil").strip()
    bench.guest.check(f"kill -STOP {reader}")  # so that it reads for as long as this takes
    for command in ("usr/sbin/diskutil eject /dev/sr0", "usr/bin/drutil eject",
                    "usr/bin/hdiutil create -srcdevice /dev/sr0 -format UDTO -o /var/tmp/second"):
        refused = bench.tool(command)
        expect(refused.status not in (0, 127), f"{command}: {refused}")
        expect(f"/dev/sr0 is busy: spindrift-cli (pid {began.strip()}) reads it" in refused.err,
               f"the reader is not named: {refused}")
    expect_equal(bench.cli("eject").status, 1, "the status of the program's eject")
    expect_equal(bench.guest.tray()[0], "closed", "the tray")
    bench.guest.check(f"kill -CONT {reader}")
    bench.guest.set_pace(0)
    expect_equal(job.wait(60).status, 0, "the rip's status")
    bench.expect_same_bytes("/root/out.iso", bench.discs.named("cd", "plain").path)
    expect_equal(bench.cli("eject").status, 0, "the status of the eject after the rip")


@case("While the drive takes seconds for a read, status still answers, and the rip ends well",
      "udev")
def _slow(bench):
    disc = bench.discs.named("cd", "plain")
    job = _rip_under_way(bench)
    bench.guest.set_pace(SLOW)
    asleep = "grep -q 'State:.*disk sleep' /proc/$(pidof hdiutil)/task/*/status"
    expect(bench.guest.wait_until(asleep, 10), "the rip does not wait for the drive")
    result = bench.guest.run(f"{CLI} status --json", 5)
    expect(result.status == 0 and disc.label in result.out, f"status: {result}")
    expect(job.running(), "the rip is over")
    bench.guest.set_pace(0)
    expect_equal(job.wait(60).status, 0, "the rip's status")
    bench.expect_same_bytes("/root/out.iso", disc.path)
