"""Volumes made by hand, byte by byte, for the tests."""

import struct
from datetime import datetime

LENGTH = 256


def control(number, letter, payload, *, length=LENGTH, continued=False):
    """A control record: header, payload, and blanks to its end."""
    head = b"%06d%s%s" % (number, letter.encode(), b"*" if continued else b" ")
    assert len(head + payload) <= length
    return (head + payload).ljust(length)


def blockette(kind, body):
    """A control blockette with its type and length in front."""
    body = body.encode("latin-1") if isinstance(body, str) else body
    return b"%03d%04d" % (kind, len(body) + 7) + body


def unit(code, name, description):
    return blockette(34, f"{code:03d}{name}~{description}~")


def channel(code="BHZ", units=1, start="2020,001", azimuth="045.0"):
    """A blockette 52 that refers to the units given by their code."""
    return blockette(
        52,
        f"00{code}0000001Vault~{units:0>3}{units:0>3}+64.500000-016.250000+0688.0002.5"
        f"{azimuth}-90.00001082.0000E+011.0000E-050000CG~{start}~~N",
    )


def data(
    number,
    *,
    station="DYNGA",
    location="00",
    channel="BHZ",
    network="XX",
    letter="D",
    start=datetime(2021, 3, 16, 6, 15, 52, 600000),
    samples=100,
    factor=20,
    multiplier=1,
    activity=0,
    correction=0,
    blockettes=(),
    order=">",
    length=LENGTH,
):
    """A data record.  blockettes are pairs of type and the bytes after type and next offset."""
    head = b"%06d%s " % (number, letter.encode())
    codes = station.ljust(5) + location.ljust(2) + channel.ljust(3) + network.ljust(2)
    day = start.timetuple().tm_yday
    time = struct.pack(
        order + "HHBBBxH",
        start.year,
        day,
        start.hour,
        start.minute,
        start.second,
        start.microsecond // 100,
    )
    places = []
    at = 48
    for _, body in blockettes:
        places.append(at)
        at += 4 + len(body)
    fixed = struct.pack(
        order + "HhhBBBBiHH",
        samples,
        factor,
        multiplier,
        activity,
        0,
        0,
        len(blockettes),
        correction,
        min(length // 2, 65535),
        places[0] if places else 0,
    )
    chain = b"".join(
        struct.pack(order + "HH", kind, after) + body
        for (kind, body), after in zip(blockettes, [*places[1:], 0])
    )
    return (head + codes.encode() + time + fixed + chain).ljust(length, b"\1")


def data_only(length=LENGTH, encoding=3, order=1):
    """The pair for a blockette 1000."""
    return 1000, bytes([encoding, order, length.bit_length() - 1, 0])


def timing(quality, microseconds):
    """The pair for a blockette 1001."""
    return 1001, struct.pack("BbBB", quality, microseconds, 0, 0)


def rate(value, order=">"):
    """The pair for a blockette 100."""
    return 100, struct.pack(order + "f", value) + bytes(4)


def dataless():
    """Two units, of which the second is not readable as UTF-8, and a channel that refers to one."""
    station = "DYNGA+64.500000-016.250000+0688.00001000Lava~0013210102020,001~~NXX"
    return (
        control(1, "A", unit(1, "M/S", "Velocity") + unit(2, "\xb0C", "Temperature"))
        + control(2, "S", blockette(50, station))
        + control(3, "S", channel())
    )
