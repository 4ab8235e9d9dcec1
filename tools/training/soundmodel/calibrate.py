# SPDX-License-Identifier: MIT
"""Chooses the offsets that turn the network's output into confidences: those with which the detector mutes most of the
ads of broadcasts that nothing was learned from and that no figure is taken from, at no more than MOST of their
programme beyond what it mutes with perfect scores."""
import concurrent.futures
import itertools
import json
import pathlib
import tempfile

import numpy as np
from soundmodel.broadcast import DENSE, FURTHER
from soundmodel.evaluate import detector_figures, muted, replay, scores_of, write_cues

SPEECH, MUSIC = np.arange(-5, 0.1, 0.5), np.arange(-3, 0.1, 0.5)  # offsets that are tried
MOST = 0.04  # share of programme muted, without words, beyond what perfect scores mute
QUIET = ("speech", "music", "noise")  # half hours in which nothing is an ad; of songs there are too few kinds
STRETCHES = 2  # false ones in QUIET, all together: more are worse than any ad missed
#: Share of ads that caution is worth. Only the score of speech tells songs from ads, and no song is there to speak for
#: itself: of offsets that mute nearly as much, those are taken that are the most cautious about speech.
CAUTION = 0.06


def logit(chance):
    chance = np.clip(chance, 1e-5, 1 - 1e-5)
    return np.log(chance / (1 - chance))


def attempt(job):
    """The figures of one calibration."""
    program, folder, scores, most, speech, music = job
    squeeze = lambda values, offset: 1 / (1 + np.exp(-(values + offset)))
    tried = dict(speech=speech, music=music)
    with tempfile.NamedTemporaryFile(suffix=".cues") as file:
        path = pathlib.Path(file.name)

        def cues(name):
            time, speaks, plays = scores[name]
            write_cues(path, (time, squeeze(speaks, speech), squeeze(plays, music)))
            return path

        figures = [muted(detector_figures(program, folder, name, cues(name), 0.5)) for name in (*DENSE, *FURTHER)]
        tried["ads"], tried["programme"] = np.mean(figures, 0)
        if tried["programme"] <= most:  # or it is not chosen anyway
            quiet = lambda name: replay(
                program, folder / f"{name}.wav", "--sensitivity", 0.5, "--cues", cues(name)
            )
            tried["stretches"] = sum(len(quiet(name)["ads"]) for name in QUIET)
    return tried


def choose(found):
    """The best of what was tried."""
    allowed = [t for t in found if t.get("stretches", STRETCHES + 1) <= STRETCHES]
    if not allowed:
        return min(found, key=lambda t: t["programme"])
    most = max(t["ads"] for t in allowed)
    near = [t for t in allowed if t["ads"] >= most - CAUTION]
    return min(near, key=lambda t: (t["speech"], -t["ads"]))


def calibrate(program, work, tagger, name):
    """dict(gains, offsets) of speech, music, singing; WORK/NAME.calibration keeps it, with all that was tried."""
    path = work / f"{name}.calibration"
    if not path.exists():
        folder = work / "tune"
        scores = {}
        for file in (*DENSE, *FURTHER, *QUIET):
            time, speech, music = scores_of(tagger, folder / f"{file}.wav")
            scores[file] = time, logit(speech), logit(music)
        perfect = [
            muted(detector_figures(program, folder, name, folder / f"{name}.perfect", 0.5))
            for name in (*DENSE, *FURTHER)
        ]
        ads, programme = map(float, np.mean(perfect, 0))
        print(f"perfect: ads {ads:.1%}, programme {programme:.1%}")
        jobs = [
            (program, folder, scores, programme + MOST, float(speech), float(music))
            for speech, music in itertools.product(SPEECH, MUSIC)
        ]
        with concurrent.futures.ProcessPoolExecutor(2) as pool:
            found = list(pool.map(attempt, jobs))
        best = choose(found)
        for tried in sorted(found, key=lambda t: (t is not best, -t["ads"]))[:8]:
            print(
                f"{name} speech {tried['speech']:+}, music {tried['music']:+}: ads {tried['ads']:.1%}, "
                f"programme {tried['programme']:.1%}, false stretches {tried.get('stretches')}"
            )
        offsets = [best["speech"], best["music"], best["music"]]
        path.write_text(json.dumps(dict(gains=[1.0] * 3, offsets=offsets, most=programme + MOST, perfect=perfect, tried=found), indent=1))
    chosen = json.loads(path.read_text())
    return dict(gains=chosen["gains"], offsets=chosen["offsets"])
