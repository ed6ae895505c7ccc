#!/usr/bin/env python3
"""Writes vectors.json anew: manifests, what of them is signed, what a verifier must answer, and what
they offer to an installation.

This is a second implementation of the signed form and, in evaluation.py, of the offer, written from
their description and not from the launcher's code. The key pairs are made here with the openssl program and their private halves are
thrown away, so every run gives other signatures.

    tests/data/update/make_vectors.py
"""
import base64
import hashlib
import json
import math
import pathlib
import subprocess
import tempfile

import evaluation

FOLDER = pathlib.Path(__file__).resolve().parent
WORK = tempfile.TemporaryDirectory()
BAD_CNG = "0xFFFFFFFFC000A000"
BAD_LEGACY = "2148073478"

# --- the signed form --------------------------------------------------------------------------

COMPONENT = ("minVersion", "setupUrl", "setupSha256")
PLUGIN = ("id", "minVersion", "path")
PROJECT = ("name", "version", "zipUrl", "zipSha256")


def text(value):
    return value if isinstance(value, str) else ""


def quoted(value):
    return json.dumps(text(value), ensure_ascii=False)


def record(value, keys):
    value = value if isinstance(value, dict) else {}
    return "{" + ",".join(f'"{key}":{quoted(value[key])}' for key in keys if key in value) + "}"


def records(value, keys):
    value = value if isinstance(value, list) else []
    return "[" + ",".join(record(element, keys) for element in value) + "]"


def scalar(value):
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, (int, float)):
        number = float(value)
        whole = math.trunc(number)
        return str(whole) if abs(number - whole) < 1e-9 else "%.15g" % number
    return quoted(value)


ROOT = {
    "schemaVersion": scalar,
    "publishedAt": quoted,
    "runtime": lambda value: record(value, COMPONENT),
    "launcher": lambda value: record(value, COMPONENT),
    "editor": lambda value: record(value, COMPONENT),
    "pythonTools": lambda value: record(value, COMPONENT),
    "plugins": lambda value: records(value, PLUGIN),
    "projects": lambda value: records(value, PROJECT),
}


def canonical(manifest_text):
    try:
        root = json.loads(manifest_text)
    except ValueError:
        return None
    if not isinstance(root, dict):
        return None
    members = (f'"{key}":{write(root[key])}' for key, write in ROOT.items() if key in root)
    return "{" + ",".join(members) + "}"


# --- keys and signatures ----------------------------------------------------------------------


def openssl(*arguments, data=b""):
    return subprocess.run(["openssl", *arguments], input=data, check=True, capture_output=True).stdout


def make_pair(name, bits):
    private = pathlib.Path(WORK.name) / name
    openssl("genrsa", "-out", str(private), str(bits))
    return openssl("rsa", "-in", str(private), "-pubout").decode()


def sign(data, pair="publisher"):
    return openssl("dgst", "-sha256", "-sign", str(pathlib.Path(WORK.name) / pair), data=data.encode())


def base64_of(data):
    return base64.b64encode(data).decode()


# --- the vectors ------------------------------------------------------------------------------

keys = {name: make_pair(name, bits) for name, bits in
        {"publisher": 2048, "publisher 3072": 3072, "publisher 4096": 4096, "stranger": 2048}.items()}
vectors = []


def add(name, manifest, ok, message, key="publisher", signature=None):
    vector = {"name": name, "manifest": manifest, "key": key, "canonical": canonical(manifest),
              "ok": ok, "message": message}
    if signature is not None:
        vector["signature"] = signature
    vectors.append(vector)


def with_signature(manifest, signature):
    return json.dumps({**manifest, "signature": signature}, ensure_ascii=False)


def good(name, manifest_text, pair="publisher"):
    """A text, object or not yet signed, with its signature put in as the last key."""
    body = manifest_text.rstrip()[:-1].rstrip()
    comma = "" if body.endswith("{") else ","
    signature = base64_of(sign(canonical(manifest_text), pair))
    add(name, body + comma + f'"signature":"{signature}"}}', True, "signature verified", pair)


