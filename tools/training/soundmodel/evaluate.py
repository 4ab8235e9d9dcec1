# SPDX-License-Identifier: MIT
"""Measures a model at the detector: what sordin-replay finds in the held-out broadcasts with the model's scores,
beside what it finds with perfect ones; and what it takes for an ad where there is none."""
import json
import pathlib
import subprocess
import wave

import numpy as np
from soundmodel.network import LABELS, confidences

SINGLES = ("speech", "song", "music", "noise")
BROADCASTS = ("broadcast-1", "broadcast-2", "broadcast-3")


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
    """(share of ad seconds muted, share of programme seconds muted, ads found)."""
    found = replay(
        program,
        folder / f"{name}.wav",
        "--sensitivity",
        sensitivity,
        "--cues",
        cues,
        "--truth",
        folder / f"{name}.txt",
    )
    return found["truth"]["recall"], found["truth"]["falseSecondsPerHour"] / 3600, len(found["ads"])


def evaluate(program, work, tagger, label, **calibration):
    """Prints and returns the figures of a model."""
    folder = work / "held"
    rows = {}
    for name in BROADCASTS:
        cues = folder / f"{name}.{label}"
        write_cues(cues, scores_of(tagger, folder / f"{name}.wav", **calibration))
        for sensitivity in (0.25, 0.5, 0.75):
            perfect = detector_figures(program, folder, name, folder / f"{name}.perfect", sensitivity)
            ours = detector_figures(program, folder, name, cues, sensitivity)
            rows[name, sensitivity] = perfect, ours
            print(
                f"{label} {name} at {sensitivity}: ads {ours[0]:.1%} (perfect {perfect[0]:.1%}), "
                f"programme {ours[1]:.1%} ({perfect[1]:.1%}), stretches {ours[2]} ({perfect[2]})",
                flush=True,
            )
    for sensitivity in (0.25, 0.5, 0.75):
        mean = np.mean(
            [[*rows[name, sensitivity][0][:2], *rows[name, sensitivity][1][:2]] for name in BROADCASTS], 0
        )
        print(
            f"{label} all at {sensitivity}: ads {mean[2]:.1%} ({mean[0]:.1%}), programme {mean[3]:.1%} ({mean[1]:.1%})"
        )
    for kind in SINGLES:
        path = folder / f"{kind}.wav"
        cues = folder / f"{kind}.{label}"
        scores = scores_of(tagger, path, **calibration)
        write_cues(cues, scores)
        audio = np.clip(2 * np.minimum(scores[1], scores[2]), 0, 1)
        jump = np.abs(np.diff(scores[1])) + np.abs(np.diff(scores[2]))
        found = replay(program, path, "--sensitivity", 0.5, "--cues", cues)
        starts = [round(ad["start"]) for ad in found["ads"]]
        print(
            f"{label} {kind}: ads found {len(starts)} at {starts} ({found['adSeconds']:.0f} s); speech {scores[1].mean():.3f}, "
            f"music {scores[2].mean():.3f}, A>.5 {np.mean(audio > 0.5):.3f}, jump {jump.mean():.3f}",
            flush=True,
        )
        rows[kind] = len(starts), found["adSeconds"]
    return rows


if __name__ == "__main__":
    import sys

    from soundmodel.training import load

    where = pathlib.Path(sys.argv[2])
    evaluate(pathlib.Path(sys.argv[1]), where, load(where / f"{sys.argv[3]}.pt"), sys.argv[3])
