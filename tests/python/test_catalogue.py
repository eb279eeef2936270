"""The definitions."""

import pytest

import sdblk


def test_definitions_by_type():
    assert list(sdblk.catalogue) == sorted(sdblk.catalogue)
    assert {5, 50, 52, 62, 99, 1000, 2000} <= set(sdblk.catalogue)
    assert 98 not in sdblk.catalogue
    channel = sdblk.catalogue[52]
    assert channel.type == 52
    assert channel.name == "Channel Identifier Blockette"
    assert channel.record_types == "S"
    assert list(channel)[:3] == ["loc", "chan", "subchan"]
    assert len(channel) == len(channel.fields)
    assert repr(channel) == "<sdblk.Definition 52 'Channel Identifier Blockette'>"


def test_a_field_has_titles_and_kinds():
    azimuth = sdblk.catalogue[52]["azimuth"]
    assert azimuth.key == "azimuth"
    assert azimuth.title == "Azimuth (degrees)"
    assert azimuth.kind == "real"
    assert (azimuth.stype, azimuth.width, azimuth.format) == ("D", 5, "###.#")
    assert sdblk.catalogue[52]["time"].kind == "time"
    assert sdblk.catalogue[52]["sunits"].refers == "uid"
    assert sdblk.catalogue[34]["uid"].kind == "code"
    assert sdblk.catalogue[99]["time"].kind == "time"
    assert sdblk.catalogue[1000]["dlenp"].kind == "integer"


def test_arrays_and_groups_name_their_count():
    assert sdblk.catalogue[61]["coefs"].kind == "reals"
    assert sdblk.catalogue[61]["coefs"].count == "ncoefs"
    stages = sdblk.catalogue[60]["stages"]
    assert stages.kind == "group"
    assert stages.count == "nstages"
    assert list(stages.fields) == ["stage", "nresps", "resps"]
    assert stages.fields["resps"].kind == "codes"
    assert stages.fields["resps"].refers == "rid"


def test_definitions_do_not_change():
    with pytest.raises(TypeError):
        sdblk.catalogue[1] = None
    with pytest.raises(AttributeError):
        sdblk.catalogue[52]["azimuth"].title = ""