def details(size, manifest_text, first=f"BCryptVerifySignature direct={BAD_CNG} reversed={BAD_CNG}; "
            f"CryptVerifySignature direct={BAD_LEGACY} reversed={BAD_LEGACY}"):
    digest = hashlib.sha256(canonical(manifest_text).encode()).hexdigest()
    return (f"RSA signature verification failed ({first}), key={{key}}, "
            f"canonical_sha256={digest}, sig_bytes={size}")


def refused(name, manifest_text, size=256, key="publisher", signature=None):
    add(name, manifest_text, False, details(size, manifest_text), key, signature)


def component(name):
    return {"version": "1.2.0", "minVersion": "1.0.0", "setupUrl": f"packages/{name}-1.2.0.exe",
            "setupSha256": "a" * 64}


FULL = {
    "schemaVersion": 1, "publishedAt": "2026-01-02T03:04:05Z",
    "runtime": component("runtime"), "launcher": component("launcher"),
    "editor": component("editor"), "pythonTools": component("python"),
    "plugins": [{"id": "camera", "minVersion": "1.1.0", "path": "bin/camera.dll"}],
    "projects": [{"name": "产线三", "version": "1.2.0", "zipUrl": "projects/line3.zip", "zipSha256": "b" * 64},
                 {"name": "demo", "version": "1.0.1", "zipUrl": "projects/demo.zip", "zipSha256": "C" * 64}],
}
full_text = json.dumps(FULL, ensure_ascii=False)

# What verifies
good("all keys", full_text)
good("nothing but a signature", "{}")
good("indented", json.dumps(FULL, ensure_ascii=False, indent=4))
good("keys in reverse order", json.dumps(dict(reversed(FULL.items())), ensure_ascii=False))
good("Chinese written as escapes", json.dumps(FULL))
good("a key of 3072 bits", full_text, "publisher 3072")
good("a key of 4096 bits", full_text, "publisher 4096")
for name, manifest in {
    "a whole number": '{"schemaVersion":2}', "a fraction of zero": '{"schemaVersion":2.0}',
    "close to a whole number": '{"schemaVersion":2.0000000001}', "a fraction": '{"schemaVersion":2.5}',
    "fifteen digits": '{"schemaVersion":0.1234567890123456}', "an exponent": '{"schemaVersion":0.0000125}',
    "too small to count": '{"schemaVersion":1e-10}', "zero": '{"schemaVersion":0}',
    "minus zero": '{"schemaVersion":-0.0}', "a negative number": '{"schemaVersion":-7}',
    "a negative fraction": '{"schemaVersion":-7.25}', "2 to the power of 53": '{"schemaVersion":9007199254740992}',
    "beyond 2 to the power of 63": '{"schemaVersion":1e19}', "far beyond it": '{"schemaVersion":1e25}',
    "true": '{"schemaVersion":true}', "false": '{"schemaVersion":false}', "a string": '{"schemaVersion":"2"}',
    "null": '{"schemaVersion":null}', "an array": '{"schemaVersion":[2]}', "an object": '{"schemaVersion":{"a":2}}',
}.items():
    good("schemaVersion: " + name, manifest)
for name, value in {
    "empty": "", "blanks": "  a  b ", "quotation mark and backslash": 'a"b\\c', "slashes": "a/b//c",
    "short escapes": "\b\f\n\r\t", "control characters": "\x01\x1f\x1b", "delete": "\x7f",
    "Chinese": "产线三", "beyond the first plane": "\U0001F600", "line separators": "\u2028\u2029",
    "brackets": "[a],{b}", "percent signs": "%1 %2 %%", "a number": 20260102, "null": None, "an array": ["x"],
}.items():
    good("publishedAt: " + name, json.dumps({"publishedAt": value}, ensure_ascii=False))
