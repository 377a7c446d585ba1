#!/usr/bin/python3
"""Previews a document of the demo drive the way a screen reader user does, over AT-SPI, while
another device (velloractl) renames it, edits it and deletes it: the preview takes the new name
(its title, and the share sheet's), shows the new text, and leaves when the document is gone,
the list on top again. Screenshots of each step stay in the artefact folder.

    follow_test.py <log file> <artefact folder> <window id> <velloractl> <drive home>
"""
import os
import sys

from atspi_driver import click, configure, ctl, find, gone, shoot, shown_text, tap_row, wait_log

LOG, OUT, WINDOW, CTL, HOME = sys.argv[1:6]
configure(LOG, OUT, WINDOW, CTL)
DRIVE = os.path.join(HOME, "drive")


def logged(start):
    """Waits for a log record starting with `start`, the app's word that it saw the change."""
    wait_log(lambda m: m.startswith(start), "starting %r" % start)


# The preview of a document of the drive's root.
find("list item", "Welcome.md", 30)
tap_row("Welcome.md")
shown_text("Welcome.md", "Welcome to your Vellora drive")
find("push button", "Delete")
shoot("preview.png")

# Another device renames it: the preview carries on under the new name, and Share offers the
# document at its new place.
ctl("remote", "rename", "Welcome.md", "Hello.md")
find("label", "Hello.md")
gone("label", "Welcome.md")
logged("presentedItemDidMoveToURL: file://" + os.path.join(DRIVE, "Welcome.md"))
shown_text("Hello.md", "Welcome to your Vellora drive")
shoot("renamed.png")
click(find("push button", "Share"))
find("push button", "Copy")
logged("showDocumentActivities: file://" + os.path.join(DRIVE, "Hello.md"))
shoot("renamed-share.png")
click(find("push button", "Cancel"))
gone("push button", "Copy")

# Another device edits it: the preview shows the new text.
ctl("remote", "modify", "Hello.md", "--text", "# Hello again\n\nEdited on another device.\n")
shown_text("Hello.md", "Edited on another device.")
logged("Refreshing file://" + os.path.join(DRIVE, "Hello.md"))
shoot("modified.png")

# Another device deletes it: the preview leaves, and the list no longer has it.
ctl("remote", "delete", "Hello.md")
gone("push button", "Delete")
find("list item", "Documents")
gone("list item", "Hello.md")
wait_log(lambda m: m.endswith(" accommodate deletion"), "of the deletion")
shoot("deleted.png")
print("PASS")
