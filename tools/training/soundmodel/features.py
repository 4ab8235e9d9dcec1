# SPDX-License-Identifier: MIT
"""Converts the decoded sources into banks of log-mel magnitudes, in three variants: unchanged, at another speed in a room,
and through a lossy codec."""
import concurrent.futures
import pathlib

import numpy as np
import torch
from scipy.ndimage import maximum_filter1d, uniform_filter1d
from scipy.signal import butter, oaconvolve, sosfilt
from soundmodel.audio import HOP, RATE, WINDOW, mel_magnitudes, through_codec

VARIANTS = ("plain", "room", "codec")
MINUTES = {"speech": 40, "music": 45, "song": 120, "noise": 60}  # of a group at most
MORE_MINUTES = {"queen": 110, "nsh-ru": 60, "bed-band": 70, "bed-solo": 70, "bed-drums": 60, "bed-synth": 60}
CODECS = [
    ("libmp3lame", 16000, 16),
    ("libmp3lame", 16000, 24),
    ("libmp3lame", 16000, 40),
    ("libmp3lame", 22050, 32),
    ("libmp3lame", 32000, 64),
    ("libopus", 48000, 8),
    ("libopus", 48000, 12),
    ("libopus", 48000, 16),
    ("libopus", 48000, 24),
    ("libopus", 48000, 48),
    ("libvorbis", 16000, 24),
    ("libvorbis", 22050, 40),
    ("aac", 16000, 24),
    ("aac", 22050, 32),
    ("aac", 32000, 64),
    ("g722", 16000, 0),
    ("pcm_mulaw", 8000, 0),
    ("libgsm", 8000, 0),
]
#: Telephone codecs are more frequent for voices: the network mistakes a voice after GSM for music otherwise.
VOICE_CODECS = [*CODECS, *[("libgsm", 8000, 0)] * 4, *[("pcm_mulaw", 8000, 0)] * 2]
MIXED, MIXED_SECONDS = 120, 24  # scenes of each of the jobs of mixed_jobs(), and their length
CODED, CODED_VOICES = 0.35, 0.5  # share of the minutes with the codec variant, which takes the longest
PAUSE = 160  # frames: shorter pauses of a voice still count as speech
ENERGY_FLOOR = 1e-6  # below the magnitudes of the quietest 16-bit sound


def read(path):
    return np.fromfile(path, "<i2").astype(np.float32) / 32768


def room(rng, samples):
    """Changes the speed, convolves with decaying noise as the response of a room, and clips like a cheap amplifier."""
    factor = rng.uniform(0.86, 1.17)
    samples = np.interp(np.arange(0, len(samples) - 1, factor), np.arange(len(samples)), samples)
    if rng.random() < 0.7:
        size = int(rng.uniform(0.08, 0.9) * RATE)
        answer = rng.standard_normal(size) * np.exp(-6.9 * np.arange(size) / size)
        answer = sosfilt(butter(1, rng.uniform(2500, 7000), fs=RATE, output="sos"), answer)
        answer /= np.sqrt((answer**2).sum())
        samples = samples + rng.uniform(0.05, 0.7) * oaconvolve(samples, answer)[: len(samples)]
    if rng.random() < 0.4:
        drive = rng.uniform(1.5, 6)
        samples = np.tanh(drive * samples / (np.abs(samples).max() + 1e-9)) / np.tanh(drive)
    return samples


