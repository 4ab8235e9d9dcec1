# SPDX-License-Identifier: MIT
"""Assembles broadcasts from recordings that were not trained on, with labels (positions of the ads) and perfect scores, and
half an hour each of speech, songs, music and noise without ads."""
import dataclasses
import json
import pathlib
import wave

import numpy as np
from scipy.signal import butter, fftconvolve, sosfilt
from soundmodel.audio import RATE, through_codec
from soundmodel.features import ducked, frame_power, loudness, read

BELOW = (6, 20)  # dB that the music of an ad lies below the voice
DRY = 0.2  # share of ads without music
DUCKED = 0.4  # share of ads whose music comes up in the pauses of the voice
#: Name: minutes, minutes of programme between breaks, minutes of a break, codec. The dense broadcasts have many
#: boundaries, which are hard to detect; the hour has breaks as rare as those of a real station.
BROADCASTS = {
    "dense-1": (22, (1, 2.5), (0.8, 2), None),
    "dense-2": (22, (1, 2.5), (0.8, 2), ("libmp3lame", 32000, 64)),
    "dense-3": (22, (1, 2.5), (0.8, 2), ("libopus", 48000, 24)),
    "hour": (60, (8.5, 10), (2, 3), ("libmp3lame", 32000, 64)),
    "dense-4": (22, (1, 2.5), (0.8, 2), None),
    "dense-5": (22, (1, 2.5), (0.8, 2), ("libmp3lame", 32000, 64)),
    "dense-6": (22, (1, 2.5), (0.8, 2), ("libopus", 48000, 24)),
}
DENSE = ("dense-1", "dense-2", "dense-3")
FURTHER = ("dense-4", "dense-5", "dense-6")  # only for the calibration, which needs more material
SINGLES = ("speech", "song", "music", "noise")  # half an hour of each
#: Shares of the kinds of programme. The split "tune" has few songs, so they are rarer there.
PROGRAMME = {
    "held": {"talk": 0.35, "conversation": 0.2, "song": 0.25, "music": 0.2},
    "tune": {"talk": 0.4, "conversation": 0.2, "song": 0.1, "music": 0.3},
}


