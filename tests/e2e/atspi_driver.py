"""Drives the built app as a screen reader user does, over AT-SPI: widgets are found by role and
accessible name, clicked at their centres with xdotool, and outcomes are read back from the
accessibility tree, the app's log records, the drive (velloractl) and the screen. Nothing here
pauses for a fixed time: every wait polls for its outcome until a deadline, then fails saying
what was missing. A script calls configure() first.
"""
import ctypes
import ctypes.util
import json
import os
import subprocess
import sys
import time

import pyatspi

LOG = OUT = WINDOW = CTL = None
FAILURE_SHOT = "failure.png"


def configure(log, out, window, ctl=None, failure_shot="failure.png"):
    global LOG, OUT, WINDOW, CTL, FAILURE_SHOT
    LOG, OUT, WINDOW, CTL, FAILURE_SHOT = log, out, window, ctl, failure_shot


def fail(message):
    print("FAIL: " + message)
    subprocess.run(["import", "-window", WINDOW, os.path.join(OUT, FAILURE_SHOT)])
    if os.environ.get("VELLORA_E2E_DUMP"):
        for node in nodes():
            print("  %s %r %r showing=%s" % (node.getRoleName(), node.name, node.description,
                                             showing(node)))
    sys.exit(1)


def poll(test, timeout, every=0.2):
    """The first true value of `test()` before the deadline, else None."""
    deadline = time.time() + timeout
    while True:
        value = test()
        if value or time.time() >= deadline:
            return value
        time.sleep(every)


def wait_for(test, what, timeout=20.0, every=0.2):
    """The first true value of `test()` before the deadline; else fails with `what` (or what it
    returns, read then: the state that was never reached)."""
    value = poll(test, timeout, every)
    if not value:
        fail(what() if callable(what) else what)
    return value


def app():
    desktop = pyatspi.Registry.getDesktop(0)
    for index in range(desktop.childCount):
        child = desktop.getChildAtIndex(index)
        if child is not None and child.name in ("vellora", "Vellora"):
            return child
    return None


def nodes(root=None):
    found = []

    def walk(node):
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
                walk(child)

    root = root or app()
    if root is not None:
        walk(root)
    return found


def showing(node):
    try:
        return node.getState().contains(pyatspi.STATE_SHOWING)
    except Exception:
        return False


def widgets(role, match, root=None):
    """The widgets on screen with this role (any when None) whose name is `match` or passes it.
    Lists below the top one may still report rows as showing: the last one is on top."""
    test = match if callable(match) else (lambda n: n == match)

    def hit(node):
        # Nodes of a screen being replaced vanish while they are read.
        try:
            return ((role is None or node.getRoleName() == role) and showing(node)
                    and test(node.name or ""))
        except Exception:
            return False

    return [n for n in nodes(root) if hit(n)]


def find(role, name, timeout=15.0, match=None, root=None):
    """The widget on screen with this role and name (or whose name passes `match`)."""
    hits = wait_for(lambda: widgets(role, match or name, root),
                    "no %s %r on screen" % (role or "widget", name), timeout)
    return hits[-1]


def gone(role, name, timeout=15.0):
    wait_for(lambda: not widgets(role, name),
             "%s %r is still on screen" % (role or "widget", name), timeout)


def enabled(node):
    return node.getState().contains(pyatspi.STATE_SENSITIVE)


def text_of(node):
    try:
        text = node.queryText()
        return text.getText(0, text.characterCount)
    except Exception:
        return ""


def description(role, name):
    return find(role, name).description or ""


def shown_text(name, wanted, timeout=15.0):
    """Waits until a widget named `name` shows a text containing `wanted`."""
    texts = []

    def shown():
        texts[:] = [text_of(n) for n in widgets(None, name)]
        return any(wanted in t for t in texts)

    wait_for(shown, lambda: "%r does not show %r: %r" % (name, wanted, [t[:80] for t in texts]),
             timeout, 0.3)


def extents(node):
    box = node.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    return box.x, box.y, box.width, box.height


class _XImage(ctypes.Structure):
    pass


_XImage._fields_ = (
    [(name, ctypes.c_int) for name in ("width", "height", "xoffset", "format")]
    + [("data", ctypes.c_void_p)]
    + [(name, ctypes.c_int) for name in ("byte_order", "bitmap_unit", "bitmap_bit_order",
                                         "bitmap_pad", "depth", "bytes_per_line",
                                         "bits_per_pixel")]
    + [(name, ctypes.c_ulong) for name in ("red_mask", "green_mask", "blue_mask")]
    + [("obdata", ctypes.c_void_p), ("create_image", ctypes.c_void_p),
       ("destroy_image", ctypes.CFUNCTYPE(ctypes.c_int, ctypes.POINTER(_XImage)))])
_x11 = None


