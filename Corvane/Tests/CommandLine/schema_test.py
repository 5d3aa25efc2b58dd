"""Faults sought: a schema that takes what clips can't have or refuses what they have, a check that says other
things than the schema, stored schemas that are not those of the program."""

import copy
import json
import re

import jsonschema
import pytest

from programs import SOURCE, synthex

STORED = {"clip": "synthex.schema.json", "project": "project.schema.json", "sweep": "sweep-plan.schema.json"}


def validator(kind):
    schema = json.loads(synthex("schema", kind).stdout)
    jsonschema.Draft202012Validator.check_schema(schema)
    return jsonschema.Draft202012Validator(schema)


def blocks(document):
    """The JSON in a page of documentation."""
    return re.findall(r"```json\n(.*?)```", (SOURCE / "Docs" / document).read_text(), re.S)


USUAL = json.loads((SOURCE / "Samples/defaults.synthex").read_text())
COLORS = [key for key in USUAL if key.endswith(("Color", "ColorStart", "ColorEnd"))]


def wrong_settings():
    """Pairs of a place and settings that are wrong in it, and in it alone."""

    def changed(path, value):
        settings = copy.deepcopy(USUAL)
        *parents, last = path.split(".")
        place = settings
        for parent in parents:
            place = place[parent]
        if value is None:
            del place[last]
        else:
            place[last] = value
        return path, settings

    yield from (changed(key, None) for key in USUAL)
    yield from (changed(f"{key}.mAlphaPart", None) for key in COLORS)
    for path, values in {
        "mPixelFormat": [0, 305419896, 61726762, -1, 1 << 64, "bgra", 1634887522.5],
        "mFrameWidth": [0, -1, 32769, "720", True],
        "mFrameHeight": [0, 4294967296, [480]],
        "mFieldType": [3, -1, "upper"],
        "mRenderFormat": [2, False],
        "mFramePAR.numerator": [0, 4294967296],
        "mFramePAR.denominator": [0, 1.5],
        "mVideoDuration.ticks": [0, -15240960000000, 9223372036854775808],
        "mVideoFrameRate.ticksperframe": [0, None],
        "mFramePAR": [1, "40:33"],
        "mVideoDuration": [15240960000000],
        "mUpperFieldColor": ["#ff8040", [1, 1, 0.5, 0.25]],
        "mUpperFieldColor.mRedPart": ["1", 1e39],
        "mTopGradientColorStart": [USUAL["mTopGradiantColorStart"]],
        "mFramePAR.numerater": [40],
        "mLowerFieldColor.mAlpha": [1],
        "mClipName": ["Bars"],
        "mframewidth": [720],
    }.items():
        yield from (changed(path, value) for value in values)


def test_stored_schemas_are_those_of_the_program():
    for kind, name in STORED.items():
        assert (SOURCE / "Docs" / name).read_text() == synthex("schema", kind).stdout, name


def test_samples_and_examples_are_taken():
    texts = [path.read_text() for path in sorted((SOURCE / "Samples").glob("*.synthex"))]
    texts.append(blocks("SettingsFile.md")[0])
    assert len(texts) == 11
    clip = validator("clip")
    for text in texts:
        clip.validate(json.loads(text))
    checked = synthex("info", "--strict", *map(str, (SOURCE / "Samples").glob("*.synthex")))
    assert (checked.returncode, checked.stderr) == (0, "")


def test_wrong_settings_are_refused_and_told_by_their_place(tmp_path):
    clip = validator("clip")
    rows = list(wrong_settings())
    assert len(rows) > 55
    for number, (place, settings) in enumerate(rows):
        for document in settings, {"SerializerWrappedObject": settings}:
            assert not clip.is_valid(document), place
        (tmp_path / f"{number:02}").write_text(json.dumps(settings))
    # What the schema can't see: integers with a fraction of 0, and what is no JSON.
    rows += [("mFrameWidth", '{"mFrameWidth": 720.0}'), ("", '{"mFrameWidth": 720,\n,}'), ("", "[]")]
    for number in range(len(rows) - 3, len(rows)):
        (tmp_path / f"{number:02}").write_text(rows[number][1])
    result = synthex("info", "--strict", *[str(tmp_path / f"{number:02}") for number in range(len(rows))])
    assert result.returncode == 1
    said = [line for line in result.stderr.splitlines() if "these are no settings" not in line]
    for number, (place, settings) in enumerate(rows):
        lines = [line for line in said if line.startswith(f"synthex: {tmp_path}/{number:02}: ")]
        if isinstance(settings, dict):
            assert len(lines) == 1, (place, lines)
        assert any(f': "{place}" ' in line if place else "it is no " in line for line in lines), (place, lines)
    assert 'passed over; write "mTopGradiantColorStart".' in result.stderr
    assert 'write "numerator".' in result.stderr
    assert "(0x12345678), which is no pixel format" in result.stderr
    assert "at line 2, column 1" in result.stderr


def test_findings_are_told_to_programs_and_of_standard_input():
    settings = {**USUAL, "mNote": "a"}
    result = synthex("info", "--strict", "--json", "-", input=json.dumps(settings))
    facts = json.loads(result.stdout)
    assert (result.returncode, facts["path"], facts["frames"]) == (4, "standard input", 1800)
    assert [finding["key"] for finding in facts["findings"]] == ["mNote"]
    assert result.stderr == f"synthex: standard input: {facts['findings'][0]['sentence']}.\n"
    assert "findings" not in json.loads(synthex("info", "--json", "-", input=json.dumps(settings)).stdout)


def test_projects_and_plans():
    project, plan = validator("project"), validator("sweep")
    sequence = dict(width=720, height=576, parNumerator=1, parDenominator=1, scale=25, sampleSize=1)
    good = {"format": "corvane-project", "version": 1, "sequence": sequence,
            "clips": [{"name": "a", "file": "a.synthex"}, {"name": "b", "settings": json.dumps(USUAL)}]}
    project.validate(good)
    plan.validate(json.loads(next(text for text in blocks("Sweep.md") if '"axes"' in text)))
    for wrong in ({"version": 2}, {"format": "x"}, {"sequence": {**sequence, "width": -1}},
                  {"clips": [{"name": "a"}]}, {"clips": [{"name": "a", "file": "a", "settings": "{}"}]},
                  {"clip": []}):
        assert not project.is_valid({**good, **wrong}), wrong
    usual = {"version": 1, "base": "a.synthex", "output": "{rate}.mkv"}
    plan.validate(usual)
    for wrong in ({"version": 2}, {"split": 0}, {"zip": 1}, {"axis": []},
                  {"axes": [{"name": "speed", "values": ["1"]}]}, {"axes": [{"name": "rate", "values": []}]}):
        assert not plan.is_valid({**usual, **wrong}), wrong


@pytest.mark.parametrize("arguments", [["schema", "clips"], ["schema", "clip", "project"]])
def test_other_kinds_are_wrong_usage(arguments):
    assert synthex(*arguments).returncode == 2
