"""Comparisons of the windows, on a display of their own."""

import os
import shutil
import subprocess
from contextlib import contextmanager

from comparisons import GIB, MIB
from measure import Figure, in_turn, ratios, run


@contextmanager
def display(setting):
    """An X server of this run's own; the environment that reaches it."""
    runtime = setting.path("runtime")
    os.makedirs(runtime, mode=0o700, exist_ok=True)
    read_end, write_end = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset"],
                              stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                              pass_fds=(write_end,))
    os.close(write_end)
    try:
        with os.fdopen(read_end) as pipe:
            number = pipe.readline().strip()
        if not number:
            raise SystemExit("bench: Xvfb did not start")
        yield {"DISPLAY": f":{number}", "QT_QPA_PLATFORM": "xcb", "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent",
               "XDG_RUNTIME_DIR": runtime}
    finally:
        server.terminate()
        server.wait()


def world(setting, disc, environment):
    """A user of this run's own, with a practice drive."""
    return {**environment, **setting.practice_drive("window-" + os.path.basename(disc), disc),
            "XDG_CONFIG_HOME": setting.path("window-config"), "XDG_DATA_HOME": setting.path("window-data"),
            "TMPDIR": setting.folder}


def window(setting):
    """The main window: first paint, idle cost, answers while a rip crosses file systems."""
    program = setting.program("window-bench")
    disc = setting.image("window.img", 16 * MIB)
    with display(setting) as environment:
        environment = world(setting, disc, environment)
        results = in_turn(10, ours=lambda: run([program, "first-paint"], environment),
                          minimal=lambda: run([setting.program("minimal-window")], environment))
        yield Figure(9, "main window: first paint / a minimal Qt Widgets program",
                     ratios(results, "ours", "minimal", lambda c: c.wall), 2.0)

        def share():
            return 100 * float(subprocess.check_output([program, "idle", str(setting.seconds)], env={**os.environ, **environment}))

        yield Figure(9, "main window, idle with polls: % of a core", [share() for _ in range(3)], 1.0)

        # From the disk to memory: the image crosses file systems at the end.
        size = GIB if setting.full and shutil.disk_usage("/dev/shm").free > 2 * GIB else 128 * MIB
        large = setting.image("window-large.img", size)
        environment = world(setting, large, environment)
        destination = f"/dev/shm/spindrift-bench-{os.getpid()}.iso"
        longest = []
        try:
            for _ in range(3):
                setting.restore_disc(large)
                longest.append(float(subprocess.check_output([program, "rip", destination], env={**os.environ, **environment})))
        finally:
            if os.path.exists(destination):
                os.unlink(destination)
        yield Figure(9, f"main thread busy at most, rip of {size // MIB} MiB to another file system, ms", longest, 100)


def theme(setting):
    """The glossy look's animations: their share of one core."""
    program = setting.program("glossy-window")
    if not os.path.exists(program):
        return
    with display(setting) as environment:
        for scale, limit in (("1", 4.0), ("2", 6.0)):
            text = subprocess.check_output([program, str(setting.seconds)], env={**os.environ, **environment, "QT_SCALE_FACTOR": scale}, text=True)
            shares = {words[0]: float(words[1]) for words in (line.split() for line in text.splitlines())}
            yield Figure(10, f"gel bar and pulse at {scale}x: % of a core", [shares["animated"]], limit)
            yield Figure(10, f"gel bar and pulse at {scale}x, minimised: % of a core", [shares["minimised"]], 0.3)


ALL = {"window": window, "theme": theme}
