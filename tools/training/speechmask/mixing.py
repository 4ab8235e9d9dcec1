# SPDX-License-Identifier: MIT
"""Mixes random voices with music and noise, from the training recordings of the sound model."""
import collections

import numpy as np
import torch
from speechmask.spectrum import BINS, RATE, spectrum

SECONDS = 4
LENGTH = SECONDS * RATE
QUIET = 1e-3  # RMS below which a piece counts as silent
LEVELS = -5, 25  # dB of the voice over the rest
#: Kinds of background and their probabilities.
REST = {"music": 0.66, "noise": 0.14, "both": 0.1, "song": 0.04, "none": 0.06}
WITHOUT_VOICE = 0.04
#: Voices excluded from training: they read tools/speech/corpus.txt, on which the mask is measured.
MEASURED = ("tts-",)


class Recordings:
    """Recordings of one kind. The probability of a source is proportional to the root of its length, so that no long source
    dominates."""

    def __init__(self, folder, excluded=()):
        groups = collections.defaultdict(list)
        for path in sorted(folder.glob("*.s16")):
            if not path.name.startswith(excluded) and path.stat().st_size > 2 * RATE:
                groups[path.name.split("__")[0]].append(np.memmap(path, "<i2", "r"))
        self.groups = list(groups.values())
        weights = np.sqrt([min(sum(map(len, group)), 1800 * RATE) for group in self.groups])
        self.weights = weights / weights.sum()

    def piece(self, rng):
        """LENGTH samples that are not silent, at RMS 1. Short recordings are repeated."""
        while True:
            group = self.groups[rng.choice(len(self.groups), p=self.weights)]
            lengths = np.array([len(r) for r in group], float)
            recording = group[rng.choice(len(group), p=lengths / lengths.sum())]
            first = rng.integers(0, max(1, len(recording) - LENGTH))
            samples = np.asarray(recording[first : first + LENGTH], np.float32) / 32768
            samples = np.resize(samples, LENGTH)
            loud = np.abs(samples) > 0.1 * np.abs(samples).max(initial=1e-9)
            level = np.sqrt((samples[loud] ** 2).mean()) if loud.any() else 0
            if level > QUIET:
                return samples / level


def room(rng):
    """Synthetic room response: exponentially decaying noise after the direct sound."""
    seconds = rng.uniform(0.1, 0.6)
    length = int(seconds * RATE)
    tail = rng.normal(size=length) * 10 ** (-3 * np.arange(length) / length)
    response = tail / np.sqrt((tail**2).sum()) * 10 ** (rng.uniform(-15, -3) / 20)
    response[0] += 1
    return response


def convolved(samples, response):
    size = 1 << int(np.ceil(np.log2(len(samples) + len(response))))
    return np.fft.irfft(np.fft.rfft(samples, size) * np.fft.rfft(response, size), size)[: len(samples)]


def equalization(rng):
    """Gains of a microphone or a mixing desk: smooth, within a few dB, sometimes with the band limits of a telephone."""
    places = np.linspace(0, BINS - 1, 6) ** 2 / (BINS - 1)
    curve = np.interp(np.arange(BINS), places, rng.normal(0, 4, 6))
    gains = 10 ** (curve / 20)
    if rng.random() < 0.12:
        bins = np.arange(BINS) * RATE / 2 / (BINS - 1)
        gains *= np.where((bins > rng.uniform(100, 350)) & (bins < rng.uniform(3000, 4000)), 1, 0.003)
    return torch.from_numpy(gains.astype(np.float32))


class Mixer:
    def __init__(self, pcm, seed):
        self.rng = np.random.default_rng(seed)
        self.kinds = {kind: Recordings(pcm / kind) for kind in ("music", "noise", "song")}
        self.kinds["speech"] = Recordings(pcm / "speech", MEASURED)

    def voice(self):
        samples = self.kinds["speech"].piece(self.rng)
        if self.rng.random() < 0.2:
            samples = convolved(samples, room(self.rng))
        if self.rng.random() < 0.25:  # the voice pauses
            first = self.rng.integers(0, LENGTH - RATE)
            samples = samples.copy()
            samples[first : first + self.rng.integers(RATE // 2, 2 * RATE)] = 0
        return samples

    def rest(self):
        kind = self.rng.choice(list(REST), p=list(REST.values()))
        if kind == "none":
            return np.zeros(LENGTH, np.float32)
        if kind == "both":
            louder = self.kinds["music"].piece(self.rng)
            return louder + self.kinds["noise"].piece(self.rng) * 10 ** (self.rng.uniform(-15, 5) / 20)
        return self.kinds[kind].piece(self.rng)

    def pair(self):
        """Spectra (frames, BINS) of a voice and of its background."""
        level = 10 ** (self.rng.uniform(-45, -12) / 20)
        below = 10 ** (-self.rng.uniform(*LEVELS) / 20)
        voice = self.voice() * (level if self.rng.random() > WITHOUT_VOICE else 0)
        rest = self.rest() * (level * below)
        both = torch.from_numpy(np.stack([voice, rest]).astype(np.float32))
        frames = spectrum(both)
        return frames[0] * equalization(self.rng), frames[1] * equalization(self.rng)

    def batch(self, size):
        voices, rests = zip(*(self.pair() for _ in range(size)))
        return torch.stack(voices), torch.stack(rests)
