#!/usr/bin/python3
"""Holds the StationXML that the command sdblk writes against its schema, and against the lines of stations.

    check_stationxml.py valid SDBLK PATH...   what comes of each file is valid
    check_stationxml.py damaged SDBLK FILE    so is what comes of damaged copies of a volume
    check_stationxml.py same SDBLK PATH...    it holds every number, time and text that the lines of
                                              stations have a place for in it, where nothing was lost

PATH is a file or a folder.  Without one, the folder that TARVIK_TEST_VOLUMES names is read.  Ends with
77 where that is not set, or, but for same, where TARVIK_STATIONXML_SCHEMA names no schema."""

import json
import os
import random
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree
from pathlib import Path

SKIPPED = 77
NAMESPACE = "{http://www.fdsn.org/xml/station/1}"
OPEN_FROM = "2100"
FILTERS = {53: "PolesZeros", 54: "Coefficients", 55: "ResponseList", 61: "FIR", 62: "Polynomial"}
TYPES = {
    "PolesZeros": {"A": "LAPLACE (RADIANS/SECOND)", "B": "LAPLACE (HERTZ)", "D": "DIGITAL (Z-TRANSFORM)"},
    "Coefficients": {"A": "ANALOG (RADIANS/SECOND)", "B": "ANALOG (HERTZ)", "D": "DIGITAL"},
    "FIR": {"A": "NONE", "B": "ODD", "C": "EVEN"},
    "Polynomial": {"M": "MACLAURIN"},
}
MOST_BLOCKETTES = 1000
COPIES = 120


def run(sdblk, *arguments):
    environment = dict(os.environ, SOURCE_DATE_EPOCH="0")
    done = subprocess.run([sdblk, *arguments], capture_output=True, env=environment)
    if done.returncode not in (0, 3):
        raise RuntimeError(f"sdblk {arguments}: status {done.returncode}, {done.stderr[:300]!r}")
    return done.stdout, done.stderr.decode("utf-8", "replace")


# ---- what stands in a document ----


def child(element, path):
    return element.find("/".join(NAMESPACE + part for part in path.split("/")))


def children(element, name):
    return element.findall(NAMESPACE + name)


def text(element, path):
    found = child(element, path)
    return None if found is None else found.text or ""


def number(element, path):
    found = text(element, path)
    return None if found is None else repr(float(found))


def with_error(element):
    errors = {element.get("plusError"), element.get("minusError")}
    assert len(errors) == 1, errors
    error = errors.pop()
    return repr(float(element.text)), None if error is None else repr(float(error))


def xml_comments(element):
    return [
        (text(c, "Value"), text(c, "BeginEffectiveTime"), text(c, "EndEffectiveTime"))
        for c in children(element, "Comment")
    ]


def xml_filter(element):
    """The units, the single values and the repeated ones of a filter."""
    name = element.tag[len(NAMESPACE) :]
    units = [text(element, "InputUnits/Name"), text(element, "OutputUnits/Name")]
    single, repeated = [], []
    for part in element:
        tag = part.tag[len(NAMESPACE) :]
        if tag in ("InputUnits", "OutputUnits"):
            continue
        if len(part):
            repeated.append((tag, [with_error(p) for p in part]))
        elif tag in ("Numerator", "Denominator", "NumeratorCoefficient", "Coefficient"):
            repeated.append((tag, [with_error(part)]))
        elif tag in ("PzTransferFunctionType", "CfTransferFunctionType", "Symmetry", "ApproximationType"):
            single.append(part.text)
        else:
            single.append(repr(float(part.text)))
    return name, element.get("name"), units, single, repeated


def xml_stage(element):
    found = [child(element, name) for name in FILTERS.values()]
    filters = [xml_filter(f) for f in found if f is not None]
    decimation = child(element, "Decimation")
    gain = child(element, "StageGain")
    return (
        int(element.get("number")),
        filters,
        None if decimation is None else [repr(float(part.text)) for part in decimation],
        None if gain is None else (number(gain, "Value"), number(gain, "Frequency")),
    )


