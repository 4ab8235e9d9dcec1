# SPDX-License-Identifier: MIT
"""Trains the mask for a number of steps. Resumes at the last checkpoint."""
import math
import time

import numpy as np
import torch
from speechmask.mixing import Mixer
from speechmask.network import Mask
from speechmask.spectrum import BINS, RATE

BATCH = 24
HIGHEST_RATE = 2e-3
WARM, LAST = 100, 0.4  # steps of rising rate, and share of all steps with falling rate
CHECKPOINT = 100
POWER = 0.3  # exponent that compresses magnitudes like hearing
BANDS = 25  # the number and range of the decoder's acoustic model
LOW, HIGH = 130, 6800
DEEPEST = 1e-4  # relative to the loudest band: the decoder ignores quieter bands


def decoder_bands():
    """(BINS, BANDS): triangles on the mel scale."""
    mel = lambda frequency: 1127 * np.log(1 + np.asarray(frequency) / 700)
    edges = np.linspace(mel(LOW), mel(HIGH), BANDS + 2)
    places = mel(np.arange(BINS) * RATE / 2 / (BINS - 1))[:, None]
    rising = (places - edges[:-2]) / (edges[1:-1] - edges[:-2])
    falling = (edges[2:] - places) / (edges[2:] - edges[1:-1])
    return torch.from_numpy(np.maximum(0, np.minimum(rising, falling)).astype(np.float32))


_BANDS = decoder_bands()


def loss_of(gains, voices, rests):
    mixed = (voices + rests).abs()
    cleaned, wanted = gains * mixed, voices.abs()
    scale = mixed.square().mean((1, 2), keepdim=True).sqrt() + 1e-6
    cleaned, wanted = cleaned / scale, wanted / scale
    spectral = ((cleaned + 1e-4) ** POWER - (wanted + 1e-4) ** POWER).square().mean()
    powers = [(values.square() @ _BANDS) for values in (cleaned, wanted)]
    floor = DEEPEST * powers[1].amax((1, 2), keepdim=True) + 1e-4
    bands = (torch.log(powers[0] + floor) - torch.log(powers[1] + floor)).abs().mean()
    return spectral + 0.05 * bands


def rate_at(step, steps):
    rising = min(1, (step + 1) / WARM)
    falling = min(1, (steps - step) / (LAST * steps))
    return HIGHEST_RATE * rising * 0.5 * (1 - math.cos(math.pi * falling)) + 1e-5


def train(work, name, steps, seed=1):
    """Trains for `steps` steps and writes the averaged weights to WORK/NAME.pt."""
    torch.set_num_threads(1)
    torch.manual_seed(seed)
    checkpoint, result = work / f"{name}.checkpoint", work / f"{name}.pt"
    if result.exists():
        return result
    state = torch.load(checkpoint) if checkpoint.exists() else None
    first = state["step"] if state else 0
    mask = Mask()
    optimizer = torch.optim.AdamW(mask.parameters(), lr=HIGHEST_RATE, weight_decay=1e-3)
    if state:
        mask.load_state_dict(state["weights"])
        optimizer.load_state_dict(state["optimizer"])
    average = state["average"] if state else {k: v.clone() for k, v in mask.state_dict().items()}
    mixer = Mixer(work / "pcm/train", seed * 1_000_003 + first)
    begun, running = time.time(), None
    for step in range(first, steps):
        for group in optimizer.param_groups:
            group["lr"] = rate_at(step, steps)
        voices, rests = mixer.batch(BATCH)
        loss = loss_of(mask(voices + rests), voices, rests)
        optimizer.zero_grad()
        loss.backward()
        torch.nn.utils.clip_grad_norm_(mask.parameters(), 1.0)
        optimizer.step()
        running = loss.item() if running is None else 0.98 * running + 0.02 * loss.item()
        keep = min(0.998, (step + 1) / (step + 10))
        for key, value in mask.state_dict().items():
            average[key].mul_(keep).add_(value, alpha=1 - keep)
        if (step + 1) % 50 == 0:
            print(f"{name} step {step + 1} loss {running:.4f} {time.time() - begun:.0f} s", flush=True)
        if (step + 1) % CHECKPOINT == 0 or step + 1 == steps:
            part = checkpoint.with_suffix(".part")
            torch.save(
                dict(
                    weights=mask.state_dict(),
                    optimizer=optimizer.state_dict(),
                    average=average,
                    step=step + 1,
                ),
                part,
            )
            part.rename(checkpoint)
    torch.save(average, result)
    return result