def frame_power(samples):
    sums = np.concatenate([[0.0], np.cumsum(np.asarray(samples, np.float64) ** 2)])
    starts = np.arange(max(0, 1 + (len(samples) - WINDOW) // HOP)) * HOP
    return (sums[starts + WINDOW] - sums[starts]) / WINDOW


def activity(power, kind):
    """Mask of the frames whose level is near the loudest of the surrounding four seconds."""
    level = 10 * np.log10(power + 1e-10)
    depth = {"speech": 30, "song": 30, "music": 42, "noise": 60}[kind]
    peak = maximum_filter1d(level, 401)
    active = level > np.maximum(peak - depth, -66)
    return uniform_filter1d(active.astype(np.float32), 25) > 0.2


def without_pauses(active):
    """Activity with pauses shorter than PAUSE filled."""
    index = np.arange(len(active))
    last = np.maximum.accumulate(np.where(active, index, -10_000))
    following = np.minimum.accumulate(np.where(active, index, 10 * len(active))[::-1])[::-1]
    return active | (following - last < PAUSE)


def features(samples, kind):
    """(float16 log magnitudes of samples normalized to an RMS of 0.1 where active, activity); None without enough activity."""
    power = frame_power(samples)
    active = activity(power, kind)
    if len(power) < 300 or active.mean() < 0.02:
        return None
    level = np.sqrt(power[active].mean())
    mels = mel_magnitudes(samples) * (0.1 / level)
    return np.log(mels + ENERGY_FLOOR).astype(np.float16), active


def made_here(group):
    """Whether a group is generated or from the collections, of which there is little."""
    return group.startswith(("c-", "bed-"))


def save_bank(target, pieces):
    """Writes the (log magnitudes, activity) of a group, without those that are None; no file if none is left."""
    pieces = [piece for piece in pieces if piece]
    if pieces:
        mels, active = zip(*pieces)
        part = target.with_name(target.name + ".part.npz")
        np.savez(part, mels=np.concatenate(mels), active=np.concatenate(active), lengths=[len(a) for a in active])
        part.rename(target)


def bank_of(job):
    """Writes the bank of one group, FOLDER/train-KIND-GROUP.npz, as concatenated pieces. Takes only `share` of the minutes of
    groups from packages. Every group has all variants; otherwise the network would learn the noise of codecs as music."""
    folder, kind, group, paths, share = job
    target = folder / f"train-{kind}-{group}.npz"
    if target.exists():
        return
    torch.set_num_threads(1)
    seed = int.from_bytes(f"{kind}{group}".encode(), "big") % 2**32
    rng = np.random.default_rng(seed)
    minutes = MORE_MINUTES.get(group, MINUTES[kind]) * (1 if made_here(group) else share)
    budget = minutes * 60 * RATE / max(1, len(paths))
    pieces = []
    for path in paths:
        whole = read(path)[: int(max(budget, 20 * RATE))]
        for variant in VARIANTS:
            for begin in range(0, len(whole) - 3 * RATE, 60 * RATE):
                samples = whole[begin : begin + 60 * RATE]
                if variant == "room":
                    samples = room(rng, samples)
                elif variant == "codec":
                    if rng.random() > (CODED_VOICES if kind == "speech" else CODED):
                        continue
                    codecs = VOICE_CODECS if kind == "speech" else CODECS
                    samples = through_codec(samples, *codecs[rng.integers(len(codecs))])
                pieces.append(features(np.nan_to_num(samples), kind))
    save_bank(target, pieces)


TELEPHONES = [("libgsm", 8000, 0), ("libgsm", 8000, 0), ("pcm_mulaw", 8000, 0)]
AFTER_TELEPHONES = [
    ("libopus", 48000, 24),
    ("libmp3lame", 32000, 64),
    ("libopus", 48000, 16),
    ("libmp3lame", 22050, 32),
    ("aac", 22050, 32),
]
CODED_MINUTES = {"speech": 3, "music": 1.5}
STRETCH = 30 * RATE


def coded_bank(job):
    """Writes FOLDER/train-KIND-GROUP-coded.npz: some minutes of a group, spread over its files, through codecs; and
    train-speech-GROUP-gsm.npz: two minutes through a telephone codec, usually followed by a broadcaster's codec. Without
    these, the network mistakes a voice after GSM for music."""
    folder, kind, group, paths, suffix = job
    target = folder / f"train-{kind}-{group}-{suffix}.npz"
    if target.exists():
        return
    torch.set_num_threads(1)
    rng = np.random.default_rng(int.from_bytes(f"{suffix}{kind}{group}".encode(), "big") % 2**32)
    if suffix == "gsm":
        sounds, count = [np.concatenate([read(path) for path in paths[:8]])], 4
    else:
        sounds = [read(paths[i]) for i in rng.permutation(len(paths))[:6]]
        count = max(1, int(CODED_MINUTES[kind] * 60 * RATE / len(sounds)) // STRETCH)
    pieces = []
    for sound in sounds:
        for _ in range(count):
            begin = int(rng.integers(0, max(1, len(sound) - STRETCH)))
            samples = sound[begin : begin + STRETCH]
            if len(samples) < 3 * RATE:
                continue
            if suffix == "gsm":
                if rng.random() < 0.4:
                    samples = room(rng, samples)
                samples = through_codec(samples, *TELEPHONES[rng.integers(len(TELEPHONES))])
                if rng.random() < 0.6:
                    codec = AFTER_TELEPHONES[rng.integers(len(AFTER_TELEPHONES))]
                    samples = through_codec(samples, *codec)
            else:
                codec = CODECS[rng.integers(len(CODECS))]
                if kind == "speech" and rng.random() < 0.4:
                    codec = [*TELEPHONES, ("libmp3lame", 16000, 16)][rng.integers(len(TELEPHONES) + 1)]
                if rng.random() < 0.3:
                    samples = room(rng, samples)
                samples = through_codec(samples, *codec)
            pieces.append(features(np.nan_to_num(samples), kind))
    save_bank(target, pieces)


def coded_jobs(folder, groups):
    for (kind, group), paths in groups.items():
        if kind in CODED_MINUTES:
            yield folder, kind, group, paths, "coded"
        if kind == "speech":
            yield folder, kind, group, paths, "gsm"


def loudness(samples, kind):
    """(RMS of the active frames, activity by frame)."""
    power = frame_power(samples)
    active = activity(power, kind)
    return (float(np.sqrt(power[active].mean())) if active.any() else 0.0), active


def ducked(rng, bed, speaks, frames):
    """Applies side-chain compression to a bed: its level rises in the pauses of the voice."""
    lift = 10 ** (rng.uniform(3, 12) / 20)
    attack, release = rng.uniform(0.02, 0.15), rng.uniform(0.15, 1.0)
    gain, target = np.empty(frames), np.where(speaks[:frames], 1.0, lift)
    now = target[0]
    for index, wanted in enumerate(target):
        now += (wanted - now) * min(1, HOP / RATE / (attack if wanted < now else release))
        gain[index] = now
    return bed * np.interp(np.arange(len(bed)) / HOP, np.arange(frames), gain)


def spoken_over(rng, voice):
    """Applies random equalization, a room and the band of a telephone to a voice."""
    if rng.random() < 0.5:
        curve = np.interp(np.arange(65), np.linspace(0, 64, 7), rng.normal(0, 5, 7))
        taps = np.fft.irfft(10 ** (curve / 20))
        voice = oaconvolve(voice, np.roll(taps, 64) * np.hanning(128))[: len(voice)]
    if rng.random() < 0.3:
        voice = np.resize(room(rng, voice), len(voice))
    if rng.random() < 0.15:
        low, high = rng.uniform(150, 400), rng.uniform(2800, 3800)
        voice = sosfilt(butter(3, [low, high], "bandpass", fs=RATE, output="sos"), voice)
    return voice


def mixed_scenes(job):
    """Writes FOLDER/train-mixed-NAME.npz: voices over music, mixed as sound, distorted, and through codecs, which a sum of
    magnitudes cannot reproduce. As many scenes have a voice alone or music alone with the same processing; otherwise the
    network would learn its artifacts as music. Activity has two columns: speech and music."""
    folder, name, seed, count, voices, music = job
    target = folder / f"train-mixed-{name}.npz"
    if target.exists():
        return
    torch.set_num_threads(1)
    rng = np.random.default_rng(seed)
    length = MIXED_SECONDS * RATE

    def weights(paths):
        weight = np.array([min(p.stat().st_size, 600 * 2 * RATE) for p in paths]) ** 0.6
        return weight / weight.sum()

    chances = {"speech": weights(voices), "music": weights(music)}

    def stretch(paths, kind):
        for _ in range(50):
            whole = np.memmap(paths[rng.choice(len(paths), p=chances[kind])], "<i2", "r")
            begin = int(rng.integers(0, max(1, len(whole) - length)))
            samples = np.resize(np.asarray(whole[begin : begin + length]), length).astype(np.float32) / 32768
            if kind == "speech":
                samples = spoken_over(rng, samples)
            level, active = loudness(samples, kind)
            if level > 1e-3 and active.mean() > 0.4:
                break
        return samples / (level + 1e-9), active

    mels, active, lengths = [], [], []
    for _ in range(count):
        (voice, speaks), (bed, plays) = stretch(voices, "speech"), stretch(music, "music")
        below = rng.uniform(-3, 20)
        kind = rng.choice(["both", "voice", "music"], p=[0.5, 0.3, 0.2])
        if kind == "both" and rng.random() < 0.5:
            bed = ducked(rng, bed, speaks, len(speaks))
        mix = (kind != "music") * voice + (kind != "voice") * bed * 10 ** (-below / 20)
        if rng.random() < 0.8:
            drive = rng.uniform(1, 5)
            mix = np.tanh(drive * mix / np.abs(mix).max()) / np.tanh(drive)
        if rng.random() < 0.6:
            mix = through_codec(mix / np.abs(mix).max() * 0.7, *CODECS[rng.integers(len(CODECS))])
        made = features(np.nan_to_num(mix), "music")
        if made:
            speaks = without_pauses(speaks) * float(kind != "music")
            plays = without_pauses(plays) * (1 - speaks * (1 - audible(below))) * (kind != "voice")
            mels.append(made[0])
            active.append(np.stack([speaks, plays], 1)[: len(made[0])].astype(np.float16))
            lengths.append(len(made[0]))
    part = target.with_name(target.name + ".part.npz")
    np.savez(part, mels=np.concatenate(mels), active=np.concatenate(active), lengths=lengths)
    part.rename(target)


def audible(below):
    """Label weight, 0 to 1, of music that is `below` dB below a voice: inaudible music counts as none."""
    return np.clip((25 - below) / 9, 0, 1)


def mixed_jobs(work, folder, count):
    """Jobs of mixed_scenes(). Recordings of the collections have separate jobs, so that they can be left out."""
    files = {kind: sorted((work / "pcm/train" / kind).glob("*.s16")) for kind in ("speech", "music")}
    own = {kind: [p for p in paths if not p.name.startswith("c-")] for kind, paths in files.items()}
    beds = [p for p in own["music"] if p.name.startswith("bed-")]
    recorded = [p for p in own["music"] if not p.name.startswith("bed-")]
    jobs = [(folder, "own-0", 40, count, own["speech"], recorded)]
    jobs += [(folder, f"own-{part}", 40 + part, count, own["speech"], beds) for part in (1, 2)]
    further = {kind: [p for p in paths if p.name.startswith("c-")] for kind, paths in files.items()}
    if further["speech"] and further["music"]:
        jobs.append((folder, "c-voices", 43, count, further["speech"], beds + further["music"]))
        jobs.append((folder, "c-music", 44, count, own["speech"], further["music"]))
    return jobs


def banks_folder(work, share):
    return work / ("banks" if share == 1 else f"banks-{share:g}")


def make_banks(work, share=1.0):
    """Writes all banks of the training recordings to banks_folder(). A share below 1 is for trials."""
    folder = banks_folder(work, share)
    folder.mkdir(exist_ok=True)
    groups = {}
    for path in sorted((work / "pcm/train").glob("*/*.s16")):
        kind = path.parent.name
        if kind in MINUTES:
            groups.setdefault((kind, path.name.split("__")[0]), []).append(path)
    jobs = [(folder, kind, group, paths, share) for (kind, group), paths in groups.items()]
    jobs.sort(key=lambda job: (not made_here(job[2]), -sum(p.stat().st_size for p in job[3])))
    with concurrent.futures.ProcessPoolExecutor(2) as pool:
        done = [pool.submit(bank_of, job) for job in jobs]
        done += [pool.submit(coded_bank, job) for job in coded_jobs(folder, groups)]
        done += [pool.submit(mixed_scenes, job) for job in mixed_jobs(work, folder, MIXED)]
        for one in done:
            one.result()


if __name__ == "__main__":
    import sys

    make_banks(pathlib.Path(sys.argv[1]), float(sys.argv[2]) if len(sys.argv) > 2 else 1.0)
