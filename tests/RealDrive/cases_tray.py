"""Trays that open, discs that come and go, drives that do."""

import time

from cases import case, expect, expect_equal
from guest import TOOL_ROOT

# Ends a wait that would be one for ever. How long things take is printed and decides nothing: the
# guest runs at the pace that the machine around it leaves.
LIMIT = 60


def _expect_empty(bench):
    began = time.monotonic()
    while (status := bench.status())["disc"] is not None:
        expect(time.monotonic() - began <= LIMIT, f"the disc is still shown after {LIMIT} s")
    expect(status["driveDetected"], f"no drive in {status}")


def _eject(bench):
    result = bench.cli("eject")
    expect_equal(result.status, 0, f"the eject's status ({result})")
    expect_equal(bench.guest.tray()[0], "open", "the tray")


@case("Without a disc status says so, and a rip ends with an error", "udev bare ide")
def _no_disc(bench):
    _expect_empty(bench)
    rip = bench.rip("/root/out.iso")
    expect_equal(rip.status, 1, f"the rip's status ({rip.text})")
    expect(rip.errors, "nothing on standard error")
    bench.expect_no_file("/root/out.iso")
    made = bench.tool("usr/bin/hdiutil create -srcdevice /dev/sr0 -format UDTO -o /root/x.iso")
    expect(made.status not in (0, 127) and "create failed" in made.err, f"hdiutil: {made}")


@case("A disc that is not mounted is ejected", "udev bare ide")
def _eject_unmounted(bench):
    bench.guest.insert(bench.discs.named("cd", "plain").path)
    _eject(bench)
    _expect_empty(bench)


@case("A mounted disc is unmounted and ejected", "udev bare ide")
def _eject_mounted(bench):
    bench.guest.insert(bench.discs.named("cd", "joliet").path)
    bench.guest.check("mount -o ro /dev/sr0 /mnt")
    _eject(bench)
    expect("/dev/sr0" not in bench.guest.check("cat /proc/mounts"), "still mounted")


@case("A disc behind a locked door is ejected", "udev bare ide")
def _eject_locked(bench):
    bench.guest.insert(bench.discs.named("cd", "plain").path)
    bench.guest.check("eject -i on /dev/sr0")
    expect(bench.guest.tray()[1], "the door does not lock")
    _eject(bench)


@case("A disc that a program is using is not ejected, and the program is named", "udev bare")
def _eject_busy(bench):
    bench.guest.insert(bench.discs.named("cd", "plain").path)
    bench.guest.check("mount -o ro /dev/sr0 /mnt")
    bench.guest.start("cd /mnt && exec sleep 30 >/dev/null")
    expect(bench.guest.wait_until("ls -l /proc/*/cwd | grep ' /mnt$'"), "no holder")
    try:
        result = bench.tool("usr/sbin/diskutil eject /dev/sr0")
        expect(result.status not in (0, 127), f"diskutil eject: {result}")
        expect("sleep" in result.err, f"the holder is not named: {result}")
        expect_equal(bench.guest.tray()[0], "closed", "the tray")
        expect_equal(bench.cli("eject").status, 1, "the status of the program's eject")
    finally:
        bench.guest.run("kill $(pidof sleep)")
        bench.guest.wait_until("! pidof sleep")


@case("With UDisks2 an unmounted disc is ejected", "udev")
def _eject_udisks(bench):
    bench.guest.insert(bench.discs.named("cd", "plain").path)
    bench.start_udisks()
    try:
        _eject(bench)
    finally:
        bench.stop_udisks()


@case("With UDisks2 a disc that it mounted, behind a locked door, is unmounted and ejected",
      "udev")
def _eject_udisks_mounted(bench):
    bench.guest.insert(bench.discs.named("cd", "joliet").path)
    bench.start_udisks()
    try:
        bench.guest.check("udisksctl mount -b /dev/sr0")
        bench.guest.check("eject -i on /dev/sr0")
        _eject(bench)
        expect("/dev/sr0" not in bench.guest.check("cat /proc/mounts"), "still mounted")
        expect_equal(bench.guest.run("ls /media/root 2>/dev/null").out, "", "mount points left")
    finally:
        bench.stop_udisks()


@case("A rip with --eject ends with the tray open", "udev bare")
def _rip_and_eject(bench):
    disc = bench.discs.named("cd", "plain")
    bench.guest.insert(disc.path)
    rip = bench.rip("/root/out.iso", "--eject")
    expect_equal(rip.status, 0, f"the rip's status ({rip.text[-600:]})")
    expect_equal(bench.guest.tray()[0], "open", "the tray")
    bench.expect_same_bytes("/root/out.iso", disc.path)