def write_wave(path, samples):
    with wave.open(str(path), "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(RATE)
        file.writeframes((np.clip(samples, -1, 1) * 32767).astype("<i2").tobytes())


def level_of(samples):
    """RMS of the loud parts."""
    power = frame_power(samples)
    loud = power > power.max() * 1e-3 if len(power) else power
    return float(np.sqrt(power[loud].mean())) if len(power) else 0.0


def at_level(samples, decibels):
    return samples * (10 ** (decibels / 20) / (level_of(samples) + 1e-9))


def tight(samples, longest=0.35):
    """Speech without pauses longer than `longest` seconds."""
    power = np.repeat(frame_power(samples), RATE // 100)
    loud = power > power.max() * 1e-3
    distance = np.arange(len(loud)) - np.maximum.accumulate(np.where(loud, np.arange(len(loud)), 0))
    return samples[: len(loud)][distance < longest * RATE]


@dataclasses.dataclass
class Material:
    """Recordings of a split by kind: (name, samples)."""

    folder: pathlib.Path
    rng: np.random.Generator
    shortest: float = 5  # seconds of a recording

    def __post_init__(self):
        self.pieces = {
            kind: [(p.stem, read(p)) for p in sorted((self.folder / kind).glob("*.s16"))]
            for kind in ("speech", "music", "song", "noise")
        }
        for kind in ("speech", "music", "song"):
            self.pieces[kind] = [(n, s) for n, s in self.pieces[kind] if len(s) > self.shortest * RATE]

    def take(self, kind, seconds, name=None):
        """A stretch of one recording. A short recording is repeated."""
        choice = [p for p in self.pieces[kind] if name is None or p[0] == name]
        if kind == "speech":  # prefers equal shares of voices over equal shares of minutes
            weight = np.array([min(len(s), 120 * RATE) for _, s in choice], float)
        else:
            weight = np.ones(len(choice))
        if kind == "music":  # prefers equal shares of sources: one source has 26 pieces
            source = [n.split("__")[0] for n, _ in choice]
            weight /= np.sqrt([source.count(each) for each in source])
        name, samples = choice[self.rng.choice(len(choice), p=weight / weight.sum())]
        length = int(seconds * RATE)
        begin = int(self.rng.integers(0, max(1, len(samples) - length)))
        stretch = samples[begin : begin + length]
        return name, np.resize(stretch, length) if len(stretch) < length else stretch.copy()

    def speech(self, seconds, name=None):
        """Speech of one voice without long pauses."""
        for _ in range(50):
            who, samples = self.take("speech", 2.5 * seconds, name)
            if level_of(samples) < 1e-3:
                continue
            samples = tight(samples)
            if len(samples) >= seconds * RATE:
                return who, samples[: int(seconds * RATE)]
        return who, np.resize(samples, int(seconds * RATE))

    def room(self, samples):
        size = int(self.rng.uniform(0.1, 0.6) * RATE)
        answer = self.rng.standard_normal(size) * np.exp(-6.9 * np.arange(size) / size)
        answer /= np.sqrt((answer**2).sum())
        return samples + self.rng.uniform(0.05, 0.4) * fftconvolve(samples, answer)[: len(samples)]

    def programme(self, kind, seconds):
        """(samples, music, speech): one stretch of programme, and whether it contains music and speech."""
        if kind == "talk":
            _, samples = self.speech(seconds)
            if self.rng.random() < 0.3:
                samples = self.room(samples)
            if self.rng.random() < 0.3:
                _, noise = self.take("noise", seconds)
                samples = at_level(samples, -20) + at_level(noise, -20 - self.rng.uniform(10, 30))
            return samples, 0, 1
        if kind == "conversation":
            (_, one), (_, two) = self.speech(seconds / 2), self.speech(seconds / 2)
            one, two = at_level(one, -20), at_level(two, -20 + self.rng.uniform(-3, 3))
            turns = max(2, int(seconds / 6))
            return (
                np.concatenate(
                    [x for pair in zip(np.array_split(one, turns), np.array_split(two, turns)) for x in pair]
                ),
                0,
                1,
            )
        if kind == "song":
            return self.take("song", seconds)[1], 1, 0
        return self.take("music", seconds)[1], 1, 0

    def spot(self, seconds):
        """(samples, music) of one advertisement: a compressed voice, usually over music."""
        _, voice = self.speech(seconds)
        voice = at_level(voice, -20)
        dry = self.rng.random() < DRY
        mix = voice
        if not dry:
            for _ in range(20):
                _, music = self.take("music", seconds)
                if level_of(music) > 1e-3:
                    break
            music = at_level(music, -20 - self.rng.uniform(*BELOW))
            if self.rng.random() < DUCKED:
                _, speaks = loudness(voice, "speech")
                music = ducked(self.rng, music, speaks, len(speaks))
            mix = voice + music
        drive = self.rng.uniform(1, 3)
        return np.tanh(drive * mix / np.abs(mix).max()) / np.tanh(drive), 0 if dry else 1


def broadcast(material, mixture, minutes, between, breaks, base=-23.0, louder=(2.0, 5.0)):
    """(samples, ads as (start, end), cues as (time, music, speech)) of one broadcast; `between` and `breaks` are the
    shortest and longest minutes of programme and of ads, `mixture` the shares of the kinds of programme."""
    rng = material.rng
    parts, ads, cues, time = [], [], [], 0.0

    def add(samples, level, music, speech):
        nonlocal time
        samples = at_level(samples, level).astype(np.float32)
        fade = int(0.01 * RATE)
        samples[:fade] *= np.linspace(0, 1, fade)
        samples[-fade:] *= np.linspace(1, 0, fade)
        parts.append(samples)
        cues.append((time, music, speech))
        time += len(samples) / RATE

    def programme(seconds):
        until = time + seconds
        while time < until:
            kind = rng.choice(list(mixture), p=list(mixture.values()))
            samples, music, speech = material.programme(kind, rng.uniform(20, 80))
            add(samples, base + rng.uniform(-2, 2), music, speech)

    while time < minutes * 60:
        programme(60 * rng.uniform(*between))
        until, louder_now = time + 60 * rng.uniform(*breaks), rng.uniform(*louder)
        while time < until:
            samples, music = material.spot(rng.uniform(10, 30))
            start = time
            add(samples, base + louder_now, music, 1)
            ads.append((start, time))
            pause = int(rng.uniform(0.05, 0.4) * RATE)
            parts.append(np.zeros(pause, np.float32))
            time += pause / RATE
    add(material.programme("talk", 60)[0], base, 0, 1)
    return np.concatenate(parts), ads, cues


def write_broadcast(material, folder, name, seed):
    """Writes NAME.wav, NAME.txt (label track) and NAME.perfect (cues) to a folder."""
    if (folder / f"{name}.perfect").exists():
        return
    minutes, between, breaks, codec = BROADCASTS[name]
    material.rng = np.random.default_rng(seed)
    samples, ads, cues = broadcast(material, PROGRAMME[folder.name], minutes, between, breaks)
    if codec:
        samples = through_codec(samples, *codec)
    write_wave(folder / f"{name}.wav", samples)
    (folder / f"{name}.txt").write_text("".join(f"{a:.3f}\t{b:.3f}\tad\n" for a, b in ads))
    lines = [json.dumps({"t": round(t, 3), "music": m, "speech": s}) for t, m, s in cues]
    (folder / f"{name}.perfect").write_text("\n".join(lines) + "\n")


def write_single(material, folder, kind, minutes, seed):
    """Writes KIND.wav: long stretches of one kind without ads."""
    path = folder / f"{kind}.wav"
    if path.exists():
        return
    material.rng = rng = np.random.default_rng(seed)
    parts = []
    codecs = [None, None, ("libmp3lame", 22050, 32), ("libopus", 48000, 16), ("libmp3lame", 32000, 64)]
    while sum(map(len, parts)) < minutes * 60 * RATE:
        seconds = rng.uniform(30, 90)
        if kind == "speech":
            samples = material.programme(str(rng.choice(["talk", "conversation"])), seconds)[0]
        else:
            samples = material.take(kind, seconds)[1]
        if level_of(samples) < 1e-4:
            continue
        if kind == "song" and rng.random() < 0.5:  # few songs are held out: vary their speed
            samples = np.interp(
                np.arange(0, len(samples) - 1, rng.uniform(0.9, 1.1)), np.arange(len(samples)), samples
            )
        if rng.random() < 0.3:
            samples = sosfilt(butter(2, rng.uniform(3000, 7000), fs=RATE, output="sos"), samples)
        codec = codecs[rng.integers(len(codecs))]
        samples = through_codec(samples, *codec) if codec else samples
        parts.append(at_level(samples, -23 + rng.uniform(-3, 3)).astype(np.float32))
    write_wave(path, np.concatenate(parts))


def make_all(work, split):
    """Writes the broadcasts and half an hour of each kind of sound to WORK/SPLIT."""
    folder = work / split
    folder.mkdir(exist_ok=True)
    material = Material(work / "pcm" / split, np.random.default_rng(0))
    seed = {"held": 2011, "tune": 2111}[split]
    for index, name in enumerate(BROADCASTS):
        if name in FURTHER and split == "held":
            continue
        write_broadcast(material, folder, name, seed + index)
    for index, kind in enumerate(SINGLES):
        write_single(material, folder, kind, 30, seed + 10 + index)


if __name__ == "__main__":
    import sys

    make_all(pathlib.Path(sys.argv[1]), sys.argv[2])
