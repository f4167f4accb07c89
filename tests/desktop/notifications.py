"""A notification service that prints what it is to show."""
from gi.repository import Gio, GLib

NAME = "org.freedesktop.Notifications"
INTERFACE = Gio.DBusNodeInfo.new_for_xml("""
<node>
  <interface name="org.freedesktop.Notifications">
    <method name="Notify">
      <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
      <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/>
      <arg type="a{sv}" direction="in"/><arg type="i" direction="in"/><arg type="u" direction="out"/>
    </method>
  </interface>
</node>""").interfaces[0]


def say(*words):
    print(*words, sep="|", flush=True)


def asked(_bus, _sender, _path, _interface, _method, parameters, invocation):
    application, _replaced, _icon, title, text, _actions, hints, _time = parameters.unpack()
    say(application, hints["desktop-entry"], "silent" if hints["suppress-sound"] else "loud", title, text)
    invocation.return_value(GLib.Variant("(u)", (1,)))


def on_bus(bus, _name):
    bus.register_object("/org/freedesktop/Notifications", INTERFACE, asked, None, None)


Gio.bus_own_name(Gio.BusType.SESSION, NAME, Gio.BusNameOwnerFlags.NONE, on_bus, lambda *_: say("ready"), None)
GLib.MainLoop().run()
