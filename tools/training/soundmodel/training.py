# SPDX-License-Identifier: MIT
"""Trains the network for a number of steps, from random weights or from a smaller model. Resumes at the last checkpoint."""
import math
import os
import time

import torch
import torch.distributed
import torch.multiprocessing
import torch.nn.functional as F
from soundmodel.mixing import Mixer
from soundmodel.network import FRAMES, STEP, Tagger, grown, measure_norms, read_model

BATCH = 20  # sequences
RATE, DECAY = 3e-3, 1e-2
FURTHER_RATE = 1e-3  # of a training that begins with a model
WARM, LAST = 150, 0.3  # steps of rising rate, and share of all steps with falling rate
AVERAGE = 500, 0.1  # weights are averaged over this share of all steps, at most this many
CHECKPOINT = 100  # steps

CONVOLUTIONS = [(16, 2, 2, 0), (32, 2, 2, 0), (64, 2, 2, 0), (64, 1, 1, 1), (128, 2, 2, 0), (128, 1, 1, 1)]
#: By label: confidence = sigmoid(gain * logit + offset). Chosen at the detector: see docs/detection.md.
CALIBRATION = dict(gains=(1.0, 1.0, 1.0), offsets=(0.0, 0.0, 0.0))
SETTINGS = dict(convolutions=CONVOLUTIONS, sections=2, embedding=96, memory=16, hidden=96)


def loss_of(logits, targets, steadiness):
    """(loss, losses by sequence): cross entropy of each label, cross entropy of min(music, speech), which is the detector's
    input, and the jumps between results where the labels are steady."""
    known = ~torch.isnan(targets)
    filled = torch.nan_to_num(targets)
    each = F.binary_cross_entropy_with_logits(logits, filled * 0.98 + 0.01, reduction="none")
    each = (each * known * torch.tensor([1.0, 1.0, 0.5], device=logits.device)).sum(-1)
    chances = torch.sigmoid(logits)
    music = torch.maximum(chances[..., 1], chances[..., 2])
    both = torch.minimum(music, chances[..., 0]).clamp(1e-5, 1 - 1e-5)
    wanted = torch.minimum(filled[..., 1], filled[..., 0]) * 0.98 + 0.01
    both = F.binary_cross_entropy(both, wanted, reduction="none")
    scores = torch.stack([chances[..., 0], music], -1)
    steady = (filled[:, 1:, :2] - filled[:, :-1, :2]).abs().amax(-1) < 0.05
    jumps = ((scores[:, 1:] - scores[:, :-1]).abs().sum(-1) * steady).mean()
    by_sequence = (each + both).mean(1)
    return by_sequence.mean() + steadiness * jumps, by_sequence.detach()


def shared(tagger, processes):
    """Replaces the gradients of each process by the mean over all processes."""
    if processes > 1:
        flat = torch.cat([p.grad.flatten() for p in tagger.parameters()])
        torch.distributed.all_reduce(flat)
        flat /= processes
        for parameter, part in zip(tagger.parameters(), flat.split([p.numel() for p in tagger.parameters()])):
            parameter.grad.copy_(part.view_as(parameter))


def rate_at(step, steps, highest):
    """Learning rate of a step: rises, stays constant, and falls to 1e-5."""
    rising = min(1, (step + 1) / WARM)
    falling = min(1, (steps - step) / (LAST * steps))
    return highest * rising * 0.5 * (1 - math.cos(math.pi * falling)) + 1e-5


def train(
    work, banks, name, steps, seed=1, settings=None, steadiness=0.3, without_collection=False, begin=None
):
    """Trains for `steps` steps, beginning with the model file `begin` if given, and writes the averaged weights to
    WORK/NAME.pt. Without a GPU, two processes share each batch."""
    result = work / f"{name}.pt"
    if not result.exists():
        processes = 1 if torch.cuda.is_available() else 2
        meeting = work / f"{name}.meeting"
        meeting.unlink(missing_ok=True)
        os.environ["GLOO_SOCKET_IFNAME"] = "lo"
        settings = settings or SETTINGS
        job = (work, banks, name, steps, seed, settings, steadiness, without_collection, begin)
        torch.multiprocessing.spawn(_train, (os.getpid(), processes, meeting, *job), processes)
        meeting.unlink(missing_ok=True)
    return result


