"""Who publishes updates: a key pair, signed manifests, project packages and installers."""
import base64
import hashlib
import json
import subprocess
import zipfile

COMPONENT = ("minVersion", "setupUrl", "setupSha256")
RECORDS = {"plugins": ("id", "minVersion", "path"),
           "projects": ("name", "version", "zipUrl", "zipSha256")}
SIGNED = ("schemaVersion", "publishedAt", "runtime", "launcher", "editor", "pythonTools",
          "plugins", "projects")


def sha256(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def canonical(manifest):
    """What of a manifest is signed, for the types that a publisher gives its values."""
    kept = {key: _canonical_value(key, manifest[key]) for key in SIGNED if key in manifest}
    return json.dumps(kept, ensure_ascii=False, separators=(",", ":"))


def _canonical_value(key, value):
    if key in RECORDS:
        return [_picked(record, RECORDS[key]) for record in value]
    return _picked(value, COMPONENT) if isinstance(value, dict) else value


def _picked(record, keys):
    return {key: record[key] for key in keys if key in record}


class Publisher:
    def __init__(self, private):
        self.private = private
        self.public = _openssl("rsa", "-in", private, "-pubout")

    @classmethod
    def with_new_key(cls, folder):
        """Somebody else. It takes a quarter of a second."""
        private = folder / "private.pem"
        _openssl("genrsa", "-out", private, "2048")
        return cls(private)

    def sign(self, **manifest):
        """The manifest's text with its signature in it."""
        signature = _openssl("dgst", "-sha256", "-sign", self.private,
                             data=canonical(manifest).encode())
        return json.dumps({**manifest, "signature": base64.b64encode(signature).decode()},
                          ensure_ascii=False, indent=2)


def _openssl(*arguments, data=None):
    return subprocess.run(["openssl", *map(str, arguments)], input=data, check=True,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout


def component(installer):
    """The record of a component whose installer is this file beside the manifest."""
    return {"setupUrl": installer.name, "setupSha256": sha256(installer)}


def project(name, version, package):
    """The record of a project whose package is this file beside the manifest."""
    return {"name": name, "version": version, "zipUrl": package.name, "zipSha256": sha256(package)}


def write_package(path, files, compression=zipfile.ZIP_DEFLATED):
    """A project package: `files` holds text or bytes by name, in the order of its entries."""
    path.parent.mkdir(parents=True, exist_ok=True)
    with zipfile.ZipFile(path, "w", compression) as archive:
        for name, content in files.items():
            archive.writestr(name, content)
    return path


def write_installer(path, record, before_the_end=""):
    """A small program which writes down that it ran, and with how many arguments, in `record`."""
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(f'#!/bin/sh\necho "{path.name} started, $# arguments" >>"{record}"\n'
                    f'{before_the_end}\n')
    return path
