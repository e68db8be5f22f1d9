"""A desktop's dialog for folders that nobody answers: prints the window that each belongs to, one a
line, as the portal names windows."""

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib

FILE_CHOOSER = Gio.DBusNodeInfo.new_for_xml("""<node>
 <interface name="org.freedesktop.portal.FileChooser">
  <method name="OpenFile">
   <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="a{sv}" direction="in"/>
   <arg type="o" direction="out"/>
  </method>
  <property name="version" type="u" access="read"/>
 </interface></node>""").interfaces[0]
PATH = "/org/freedesktop/portal/desktop"


def open_file(_bus, _sender, _path, _interface, _method, arguments, invocation):
    parent, _title, options = arguments.unpack()
    print(parent, flush=True)
    invocation.return_value(GLib.Variant("(o)", (f"{PATH}/request/{options['handle_token']}",)))


if __name__ == "__main__":
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    bus.register_object(PATH, FILE_CHOOSER, open_file, lambda *_: GLib.Variant("u", 4), None)
    Gio.bus_own_name_on_connection(bus, "org.freedesktop.portal.Desktop",
                                   Gio.BusNameOwnerFlags.NONE,
                                   lambda *_: print("ready", flush=True), None)
    GLib.MainLoop().run()
