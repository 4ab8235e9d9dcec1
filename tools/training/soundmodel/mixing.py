# SPDX-License-Identifier: MIT
"""Draws training sequences: random scenes of voices, music, singing and noise, mixed for every step.

Sounds are mixed as log-mel magnitudes, because uncorrelated sounds add up in power. That is cheap enough for every mix to
be new. Rooms, codecs and clipping cannot be computed this way; the banks contain them already.
"""
import dataclasses

import numpy as np
import torch
from scipy.signal import lfilter
from soundmodel.audio import FLOOR, HIGH, LOW, MELS, mel
from soundmodel.features import audible, without_pauses
from soundmodel.network import FRAMES, STEP

RESULTS = 20  # of a sequence: more than the memory of the network
LENGTH = FRAMES + STEP * (RESULTS - 1)
SECOND = 100  # frames
HARD, EASY = 1.6, 0.6  # limits of the factor by which the loss of a piece changes its probability
REFRESH = 100  # batches between updates of these factors

#: Kinds of scenes and their weights.
SCENES = {
    "speech": 0.26,
    "music": 0.11,
    "ad": 0.22,
    "mixed": 0.16,
    "song": 0.22,
    "acappella": 0.05,
    "noise": 0.06,
    "ad over song": 0.04,
}


@dataclasses.dataclass
class Track:
    """One sound of a scene: log magnitudes (LENGTH, MELS), gain by frame (natural log), and labels by frame."""

    mels: np.ndarray
    gain: np.ndarray
    speech: np.ndarray | None = None
    music: np.ndarray | None = None
    singing: np.ndarray | None = None


