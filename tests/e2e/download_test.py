#!/usr/bin/python3
"""Downloads cloud-only items of the demo drive the way a screen reader user does, over AT-SPI:
a small photo downloads by itself on Wi-Fi and is previewed; the large video is refused on
cellular, started and cancelled on Wi-Fi (it stays cloud-only), then downloaded with the ring
moving and previewed. Screenshots of each step stay in the artefact folder.

    download_test.py <log file> <artefact folder> <window id> <velloractl> <drive home>
"""
import json
import os
import re
import subprocess
import sys
import time
from urllib.parse import quote

import pyatspi

LOG, OUT, WINDOW, CTL, HOME = sys.argv[1:6]
DRIVE = os.path.join(HOME, "drive")
PHOTO = "City at Night.jpg"
VIDEO = "Documentary (Full Length).avi"
VIDEO_BYTES = 120 * 1024 * 1024


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


def widgets(role, match):
    root = app()
    if root is None:
        return []
    nodes = []
    walk(root, nodes)
    return [n for n in nodes
            if (role is None or n.getRoleName() == role) and showing(n) and match(n.name or "")]


def find(role, name, timeout=15.0, match=None):
    test = match or (lambda n: n == name)
    deadline = time.time() + timeout
    while time.time() < deadline:
        hits = widgets(role, test)
        if hits:
            return hits[-1]
        time.sleep(0.2)
    fail("no %s %r on screen" % (role or "widget", name))


def gone(role, name, timeout=15.0):
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


def tap_row(name, timeout=15.0):
    """Taps the row once it stands still: a list sliding in moves its rows under the pointer."""
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


def back():
    click(find("push button", "", match=lambda n: n.startswith("\u2039")))


def shoot(name):
    time.sleep(0.5)
    subprocess.run(["import", "-window", WINDOW, os.path.join(OUT, name)], check=True)


def messages():
    if not os.path.exists(LOG):
        return []
    with open(LOG, encoding="utf-8") as log:
        return [json.loads(line).get("Message", "") for line in log if line.strip()]


def wait_log(test, what, timeout=30.0):
    deadline = time.time() + timeout
    while time.time() < deadline:
        if any(test(m) for m in messages()):
            return
        time.sleep(0.2)
    fail("no log record " + what)


def ctl(*args):
    subprocess.run([CTL] + list(args), check=True, stdout=subprocess.DEVNULL)


def set_network(value, spoken):
    before = messages().count("Network state changed to " + spoken)
    ctl("network", value)
    deadline = time.time() + 20
    while time.time() < deadline:
        if messages().count("Network state changed to " + spoken) > before:
            return
        time.sleep(0.2)
    fail("the app did not notice the network becoming " + spoken)


def progress_label(timeout=30.0):
    """The size line while downloading: "12.6 MB of 125.8 MB"."""
    return find("label", "progress", timeout, match=lambda n: " of " in n)


def sizes(text):
    match = re.match(r"([\d.]+) (\w+) of ([\d.]+) (\w+)", text)
    if not match:
        fail("not a progress text: %r" % text)
    scale = {"bytes": 1, "kB": 1e3, "MB": 1e6, "GB": 1e9}
    return float(match.group(1)) * scale[match.group(2)], float(match.group(3)) * scale[match.group(4)]


def ring_percent():
    ring = find(None, "Download Progress", 10)
    match = re.match(r"(\d+)", ring.description or "")
    return int(match.group(1)) if match else -1


def is_cloud_only(relative):
    folder, name = os.path.split(os.path.join(DRIVE, relative))
    return (not os.path.exists(os.path.join(folder, name))
            and os.path.exists(os.path.join(folder, "." + name + ".vlcloud")))


# A small photo on Wi-Fi: it downloads by itself and the preview takes the download screen's place.
if not is_cloud_only("Photos/" + PHOTO):
    fail("the demo's photo is not cloud-only")
tap_row("Photos")
tap_row(PHOTO)
wait_log(lambda m: m.startswith("Showing preview of URL") and m.endswith(quote(PHOTO, safe="()")),
         "of the photo's preview")
gone("push button", "Cancel Download")
gone("push button", "Download to View")
if not os.path.getsize(os.path.join(DRIVE, "Photos", PHOTO)) > 0:
    fail("the photo's content is not here")
find(None, PHOTO)
shoot("photo-preview.png")
back()
back()

# The large video on cellular: not by itself, and refused by hand.
set_network("cellular", "connected to cellular")
tap_row("Videos")
tap_row(VIDEO)
find("label", VIDEO)
find("label", "125.8 MB")
find("push button", "Download from the Cloud")
start = find("push button", "Download to View")
time.sleep(1.0)
if widgets("push button", lambda n: n == "Cancel Download"):
    fail("the video started by itself on cellular")
shoot("video-idle.png")
click(start)
find("label", "This item is over 100 MB.")
find("label", "\u201c%s\u201d will not download until you connect to Wi-Fi." % VIDEO)
shoot("cellular-refusal.png")
click(find("push button", "OK"))
gone("push button", "OK")
if widgets("push button", lambda n: n == "Cancel Download"):
    fail("the refused download started")

# On Wi-Fi, throttled so that it takes a while: started, then cancelled half-way.
set_network("wifi", "connected to Wi-Fi")
ctl("throttle", str(12 * 1024 * 1024))
click(find("push button", "Download to View"))
cancel = find("push button", "Cancel Download")
deadline = time.time() + 30
while time.time() < deadline and sizes(progress_label().name)[0] < 10e6:
    time.sleep(0.2)
click(cancel)
find("push button", "Download to View")
gone("push button", "Cancel Download")
find("label", "125.8 MB")
wait_log(lambda m: m.startswith("Download of") and m.endswith(quote(VIDEO, safe="()") + " cancelled"),
         "of the cancelled download")
time.sleep(1.0)
if not is_cloud_only("Videos/" + VIDEO):
    fail("the cancelled video is not cloud-only")

# Again, to the end, with the ring moving.
click(find("push button", "Download to View"))
deadline = time.time() + 30
while time.time() < deadline and sizes(progress_label().name)[0] < 25e6:
    time.sleep(0.1)
early_bytes = sizes(progress_label().name)[0]
early_ring = ring_percent()
shoot("ring-early.png")
while time.time() < deadline + 30 and sizes(progress_label().name)[0] < 80e6:
    time.sleep(0.1)
later_bytes = sizes(progress_label().name)[0]
later_ring = ring_percent()
shoot("ring-later.png")
print("ring %d%% at %.1f MB, %d%% at %.1f MB" % (early_ring, early_bytes / 1e6, later_ring,
                                              later_bytes / 1e6))
if not 0 < early_ring < later_ring < 100:
    fail("the ring did not move: %d%% then %d%%" % (early_ring, later_ring))
wait_log(lambda m: m.startswith("Showing preview of URL") and m.endswith(quote(VIDEO, safe="()")),
         "of the video's preview", 60)
gone("push button", "Cancel Download")
find("push button", "Play", 20)
if os.path.getsize(os.path.join(DRIVE, "Videos", VIDEO)) != VIDEO_BYTES:
    fail("the video's content is not all here")
shoot("video-preview.png")
ctl("throttle", "0")
print("PASS")
