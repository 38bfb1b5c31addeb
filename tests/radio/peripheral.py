#!/usr/bin/env python3
"""Simulates devices of the ORV family on emulated controllers, for the tests with a real radio.

Usage: peripheral.py ADAPTER...     such as hci1 hci3

Reads one command per line from standard input and replies to each with a line: "ok", a value, or
"error" and a reason. N is the position of the adapter on the command line, from 0.

  mode N echo|silent|refuse   sets the reaction to a write: notifications, none, or an error
  burst N COUNT SIZE          sends notifications; the first 4 bytes of each are its number
  advertise N                 restarts advertising, see RadioFixture::Hears
  name N NAME                 sets the advertised name
  values N HEX HEX HEX        sets the payloads of the keys 0x0500, 0x1130 and 0x1118
  appear N, vanish N          switches the controller on, registers and advertises; switches it off
  received N                  returns the number of bytes that the host has written
  power ADAPTER on|off        switches any controller
  scan ADAPTER on|off         scans, like another program beside the library
"""
import collections
import os
import socket
import sys

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

BLUEZ = "org.bluez"
PROPERTIES = "org.freedesktop.DBus.Properties"
OBJECTS = "org.freedesktop.DBus.ObjectManager"
CHARACTERISTIC = BLUEZ + ".GattCharacteristic1"
SERVICE_UUID = "4880c12c-fdcb-4077-8920-a450d7f9b907"
STREAM_UUID = "fec26ec4-6d71-4442-9f81-55bc21d658d6"
OTHER_UUID = "0000%04x-1111-4222-8333-444444444444"


class Refused(dbus.DBusException):
    _dbus_error_name = BLUEZ + ".Error.NotPermitted"


class Exported(dbus.service.Object):
    """A D-Bus object with one interface and constant properties."""

    def __init__(self, bus, path, interface, properties):
        super().__init__(bus, path)
        self.path, self.interface, self.properties = path, interface, properties

    @dbus.service.method(PROPERTIES, in_signature="s", out_signature="a{sv}")
    def GetAll(self, _):
        return self.properties

    @dbus.service.method(PROPERTIES, in_signature="ss", out_signature="v")
    def Get(self, _, name):
        return self.properties[name]


class Application(dbus.service.Object):
    def __init__(self, bus, path, objects):
        super().__init__(bus, path)
        self.path, self.objects = path, objects

    @dbus.service.method(OBJECTS, out_signature="a{oa{sa{sv}}}")
    def GetManagedObjects(self):
        return {dbus.ObjectPath(o.path): {o.interface: o.properties} for o in self.objects}


class Stream(Exported):
    """The characteristic that carries the bytes in both directions."""

    mode = "echo"
    received = 0

    def __init__(self, bus, path, service, flags):
        super().__init__(bus, path, CHARACTERISTIC, {
            "UUID": STREAM_UUID, "Service": dbus.ObjectPath(service),
            "Flags": dbus.Array(flags, signature="s"), "NotifyAcquired": False})
        self.queue, self.socket, self.watch = collections.deque(), None, None

    @dbus.service.method(CHARACTERISTIC, in_signature="aya{sv}")
    def WriteValue(self, value, _):
        if self.mode == "refuse":
            raise Refused("refused")
        self.received += len(value)
        if self.mode == "echo":
            data = bytes(value)
            self.notify(data[i:i + 244] for i in range(0, len(data), 244))

    @dbus.service.method(CHARACTERISTIC, in_signature="a{sv}", out_signature="hq")
    def AcquireNotify(self, options):
        self.release()
        self.socket, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        self.socket.setblocking(False)
        GLib.io_add_watch(self.socket.fileno(), GLib.IO_HUP, self.hung_up, self.socket)
        return dbus.types.UnixFd(theirs.detach()), dbus.UInt16(options.get("mtu", 517))

    def hung_up(self, _, __, which):
        if which is self.socket:
            self.release()
        return False

    def release(self):
        self.queue.clear()
        if self.watch:
            GLib.source_remove(self.watch)
        self.watch = None
        if self.socket:
            self.socket.close()
        self.socket = None

    def notify(self, values):
        """Queues the values. A blocking send would deadlock with a daemon that waits for this process."""
        self.queue.extend(values)
        if self.watch is None and self.socket:
            self.watch = GLib.io_add_watch(self.socket.fileno(), GLib.IO_OUT, self.flush)

    def flush(self, *_):
        try:
            for _ in range(50):
                if not self.queue:
                    self.watch = None
                    return False
                self.socket.send(self.queue[0])
                self.queue.popleft()
        except BlockingIOError:
            pass
        except OSError:
            self.watch = None  # returning False removes this watch
            self.release()
            return False
        return True