class Bank:
    """All pieces of one kind. The probability of a group is a power of its length, so that no group dominates; pieces with a
    high loss are drawn more often."""

    def __init__(self, folder, kind, weights, exponent=0.6):
        self.pieces, chances = [], []
        for path in sorted(folder.glob(f"train-{kind}-*.npz")):
            group = path.stem.split("-", 2)[2]
            data = np.load(path)
            mels, active, ends = data["mels"], data["active"], np.cumsum(data["lengths"])
            pieces = [(mels[e - n : e], active[e - n : e]) for e, n in zip(ends, data["lengths"])]
            weight = (len(mels) / 6000) ** exponent * weights(group)
            if weight > 0:
                self.pieces += [(group, *piece) for piece in pieces]
                chances += [weight * len(piece[1]) / len(mels) for piece in pieces]
        self.base = np.array(chances)
        self.hardness = np.ones(len(chances))  # loss relative to the mean of scenes of the same kind
        self.drawn = []  # indices since the caller last cleared it
        self.refresh()

    def refresh(self):
        chances = np.cumsum(self.base * np.clip(self.hardness, EASY, HARD))
        self.chances = chances / chances[-1] if len(chances) else chances

    def draw(self, rng, length=LENGTH):
        """(group, log magnitudes, activity) of a random stretch. A short piece is repeated."""
        index = min(int(np.searchsorted(self.chances, rng.random())), len(self.pieces) - 1)
        self.drawn.append(index)
        group, mels, active = self.pieces[index]
        if len(active) < length:
            times = -(-length // len(active))
            mels, active = np.concatenate([mels] * times), np.concatenate([active] * times)
        begin = int(rng.integers(0, len(active) - length + 1))
        return group, mels[begin : begin + length].astype(np.float32), active[begin : begin + length]


def between(values, at):
    """Rows of an array at fractional positions."""
    low = np.minimum(at.astype(int), len(values) - 2)
    part = np.clip(at - low, 0, 1)[:, None].astype(np.float32)
    return values[low] * (1 - part) + values[low + 1] * part


def bands_of(size):
    """Fractional index to read each band from, so that all frequencies are divided by `size`."""
    edges = np.linspace(mel(LOW), mel(HIGH), MELS + 2)
    frequency = 700 * (np.exp(edges[1:-1] / 1127) - 1)
    return np.clip((mel(frequency * size) - edges[1]) / (edges[1] - edges[0]), 0, MELS - 1)


def equaliser(rng, strength):
    """Gain by band, natural log: a smooth random curve."""
    return np.interp(np.arange(MELS), np.linspace(0, MELS - 1, 7), rng.normal(0, strength, 7)).astype(
        np.float32
    )


def band_limit(rng):
    """Band limits of a telephone, a cheap loudspeaker or a low bit rate: gain by band, natural log."""
    curve = np.zeros(MELS, np.float32)
    top = int(rng.integers(38, MELS + 1))
    curve[top:] = -rng.uniform(3, 9)
    if rng.random() < 0.4:
        curve[: int(rng.integers(1, 10))] = -rng.uniform(1, 5)
    return curve


def telephone(rng):
    """Band limits of a telephone: gain by band, natural log."""
    curve = np.zeros(MELS, np.float32)
    curve[: int(rng.integers(5, 10))] = -rng.uniform(3, 9)
    curve[int(rng.integers(40, 46)) :] = -rng.uniform(4, 9)
    return curve


class Mixer:
    """Reproducible for a seed."""

    def __init__(self, folder, seed, without_collection=False):
        def weigh(factors):
            def weight(group):
                if without_collection and group.startswith("c-"):
                    return 0
                return next((f for name, f in factors.items() if group.startswith(name)), 1)

            return weight

        self.rng = np.random.default_rng(seed)
        self.speech = Bank(
            folder,
            "speech",
            weigh(
                {
                    "tts-espeak": 0.25,
                    "tts": 0.4,
                    "vocoded": 0.5,
                    "queen": 1.5,
                    "steel-sky": 1.5,
                    "ktuberling": 0.4,
                    "c-aec": 1.5,
                    "c-ibm": 2.5,
                    "c-redeclipse": 2,
                    "c-picovoice": 2.5,
                    "c-mycroft": 2,
                    "c-fsdd": 0.5,
                    "klettres": 0.5,
                    "c-": 1.5,
                }
            ),
        )
        self.music = Bank(
            folder,
            "music",
            weigh(
                {
                    "bed-drums": 2.5,
                    "bed-solo": 2.5,
                    "bed-": 1.5,
                    "c-lomiri": 4,
                    "c-app": 2.5,
                    "c-": 1.5,
                    "openmsx": 0.6,
                }
            ),
        )
        self.song = Bank(folder, "song", weigh({"sung": 0.6, "c-spoken": 1.5, "c-": 4}))
        self.noise = Bank(folder, "noise", weigh({"made": 0.8, "crowd": 1.5, "c-": 2}))
        self.mixed = Bank(folder, "mixed", weigh({}))
        self.banks = [self.speech, self.music, self.song, self.noise, self.mixed]
        self.usual = {}  # loss by kind of scene
        self.batches = 0
        self.kinds, self.drawn = [], []  # by sequence of the last batch

    def chance(self, probability):
        return self.rng.random() < probability

    def decibels(self, low, high):
        """A level as natural log of the amplitude."""
        return self.rng.uniform(low, high) * np.log(10) / 20

    def take(self, bank, likely, strength=1.0):
        """Result of Bank.draw(); with probability `likely`, changes tempo and shifts all resonances to imitate another speaker or
        instrument."""
        if not self.chance(likely):
            return bank.draw(self.rng)
        tempo = np.exp(strength * self.rng.uniform(-0.18, 0.18))
        size = np.exp(strength * self.rng.uniform(-0.12, 0.12))
        group, mels, active = bank.draw(self.rng, int(LENGTH * tempo) + 2)
        at = np.arange(LENGTH) * tempo
        return group, between(between(mels, at).T, bands_of(size)).T, active[at.astype(int)]

    def coloured(self, mels):
        if self.chance(0.7):
            mels = mels + equaliser(self.rng, 0.4)
        if self.chance(0.25):
            mels = mels + band_limit(self.rng)
        return mels

    def reverberant(self, mels):
        """Adds exponentially decaying power, like a voice far from the microphone."""
        decay = np.exp(-13.8 / SECOND / self.rng.uniform(0.2, 1.4))
        wet = (1 - decay) * 10 ** (self.rng.uniform(-12, 4) / 10)
        power = np.exp(2 * mels)
        return 0.5 * np.log(power + lfilter([0, wet], [1, -decay], power, axis=0).astype(np.float32))

    def voice(self, level):
        for _ in range(20):
            _, mels, active = self.take(self.speech, 0.6)
            if active.mean() > 0.3:
                break
        if self.chance(0.3):
            mels = self.reverberant(mels)
        if self.chance(0.4):  # another microphone
            mels = mels + equaliser(self.rng, 0.6)
        if self.chance(0.1):
            mels = mels + telephone(self.rng)
        gain = np.full(LENGTH, float(level))
        if self.chance(0.12):  # single words
            heard = self.words()
            gain, active = np.where(heard, gain, -12.0), active & heard
        tracks = [Track(self.coloured(mels), gain, speech=without_pauses(active) * 1.0)]
        if self.chance(0.1):  # a second voice at the same time
            _, mels, other = self.take(self.speech, 0.6)
            gain = np.full(LENGTH, level + self.decibels(-14, 0))
            tracks.append(Track(self.coloured(mels), gain, speech=without_pauses(other) * 1.0))
        return tracks

    def words(self):
        """Mask of the frames of single words with pauses between them."""
        heard, at = np.zeros(LENGTH, bool), int(self.rng.integers(0, SECOND))
        while at < LENGTH:
            length = int(self.rng.uniform(0.3, 1.0) * SECOND)
            heard[at : at + length] = True
            at += length + int(self.rng.uniform(0.3, 2.0) * SECOND)
        return heard

    def instrumental(self, level):
        _, mels, active = self.take(self.music, 0.3)
        return [Track(self.coloured(mels), np.full(LENGTH, level), music=without_pauses(active) * 1.0)]

    def singing(self, level, alone):
        """Singing with music: a recording of a song, or a singing voice over instruments."""
        group, mels, active = self.take(self.song, 0.8, 1.6)  # there are few singers
        held = without_pauses(active) * 1.0
        if group.startswith("c-") and not group.endswith("-alone"):
            unknown = np.full(LENGTH, np.nan)  # songs have no labels of their sung parts
            return [
                Track(self.coloured(mels), np.full(LENGTH, level), music=np.ones(LENGTH), singing=unknown)
            ]
        tracks = [Track(self.coloured(mels), np.full(LENGTH, level), music=held, singing=held)]
        if not alone:
            tracks += self.instrumental(level + self.decibels(-12, 8))
        return tracks

    def background(self, level):
        _, mels, _ = self.noise.draw(self.rng)
        tracks = [Track(mels + equaliser(self.rng, 0.5), np.full(LENGTH, level))]
        if self.chance(0.35):  # hiss: a flat spectrum with small variations
            hiss = self.rng.normal(-1.5, 0.25, (LENGTH, MELS)) + equaliser(self.rng, 1.0)
            tracks.append(Track(hiss.astype(np.float32), np.full(LENGTH, level + self.decibels(-15, 5))))
        return tracks

    def scene(self):
        """Kind and tracks of one scene, the voice or else the music at level 0."""
        kind = self.rng.choice(list(SCENES), p=np.array(list(SCENES.values())) / sum(SCENES.values()))
        if kind == "speech":
            tracks = self.voice(0.0)
            if self.chance(0.6):
                tracks += self.background(self.decibels(-40, 0 if self.chance(0.3) else -8))
        elif kind == "music":
            tracks = self.instrumental(0.0)
        elif kind == "mixed":  # mixed as sound before distortion and codecs
            _, mels, heard = self.mixed.draw(self.rng)
            tracks = [
                Track(
                    self.coloured(mels), np.zeros(LENGTH), speech=heard[:, 0] * 1.0, music=heard[:, 1] * 1.0
                )
            ]
        elif kind in ("ad", "ad over song"):
            below = self.rng.uniform(-3, 19) if self.chance(0.85) else self.rng.uniform(12, 25)
            tracks = self.voice(0.0)
            voice = tracks[0].speech
            over = self.instrumental(0.0) if kind == "ad" else self.singing(0.0, alone=False)
            gain = np.full(LENGTH, -below * np.log(10) / 20)
            if self.chance(0.5):  # the music comes up in the pauses
                lift = self.rng.uniform(2, 10) * np.log(10) / 20
                gain = gain + lift * (1 - np.convolve(np.pad(voice, 15, "edge"), np.ones(31) / 31, "valid"))
            heard = 1 - voice * (1 - audible(below))
            for track in over:
                track.gain = track.gain + gain
                track.music = track.music * heard
                if track.singing is not None:
                    track.singing = track.singing * heard
            tracks += over
        elif kind == "noise":
            more = self.background(self.decibels(-15, 3)) if self.chance(0.4) else []
            return kind, self.background(0.0) + more
        else:
            tracks = self.singing(0.0, alone=kind == "acappella")
        if kind != "speech" and self.chance(0.25):
            tracks += self.background(self.decibels(-40, -12))
        return kind, tracks

    def fade(self, begin, fast):
        """0 before `begin`, 1 after, as gain by frame."""
        width = 1 if fast else self.rng.uniform(1, 80)
        return np.clip((np.arange(LENGTH) - begin) / width, 0, 1)

    def cut(self, track, gate):
        track.gain = track.gain + np.log(np.maximum(gate, 1e-6))
        heard = gate > 0.1
        for name in ("speech", "music", "singing"):
            if getattr(track, name) is not None:
                setattr(track, name, np.where(heard, getattr(track, name), 0))

    def sequence(self):
        """(kind, log-mel input (LENGTH, MELS), labels (LENGTH, 3) with not-a-number where unknown)."""
        kind, tracks = self.scene()
        before = 0
        while self.chance(0.45):  # cut or fade to another scene
            if before > LENGTH - 200:
                break
            before, fast = int(self.rng.integers(before + 50, LENGTH - 20)), self.chance(0.6)
            begin = before
            gate = self.fade(begin, fast)
            level = self.decibels(-8, 8)
            second, after = self.scene()
            kind = f"{kind}, {second}"
            for track in tracks:
                self.cut(track, 1 - gate)
            for track in after:
                track.gain = track.gain + level
                self.cut(track, gate)
            tracks += after
        if before == 0 and self.chance(0.3):  # one of the sounds comes or goes
            track = tracks[self.rng.integers(len(tracks))]
            gate = self.fade(self.rng.integers(50, LENGTH - 20), self.chance(0.5))
            self.cut(track, gate if self.chance(0.5) else 1 - gate)
        power = np.zeros((LENGTH, MELS), np.float32)
        labels = np.zeros((LENGTH, 3))
        for track in tracks:
            power += np.exp(2 * (track.mels + track.gain[:, None].astype(np.float32)))
            for column, name in enumerate(("speech", "music", "singing")):
                if getattr(track, name) is not None:
                    labels[:, column] = np.maximum(labels[:, column], getattr(track, name))
        mels = 0.5 * np.log(power + 1e-12)
        if self.chance(0.25):  # dynamic range compression
            loud = np.convolve(np.pad(mels.max(1), 25, "edge"), np.ones(51) / 51, "valid")
            mels = mels - self.rng.uniform(0.2, 0.7) * (loud - loud.mean())[:, None]
        if self.chance(0.2):
            mels = mels + band_limit(self.rng)
        magnitudes = np.exp(mels + self.decibels(-28, 16))
        if self.chance(0.08):  # digital silence before the beginning
            begin = self.rng.integers(1, FRAMES - SECOND)
            magnitudes[:begin] = 0
            labels[:begin] = 0
        mels = np.log(magnitudes + FLOOR)
        if self.chance(0.25):
            first = self.rng.integers(0, MELS - 6)
            mels[:, first : first + self.rng.integers(1, 7)] = mels.mean()
        return kind, mels.astype(np.float32), labels

    def batch(self, size):
        """(size, LENGTH, MELS) inputs, (size, RESULTS, 3) targets of the newest second of each result, 0 to 1 or
        not-a-number."""
        inputs = np.empty((size, LENGTH, MELS), np.float32)
        targets = np.empty((size, RESULTS, 3), np.float32)
        self.kinds, self.drawn = [], []
        for index in range(size):
            kind, inputs[index], labels = self.sequence()
            self.kinds.append(kind)
            self.drawn.append([bank.drawn for bank in self.banks])
            for bank in self.banks:
                bank.drawn = []
            unknown = np.isnan(labels[:, 2:])
            values = np.concatenate([np.nan_to_num(labels), unknown], 1)
            sums = np.concatenate([np.zeros((1, 4)), np.cumsum(values, 0)])
            ends = FRAMES + STEP * np.arange(RESULTS)
            share = (sums[ends] - sums[ends - SECOND]) / SECOND
            targets[index] = np.clip(share[:, :3] / 0.4, 0, 1)
            targets[index, share[:, 3] > 0, 2] = np.nan
        return torch.from_numpy(inputs), torch.from_numpy(targets)

    def learned(self, losses):
        """Updates the probabilities of the pieces of the last batch by the losses (size) of its sequences."""
        for kind, loss, drawn in zip(self.kinds, losses, self.drawn):
            usual = self.usual.get(kind, loss)
            self.usual[kind] = 0.98 * usual + 0.02 * loss
            for bank, indices in zip(self.banks, drawn):
                for index in indices:
                    bank.hardness[index] = 0.9 * bank.hardness[index] + 0.1 * loss / (usual + 1e-3)
        self.batches += 1
        if self.batches % REFRESH == 0:
            for bank in self.banks:
                bank.refresh()
