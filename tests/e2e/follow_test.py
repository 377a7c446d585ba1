#!/usr/bin/python3
"""Previews a document of the demo drive the way a screen reader user does, over AT-SPI, while
another device (velloractl) renames it, edits it and deletes it: the preview takes the new name
(its title, and the share sheet's), shows the new text, and leaves when the document is gone,
the list on top again. Screenshots of each step stay in the artefact folder.

    follow_test.py <log file> <artefact folder> <window id> <velloractl> <drive home>
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
    subprocess.run(["import", "-window", WINDOW, os.path.join(OUT, "failure.png")])
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


def on_screen(match, role=None):
    nodes = []
    root = app()
    if root is not None:
        walk(root, nodes)
    return [n for n in nodes if showing(n) and (role is None or n.getRoleName() == role)
            and match(n.name or "")]


def find(role, name, timeout=15.0, match=None):
    """The first widget on screen with this role (any when None) and name."""
    test = match or (lambda n: n == name)
    deadline = time.time() + timeout
    while time.time() < deadline:
        hits = on_screen(test, role)
        if hits:
            return hits[-1]
        time.sleep(0.2)
    fail("no %s %r on screen" % (role or "widget", name))


def gone(role, name, timeout=15.0):
    deadline = time.time() + timeout
    while time.time() < deadline:
        if not on_screen(lambda n: n == name, role):
            return
        time.sleep(0.2)
    fail("%s %r is still on screen" % (role or "widget", name))


def click(node):
    extents = node.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    x, y = extents.x + extents.width // 2, extents.y + extents.height // 2
    subprocess.run(["xdotool", "mousemove", "--sync", str(x), str(y), "click", "1"], check=True)
    time.sleep(0.6)


def tap_row(name, timeout=15.0):
    """Taps a row of the top list once it stands still (a list sliding in moves its rows)."""
    deadline = time.time() + timeout
    last = None
    while time.time() < deadline:
        row = find("list item", name, timeout)
        extents = row.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
        where = (extents.x, extents.y, extents.width, extents.height)
        if where == last:
            click(row)
            return
        last = where
        time.sleep(0.3)
    fail("row %r never stood still" % name)


def text_of(node):
    try:
        text = node.queryText()
        return text.getText(0, text.characterCount)
    except Exception:
        return ""


def shown_text(name, wanted, timeout=15.0):
    """Waits until the preview named `name` shows a text containing `wanted`."""
    deadline = time.time() + timeout
    texts = []
    while time.time() < deadline:
        texts = [text_of(n) for n in on_screen(lambda n: n == name)]
        if any(wanted in t for t in texts):
            return
        time.sleep(0.3)
    fail("the preview %r does not show %r: %r" % (name, wanted, [t[:80] for t in texts]))


def remote(*args):
    result = subprocess.run([CTL, "remote"] + list(args), capture_output=True, text=True)
    if result.returncode != 0:
        fail("velloractl remote %s: %s" % (" ".join(args), result.stderr))


def log_has(text, timeout=10.0):
    deadline = time.time() + timeout
    while time.time() < deadline:
        if os.path.exists(LOG) and text in open(LOG, encoding="utf-8").read():
            return
        time.sleep(0.2)
    fail("the log has no %r" % text)


def shoot(name):
    time.sleep(0.8)
    subprocess.run(["import", "-window", WINDOW, os.path.join(OUT, name)], check=True)


# The preview of a document of the drive's root.
find("list item", "Welcome.md", 30)
tap_row("Welcome.md")
shown_text("Welcome.md", "Welcome to your Vellora drive")
find("push button", "Delete")
shoot("preview.png")

# Another device renames it: the preview carries on under the new name, and Share offers the
# document at its new place.
remote("rename", "Welcome.md", "Hello.md")
find("label", "Hello.md")
gone("label", "Welcome.md")
log_has("presentedItemDidMoveToURL: file://" + os.path.join(DRIVE, "Welcome.md"))
shown_text("Hello.md", "Welcome to your Vellora drive")
shoot("renamed.png")
click(find("push button", "Share"))
find("push button", "Copy")
log_has("showDocumentActivities: file://" + os.path.join(DRIVE, "Hello.md"))
shoot("renamed-share.png")
click(find("push button", "Cancel"))
gone("push button", "Copy")

# Another device edits it: the preview shows the new text.
remote("modify", "Hello.md", "--text", "# Hello again\n\nEdited on another device.\n")
shown_text("Hello.md", "Edited on another device.")
log_has("Refreshing file://" + os.path.join(DRIVE, "Hello.md"))
shoot("modified.png")

# Another device deletes it: the preview leaves, and the list no longer has it.
remote("delete", "Hello.md")
gone("push button", "Delete")
find("list item", "Documents")
gone("list item", "Hello.md")
log_has(" accommodate deletion")
shoot("deleted.png")
print("PASS")
