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
from soundmodel.broadcast import DENSE, FURTHER
from soundmodel.evaluate import detector_figures, muted, replay, scores_of, write_cues

#: Offsets that are tried, in steps of COARSE, and around the best in steps of FINE. Songs are told from ads by the score of
#: speech, which has to be sure, and beds are faint, so the two differ.
SPEECH, MUSIC = (-6, 1), (-3, 3)
COARSE, FINE = 1.0, 0.5
MOST = 0.04  # share of programme muted, without words
QUIET = ("speech", "music", "noise")  # half hours in which nothing is an ad; of songs there are too few kinds
STRETCHES = 2  # false ones in QUIET, all together: more are worse than any ad missed


def logit(chance):
    chance = np.clip(chance, 1e-5, 1 - 1e-5)
    return np.log(chance / (1 - chance))


def attempt(job):
    """The figures of one calibration."""
    program, folder, scores, speech, music = job
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
        if tried["programme"] <= MOST:  # or it is not chosen anyway
            quiet = lambda name: replay(
                program, folder / f"{name}.wav", "--sensitivity", 0.5, "--cues", cues(name)
            )
            tried["stretches"] = sum(len(quiet(name)["ads"]) for name in QUIET)
    return tried


def worth(tried):
    """Larger is better: what may be chosen first, of that what mutes most of the ads, and among equals the more cautious
    about speech, since no song is there to speak against it."""
    stretches = tried.get("stretches")
    if stretches is None:
        return 0, -tried["programme"]
    return (2, round(tried["ads"], 2), -tried["speech"]) if stretches <= STRETCHES else (1, -stretches)


def calibrate(program, work, tagger, name):
    """dict(gains, offsets) of speech, music, singing; WORK/NAME.calibration keeps it, with all that was tried."""
    path = work / f"{name}.calibration"
    if not path.exists():
        folder = work / "tune"
        scores = {}
        for file in (*DENSE, *FURTHER, *QUIET):
            time, speech, music = scores_of(tagger, folder / f"{file}.wav")
            scores[file] = time, logit(speech), logit(music)
        found = {}
        with concurrent.futures.ProcessPoolExecutor(2) as pool:

            def attempts(pairs):
                jobs = [(program, folder, scores, *pair) for pair in pairs if pair not in found]
                found.update({job[3:]: tried for job, tried in zip(jobs, pool.map(attempt, jobs))})
                return max(found.values(), key=worth)

            steps = lambda limits: [float(v) for v in np.arange(limits[0], limits[1] + 0.01, COARSE)]
            best = attempts(list(itertools.product(steps(SPEECH), steps(MUSIC))))
            near = lambda value: [value - FINE, value, value + FINE]
            best = attempts(list(itertools.product(near(best["speech"]), near(best["music"]))))
        for tried in sorted(found.values(), key=worth, reverse=True)[:8]:
            print(
                f"{name} speech {tried['speech']:+}, music {tried['music']:+}: ads {tried['ads']:.1%}, "
                f"programme {tried['programme']:.1%}, false stretches {tried.get('stretches')}"
            )
        offsets = [best["speech"], best["music"], best["music"]]
        tried = sorted(found.values(), key=lambda t: (t["speech"], t["music"]))
        path.write_text(json.dumps(dict(gains=[1.0] * 3, offsets=offsets, tried=tried), indent=1))
    chosen = json.loads(path.read_text())
    return dict(gains=chosen["gains"], offsets=chosen["offsets"])
