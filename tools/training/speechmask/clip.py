# SPDX-License-Identifier: MIT
"""Levels of a clip of tests/classifier/data after the mask, so that tests can compare the program's mask with this one."""
import json

import torch
from soundmodel.audio import decode
from speechmask.spectrum import HOP, samples_of, spectrum

LENGTH = 16 * HOP  # samples of each level


def cleaned(mask, samples, strength, least):
    """Applies a mask to samples, with a delay of half a window as in the program."""
    frames = spectrum(torch.as_tensor(samples)[None])
    with torch.no_grad():
        gains = (mask(frames) ** strength).clamp_min(least)
    return torch.nn.functional.pad(samples_of(frames * gains)[0], (HOP, 0))


def write_clip(path, clip, mask, strength, least):
    """RMS levels of the clip's masked samples, one for each LENGTH samples."""
    samples = cleaned(mask, decode(clip), strength, least)
    pieces = samples[: len(samples) // LENGTH * LENGTH].view(-1, LENGTH)
    levels = [round(float(level), 6) for level in pieces.square().mean(1).sqrt()]
    path.write_text(json.dumps(dict(samples=LENGTH, levels=levels)) + "\n")
