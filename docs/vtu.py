"""Reads the .vtu files of zyngrad, for the scripts that draw pictures."""

import re

import numpy as np

TYPES = {"Float64": np.float64, "Int64": np.int64, "Int32": np.int32, "UInt8": np.uint8}


def read_vtu(path):
    """The arrays of a .vtu file of zyngrad by name. Each is a 64-bit byte count and raw values, counted from the "_"."""
    content = path.read_bytes()
    header, appended = content.split(b'<AppendedData encoding="raw">', 1)
    data = appended[appended.index(b"_") + 1 :]
    arrays = {}
    for kind, name, components, offset in re.findall(
        rb'<DataArray type="(\w+)" Name="(\w+)"(?: NumberOfComponents="(\d+)")? format="appended" offset="(\d+)"', header
    ):
        begin = int(offset) + 8
        size = int(np.frombuffer(data, np.uint64, 1, int(offset))[0])
        values = np.frombuffer(data[begin : begin + size], TYPES[kind.decode()])
        arrays[name.decode()] = values.reshape(-1, int(components)) if int(components) > 1 else values
    return arrays
