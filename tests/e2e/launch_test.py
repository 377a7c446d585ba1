#!/usr/bin/python3
"""Launch URLs reaching the running instance, as a person sees them over AT-SPI.

    launch_test.py running <log> <artefact folder> <window id> <vellora> <drive home>
        gio open and xdg-open of velloraapp: URLs show an item's details in the running window
        (the start that carried the URL hands it over and ends); a start that names no sender
        is refused and changes nothing on screen.
    launch_test.py restarted ...
        after a quit and a new start, the last details screen is back.
"""
import json
import os
import subprocess
import sys
import time
import urllib.parse

import pyatspi

PHASE, LOG, OUT, WINDOW, APP, HOME = sys.argv[1:7]
DRIVE = os.path.join(HOME, "drive")


def fail(message):
    print("FAIL: " + message)
    subprocess.run(["import", "-window", WINDOW, os.path.join(OUT, "failure-%s.png" % PHASE)])
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
        if child is not None:
            found.append(child)
            walk(child, found)


def showing(node):
    try:
        return node.getState().contains(pyatspi.STATE_SHOWING)
    except Exception:
        return False


def widgets(role, name):
    root = app()
    nodes = []
    if root is not None:
        walk(root, nodes)
    return [n for n in nodes if matches(n, role, name)]


def matches(node, role, name):
    """Nodes of a screen being replaced vanish while they are read."""
    try:
        return node.getRoleName() == role and showing(node) and (node.name or "") == name
    except Exception:
        return False


def find(role, name, timeout=15.0):
    deadline = time.time() + timeout
    while time.time() < deadline:
        hits = widgets(role, name)
        if hits:
            return hits[0]
        time.sleep(0.2)
    fail("no %s %r on screen" % (role, name))


def shoot(name):
    time.sleep(0.8)
    subprocess.run(["import", "-window", WINDOW, os.path.join(OUT, name)], check=True)


def messages():
    if not os.path.exists(LOG):
        return []
    with open(LOG) as f:
        return [json.loads(line).get("Message", "") for line in f if line.strip()]


def wait_for(message, count=1, timeout=15.0):
    deadline = time.time() + timeout
    while time.time() < deadline:
        if messages().count(message) >= count:
            return
        time.sleep(0.2)
    fail("no %d of %r in the log" % (count, message))


def url_of(relative, query):
    path = urllib.parse.quote(os.path.join(DRIVE, relative))
    return "velloraapp://%s?%s" % (path, query)


def details_of(name):
    """The details screen of `name` is on top: its name and its Kind row show."""
    find("label", name)
    find("label", "Kind")


def opened_by(command, url):
    """Runs the launcher; the start it makes hands over and ends (one window, one instance)."""
    before = messages().count("Handing %s from com.tessaly.homeshell to the running instance" % url)
    result = subprocess.run(command + [url], capture_output=True, text=True, timeout=60)
    if result.returncode != 0:
        fail("%s failed: %s" % (" ".join(command), result.stderr))
    wait_for("Handing %s from com.tessaly.homeshell to the running instance" % url, before + 1)


if PHASE == "running":
    find("list item", "Documents")
    shoot("root.png")

    trip = url_of("Documents/Trip Plan.md", "mode=info")
    opened_by(["gio", "open"], trip)
    details_of("Trip Plan.md")
    shoot("gio-open-details.png")

    # The name escaped twice, and the verb too, as some senders do.
    packing = "velloraapp://%s?m%%256Fde=d%%2565tails" % urllib.parse.quote(
        urllib.parse.quote(os.path.join(DRIVE, "Documents/Packing List.txt")))
    opened_by(["xdg-open"], packing)
    details_of("Packing List.txt")
    shoot("xdg-open-details.png")

    # Started by hand with a URL and no sender: refused, the screen stays as it was. The later
    # start ends only once the running instance answered, so any screen would be there by then.
    budget = url_of("Documents/Budget 2024.csv", "mode=info")
    subprocess.run([APP, budget], capture_output=True, timeout=60, check=True)
    wait_for("Ignoring openURL launch from unknown source: (null)")
    if widgets("label", "Budget 2024.csv"):
        fail("a launch with no sender was heard")
    details_of("Packing List.txt")
    shoot("refused.png")
else:
    details_of("Packing List.txt")
    shoot("restored-details.png")
print("ok: " + PHASE)
