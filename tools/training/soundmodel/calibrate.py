# SPDX-License-Identifier: MIT
"""Chooses the offsets that turn the network's output into confidences: those with which the detector mutes most of the
ads of broadcasts that nothing was learned from and that no figure is taken from, at no more than MOST of their
programme."""
import concurrent.futures
import itertools
import json
import pathlib
import tempfile

import numpy as np
from soundmodel.broadcast import DENSE, SINGLES
from soundmodel.evaluate import detector_figures, muted, replay, scores_of, write_cues

SPEECH = np.arange(-2.5, 2.6, 0.5)
MUSIC = np.arange(-3.5, 3.1, 0.5)
MOST = 0.04  # share of programme muted, without words
STRETCHES = 2  # false ones in the half hours of SINGLES, all together: more are worse than any ad missed


def logit(chance):
    chance = np.clip(chance, 1e-5, 1 - 1e-5)
    return np.log(chance / (1 - chance))


def attempt(job):
    """The figures of one calibration."""
    program, folder, scores, speech, music = job
    squeeze = lambda values, offset: 1 / (1 + np.exp(-(values + offset)))
    figures, stretches = [], 0
    with tempfile.NamedTemporaryFile(suffix=".cues") as file:
        for name, (time, speaks, plays) in scores.items():
            path = pathlib.Path(file.name)
            write_cues(path, (time, squeeze(speaks, speech), squeeze(plays, music)))
            if name in SINGLES:
                found = replay(program, folder / f"{name}.wav", "--sensitivity", 0.5, "--cues", path)
                stretches += len(found["ads"])
            else:
                figures.append(muted(detector_figures(program, folder, name, path, 0.5)))
    ads, programme = np.mean(figures, 0)
    return dict(
        speech=float(speech), music=float(music), ads=ads, programme=programme, stretches=stretches
    )


def worth(tried):
    """Larger is better: what may be chosen first, and of that what mutes most of the ads."""
    allowed = tried["programme"] <= MOST and tried["stretches"] <= STRETCHES
    return allowed, tried["ads"] if allowed else -tried["programme"] - tried["stretches"]


def calibrate(program, work, tagger, name):
    """dict(gains, offsets) of speech, music, singing; WORK/NAME.calibration keeps it, with all that was tried."""
    path = work / f"{name}.calibration"
    if not path.exists():
        folder = work / "tune"
        scores = {}
        for file in (*DENSE, *SINGLES):
            time, speech, music = scores_of(tagger, folder / f"{file}.wav")
            scores[file] = time, logit(speech), logit(music)
        jobs = [(program, folder, scores, *choice) for choice in itertools.product(SPEECH, MUSIC)]
        with concurrent.futures.ProcessPoolExecutor(2) as pool:
            found = sorted(pool.map(attempt, jobs), key=worth, reverse=True)
        for tried in found[:8]:
            print(
                f"{name} speech {tried['speech']:+}, music {tried['music']:+}: ads {tried['ads']:.1%}, "
                f"programme {tried['programme']:.1%}, false stretches {tried['stretches']}"
            )
        offsets = [found[0]["speech"], found[0]["music"], found[0]["music"]]
        path.write_text(json.dumps(dict(gains=[1.0] * 3, offsets=offsets, tried=found)))
    chosen = json.loads(path.read_text())
    return dict(gains=chosen["gains"], offsets=chosen["offsets"])
