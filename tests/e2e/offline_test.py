#!/usr/bin/python3
"""Keep Offline and Remove Download as a screen reader user does them, over AT-SPI: the actions
menu of the folder "Album" (three photos only in the cloud), the row's progress while they come
down one by one, the "Kept offline" mark on the folder and on each photo inside it, the status
line's share of the drive on this device, then Remove Download, after which the photos are
cloud-only again and nothing is marked. Each step is checked in the drive (velloractl status).

    offline_test.py <log file> <artefact folder> <window id> <velloractl> <drive home>
"""
import os
import re
import sys

from atspi_driver import back, click, configure, ctl, description, enabled, fail, find, gone, \
    right_click, settle, shoot, wait_for, wait_log

LOG, OUT, WINDOW, CTL, HOME = sys.argv[1:6]
configure(LOG, OUT, WINDOW, CTL)
DRIVE = os.path.join(HOME, "drive")
PHOTOS = ("Harbour.jpg", "Lighthouse.jpg", "Market.jpg")


def where(path):
    lines = ctl("status", "--items")
    # Past the list of pins, which also starts lines with a path.
    for line in lines[lines.index("Items:") + 1:]:
        if line.startswith("  %s:" % path) or line.startswith("  %s/:" % path):
            return line.split(": ", 1)[1]
    return None


def actions_menu(row):
    """The actions menu of a row: the per-item sheet by right click, then Actions…"""
    right_click(find("list item", row))
    click(find("push button", "Actions\u2026"))
    gone("push button", "Actions\u2026")
    settle()


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
click(keep, settle_after=False)

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
wait_for(lambda: (percent() or 0) >= 33,
         lambda: "the Album row never passed 33%%: %r" % description("list item", "Album"))
shoot("offline-progress.png", settle_first=False)
wait_log(lambda m: m.startswith("Keep offline of") and "ended: 0 failed" in m,
         "of the keep-offline's end", 60)
for photo in PHOTOS:
    wait_for(lambda: where("Album/" + photo) == "here and in the cloud",
             lambda: "Album/%s is not here after Keep Offline: %r"
             % (photo, where("Album/" + photo)))
    if not os.path.getsize(os.path.join(DRIVE, "Album", photo)) == 600000:
        fail("Album/%s came down incomplete" % photo)
if where("Album") != "here and in the cloud, pinned":
    fail("velloractl status does not list Album as pinned: %r" % where("Album"))
wait_for(lambda: description("list item", "Album") == "Kept offline",
         lambda: "the Album row reads %r once kept offline" % description("list item", "Album"))
status = find("label", "", 20, match=lambda n: re.match(r"\d+ items, .* on this device", n))
shoot("offline-kept.png")

# Inside, every photo is marked; Keep Offline is no longer offered for them.
click(find("list item", "Album"))
for photo in PHOTOS:
    find("list item", photo)
    wait_for(lambda: description("list item", photo) == "Kept offline",
             lambda: "%s reads %r inside the kept folder"
             % (photo, description("list item", photo)))
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
wait_log(lambda m: m.startswith("Removed download of"), "of the download's removal")
for photo in PHOTOS:
    wait_for(lambda: where("Album/" + photo) == "cloud-only",
             lambda: "Album/%s is still here: %r" % (photo, where("Album/" + photo)))
if where("Album") != "here and in the cloud":
    fail("Album still reads %r" % where("Album"))
wait_for(lambda: description("list item", "Album") == "",
         lambda: "the Album row still reads %r" % description("list item", "Album"))
click(find("list item", "Album"))
# The rows come with their marks from one read of the folder: once they show, they tell.
for photo in PHOTOS:
    find("list item", photo)
for photo in PHOTOS:
    if description("list item", photo):
        fail("%s still reads %r" % (photo, description("list item", photo)))
shoot("offline-removed.png")
print("PASS: Keep Offline and Remove Download")
