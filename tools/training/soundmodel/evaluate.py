# SPDX-License-Identifier: MIT
"""Measures a model at the detector: the ads that sordin-replay finds in the held-out broadcasts with the model's scores and
with perfect scores, and the passages that it mutes in recordings without ads."""
import json
import pathlib
import subprocess
import wave

import numpy as np
from soundmodel.broadcast import DENSE, SINGLES
from soundmodel.network import LABELS, confidences

SENSITIVITIES = (0.25, 0.5, 0.75)
MEASURED = (*DENSE, "hour")


def samples_of(path):
    with wave.open(str(path), "rb") as file:
        return np.frombuffer(file.readframes(file.getnframes()), "<i2").astype(np.float32) / 32768


def scores_of(tagger, path, **calibration):
    """(time, speech, music) by result; singing counts as music, as in the program."""
    found = confidences(tagger, samples_of(path), **calibration)
    speech, music, singing = (found[:, LABELS.index(label)] for label in ("speech", "music", "singing"))
    return 1 + 0.5 * np.arange(len(found)), speech, np.maximum(music, singing)


def write_cues(path, scores):
    lines = [
        json.dumps({"t": float(t), "speech": round(float(s), 4), "music": round(float(m), 4)})
        for t, s, m in zip(*scores)
    ]
    path.write_text("\n".join(lines) + "\n")


def replay(program, recording, *options):
    command = [str(program), "--json", "--no-transcription", *map(str, options), str(recording)]
    return json.loads(subprocess.run(command, capture_output=True, check=True, text=True).stdout)


def detector_figures(program, folder, name, cues, sensitivity):
    """The report of sordin-replay on a broadcast with these cues."""
    options = ("--sensitivity", sensitivity, "--cues", cues, "--truth", folder / f"{name}.txt")
    return replay(program, folder / f"{name}.wav", *options)


def muted(found):
    """(share of ad seconds muted, share of programme seconds muted)."""
    return found["truth"]["recall"], found["truth"]["falseSecondsPerHour"] / 3600


def summary(found):
    """Mean figures of several broadcasts as one line."""
    ads, programme = np.mean([muted(each) for each in found], 0)
    delay = lambda name, part: np.mean([(each["truth"][name] or {}).get(part, np.nan) for each in found])
    return (
        f"ads {ads:.1%}, programme {programme:.2%}, reaction {delay('reaction', 'median'):.1f} / "
        f"{delay('reaction', 'percentile90'):.1f} s, release {delay('lateRelease', 'median'):.1f} s, "
        f"F0.5 of breaks {np.mean([each['truth']['f05'] for each in found]):.2f}"
    )


def evaluate(program, work, tagger, label, **calibration):
    """Prints the figures of a model on the held-out broadcasts."""
    folder = work / "held"
    for name in MEASURED:
        write_cues(folder / f"{name}.{label}", scores_of(tagger, folder / f"{name}.wav", **calibration))
    for sensitivity in SENSITIVITIES:
        for title, names in (("dense", DENSE), *((name, (name,)) for name in MEASURED)):
            for scores in ("perfect", label):
                found = [
                    detector_figures(program, folder, name, folder / f"{name}.{scores}", sensitivity)
                    for name in names
                ]
                print(f"{scores} {title} at {sensitivity}: {summary(found)}", flush=True)
    for kind in SINGLES:
        path = folder / f"{kind}.wav"
        cues = folder / f"{kind}.{label}"
        scores = scores_of(tagger, path, **calibration)
        write_cues(cues, scores)
        audio = np.clip(2 * np.minimum(scores[1], scores[2]), 0, 1)
        found = replay(program, path, "--sensitivity", 0.5, "--cues", cues)
        starts = [round(ad["start"]) for ad in found["ads"]]
        print(
            f"{label} {kind}: {len(starts)} stretches at {starts} ({found['adSeconds']:.0f} s); "
            f"speech {scores[1].mean():.3f}, music {scores[2].mean():.3f}, strong {np.mean(audio > 0.5):.3f}",
            flush=True,
        )


if __name__ == "__main__":
    import sys

    from soundmodel.training import load

    where = pathlib.Path(sys.argv[2])
    evaluate(pathlib.Path(sys.argv[1]), where, load(where / f"{sys.argv[3]}.pt"), sys.argv[3])
