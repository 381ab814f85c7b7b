#!/usr/bin/env python3
"""Looks at the report of zyngrad study in a real browser: it renders, shows the expected plots, and says nothing
on the console.

    study_report_test.py ZYNGRAD_BINARY

Exit code 77, which CTest takes for "skipped", when there is no Chromium.
"""

import html
import json
import os
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib
from html.parser import HTMLParser
from pathlib import Path
from xml.etree import ElementTree

SKIPPED = 77
failures = 0


def check(name, holds, seen=""):
    global failures
    print(f"{'ok    ' if holds else 'FAILED'}  {name}{'' if holds else f'  [{seen}]'}")
    failures += not holds


def browser():
    for name in ("chromium", "chromium-browser", "google-chrome"):
        if path := shutil.which(name):
            return path
    print("skipped: no chromium on this machine (Debian package chromium)")
    sys.exit(SKIPPED)


class Page(HTMLParser):
    """What the browser made of the page."""

    def __init__(self, text):
        super().__init__()
        self.figures, self.svgs, self.curves, self.slopes, self.tables, self.rows = [], 0, 0, 0, 0, 0
        self.addresses, self.title, self.in_title = [], "", False
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        of = dict(attributes)
        self.svgs += tag == "svg"
        self.tables += tag == "table"
        self.rows += tag == "tr"
        self.curves += of.get("class") == "curve"
        self.slopes += of.get("class") == "slope"
        self.in_title = tag == "title"
        if tag == "figure":
            self.figures.append(of["id"])
        self.addresses += [of[key] for key in ("src", "href") if key in of]

    def handle_data(self, data):
        if self.in_title:
            self.title += data
            self.in_title = False


