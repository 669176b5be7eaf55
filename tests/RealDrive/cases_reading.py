"""Discs of all kinds: what status says of them, and that a rip holds their bytes."""

from cases import case, expect, expect_equal


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
