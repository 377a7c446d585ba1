#!/usr/bin/python3
"""Keep Offline and Remove Download as a screen reader user does them, over AT-SPI: the actions
menu of the folder "Album" (three photos only in the cloud), the row's progress while they come
down one by one, the "Kept offline" mark on the folder and on each photo inside it, the status
line's share of the drive on this device, then Remove Download, after which the photos are
cloud-only again and nothing is marked. Each step is checked in the drive (velloractl status).

    offline_test.py <log file> <artefact folder> <window id> <velloractl> <drive home>
"""
import json
import os
import re
import subprocess
import sys
import time

import pyatspi

LOG, OUT, WINDOW, CTL, HOME = sys.argv[1:6]
DRIVE = os.path.join(HOME, "drive")
PHOTOS = ("Harbour.jpg", "Lighthouse.jpg", "Market.jpg")


def fail(message):
    print("FAIL: " + message)
    if os.environ.get("VELLORA_E2E_DUMP"):
        nodes = []
        walk(app(), nodes)
        for node in nodes:
            print("  %s %r %r showing=%s" % (node.getRoleName(), node.name, node.description,
                                             showing(node)))
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
    test = match or (lambda n: n == name)
    deadline = time.time() + timeout
    while time.time() < deadline:
        hits = widgets(role, test)
        if hits:
            # Lists below the top one may still report rows as showing: the last is on top.
            return hits[-1]
        time.sleep(0.2)
    fail("no %s %r on screen" % (role, name))


def description(role, name):
    try:
        return find(role, name).description or ""
    except Exception:
        return ""


def click(node, button="1"):
    extents = node.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    x, y = extents.x + extents.width // 2, extents.y + extents.height // 2
    subprocess.run(["xdotool", "mousemove", "--sync", str(x), str(y), "click", button],
                   check=True)
    time.sleep(0.6)


def enabled(node):
    return node.getState().contains(pyatspi.STATE_SENSITIVE)


def shoot(name):
    time.sleep(0.5)
    subprocess.run(["import", "-window", WINDOW, os.path.join(OUT, name)], check=True)


def messages():
    if not os.path.exists(LOG):
        return []
    with open(LOG, encoding="utf-8") as log:
        return [json.loads(line).get("Message", "") for line in log if line.strip()]


def wait_for(test, what, timeout=20.0):
    deadline = time.time() + timeout
    while time.time() < deadline:
        if test():
            return
        time.sleep(0.2)
    fail(what)


def items():
    return subprocess.run([CTL, "status", "--items"], check=True, capture_output=True,
                          text=True).stdout.splitlines()


def where(path):
    lines = items()
    # Past the list of pins, which also starts lines with a path.
    for line in lines[lines.index("Items:") + 1:]:
        if line.startswith("  %s:" % path) or line.startswith("  %s/:" % path):
            return line.split(": ", 1)[1]
    return None


def actions_menu(row):
    """The actions menu of a row: the per-item sheet by right click, then Actions…"""
    click(find("list item", row), "3")
    click(find("push button", "Actions\u2026"))


def back():
    click(find("push button", "", match=lambda n: n.startswith("\u2039")))


for photo in PHOTOS:
    if where("Album/" + photo) != "cloud-only":
        fail("Album/%s is not cloud-only before the test: %r" % (photo, where("Album/" + photo)))

# The root list: Keep Offline from the folder's actions menu.
find("list item", "Album", 30)
actions_menu("Album")
keep = find("push button", "Keep Offline")
if not enabled(keep):
    fail("Keep Offline is not offered for a folder with cloud-only items")
if not enabled(find("push button", "Remove Download")):
    fail("Remove Download is not offered for a folder that is here")
click(keep)

# The folder's row tells its progress while the photos come down, one at a time.
wait_for(lambda: "Downloading" in description("list item", "Album"),
         "the Album row never told its download's progress")
progress = description("list item", "Album")
if not re.search(r"Kept offline, Downloading, \d+%", progress):
    fail("the Album row reads %r while it downloads" % progress)


def percent():
    found = re.search(r"Downloading, (\d+)%", description("list item", "Album"))
    return int(found.group(1)) if found else None


# Once the first photo is down, the ring is a third full.
wait_for(lambda: (percent() or 0) >= 33, "the Album row never passed 33%%: %r" % progress)
shoot("offline-progress.png")
wait_for(lambda: any(m.startswith("Keep offline of") and "ended: 0 failed" in m
                     for m in messages()), "the keep-offline never ended", 60)
for photo in PHOTOS:
    wait_for(lambda: where("Album/" + photo) == "here and in the cloud",
             "Album/%s is not here after Keep Offline: %r" % (photo, where("Album/" + photo)))
    if not os.path.getsize(os.path.join(DRIVE, "Album", photo)) == 600000:
        fail("Album/%s came down incomplete" % photo)
if where("Album") != "here and in the cloud, pinned":
    fail("velloractl status does not list Album as pinned: %r" % where("Album"))
wait_for(lambda: description("list item", "Album") == "Kept offline",
         "the Album row reads %r once kept offline" % description("list item", "Album"))
status = find("label", "", 20, match=lambda n: re.match(r"\d+ items, .* on this device", n))
shoot("offline-kept.png")

# Inside, every photo is marked; Keep Offline is no longer offered for them.
click(find("list item", "Album"))
for photo in PHOTOS:
    find("list item", photo)
    wait_for(lambda: description("list item", photo) == "Kept offline",
             "%s reads %r inside the kept folder" % (photo, description("list item", photo)))
shoot("offline-kept-inside.png")
actions_menu("Harbour.jpg")
if enabled(find("push button", "Keep Offline")):
    fail("Keep Offline is offered for a photo its folder keeps offline")
click(find("push button", "Cancel"))
back()

# Remove Download: the photos go back to the cloud and nothing is marked.
find("list item", "Album")
actions_menu("Album")
click(find("push button", "Remove Download"))
wait_for(lambda: any(m.startswith("Removed download of") for m in messages()),
         "the download was never removed")
for photo in PHOTOS:
    wait_for(lambda: where("Album/" + photo) == "cloud-only",
             "Album/%s is still here: %r" % (photo, where("Album/" + photo)))
if where("Album") != "here and in the cloud":
    fail("Album still reads %r" % where("Album"))
wait_for(lambda: description("list item", "Album") == "",
         "the Album row still reads %r" % description("list item", "Album"))
click(find("list item", "Album"))
find("list item", "Harbour.jpg")
time.sleep(0.5)
for photo in PHOTOS:
    if description("list item", photo):
        fail("%s still reads %r" % (photo, description("list item", photo)))
shoot("offline-removed.png")
print("PASS: Keep Offline and Remove Download")
