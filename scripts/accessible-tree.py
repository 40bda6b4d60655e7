"""Prints what assistive technology is told of a running Vostel: the bar, and every page of the
settings window, which must be open. Pages are chosen as a screen reader does, by an action.
Fails when a control has no name or a page does not come. Run by see-accessibility.sh."""

import sys
import time

import pyatspi

CONTROLS = {"push button", "toggle button", "check box", "radio button", "slider", "spin button",
            "text", "entry", "combo box", "menu item", "list item", "page tab", "scroll bar", "link"}


def below(node):
    for child in node:
        if child:
            yield child
            yield from below(child)


def program():
    for _ in range(400):
        for application in pyatspi.Registry.getDesktop(0):
            if application and "vostel" in application.name.lower():
                return application
        time.sleep(0.1)
    sys.exit("the program is not on the accessibility bus")


def details(node):
    for query, text in (
            (node.queryValue, lambda v: f"{v.currentValue:g} of {v.minimumValue:g}..{v.maximumValue:g}"),
            (node.queryText, lambda t: repr(t.getText(0, -1))),
            (node.queryAction, lambda a: "/".join(a.getName(i) for i in range(a.nActions)))):
        try:
            yield text(query())
        except NotImplementedError:
            pass


def dump(node, depth=0):
    """Prints the showing part of the tree; returns how many controls have no name."""
    if not node.getState().contains(pyatspi.STATE_SHOWING):
        return 0
    role, name = node.getRoleName(), node.name.strip()
    nameless = role in CONTROLS and not name
    states = [word for word, state in (("checked", pyatspi.STATE_CHECKED),
                                       ("focused", pyatspi.STATE_FOCUSED))
              if node.getState().contains(state)]
    if name or nameless or role != "filler":
        print("  " * depth + " ".join([role, repr(name), node.description, *details(node), *states]),
              "  <- NO NAME" if nameless else "")
    return nameless + sum(dump(child, depth + 1) for child in node if child)


def press(node):
    action = node.queryAction()
    for i in range(action.nActions):
        if action.getName(i) in ("Press", "Toggle"):
            action.doAction(i)


application = program()
window = next(each for each in application if each.name == "Vostel Settings")
pages = [each for each in below(window) if each.getRoleName() == "radio button" and ":" not in each.name]
bad = sum(dump(each) for each in application if each.name == "Vostel")
for page in pages:
    press(page)
    time.sleep(0.4)
    print("=====", page.name)
    bad += dump(window)
    headings = {each.name for each in below(window) if each.getState().contains(pyatspi.STATE_SHOWING)
                and each.getRoleName() == "label"}
    if not any(word in headings for word in (page.name, *page.name.split())):
        print("the page did not come:", page.name)
        bad += 1
print(len(pages), "pages;", bad, "faults")
sys.exit(bad > 0 or len(pages) < 3)