def xml_channel(network, station, channel):
    response = child(channel, "Response")
    sensitivity = None if response is None else child(response, "InstrumentSensitivity")
    return {
        "station": {
            "start": station.get("startDate"),
            "end": station.get("endDate"),
            "position": [number(station, e) for e in ("Latitude", "Longitude", "Elevation")],
            "site": text(station, "Site/Name"),
            "comments": xml_comments(station),
            "network": text(station, "Description") or text(network, "Description"),
        },
        "end": channel.get("endDate"),
        "values": [
            number(channel, e)
            for e in ("Latitude", "Longitude", "Elevation", "Depth", "Azimuth", "Dip", "SampleRate", "ClockDrift")
        ],
        "units": (text(channel, "CalibrationUnits/Name"), text(channel, "CalibrationUnits/Description")),
        "comments": xml_comments(channel),
        "sensitivity": None
        if sensitivity is None
        else (
            number(sensitivity, "Value"),
            number(sensitivity, "Frequency"),
            text(sensitivity, "InputUnits/Name"),
            text(sensitivity, "OutputUnits/Name"),
        ),
        "stages": [] if response is None else [xml_stage(s) for s in children(response, "Stage")],
    }


def xml_epochs(document):
    """Channels by codes and start, in lists; and how many stations have none."""
    epochs, alone = {}, 0
    for network in children(document, "Network"):
        for station in children(network, "Station"):
            channels = children(station, "Channel")
            alone += not channels
            for channel in channels:
                key = (
                    network.get("code"),
                    station.get("code"),
                    channel.get("locationCode"),
                    channel.get("code"),
                    channel.get("startDate"),
                )
                epochs.setdefault(key, []).append(xml_channel(network, station, channel))
    return epochs, alone


# ---- what stands in a line ----


def real(value):
    if value is None:
        return None
    return repr(float({"Infinity": "inf", "-Infinity": "-inf"}.get(value, value)))


def end(time):
    return None if time is None or time >= OPEN_FROM else time


def line_comments(comments):
    return [(c["text"], c["start"], end(c["end"])) for c in comments]


def line_filter(blockette):
    fields = dict(blockette["fields"])
    name = FILTERS[blockette["type"]]
    units = [fields["iunits"], fields["ounits"]]
    groups = {
        53: (("zeros", "Zero", (("real", "real_err"), ("imag", "imag_err"))), ("poles", "Pole", (("real", "real_err"), ("imag", "imag_err")))),
        54: (("nums", "Numerator", (("coef", "coef_err"),)), ("dens", "Denominator", (("coef", "coef_err"),))),
        55: (("faps", "ResponseListElement", (("freq", None), ("amp", "amp_err"), ("phase", "phase_err"))),),
        61: (("coefs", "NumeratorCoefficient", None),),
        62: (("coefs", "Coefficient", (("coef", "coef_err"),)),),
    }[blockette["type"]]
    singles = {53: ("resp", "norm", "fnorm"), 54: ("resp",), 55: (), 61: ("sym",), 62: ("poly", "lfreq", "ufreq", "lappr", "uappr", "err")}
    single = [
        TYPES[name][fields[key]] if isinstance(fields[key], str) and fields[key] in TYPES.get(name, {}) else real(fields[key])
        for key in singles[blockette["type"]]
    ]
    repeated = []
    for key, element, parts in groups:
        for item in fields.get(key, []):
            if parts is None:
                repeated.append((element, [(real(item), None)]))
            else:
                repeated.append((element, [(real(item[v]), real(item.get(e)) if e else None) for v, e in parts]))
    return name, fields.get("name") or None if name == "FIR" else None, units, single, repeated


def line_stage(stage):
    filters, decimation, gain = [], None, None
    for blockette in stage["blockettes"]:
        fields = blockette["fields"]
        if blockette["type"] == 57:
            decimation = [real(fields[k]) for k in ("isamprate", "decfac", "decoff", "delay", "correction")]
        elif blockette["type"] == 58:
            gain = real(fields["sens"]), real(fields["freq"])
        else:
            filters.append(line_filter(blockette))
    return stage["stage"], filters, decimation, gain


def line_epoch(line):
    comment = [(line["comment"], None, None)] if line["comment"] else []
    sensitivity = line["sensitivity"]
    return {
        "station": {
            "start": line["station_start"],
            "end": end(line["station_end"]),
            "position": [real(line[k]) for k in ("station_latitude", "station_longitude", "station_elevation")],
            "site": line["site"],
            "comments": line_comments(line["station_comments"]),
            "network": line["network_description"] or None,
        },
        "end": end(line["end"]),
        "values": [
            real(line[k])
            for k in ("latitude", "longitude", "elevation", "depth", "azimuth", "dip", "sample_rate", "max_clock_drift")
        ],
        "units": (line["calibration_units"], line["calibration_units_description"] or None),
        "comments": comment + line_comments(line["comments"]),
        "sensitivity": None
        if sensitivity is None
        else (real(sensitivity["value"]), real(sensitivity["frequency"]), sensitivity["input_units"], sensitivity["output_units"]),
        "stages": [line_stage(s) for s in line["stages"] if s["stage"] != 0],
    }


