#!/usr/bin/python3
"""Organizes the demo drive the way a screen reader user does, over AT-SPI: a new folder in
Documents (a name starting with "." refused first), two files moved into it through the chooser,
one renamed keeping its extension, one deleted after the warning, an app library deleted. Each
change is checked in the local drive and in the cloud copy (velloractl status --items).

    organize_test.py <log file> <artefact folder> <window id> <velloractl> <drive home>
"""
import os
import sys

from atspi_driver import back, click, configure, ctl, enabled, enter_text, fail, find, gone, \
    right_click, shoot, wait_for, widgets

LOG, OUT, WINDOW, CTL, HOME = sys.argv[1:6]
configure(LOG, OUT, WINDOW, CTL)
DRIVE = os.path.join(HOME, "drive")


def status(*args):
    return ctl("status", *args)


def expect_item(path, where):
    line = "  %s: %s" % (path, where)
    if line not in status("--items"):
        fail("velloractl status --items has no line %r" % line)


def expect_no_item(path):
    if any(l.startswith("  %s:" % path) or l.startswith("  %s/:" % path)
           for l in status("--items")):
        fail("%s is still in the drive or the cloud" % path)


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
enter_text(field, ".trips")
find("label", "Choose a different name.")
if enabled(create):
    fail("Create is enabled for a name starting with \".\"")
shoot("prompt-red-message.png")
enter_text(field, "Trips")
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
click(find("list item", "Documents", root=folders))
folders = find("list", "Folders")
click(find("list item", "Trips", root=folders))
find("label", "Trips")
shoot("chooser.png")
move = [w for w in widgets("push button", "Move") if enabled(w)]
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
click(find("push button", "Rename Item\u2026"))
enter_text(find("text", "the prompt's field", match=lambda n: n != "Search"), "Checklist")
click(find("push button", "Done"))
find("list item", "Checklist.txt")
find("label", "Renamed \u201cPacking List.txt\u201d to \u201cChecklist.txt\u201d")
expect_item("Documents/Trips/Checklist.txt", "here and in the cloud")
expect_no_item("Documents/Trips/Packing List.txt")

# Delete one with the warning.
right_click(find("list item", "Budget 2024.csv"))
click(find("push button", "Delete"))
find("label", "\"Budget 2024.csv\" will be permanently deleted from Vellora on all your "
     "devices. This action cannot be undone.")
shoot("delete-warning.png")
click(find("push button", "Delete from Vellora"))
gone("list item", "Budget 2024.csv")
wait_for(lambda: not os.path.exists(os.path.join(DRIVE, "Documents/Trips/Budget 2024.csv")),
         "Budget 2024.csv is still in the drive")
expect_no_item("Documents/Trips/Budget 2024.csv")

# Back to the root: delete the Notes app library.
back()
find("list item", "Trips")
back()
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


wait_for(library_empty,
         lambda: "the Notes library is not empty here and in the cloud: %r" % status())
find("list item", "Notes")
print("PASS")
