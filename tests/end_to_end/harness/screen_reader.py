"""What a screen reader sees of a program: its windows, texts and controls, by role and name."""
import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

ACCESSIBLE = "org.a11y.atspi.Accessible"
ROOT = "/org/a11y/atspi/accessible/root"
CALL_TIMEOUT_MS = 10_000
ALERTS = ("alert", "alert message")

# Bits of a state set.
CHECKED, EDITABLE, ENABLED, FOCUSED, SHOWING = 4, 7, 8, 12, 25


class ScreenReader:
    def __init__(self, session_bus_address):
        session = _connect(session_bus_address)
        address = _call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")[0]
        self.bus = _connect(address)
        self.heard = None

    def listen(self):
        """From now on `said` tells what alerts have said. Programs tell of events that someone asked for."""
        listens = self.heard is not None
        self.heard = []
        if listens:
            return
        for event in ("object:state-changed:showing", "object:property-change:accessible-name"):
            _call(self.bus, "org.a11y.atspi.Registry", "/org/a11y/atspi/registry",
                  "org.a11y.atspi.Registry", "RegisterEvent", GLib.Variant("(s)", (event,)))
        self.bus.signal_subscribe(None, "org.a11y.atspi.Event.Object", None, None, None,
                                  Gio.DBusSignalFlags.NONE, self._hear)

    def said(self):
        """The texts of the alerts that were shown since the reader listens, in order."""
        while GLib.MainContext.default().iteration(False):
            pass
        return self.heard

    def _hear(self, _bus, owner, path, _interface, event, arguments):
        kind, shown = arguments.unpack()[:2]
        node = Node(self.bus, owner, path)
        if (event, kind, shown) == ("StateChanged", "showing", 1) and node.role() in ALERTS:
            self.heard.append(node.name())

    def program(self, pid):
        """The program with this process id, or None as long as it has not told of itself."""
        registry = Node(self.bus, "org.a11y.atspi.Registry", ROOT)
        for child in registry.children():
            if self._pid_of(child) == pid:
                return child
        return None

    def _pid_of(self, node):
        try:
            return _call(self.bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                         "org.freedesktop.DBus", "GetConnectionUnixProcessID",
                         GLib.Variant("(s)", (node.owner,)))[0]
        except GLib.Error:
            return None


class Node:
    """One object on the screen. Every look asks the program anew; one that is gone is empty."""

    def __init__(self, bus, owner, path):
        self.bus, self.owner, self.path = bus, owner, path

    def children(self):
        answer = self._ask(ACCESSIBLE, "GetChildren", default=([],))
        return [Node(self.bus, owner, path) for owner, path in answer[0]]

    def name(self):
        answer = self._ask("org.freedesktop.DBus.Properties", "Get",
                           GLib.Variant("(ss)", (ACCESSIBLE, "Name")), default=("",))
        return answer[0]

    def role(self):
        return self._ask(ACCESSIBLE, "GetRoleName", default=("",))[0]

    def has(self, state):
        low, high = (*self._ask(ACCESSIBLE, "GetState", default=([0, 0],))[0], 0, 0)[:2]
        return bool((high << 32 | low) >> state & 1)

    def text(self):
        """What a text field holds."""
        return self._ask("org.a11y.atspi.Text", "GetText", GLib.Variant("(ii)", (0, -1)),
                         default=("",))[0]

    def centre(self):
        """Its middle on the screen, for a click."""
        x, y, width, height = self._ask("org.a11y.atspi.Component", "GetExtents",
                                        GLib.Variant("(u)", (0,)), default=((0, 0, 0, 0),))[0]
        return x + width // 2, y + height // 2

    def showing(self):
        """Itself and everything below it that can be seen, in order."""
        if self.has(SHOWING):
            yield self
            for child in self.children():
                yield from child.showing()

    def _ask(self, interface, method, arguments=None, default=None):
        try:
            return _call(self.bus, self.owner, self.path, interface, method, arguments)
        except GLib.Error:
            return default


def _connect(address):
    flags = (Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
             | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION)
    return Gio.DBusConnection.new_for_address_sync(address, flags, None, None)


def _call(bus, owner, path, interface, method, arguments=None):
    return bus.call_sync(owner, path, interface, method, arguments, None,
                         Gio.DBusCallFlags.NONE, CALL_TIMEOUT_MS, None).unpack()
