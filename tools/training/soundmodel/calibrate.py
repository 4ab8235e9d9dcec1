# SPDX-License-Identifier: MIT
"""Chooses the offsets that turn the network's output into confidences, on broadcasts of the split "tune" alone. The best
offsets mute the most ad seconds, without transcription and at the default sensitivity, under two limits: at most MOST of
the programme is muted (ads and programme are means of the dense broadcasts, averaged with the hour), and at most STRETCHES
passages of each half hour without ads are muted. The rule was fixed before the training of the networks that it calibrates."""
import concurrent.futures
import itertools
import json
import pathlib
import tempfile

import numpy as np
from soundmodel.broadcast import DENSE, FURTHER, SINGLES
from soundmodel.evaluate import detector_figures, muted, replay, scores_of, write_cues

BROADCAST = (*DENSE, *FURTHER, "hour")
STEP = 0.5
SPEECH, MUSIC = (-5.0, 1.0), (-3.0, 1.0)  # ranges of the offsets
MOST = 0.04  # share of programme muted, without transcription
STRETCHES = 1  # passages muted in each half hour without ads


def logit(chance):
    chance = np.clip(chance, 1e-5, 1 - 1e-5)
    return np.log(chance / (1 - chance))


def shares(figures):
    """(share of ads, share of programme): the mean of the dense broadcasts averaged with the hour."""
    dense = np.mean([figures[name] for name in (*DENSE, *FURTHER)], 0)
    return tuple(float(each) for each in (dense + np.array(figures["hour"])) / 2)


def attempt(job):
    """Figures of one pair of offsets."""
    program, folder, scores, speech, music = job
    squeeze = lambda values, offset: 1 / (1 + np.exp(-(values + offset)))
    tried = dict(speech=speech, music=music)
    with tempfile.NamedTemporaryFile(suffix=".cues") as file:
        path = pathlib.Path(file.name)

        def cues(name):
            time, speaks, plays = scores[name]
            write_cues(path, (time, squeeze(speaks, speech), squeeze(plays, music)))
            return path

        figures = {
            name: muted(detector_figures(program, folder, name, cues(name), 0.5)) for name in BROADCAST
        }
        tried["ads"], tried["programme"] = shares(figures)
        tried["hour"] = figures["hour"]
        if tried["programme"] <= MOST:  # otherwise the pair is rejected anyway
            quiet = lambda name: replay(
                program, folder / f"{name}.wav", "--sensitivity", 0.5, "--cues", cues(name)
            )
            tried["stretches"] = {name: len(quiet(name)["ads"]) for name in SINGLES}
    return tried


def allowed(tried):
    return tried["programme"] <= MOST and max(tried["stretches"].values()) <= STRETCHES


def choose(found):
    """The best allowed pair of offsets; the one that mutes the least programme if none is allowed."""
    quiet = [t for t in found if allowed(t)]
    return max(quiet, key=lambda t: t["ads"]) if quiet else min(found, key=lambda t: t["programme"])


def calibrate(program, work, tagger, name):
    """dict(gains, offsets) of speech, music, singing. WORK/NAME.calibration stores it with all trials."""
    path = work / f"{name}.calibration"
    if not path.exists():
        folder = work / "tune"
        scores = {}
        for file in (*BROADCAST, *SINGLES):
            time, speech, music = scores_of(tagger, folder / f"{file}.wav")
            scores[file] = time, logit(speech), logit(music)
        perfect = shares(
            {
                name: muted(detector_figures(program, folder, name, folder / f"{name}.perfect", 0.5))
                for name in BROADCAST
            }
        )
        print(f"perfect: ads {perfect[0]:.1%}, programme {perfect[1]:.1%}")
        found = []

        def add(pairs):
            known = {(t["speech"], t["music"]) for t in found}
            inside = [
                pair
                for pair in pairs
                if pair not in known
                and SPEECH[0] <= pair[0] <= SPEECH[1]
                and MUSIC[0] <= pair[1] <= MUSIC[1]
            ]
            found.extend(pool.map(attempt, [(program, folder, scores, *pair) for pair in inside]))
            return inside

        with concurrent.futures.ProcessPoolExecutor(2) as pool:
            grid = lambda least, most: np.arange(least, most + 0.01, 2 * STEP).tolist()
            add([*itertools.product(grid(*SPEECH), grid(*MUSIC))])
            near = [pair for pair in itertools.product((-STEP, 0, STEP), repeat=2) if pair != (0, 0)]
            while True:
                best = choose(found)
                if not add([(best["speech"] + s, best["music"] + m) for s, m in near]):
                    break
        for tried in sorted(found, key=lambda t: (t is not best, -t["ads"]))[:12]:
            print(
                f"{name} speech {tried['speech']:+}, music {tried['music']:+}: ads {tried['ads']:.1%}, "
                f"programme {tried['programme']:.1%}, hour {tried['hour'][0]:.1%} / {tried['hour'][1]:.2%}, "
                f"false stretches {tried.get('stretches')}"
            )
        offsets = [best["speech"], best["music"], best["music"]]
        kept = dict(gains=[1.0] * 3, offsets=offsets, most=MOST, perfect=perfect, tried=found)
        path.write_text(json.dumps(kept, indent=1))
    chosen = json.loads(path.read_text())
    return dict(gains=chosen["gains"], offsets=chosen["offsets"])
