# SPDX-License-Identifier: MIT
"""Queries of Debian's package database."""
import functools
import re
import subprocess
from pathlib import Path


def output(*command, **options):
    """The standard output of a command; raises CalledProcessError if it fails."""
    return subprocess.run(
        [str(c) for c in command], check=True, text=True, stdout=subprocess.PIPE, **options
    ).stdout


def names(relations):
    """The package names in a list of dependencies, including all alternatives."""
    return {re.split(r"[\s(:]", d.strip())[0] for d in re.split(r"[,|]", relations)} - {""}


@functools.lru_cache
def installed_files():
    """The packages of each file in /usr. (One dpkg query per file would take half a minute.)"""
    packages = {}
    for listing in Path("/var/lib/dpkg/info").glob("*.list"):
        for path in listing.read_text().splitlines():
            # If /lib is a link into /usr, packages list files under either path.
            path = path.removeprefix("/usr")
            packages.setdefault(path, set()).add(listing.stem.split(":")[0])
    return packages


def owners(path):
    """The packages that contain a file."""
    return installed_files().get(str(path).removeprefix("/usr"), set())


def closure(packages):
    """These packages and all their installed dependencies."""
    form = "${Package}\t${Depends}, ${Pre-Depends}\t${Provides}\n"
    depends, providers = {}, {}
    for line in output("dpkg-query", "--show", "--showformat", form).splitlines():
        package, needed, provided = line.split("\t")
        depends[package] = names(needed)
        for name in names(provided):
            providers.setdefault(name, set()).add(package)
    found, left = set(), set(packages)
    while left:
        found |= left
        needed = {d for p in left for d in depends.get(p, ())}
        left = (needed | {p for n in needed for p in providers.get(n, ())}) - found
    return found


def bare_system():
    """The packages of a minimal system."""
    form = "${Package}\t${Essential}\t${Priority}\n"
    rows = (line.split("\t") for line in output("dpkg-query", "--show", "--showformat", form).splitlines())
    return closure({p for p, essential, priority in rows if essential == "yes" or priority == "required"})