def key_of(line):
    return tuple(line[k] for k in ("network", "station", "location", "channel", "start"))


def is_cut_short(line):
    return sum(len(s["blockettes"]) for s in line["stages"] or []) >= MOST_BLOCKETTES


# ---- the checks ----


def lines_of(output):
    """Minus zero stays what it is."""

    def integer(digits):
        return -0.0 if digits == "-0" else int(digits)

    return [json.loads(line, parse_int=integer) for line in output.decode("utf-8").split("\n")[:-1]]


def difference(found, expected):
    """Where two values of the same shape differ first."""
    if isinstance(found, dict) and isinstance(expected, dict):
        return next(f"{key}: {difference(found[key], expected[key])}" for key in found if found[key] != expected[key])
    if isinstance(found, (list, tuple)) and isinstance(expected, (list, tuple)) and len(found) == len(expected):
        pairs = enumerate(zip(found, expected))
        return next(f"{i}: {difference(a, b)}" for i, (a, b) in pairs if a != b)
    return f"{str(found)[:300]} is not {str(expected)[:300]}"


def same(sdblk, path):
    """Whether the file was compared; None for one of which something was lost, or without stations."""
    document, errors = run(sdblk, "stationxml", path)
    losses = [e for e in errors.splitlines() if ": differs from " not in e]
    if not document or losses:
        return None
    lines = lines_of(run(sdblk, "stations", path)[0])
    epochs, alone = xml_epochs(ElementTree.fromstring(document))
    expected = {}
    for line in lines:
        if line["channel"] is None:
            continue
        if is_cut_short(line):
            return None
        epoch = line_epoch(line)
        members = expected.setdefault(key_of(line), [])
        if epoch not in members:
            members.append(epoch)
    assert set(expected) == set(epochs), f"{path}: other epochs"
    for key, found in epochs.items():
        for epoch in found:
            if epoch not in expected[key]:
                raise AssertionError(f"{path}: {key}: {difference(epoch, expected[key][0])}")
    assert alone <= sum(line["channel"] is None for line in lines), f"{path}: stations without channels"
    return True


def valid(sdblk, path, schema):
    document, _ = run(sdblk, "stationxml", path)
    if not document:
        return None
    with tempfile.NamedTemporaryFile() as file:
        file.write(document)
        file.flush()
        done = subprocess.run(["xmllint", "--noout", "--schema", schema, file.name], capture_output=True)
    assert done.returncode == 0, f"{path}: {done.stderr[:500]!r}"
    return True


def damage(content, chance):
    """Puts other bytes in some places of the control headers."""
    changed = bytearray(content)
    for _ in range(chance.randint(1, 40)):
        place = chance.randrange(len(changed))
        kind = chance.randrange(3)
        if kind == 0:
            changed[place] = chance.randrange(256)
        elif kind == 1:
            changed[place] = chance.choice(b"0123456789 +-.~")
        else:
            size = chance.randint(1, 12)
            changed[place : place + size] = b" " * len(changed[place : place + size])
    return bytes(changed)


def valid_damaged(sdblk, path, schema):
    """How many damaged copies gave a document."""
    content = Path(path).read_bytes()
    chance = random.Random(COPIES)
    checked = 0
    with tempfile.TemporaryDirectory() as folder:
        for number in range(COPIES):
            copy = Path(folder, str(number))
            copy.write_bytes(damage(content, chance))
            checked += bool(valid(sdblk, copy, schema))
    return checked


def files_of(paths):
    for path in map(Path, paths):
        yield from sorted(p for p in path.rglob("*") if p.is_file()) if path.is_dir() else [path]


def main():
    check, sdblk, *paths = sys.argv[1:]
    schema = os.environ.get("TARVIK_STATIONXML_SCHEMA")
    folder = os.environ.get("TARVIK_TEST_VOLUMES")
    if (check != "same" and not schema) or not (paths or folder):
        sys.exit(SKIPPED)
    checked = 0
    for path in files_of(paths or [folder]):
        if check == "damaged":
            checked += valid_damaged(sdblk, path, schema)
        else:
            checked += bool(valid(sdblk, path, schema) if check == "valid" else same(sdblk, path))
    print(f"{checked} documents")
    assert checked > 0


if __name__ == "__main__":
    main()
