# SPDX-License-Identifier: MIT
"""Audio files, codecs and the front end, which equals the program's: see docs/model-card.md."""
import math
import pathlib
import subprocess

import numpy as np
import soundfile
import torch
from scipy.signal import resample_poly

RATE = 16000
WINDOW, HOP, FFT, MELS = 400, 160, 512, 64
LOW, HIGH = 60.0, 7800.0
FLOOR = 1e-4


def decode(path, seconds=None):
    """Samples of a file as 16 kHz mono floats; empty if it cannot be decoded."""
    try:
        with soundfile.SoundFile(str(path)) as file:
            rate = file.samplerate
            samples = file.read(int(seconds * rate) if seconds else -1, np.float32, always_2d=True).mean(1)
    except (soundfile.LibsndfileError, RuntimeError):
        return decode_raw(pathlib.Path(path).read_bytes(), [], seconds)
    if rate == RATE or len(samples) == 0:
        return samples
    common = math.gcd(rate, RATE)
    return resample_poly(samples, RATE // common, rate // common).astype(np.float32)


def decode_raw(data, options, seconds=None):
    """Like decode(), from the bytes of a file, with ffmpeg. `options` state the format of headerless data."""
    command = ["ffmpeg", "-nostdin", "-v", "error", *options, "-i", "-", "-ac", "1", "-ar", str(RATE)]
    if seconds:
        command += ["-t", str(seconds)]
    done = subprocess.run(command + ["-f", "f32le", "-"], input=data, capture_output=True, check=False)
    return np.frombuffer(done.stdout[: len(done.stdout) // 4 * 4], np.float32)


def through_codec(samples, codec, rate, bitrate):
    """Encodes samples with a lossy codec (an encoder of ffmpeg) at a sample rate (Hz) and bit rate (kbit/s), and decodes them."""
    container = {
        "libmp3lame": "mp3",
        "libopus": "ogg",
        "libvorbis": "ogg",
        "g722": "g722",
        "aac": "adts",
        "pcm_mulaw": "wav",
        "libgsm": "gsm",
    }[codec]
    effort = ["-compression_level", "2"] if codec == "libopus" else []
    raw = np.asarray(samples, np.float32).tobytes()
    encode = (
        [
            "ffmpeg",
            "-nostdin",
            "-v",
            "error",
            "-f",
            "f32le",
            "-ar",
            str(RATE),
            "-ac",
            "1",
            "-i",
            "-",
            "-ar",
            str(rate),
            "-c:a",
            codec,
        ]
        + (["-b:a", f"{bitrate}k"] if bitrate else [])
        + effort
    )
    coded = subprocess.run(encode + ["-f", container, "-"], input=raw, capture_output=True, check=True).stdout
    back = ["ffmpeg", "-nostdin", "-v", "error", "-f", {"adts": "aac"}.get(container, container)]
    back += ["-i", "-", "-ac", "1", "-ar", str(RATE), "-f", "f32le", "-"]
    done = subprocess.run(back, input=coded, capture_output=True, check=True).stdout
    result = np.frombuffer(done, np.float32)
    return np.pad(result, (0, max(0, len(samples) - len(result))))[: len(samples)]


def mel(frequency):
    """Converts Hz to mel."""
    return 1127.0 * np.log(1 + np.asarray(frequency) / 700.0)


def mel_bank():
    """Weights (FFT bins, mels): triangles on the mel scale."""
    bins = mel(np.arange(1, FFT // 2 + 1) * RATE / FFT)
    edges = np.linspace(mel(LOW), mel(HIGH), MELS + 2)
    left, centre, right = edges[:-2], edges[1:-1], edges[2:]
    rising = (bins[:, None] - left) / (centre - left)
    falling = (right - bins[:, None]) / (right - centre)
    weights = np.maximum(0, np.minimum(rising, falling))
    return np.vstack([np.zeros((1, MELS)), weights]).astype(np.float32)


_BANK = torch.from_numpy(mel_bank())
_HANN = torch.hann_window(WINDOW)


def mel_magnitudes(samples):
    """(frames, mels) float32; frame t covers samples [HOP t, HOP t + WINDOW)."""
    samples = np.asarray(samples, np.float32)
    if len(samples) < WINDOW:
        return np.zeros((0, MELS), np.float32)
    out = []
    step = 60 * RATE  # bounded memory
    frames = 1 + (len(samples) - WINDOW) // HOP
    for first in range(0, frames, step // HOP):
        count = min(step // HOP, frames - first)
        piece = torch.from_numpy(samples[first * HOP : (first + count - 1) * HOP + WINDOW].copy())
        spectrum = torch.fft.rfft(piece.unfold(0, WINDOW, HOP) * _HANN, FFT).abs()
        out.append((spectrum @ _BANK).numpy())
    return np.concatenate(out)
