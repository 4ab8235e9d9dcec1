# SPDX-License-Identifier: MIT
"""Generates synthetic voices, singing and noises. The result depends only on the seed."""
import concurrent.futures
import pathlib
import re
import subprocess
import tempfile
import zlib

import numpy as np
from scipy.ndimage import median_filter, uniform_filter1d
from scipy.signal import butter, fftconvolve, sosfilt
from soundmodel.audio import RATE, decode
from soundmodel.prepare import levelled, write

FLITE = ["awb", "kal16", "rms", "slt"]
ESPEAK = ["en-us+m3", "en-gb+f2", "de+m1", "fr+f3", "es+m4", "it+f1", "pt+m2", "nl+f4", "pl+m5", "sv+f5"]
FESTIVAL = [
    "voice_kal_diphone",
    "voice_ked_diphone",
    "voice_cmu_us_slt_arctic_hts",
    "voice_lp_diphone",
    "voice_pc_diphone",
    "voice_czech_ph",
    "voice_czech_dita",
    "voice_hy_fi_mv_diphone",
    "voice_suo_fi_lj_diphone",
]
#: Voices kept for the split "tune". The other synthesizers have too few voices for that.
OTHER_ESPEAK = {"tune": ["ro+m6", "en-us+f4"]}
HOP = 80  # samples of the vocoder's frames


def sentences(rng):
    """Sentences of the license texts that every Debian system has."""
    text = " ".join(
        p.read_text("utf-8", "replace")
        for p in sorted(pathlib.Path("/usr/share/common-licenses").glob("*-3"))
    )
    words = re.sub(r"[^A-Za-z,.;' ]+", " ", text)
    found = [s.strip() for s in re.split(r"[.;]", words) if 30 < len(s.strip()) < 160]
    return [found[i] for i in rng.permutation(len(found))]


def speak(engine, voice, text, path):
    if engine == "flite":
        command = ["flite", "-voice", voice, "-t", text, "-o", str(path)]
    elif engine == "espeak":
        command = ["espeak-ng", "-v", voice, "-s", "165", "-w", str(path), text]
    else:
        command = ["text2wave", "-eval", f"({voice})", "-o", str(path)]
    subprocess.run(
        command, input=text.encode() if engine == "festival" else None, capture_output=True, check=False
    )


def synthetic_voices(work, seconds=75):
    """Writes WORK/pcm/SPLIT/speech/tts-*.s16. Skips each voice that is not installed, and names it."""
    voices = [("train", "flite", v) for v in FLITE]
    voices += [("train", "espeak", v) for v in ESPEAK]
    voices += [("train", "festival", v) for v in FESTIVAL]
    voices += [(split, "espeak", v) for split, others in OTHER_ESPEAK.items() for v in others]
    for split, engine, voice in voices:
        target = work / "pcm" / split / "speech" / f"tts-{engine}__{voice}.s16"
        if target.exists():
            continue
        target.parent.mkdir(parents=True, exist_ok=True)
        rng = np.random.default_rng(zlib.crc32(voice.encode()))
        parts, length = [], 0
        with tempfile.TemporaryDirectory() as scratch:
            for index, text in enumerate(sentences(rng)):
                path = pathlib.Path(scratch) / "voice.wav"
                path.unlink(missing_ok=True)
                speak(engine, voice, text + ".", path)
                samples = decode(path) if path.exists() else np.zeros(0, np.float32)
                parts += [samples, np.zeros(int(rng.uniform(0.1, 0.5) * RATE), np.float32)]
                length += len(samples)
                if length > seconds * RATE or (index > 3 and length == 0):
                    break
        if length < 10 * RATE:
            print(f"no voice {engine} {voice}")
            continue
        write(target, levelled(np.concatenate(parts)))


