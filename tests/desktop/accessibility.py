"""The tree that screen readers read, of the programs on the desktop."""
import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

from session import wait_for  # noqa: E402


def attempt(call, default=None):
    """A part of the tree may go away at any time."""
    try:
        return call()
    except GLib.Error:
        return default


def children(node):
    for index in range(attempt(node.get_child_count, 0)):
        child = attempt(lambda: node.get_child_at_index(index))
        if child is not None:
            yield child


def below(node):
    for child in children(node):
        yield child
        yield from below(child)


def has_state(node, state):
    return attempt(lambda: node.get_state_set().contains(state), False)


def is_showing(node):
    """GTK leaves out of the tree what cannot be seen, and does not say of the rest that it shows."""
    return has_state(node, Atspi.StateType.VISIBLE)


def has_focus(node):
    return has_state(node, Atspi.StateType.FOCUSED)


def role(node):
    return attempt(node.get_role_name, "")


def name(node):
    return attempt(node.get_name, "")


class Application:
    """The tree of one process."""

    def __init__(self, process):
        self.process = process

    def root(self):
        for application in children(Atspi.get_desktop(0)):
            if attempt(application.get_process_id) == self.process.pid:
                return application
        return None

    def find(self, wanted_role, wanted_name=None):
        """The first part that shows itself, or None."""
        root = self.root()
        for node in below(root) if root else ():
            if role(node) == wanted_role and wanted_name in (None, name(node)) and is_showing(node):
                return node
        return None

    def wait(self, wanted_role, wanted_name=None):
        return wait_for(lambda: self.find(wanted_role, wanted_name), f"{wanted_role} “{wanted_name}”")

    def wait_for_focus(self, wanted_role, wanted_name):
        def focused():
            node = self.find(wanted_role, wanted_name)
            return node if node and has_focus(node) else None
        return wait_for(focused, f"the focus on {wanted_role} “{wanted_name}”")

    def dump(self):
        """All of it, a line each, for the report of a failed test."""
        def lines(node, depth):
            for child in children(node):
                mark = "" if is_showing(child) else " (hidden)"
                focused = " focused" if has_focus(child) else ""
                yield "  " * depth + f"{role(child)} “{name(child)}”{mark}{focused}"
                yield from lines(child, depth + 1)

        root = self.root()
        return "\n".join(lines(root, 0)) if root else "nothing"
