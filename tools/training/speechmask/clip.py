# SPDX-License-Identifier: MIT
"""What the mask makes of a clip of tests/classifier/data, so that the program can be compared with the training."""
import json

import torch
from soundmodel.audio import decode
from speechmask.spectrum import HOP, samples_of, spectrum

LENGTH = 16 * HOP  # samples of each level


def cleaned(mask, samples, strength, least):
    """Samples through a mask; half a window late, as in the program."""
    frames = spectrum(torch.as_tensor(samples)[None])
    with torch.no_grad():
        gains = (mask(frames) ** strength).clamp_min(least)
    return torch.nn.functional.pad(samples_of(frames * gains)[0], (HOP, 0))


def write_clip(path, clip, mask, strength, least):
    """RMS levels of the clip's cleaned samples, LENGTH at a time."""
    samples = cleaned(mask, decode(clip), strength, least)
    pieces = samples[: len(samples) // LENGTH * LENGTH].view(-1, LENGTH)
    levels = [round(float(level), 6) for level in pieces.square().mean(1).sqrt()]
    path.write_text(json.dumps(dict(samples=LENGTH, levels=levels)) + "\n")