class Peripheral:
    def __init__(self, bus, adapter):
        self.bus, self.adapter = bus, adapter
        self.name, self.values, self.serial = "ORV-" + adapter, ["07", "08", "09"], 0
        base = "/orv/" + adapter
        wanted = base + "/wanted"
        # Adds other services before and after the one that the library looks for.
        self.stream = Stream(bus, wanted + "/stream", wanted, ["read", "write", "notify"])
        self.other = Stream(bus, base + "/other/stream", base + "/other", ["read", "write"])
        self.other.properties["UUID"] = OTHER_UUID % 2
        objects = [self.service(base + "/other", OTHER_UUID % 1), self.other,
                   self.service(wanted, SERVICE_UUID), self.stream,
                   self.service(base + "/last", OTHER_UUID % 3)]
        self.application = Application(bus, base, objects)
        self.advertisement = None

    def service(self, path, uuid):
        return Exported(self.bus, path, BLUEZ + ".GattService1", {"UUID": uuid, "Primary": True})

    def controller(self, interface):
        return dbus.Interface(self.bus.get_object(BLUEZ, "/org/bluez/" + self.adapter),
                              BLUEZ + "." + interface)

    def power(self, on):
        power(self.bus, self.adapter, on)

    def appear(self, done):
        self.power(True)
        self.controller("GattManager1").RegisterApplication(
            dbus.ObjectPath(self.application.path), {},
            reply_handler=lambda: self.advertise(done),
            error_handler=lambda error: self.advertise(done) if "AlreadyExists" in
            error.get_dbus_name() else done("error %s" % error))

    def advertise(self, done):
        """Advertises with a new path: the daemon reads an advertisement only at registration."""
        if self.advertisement:
            try:
                self.controller("LEAdvertisingManager1").UnregisterAdvertisement(
                    dbus.ObjectPath(self.advertisement.path))
            except dbus.DBusException:
                pass  # the controller was off, or the daemon was restarted
            self.advertisement.remove_from_connection()
        self.serial += 1
        payloads = [dbus.Array(bytes.fromhex(v), signature="y") for v in self.values]
        self.advertisement = Exported(
            self.bus, "/orv/%s/advertisement%d" % (self.adapter, self.serial),
            BLUEZ + ".LEAdvertisement1", {
                "Type": "peripheral", "LocalName": self.name, "Discoverable": True,
                "ManufacturerData": dbus.Dictionary(
                    {dbus.UInt16(0x0500): payloads[0], dbus.UInt16(0x1118): payloads[2]},
                    signature="qv"),
                "ServiceData": dbus.Dictionary({"1130": payloads[1]}, signature="sv")})
        self.controller("LEAdvertisingManager1").RegisterAdvertisement(
            dbus.ObjectPath(self.advertisement.path), {}, reply_handler=lambda: done("ok"),
            error_handler=lambda error: done("error %s" % error))


def power(bus, adapter, on):
    bus.get_object(BLUEZ, "/org/bluez/" + adapter).Set(
        BLUEZ + ".Adapter1", "Powered", dbus.Boolean(on), dbus_interface=PROPERTIES)


def reply(text):
    print(text, flush=True)


def run(bus, peripherals, words):
    command, target = words[0], words[1]
    if command == "power":
        power(bus, target, words[2] == "on")
        return "ok"
    if command == "scan":
        adapter = dbus.Interface(bus.get_object(BLUEZ, "/org/bluez/" + target),
                                 BLUEZ + ".Adapter1")
        if words[2] == "on":
            adapter.SetDiscoveryFilter({"Transport": "le"})
            adapter.StartDiscovery()
        else:
            adapter.StopDiscovery()
        return "ok"
    peripheral = peripherals[int(target)]
    stream = peripheral.stream
    if command == "mode":
        stream.mode = words[2]
    elif command == "burst":
        count, size = int(words[2]), int(words[3])
        stream.notify(i.to_bytes(4, "little") + bytes([i & 255]) * (size - 4)
                      for i in range(count))
    elif command == "received":
        return str(stream.received)
    elif command == "advertise":
        return peripheral.advertise(reply)
    elif command == "name":
        peripheral.name = " ".join(words[2:])
        return peripheral.advertise(reply)
    elif command == "values":
        peripheral.values = words[2:]
        return peripheral.advertise(reply)
    elif command == "appear":
        return peripheral.appear(reply)
    elif command == "vanish":
        peripheral.power(False)
    else:
        return "error unknown command"
    return "ok"


def main():
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    bus = dbus.SystemBus()
    peripherals = [Peripheral(bus, adapter) for adapter in sys.argv[1:]]
    loop = GLib.MainLoop()

    def read(*_):
        line = sys.stdin.readline()
        if not line:
            loop.quit()
            return False
        try:
            answer = run(bus, peripherals, line.split())
        except Exception as error:  # pylint: disable=broad-except
            answer = "error %s" % str(error).replace("\n", " ")
        if answer:  # otherwise a callback replies later
            reply(answer)
        return True

    # GLib cannot see lines in Python's buffer. So the tests await each reply before the next line.
    sys.stdin = os.fdopen(0, "r", 1)
    GLib.io_add_watch(0, GLib.IO_IN | GLib.IO_HUP, read)
    loop.run()


if __name__ == "__main__":
    main()
