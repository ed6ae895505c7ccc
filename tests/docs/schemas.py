#!/usr/bin/python3
"""Holds the schemas for editors to what the tool finds: each of many documents is given to both.

    schemas.py --schemas DIR --tool FILE --project FILE.yslib --vectors vectors.json

--tool: the program of command_lines.cpp.

A document without a fault of shape holds against its schema; any other is refused at the same places. A
place that lies in another that is told is the same: where an object is a text, the tool tells each key
that is missing in it.
"""
import argparse
import copy
import json
import pathlib
import re
import subprocess
import sys
import tempfile

import jsonschema

# What `update lint` says of keys and types; the rest is about packages, versions and names.
SHAPE = {"wrong-type", "unlisted-key", "schema-version", "bad-time", "no-path", "nothing-offered"}
# As publishers write them, and as they mistype them.
TIMES = ["2026-11-20", "2026-11-20T06:00", "2026-11-20 06:00:00", "2026-11-20t06:00:00z",
         "2026-11-20T06:00:00.5+0100", "2026-11-20T06:00:00,5-01:30", "2026-11-20T24:00:00Z",
         "2028-02-29", "2000-02-29", "2100-02-29", "2026-02-29", "2026-02-31", "2026-04-31",
         "2026-12-31", "2026-13-01", "2026-00-01", "0000-01-01", "20261120T060000Z",
         "2026-11-20T25:00:00Z", "2026-11-20T24:00:01Z", "2026-11-20T06:60:00Z",
         "2026-11-20T06:00:60Z", "2026-11-20T06:00:00+25:00", "2026-11-20T06:00:00+01:60",
         "2026-11-20T", "20.11.2026", "tomorrow", ""]
# What `project check` says of the disk and of identifiers, which no schema can see.
NO_SHAPE = re.compile("引用的文件不存在|未在 scripts\\[\\] 中登记")


def place_of(path):
    return "".join(f"[{step}]" if isinstance(step, int) else f".{step}" for step in path).lstrip(".")


def places_of_error(error):
    place = place_of(error.absolute_path)
    if error.validator == "required":
        missing = [key for key in error.validator_value if key not in error.instance]
        return {place_of([*error.absolute_path, key]) for key in missing}
    if error.validator == "additionalProperties":
        extra = error.instance.keys() - error.schema["properties"].keys()
        return {place_of([*error.absolute_path, key]) for key in extra}
    return {place}


def refused_by_schema(schema, document):
    places = set()
    for error in jsonschema.Draft202012Validator(schema).iter_errors(document):
        places |= places_of_error(error)
    return places


def lies_in(place, outer):
    return outer == "" or place == outer or place.startswith((f"{outer}.", f"{outer}["))


def outermost(places, others):
    """Each place, or the one of the others that it lies in."""
    return {min((it for it in others if lies_in(place, it)), key=len, default=place)
            for place in places}


def agree(one, other):
    everything = (one | other) - {""}
    same = outermost(one, everything) == outermost(other, everything)
    return same and ("" in one) == ("" in other)


def run_tool(tool, commands):
    """What each of them found; nothing for one that was refused."""
    lines = "".join(json.dumps([*words, "--format", "json"]) + "\n" for words in commands)
    result = subprocess.run([tool], input=lines, stdout=subprocess.PIPE, encoding="utf-8", check=True)
    answers = [json.loads(line) for line in result.stdout.split("\n") if line]
    assert len(answers) == len(commands)
    return [None if answer["status"] == 2 else json.loads(answer["out"]) for answer in answers]


def found_in(tool, command, suffix, documents):
    """What the command finds in each of the documents."""
    with tempfile.TemporaryDirectory() as folder:
        paths = [pathlib.Path(folder) / f"document{number}{suffix}" for number in range(len(documents))]
        for path, document in zip(paths, documents):
            path.write_text(json.dumps(document), encoding="utf-8")
        return run_tool(tool, [[*command, str(path)] for path in paths])


