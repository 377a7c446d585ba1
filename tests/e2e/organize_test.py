#!/usr/bin/python3
"""Organizes the demo drive the way a screen reader user does, over AT-SPI: a new folder in
Documents (a name starting with "." refused first), two files moved into it through the chooser,
one renamed keeping its extension, one deleted after the warning, an app library deleted. Each
change is checked in the local drive and in the cloud copy (velloractl status --items).

    organize_test.py <log file> <artefact folder> <window id> <velloractl> <drive home>
"""
import os
import subprocess
import sys
import time

import pyatspi

LOG, OUT, WINDOW, CTL, HOME = sys.argv[1:6]
DRIVE = os.path.join(HOME, "drive")


def fail(message):
    print("FAIL: " + message)
    if os.environ.get("VELLORA_E2E_DUMP"):
        nodes = []
        walk(app(), nodes)
        for node in nodes:
            print("  %s %r showing=%s" % (node.getRoleName(), node.name, showing(node)))
    sys.exit(1)


def app():
    desktop = pyatspi.Registry.getDesktop(0)
    for index in range(desktop.childCount):
        child = desktop.getChildAtIndex(index)
        if child is not None and child.name in ("vellora", "Vellora"):
            return child
    return None


def walk(node, found):
    try:
        count = node.childCount
    except Exception:
        return
    for index in range(count):
        try:
            child = node.getChildAtIndex(index)
        except Exception:
            continue
        if child is None:
            continue
        found.append(child)
        walk(child, found)


def showing(node):
    try:
        return node.getState().contains(pyatspi.STATE_SHOWING)
    except Exception:
        return False


def widgets(role, match, root=None):
    root = root or app()
    if root is None:
        return []
    nodes = []
    walk(root, nodes)
    return [n for n in nodes if n.getRoleName() == role and showing(n) and match(n.name or "")]


def find(role, name, timeout=10.0, match=None, root=None):
    """The first widget on screen with this role and name (or whose name passes `match`)."""
    test = match or (lambda n: n == name)
    deadline = time.time() + timeout
    while time.time() < deadline:
        hits = widgets(role, test, root)
        if hits:
            return hits[0]
        time.sleep(0.2)
    fail("no %s %r on screen" % (role, name))


def find_in(root, role, name):
    return find(role, name, root=root)


def gone(role, name, timeout=10.0):
    deadline = time.time() + timeout
    while time.time() < deadline:
        if not widgets(role, lambda n: n == name):
            return
        time.sleep(0.2)
    fail("%s %r is still on screen" % (role, name))


def click(node, button="1"):
    extents = node.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    x, y = extents.x + extents.width // 2, extents.y + extents.height // 2
    subprocess.run(["xdotool", "mousemove", "--sync", str(x), str(y), "click", button],
                   check=True)
    time.sleep(0.6)


def right_click(node):
    click(node, "3")


def choose_from_menu(name):
    """Picks an entry of the per-item action sheet just opened."""
    click(find("push button", name))


def enabled(node):
    return node.getState().contains(pyatspi.STATE_SENSITIVE)


def type_text(text):
    subprocess.run(["xdotool", "type", "--delay", "60", text], check=True)
    time.sleep(0.4)


def shoot(name):
    time.sleep(0.8)
    subprocess.run(["import", "-window", WINDOW, os.path.join(OUT, name)], check=True)


def status(*args):
    return subprocess.run([CTL, "status"] + list(args), check=True, capture_output=True,
                          text=True).stdout.splitlines()


def expect_item(path, where):
    line = "  %s: %s" % (path, where)
    if line not in status("--items"):
        fail("velloractl status --items has no line %r" % line)


def expect_no_item(path):
    if any(l.startswith("  %s:" % path) or l.startswith("  %s/:" % path)
           for l in status("--items")):
        fail("%s is still in the drive or the cloud" % path)


def wait_for(test, what, timeout=10.0):
    deadline = time.time() + timeout
    while time.time() < deadline:
        if test():
            return
        time.sleep(0.2)
    fail(what)


# Documents, edit mode, New Folder.
find("list item", "Documents", 30)
click(find("list item", "Documents"))
find("list item", "Packing List.txt")
click(find("push button", "Select"))
click(find("push button", "New Folder"))
field = find("text", "the prompt's field", match=lambda n: n != "Search")
create = find("push button", "Create")
if enabled(create):
    fail("Create is enabled before a name is typed")
