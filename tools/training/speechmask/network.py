# SPDX-License-Identifier: MIT
"""The network: maps the features of a frame to a gain for each bin, with a recurrent memory of earlier frames."""
import struct
import zlib

import torch
from speechmask.spectrum import BINS, FLOOR, RATE, SCALE, SHIFT, WINDOW, features

FRONT, UNITS = 96, 128


class Mask(torch.nn.Module):
    def __init__(self, front=FRONT, units=UNITS):
        super().__init__()
        self.front = torch.nn.Linear(BINS, front)
        self.first = torch.nn.GRU(front, units, batch_first=True)
        self.second = torch.nn.GRU(units, units, batch_first=True)
        self.gains = torch.nn.Linear(units, BINS)

    def forward(self, frames):
        """Gains from 0 to 1 (batch, frames, BINS) of complex spectra of the same shape."""
        hidden = torch.relu(self.front(features(frames)))
        hidden, _ = self.first(hidden)
        further, _ = self.second(hidden)
        return torch.sigmoid(self.gains(hidden + further))


def write_mask(path, mask, strength=1.0, least=0.0):
    """Writes the file of a mask; src/classifier/speech_mask_file.h describes the format."""

    def half(tensor):
        return tensor.detach().numpy().astype("<f2").tobytes()

    def floats(tensor):
        return tensor.detach().numpy().astype("<f4").tobytes()

    def linear(layer):
        sizes = struct.pack("<II", layer.in_features, layer.out_features)
        return sizes + half(layer.weight) + floats(layer.bias)

    def recurrent(layer):
        sizes = struct.pack("<II", layer.input_size, layer.hidden_size)
        weights = half(layer.weight_ih_l0) + half(layer.weight_hh_l0)
        return sizes + weights + floats(layer.bias_ih_l0) + floats(layer.bias_hh_l0)

    payload = struct.pack("<II5f", RATE, WINDOW, FLOOR, SHIFT, SCALE, strength, least)
    payload += linear(mask.front) + recurrent(mask.first) + recurrent(mask.second) + linear(mask.gains)
    header = struct.pack("<8sIII", b"SORDINVM", 1, len(payload), zlib.crc32(payload))
    part = path.with_suffix(".part")
    part.write_bytes(header + payload)
    part.rename(path)


def rounded(mask):
    """A copy of the mask with its weights rounded to the precision of the file."""
    with torch.no_grad():
        for name, values in mask.named_parameters():
            if "weight" in name:
                values.copy_(values.half().float())
    return mask