for name, value in {
    "empty": {}, "a version alone": {"version": "9.9.9"}, "unlisted keys": {"notes": "x", "SetupUrl": "y"},
    "an empty value": {"setupUrl": ""}, "wrong types": {"minVersion": 1, "setupUrl": ["u"], "setupSha256": None},
    "a string": "x", "an array": [{"setupUrl": "u"}], "null": None, "a number": 7,
}.items():
    for key in ("runtime", "pythonTools"):
        good(f"{key}: {name}", json.dumps({key: value}))
for name, value in {
    "empty": [], "an object": {"id": "a"}, "elements of all types": [1, "x", None, True, [], {}, {"id": "a"}],
    "wrong types": [{"id": 1, "minVersion": {}, "path": False}], "in the file's order": [{"path": "b"}, {"path": "a"}],
}.items():
    good("plugins: " + name, json.dumps({"plugins": value}))
for name, value in {
    "empty": [], "an object": {"name": "a"}, "null": None, "nested arrays": [[{"name": "a"}]],
    "wrong types": [{"name": [], "version": 1.5, "zipUrl": None, "zipSha256": {}}],
    "the same name twice": [{"name": "a"}, {"name": "a", "version": "2"}],
    "two hundred": [{"name": f"line_{i}", "version": f"1.0.{i}"} for i in range(200)],
}.items():
    good("projects: " + name, json.dumps({"projects": value}))

# What is not signed may change after signing
signature = base64_of(sign(canonical(full_text)))
for key in ("runtime", "launcher", "editor", "pythonTools"):
    changed = {**FULL, key: {**FULL[key], "version": "99.0.0"}}
    add(f"the version of {key} changed after signing", with_signature(changed, signature), True, "signature verified")
add("an unlisted key added after signing", with_signature({**FULL, "notes": "x"}, signature), True, "signature verified")

# What is signed may not
for key in ("schemaVersion", "publishedAt"):
    refused(f"{key} changed after signing", with_signature({**FULL, key: "changed"}, signature))
for part in ("runtime", "launcher", "editor", "pythonTools"):
    for key in COMPONENT:
        changed = {**FULL, part: {**FULL[part], key: "changed"}}
        refused(f"{key} of {part} changed after signing", with_signature(changed, signature))
    refused(f"{part} taken away after signing",
            with_signature({key: value for key, value in FULL.items() if key != part}, signature))
for key in PLUGIN:
    refused(f"{key} of a plug-in changed after signing",
            with_signature({**FULL, "plugins": [{**FULL["plugins"][0], key: "changed"}]}, signature))
for key in PROJECT:
    refused(f"{key} of a project changed after signing",
            with_signature({**FULL, "projects": [{**FULL["projects"][0], key: "changed"}, FULL["projects"][1]]}, signature))
refused("projects exchanged after signing",
        with_signature({**FULL, "projects": FULL["projects"][::-1]}, signature))
refused("a project added after signing",
        with_signature({**FULL, "projects": FULL["projects"] + [{"name": "x"}]}, signature))

# Signatures
raw = base64.b64decode(signature)
add("bytes reversed", with_signature(FULL, base64_of(raw[::-1])), True, "signature verified")
add("base64 with stray characters", with_signature(FULL, f" {signature[:50]}-\n*{signature[50:]}\t"), True, "signature verified")
add("a detached signature", full_text, True, "signature verified", signature=signature)
add("a detached signature, another within", with_signature(FULL, "AAAA"), True, "signature verified", signature=signature)
refused("signed by a stranger", with_signature(FULL, base64_of(sign(canonical(full_text), "stranger"))))
refused("the stranger's key", with_signature(FULL, signature), key="stranger")
refused("a key of another length", with_signature(FULL, signature), key="publisher 4096")
refused("a byte missing", with_signature(FULL, base64_of(raw[:-1])), 255)
refused("a byte more", with_signature(FULL, base64_of(raw + b"\0")), 257)
refused("three bytes", with_signature(FULL, "AAAA"), 3)
refused("another manifest's signature", with_signature(FULL, base64_of(sign("{}"))))
for name, value in {"empty": "", "blanks": " \n", "null": None, "a number": 5, "an array": [signature]}.items():
    add("signature: " + name, with_signature(FULL, value), False, "signature is empty")
