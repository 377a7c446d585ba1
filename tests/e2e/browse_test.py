#!/usr/bin/python3
"""Walks the demo drive the way a screen reader user does, over AT-SPI: widgets are found by
role and accessible name, clicked at their centres with xdotool, and the outcome is read back
from the accessibility tree, the app's log records and the screen.

    browse_test.py <log file> <artefact folder> <window id>
"""
import json
import os
import re
import subprocess
import sys
import time

import pyatspi

LOG, OUT, WINDOW = sys.argv[1], sys.argv[2], sys.argv[3]


def fail(message):
    print("FAIL: " + message)
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


def widgets(role, match):
    root = app()
    if root is None:
        return []
    nodes = []
    walk(root, nodes)
    return [n for n in nodes if n.getRoleName() == role and showing(n) and match(n.name or "")]


def find(role, name, timeout=10.0, match=None):
    """The one widget on screen with this role and name (or whose name passes `match`)."""
    test = match or (lambda n: n == name)
    deadline = time.time() + timeout
    while time.time() < deadline:
        hits = widgets(role, test)
        if hits:
            return hits[0]
        time.sleep(0.2)
    fail("no %s %r on screen" % (role, name))


def gone(role, name, timeout=10.0):
    deadline = time.time() + timeout
    while time.time() < deadline:
        if not widgets(role, lambda n: n == name):
            return
        time.sleep(0.2)
    fail("%s %r is still on screen" % (role, name))


def click(node):
    extents = node.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    x, y = extents.x + extents.width // 2, extents.y + extents.height // 2
    subprocess.run(["xdotool", "mousemove", "--sync", str(x), str(y), "click", "1"], check=True)
    time.sleep(0.6)


def enabled(node):
    return node.getState().contains(pyatspi.STATE_SENSITIVE)


def messages():
    if not os.path.exists(LOG):
        return []
    with open(LOG, encoding="utf-8") as log:
        return [json.loads(line).get("Message", "") for line in log if line.strip()]


def wait_log(message, timeout=15.0):
    deadline = time.time() + timeout
    while time.time() < deadline:
        if message in messages():
            return
        time.sleep(0.2)
    fail("no log record %r" % message)


def shoot(name):
    time.sleep(0.8)
    subprocess.run(["import", "-window", WINDOW, os.path.join(OUT, name)], check=True)


def status_line(pattern_start, timeout=20.0):
    return find("label", pattern_start, timeout, match=lambda n: n.startswith(pattern_start))


# The root list, then a folder.
find("list item", "Documents", 30)
click(find("list item", "Documents"))
find("list item", "Packing List.txt")
shoot("list.png")

# The status line: the count first, what is on this device once measured, the free space once
# the quota fetcher has answered.
status = status_line("6 items")
if not re.fullmatch(r"6 items(, [\d.,]+ \w+ on this device)?(, 11\.5 GB available)?", status.name):
    fail("status line reads %r" % status.name)
find("label", "6 items, … on this device, 11.5 GB available", 20,
     match=lambda n: re.fullmatch(r"6 items, [\d.,]+ \w+ on this device, 11\.5 GB available", n))

# Edit mode: the title counts the selection; Move and Delete follow it.
click(find("push button", "Select"))
find("label", "Select Items")
move, delete = find("push button", "Move"), find("push button", "Delete")
if enabled(move) or enabled(delete):
    fail("Move or Delete enabled with nothing selected")
click(find("list item", "Budget 2024.csv"))
find("label", "1 Item Selected")
click(find("list item", "Letters"))
find("label", "2 Items Selected")
if not enabled(find("push button", "Move")) or not enabled(find("push button", "Delete")):
    fail("Move and Delete are not enabled for two items")
if not enabled(find("push button", "New Folder")):
    fail("New Folder disabled in the drive's own folders")
shoot("edit-selection.png")
click(find("push button", "Cancel"))
find("push button", "Select")
gone("push button", "Move")
find("label", "Documents")

# Back to the root, into the library whose container allows no folders.
click(find("push button", "", match=lambda n: n.startswith("\u2039")))
find("list item", "Notes")
click(find("list item", "Notes"))
find("label", "Notes")
click(find("push button", "Select"))
if enabled(find("push button", "New Folder")):
    fail("New Folder enabled in a library without folders")
if messages().count("Begin Edit mode") != 2:
    fail("edit mode was not logged twice")
click(find("push button", "Cancel"))
click(find("push button", "", match=lambda n: n.startswith("\u2039")))

# Search from the root: a file in a subfolder shows with its location; its folder opens with the
# lists above it.
click(find("text", "Search"))
subprocess.run(["xdotool", "type", "--delay", "60", "pack"], check=True)
find("list item", "Packing List.txt")
find("list", "Search Results")
shoot("search-results.png")
subprocess.run(["xdotool", "key", "ctrl+a", "BackSpace"], check=True)
subprocess.run(["xdotool", "type", "--delay", "60", "letters"], check=True)
click(find("list item", "Letters"))
find("label", "Letters")
find("push button", "\u2039 Documents")
click(find("push button", "\u2039 Documents"))
find("label", "Documents")

# Grid, remembered.
click(find("push button", "Show as Grid"))
find("push button", "Show as List")
shoot("grid.png")
print("PASS")
