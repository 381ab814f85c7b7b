"""Runs zyngrad and reads what it writes."""

import os
import re
import subprocess
from xml.etree import ElementTree

import numpy as np

_TYPES = {"Float64": "<f8", "Int64": "<i8", "Int32": "<i4", "UInt8": "u1"}


def zyngrad(*arguments):
    """Runs the program; a failure shows what it printed."""
    program = os.environ["ZYN_PROGRAM"]
    done = subprocess.run([program, *map(str, arguments)], capture_output=True, text=True, check=False)
    assert done.returncode == 0, f"{arguments}: {done.stdout}{done.stderr}"
    return done.stdout


def arrays_of(path):
    """Name to numbers of a VTK XML file with raw appended arrays: all bits of the program's results."""
    content = path.read_bytes()
    head, _, tail = content.partition(b'<AppendedData encoding="raw">')
    raw = tail[tail.index(b"_") + 1:]
    text = re.sub(rb"<AppendedData.*", b"", head).decode() + "</VTKFile>"
    arrays = {}
    for element in ElementTree.fromstring(text).iter("DataArray"):
        start = int(element.get("offset"))
        size = int(np.frombuffer(raw, "<u8", 1, start)[0])
        values = np.frombuffer(raw[start + 8:start + 8 + size], _TYPES[element.get("type")])
        components = int(element.get("NumberOfComponents"))
        arrays[element.get("Name")] = values.reshape(-1, components) if components > 1 else values
    return arrays


def same_bits(a, b):
    """Equal bit for bit, the signs of zeros and NaN included."""
    a, b = np.ascontiguousarray(a), np.ascontiguousarray(b)
    return a.shape == b.shape and a.dtype == b.dtype and a.tobytes() == b.tobytes()