add("no signature", full_text, False, "signature is empty")
add("nothing of the signature is base64", with_signature(FULL, "!?*-"), False, "signature base64 is invalid")

# Manifests
for name, manifest in {"no text": "", "blanks": " \n", "not JSON": "MZ", "cut short": full_text[:-1], "an array": "[]",
                       "a string": '"x"', "null": "null", "a trailing comma": '{"schemaVersion":1,}',
                       "single quotes": "{'schemaVersion':1}", "text behind it": "{} x"}.items():
    add("manifest: " + name, manifest, False, "manifest JSON is invalid")
add("manifest: no text, a detached signature", "", False, "manifest JSON is empty", signature=signature)

# Key files
pem = keys["publisher"]
body = "".join(pem.splitlines()[1:-1])
signed = with_signature(FULL, signature)
for name, content in {"lines ending in CRLF": pem.replace("\n", "\r\n"), "a byte-order mark": "\ufeff" + pem,
                      "any label": pem.replace("PUBLIC KEY", "SOMETHING ELSE"),
                      "one line": f"-----BEGIN X-----{body}-----END Y-----",
                      "text around it": "key of line 3\n" + pem + "end\n"}.items():
    keys[name] = content
    add("key file: " + name, signed, True, "signature verified", name)
for name, content in {"no block": "text", "no end": pem[:-12], "no body": "-----BEGIN X-----\n-----END X-----\n",
                      "a stray character": pem.replace("MII", "*MII", 1)}.items():
    keys[name] = content
    add("key file: " + name, signed, False, "update public key PEM is invalid", name)
keys["empty"] = ""
add("key file: empty", signed, False, "unable to read update public key: ", "empty")
add("key file: missing", signed, False, "update public key not found: {key}", "missing")
keys["not a key"] = "-----BEGIN X-----\nAAAA\n-----END X-----\n"
add("key file: not a key", signed, False, details(256, signed, "CryptDecodeObjectEx failed: 2148086027"), "not a key")

# What a manifest offers to an installation
def project_of(name="产线三", version="1.1.0", folder="line3", sidecar=None, **more):
    stated = {"name": name, "displayName": "x", "version": version, **more}
    stated = {key: value for key, value in stated.items() if value is not None}
    return {"folder": folder, "file": folder + ".yslib", "sidecar": sidecar,
            "text": json.dumps({"schemaVersion": 1, "project": stated}, ensure_ascii=False)}


def offer(name, manifest, usb=False, project=project_of(), release=None, python=None, files=()):
    good("offer: " + name, json.dumps(manifest, ensure_ascii=False))
    installation = {
        "usb": usb, "project": project, "files": list(files),
        "release_version": json.dumps(release) if isinstance(release, dict) else release,
        "python_manifest": json.dumps(python) if isinstance(python, dict) else python}
    vectors[-1]["installation"] = installation
    vectors[-1]["evaluation"] = evaluation.evaluate(manifest, installation)


ALL_OLD = {key + "PackageVersion": "1.1.0" for key in evaluation.LABELS}
ALL_NEW = {key + "PackageVersion": "1.2.0" for key in evaluation.LABELS}
ON_STICK = ["{stick}/packages/%s-1.2.0.exe" % name for name in ("runtime", "launcher", "editor", "python")] + [
    "{stick}/projects/line3.zip", "{app}/bin/camera.dll"]


def with_component(key, **changes):
    changed = {**component(key), **changes}
    return {key: {name: value for name, value in changed.items() if value is not None}}


def with_project(**changes):
    changed = {**FULL["projects"][0], **changes}
    return {"projects": [{name: value for name, value in changed.items() if value is not None}]}


