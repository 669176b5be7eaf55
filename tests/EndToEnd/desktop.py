"""A small desktop for one test run: X server, window manager, session bus, notifications.

Everything is started by this module and ended by it, by process id; nothing of the user's own session
is used. Import `Atspi` only after `Desktop.start()`, because it connects to the bus of the environment.
"""

import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

LIMIT = 60  # seconds after which a wait gives up; ends a run that would hang, decides nothing else


class Missing(Exception):
    """A program that the desktop needs is not installed."""


def wait_for(condition, what, limit=LIMIT):
    """Polls until the condition gives something true, and returns that."""
    deadline = time.monotonic() + limit
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > deadline:
            raise AssertionError(f"gave up waiting for {what}")
        time.sleep(0.02)


class Desktop:
    def __init__(self):
        self.folder = tempfile.mkdtemp(prefix="spindrift-e2e-")
        self.children = []
        self.notification_log = os.path.join(self.folder, "notifications.log")

    def start(self):
        for program in ("Xvfb", "openbox", "dbus-daemon", "xprop", "xdotool"):
            if shutil.which(program) is None:
                raise Missing(program)
        runtime = os.path.join(self.folder, "runtime")
        os.mkdir(runtime, 0o700)
        os.environ["XDG_RUNTIME_DIR"] = runtime
        os.environ["HOME"] = self.folder
        for name in ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS",
                     "SPINDRIFT_TOOL_ROOT", "SPINDRIFT_PRACTICE_DRIVE", "SPINDRIFT_DRIVE"):
            os.environ.pop(name, None)
        self._start_display()
        self._start_bus()
        manager = self._start("openbox", "--sm-disable")

        def window_manager_is_there():
            if manager.poll() is not None:
                raise AssertionError(f"openbox ended with {manager.returncode}: {self.errors()}")
            return "window id" in subprocess.run(["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"],
                                                 capture_output=True, text=True, check=False).stdout

        wait_for(window_manager_is_there, "the window manager")
        self._start("/usr/bin/python3", "-m", "dbusmock", "--session", "--template", "notification_daemon",
                    output=open(self.notification_log, "wb"))
        wait_for(lambda: b"true" in subprocess.run(
            ["dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/org/freedesktop/DBus",
             "org.freedesktop.DBus.NameHasOwner", "string:org.freedesktop.Notifications"],
            capture_output=True, check=False).stdout, "the notification daemon")

    def _start(self, *arguments, output=None, pass_fds=()):
        child = subprocess.Popen(arguments, stdin=subprocess.DEVNULL, stdout=output or subprocess.DEVNULL,
                                 stderr=open(os.path.join(self.folder, "errors.log"), "ab"),
                                 pass_fds=pass_fds)
        self.children.append(child)
        return child

    def _start_display(self):
        read_end, write_end = os.pipe()
        # A server that resets when its last client goes drops those that are just connecting.
        self._start("Xvfb", "-displayfd", str(write_end), "-screen", "0", "1400x1100x24", "-nolisten", "tcp",
                    "-noreset", pass_fds=(write_end,))
        os.close(write_end)
        with os.fdopen(read_end) as pipe:
            number = pipe.readline().strip()
        if not number:
            raise AssertionError("Xvfb did not start")
        os.environ["DISPLAY"] = ":" + number

    def _start_bus(self):
        read_end, write_end = os.pipe()
        self._start("dbus-daemon", "--session", "--nofork", f"--print-address={write_end}", pass_fds=(write_end,))
        os.close(write_end)
        with os.fdopen(read_end) as pipe:
            os.environ["DBUS_SESSION_BUS_ADDRESS"] = pipe.readline().strip()

    def errors(self):
        with open(os.path.join(self.folder, "errors.log"), "rb") as file:
            return file.read().decode(errors="replace")

    def notifications(self):
        """The (title, body) of every notification so far."""
        with open(self.notification_log, "rb") as file:
            text = file.read().decode(errors="replace")
        calls = re.findall(r'Notify "Spindrift" \d+ "[^"]*" "([^"]*)" "([^"]*)"', text)
        return [tuple(call) for call in calls]

    def stop(self):
        for child in reversed(self.children):
            if child.poll() is None:
                child.terminate()
        for child in self.children:
            try:
                child.wait(10)
            except subprocess.TimeoutExpired:
                child.kill()
                child.wait()
        shutil.rmtree(self.folder, ignore_errors=True)


