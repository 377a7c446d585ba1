#!/usr/bin/python3
"""Downloads cloud-only items of the demo drive the way a screen reader user does, over AT-SPI:
a small photo downloads by itself on Wi-Fi and is previewed; the large video is refused on
cellular, started and cancelled on Wi-Fi (it stays cloud-only), then downloaded with the ring
moving and previewed. Screenshots of each step stay in the artefact folder.

    download_test.py <log file> <artefact folder> <window id> <velloractl> <drive home>
"""
import os
import re
import sys
from urllib.parse import quote

from atspi_driver import back, click, configure, ctl, fail, find, gone, log_count, shoot, \
    tap_row, wait_for, wait_log, widgets

LOG, OUT, WINDOW, CTL, HOME = sys.argv[1:6]
configure(LOG, OUT, WINDOW, CTL)
DRIVE = os.path.join(HOME, "drive")
PHOTO = "City at Night.jpg"
VIDEO = "Documentary (Full Length).avi"
VIDEO_BYTES = 120 * 1024 * 1024


def set_network(value, spoken):
    before = log_count("Network state changed to " + spoken)
    ctl("network", value)
    wait_log("Network state changed to " + spoken, "of the app noticing the network becoming "
             + spoken, 20, before + 1)


def progress_label(timeout=30.0):
    """The size line while downloading: "12.6 MB of 125.8 MB"."""
    return find("label", "progress", timeout, match=lambda n: " of " in n)


def sizes(text):
    match = re.match(r"([\d.]+) (\w+) of ([\d.]+) (\w+)", text)
    if not match:
        fail("not a progress text: %r" % text)
    scale = {"bytes": 1, "kB": 1e3, "MB": 1e6, "GB": 1e9}
    return (float(match.group(1)) * scale[match.group(2)],
            float(match.group(3)) * scale[match.group(4)])


def downloaded(at_least, timeout):
    """Waits until the size line tells at least `at_least` bytes, and returns what it tells."""
    def done():
        got = sizes(progress_label().name)[0]
        return got if got >= at_least else None

    return wait_for(done, "the download never reached %.0f MB" % (at_least / 1e6), timeout, 0.1)


def ring_percent():
    ring = find(None, "Download Progress", 10)
    match = re.match(r"(\d+)", ring.description or "")
    return int(match.group(1)) if match else -1


def is_cloud_only(relative):
    folder, name = os.path.split(os.path.join(DRIVE, relative))
    return (not os.path.exists(os.path.join(folder, name))
            and os.path.exists(os.path.join(folder, "." + name + ".vlcloud")))


def about(name, start, end=""):
    """Tells the log records starting with `start` about the item `name`."""
    return lambda m: m.startswith(start) and m.endswith(quote(name, safe="()") + end)


# A small photo on Wi-Fi: it downloads by itself and the preview takes the download screen's place.
if not is_cloud_only("Photos/" + PHOTO):
    fail("the demo's photo is not cloud-only")
tap_row("Photos")
tap_row(PHOTO)
wait_log(about(PHOTO, "Showing preview of URL"), "of the photo's preview")
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
wait_log(about(VIDEO, "Not downloading", " by itself"), "of the video left in the cloud")
if widgets("push button", "Cancel Download"):
    fail("the video started by itself on cellular")
shoot("video-idle.png")
click(start)
find("label", "This item is over 100 MB.")
find("label", "\u201c%s\u201d will not download until you connect to Wi-Fi." % VIDEO)
shoot("cellular-refusal.png")
click(find("push button", "OK"))
gone("push button", "OK")
if widgets("push button", "Cancel Download"):
    fail("the refused download started")

# On Wi-Fi, throttled so that it takes a while: started, then cancelled half-way.
set_network("wifi", "connected to Wi-Fi")
ctl("throttle", str(12 * 1024 * 1024))
click(find("push button", "Download to View"), settle_after=False)
cancel = find("push button", "Cancel Download")
downloaded(10e6, 30)
click(cancel)
find("push button", "Download to View")
gone("push button", "Cancel Download")
find("label", "125.8 MB")
wait_log(about(VIDEO, "Download of", " cancelled"), "of the cancelled download")
if not is_cloud_only("Videos/" + VIDEO) or "  Videos/%s: cloud-only" % VIDEO not in ctl(
        "status", "--items"):
    fail("the cancelled video is not cloud-only")

# Again, to the end, with the ring moving.
click(find("push button", "Download to View"), settle_after=False)
early_bytes = downloaded(25e6, 30)
early_ring = ring_percent()
shoot("ring-early.png", settle_first=False)
later_bytes = downloaded(80e6, 60)
later_ring = ring_percent()
shoot("ring-later.png", settle_first=False)
print("ring %d%% at %.1f MB, %d%% at %.1f MB" % (early_ring, early_bytes / 1e6, later_ring,
                                              later_bytes / 1e6))
if not 0 < early_ring < later_ring < 100:
    fail("the ring did not move: %d%% then %d%%" % (early_ring, later_ring))
wait_log(about(VIDEO, "Showing preview of URL"), "of the video's preview", 60)
gone("push button", "Cancel Download")
find("push button", "Play", 20)
if os.path.getsize(os.path.join(DRIVE, "Videos", VIDEO)) != VIDEO_BYTES:
    fail("the video's content is not all here")
shoot("video-preview.png")
ctl("throttle", "0")
print("PASS")
