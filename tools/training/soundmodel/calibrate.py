# SPDX-License-Identifier: MIT
"""Chooses the gains and offsets that turn the network's output into confidences: those with which the detector does best
on broadcasts that nothing was learned from and that no figure is taken from."""
import concurrent.futures
import itertools
import json
import pathlib
import tempfile

import numpy as np
from soundmodel.evaluate import BROADCASTS, detector_figures, replay, scores_of, write_cues

GAINS = (1.0, 1.5)
SPEECH = (0.0, -0.75, -1.5, -2.25, -3.0)
MUSIC = (0.0, -0.75, -1.5, -2.25, -3.0)
QUIET = ("speech", "song", "music")  # in which nothing is an ad
DEAR = 4.0  # a muted second of programme is as bad as so many missed seconds of ads, in shares of each
FALSE = 0.01  # and one false stretch in half an hour as bad as this share of ads


def logit(chance):
    chance = np.clip(chance, 1e-5, 1 - 1e-5)
    return np.log(chance / (1 - chance))


def attempt(job):
    """(worth, description, gain, speech, music) of one calibration."""
    program, folder, scores, gain, speech, music = job
    squeeze = lambda values, offset: 1 / (1 + np.exp(-(gain * values + offset)))
    ads, programme, stretches = [], [], 0
    with tempfile.NamedTemporaryFile(suffix=".cues") as file:
        for name, (time, speaks, plays) in scores.items():
            path = pathlib.Path(file.name)
            write_cues(path, (time, squeeze(speaks, speech), squeeze(plays, music)))
            if name in QUIET:
                found = replay(program, folder / f"{name}.wav", "--sensitivity", 0.5, "--cues", path)
                stretches += len(found["ads"])
            else:
                found = detector_figures(program, folder, name, path, 0.5)
                ads.append(found[0])
                programme.append(found[1])
    worth = np.mean(ads) - DEAR * np.mean(programme) - FALSE * stretches
    told = f"ads {np.mean(ads):.1%}, programme {np.mean(programme):.1%}, false stretches {stretches}"
    return worth, told, gain, speech, music


def calibrate(program, work, tagger, name):
    """dict(gains, offsets) of speech, music, singing; WORK/NAME.calibration keeps it."""
    path = work / f"{name}.calibration"
    if not path.exists():
        folder = work / "tune"
        scores = {}
        for file in (*BROADCASTS, *QUIET):
            time, speech, music = scores_of(tagger, folder / f"{file}.wav")
            scores[file] = time, logit(speech), logit(music)
        jobs = [(program, folder, scores, *choice) for choice in itertools.product(GAINS, SPEECH, MUSIC)]
        with concurrent.futures.ProcessPoolExecutor(2) as pool:
            found = sorted(pool.map(attempt, jobs), reverse=True)
        for worth, told, gain, speech, music in found[:12]:
            print(f"{name} gain {gain}, speech {speech:+}, music {music:+}: {told}")
        _, _, gain, speech, music = found[0]
        path.write_text(json.dumps(dict(gains=[gain] * 3, offsets=[speech, music, music])))
    return json.loads(path.read_text())
