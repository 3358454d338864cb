"""What accessibility tools read of a program: for each of its controls a line of role, name,
states and description, as JSON. usage: accessible.py PROGRAM"""

import json
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi

STATES = ("CHECKED", "ENABLED", "SHOWING")


def tell(control):
    states = control.get_state_set()
    held = [name.lower() for name in STATES if states.contains(getattr(Atspi.StateType, name))]
    print(json.dumps([control.get_role_name(), control.get_name(), held, control.get_description()]))
    for index in range(control.get_child_count()):
        child = control.get_child_at_index(index)
        if child:
            tell(child)


desktop = Atspi.get_desktop(0)
for index in range(desktop.get_child_count()):
    program = desktop.get_child_at_index(index)
    if program and program.get_name() == sys.argv[1]:
        tell(program)