class Program:
    """The program under test, with a world of its own, seen through its accessible names."""

    def __init__(self, binary, folder, practice_drive, environment=None, arguments=()):
        from gi.repository import Atspi
        self.atspi = Atspi
        self.folder = folder
        full = dict(os.environ)
        full.update({
            "QT_QPA_PLATFORM": "xcb", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "LC_ALL": "C.UTF-8",
            "XDG_CONFIG_HOME": os.path.join(folder, "config"), "XDG_DATA_HOME": os.path.join(folder, "data"),
            "TMPDIR": os.path.join(folder, "tmp"), "HOME": os.path.join(folder, "home"),
            "SPINDRIFT_PRACTICE_DRIVE": practice_drive, "QT_ACCESSIBILITY": "1",
        })
        full.update(environment or {})
        for name in ("config", "data", "tmp", "home"):
            os.makedirs(os.path.join(folder, name), exist_ok=True)
        self.errors = open(os.path.join(folder, "stderr"), "wb")
        self.child = subprocess.Popen([binary, *arguments], env=full, stdin=subprocess.DEVNULL,
                                      stdout=subprocess.DEVNULL, stderr=self.errors)

    # The accessible tree

    def application(self):
        desktop = self.atspi.get_desktop(0)
        for index in range(desktop.get_child_count()):
            try:
                child = desktop.get_child_at_index(index)
                if child is not None and child.get_process_id() == self.child.pid:
                    return child
            except Exception:  # a program that has just ended
                continue
        return None

    def walk(self, node=None):
        node = node or self.application()
        if node is None:
            return
        stack = [node]
        while stack:
            current = stack.pop(0)
            yield current
            try:
                stack = [current.get_child_at_index(i) for i in range(current.get_child_count())] + stack
                stack = [child for child in stack if child is not None]
            except Exception:
                continue

    def is_showing(self, node):
        states = node.get_state_set()
        return states.contains(self.atspi.StateType.SHOWING) and states.contains(self.atspi.StateType.VISIBLE)

    def is_a(self, role, node):
        """Whether it has the role; what a role is called in words differs between releases."""
        return node.get_role() == getattr(self.atspi.Role, role.upper().replace(" ", "_"))

    def all(self, name=None, role=None, within=None):
        found = []
        for node in self.walk(within):
            try:
                if name is not None and node.get_name() != name:
                    continue
                if role is not None and not self.is_a(role, node):
                    continue
                if self.is_showing(node):
                    found.append(node)
            except Exception:
                continue
        return found

    def find(self, name=None, role=None, within=None, limit=LIMIT):
        return wait_for(lambda: next(iter(self.all(name, role, within)), None),
                        f"{role or 'anything'} named {name!r}; there is: {self.names()}", limit)

    def shows(self, name, role=None):
        return bool(self.all(name, role))

    def names(self):
        names = []
        for node in self.walk():
            try:
                if node.get_name() and self.is_showing(node):
                    names.append(f"{node.get_role_name()} {node.get_name()!r}")
            except Exception:
                continue
        return "; ".join(names)

    def is_enabled(self, node):
        return node.get_state_set().contains(self.atspi.StateType.ENABLED)

    def is_checked(self, node):
        return node.get_state_set().contains(self.atspi.StateType.CHECKED)

    def press(self, name, role="push button", within=None):
        node = wait_for(lambda: next((n for n in self.all(name, role, within) if self.is_enabled(n)), None),
                        f"an enabled {role} named {name!r}; there is: {self.names()}")
        self.act(node)

    def act(self, node):
        action = node.get_action_iface()
        for index in range(action.get_n_actions()):
            if action.get_action_name(index).lower() in ("press", "toggle", "showmenu", "click"):
                action.do_action(index)
                return
        action.do_action(0)

    def type_into(self, node, text):
        node.get_editable_text_iface().set_text_contents(text)

    def key(self, keys):
        """Presses keys in the program's window, once the window manager has made it the active one."""
        window = wait_for(self.window_ids, "a window")[0]
        subprocess.run(["xdotool", "windowactivate", "--sync", window], check=False, stderr=subprocess.DEVNULL)
        subprocess.run(["xdotool", "key", "--clearmodifiers", keys], check=True)

    def key_to_focus(self, *keys):
        """Presses keys wherever the keyboard's focus is."""
        subprocess.run(["xdotool", "key", "--clearmodifiers", *keys], check=True)

    def write_to_focus(self, text):
        """Types a text wherever the keyboard's focus is."""
        subprocess.run(["xdotool", "type", "--clearmodifiers", text], check=True)

    def focused(self):
        """The name of the control with the keyboard's focus; empty while none has it."""
        for node in self.walk():
            try:
                if node.get_state_set().contains(self.atspi.StateType.FOCUSED) and self.is_showing(node):
                    return node.get_name()
            except Exception:
                continue
        return ""

    def listen(self):
        """Begins to hear what a screen reader does; returns a function that gives the texts of the
        notifications that have appeared since."""
        from gi.repository import GLib
        heard = []

        def on_event(event):
            try:
                source = event.source
                if event.detail1 == 1 and self.is_a("notification", source):
                    heard.append(source.get_name())
            except Exception:  # it has gone
                pass

        self.listener = self.atspi.EventListener.new(on_event)
        self.listener.register("object:state-changed:showing")

        def so_far():
            while GLib.MainContext.default().iteration(False):
                pass
            return heard

        return so_far

    def ended(self):
        """The program's exit status once it has ended by itself; absent before."""
        return self.child.poll()

    def window_ids(self):
        out = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid", str(self.child.pid)],
                             capture_output=True, text=True, check=False).stdout
        return out.split()

    # The end

    def stop(self):
        if self.child.poll() is None:
            self.child.send_signal(signal.SIGTERM)
            try:
                self.child.wait(10)
            except subprocess.TimeoutExpired:
                self.child.kill()
                self.child.wait()
        self.errors.close()

    def standard_error(self):
        """What the program printed, without a line of Qt's own about its file dialog."""
        with open(os.path.join(self.folder, "stderr"), "rb") as file:
            lines = file.read().decode(errors="replace").splitlines()
        return "\n".join(line for line in lines if not line.startswith("QAccessibleTable::child"))


def main_guard(desktop):
    """Starts the desktop; ends the run with status 77 and the reason where it cannot be had."""
    try:
        desktop.start()
        import gi
        gi.require_version("Atspi", "2.0")
    except (Missing, ImportError, ValueError) as reason:
        desktop.stop()
        print(f"SKIPPED: the window tests need {reason}")
        sys.exit(1 if os.environ.get("SPINDRIFT_REQUIRE_ALL") == "1" else 77)
    except BaseException:
        desktop.stop()
        raise
