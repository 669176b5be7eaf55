#!/usr/bin/python3
"""A disc service for tests on the bus of DBUS_SYSTEM_BUS_ADDRESS; ends with the bus.

Arguments: the name of the error that Unmount ends with, or "none", and a file for the calls.
Prints "ready" when it can be called."""
import os
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

SERVICE = "org.freedesktop.UDisks2"
BLOCK = "/org/freedesktop/UDisks2/block_devices/sr0"
DRIVE = "/org/freedesktop/UDisks2/drives/The_5fDrive"


def log(call, options):
    with open(sys.argv[2], "a") as calls:
        calls.write(f"{call} {dict(options)}\n")


class Refusal(dbus.DBusException):
    def __init__(self, name):
        super().__init__("The service says no")
        self._dbus_error_name = name


class Block(dbus.service.Object):
    @dbus.service.method(SERVICE + ".Filesystem", in_signature="a{sv}")
    def Unmount(self, options):
        log("Unmount", options)
        if sys.argv[1] != "none":
            raise Refusal(sys.argv[1])

    @dbus.service.method(dbus.PROPERTIES_IFACE, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        assert (interface, name) == (SERVICE + ".Block", "Drive")
        return dbus.ObjectPath(DRIVE)


class Drive(dbus.service.Object):
    @dbus.service.method(SERVICE + ".Drive", in_signature="a{sv}")
    def Eject(self, options):
        log("Eject", options)


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.bus.BusConnection(os.environ["DBUS_SYSTEM_BUS_ADDRESS"])
name = dbus.service.BusName(SERVICE, bus)
objects = [Block(bus, BLOCK), Drive(bus, DRIVE)]
loop = GLib.MainLoop()
bus.call_on_disconnection(lambda connection: loop.quit())
print("ready", flush=True)
loop.run()