click(field)
type_text(".trips")
find("label", "Choose a different name.")
if enabled(create):
    fail("Create is enabled for a name starting with \".\"")
shoot("prompt-red-message.png")
subprocess.run(["xdotool", "key", "ctrl+a", "BackSpace"], check=True)
type_text("Trips")
gone("label", "Choose a different name.")
click(find("push button", "Create"))
gone("push button", "Create")
find("list item", "Trips")
wait_for(lambda: os.path.isdir(os.path.join(DRIVE, "Documents/Trips")), "no Trips folder")
expect_item("Documents/Trips/", "here and in the cloud")

# Two files into it through the chooser.
click(find("list item", "Packing List.txt"))
click(find("list item", "Budget 2024.csv"))
find("label", "2 Items Selected")
click(find("push button", "Move"))
folders = find("list", "Folders")
click(find_in(folders, "list item", "Documents"))
folders = find("list", "Folders")
find_in(folders, "list item", "Trips")
click(find_in(folders, "list item", "Trips"))
find("label", "Trips")
shoot("chooser.png")
move = [w for w in widgets("push button", lambda n: n == "Move") if enabled(w)]
if not move:
    fail("the chooser's Move is not enabled in Trips")
click(move[0])
find("label", "Moved 2 items to Trips")
find("push button", "Undo")
shoot("undo-bar.png")
for name in ("Packing List.txt", "Budget 2024.csv"):
    wait_for(lambda: os.path.exists(os.path.join(DRIVE, "Documents/Trips", name)),
             "%s is not in Trips" % name)
    expect_item("Documents/Trips/" + name, "here and in the cloud")
    expect_no_item("Documents/" + name)

# Into Trips: rename one, keeping its extension.
click(find("list item", "Trips"))
find("list item", "Packing List.txt")
right_click(find("list item", "Packing List.txt"))
choose_from_menu("Rename Item\u2026")
field = find("text", "the prompt's field", match=lambda n: n != "Search")
click(field)
subprocess.run(["xdotool", "key", "ctrl+a", "BackSpace"], check=True)
type_text("Checklist")
click(find("push button", "Done"))
find("list item", "Checklist.txt")
find("label", "Renamed \u201cPacking List.txt\u201d to \u201cChecklist.txt\u201d")
expect_item("Documents/Trips/Checklist.txt", "here and in the cloud")
expect_no_item("Documents/Trips/Packing List.txt")

# Delete one with the warning.
right_click(find("list item", "Budget 2024.csv"))
choose_from_menu("Delete")
find("label", "\"Budget 2024.csv\" will be permanently deleted from Vellora on all your "
     "devices. This action cannot be undone.")
shoot("delete-warning.png")
click(find("push button", "Delete from Vellora"))
gone("list item", "Budget 2024.csv")
wait_for(lambda: not os.path.exists(os.path.join(DRIVE, "Documents/Trips/Budget 2024.csv")),
         "Budget 2024.csv is still in the drive")
expect_no_item("Documents/Trips/Budget 2024.csv")

# Back to the root: delete the Notes app library.
click(find("push button", "", match=lambda n: n.startswith("\u2039")))
find("list item", "Trips")
click(find("push button", "", match=lambda n: n.startswith("\u2039")))
find("list item", "Notes")
lines = status()
notes = [i for i, l in enumerate(lines) if '"Notes"' in l]
if not notes or "contents: 0 items here" in lines[notes[0] + 1]:
    fail("the Notes library is empty before the test deletes it: %r" % lines)
click(find("push button", "Select"))
click(find("list item", "Notes"))
click(find("push button", "Delete"))
find("label", "", match=lambda n: n.startswith("The Notes app library, and all its documents"))
shoot("delete-library-warning.png")
click(find("push button", "Delete from Vellora"))
gone("push button", "Delete from Vellora")


def library_empty():
    lines = status()
    at = [i for i, l in enumerate(lines) if '"Notes"' in l]
    return at and lines[at[0] + 1].strip() == "contents: 0 items here, 0 in the cloud"


wait_for(library_empty, "the Notes library is not empty here and in the cloud: %r" % status())
find("list item", "Notes")
print("PASS")
