# SPDX-License-Identifier: MIT
"""Measures single results of the network on held-out recordings: voices alone and over beds at several levels, by kind of
bed and by kind of voice; songs, music and noise; and the recordings with the worst results."""
import re

import numpy as np
from soundmodel.audio import RATE
from soundmodel.broadcast import Material, at_level, level_of, tight
from soundmodel.network import LABELS, confidences

SETTLED = 4  # first results of a mix that are skipped: their memory reaches back before it
LONGEST = 60 * RATE
BELOW = (0, 5, 8, 10, 12, 15, 18, 20)  # dB of the music below the voice
MIXES, SECONDS = 60, 8
MIDDLE = (8, 10, 12, 15)  # the levels of the figures by kind

#: Kinds of held-out music by name; the first that fits.
BEDS = {
    "drums": r"lmms__.*(beat|break|kick|hihat|snare|jungle|house)|batterie",
    "guitar, bass and brass alone": r"lmms__(latin|.*bass)|plee-the-bear__(guitar|bass)",
    "techno and synthesizers": r"lmms|noiz2sa|mu-cade|torus|tuxtype|btanks",
    "game and film music": r"enigma|flare|plee|blobwars|amoebax|scorched3d",
    "bands": r".",
}
#: Kinds of voices. Their number differs from that of the beds, so that every pair occurs.
VOICES = {
    "over radio, distorted": r"nexuiz-(?!tutorial|announcer)",
    "single words": r"gcin|rally",
    "acted, 11 kHz": r"drascula",
    "announcers and others": r".",
}


def kind_of(kinds, name):
    return next(kind for kind, pattern in kinds.items() if re.search(pattern, name))


def heard(tagger, samples, **calibration):
    """(speech, music) by result; singing counts as music."""
    found = confidences(tagger, samples.astype(np.float32), **calibration)[SETTLED:]
    by = {label: found[:, index] for index, label in enumerate(LABELS)}
    return np.stack([by["speech"], np.maximum(by["music"], by["singing"])], 1)


def strong(scores):
    """Share of results that are strong evidence of an ad: 2 min(music, speech) > 0.5."""
    return float(np.mean(2 * scores.min(1) > 0.5))


def talk(rng, samples):
    """SECONDS of a voice without long pauses."""
    length = SECONDS * RATE
    for _ in range(30):
        begin = int(rng.integers(0, max(1, len(samples) - 3 * length)))
        part = samples[begin : begin + 3 * length]
        if level_of(part) > 1e-3:
            part = tight(part)
            if len(part) >= length:
                return part[:length]
    return np.resize(part, length)


def pairs(material):
    """Endless (kind of bed, kind of voice, voice, bed): alternates kinds, and recordings within a kind."""

    def turns(pieces, kinds):
        by_kind = {kind: [] for kind in kinds}
        for name, samples in pieces:
            by_kind[kind_of(kinds, name)].append(samples)
        lists = [
            (kind, [found[i] for i in material.rng.permutation(len(found))])
            for kind, found in by_kind.items()
            if found
        ]
        for index in range(10**6):
            kind, found = lists[index % len(lists)]
            yield kind, found[index // len(lists) % len(found)]

    beds = turns(material.pieces["music"], BEDS)
    voices = turns(material.pieces["speech"], VOICES)
    while True:
        (bed_kind, bed), (voice_kind, voice) = next(beds), next(voices)
        length = SECONDS * RATE
        begin = int(material.rng.integers(0, max(1, len(bed) - length)))
        bed = np.resize(bed[begin : begin + length], length)
        voice = talk(material.rng, voice)
        if level_of(bed) > 1e-3 and level_of(voice) > 1e-3:
            yield bed_kind, voice_kind, at_level(voice, -20), at_level(bed, -20)


def windows(work, tagger, label, **calibration):
    """Prints the figures."""
    material = Material(work / "pcm/held", np.random.default_rng(31), shortest=1)
    mixes = [mix for mix, _ in zip(pairs(material), range(MIXES))]
    found = {None: [heard(tagger, voice, **calibration) for _, _, voice, _ in mixes]}
    for below in BELOW:
        gain = 10 ** (-below / 20)
        found[below] = [heard(tagger, voice + gain * bed, **calibration) for _, _, voice, bed in mixes]
    for below, scores in found.items():
        scores = np.concatenate(scores)
        print(
            f"{label} voice {'alone' if below is None else f'over a bed {below} dB below'}: strong "
            f"{strong(scores):.0%}, speech {np.median(scores[:, 0]):.2f}, music {np.median(scores[:, 1]):.2f}"
        )
    for title, column, kinds in (("bed", 0, BEDS), ("voice", 1, VOICES)):
        for kind in kinds:
            chosen = [i for i, mix in enumerate(mixes) if mix[column] == kind]
            if chosen:
                scores = np.concatenate([found[below][i] for below in MIDDLE for i in chosen])
                alone = np.concatenate([found[None][i] for i in chosen])
                print(
                    f"{label} {title} {kind}: strong {strong(scores):.0%} at {MIDDLE[0]} to {MIDDLE[-1]} dB, speech "
                    f"{np.median(scores[:, 0]):.2f}, music {np.median(scores[:, 1]):.2f}, alone {strong(alone):.0%}"
                )
    by_file = []
    for kind, pieces in material.pieces.items():
        scores = []
        for name, samples in pieces:
            if level_of(samples[:LONGEST]) > 1e-4 and len(samples) > 4 * RATE:
                scores.append(heard(tagger, at_level(samples[:LONGEST], -20), **calibration))
                by_file.append((strong(scores[-1]), kind, name, scores[-1].mean(0)))
        scores = np.concatenate(scores)
        print(f"{label} {kind} ({len(pieces)} recordings): strong {strong(scores):.1%}")
    for share, kind, name, mean in sorted(by_file, key=lambda f: -f[0])[:12]:
        print(f"{label} worst: {kind} {name}: strong {share:.2f}, speech {mean[0]:.2f}, music {mean[1]:.2f}")
    for kind, column in (("speech", 0), ("music", 1), ("song", 1)):
        least = sorted((mean[column], name) for _, k, name, mean in by_file if k == kind)[:8]
        print(f"{label} least heard {kind}:", ", ".join(f"{name} {mean:.2f}" for mean, name in least))