for usb in (False, True):
    on = "on a stick, " if usb else "online, "
    offer(on + "everything is newer", FULL, usb, release=ALL_OLD, files=ON_STICK)
    offer(on + "nothing is newer", FULL, usb, project_of(version="1.2.0"), ALL_NEW, files=ON_STICK)
    offer(on + "no version is known", FULL, usb, project_of(version=None), files=ON_STICK)
    offer(on + "without a project", FULL, usb, None, ALL_OLD, files=ON_STICK)
    offer(on + "no package is there", FULL, usb, release=ALL_OLD)
    offer(on + "an empty manifest", {}, usb, release=ALL_OLD)
    offer(on + "the project alone", with_project(), usb, release=ALL_OLD, files=ON_STICK)

for name, manifest in {
    "by its name in another case": with_project(name="LINE-A"), "by its folder": with_project(name="Line3"),
    "by no name": with_project(name="line4"), "without a name": with_project(name=None),
    "an empty name": with_project(name=""), "a name that is a number": with_project(name=3),
    "demo is not its name": with_project(name="demo"),
    "no list of projects": {"projects": with_project(name="line3")["projects"][0]},
    "the first that matches counts": {"projects": [
        *with_project(name="other")["projects"], *with_project(name="line3", version="1.0")["projects"],
        *with_project(name="line3", version="9.0")["projects"]]},
    "elements of other types": {"projects": [1, None, "line3", ["line3"], *with_project(name="line3")["projects"]]},
}.items():
    offer("a project " + name, manifest, project=project_of("line-a"))
for folder in ("demo", "Demo_line3", "demolition", "my_demo"):
    offer(f"demo and the folder {folder}", with_project(name="demo"), project=project_of("line", folder=folder))
offer("demo as the project's own name", with_project(name="demo"), project=project_of("DEMO"))
offer("a project that does not say its name", with_project(name="line3"), project=project_of(None))
offer("a project that does not say its name and has no record", with_project(name="x"), project=project_of(None))
offer("a project file that is no JSON", with_project(name="line3"),
      project={"folder": "line3", "file": "a.yslib", "sidecar": None, "text": 'x "version" : "v0.9" {'})
offer("an empty project file", with_project(name="line3"),
      project={"folder": "line3", "file": "a.yslib", "sidecar": " 1.1 \n", "text": ""})

for local, remote in (("1.1", "1.1.0"), ("v1.2", "1.2.1"), ("1.10", "1.9"), ("1.9", "1.10"), ("1.2-beta", "1.2"),
                      (" V1.2.0 ", "v1.2.0"), ("latest", "1.0"), ("1.0", "latest"), ("1.0.0.1", "1.0.0"),
                      (1.5, "1.6.0"), (2, "2.0.1"), (True, "1.0"), (None, "1.0"), ("1.0", ""), (None, ""), ("1.0", "  ")):
    offer(f"project version {local!r} and {remote!r}", with_project(version=remote), project=project_of(version=local))
offer("a project version from the sidecar", with_project(), project=project_of(version=None, sidecar="1.5\n"))
offer("a sidecar that is not asked", with_project(), project=project_of(version="1.5", sidecar="0.1\n"))
offer("a version that stands elsewhere in the project file", with_project(),
      project={**project_of(), "text": '{"project":{"name":"产线三"},"scripts":[{"version":"9"}]}'})
for name, changes in {"no zipUrl": {"zipUrl": None}, "a blank zipUrl": {"zipUrl": " "}, "no zipSha256": {"zipSha256": None},
                      "a zipSha256 that is a number": {"zipSha256": 7}, "a version that is a number": {"version": 1.5},
                      "no version": {"version": None}, "per cent signs": {"version": "%1 %2", "name": "产线三"}}.items():
    offer("a project record with " + name, with_project(**changes))

