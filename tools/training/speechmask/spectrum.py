# SPDX-License-Identifier: MIT
"""Short-time spectrum and its inverse, equal to the program's (src/classifier/speech_mask.h)."""
import torch

RATE = 16000
WINDOW, HOP = 512, 256  # samples; a frame is complete 32 ms after its first sample
BINS = WINDOW // 2 + 1
FLOOR = 1e-4  # added to magnitudes before the logarithm
SHIFT, SCALE = 4.0, 4.0  # of the logarithms

# Its square, shifted by HOP, adds up to 1.
_ROOT_HANN = torch.hann_window(WINDOW).sqrt()


def spectrum(samples):
    """(..., samples) to complex (..., frames, BINS); frame t covers samples [HOP (t - 1), HOP (t + 1)), zeros before the first."""
    padded = torch.nn.functional.pad(samples, (HOP, 0))
    return torch.fft.rfft(padded.unfold(-1, WINDOW, HOP) * _ROOT_HANN)


def samples_of(frames):
    """The inverse of `spectrum`, without the last half frame, which needs the next one."""
    pieces = torch.fft.irfft(frames) * _ROOT_HANN
    return (pieces[..., :-1, HOP:] + pieces[..., 1:, :HOP]).flatten(-2)


def features(frames):
    """Input features of the network for complex frames: about -1 to 2."""
    return (torch.log(frames.abs() + FLOOR) + SHIFT) / SCALE