# --- manifests --------------------------------------------------------------------------------------

def manifest_faults(found):
    """Where the tool refuses it; as a whole, if it is no object."""
    if found is None:
        return {""}
    return {f"{it['where']}.path" if it["kind"] == "no-path" else it["where"]
            for it in found["findings"] if it["kind"] in SHAPE}


def manifests(vectors):
    """All vectors, those with one document once, but for texts that no validator reads."""
    seen = {}
    for vector in json.loads(vectors.read_text(encoding="utf-8"))["vectors"]:
        try:
            document = json.loads(vector["manifest"])
        except ValueError:
            continue
        seen.setdefault(json.dumps(document), (vector["name"], document))
    return list(seen.values()) + [(f"published at {time}", {"runtime": {}, "publishedAt": time})
                                  for time in TIMES]


# --- projects ---------------------------------------------------------------------------------------

def project_faults(found):
    return {it["path"] for it in found["issues"]
            if it["severity"] == 0 and not NO_SHAPE.search(it["message"])}


def paths_in(value, path=()):
    yield path
    if isinstance(value, (dict, list)):
        for key, inner in value.items() if isinstance(value, dict) else enumerate(value):
            yield from paths_in(inner, (*path, key))


def changed(document, path, value=None, remove=False):
    document = copy.deepcopy(document)
    holder = document
    for step in path[:-1]:
        holder = holder[step]
    if remove:
        del holder[path[-1]]
    else:
        holder[path[-1]] = value
    return document


def variants(demo):
    """The demo; without each value; and with others in place of each."""
    yield "the demo", demo
    yield "an unknown key", {**demo, "mine": {"a": 1}}
    for path in paths_in(demo):
        if not path:
            continue
        yield f"{place_of(path)} is missing", changed(demo, path, remove=True)
        for value in ("", "1", 1, 1.5, True, None, {}, [], {"x": 1}, ["x"]):
            yield f"{place_of(path)} is {json.dumps(value)}", changed(demo, path, value)


# --- both -------------------------------------------------------------------------------------------

def tell(name, by_schema, by_tool):
    print(f"{name}: the schema refuses {sorted(by_schema)}, the tool {sorted(by_tool)}")


def disagreements(schema, documents, found):
    """How many there are. Each document comes with its name, and with where the tool refuses it."""
    wrong = refused = 0
    for (name, document), by_tool in zip(documents, found):
        by_schema = refused_by_schema(schema, document)
        refused += bool(by_tool)
        if not agree(by_schema, by_tool) or (name == "the demo" and by_schema):
            tell(name, by_schema, by_tool)
            wrong += 1
    print(f"{len(documents)} documents, {refused} of them refused")
    return wrong + (refused == 0) + (refused == len(documents))


def check_manifests(options):
    documents = manifests(options.vectors)
    found = found_in(options.tool, ["update", "lint"], ".json", [it for _, it in documents])
    return disagreements(read_schema(options, "manifest"), documents, map(manifest_faults, found))


def check_projects(options):
    documents = list(variants(json.loads(options.project.read_text(encoding="utf-8"))))
    found = found_in(options.tool, ["project", "check"], ".yslib", [it for _, it in documents])
    return disagreements(read_schema(options, "yslib"), documents, map(project_faults, found))


def read_schema(options, name):
    schema = json.loads((options.schemas / f"{name}.schema.json").read_text(encoding="utf-8"))
    jsonschema.Draft202012Validator.check_schema(schema)
    return schema


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--schemas", type=pathlib.Path, required=True)
    parser.add_argument("--tool", type=pathlib.Path, required=True)
    parser.add_argument("--project", type=pathlib.Path, required=True)
    parser.add_argument("--vectors", type=pathlib.Path, required=True)
    options = parser.parse_args()
    options.tool = options.tool.resolve()
    wrong = check_manifests(options) + check_projects(options)
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
