"""Discs of all kinds: what status says of them, and that a rip holds their bytes."""

import re

from cases import case, expect, expect_equal
from guest import TOOL_ROOT

# What udev calls the medium, and the type that is shown.
RECORDED_TYPES = {
    "CD": "CD-ROM", "CD_R": "CD-R", "CD_RW": "CD-RW", "DVD": "DVD-ROM", "DVD_R": "DVD-R",
    "DVD_RAM": "DVD-RAM", "DVD_RW": "DVD-RW", "DVD_R_DL": "DVD-R DL", "DVD_RW_DL": "DVD-RW DL",
    "DVD_PLUS_R": "DVD+R", "DVD_PLUS_RW": "DVD+RW", "DVD_PLUS_R_DL": "DVD+R DL",
    "DVD_PLUS_RW_DL": "DVD+RW DL", "BD": "BD-ROM", "BD_R": "BD-R", "BD_RE": "BD-RE",
    "HDDVD": "HD DVD-ROM", "HDDVD_R": "HD DVD-R", "HDDVD_RW": "HD DVD-RW"}


def _expect_status(bench, disc):
    status = bench.status()
    expect(status["driveDetected"], f"no drive in {status}")
    expect_equal(status["lastError"], None, "lastError")
    expect_equal(status["driveIdentity"]["revision"], "2.5+", "the drive's revision")
    expect("CD-ROM" in status["driveIdentity"]["product"] or
           "DVD-ROM" in status["driveIdentity"]["product"], f"the drive's product in {status}")
    found = status["disc"]
    expect(found, f"no disc in {status}")
    family = disc.raw_type.split("-")[0]
    for field, wanted in [("bsdName", "sr0"), ("rawType", disc.raw_type), ("kind", family),
                          ("volumeName", disc.label), ("totalBytes", disc.size),
                          ("imageSourceBSDName", "sr0"),
                          ("displayName", disc.label or f"{family} ({disc.raw_type})")]:
        expect_equal(found.get(field), wanted, field)


def _expect_thorough_rip(bench, disc):
    rip = bench.rip("/root/out.iso", "--thorough", timeout=240)
    expect_equal(rip.status, 0, f"the rip's status ({rip.text[-600:]})")
    expect_equal(rip.last("finished"), True, "finished")
    expect_equal(rip.last("bytesWritten"), disc.size, "bytesWritten")
    expect_equal(rip.last("error"), None, "error")
    expect("matched" in str(rip.last("verifyStatus")) and
           "mismatched" not in str(rip.last("verifyStatus")),
           f"verifyStatus: {rip.last('verifyStatus')}")
    bench.expect_same_bytes("/root/out.iso", disc.path)
    left = bench.guest.check("ls /var/tmp")
    expect_equal(left, "", "left in the temporary folder")


@case("A {family} with {what} is named, typed and sized, and rips to identical bytes",
      "udev bare ide", each=lambda discs: discs.cds())
def _every_kind_of_cd(bench, disc):
    bench.guest.insert(disc.path)
    _expect_status(bench, disc)
    _expect_thorough_rip(bench, disc)


@case("A {family} with {what} is named, typed and sized, and rips to identical bytes",
      "udev bare", each=lambda discs: discs.dvds())
def _every_kind_of_dvd(bench, disc):
    bench.guest.insert(disc.path)
    _expect_status(bench, disc)
    rip = bench.rip("/root/out.iso", timeout=240)
    expect_equal(rip.status, 0, f"the rip's status ({rip.text[-600:]})")
    bench.expect_same_bytes("/root/out.iso", disc.path)


@case("A DVD rips to identical bytes, twice read and compared", "udev bare")
def _a_dvd(bench):
    # One kind in each boot: a thorough rip of a disc of this size takes the guest half a minute.
    disc = bench.discs.named("dvd", "joliet" if bench.has_udev() else "udf")
    bench.guest.insert(disc.path)
    _expect_thorough_rip(bench, disc)


@case("Every type of disc that udev records is shown, also of a blank one", "udev")
def _recorded_types(bench):
    bench.guest.insert(bench.discs.named("cd", "plain").path)
    rules = "/run/udev/rules.d/99-type.rules"
    script = "mkdir -p /run/udev/rules.d\n"
    for flag in RECORDED_TYPES:
        record = f'ENV{{ID_CDROM_MEDIA_CD}}="", ENV{{ID_CDROM_MEDIA_{flag}}}="1"'
        if flag.endswith("_R"):
            record += ', ENV{ID_CDROM_MEDIA_STATE}="blank", ENV{ID_FS_LABEL_ENC}=""'
        # A worker that is still busy takes the next event with the rules that it has.
        script += (f"echo 'KERNEL==\"sr0\", {record}' >{rules}; udevadm control --reload;"
                   " for try in 1 2 3 4 5; do udevadm trigger --action=change --settle /dev/sr0;"
                   f" udevadm info /dev/sr0 | grep -q ID_CDROM_MEDIA_{flag}=1 && break; done;"
                   f" {TOOL_ROOT}/usr/bin/drutil status | grep Type:\n")
    try:
        lines = bench.guest.check(script, timeout=120).splitlines()
    finally:
        bench.guest.check(f"rm -f {rules}; udevadm control --reload;"
                          " udevadm trigger --action=change --settle /dev/sr0")
    shown = [re.match(r" *Type: (.*?) +Name: /dev/sr0$", line) for line in lines]
    expect_equal([found and found[1] for found in shown], list(RECORDED_TYPES.values()),
                 "the types shown")
