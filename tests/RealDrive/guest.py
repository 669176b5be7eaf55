"""A running guest: a real kernel in QEMU with one emulated optical drive, /dev/sr0."""

import base64
import dataclasses
import json
import os
import re
import shlex
import socket
import subprocess

import guest_files

SECTOR = 2048
DISK_SIZE = 6 << 30
# A shell starts its background jobs deaf to Ctrl-C, which programs respect.
EVERY_SIGNAL = "/usr/bin/env --default-signal=INT,QUIT"
CLI = f"/{guest_files.INSTALLED_IN}/bin/spindrift-cli"
TOOL_ROOT = f"/{guest_files.INSTALLED_IN}/libexec/spindrift"


class GuestError(Exception):
    """The guest, not the program under test, did something unexpected."""


@dataclasses.dataclass
class Result:
    status: int
    out: str
    err: str

    def __str__(self):
        return f"status {self.status}, output {self.out!r}, errors {self.err!r}"


@dataclasses.dataclass
class Fault:
    """Reads of the sector fail `times` times; for ever when that is None."""
    lba: int
    times: int | None = None


class Guest:
    """Started by the constructor, ended by close(); `bus` is "scsi" or "ide".

    Needs a folder of its own for its disks and logs.
    """

    def __init__(self, folder, build, bus):
        self.bus = bus
        self._folder = folder
        self._disk = folder / "root.img"
        self._log = folder / "drive.log"
        self._discs = 0
        self._inserted = []
        self._jobs = 0
        guest_files.write_initial_ram_disk(folder / "initrd")
        guest_files.write_root_disk(self._disk, build, DISK_SIZE)
        self._start()

    def _start(self):
        self._agent, agent_end = socket.socketpair()
        control, control_end = socket.socketpair()
        drive = {"scsi": ["-device", "virtio-scsi-pci,id=vs", "-device", "scsi-cd,id=cd0,bus=vs.0"],
                 "ide": ["-device", "ide-cd,id=cd0,bus=ide.1,unit=0"]}[self.bus]
        # By the HPET, whose pace is known: on a busy machine the kernel measures the TSC's wrongly,
        # and its seconds are then not ours.
        clock = "tsc=unstable clocksource=hpet"
        self._qemu = subprocess.Popen(
            ["setpriv", "--pdeathsig", "KILL", "qemu-system-x86_64", "-accel", "tcg",
             "-nodefaults", "-no-user-config", "-display", "none", "-M", "pc",
             "-cpu", "qemu64,+rdrand", "-m", "1024", "-no-reboot",
             "-kernel", guest_files.kernel(), "-initrd", self._folder / "initrd",
             "-append", f"console=ttyS0 quiet panic=-1 random.trust_cpu=on {clock} "
                        "mitigations=off nokaslr",
             "-chardev", f"file,id=console,path={self._folder / 'console.log'}",
             "-serial", "chardev:console",
             "-drive", f"file={self._disk},format=raw,if=none,id=root,cache=unsafe,"
                       "discard=unmap,detect-zeroes=unmap",
             "-device", "virtio-blk-pci,drive=root", "-device", "virtio-serial-pci",
             "-chardev", f"socket,id=agent,fd={agent_end.fileno()}",
             "-device", "virtserialport,chardev=agent,name=agent",
             "-chardev", f"socket,id=control,fd={control_end.fileno()}",
             "-mon", "chardev=control,mode=control", *drive,
             "-D", self._log, "-trace", "scsi_req_parsed", "-trace", "scsi_req_parsed_lba",
             "-trace", "scsi_req_build_sense"],
            stdin=subprocess.DEVNULL, pass_fds=[agent_end.fileno(), control_end.fileno()])
        agent_end.close()
        control_end.close()
        self._control = control.makefile("rw")
        control.settimeout(30)
        self._agent.settimeout(300)  # ends a boot that hangs; on a busy machine one takes minutes
        self._answers = self._agent.makefile("rb")
        self._control.readline()
        self.control("qmp_capabilities")
        if self._answers.readline() != b"ready\n":
            raise GuestError("the guest did not boot:\n" + self.console())

    def close(self):
        self._qemu.kill()
        self._qemu.wait()
        self._agent.close()
        self._control.close()

    def console(self):
        return (self._folder / "console.log").read_text(errors="replace")[-4000:]

    # Programs in the guest

    def run(self, script, timeout=60):
        """Runs a shell script in the guest and waits for its end, at most `timeout` seconds."""
        request = f"exec /usr/bin/timeout -s KILL {timeout} sh -c {shlex.quote(script)}"
        self._agent.settimeout(timeout + 20)
        try:
            self._agent.sendall(base64.b64encode(request.encode()) + b"\n")
            status, out, err = (int(field) for field in self._answers.readline().split())
            return Result(status, self._answers.read(out).decode(errors="replace"),
                          self._answers.read(err).decode(errors="replace"))
        except (OSError, ValueError) as problem:
            raise GuestError(f"no answer to {script!r} ({problem}):\n{self.console()}") from problem

    def check(self, script, timeout=60):
        """The same, for a script that must succeed; returns its output."""
        result = self.run(script, timeout)
        if result.status != 0:
            raise GuestError(f"{script!r} in the guest: {result}")
        return result.out

    def start(self, script):
        """Starts a shell script in the guest without waiting for it."""
        self._jobs += 1
        return Job(self, f"/run/job{self._jobs}", script)

    def wait_until(self, script, timeout=20):
        """Waits until the script succeeds in the guest; false when it never did."""
        loop = f"until {{ {script}; }} >/dev/null 2>&1; do usleep 20000; done"
        limited = f"/usr/bin/timeout {timeout} sh -c {shlex.quote(loop)}"
        return self.run(limited, timeout + 5).status == 0

    def reading(self, path):
        """A process whose standard output is a file of the guest's disk, read around the guest."""
        self.check("sync")
        return subprocess.Popen([guest_files.which("debugfs"), "-R", f"cat {path}", self._disk],
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)

    # The drive

    def insert(self, image, faults=(), bytes_per_second=0, head_start=0, noticed=True):
        """Changes the disc at once, as when a hand pulls one out and puts one in; unless told
        otherwise, returns when the guest has noticed. The pace, if there is one, counts from the
        first `head_start` bytes on that are read."""
        self.remove()
        self._discs += 1
        name = f"disc{self._discs}"
        node = {"driver": "file", "filename": str(image), "read-only": True}
        if faults:
            rules = []
            for fault in faults:
                rule = {"event": "none", "iotype": "read", "errno": 61, "sector": fault.lba * 4,
                        "immediately": True, "once": fault.times is not None}
                rules += [rule] * (fault.times or 1)
            node = {"driver": "blkdebug", "image": node, "inject-error": rules, "read-only": True}
        node = {"driver": "raw", "file": node, "read-only": True}
        if bytes_per_second:
            self.control("object-add", {
                "qom-type": "throttle-group", "id": f"pace{self._discs}",
                "limits": {"bps-read": bytes_per_second,
                           "bps-read-max": max(head_start, bytes_per_second)}})
            node = {"driver": "throttle", "throttle-group": f"pace{self._discs}", "file": node,
                    "read-only": True}
        self.control("blockdev-add", {**node, "node-name": name})
        self._inserted.append(name)
        self.control("blockdev-insert-medium", {"id": "cd0", "node-name": name})
        self.close_tray()
        if noticed:
            self.wait_for_disc()
            self.settle()

    def swap(self, image):
        """Another disc between two reads: no read meets an open tray."""
        self.control("blockdev-change-medium", {"id": "cd0", "filename": str(image),
                                                "format": "raw", "force": True,
                                                "read-only-mode": "read-only"})
        self._forget_discs()

    def settle(self):
        """Waits until udev, where it runs, has no more to do."""
        if self.run("pidof systemd-udevd").status == 0:
            self.check("udevadm settle --timeout=20")

    def remove(self):
        """Opens the tray by force and takes the disc away."""
        self.control("blockdev-open-tray", {"id": "cd0", "force": True})
        self.control("blockdev-remove-medium", {"id": "cd0"})
        self._forget_discs()

    def _forget_discs(self):
        for name in self._inserted:
            self.control("blockdev-del", {"node-name": name})
        self._inserted.clear()

    def close_tray(self):
        """The emulated drive, unlike a real one, announces a removal only with its tray closed."""
        self.control("blockdev-close-tray", {"id": "cd0"})

    def press_button(self):
        """The button on the drive: a locked one only tells the guest that it was pressed."""
        try:
            self.control("blockdev-open-tray", {"id": "cd0"})
        except GuestError as refused:
            if "is locked" not in str(refused):
                raise

    def wait_for_disc(self):
        """Returns when the kernel has noticed the disc."""
        ready = "dd if=/dev/sr0 of=/dev/null bs=2048 count=1 iflag=direct"
        if not self.wait_until(ready):
            raise GuestError("the kernel does not see the inserted disc")

    def plug_in_second_drive(self, image):
        """A SCSI drive with a disc in it: /dev/sr1."""
        self.control("blockdev-add", {
            "node-name": "second", "driver": "raw", "read-only": True,
            "file": {"driver": "file", "filename": str(image), "read-only": True}})
        self.control("device_add", {"driver": "scsi-cd", "id": "cd1", "bus": "vs.0", "lun": 0,
                                    "scsi-id": 1, "drive": "second"})

    def unplug_second_drive(self):
        self.control("device_del", {"id": "cd1"})
        # QEMU lets go of it when the guest has.
        for _ in range(100):
            try:
                self.control("blockdev-del", {"node-name": "second"})
                return
            except GuestError:
                self.run("usleep 100000")
        raise GuestError("the guest does not let go of the second drive")

    def set_pace(self, bytes_per_second):
        """Of the disc that was inserted with one; 0 is the drive's full speed."""
        self.control("qom-set", {
            "path": f"/objects/pace{self._discs}", "property": "limits",
            "value": {"bps-read": bytes_per_second, "bps-read-max": bytes_per_second}})

    def tray(self):
        """The drive's own view: ("open" or "closed", locked or not, disc inside or not)."""
        for device in self.control("query-block"):
            if device.get("qdev", "").split("/")[-1] == "cd0":
                return ("open" if device.get("tray_open") else "closed", device.get("locked"),
                        "inserted" in device)
        raise GuestError("QEMU does not list the drive")

    def commands(self):
        """A mark in the log of the commands that the drive gets; see Commands."""
        return Commands(self._log)

    def control(self, command, arguments=None):
        request = {"execute": command, "arguments": arguments or {}}
        try:
            self._control.write(json.dumps(request) + "\n")
            self._control.flush()
            while True:
                answer = json.loads(self._control.readline())
                if "event" not in answer:
                    break
        except (OSError, ValueError) as problem:
            raise GuestError(f"QEMU gave no answer to {command}: {problem}") from problem
        if "error" in answer:
            raise GuestError(f"{command}: {answer['error']['desc']}")
        return answer["return"]