def grab():
    """The whole screen's pixels, straight from the X server (a tenth of the time xwd or import
    take). The screen is the test's own display; a grab of the window alone fails (BadMatch)
    at times, with the video preview on screen among them."""
    global _x11
    if _x11 is None:
        _x11 = ctypes.cdll.LoadLibrary(ctypes.util.find_library("X11"))
        _x11.XOpenDisplay.restype = ctypes.c_void_p
        _x11.XOpenDisplay.argtypes = [ctypes.c_char_p]
        for call in (_x11.XDefaultRootWindow, _x11.XDefaultScreen):
            call.restype, call.argtypes = ctypes.c_ulong, [ctypes.c_void_p]
        for call in (_x11.XDisplayWidth, _x11.XDisplayHeight):
            call.argtypes = [ctypes.c_void_p, ctypes.c_int]
        _x11.XGetImage.restype = ctypes.POINTER(_XImage)
        _x11.XGetImage.argtypes = [ctypes.c_void_p, ctypes.c_ulong, ctypes.c_int, ctypes.c_int,
                                   ctypes.c_uint, ctypes.c_uint, ctypes.c_ulong, ctypes.c_int]
        _x11.display = _x11.XOpenDisplay(None)
        if not _x11.display:
            fail("no X display to grab")
    display = _x11.display
    screen = _x11.XDefaultScreen(display)
    image = _x11.XGetImage(display, _x11.XDefaultRootWindow(display), 0, 0,
                           _x11.XDisplayWidth(display, screen),
                           _x11.XDisplayHeight(display, screen), ctypes.c_ulong(-1).value, 2)
    if not image:
        fail("no grab of the screen")
    pixels = ctypes.string_at(image.contents.data,
                              image.contents.bytes_per_line * image.contents.height)
    image.contents.destroy_image(image)
    return pixels


def settle(timeout=15.0, quiet=0.3):
    """Waits until the window has looked the same for `quiet` seconds: a screen sliding in, a
    sheet rising, a list filling are over (they take a quarter of a second)."""
    deadline = time.time() + timeout
    last, since = grab(), time.time()
    while time.time() - since < quiet:
        if time.time() >= deadline:
            fail("the window kept changing for %.0f s" % timeout)
        time.sleep(0.05)
        now = grab()
        if now != last:
            last, since = now, time.time()


def click(node, button="1", settle_after=True):
    """Clicks the node's centre; unless what the click starts keeps moving (a download's ring,
    a video), until the window has settled."""
    x, y, width, height = extents(node)
    x, y = x + width // 2, y + height // 2
    # A move to where the pointer already is never ends its --sync wait (xdotool gives up after
    # 15 s).
    here = subprocess.run(["xdotool", "getmouselocation"], capture_output=True, text=True).stdout
    move = [] if here.startswith("x:%d y:%d " % (x, y)) else ["mousemove", "--sync", str(x), str(y)]
    subprocess.run(["xdotool"] + move + ["click", button], check=True)
    if settle_after:
        settle()


def right_click(node):
    click(node, "3")


def tap_row(name, timeout=15.0):
    """Taps a row of the top list once it stands still: a list sliding in moves its rows under
    the pointer."""
    seen = []

    def still():
        row = find("list item", name, timeout)
        seen.append(extents(row))
        return row if seen[-2:-1] == seen[-1:] else None

    click(wait_for(still, "row %r never stood still" % name, timeout, every=0.3))


def back():
    click(find("push button", "", match=lambda n: n.startswith("\u2039")))


def enter_text(field, text):
    """Types `text` into the field in place of what it held, as the keyboard does."""
    click(field)
    subprocess.run(["xdotool", "key", "ctrl+a", "BackSpace"], check=True)
    subprocess.run(["xdotool", "type", "--delay", "60", text], check=True)
    wait_for(lambda: text_of(field) == text,
             lambda: "the field reads %r, not %r" % (text_of(field), text))


def shoot(name, settle_first=True):
    """A screenshot of the window, once it has settled unless it is meant to be moving."""
    if settle_first:
        settle()
    subprocess.run(["import", "-window", WINDOW, os.path.join(OUT, name)], check=True)


def messages():
    if not os.path.exists(LOG):
        return []
    with open(LOG, encoding="utf-8") as log:
        lines = log.read().split("\n")
    # The last line may be half written: it is read whole at the next look.
    return [json.loads(line).get("Message", "") for line in lines[:-1] if line.strip()]


def log_count(match):
    """How many log records have the message `match` (or one passing it)."""
    test = match if callable(match) else (lambda m: m == match)
    return sum(1 for m in messages() if test(m))


def wait_log(match, what=None, timeout=30.0, count=1):
    """Waits until `count` log records have the message `match` (or pass it)."""
    wait_for(lambda: log_count(match) >= count,
             lambda: "no %d log record%s %s" % (count, "" if count == 1 else "s",
                                                what or repr(match)), timeout)


def ctl(*args):
    """Runs velloractl, the cloud side, and returns the lines it wrote."""
    result = subprocess.run([CTL] + list(args), capture_output=True, text=True)
    if result.returncode != 0:
        fail("velloractl %s: %s" % (" ".join(args), result.stderr.strip()))
    return result.stdout.splitlines()