def beginning(settings, begin, mixer):
    """The network before the first step."""
    if begin is None:
        return Tagger(**settings)
    tagger = grown(read_model(begin)[0], settings)
    inputs, _ = mixer.batch(BATCH)
    patches = inputs.unfold(1, FRAMES, STEP).transpose(2, 3)
    measure_norms(tagger, patches.reshape(-1, *patches.shape[2:]))
    return tagger


def _train(
    rank,
    parent,
    processes,
    meeting,
    work,
    banks,
    name,
    steps,
    seed,
    settings,
    steadiness,
    without_collection,
    begin,
):
    device = "cuda" if torch.cuda.is_available() else "cpu"
    torch.set_num_threads(1)
    torch.manual_seed(seed)
    if processes > 1:
        torch.distributed.init_process_group(
            "gloo", init_method=f"file://{meeting}", rank=rank, world_size=processes
        )
    checkpoint = work / f"{name}.checkpoint"
    state = torch.load(checkpoint, map_location=device) if checkpoint.exists() else None
    first = state["step"] if state else 0
    mixer = Mixer(banks, seed * 1_000_003 + first * processes + rank, without_collection)
    if state:
        tagger = Tagger(**settings)
    else:
        tagger = beginning(settings, begin, mixer)
        if processes > 1:  # each process has measured the norms on a batch of its own
            for values in tagger.state_dict().values():
                torch.distributed.broadcast(values, 0)
    tagger.to(device)
    highest = FURTHER_RATE if begin else RATE
    average = {k: v.clone() for k, v in tagger.state_dict().items()}
    optimiser = torch.optim.AdamW(tagger.parameters(), lr=highest, weight_decay=DECAY)
    spent = 0.0
    if state:
        tagger.load_state_dict(state["weights"])
        optimiser.load_state_dict(state["optimiser"])
        average, spent = state["average"], state["spent"]
        for bank, values in zip(mixer.banks, state["hardness"]):
            if len(bank.hardness) == len(values):
                bank.hardness = values
                bank.refresh()
    torch.manual_seed(seed * 1_000_003 + first * processes + rank)
    begun, running = time.time(), None
    tagger.train()
    for step in range(first, steps):
        if os.getppid() != parent:
            raise SystemExit("train: the parent process has ended")
        for group in optimiser.param_groups:
            group["lr"] = rate_at(step, steps, highest)
        inputs, targets = mixer.batch(BATCH // processes)
        with torch.autocast(device, torch.bfloat16):  # 2.5 times as fast on processors with bfloat16
            logits = tagger(inputs.to(device))
        loss, losses = loss_of(logits.float(), targets.to(device), steadiness)
        mixer.learned(losses.cpu().numpy())
        optimiser.zero_grad()
        loss.backward()
        shared(tagger, processes)
        torch.nn.utils.clip_grad_norm_(tagger.parameters(), 5.0)
        optimiser.step()
        if rank > 0:
            continue
        running = loss.item() if running is None else 0.98 * running + 0.02 * loss.item()
        keep = min(1 - 1 / min(AVERAGE[0], AVERAGE[1] * steps + 1), (step + 1) / (step + 10))
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
                    settings=settings,
                    step=step + 1,
                    spent=spent + time.time() - begun,
                    hardness=[bank.hardness for bank in mixer.banks],
                ),
                part,
            )
            part.rename(checkpoint)
    if rank == 0:
        keep_average(work / f"{name}.pt", average, settings)


def keep_average(path, average, settings):
    torch.save(dict(weights={k: v.cpu() for k, v in average.items()}, settings=settings), path)


def intermediate(work, name):
    """(name, path) of the averaged weights of the last checkpoint of an unfinished training: WORK/NAME-STEP.pt."""
    state = torch.load(work / f"{name}.checkpoint", map_location="cpu")
    name = f"{name}-{state['step']}"
    keep_average(work / f"{name}.pt", state["average"], state["settings"])
    return name, work / f"{name}.pt"


def load(path):
    state = torch.load(path)
    tagger = Tagger(**state["settings"])
    tagger.load_state_dict(state["weights"])
    return tagger.eval()
