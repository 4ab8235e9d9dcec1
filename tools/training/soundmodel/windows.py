# SPDX-License-Identifier: MIT
"""What the network says of single results, on held-out recordings: how well it ranks, what it takes for speech with
music, and the recordings that it hears worst. Before the calibration."""
import numpy as np
from soundmodel.broadcast import Material, at_level, level_of
from soundmodel.audio import RATE
from soundmodel.network import LABELS, confidences

SETTLED = 6  # results after a beginning that are left out: what was before is still heard in them
LONGEST = 90 * RATE
RATIOS = (0, 5, 10, 15)  # dB of the voice over the music
MIXES, SECONDS = 40, 12


def heard(tagger, samples):
    """(speech, music) by result; singing counts as music."""
    found = confidences(tagger, samples.astype(np.float32))[SETTLED:]
    by = {label: found[:, index] for index, label in enumerate(LABELS)}
    return np.stack([by["speech"], np.maximum(by["music"], by["singing"])], 1)


def area(yes, no):
    """Area under the curve: how often one of `yes` is above one of `no`."""
    both = np.concatenate([yes, no])
    ranks = np.empty(len(both))
    ranks[np.argsort(both, kind="stable")] = np.arange(1, len(both) + 1)
    return (ranks[: len(yes)].sum() - len(yes) * (len(yes) + 1) / 2) / (len(yes) * len(no))


def strong(scores):
    """Share of results that the detector would take for strong evidence of an ad."""
    return float(np.mean(2 * scores.min(1) > 0.5))


def windows(work, tagger, label):
    """Prints the figures."""
    material = Material(work / "pcm/held", np.random.default_rng(31))
    by_kind, by_file = {}, []
    for kind, pieces in material.pieces.items():
        for name, samples in pieces:
            if level_of(samples[:LONGEST]) < 1e-4 or len(samples) < 5 * RATE:
                continue
            scores = heard(tagger, at_level(samples[:LONGEST], -20))
            by_kind.setdefault(kind, []).append(scores)
            by_file.append((strong(scores), kind, name, scores.mean(0)))
    mixes = {}
    for ratio in RATIOS:
        found = []
        while len(found) < MIXES:
            (_, voice), (_, music) = material.speech(SECONDS), material.take("music", SECONDS)
            if level_of(music) > 1e-3:
                found.append(heard(tagger, at_level(voice, -20) + at_level(music, -20 - ratio)))
        mixes[ratio] = np.concatenate(found)
    kinds = {kind: np.concatenate(found) for kind, found in by_kind.items()}
    over = np.concatenate(list(mixes.values()))
    rest = np.concatenate([kinds[k] for k in ("song", "music", "noise")])
    silent = np.concatenate([kinds[k] for k in ("speech", "noise")])
    print(
        f"{label} area under the curve: speech {area(kinds['speech'][:, 0], rest[:, 0]):.3f}, "
        f"over music too {area(np.concatenate([kinds['speech'], over])[:, 0], rest[:, 0]):.3f}; "
        f"music {area(kinds['music'][:, 1], silent[:, 1]):.3f}, under speech {area(over[:, 1], silent[:, 1]):.3f}"
    )
    print(f"{label} strong evidence:", ", ".join(f"{k} {strong(s):.2f}" for k, s in kinds.items()))
    print(f"{label} over music at", ", ".join(f"{ratio} dB {strong(s):.2f}" for ratio, s in mixes.items()))
    for share, kind, name, mean in sorted(by_file, reverse=True)[:15]:
        print(f"{label} worst: {kind} {name}: strong {share:.2f}, speech {mean[0]:.2f}, music {mean[1]:.2f}")
    for kind, column in (("speech", 0), ("music", 1), ("song", 1)):
        least = sorted((mean[column], name) for _, k, name, mean in by_file if k == kind)[:5]
        print(f"{label} least heard {kind}:", ", ".join(f"{name} {mean:.2f}" for mean, name in least))