@case("Another disc is shown by the polls that follow", "udev bare ide")
def _another_disc(bench):
    bench.guest.insert(bench.discs.named("cd", "plain").path)
    expect_equal(bench.status()["disc"]["displayName"], "PLAIN_DISC", "the first disc")
    for disc in [bench.discs.named("cd", "joliet"), bench.discs.named("dvd", "udf")]:
        look = f"{TOOL_ROOT}/usr/sbin/diskutil info -plist /dev/sr0 | grep -q '{disc.label}'"
        bench.guest.insert(disc.path, noticed=False)
        inserted = time.monotonic()
        shown = bench.guest.wait_until(look, LIMIT)
        took = time.monotonic() - inserted
        expect(shown, f"{disc.label} is not shown after {LIMIT} s")
        found = bench.status()["disc"]
        expect_equal((found["displayName"], found["totalBytes"], found["rawType"]),
                     (disc.label, disc.size, disc.raw_type), "the disc")
        print(f"              {disc.label} was shown {took:.1f} s after it was inserted")


@case("A second drive is found when it is plugged in, and the drive that holds a disc is the one",
      "udev bare")
def _second_drive(bench):
    disc = bench.discs.named("cd", "udf")
    guest = bench.guest
    guest.plug_in_second_drive(disc.path)
    try:
        expect(guest.wait_until("test -b /dev/sr1"), "the kernel does not see the second drive")
        guest.settle()
        found = bench.status()["disc"] or {}
        expect_equal((found.get("bsdName"), found.get("displayName")), ("sr1", disc.label),
                     "the disc with the first drive empty")
        rip = bench.rip("/root/out.iso")
        expect_equal(rip.status, 0, f"the rip's status ({rip.text[-600:]})")
        bench.expect_same_bytes("/root/out.iso", disc.path)
        guest.insert(bench.discs.named("cd", "plain").path)
        expect_equal(bench.status()["disc"]["bsdName"], "sr0", "the disc with both drives full")
        chosen = guest.check(f"SPINDRIFT_DRIVE=sr1 {TOOL_ROOT}/usr/bin/drutil status")
        expect("/dev/sr1" in chosen, f"drutil with SPINDRIFT_DRIVE=sr1: {chosen}")
    finally:
        guest.unplug_second_drive()
    expect(guest.wait_until("! test -e /sys/class/block/sr1"), "the second drive stays")
    expect_equal(bench.status()["disc"]["bsdName"], "sr0", "the disc after unplugging")


@case("Of two drives the one with the ripped disc is ejected, or none", "udev bare")
def _eject_of_two(bench):
    guest = bench.guest
    disc = bench.discs.named("cd", "udf")
    guest.plug_in_second_drive(disc.path)
    plugged_in = True
    try:
        expect(guest.wait_until("test -b /dev/sr1"), "the kernel does not see the second drive")
        guest.settle()
        guest.check("mount -o ro /dev/sr1 /mnt")
        guest.start("cd /mnt && exec sleep 60 >/dev/null")
        expect(guest.wait_until("ls -l /proc/*/cwd | grep ' /mnt$'"), "no holder")
        job = guest.start(bench.rip_script("/root/out.iso", "--eject"))
        guest.wait_until(f"ls /var/tmp | grep spindrift- || {job.ended}", 30)
        guest.insert(bench.discs.named("cd", "plain").path)
        job.wait(60)
        bench.expect_same_bytes("/root/out.iso", disc.path)
        expect_equal(guest.tray()[0], "closed", "the first drive's tray")
        for unplugged in (False, True):
            if unplugged:
                guest.run("kill $(pidof sleep)")
                guest.wait_until("! pidof sleep")
                guest.check("umount /mnt")
                guest.unplug_second_drive()
                plugged_in = False
                guest.wait_until("! test -e /sys/class/block/sr1")
            result = guest.run(f"SPINDRIFT_DRIVE=sr1 {TOOL_ROOT}/usr/bin/drutil eject")
            expect(result.status not in (0, 127), f"drutil eject of sr1: {result}")
            expect_equal(guest.tray()[0], "closed", "the first drive's tray")
    finally:
        guest.run("kill $(pidof sleep)")
        guest.wait_until("! pidof sleep")
        guest.run("umount /mnt")
        if plugged_in:
            guest.unplug_second_drive()


@case("A drive that is unplugged is gone, and a rip from it fails; plugged in again it is back",
      "bare")
def _unplugged(bench):
    disc = bench.discs.named("cd", "plain")
    bench.guest.insert(disc.path, bytes_per_second=512 << 10, head_start=6 << 20)
    job = bench.guest.start(bench.rip_script("/root/out.iso"))
    bench.wait_for_image(job, 4 << 20)
    bench.guest.check("echo 1 >/sys/class/block/sr0/device/delete")
    ended = job.wait(60)
    expect_equal(ended.status, 1, f"the rip's status ({ended})")
    bench.expect_no_file("/root/out.iso")
    status = bench.status()
    expect_equal(status["driveDetected"], False, "driveDetected")
    expect_equal(status["lastError"], "No optical drive found.", "lastError")
    bench.guest.check("echo '0 0 0' >/sys/class/scsi_host/host0/scan")
    expect(bench.guest.wait_until("test -b /dev/sr0"), "the drive does not come back")
    bench.guest.insert(disc.path)
    expect_equal(bench.status()["disc"]["displayName"], "PLAIN_DISC", "the disc")
