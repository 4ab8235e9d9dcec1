# SPDX-License-Identifier: MIT
"""Downloads the packages of packages.tsv with APT and verifies their checksums."""
import hashlib
import pathlib
import subprocess

LIST = pathlib.Path(__file__).parent.parent / "packages.tsv"


class FetchError(Exception):
    """A listed package is not available in the listed version."""


def listed():
    for line in LIST.read_text().splitlines():
        if line and not line.startswith("#"):
            yield line.split("\t")


def sha256(path):
    with open(path, "rb") as file:
        return hashlib.file_digest(file, "sha256").hexdigest()


def fetch(work):
    """WORK/packages/*.deb, WORK/unpacked/NAME/. Raises FetchError if a version or checksum differs."""
    packages, unpacked = work / "packages", work / "unpacked"
    packages.mkdir(parents=True, exist_ok=True)
    unpacked.mkdir(exist_ok=True)
    for name, version, checksum in listed():
        target = unpacked / name
        if target.exists():
            continue
        found = sorted(packages.glob(f"{name}_*.deb"))
        if not found:
            print(f"fetching {name} {version}", flush=True)
            done = subprocess.run(
                ["apt-get", "download", "-qq", f"{name}={version}"],
                cwd=packages,
                capture_output=True,
                check=False,
                text=True,
            )
            found = sorted(packages.glob(f"{name}_*.deb"))
            if done.returncode != 0 or not found:
                raise FetchError(
                    f"{name} {version} cannot be downloaded; is it the version of this Debian? {done.stderr}"
                )
        if sha256(found[0]) != checksum:
            found[0].unlink()
            raise FetchError(f"{name} {version} differs from the listed file: wrong SHA-256")
        part = unpacked / f".{name}.part"
        subprocess.run(["dpkg", "-x", found[0], part], check=True)
        part.rename(target)