def colours(png):
    """How many colours a picture of 8-bit RGB or RGBA has, with width and height."""
    data = Path(png).read_bytes()
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    at, pixels = 8, b""
    while at < len(data):
        length, kind = struct.unpack(">I4s", data[at:at + 8])
        if kind == b"IHDR":
            width, height, depth, colour_type = struct.unpack(">IIBB", data[at + 8:at + 18])
        if kind == b"IDAT":
            pixels += data[at + 8:at + 8 + length]
        at += 12 + length
    assert depth == 8 and colour_type in (2, 6)
    n = 3 if colour_type == 2 else 4
    raw, row, seen = zlib.decompress(pixels), bytearray(width * n), set()
    for y in range(height):
        start = y * (width * n + 1)
        how, line = raw[start], bytearray(raw[start + 1:start + 1 + width * n])
        for i in range(width * n):
            left, above = line[i - n] if i >= n else 0, row[i]
            corner = row[i - n] if i >= n else 0
            if how == 1:
                line[i] = (line[i] + left) & 255
            elif how == 2:
                line[i] = (line[i] + above) & 255
            elif how == 3:
                line[i] = (line[i] + (left + above) // 2) & 255
            elif how == 4:
                p = left + above - corner
                nearest = min((abs(p - left), 0, left), (abs(p - above), 1, above), (abs(p - corner), 2, corner))
                line[i] = (line[i] + nearest[2]) & 255
        row = line
        seen.update(bytes(row[i:i + 3]) for i in range(0, width * n, n))
    return width, height, len(seen)


def run_browser(program, folder, *arguments):
    # A profile of its own; --no-sandbox, since test machines run as root.
    command = [program, "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
               "--enable-logging=stderr", f"--user-data-dir={folder}/profile", *arguments]
    environment = {**os.environ, "HOME": folder}
    return subprocess.run(command, capture_output=True, text=True, timeout=120, env=environment, check=False)


# Writes into the page what a reader of a narrow screen would notice.
PROBE = """<script>addEventListener("load", () => {
  const root = document.documentElement, all = [...document.querySelectorAll("body *")];
  const scrolls = e => ["auto", "scroll"].includes(getComputedStyle(e).overflowX) && e.scrollWidth > e.clientWidth;
  const texts = [...document.querySelectorAll("svg text")].map(e => e.getBoundingClientRect().height /
    (e.querySelector("tspan") ? 1.5 : 1));
  const words = all.filter(e => !e.closest("svg") && e.textContent.trim()).map(e => parseFloat(getComputedStyle(e).fontSize));
  document.title = JSON.stringify({inner: innerWidth, page: root.scrollWidth,
    tables: document.querySelectorAll("table").length, scrolling: all.filter(e => scrolls(e) && e.querySelector("table")).length,
    command: document.querySelector("pre").textContent, plot: Math.min(...texts.filter(h => h > 0)), text: Math.min(...words)});
})</script>"""


def check_narrow(program, folder, report):
    """At 420 pixels the page does not scroll sideways, its tables do, and its text can be read. A browser window has a
    least width, so the page is shown in a frame of 420 pixels, which says by its title what it sees."""
    Path(folder, "narrow.html").write_text(report.read_text().replace("</head>", PROBE + "</head>"))
    frame = Path(folder, "frame.html")
    frame.write_text("""<!DOCTYPE html><body><iframe src="narrow.html" width="420" height="900" style="border:0"></iframe><script>
addEventListener("load", () => setTimeout(() => {
  document.body.dataset.seen = document.querySelector("iframe").contentDocument.title; }, 500))</script>""")
    shown = run_browser(program, folder, "--allow-file-access-from-files", "--virtual-time-budget=5000", "--dump-dom",
                        frame.as_uri())
    found = re.search('data-seen="([^"]*)"', shown.stdout)
    check("a frame of 420 pixels shows the page", bool(found), shown.stdout[-500:] + shown.stderr[-500:])
    if not found:
        return
    seen = json.loads(html.unescape(found[1]))
    check("the frame is 420 pixels wide", seen["inner"] == 420, seen)
    check("at 420 pixels the page does not scroll sideways", seen["page"] <= 420, seen)
    check("at 420 pixels wide tables scroll by themselves", seen["scrolling"] == seen["tables"] > 0, seen)
    check("at 420 pixels text can be read", seen["text"] >= 12 and seen["plot"] >= 10, seen)
    check("the command line", seen["command"].startswith("zyngrad study --series tet --levels 2"), seen)


def main():
    program = browser()
    zyngrad = os.path.realpath(sys.argv[1])
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
        study = subprocess.run(
            [zyngrad, "study", "--series", "tet", "--levels", "2", "--method", "iterated,lsq,rbf", "--span", "5,500",
             "--sweeps", "1,3", "--field", "linear", "--field", "x*y", "-o", "study"],
            cwd=folder, capture_output=True, text=True, timeout=300, check=False)
        check("zyngrad study runs", study.returncode == 0, study.stderr)
        if study.returncode != 0:
            sys.exit(1)

        address = Path(folder, "study", "report.html").as_uri()
        dumped = run_browser(program, folder, "--dump-dom", address)
        check("the browser loads the page", dumped.returncode == 0, dumped.stderr[-500:])
        said = [line for line in dumped.stderr.splitlines() if "CONSOLE" in line]
        check("nothing on the console", not said, said)

        page = Page(dumped.stdout)
        of_field = ["interior", "boundary", "span", "sweeps", "histogram"]
        expected = [f"{field}-gradient-{plot}" for field in ("linear", "formula-2") for plot in of_field]
        expected += ["condition-span", "time-set-up", "time-application"]
        check("title", page.title == "Study: series tet", page.title)
        check("every plot, in order", page.figures == expected, page.figures)
        check("an SVG element each", page.svgs == len(expected), page.svgs)
        # Five cases in the plots of errors, histograms and times, one curve against Span, condition and sweeps.
        check("curves", page.curves == 2 * (5 + 5 + 1 + 1 + 5) + 1 + 5 + 5, page.curves)
        check("two slope triangles in each plot against the spacing", page.slopes == 2 * 2 * 2, page.slopes)
        check("tables", page.tables == 3 and page.rows == 3 * (1 + 5 * 2), (page.tables, page.rows))
        check("nothing from elsewhere", page.addresses == [], page.addresses)

        for name in expected:
            svg = ElementTree.parse(Path(folder, "study", name + ".svg")).getroot()
            if not svg.tag.endswith("}svg") or not any("curve" == e.get("class") for e in svg.iter()):
                check(f"{name}.svg", False, svg.tag)
        check("as many .svg files", len(list(Path(folder, "study").glob("*.svg"))) == len(expected))

        shot = Path(folder, "shot.png")
        shown = run_browser(program, folder, "--window-size=1300,900", f"--screenshot={shot}", address)
        check("a picture", shot.exists(), shown.stderr[-500:])
        if shot.exists():
            width, height, n = colours(shot)
            # Grid, text with smooth edges, and curves in several colours; a blank page has one.
            check("the picture shows something", (width, height) == (1300, 900) and n > 50, (width, height, n))

        check_narrow(program, folder, Path(folder, "study", "report.html"))
    sys.exit(1 if failures else 0)


main()
