#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The Vidlets developers
# SPDX-License-Identifier: MIT
"""read_tips.py HOST DATA-PATH [--sequence KEYS]: does with the tips of a host what screen readers do.

It needs a display and a session bus. With a sequence, in the words of xdotool, tips are called from the
keyboard, else the host is told to bring them up.
"""

import argparse
import subprocess
import sys
import time

import pyatspi
from gi.repository import Atspi, Gio, GLib

PATIENCE_S = 20
HOST_DESCRIPTION = "What the host says"
SPOKEN_PEN = "Pen. P. Draws freehand, just as you move. Hold the left button and move. The stroke is"
PEN_TEXT = "Draws freehand, just as you move. Hold the left button and move."
SPOKEN_ELLIPSE = "Ellipse. Shift+R. Draws an ellipse into a rectangle. The ellipse touches the four sides"


class Failure(Exception):
    pass


def switch_on():
    """As the settings of a desktop do for a screen reader."""
    setting = GLib.Variant("(ssv)", ("org.a11y.Status", "IsEnabled", GLib.Variant("b", True)))
    Gio.bus_get_sync(Gio.BusType.SESSION).call_sync(
        "org.a11y.Bus",
        "/org/a11y/bus",
        "org.freedesktop.DBus.Properties",
        "Set",
        setting,
        None,
        Gio.DBusCallFlags.NONE,
        -1,
    )


def wait_for(what, answer):
    """Asks until there is an answer, which may come with an event."""
    deadline = time.monotonic() + PATIENCE_S
    while time.monotonic() < deadline:
        while GLib.MainContext.default().iteration(False):
            pass
        try:
            result = answer()
        except GLib.Error:  # What was there a moment ago may be gone.
            result = None
        if result:
            return result
        time.sleep(0.05)
    raise Failure(f"there was never {what}")


def children(node):
    # What is remembered of a node may be out of date.
    node.clear_cache()
    all_of_it = (node.get_child_at_index(i) for i in range(node.get_child_count()))
    return [child for child in all_of_it if child]


def find(node, role, name=None):
    for child in children(node):
        if child.get_role() == role and name in (None, child.get_name()):
            return child
        below = find(child, role, name)
        if below:
            return below
    return None


def require(node, role, name):
    return wait_for(f"a {Atspi.role_get_name(role)} {name!r}", lambda: find(node, role, name))


def description_of(node):
    node.clear_cache()
    return node.get_description()


def wait_for_description(node, start):
    wait_for(f"the description {start!r}", lambda: description_of(node).startswith(start))


def extents_of(node):
    return node.get_extents(Atspi.CoordType.SCREEN)


def press(node):
    action = node.get_action_iface()
    names = [Atspi.Action.get_action_name(action, i) for i in range(action.get_n_actions())]
    if "Press" not in names:
        raise Failure(f"{node.get_name()!r} cannot be pressed, but has {names}")
    action.do_action(names.index("Press"))


def is_below(node, above):
    while node:
        if node == above:
            return True
        node = node.get_parent()
    return False


