#!/usr/bin/python3
"""Walks the demo drive the way a screen reader user does, over AT-SPI: a folder, the status
line, edit mode with a selection, a library without folders, search and the grid.

    browse_test.py <log file> <artefact folder> <window id>
"""
import re
import sys

from atspi_driver import back, click, configure, enabled, enter_text, fail, find, gone, \
    log_count, shoot, wait_log

configure(*sys.argv[1:4])


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
back()
find("list item", "Notes")
click(find("list item", "Notes"))
find("label", "Notes")
click(find("push button", "Select"))
if enabled(find("push button", "New Folder")):
    fail("New Folder enabled in a library without folders")
wait_log("Begin Edit mode", "of edit mode's second start", count=2)
if log_count("Begin Edit mode") != 2:
    fail("edit mode was logged %d times, not twice" % log_count("Begin Edit mode"))
click(find("push button", "Cancel"))
back()

# Search from the root: a file in a subfolder shows with its location; its folder opens with the
# lists above it.
enter_text(find("text", "Search"), "pack")
find("list item", "Packing List.txt")
find("list", "Search Results")
shoot("search-results.png")
enter_text(find("text", "Search"), "letters")
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
