# SPDX-License-Identifier: MIT
"""The network as the program computes it, and its file format. docs/model-card.md describes both."""
import struct
import zlib

import numpy as np
import torch
import torch.nn.functional as F
from soundmodel.audio import FFT, FLOOR, HIGH, HOP, LOW, MELS, RATE, WINDOW, mel_magnitudes
from torch import nn

FRAMES = 198  # of a patch: 2 s
STEP = 50  # frames between results: 0.5 s
RANGE, SCALE, POOL = 9.0, 2.5, 2
LABELS = ("speech", "music", "singing")
MAGIC, VERSION = b"SORDINSM", 1


def normalised(patches):
    """Normalizes the level of log-mel patches (n, FRAMES, MELS) and averages each POOL frames."""
    top = patches.amax((1, 2), keepdim=True)
    patches = torch.maximum(patches, top - RANGE)
    patches = (patches - patches.mean((1, 2), keepdim=True)) / SCALE
    return patches.reshape(len(patches), FRAMES // POOL, POOL, MELS).mean(2)


class Tagger(nn.Module):
    """Convolutions over each patch, one embedding a patch, a dense head over the latest embeddings."""

    def __init__(self, convolutions, sections=2, embedding=48, memory=6, hidden=48, dropout=0.2):
        """`convolutions`: (out, time stride, frequency stride, residual) of each."""
        super().__init__()
        self.settings = dict(
            convolutions=convolutions,
            sections=sections,
            embedding=embedding,
            memory=memory,
            hidden=hidden,
            dropout=dropout,
        )
        self.convolutions = nn.ModuleList()
        self.norms = nn.ModuleList()
        channels, bands = 1, MELS
        for out, time, frequency, _ in convolutions:
            self.convolutions.append(nn.Conv2d(channels, out, 3, (time, frequency), 1, bias=False))
            self.norms.append(nn.BatchNorm2d(out))
            channels, bands = out, (bands - 1) // frequency + 1
        self.drop = nn.Dropout(dropout)
        self.embedding = nn.Linear(2 * sections * channels * bands, embedding)
        self.hidden = nn.Linear(memory * embedding, hidden)
        self.out = nn.Linear(hidden, len(LABELS))

    def embed(self, patches):
        """(n, embedding) of log-mel patches (n, FRAMES, MELS)."""
        x = normalised(patches).unsqueeze(1)
        for (_, _, _, residual), convolution, norm in zip(
            self.settings["convolutions"], self.convolutions, self.norms
        ):
            y = norm(convolution(x))
            x = F.relu(y + x if residual else y)
        parts = []
        sections = self.settings["sections"]
        for part in range(sections):
            steps = x[:, :, part * x.shape[2] // sections : (part + 1) * x.shape[2] // sections]
            parts += [steps.mean(2).flatten(1), steps.amax(2).flatten(1)]
        return F.relu(self.embedding(self.drop(torch.cat(parts, 1))))

    def forward(self, mels):
        """Logits (n, results, labels) of log-mel sequences (n, FRAMES + STEP k, MELS), one result each STEP."""
        patches = mels.unfold(1, FRAMES, STEP).transpose(2, 3)  # n, results, FRAMES, MELS
        count, results = patches.shape[:2]
        embedded = self.embed(patches.reshape(-1, FRAMES, MELS)).reshape(count, results, -1)
        memory = self.settings["memory"]
        padded = F.pad(embedded, (0, 0, memory - 1, 0))
        windows = torch.stack([padded[:, r : r + memory].flatten(1) for r in range(results)], 1)
        return self.out(self.drop(F.relu(self.hidden(self.drop(windows)))))


def folded(convolution, norm):
    """Weights and bias of a convolution with its batch norm."""
    gain = (norm.weight / torch.sqrt(norm.running_var + norm.eps)).detach()
    return (
        convolution.weight.detach() * gain[:, None, None, None],
        norm.bias.detach() - norm.running_mean * gain,
    )


def write_model(path, tagger, gains, offsets):
    """The program's file: weights in half precision; confidence = sigmoid(gain * logit + offset)."""
    half = lambda tensor: np.ascontiguousarray(tensor.detach().numpy().astype("<f2")).tobytes()
    single = lambda tensor: np.ascontiguousarray(tensor.detach().numpy().astype("<f4")).tobytes()
    dense = (
        lambda layer: struct.pack("<2I", layer.in_features, layer.out_features)
        + half(layer.weight)
        + single(layer.bias)
    )
    payload = struct.pack(
        "<5I5f2I", RATE, WINDOW, HOP, FFT, MELS, LOW, HIGH, FLOOR, RANGE, SCALE, FRAMES, POOL
    )
    payload += struct.pack("<I", len(tagger.convolutions))
    for (out, time, frequency, residual), convolution, norm in zip(
        tagger.settings["convolutions"], tagger.convolutions, tagger.norms
    ):
        weight, bias = folded(convolution, norm)
        payload += (
            struct.pack("<5I", weight.shape[1], out, time, frequency, int(residual))
            + half(weight)
            + single(bias)
        )
    payload += struct.pack("<I", tagger.settings["sections"]) + dense(tagger.embedding)
    payload += struct.pack("<I", tagger.settings["memory"])
    payload += struct.pack("<I", 2) + dense(tagger.hidden) + dense(tagger.out)
    payload += struct.pack("<I", len(LABELS))
    for label, gain, offset in zip(LABELS, gains, offsets):
        payload += struct.pack("<B", len(label)) + label.encode() + struct.pack("<2f", gain, offset)
    path.write_bytes(MAGIC + struct.pack("<3I", VERSION, len(payload), zlib.crc32(payload)) + payload)


def confidences(tagger, samples, gains=(1,) * 3, offsets=(0,) * 3):
    """Confidences (results, labels) of a stream from its beginning, one result each 0.5 s from 1 s on. Silence precedes
    the stream. The last frame of a patch ends at the time of its result, so frames begin at sample 80 + 160 k.
    """
    mels = mel_magnitudes(np.concatenate([np.zeros(WINDOW - HOP, np.float32), samples]))
    before = torch.full((FRAMES - 2 * STEP, MELS), float(np.log(FLOOR)))
    mels = torch.cat([before, torch.log(torch.from_numpy(mels) + FLOOR)])
    mels = mels[: FRAMES + (len(mels) - FRAMES) // STEP * STEP]
    tagger.eval()
    with torch.no_grad():
        embedded = []
        patches = mels.unfold(0, FRAMES, STEP).transpose(1, 2)
        for part in patches.split(256):
            embedded.append(tagger.embed(part.contiguous()))
        embedded = torch.cat(embedded)
        memory = tagger.settings["memory"]
        padded = F.pad(embedded, (0, 0, memory - 1, 0))
        windows = torch.stack([padded[r : r + memory].flatten() for r in range(len(embedded))])
        logits = tagger.out(F.relu(tagger.hidden(windows)))
        return torch.sigmoid(logits * torch.tensor(gains) + torch.tensor(offsets)).numpy()


def read_model(path):
    """(network, dict(gains, offsets)) of a file that write_model() wrote. The batch norms of the result only add the bias."""
    data, at = path.read_bytes(), 20
    if data[:8] != MAGIC or struct.unpack_from("<I", data, 8)[0] != VERSION:
        raise ValueError(f"{path} is not a sound model of version {VERSION}")

    def integers(count):
        nonlocal at
        at += 4 * count
        return struct.unpack_from(f"<{count}I", data, at - 4 * count)

    def values(kind, *shape):
        nonlocal at
        size = np.dtype(kind).itemsize * int(np.prod(shape))
        at += size
        array = np.frombuffer(data[at - size : at], kind).reshape(shape)
        return torch.from_numpy(array.astype(np.float32))

    def dense():
        inputs, outputs = integers(2)
        return values("<f2", outputs, inputs), values("<f4", outputs)

    at += 4 * 12  # the front end
    layers = []
    for _ in range(integers(1)[0]):
        inputs, out, *strides, residual = integers(5)
        layers.append((out, *strides, residual, values("<f2", out, inputs, 3, 3), values("<f4", out)))
    (sections,) = integers(1)
    embedding = dense()
    (memory,) = integers(1)
    integers(1)
    hidden, out = dense(), dense()
    gains, offsets = [], []
    for _ in range(integers(1)[0]):
        at += 1 + data[at]
        gain, offset = values("<f4", 2).tolist()
        gains.append(gain)
        offsets.append(offset)
    tagger = Tagger(
        [layer[:4] for layer in layers], sections, len(embedding[1]), memory, len(hidden[1])
    )
    with torch.no_grad():
        for layer, convolution, norm in zip(layers, tagger.convolutions, tagger.norms):
            convolution.weight.copy_(layer[4])
            norm.weight.fill_((1 + norm.eps) ** 0.5)
            norm.bias.copy_(layer[5])
        for (weight, bias), target in zip(
            (embedding, hidden, out), (tagger.embedding, tagger.hidden, tagger.out)
        ):
            target.weight.copy_(weight)
            target.bias.copy_(bias)
    return tagger.eval(), dict(gains=gains, offsets=offsets)


def measure_norms(tagger, patches):
    """Sets the statistics of the batch norms to those of log-mel patches and compensates for them in the weights: the output
    stays the same, and training can continue from a model file, which has no statistics."""
    with torch.no_grad():
        x = normalised(patches).unsqueeze(1)
        for (_, _, _, residual), convolution, norm in zip(
            tagger.settings["convolutions"], tagger.convolutions, tagger.norms
        ):
            y = convolution(x)
            gain = norm.weight / torch.sqrt(norm.running_var + norm.eps)
            offset = norm.bias - gain * norm.running_mean
            mean, variance = y.mean((0, 2, 3)), y.var((0, 2, 3)) + 1e-6
            norm.running_mean.copy_(mean)
            norm.running_var.copy_(variance)
            norm.weight.copy_(gain * torch.sqrt(variance + norm.eps))
            norm.bias.copy_(offset + gain * mean)
            y = norm(y)
            x = F.relu(y + x if residual else y)


def grown(small, settings):
    """A network of at least the sizes of `small` with the same output: the weights that read the added channels are 0. Both
    must have the same number of convolutions, strides and residuals."""
    large = Tagger(**settings).eval()
    for ours, theirs in zip(settings["convolutions"], small.settings["convolutions"], strict=True):
        if tuple(ours[1:]) != tuple(theirs[1:]) or ours[0] < theirs[0]:
            raise ValueError("the model to begin with has other convolutions")

    for ours, theirs, norm, old in zip(large.convolutions, small.convolutions, large.norms, small.norms):
        rows, columns = theirs.weight.shape[:2]
        ours.weight.data[:rows] = 0
        ours.weight.data[:rows, :columns] = theirs.weight.data
        for name in ("weight", "bias", "running_mean", "running_var"):
            getattr(norm, name).data[: len(getattr(old, name))] = getattr(old, name).data
    sections = settings["sections"]
    channels, before = large.convolutions[-1].out_channels, small.convolutions[-1].out_channels
    with torch.no_grad():
        # Inputs by section, mean or maximum, channel and band.
        weight = large.embedding.weight.view(settings["embedding"], 2 * sections, channels, -1)
        old = small.embedding.weight.view(small.settings["embedding"], 2 * sections, before, -1)
        weight[: len(old)] = 0
        weight[: len(old), :, :before] = old
        large.embedding.bias[: len(old)] = small.embedding.bias
        # Inputs by embedding, the oldest first.
        weight = large.hidden.weight.view(settings["hidden"], settings["memory"], -1)
        old = small.hidden.weight.view(small.settings["hidden"], small.settings["memory"], -1)
        weight[: len(old)] = 0
        weight[: len(old), -old.shape[1] :, : old.shape[2]] = old
        large.hidden.bias[: len(old)] = small.hidden.bias
        large.out.weight.zero_()
        large.out.weight[:, : small.out.in_features] = small.out.weight
        large.out.bias.copy_(small.out.bias)
    return large