class Stage:
    def __init__(self, arguments):
        self.sequence = arguments.sequence
        self.changes = []
        pyatspi.Registry.registerEventListener(
            self.note, "object:property-change:accessible-description"
        )
        self.host = subprocess.Popen(
            [arguments.host, arguments.data_path],
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            text=True,
        )
        self.application = wait_for("a host", self.find_host)
        self.pen = require(self.application, Atspi.Role.PUSH_BUTTON, "tool.pen")
        self.ellipse = require(self.application, Atspi.Role.PUSH_BUTTON, "tool.ellipse")

    def find_host(self):
        for application in children(pyatspi.Registry.getDesktop(0)):
            if application.get_process_id() == self.host.pid:
                return application
        return None

    def note(self, event):
        self.changes.append(event.source.get_name())

    def wait_for_change(self, name):
        """Each event is good for one change. What it brings along is up to the toolkit."""
        wait_for(f"an event that {name} is described anew", lambda: name in self.changes)
        self.changes.remove(name)

    def tip(self):
        return find(self.application, Atspi.Role.TOOL_TIP)

    def tip_named(self, name):
        return wait_for(f"a tip {name!r}", lambda: find(self.application, Atspi.Role.TOOL_TIP, name))

    def wait_for_no_tip(self):
        """The popup is kept for the next tip, but it shows nothing meanwhile."""

        def is_gone():
            tip = self.tip()
            return not tip or not tip.get_state_set().contains(Atspi.StateType.SHOWING)

        wait_for("the end of the tip", is_gone)

    def hover(self, control):
        place = control.get_extents(Atspi.CoordType.SCREEN)
        for step in (4, 0):
            x, y = place.x + place.width // 2 - step, place.y + place.height // 2 - step
            subprocess.run(["xdotool", "mousemove", str(x), str(y)], check=True)
            time.sleep(0.05)

    def leave(self):
        subprocess.run(["xdotool", "mousemove", "5", "5"], check=True)

    def call(self, control):
        if self.sequence:
            control.grab_focus()
            wait_for(
                "the focus", lambda: control.get_state_set().contains(Atspi.StateType.FOCUSED)
            )
            subprocess.run(["xdotool", "key", self.sequence], check=True)
        else:
            self.order(control.get_name())

    def end_call(self):
        if self.sequence:
            subprocess.run(["xdotool", "key", "Escape"], check=True)
        else:
            self.order("")

    def order(self, line):
        self.host.stdin.write(line + "\n")
        self.host.stdin.flush()

    def end(self):
        self.host.kill()
        self.host.wait()


def check_hovered_tip(stage):
    wait_for_description(stage.pen, HOST_DESCRIPTION)
    stage.hover(stage.pen)
    wait_for_description(stage.pen, SPOKEN_PEN)
    stage.wait_for_change("tool.pen")
    tip = stage.tip_named("Pen")
    wait_for_description(tip, PEN_TEXT)
    if "<" in description_of(tip) or "now 6 px" not in description_of(tip):
        raise Failure(f"the tip is described by {description_of(tip)!r}")
    check_walk(stage, tip)
    stage.leave()
    wait_for_description(stage.pen, HOST_DESCRIPTION)
    stage.wait_for_change("tool.pen")
    stage.wait_for_no_tip()


def check_walk(stage, tip):
    require(tip, Atspi.Role.HEADING, "Pen")
    require(tip, Atspi.Role.PUSH_BUTTON, "Pin")
    require(tip, Atspi.Role.SLIDER, "Position")
    link = require(tip, Atspi.Role.LINK, "How a stroke is made")
    if not is_below(link, tip):
        raise Failure("no way leads from the link up to the tip")
    frame = tip.get_extents(Atspi.CoordType.SCREEN)
    place = link.get_extents(Atspi.CoordType.SCREEN)
    inside = frame.x <= place.x and place.x + place.width <= frame.x + frame.width
    if not inside or not frame.y <= place.y < frame.y + frame.height:
        raise Failure("the link lies outside of its tip")
    press(link)
    said = stage.host.stdout.readline().strip()
    if said != "opened strokes":
        raise Failure(f"pressing the link has led to {said!r}")
    press(require(tip, Atspi.Role.PUSH_BUTTON, "Pause"))
    require(tip, Atspi.Role.PUSH_BUTTON, "Play")


def check_called_tip(stage):
    stage.call(stage.ellipse)
    wait_for_description(stage.ellipse, SPOKEN_ELLIPSE)
    stage.wait_for_change("tool.ellipse")
    tip = stage.tip_named("Ellipse")
    link = require(tip, Atspi.Role.LINK, "grid")
    # Found a moment after the tip has come up; until then it is somewhere in the text.
    wait_for("a place of the link", lambda: 0 < extents_of(link).width < extents_of(tip).width / 3)
    press(link)
    said = stage.host.stdout.readline().strip()
    if said != "opened shapes":
        raise Failure(f"pressing the link in the text has led to {said!r}")
    stage.end_call()
    wait_for_description(stage.ellipse, HOST_DESCRIPTION)
    stage.wait_for_no_tip()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("host")
    parser.add_argument("data_path")
    parser.add_argument("--sequence")
    arguments = parser.parse_args()
    switch_on()
    stage = Stage(arguments)
    try:
        check_hovered_tip(stage)
        check_called_tip(stage)
    except Failure as failure:
        print(f"error: {failure}", file=sys.stderr)
        return 1
    finally:
        stage.end()
    return 0


if __name__ == "__main__":
    sys.exit(main())
