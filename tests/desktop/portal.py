"""A portal that prints what it is asked and answers at once.

portal.py RESPONSE [URI]: a file chooser. portal.py dark: the settings of a desktop that is to be dark.
"""
import sys

from gi.repository import Gio, GLib

NAME = "org.freedesktop.portal.Desktop"
PATH = "/org/freedesktop/portal/desktop"
FILE_CHOOSER, SETTINGS = Gio.DBusNodeInfo.new_for_xml("""
<node>
  <interface name="org.freedesktop.portal.FileChooser">
    <method name="SaveFile">
      <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="a{sv}" direction="in"/>
      <arg type="o" direction="out"/>
    </method>
    <property name="version" type="u" access="read"/>
  </interface>
  <interface name="org.freedesktop.portal.Settings">
    <method name="Read"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="v" direction="out"/></method>
  </interface>
</node>""").interfaces


def say(*words):
    print(*words, flush=True)


def text_of(folder):
    return bytes(folder).rstrip(b"\0").decode()


def asked_for_setting(_bus, _sender, _path, _interface, _method, parameters, invocation):
    say(*parameters.unpack())
    invocation.return_value(GLib.Variant("(v)", (GLib.Variant("v", GLib.Variant("u", 1)),)))


def asked_for_file(bus, sender, _path, _interface, _method, parameters, invocation):
    _parent, title, options = parameters.unpack()
    say(title, options["current_name"], text_of(options["current_folder"]), options["filters"][0][1][0][1])
    request = f"{PATH}/request/{sender[1:].replace('.', '_')}/{options['handle_token']}"
    invocation.return_value(GLib.Variant("(o)", (request,)))
    results = {"uris": GLib.Variant("as", sys.argv[2:])}
    bus.emit_signal(sender, request, "org.freedesktop.portal.Request", "Response",
                    GLib.Variant("(ua{sv})", (int(sys.argv[1]), results)))


def on_bus(bus, _name):
    if sys.argv[1] == "dark":
        bus.register_object(PATH, SETTINGS, asked_for_setting, None, None)
    else:
        bus.register_object(PATH, FILE_CHOOSER, asked_for_file, lambda *_: GLib.Variant("u", 3), None)


Gio.bus_own_name(Gio.BusType.SESSION, NAME, Gio.BusNameOwnerFlags.NONE, on_bus, lambda *_: say("ready"), None)
GLib.MainLoop().run()
