# SPDX-License-Identifier: MIT
"""Writes the clips of tests/classifier/data: a few synthetic seconds each and the model's confidences, so that tests can
compare the program's network with this one."""
import json
import pathlib
import struct
import tempfile

import numpy as np
import soundfile
from soundmodel.audio import RATE, decode
from soundmodel.network import LABELS, confidences
from soundmodel.synthesis import shaped_noise, speak


def voice(text, name):
    with tempfile.TemporaryDirectory() as scratch:
        path = pathlib.Path(scratch) / "voice.wav"
        speak("flite", name, text, path)
        samples = decode(path)
    return samples / np.abs(samples).max() * 0.5


def tune(seconds, rng):
    """Broken chords of plucked strings over a bass."""
    samples = np.zeros(int(seconds * RATE))
    beat = RATE // 4
    for index in range(len(samples) // beat):
        root = [48, 53, 55, 48][index // 8 % 4]
        for note in (root + [0, 4, 7, 12][index % 4], root - 12):
            time = np.arange(min(RATE, len(samples) - index * beat)) / RATE
            pitch = 440 * 2 ** ((note + 12 - 69) / 12)
            string = sum(
                np.sin(2 * np.pi * pitch * k * time + rng.uniform(0, 6)) / k**1.3 for k in range(1, 9)
            )
            samples[index * beat : index * beat + len(time)] += string * np.exp(-3 * time)
    return samples / np.abs(samples).max() * 0.5


def made_clips():
    rng = np.random.default_rng(5)
    talk = voice(
        "The library on the corner opens at nine, and it is closed on the first Monday of each month.", "awb"
    )
    offer = voice(
        "Come and see our garden chairs. This week only, every second chair costs you nothing at all.", "slt"
    )
    music = tune(7, rng)
    bed = tune(len(offer) / RATE, rng)
    hiss = shaped_noise(rng, 5 * RATE)
    clips = {
        "speech": talk,
        "music": music,
        "offer": 0.8 * offer + 0.3 * bed[: len(offer)],
        "noise": 0.1 * hiss,
    }
    clips["cut"] = np.concatenate([talk[: 3 * RATE], 0.8 * offer[: 3 * RATE] + 0.3 * bed[: 3 * RATE]])
    return clips


def write_clips(folder, model, tagger, **calibration):
    """NAME.flac and NAME.json for each clip; `model` is the file that the scores belong to."""
    folder.mkdir(parents=True, exist_ok=True)
    (checksum,) = struct.unpack_from("<I", model.read_bytes(), 16)
    for name, samples in made_clips().items():
        path = folder / f"{name}.flac"
        if not path.exists():
            soundfile.write(path, np.clip(samples, -1, 1), RATE, "PCM_16")
        found = confidences(tagger, decode(path), **calibration)
        results = [
            {"t": 1 + 0.5 * i, **{label: round(float(c), 5) for label, c in zip(LABELS, row)}}
            for i, row in enumerate(found)
        ]
        lines = ",\n".join(json.dumps(result) for result in results)
        (folder / f"{name}.json").write_text(f'{{"model_crc": {checksum}, "results": [\n{lines}]}}\n')