class Voice:
    """Vocoder analysis of a stretch of speech: envelopes, loudness, voicing and pitch by frame."""

    def __init__(self, samples):
        count = 1 + (len(samples) - 400) // HOP
        frames = np.lib.stride_tricks.sliding_window_view(samples, 400)[::HOP][:count] * np.hanning(400)
        power = np.abs(np.fft.rfft(frames, 1024)) ** 2
        self.envelope = uniform_filter1d(power + 1e-9, 15, axis=1)
        correlation = np.fft.irfft(power)[:, :260]
        correlation /= correlation[:, :1] + 1e-9
        lag = correlation[:, 40:230].argmax(1) + 40
        self.level = 10 * np.log10((frames**2).mean(1) + 1e-9)
        strength = correlation[np.arange(count), lag]
        self.voiced = (strength > 0.45) & (self.level > self.level.max() - 40)
        where = np.flatnonzero(self.voiced)
        self.pitch = np.full(count, 150.0)
        if len(where) > 5:
            self.pitch = np.interp(np.arange(count), where, median_filter(RATE / lag[where], 5))


def vocode(rng, envelope, voiced, pitch, formants):
    """Vocoder synthesis from envelopes (frames, bins) and a pitch in Hz by frame: harmonics, and noise where unvoiced."""
    count = len(pitch)
    at = np.arange(count)
    time = np.arange(count * HOP) / HOP
    rough = rng.choice([0.0, rng.uniform(0.2, 1.0)], p=[0.6, 0.4])
    wobble = 1 + 0.1 * rough * uniform_filter1d(rng.standard_normal(count * HOP), 24)
    phase = 2 * np.pi * np.cumsum(np.interp(time, at, pitch) * wobble) / RATE
    amplitude = np.sqrt(envelope)
    sound = np.zeros(count * HOP)
    for harmonic in range(1, int(min(60, 7600 // max(pitch.min(), 60))) + 1):
        position = np.clip(harmonic * pitch / formants / RATE * 1024, 0, 511)
        low = position.astype(int)
        high = np.minimum(low + 1, 512)
        strength = amplitude[at, low] + (amplitude[at, high] - amplitude[at, low]) * (position - low)
        strength = np.where(harmonic * pitch < 7700, strength, 0)
        sound += np.interp(time, at, strength) * np.cos(harmonic * phase + 0.3 * harmonic**2)
    sound *= np.interp(time, at, np.sqrt(pitch / 100)) * np.interp(
        time, at, uniform_filter1d(voiced * 1.0, 5)
    )
    white = rng.standard_normal(count * HOP + 1024)
    pieces = np.lib.stride_tricks.sliding_window_view(white, 2 * HOP)[: count * HOP : HOP] * np.hanning(
        2 * HOP
    )
    breath = np.fft.irfft(np.fft.rfft(pieces, 1024) * amplitude, 1024)[:, : 2 * HOP + 200]
    noise = np.zeros(count * HOP + 1024)
    gain = np.where(voiced, rng.uniform(0.02, 0.12), 1.0) * 0.25
    for frame in range(count):
        noise[frame * HOP : frame * HOP + breath.shape[1]] += breath[frame] * gain[frame]
    return 0.5 * sound + noise[: count * HOP]


SCALES = [[0, 2, 4, 5, 7, 9, 11], [0, 2, 3, 5, 7, 8, 10], [0, 3, 5, 7, 10], [0, 2, 4, 7, 9]]


def melody(rng, count, base):
    """Pitch in Hz by frame: held notes of a scale with glides, most of them with vibrato."""
    scale = SCALES[rng.integers(len(SCALES))]
    degree, before = int(rng.integers(0, 7)), None
    rate, depth = rng.uniform(4.5, 6.5), rng.choice([0.0, rng.uniform(0.1, 0.7)], p=[0.35, 0.65])
    beat = rng.uniform(0.1, 0.42)
    notes = np.zeros(count)
    at = 0
    while at < count:
        length = min(max(int(beat * rng.choice([1, 1, 1, 2, 2, 3, 4]) * RATE / HOP), 14), count - at)
        degree = int(np.clip(degree + rng.choice([-3, -2, -1, -1, 0, 1, 1, 2, 3]), -4, 9))
        note = 12 * (degree // len(scale)) + scale[degree % len(scale)]
        frame = np.arange(length)
        glide = np.clip(frame / rng.integers(4, 16), 0, 1)
        line = note * np.ones(length) if before is None else before * (1 - glide) + note * glide
        vibrato = np.sin(2 * np.pi * rate * frame * HOP / RATE + rng.uniform(0, 6)) * np.clip(
            (frame - 25) / 30, 0, 1
        )
        notes[at : at + length] = line + depth * vibrato + 0.06 * rng.standard_normal()
        before, at = note, at + length
    return base * 2 ** (notes / 12)


def sung(rng, samples, voices):
    """Turns speech into singing by one to four voices in harmony: holds the vowels, drops the pauses, adds a melody."""
    voice = Voice(samples)
    loud = voice.level > np.median(voice.level[voice.level > voice.level.max() - 35]) - 18
    keep = np.flatnonzero(uniform_filter1d(loud * 1.0, 9) > 0.2)
    if len(keep) < 100:
        return None
    stretch = np.cumsum(np.where(voice.voiced[keep], rng.uniform(1.0, 3.4), 1.0))
    count = int(stretch[-1])
    frames = keep[np.clip(np.searchsorted(stretch, np.arange(count)), 0, len(keep) - 1)]
    smooth = uniform_filter1d(voice.level[frames], 40)
    gain = 10 ** (np.clip(smooth.max() - smooth, 0, 10) / 20 * 0.6)
    typical = np.median(voice.pitch[voice.voiced]) if voice.voiced.any() else 150
    base = float(np.clip(typical * rng.uniform(1.0, 2.3), 90, 480))
    envelope = uniform_filter1d(voice.envelope[frames], 5, axis=0)
    lead = melody(rng, count, base)
    formants, result = rng.uniform(0.9, 1.15), 0
    for part in range(voices):
        line = lead
        if part > 0:
            line = lead * 2 ** ((rng.choice([-12, -5, -3, 3, 4, 5, 7, 12]) + rng.normal(0, 0.08)) / 12)
        sound = vocode(
            rng, envelope, voice.voiced[frames], np.clip(line, 70, 900), formants * rng.uniform(0.97, 1.03)
        )
        result = result + sound * (1 if part == 0 else rng.uniform(0.4, 1))
    return result * np.repeat(gain, HOP)


def spoken(rng, samples):
    """Passes speech through the same vocoder with the original melody, so that the network does not learn its artifacts as singing."""
    voice = Voice(samples)
    shift = rng.uniform(0.85, 1.25)
    return vocode(rng, voice.envelope, voice.voiced, np.clip(voice.pitch * shift, 70, 450), shift**0.3)


def singing(work, seed, count):
    """WORK/pcm/train/song/sung-SEED and WORK/pcm/train/speech/vocoded-SEED, from the training voices."""
    target = work / f"pcm/train/song/sung__{seed}.s16"
    if target.exists():
        return
    rng = np.random.default_rng(seed)
    voices = [
        p
        for p in sorted((work / "pcm/train/speech").glob("*.s16"))
        if p.stat().st_size > 4e6 and not p.name.startswith(("vocoded", "c-"))
    ]
    songs, speech = [], []
    for index in range(count):
        source = np.memmap(voices[rng.integers(len(voices))], "<i2", "r")
        length = int(rng.uniform(4, 7) * RATE)
        begin = int(rng.integers(0, len(source) - length))
        samples = np.asarray(source[begin : begin + length], np.float64) / 32768
        if np.sqrt((samples**2).mean()) < 0.005:
            continue
        song = sung(rng, samples, int(rng.choice([1, 1, 1, 2, 3, 4])))
        if song is not None and np.abs(song).max() > 0:
            songs.append(song / np.abs(song).max() * 0.6)
        if index % 3 == 0:
            voice = spoken(rng, samples)
            speech.append(voice / (np.abs(voice).max() + 1e-9) * 0.6)
    write(work / f"pcm/train/speech/vocoded__{seed}.s16", np.concatenate(speech))
    target.parent.mkdir(parents=True, exist_ok=True)
    write(target, np.concatenate(songs))


def shaped_noise(rng, length):
    """Noise with a random smooth spectrum, some with resonances."""
    frequency = np.fft.rfftfreq(length, 1 / RATE)
    knots = int(rng.integers(3, 16))
    gain = np.cumsum(rng.normal(0, rng.uniform(2, 7), knots)) - np.linspace(0, rng.uniform(-5, 40), knots)
    spectrum = np.fft.rfft(rng.standard_normal(length))
    spectrum *= 10 ** (np.interp(frequency, np.linspace(0, RATE / 2, knots), gain) / 20)
    for _ in range(int(rng.choice([0, 0, 1, 2, 4]))):
        centre = np.exp(rng.uniform(np.log(80), np.log(6000)))
        spectrum *= 1 + rng.uniform(2, 30) * np.exp(
            -(((frequency - centre) / (centre / rng.uniform(3, 60))) ** 2)
        )
    sound = np.fft.irfft(spectrum, length)
    return sound / (np.sqrt((sound**2).mean()) + 1e-12)


def swelling(rng, length, depth):
    knots = int(rng.integers(4, 40))
    return np.interp(np.arange(length), np.linspace(0, length, knots), np.exp(rng.normal(0, depth, knots)))


def made_noise(rng, length):
    """Hiss, clicks, motors and hums, or calls, `length` samples."""
    kind = rng.random()
    bed = shaped_noise(rng, length)
    if kind < 0.45:
        sound = bed * (swelling(rng, length, rng.uniform(0.1, 1.2)) if rng.random() < 0.5 else 1)
    elif kind < 0.6:
        sound = rng.uniform(0, 0.05) * bed
        for _ in range(int(rng.integers(1, 40))):
            at = int(rng.integers(0, length - 1600))
            sound[at : at + 1600] += rng.standard_normal(1600) * np.exp(
                -np.arange(1600) / rng.uniform(5, 500)
            )
    elif kind < 0.8:
        drift = np.cumsum(rng.normal(0, rng.uniform(0, 0.06), 6))
        pitch = np.exp(
            rng.uniform(np.log(25), np.log(260))
            + np.interp(np.arange(length), np.linspace(0, length, 6), drift)
        )
        phase = 2 * np.pi * np.cumsum(pitch) / RATE
        slope = rng.uniform(0.2, 1.6)
        sound = sum(
            np.cos(k * phase + rng.uniform(0, 6)) * rng.uniform(0, 1) / k**slope
            for k in range(1, int(rng.integers(3, 30)))
        )
        sound = sound / (sound.std() + 1e-9) + rng.uniform(0.1, 2) * bed
        sound *= swelling(rng, length, rng.uniform(0.1, 0.6)) if rng.random() < 0.5 else 1
    else:
        sound = rng.uniform(0.02, 1) * bed
        for _ in range(int(rng.integers(2, 30))):
            size = int(np.exp(rng.uniform(np.log(0.03), np.log(0.6))) * RATE)
            at = int(rng.integers(0, length - size))
            bend = np.interp(np.arange(size), np.linspace(0, size, 4), np.cumsum(rng.normal(0, 0.25, 4)))
            phase = 2 * np.pi * np.cumsum(np.exp(rng.uniform(np.log(200), np.log(5000)) + bend)) / RATE
            call = (
                np.cos(phase)
                + rng.uniform(0, 0.8) * np.cos(2 * phase)
                + rng.uniform(0, 0.6) * np.cos(3 * phase)
            )
            sound[at : at + size] += 5 * np.hanning(size) * rng.uniform(0.2, 1) * call
    return sound / (np.abs(sound).max() + 1e-9) * 0.6


def applause(rng, length):
    """Applause: dense, with no separate claps, or sparse."""
    sound = np.zeros(length + 400)
    for at in rng.integers(0, length, int(np.exp(rng.uniform(np.log(20), np.log(400))) * length / RATE)):
        size = int(rng.integers(60, 300))
        clap = rng.standard_normal(size) * np.exp(-np.arange(size) / (size / 4))
        sound[at : at + size] += rng.uniform(0.1, 1) * clap
    low, high = np.sort(rng.uniform([500, 2000], [1500, 6000]))
    return sosfilt(butter(2, [low, high], "bandpass", fs=RATE, output="sos"), sound[:length])


def crowd(rng, voices, length):
    """A crowd in a hall: unintelligible voices near and far, some of them excited, and applause."""
    sound = np.zeros(length)
    for _ in range(int(rng.integers(25, 70))):
        voice = voices[int(rng.integers(len(voices)))]
        pitch = rng.uniform(0.85, 1.2) if rng.random() < 0.6 else rng.uniform(1.2, 1.8)
        size = int(length * pitch) + 2
        if len(voice) <= size:
            continue
        begin = int(rng.integers(0, len(voice) - size))
        stretch = np.interp(np.arange(length) * pitch, np.arange(size), voice[begin : begin + size])
        sound += np.exp(rng.normal(0, 0.5)) * stretch / (stretch.std() + 1e-3)
    size = int(rng.uniform(0.3, 1.5) * RATE)
    hall = rng.standard_normal(size) * np.exp(-6.9 * np.arange(size) / size)
    sound = fftconvolve(sound, hall / np.sqrt((hall**2).sum()))[:length] + rng.uniform(0, 0.4) * sound
    sound /= sound.std() + 1e-9
    if rng.random() < 0.6:
        clapping = applause(rng, length)
        sound = rng.uniform(0, 1) * sound + rng.uniform(0.2, 1) * clapping / (clapping.std() + 1e-9)
    if rng.random() < 0.5:  # it roars
        roar = shaped_noise(rng, length)
        sound += rng.uniform(0.1, 0.8) * roar / (roar.std() + 1e-9)
    sound *= swelling(rng, length, rng.uniform(0.1, 0.8))
    return sound / (np.abs(sound).max() + 1e-9) * 0.6


def crowds(work, minutes=14, length=10 * RATE):
    """Writes WORK/pcm/train/noise/crowd, from the voices that come from packages."""
    target = work / "pcm/train/noise/crowd__all.s16"
    if target.exists():
        return
    rng = np.random.default_rng(5)
    paths = sorted(p for p in (work / "pcm/train/speech").glob("*.s16") if not p.name.startswith("c-"))
    voices = [np.fromfile(p, "<i2")[: 20 * 60 * RATE].astype(np.float32) / 32768 for p in paths]
    write(target, np.concatenate([crowd(rng, voices, length) for _ in range(minutes * 60 * RATE // length)]))


def noises(work, minutes=40, length=6 * RATE):
    """WORK/pcm/train/noise/made."""
    target = work / "pcm/train/noise/made__all.s16"
    if not target.exists():
        rng = np.random.default_rng(3)
        write(target, np.concatenate([made_noise(rng, length) for _ in range(minutes * 60 * RATE // length)]))


def _make(job):
    work, part = job
    if part == "voices":
        synthetic_voices(work)
    elif part == "noises":
        noises(work)
    else:
        singing(work, part, 170)


def make_all(work):
    """Generates everything above. Singing needs the voices that prepare.py writes."""
    with concurrent.futures.ProcessPoolExecutor(2) as pool:
        list(pool.map(_make, [(work, part) for part in ("voices", "noises", 2, 3, 4)]))
    crowds(work)  # of all voices there are by now