class Job:
    """A shell script that runs in the guest while the host does other things."""

    def __init__(self, guest, folder, script):
        self._guest = guest
        self._folder = folder
        self.ended = f"test -e {folder}/status"  # a condition for the guest's shell
        guest.check(f"mkdir {folder}; cat >{folder}/script <<'END_OF_SCRIPT'\n{script}\n"
                    f"END_OF_SCRIPT\n( {EVERY_SIGNAL} sh {folder}/script </dev/null >{folder}/out"
                    f" 2>{folder}/err; echo $? >{folder}/ended; mv {folder}/ended {folder}/status )"
                    " >/dev/null 2>&1 &")

    def running(self):
        return self._guest.run(self.ended).status != 0

    def wait(self, timeout=60):
        if not self._guest.wait_until(self.ended, timeout):
            raise GuestError(f"still running after {timeout} s: "
                             + self._guest.run(f"cat {self._folder}/script; ps").out)
        status = int(self._guest.check(f"cat {self._folder}/status"))
        return Result(status, self._guest.check(f"cat {self._folder}/out"),
                      self._guest.check(f"cat {self._folder}/err"))


@dataclasses.dataclass
class Command:
    opcode: int
    lba: int
    length: int  # bytes
    failed: bool = False

    @property
    def sectors(self):
        return self.length // SECTOR


class Commands:
    """The commands that a SCSI drive got since this object was made, from QEMU's own log."""

    READ = 0x28
    _PARSED = r"scsi_req_parsed .* tag (\d+) command (\d+) .*length (\d+)"

    def __init__(self, log):
        self._log = log
        self._from = os.stat(log).st_size if log.exists() else 0

    def all(self):
        with open(self._log, encoding="ascii", errors="replace") as file:
            file.seek(self._from)
            text = file.read()
        commands, of_tag = [], {}
        for line in text.splitlines():
            if found := re.match(self._PARSED, line):
                of_tag[found[1]] = Command(int(found[2]), 0, int(found[3]))
                commands.append(of_tag[found[1]])
            elif found := re.match(r"scsi_req_parsed_lba .* tag (\d+) .*lba (\d+)", line):
                if found[1] in of_tag:
                    of_tag[found[1]].lba = int(found[2])
            elif found := re.match(r"scsi_req_build_sense .* tag (\d+) ", line):
                if found[1] in of_tag:
                    of_tag[found[1]].failed = True
        return commands

    def reads(self):
        return [command for command in self.all() if command.opcode == self.READ]
