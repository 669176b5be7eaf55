"""A user who may not read the drive, and the permission that helps."""

from cases import Rip, case, expect, expect_equal
from guest import CLI, GuestError

DENIED = ("Permission denied reading the disc. Try again, or grant Full Disk Access to this app in "
          "System Settings.")
USER = 1000


def _as_visitor(command):
    # Without further groups, like a session that is older than the user's place in one.
    return (f"cd /home/visitor && HOME=/home/visitor USER=visitor TMPDIR=/var/tmp"
            f" /usr/bin/setpriv --reuid {USER} --regid {USER} --clear-groups {command}")


def _rip_as_visitor(bench):
    bench.guest.check("rm -f /home/visitor/*.iso")
    return Rip(bench.guest.run(_as_visitor(f"{CLI} rip --json --output /home/visitor/out.iso")))


def _expect_denied(bench):
    rip = _rip_as_visitor(bench)
    expect_equal(rip.status, 1, f"the rip's status ({rip.text[-600:]})")
    expect_equal(rip.last("error"), DENIED, "the error")
    bench.expect_no_file("/home/visitor/out.iso")
    told = bench.guest.run(_as_visitor(f"{CLI} rip --output /home/visitor/out.iso"))
    expect(DENIED in told.err, f"standard error: {told}")
    access = bench.guest.run(_as_visitor(f"{CLI} access"))
    expect_equal(access.status, 1, f"the status of access ({access})")


def _revoke(bench):
    """Takes back what the helper gave: a new node, no place in the group."""
    guest = bench.guest
    guest.check("sed -i '/^cdrom:/s/:[^:]*$/:/' /etc/group;"
                " echo 1 >/sys/class/block/sr0/device/delete;"
                " echo '0 0 0' >/sys/class/scsi_host/host0/scan")
    if not guest.wait_until("test -b /dev/sr0"):
        raise GuestError("the drive does not come back")
    guest.settle()


def _prepare(bench):
    disc = bench.discs.named("cd", "plain")
    bench.guest.insert(disc.path)
    bench.guest.check("chown 1000:1000 /home/visitor; chown 0:24 /dev/sr0; chmod 660 /dev/sr0")
    return disc


@case("A user without access to the drive still sees the disc in it", "udev")
def _sees(bench):
    disc = _prepare(bench)
    result = bench.guest.run(_as_visitor(f"{CLI} status --json"))
    expect_equal(result.status, 0, str(result))
    expect(f'"volumeName":"{disc.label}"' in result.out.replace('": "', '":"'), str(result))


@case("A user without access to the drive gets the permission error", "udev")
def _denied(bench):
    _prepare(bench)
    _expect_denied(bench)


@case("Without udev a user without access is told that the drive may not be asked", "bare ide")
def _denied_without_udev(bench):
    _prepare(bench)
    rip = _rip_as_visitor(bench)
    expect_equal(rip.status, 1, f"the rip's status ({rip.text[-600:]})")
    expect("permission denied" in rip.errors.lower(), f"standard error: {rip.errors!r}")
    bench.expect_no_file("/home/visitor/out.iso")


@case("The helper that grants access refuses arguments, an unknown user and a direct call",
      "udev")
def _refuses(bench):
    _prepare(bench)
    for script in [f"PKEXEC_UID={USER} $HELPER --all", f"PKEXEC_UID={USER} $HELPER visitor",
                   "PKEXEC_UID=4711 $HELPER", "PKEXEC_UID=abc $HELPER", "PKEXEC_UID= $HELPER",
                   "env -u PKEXEC_UID $HELPER",
                   _as_visitor(f"env PKEXEC_UID={USER} $HELPER")]:
        result = bench.guest.run(f"HELPER={_helper(bench)}; " + script)
        expect(result.status not in (0, 126, 127), f"{script}: {result}")
    _expect_denied(bench)


@case("After the helper granted access the same user rips the disc and the next one, and ejects",
      "udev bare")
def _granted(bench):
    disc = _prepare(bench)
    expect_equal(_rip_as_visitor(bench).status, 1, "the status of a rip without access")
    granted = bench.guest.run(f"PKEXEC_UID={USER} {_helper(bench)}")
    expect_equal(granted.status, 0, f"the helper: {granted}")
    rip = _rip_as_visitor(bench)
    expect_equal(rip.status, 0, f"the rip's status ({rip.text[-600:]})")
    bench.expect_same_bytes("/home/visitor/out.iso", disc.path)
    other = bench.discs.other_cd()
    bench.guest.insert(other.path)
    rip = _rip_as_visitor(bench)
    expect_equal(rip.status, 0, f"the status of a rip of the next disc ({rip.text[-600:]})")
    bench.expect_same_bytes("/home/visitor/out.iso", other.path)
    ejected = bench.guest.run(_as_visitor(f"{CLI} eject"))
    expect_equal(ejected.status, 0, f"the status of the eject ({ejected})")
    expect_equal(bench.guest.tray()[0], "open", "the tray")
    access = bench.guest.run(_as_visitor(f"{CLI} access"))
    expect_equal(access.status, 0, f"the status of access ({access})")
    members = bench.guest.check("grep ^cdrom: /etc/group").strip().split(":")[3]
    expect("visitor" in members.split(","), f"members of the group cdrom: {members!r}")


@case("polkit, asked by pkexec, lets the helper run by its own action, and not without it", "udev")
def _by_polkit(bench):
    disc = _prepare(bench)
    _revoke(bench)
    bench.guest.insert(disc.path)
    bench.start_polkit("// nobody may do anything")
    try:
        refused = bench.guest.run(_as_visitor(f"pkexec {_helper(bench)}"))
        expect(refused.status in (126, 127), f"pkexec without a rule: {refused}")
        expect_equal(_rip_as_visitor(bench).status, 1, "the status of a rip without access")
    finally:
        bench.stop_polkit()
    bench.start_polkit(_allow("org.spindrift.grant-disc-access"))
    try:
        granted = bench.guest.run(_as_visitor(f"pkexec {_helper(bench)}"))
    finally:
        bench.stop_polkit()
    expect_equal(granted.status, 0, f"pkexec: {granted}")
    rip = _rip_as_visitor(bench)
    expect_equal(rip.status, 0, f"the rip's status ({rip.text[-600:]})")


@case("A user without access ejects the disc that UDisks2 mounted for him", "udev")
def _eject_by_udisks(bench):
    disc = _prepare(bench)
    _revoke(bench)
    bench.guest.insert(disc.path)
    bench.start_polkit(_allow("org.freedesktop.udisks2."))
    bench.start_udisks()
    try:
        mounted = bench.guest.run(_as_visitor("udisksctl mount -b /dev/sr0"))
        expect_equal(mounted.status, 0, f"udisksctl: {mounted}")
        ejected = bench.guest.run(_as_visitor(f"{CLI} eject"))
        expect_equal(ejected.status, 0, f"the eject's status ({ejected})")
        expect_equal(bench.guest.tray()[0], "open", "the tray")
    finally:
        bench.stop_udisks()
        bench.guest.run("kill $(pidof polkitd)")


def _allow(actions):
    """A rule like the one for whoever sits at the computer."""
    return ("polkit.addRule(function(action, subject) {"
            f' if (action.id.indexOf("{actions}") == 0 && subject.user == "visitor")'
            " return polkit.Result.YES; });")


def _helper(bench):
    found = bench.guest.run("find /opt/spindrift -name grant-disc-access -type f").out.strip()
    expect(found, "the helper is not built")
    return found.splitlines()[0]
