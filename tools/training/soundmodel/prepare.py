# SPDX-License-Identifier: MIT
"""Decodes all sources into WORK/pcm/SPLIT/KIND/GROUP__PART.s16 (16 kHz mono, 16 bit)."""
import concurrent.futures
import re
import subprocess
import sys

import numpy as np
from soundmodel.audio import RATE, decode, decode_raw
from soundmodel.sources import SOURCES, collection_split, files_of

LOUDEST = 0.9
LOOPED = 20  # seconds to which short loops are repeated
_BYTES = ["-f", "u8", "-ar", "11025", "-ac", "1"]
RAW = {".g722": ["-f", "g722"], ".gsm": ["-f", "gsm"], ".u8": _BYTES, ".ALS": _BYTES}


def write(path, samples):
    part = path.with_suffix(".part")
    part.write_bytes((np.clip(samples, -1, 1) * 32767).astype("<i2").tobytes())
    part.rename(path)


def levelled(samples):
    """At full scale at most: what is louder would be clipped when it is written."""
    peak = float(np.abs(samples).max()) if len(samples) else 0
    return samples * (LOUDEST / peak) if peak > LOUDEST else samples


def render_midi(path, soundfont):
    """A MIDI file as samples."""
    command = [
        "fluidsynth",
        "-qni",
        "-g",
        "0.6",
        "-r",
        str(RATE),
        "-T",
        "raw",
        "-O",
        "s16",
        "-F",
        "/dev/stdout",
    ]
    done = subprocess.run(
        command + [str(soundfont), str(path)], capture_output=True, check=False, timeout=300
    )
    raw = np.frombuffer(done.stdout[: len(done.stdout) // 4 * 4], "<i2").astype(np.float32) / 32768
    return raw.reshape(-1, 2).mean(1)


def prepare_source(job):
    """Decodes one source. Joins short files (voices, noises) into one file; writes music piece by piece."""
    source, work = job
    folder = work / "pcm" / source.split / source.kind
    folder.mkdir(parents=True, exist_ok=True)
    done = folder / f".{source.name}.done"
    if done.exists():
        return
    paths = files_of(source, work / "unpacked", work / "archives")
    joined = []
    if paths and paths[0].suffix in RAW:
        raw = b"".join(p.read_bytes() for p in paths if "silence" not in str(p))
        joined = [levelled(decode_raw(raw, RAW[paths[0].suffix]))]
        paths = []
    for path in paths:
        if path.suffix == ".mid":
            soundfont = next((work / "unpacked/fluid-soundfont-gm").rglob("FluidR3_GM.sf2"))
            samples = render_midi(path, soundfont)[: source.seconds * RATE]
        else:
            samples = decode(path, source.seconds)
        samples = levelled(samples)
        if source.loops and RATE < len(samples) < LOOPED * RATE:
            samples = np.resize(samples, -(-LOOPED * RATE // len(samples)) * len(samples))
        if source.kind == "music" and len(samples) >= 5 * RATE:
            write(folder / f"{source.name}__{path.stem.replace('__', '_')}.s16", samples)
        elif source.kind != "music" and len(samples) > RATE // 10:
            joined.append(samples)
    if joined:
        write(folder / f"{source.name}__all.s16", np.concatenate(joined))
    done.touch()


# Singing that is close to speech has a group of its own, which is drawn less often.
SPOKEN = re.compile(r"ev3_(caesium|francium|potassium|sodium)$|ps_shv_")


def collection_group(stem):
    """c-SOURCE, with the suffix -alone for unaccompanied singing; c-spoken for singing close to speech."""
    alone = "-alone" if stem.endswith("acappella") or stem.startswith(("ps_", "vocadito", "openair")) else ""
    return ("c-spoken" if SPOKEN.search(stem) else "c-" + stem.split("_")[0]) + alone


def prepare_collection(collection, work):
    """Decodes a licensed collection: FLAC and Opus files in SPLIT/KIND/ folders."""
    for path in sorted(p for p in collection.glob("*/*/*") if p.suffix in (".flac", ".opus")):
        name = str(path.relative_to(collection))
        kind = path.parent.name
        folder = work / "pcm" / collection_split(name) / kind
        folder.mkdir(parents=True, exist_ok=True)
        target = folder / f"{collection_group(path.stem)}__{path.stem}.s16"
        if not target.exists():
            write(target, levelled(decode(path)))


def prepare(work, collections):
    with concurrent.futures.ProcessPoolExecutor(2) as pool:
        list(pool.map(prepare_source, [(source, work) for source in SOURCES]))
    for collection in collections:
        prepare_collection(collection, work)


if __name__ == "__main__":
    import pathlib

    prepare(pathlib.Path(sys.argv[1]), [pathlib.Path(a) for a in sys.argv[2:]])
