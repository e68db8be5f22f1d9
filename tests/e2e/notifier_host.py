"""A host of status notifiers, as a panel has one: keeps the items that register and does to them
what a test asks, one JSON object per line in, one per line out.

    {"do": "items"}                                  the bus names that have registered
    {"do": "properties"}                             what the first item tells of itself
    {"do": "activate", "at": [x, y]}                 a click on it
    {"do": "menu"}                                   its menu: id, label and whether it is enabled
    {"do": "choose", "number": n}                        a click on a line of the menu
"""

import json
import os
import sys

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib

WATCHER = Gio.DBusNodeInfo.new_for_xml("""<node><interface name="org.kde.StatusNotifierWatcher">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
  <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
  <property name="ProtocolVersion" type="i" access="read"/>
  <signal name="StatusNotifierHostRegistered"/>
</interface></node>""").interfaces[0]
ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"


class Host:
    def __init__(self):
        self.items = []
        self.loop = GLib.MainLoop()
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        self.bus.register_object("/StatusNotifierWatcher", WATCHER, self.register, self.tell, None)
        Gio.bus_own_name_on_connection(self.bus, "org.kde.StatusNotifierWatcher",
                                       Gio.BusNameOwnerFlags.NONE, self.ready, None)
        GLib.io_add_watch(GLib.IOChannel.unix_new(sys.stdin.fileno()), GLib.PRIORITY_DEFAULT,
                          GLib.IOCondition.IN | GLib.IOCondition.HUP, self.read)

    def ready(self, *_):
        self.bus.emit_signal(None, "/StatusNotifierWatcher", "org.kde.StatusNotifierWatcher",
                             "StatusNotifierHostRegistered", None)
        self.say("ready")

    def register(self, _bus, sender, _path, _interface, method, arguments, invocation):
        if method == "RegisterStatusNotifierItem":
            name = arguments.unpack()[0]
            self.items.append(sender if name.startswith("/") else name)
            Gio.bus_watch_name_on_connection(
                self.bus, self.items[-1], Gio.BusNameWatcherFlags.NONE, None,
                lambda _, gone: gone in self.items and self.items.remove(gone))
        invocation.return_value(None)

    def tell(self, _bus, _sender, _path, _interface, name):
        return {"RegisteredStatusNotifierItems": GLib.Variant("as", self.items),
                "IsStatusNotifierHostRegistered": GLib.Variant("b", True),
                "ProtocolVersion": GLib.Variant("i", 0)}[name]

    def call(self, path, interface, method, arguments):
        answer = self.bus.call_sync(self.items[0], path, interface, method, arguments, None,
                                    Gio.DBusCallFlags.NONE, 5000, None)
        return answer.unpack()

    def properties(self):
        values = self.call("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "GetAll",
                           GLib.Variant("(s)", (ITEM,)))[0]
        # Of the pictures only their sizes and how many points of them are drawn.
        values["IconPixmap"] = [
            {"size": [width, height], "bytes": len(data), "drawn": sum(map(bool, data[0::4]))}
            for width, height, data in values.get("IconPixmap", [])]
        _, _, title, text = values["ToolTip"]
        values["ToolTip"] = " ".join(filter(None, [title, text]))
        return values

    def menu(self):
        path = self.properties()["Menu"]
        self.call(path, MENU, "AboutToShow", GLib.Variant("(i)", (0,)))
        _, (_, _, lines) = self.call(path, MENU, "GetLayout",
                                     GLib.Variant("(iias)", (0, -1, [])))
        return [{"id": number, "label": line.get("label", "").replace("_", ""),
                 "enabled": line.get("enabled", True)}
                for number, line, _ in lines if line.get("type") != "separator"]

    def choose(self, number):
        self.call(self.properties()["Menu"], MENU, "Event",
                  GLib.Variant("(isvu)", (number, "clicked", GLib.Variant("s", ""), 0)))

    def activate(self, at):
        self.call("/StatusNotifierItem", ITEM, "Activate", GLib.Variant("(ii)", tuple(at)))

    def say(self, answer):
        os.write(sys.stdout.fileno(), json.dumps(answer).encode() + b"\n")

    def read(self, *_):
        line = sys.stdin.readline()
        if not line:
            self.loop.quit()
            return False
        request = json.loads(line)
        what = request.pop("do")
        try:
            self.say(self.items if what == "items" else getattr(self, what)(**request))
        except (GLib.Error, IndexError) as error:
            self.say({"error": str(error)})
        return True


if __name__ == "__main__":
    host = Host()
    host.loop.run()
