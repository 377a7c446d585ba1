#!/usr/bin/python3
"""Launch URLs reaching the running instance, as a person sees them over AT-SPI.

    launch_test.py running <log> <artefact folder> <window id> <vellora> <drive home>
        gio open and xdg-open of velloraapp: URLs show an item's details in the running window
        (the start that carried the URL hands it over and ends); a start that names no sender
        is refused and changes nothing on screen.
    launch_test.py restarted ...
        after a quit and a new start, the last details screen is back.
"""
import os
import subprocess
import sys
import urllib.parse

from atspi_driver import configure, fail, find, log_count, shoot, wait_log, widgets

PHASE, LOG, OUT, WINDOW, APP, HOME = sys.argv[1:7]
configure(LOG, OUT, WINDOW, failure_shot="failure-%s.png" % PHASE)
DRIVE = os.path.join(HOME, "drive")


def url_of(relative, query):
    path = urllib.parse.quote(os.path.join(DRIVE, relative))
    return "velloraapp://%s?%s" % (path, query)


def details_of(name):
    """The details screen of `name` is on top: its name and its Kind row show."""
    find("label", name)
    find("label", "Kind")


def opened_by(command, url):
    """Runs the launcher; the start it makes hands over and ends (one window, one instance)."""
    handing = "Handing %s from com.tessaly.homeshell to the running instance" % url
    before = log_count(handing)
    result = subprocess.run(command + [url], capture_output=True, text=True, timeout=60)
    if result.returncode != 0:
        fail("%s failed: %s" % (" ".join(command), result.stderr))
    wait_log(handing, count=before + 1)


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
    wait_log("Ignoring openURL launch from unknown source: (null)")
    if widgets("label", "Budget 2024.csv"):
        fail("a launch with no sender was heard")
    details_of("Packing List.txt")
    shoot("refused.png")
else:
    details_of("Packing List.txt")
    shoot("restored-details.png")
print("ok: " + PHASE)