for name, changes in {
    "no version": {"version": None}, "no version anywhere": {"version": None, "setupUrl": "packages/setup.exe"},
    "a version of two numbers": {"version": "1.3"}, "a version in free text": {"version": "build 1.3.0.7 of May"},
    "a version that is a number": {"version": 1.3}, "no setupUrl": {"setupUrl": None},
    "a blank setupUrl": {"setupUrl": " \t"}, "a setupUrl that is an object": {"setupUrl": {}},
    "a query in its setupUrl": {"version": None, "setupUrl": "https://h/setup.exe?v=1.4.0"},
    "a minimum above": {"minVersion": "1.1.1"}, "a minimum below": {"minVersion": "1.0"},
    "a blank minimum": {"minVersion": " "}, "no minimum": {"minVersion": None}, "no hash": {"setupSha256": None},
    "the same version": {"version": "1.1.0"}, "an older version": {"version": "0.9.0"}, "four numbers": {"version": "1.1.0.1"},
}.items():
    offer("a runtime record with " + name, with_component("runtime", **changes), release=ALL_OLD)
offer("a minimum without a known version", with_component("editor", minVersion="9.0.0"))
for name, release in {"the package's version first": {"editorPackageVersion": "1.5.0", "editorMinVersion": "1.0.0"},
                      "the minimum version second": {"editorPackageVersion": "", "editorMinVersion": "1.0.0"},
                      "a number is none": {"editorPackageVersion": 1.5}, "no object": "[]", "no JSON": "editor=1"}.items():
    offer("release_version.json: " + name, with_component("editor"), release=release)
for name, python in {"the bundled version": {"bundledPythonVersion": "1.1.9"}, "of zeros": {"bundledPythonVersion": "0.0.0"},
                     "no object": "[]", "another key": {"version": "9"}}.items():
    offer("python manifest: " + name, with_component("pythonTools"), python=python)
offer("python manifest: asked last", with_component("pythonTools"), release=ALL_NEW, python={"bundledPythonVersion": "1.0.0"})
offer("a package in a folder of Chinese name", with_component("editor", setupUrl="安装包/编辑器_1.3.0.exe"), True,
      files=["{stick}/安装包/编辑器_1.3.0.exe"])

for name, plugins in {
    "beside the program's folder": [{"id": "a", "path": "bin/above.dll"}],
    "in the program's folder": [{"id": "a", "path": "BIN/x.dll"}], "leading dots": [{"id": "a", "path": "././plugins/a.dll"}],
    "leading dots of one that is missing": [{"id": "a", "path": "./././none.dll"}, {"id": "b", "path": "././bin/none.dll"}],
    "backslashes": [{"id": "a", "path": ".\\plugins\\a.dll"}, {"id": "b", "path": ".\\bin\\none.dll"}],
    "missing in bin": [{"id": "a", "path": "bin/none.dll"}], "missing elsewhere": [{"id": "b", "path": "none.dll"}],
    "missing and absolute": [{"id": "c", "path": "/no/where/c.dll"}], "no path": [{"id": "d"}, {"id": "e", "path": "  "}],
    "other types": [5, "x", None, {"path": 5}], "blanks around it": [{"id": "f", "path": " plugins/none.dll "}],
    "a minimum where no version is known": [{"id": "g", "path": "plugins/a.dll", "minVersion": "9.9"}],
}.items():
    offer("plug-ins: " + name, {"plugins": plugins, **with_component("launcher")},
          files=["{above}/bin/above.dll", "{app}/BIN/x.dll", "{app}/plugins/a.dll"])
offer("a runtime of the lowest version", with_component("runtime", minVersion="1.1"), release=ALL_OLD)
offer("warnings without an offer", {"plugins": [{"id": "b", "path": "none.dll"}], **with_component("runtime", minVersion="1.3")},
      release=ALL_OLD)

with open(FOLDER / "vectors.json", "w", encoding="utf-8", newline="\n") as out:
    json.dump({"keys": keys, "vectors": vectors}, out, ensure_ascii=False, indent=1)
    out.write("\n")
print(f"{len(vectors)} vectors")
