# SPDX-License-Identifier: MIT
"""Trains the network for a fixed number of steps; resumes from the last checkpoint."""
import math
import time

import torch
import torch.nn.functional as F
from soundmodel.mixing import Mixer
from soundmodel.network import Tagger

BATCH = 40  # sequences
RATE, DECAY = 3e-3, 1e-2
AVERAGE = 0.998  # of the weights, over the last steps
CHECKPOINT = 200  # steps

CONVOLUTIONS = [(16, 2, 2, 0), (32, 2, 2, 0), (64, 2, 2, 0), (64, 1, 1, 1), (96, 2, 2, 0), (96, 1, 1, 1)]
#: By label: confidence = sigmoid(gain * logit + offset). Chosen at the detector: see docs/detection.md.
CALIBRATION = dict(gains=(1.5, 1.5, 1.5), offsets=(-1.5, -1.0, -1.0))
SETTINGS = dict(convolutions=CONVOLUTIONS, sections=2, embedding=64, memory=8, hidden=64)


def loss_of(logits, targets, steadiness):
    """Each label, the detector's own question (are music and speech there together?), and no trembling."""
    known = ~torch.isnan(targets)
    filled = torch.nan_to_num(targets)
    each = F.binary_cross_entropy_with_logits(logits, filled * 0.98 + 0.01, reduction="none")
    each = (each * known * torch.tensor([1.0, 1.0, 0.5])).sum() / known[..., 0].sum()
    chances = torch.sigmoid(logits)
    music = torch.maximum(chances[..., 1], chances[..., 2])
    both = torch.minimum(music, chances[..., 0]).clamp(1e-5, 1 - 1e-5)
    wanted = torch.minimum(filled[..., 1], filled[..., 0]) * 0.98 + 0.01
    both = F.binary_cross_entropy(both, wanted)
    scores = torch.stack([chances[..., 0], music], -1)
    steady = (filled[:, 1:, :2] - filled[:, :-1, :2]).abs().amax(-1) < 0.05
    jumps = ((scores[:, 1:] - scores[:, :-1]).abs().sum(-1) * steady).mean()
    return each + both + steadiness * jumps


def train(work, name, steps, seed=1, settings=None, steadiness=0.3, without_collection=False, threads=2):
    """WORK/NAME.pt: the averaged weights after `steps` steps."""
    result = work / f"{name}.pt"
    if result.exists():
        return result
    torch.set_num_threads(threads)
    torch.manual_seed(seed)
    settings = settings or SETTINGS
    tagger = Tagger(**settings)
    print(name, sum(p.numel() for p in tagger.parameters()), "parameters", flush=True)
    average = {k: v.clone() for k, v in tagger.state_dict().items()}
    optimiser = torch.optim.AdamW(tagger.parameters(), lr=RATE, weight_decay=DECAY)
    first, spent = 0, 0.0
    checkpoint = work / f"{name}.checkpoint"
    if checkpoint.exists():
        state = torch.load(checkpoint)
        tagger.load_state_dict(state["weights"])
        optimiser.load_state_dict(state["optimiser"])
        average, first, spent = state["average"], state["step"], state["spent"]
    mixer = Mixer(work / "banks", seed * 1_000_003 + first, without_collection)
    begun, running = time.time(), None
    tagger.train()
    for step in range(first, steps):
        rate = RATE * min(1, (step + 1) / 150) * 0.5 * (1 + math.cos(math.pi * step / steps)) + 2e-5
        for group in optimiser.param_groups:
            group["lr"] = rate
        inputs, targets = mixer.batch(BATCH)
        with torch.autocast("cpu", torch.bfloat16):  # two and a half times as fast where the processor has it
            logits = tagger(inputs)
        loss = loss_of(logits.float(), targets, steadiness)
        optimiser.zero_grad()
        loss.backward()
        torch.nn.utils.clip_grad_norm_(tagger.parameters(), 5.0)
        optimiser.step()
        running = loss.item() if running is None else 0.98 * running + 0.02 * loss.item()
        keep = min(AVERAGE, (step + 1) / (step + 10))
        for key, value in tagger.state_dict().items():
            if value.dtype.is_floating_point:
                average[key].mul_(keep).add_(value, alpha=1 - keep)
            else:
                average[key].copy_(value)
        if (step + 1) % 50 == 0:
            print(
                f"{name} step {step + 1} loss {running:.4f} {spent + time.time() - begun:.0f} s", flush=True
            )
        if (step + 1) % CHECKPOINT == 0:
            part = checkpoint.with_suffix(".part")
            torch.save(
                dict(
                    weights=tagger.state_dict(),
                    optimiser=optimiser.state_dict(),
                    average=average,
                    step=step + 1,
                    spent=spent + time.time() - begun,
                ),
                part,
            )
            part.rename(checkpoint)
    torch.save(dict(weights=average, settings=settings), result)
    return result


def load(path):
    state = torch.load(path)
    tagger = Tagger(**state["settings"])
    tagger.load_state_dict(state["weights"])
    return tagger.eval()
