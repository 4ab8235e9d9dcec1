# SPDX-License-Identifier: MIT
"""Generates music like that under commercials: bands (mma), solo instruments and melodies (MIDI), drum grooves (samples
of drum kits), and synthesizers (csound). The result depends only on the seed.

Solo instruments are as frequent as bands, because they are the hardest to hear under a voice. Pieces for the calibration
(split "tune") use a sound font and drum kits that no training piece uses.
"""
import concurrent.futures
import pathlib
import re
import struct
import subprocess
import tempfile
import xml.etree.ElementTree

import numpy as np
from scipy.ndimage import uniform_filter1d
from scipy.signal import butter, sosfilt
from soundmodel.audio import RATE, decode
from soundmodel.prepare import levelled, render_midi, write

LIBRARY = pathlib.Path("/usr/share/mma/lib/stdlib")
SOUND_FONTS = {
    "train": [
        "fluid-soundfont-gm/usr/share/sounds/sf2/FluidR3_GM.sf2",
        "fluid-soundfont-gm/usr/share/sounds/sf2/FluidR3_GM.sf2",
        "musescore-general-soundfont/usr/share/sounds/sf3/MuseScore_General_Full.sf3",
    ],
    "tune": ["timgm6mb-soundfont/usr/share/sounds/sf2/TimGM6mb.sf2"],
}
TUNE_KITS = ("Millo-Drums_v.1", "HardElectro1", "circAfrique v4")

#: Number of files of each kind by split. A file lasts about 90 s.
COUNTS = {
    "train": {"band": 60, "solo": 60, "drums": 45, "synth": 50},
    "tune": {"band": 6, "solo": 8, "drums": 4, "synth": 4},
}
SEEDS = {"train": 1000, "tune": 9000}

CHORDS = {"": [0, 4, 7], "m": [0, 3, 7], "7": [0, 4, 7, 10], "m7": [0, 3, 7, 10], "M7": [0, 4, 7, 11]}
NOTES = dict(zip("C Db D Eb E F Gb G Ab A Bb B".split(), range(12)))
PROGRESSIONS = [
    line.split()
    for line in """C G Am F
Am F C G
Dm7 G7 CM7 CM7
C Am F G
Em C G D
F G Em Am
C7 F7 C7 G7
Am Am Dm E7
CM7 Em7 Dm7 G7
D A Bm G
C C F F
Am Am Am Am
C F C F
Dm Bb F C
C C C C
FM7 Em7 Dm7 CM7
Am G F E7""".splitlines()
]
STRUMMED = ("strum", "pick", "strum", "stab")
#: General MIDI programs (counted from 0) and their playing styles.
INSTRUMENTS = [
    *[(program, STRUMMED) for program in (24, 24, 25, 25, 25, 26, 27, 27, 28, 29, 30, 105, 104, 107)],
    *[(program, ("pick", "stab", "block", "melody")) for program in (0, 0, 1, 2, 3, 4, 5, 6, 7)],
    *[
        (program, ("pick", "melody", "ostinato"))
        for program in (8, 9, 10, 11, 12, 12, 13, 14, 45, 46, 108, 114)
    ],
    *[(program, ("block", "stab", "melody")) for program in (16, 17, 18, 19, 21, 22)],
    *[(program, ("riff", "ostinato")) for program in (32, 33, 33, 34, 35, 36, 37, 38, 39)],
    *[(program, ("block", "ostinato", "melody")) for program in (40, 42, 44, 48, 49, 50, 51)],
    *[(program, ("stab", "melody", "block")) for program in (56, 57, 58, 59, 60, 61, 61, 62, 63)],
    *[(program, ("melody", "ostinato")) for program in (64, 65, 66, 68, 71, 72, 73, 74, 75, 78, 78, 79)],
    *[(program, ("melody", "pick", "ostinato", "stab")) for program in (80, 81, 81, 84, 87)],
    *[(program, ("block",)) for program in (88, 89, 90, 92, 94, 95)],
]


def notes_of(chord):
    """(root, intervals) of a chord's name."""
    root, kind = re.fullmatch(r"([A-G]b?)(.*)", chord).groups()
    return NOTES[root], CHORDS[kind]


class MidiTrack:
    """Notes at times in seconds, written as a MIDI file of one track with 1000 ticks a second."""

    def __init__(self):
        self.events = []

    def note(self, start, length, channel, pitch, velocity):
        pitch, velocity = int(np.clip(pitch, 12, 115)), int(np.clip(velocity, 1, 127))
        self.events.append((start, bytes([0x90 | channel, pitch, velocity])))
        self.events.append((start + max(length, 0.02), bytes([0x80 | channel, pitch, 0])))

    def program(self, start, channel, program):
        self.events.append((start, bytes([0xC0 | channel, program])))

    def data(self):
        track, last = b"\0\xff\x51\x03" + (1_000_000).to_bytes(3, "big"), 0
        for start, event in sorted(self.events, key=lambda e: (e[0], e[1][0])):
            ticks = max(0, round(start * 1000))
            delta, last = ticks - last, ticks
            size = bytes([delta & 0x7F])
            while delta := delta >> 7:
                size = bytes([delta & 0x7F | 0x80]) + size
            track += size + event
        track += b"\0\xff\x2f\0"
        return (
            b"MThd" + struct.pack(">I3H", 6, 0, 1, 1000) + b"MTrk" + struct.pack(">I", len(track)) + track
        )


def play_bar(rng, midi, channel, how, chord, start, beat, center, swing, pattern):
    """One bar of four beats of an instrument; `pattern` holds the choices that every bar repeats."""
    root, intervals = chord
    low = center - 12 + (root - center) % 12
    if how == "strum":
        pitches = [low - 12, low - 5] + [low + i for i in intervals] + [low + 12]
        for step, stroke in enumerate(pattern["strokes"]):
            if stroke:
                order = pitches if stroke > 0 else pitches[::-1][:4]
                at = start + (step + swing * (step % 2)) * beat / 2
                for index, pitch in enumerate(order):
                    velocity = rng.normal(88 if step % 4 == 0 else 72, 6)
                    length = beat * (0.12 if pattern["muted"] else 0.9)
                    midi.note(at + index * pattern["spread"], length, channel, pitch, velocity)
    elif how == "pick":
        pitches = [low] + [low + 12 + i for i in intervals] + [low + 24]
        for step in range(pattern["steps"]):
            at = start + (step + swing * (step % 2)) * beat * 4 / pattern["steps"]
            pitch = pitches[pattern["order"][step] % len(pitches)]
            midi.note(at, beat * pattern["hold"], channel, pitch, rng.normal(82, 8))
    elif how == "stab":
        for step, hit in enumerate(pattern["hits"]):
            if hit:
                for interval in intervals + [12]:
                    at = start + (step + swing * (step % 2)) * beat / 2
                    midi.note(at, beat * 0.3, channel, low + 12 + interval, rng.normal(98, 8))
    elif how == "block":
        for interval in intervals + [12]:
            midi.note(start, beat * 3.95, channel, low + 12 + interval, rng.normal(80, 6))
    elif how == "riff":
        for step, hit in enumerate(pattern["hits"]):
            if hit or step == 0:
                interval = pattern["riff"][step]
                midi.note(start + step * beat / 2, beat * 0.45, channel, low - 12 + interval, rng.normal(95, 8))
    elif how == "ostinato":
        for step in range(pattern["steps"]):
            interval = (intervals + [12])[pattern["order"][step] % 2]
            at = start + step * beat * 4 / pattern["steps"]
            midi.note(at, beat * 0.4, channel, low + 12 + interval, rng.normal(85, 8))
    elif how == "melody":
        at, scale = 0.0, [0, 2, 4, 5, 7, 9, 11] if 4 in intervals else [0, 2, 3, 5, 7, 8, 10]
        while at < 4:
            length = min(rng.choice([0.5, 0.5, 1, 1, 1.5, 2]), 4 - at)
            pattern["degree"] = int(np.clip(pattern["degree"] + rng.integers(-2, 3), -2, 9))
            octave, degree = divmod(pattern["degree"], 7)
            if rng.random() < 0.85:
                pitch = low + 12 + 12 * octave + scale[degree]
                midi.note(start + at * beat, length * beat * 0.92, channel, pitch, rng.normal(90, 8))
            at += length


def pattern_of(rng):
    steps = int(rng.choice([8, 8, 16, 12, 6]))
    return dict(
        strokes=np.where(rng.random(8) < [1, 0.3, 0.7, 0.8, 0.7, 0.6, 0.8, 0.6], [1, -1] * 4, 0),
        muted=rng.random() < 0.15,
        spread=rng.uniform(0.004, 0.03),
        steps=steps,
        order=np.resize(rng.integers(0, 6, int(rng.choice([4, 8, steps]))), steps),
        hold=rng.uniform(0.3, 2.0),
        hits=rng.random(8) < [0.9, 0.25, 0.4, 0.5, 0.4, 0.4, 0.5, 0.4],
        riff=rng.choice([0, 0, 0, 7, 12, 10, 5], 8),
        degree=int(rng.integers(0, 7)),
    )


def solo(rng, seconds=90):
    """MIDI data: a sequence of instruments, each solo or as a duo, with stops and endings."""
    midi, start = MidiTrack(), 0.2
    while start < seconds:
        beat = 60 / rng.uniform(65, 160)
        chords = [notes_of(c) for c in PROGRESSIONS[rng.integers(len(PROGRESSIONS))]]
        key, swing = int(rng.integers(-5, 7)), rng.choice([0, 0, 0.33])
        players = []
        for channel in range(1 if rng.random() < 0.75 else 2):
            program, ways = INSTRUMENTS[rng.integers(len(INSTRUMENTS))]
            midi.program(start - 0.1, channel, program)
            center = 60 + int(rng.choice([-12, 0, 0, 0, 12]))
            players.append((channel, ways[rng.integers(len(ways))], center, pattern_of(rng)))
        claps = rng.random() < 0.12
        for bar in range(int(rng.choice([2, 4, 8, 8]))):
            root, intervals = chords[bar % len(chords)]
            if rng.random() < 0.05:  # a stop: one hit, then nothing
                for interval in intervals:
                    midi.note(start, 0.2, 0, 60 + root + key + interval, 105)
            else:
                for channel, how, center, pattern in players:
                    chord = (root + key) % 12, intervals
                    play_bar(rng, midi, channel, how, chord, start, beat, center, swing, pattern)
            if claps:
                for step in (1, 3):
                    midi.note(start + step * beat, 0.1, 9, 39, rng.normal(100, 6))
            start += 4 * beat
        if rng.random() < 0.5:  # a last chord that dies away
            root, intervals = chords[0]
            for channel, _, center, _ in players:
                for interval in intervals:
                    midi.note(start, 2 * beat, channel, center + root + key + interval, 95)
            start += 2 * beat
        start += rng.choice([0, 0.2, 0.8])
    return midi.data()


def grooves():
    """Grooves of mma's library: {name: variants (intro, end, fill)}."""
    found = {}
    for path in sorted(LIBRARY.glob("*.mma")):
        if "metronome" not in path.name:
            for line in path.read_text("latin-1").splitlines():
                if match := re.match(r"\s*DefGroove\s+(\S+)", line):
                    found.setdefault(match[1], [])
    for name in list(found):
        if match := re.fullmatch(r"(.*?)(Intro|End|Fill)\d*", name):
            del found[name]
            if match[1] in found:
                found[match[1]].append(name)
    return found


PITCHED = "Bass Walk Chord Arpeggio Scale Melody Solo Aria Plectrum"


def band(rng, seconds=90):
    """mma source: a sequence of grooves, some reduced to the drums and some without drums."""
    known = grooves()
    names = sorted(known)
    lines, length, number = [], 0.0, 1
    while length < seconds:
        tempo, bars = rng.integers(70, 155), int(rng.choice([4, 8, 8]))
        name = names[rng.integers(len(names))]
        intros = [v for v in known[name] if "Intro" in v]
        ends = [v for v in known[name] if "End" in v]
        chords = PROGRESSIONS[rng.integers(len(PROGRESSIONS))]
        chance = rng.random()
        parts = f"AllTracks {PITCHED} Off" if chance < 0.2 else "AllTracks Drum Off" if chance < 0.4 else ""
        lines += [f"Tempo {tempo}", f"Transpose {rng.integers(-5, 7)}"]
        lines += [f"Groove {intros[0] if intros and rng.random() < 0.4 else name}", parts]
        for bar in range(bars):
            if bar == 2 or bar == bars - 1:
                lines += [f"Groove {ends[0] if ends and bar == bars - 1 else name}", parts]
            lines.append(f"{number} {chords[bar % len(chords)]}")
            number += 1
        length += bars * 240 / tempo
    return "\n".join(lines) + "\n"


def compiled(source):
    """MIDI data that mma compiles from a source; empty if mma rejects the source."""
    with tempfile.TemporaryDirectory() as scratch:
        path = pathlib.Path(scratch) / "band.mma"
        path.write_text(source)
        subprocess.run(["mma", "-w", str(path)], capture_output=True, check=False)
        midi = path.with_suffix(".mid")
        return midi.read_bytes() if midi.exists() else b""


def kits(unpacked, split):
    """{kit: {part: [samples of its strokes]}} of the drum kits of a split."""
    roles = {
        "kick": r"kick|bass ?drum|\bbd|\bbass\b",
        "snare": r"snare|\bsd|rim|stick",
        "open": r"open",
        "hat": r"hat|\bhh",
        "clap": r"clap|hand|snap",
        "tom": r"tom|conga|bongo|djembe|dun|drum",
        "cymbal": r"crash|ride|cym|splash",
        "other": r".",
    }
    found = {}
    for path in sorted((unpacked / "hydrogen-drumkits").rglob("drumkit.xml")):
        name = path.parent.name
        if (name in TUNE_KITS) != (split == "tune"):
            continue
        parts = {}
        text = re.sub(r'\sxmlns="[^"]*"', "", path.read_text("utf-8", "replace"))
        for instrument in xml.etree.ElementTree.fromstring(text).iter("instrument"):
            files = [f.text for f in instrument.iter("filename") if f.text]
            label = (instrument.findtext("name") or "").lower()
            role = next(r for r, pattern in roles.items() if re.search(pattern, label or " "))
            for file in files[:: max(1, len(files) // 3)]:
                if (path.parent / file).exists():
                    samples = decode(path.parent / file, 2.5)
                    if len(samples) and np.abs(samples).max() > 1e-3:
                        parts.setdefault(role, []).append(samples / np.abs(samples).max())
        if parts:
            found[name] = parts
    return found


#: Chance of a stroke on each sixteenth of a bar.
RHYTHMS = [
    dict(kick="9...1...9..3....", snare="....9.......9..1", hat="9.9.9.9.9.9.9.9."),  # rock
    dict(  # house
        kick="9...9...9...9...",
        clap="....9.......9...",
        open="..9...9...9...9.",
        hat="3.3.3.3.3.3.3.3.",
    ),
    dict(kick="9..3..9...5.....", snare="....9..2.2..9...", hat="9.9.9.9.9.9.9.99"),  # hip hop
    dict(kick="9.........9.....", snare="........9.......", hat="9999999999999999"),  # trap
    dict(kick="9..9..9.9..9..9.", snare="9..9..9...9..9..", hat="9.9.9.9.9.9.9.9."),  # bossa
    dict(kick="9.9.......99....", snare="....9..5.5..9..5", hat="9.9.9.9.9.9.9.9."),  # breaks
    dict(kick="9...............", tom="9..95.9.9..95.9.", clap="....9.......9..."),  # percussion
    dict(other="9.5.7.5.9.5.7.5.", tom="9.....5.9..5....", hat="..9...9...9...9."),  # shakers
    dict(clap="9...9...9...9...", kick="9.......9......."),  # stomps and claps
    dict(clap="..9...9...9...9.", snare="1..1..1..1..1..1"),
    dict(kick="9.......9.......", snare="....9.......9...", cymbal="9..9.99..9.99..9"),  # swing
    dict(kick="9...9...9...9...", tom="..35..35..35..55", hat=".5.5.5.5.5.5.5.5"),  # techno
]


def drums(rng, kit, seconds=90):
    """A sequence of drum grooves, each of one kit, with fills, stops and changes of tempo."""
    sound = np.zeros(int((seconds + 12) * RATE))
    names, start = sorted(kit), 0.0

    def hit(at, role, gain):
        strokes = parts.get(role) or parts.get("other") or next(iter(parts.values()))
        stroke = strokes[rng.integers(len(strokes))]
        begin = int(at * RATE)
        stroke = stroke[: max(0, len(sound) - begin)]
        sound[begin : begin + len(stroke)] += gain * levels[role] * stroke

    while start < seconds:
        parts = kit[names[rng.integers(len(names))]]
        rhythm = RHYTHMS[rng.integers(len(RHYTHMS))]
        soft = {"hat": 0.5, "cymbal": 0.5}
        levels = {r: np.exp(rng.normal(0, 0.4)) * soft.get(r, 1) for r in (*rhythm, "tom", "cymbal")}
        sixteenth, swing = 15 / rng.uniform(70, 165), rng.choice([0, 0, 0.3])
        bar = {
            role: rng.random(16) < [0 if c == "." else int(c) / 9 for c in line]
            for role, line in rhythm.items()
        }
        for index in range(int(rng.choice([4, 8, 8]))):
            fill = index % 4 == 3 and rng.random() < 0.5
            for step in range(16):
                at = start + (step + swing * (step % 2)) * sixteenth + rng.normal(0, 0.003)
                if fill and step >= 12:
                    hit(max(0, at), "tom", rng.uniform(0.6, 1))
                    continue
                for role, strokes in bar.items():
                    if strokes[step]:
                        hit(max(0, at), role, rng.uniform(0.7, 1))
            if index == 0 and rng.random() < 0.4:
                hit(start, "cymbal", 1)
            start += 16 * sixteenth
        start += rng.choice([0, 0, 0.5])
    return sound[: int(start * RATE)]


ORCHESTRA = """sr = 16000
ksmps = 32
nchnls = 1
0dbfs = 1
giSine ftgen 1, 0, 8192, 10, 1
giStrike ftgen 2, 0, 256, 7, 0, 20, 1, 40, 0.3, 196, 0
instr 1 ; several detuned saws through a filter that opens or closes
  k1 linseg p6, p3, p7
  a1 vco2 p5, p4
  a2 vco2 p5, p4 * 1.006
  a3 vco2 p5, p4 * 0.995
  a4 moogladder (a1 + a2 + a3) / 3, k1, 0.3
  k2 linsegr 0, 0.01, 1, p3, 0.7, 0.08, 0
  out a4 * k2
endin
instr 2 ; a square with a fast closing filter: bass and acid lines
  k1 expseg p6, p3, 150
  a1 vco2 p5, p4, 2, 0.4
  a2 moogladder a1, k1, 0.6
  k2 linsegr 0, 0.004, 1, p3, 0.5, 0.03, 0
  out a2 * k2
endin
instr 3 ; bells and electric pianos by frequency modulation
  k1 expon p7, p3, 0.1
  a1 foscili p5, p4, 1, p6 / 500, k1 / 500, 1
  k2 expon 1, p3, 0.02
  out a1 * k2
endin
instr 4 ; plucked string
  a1 pluck p5, p4, p4, 0, 1
  k2 linsegr 1, p3, 0.5, 0.1, 0
  out a1 * k2
endin
instr 5 ; marimba
  a1 marimba p4, p5, 0.5, 0.56, 2, 6, 0.02, 1, 0.1
  out a1
endin
instr 6 ; flute or whistle: a sine with breath
  k3 vibr p4 * 0.008, 5.3, 1
  a1 oscili p5, p4 + k3, 1
  a2 oscili p5 * 0.15, 2 * p4 + 2 * k3, 1
  a3 rand p5 * 0.2
  a4 reson a3, p4, 200, 2
  k2 linsegr 0, 0.06, 1, p3, 0.8, 0.1, 0
  out (a1 + a2 + a4 * 0.1) * k2
endin
instr 7 ; slow pad
  a1 vco2 p5, p4, 4, 0.5
  a2 vco2 p5, p4 * 1.004, 2, 0.3
  k1 linseg p6, p3 / 2, p7, p3 / 2, p6
  a3 butterlp (a1 + a2) / 2, k1
  k2 linsegr 0, 0.4, 1, p3, 1, 0.5, 0
  out a3 * k2
endin
instr 8 ; bowed string
  k3 vibr 0.006, 5, 1
  a1 wgbow p5 * 0.6, p4, 3, 0.13, 5, 0.01, 1, 40
  k2 linsegr 0, 0.08, 1, p3, 1, 0.1, 0
  out a1 * k2
endin
instr 9 ; brass: a pulse whose filter follows its loudness
  k2 linsegr 0, 0.06, 1, p3, 0.8, 0.08, 0
  a1 vco2 p5, p4, 0
  a2 butterlp a1, 300 + p6 * k2
  out a2 * k2
endin
instr 10 ; kick
  k1 expseg 220, 0.06, 55, 0.3, 40
  k2 expseg 1, 0.3, 0.01
  a1 oscili p5, k1, 1
  out a1 * k2
endin
instr 11 ; snare, hat or clap: filtered noise
  a1 rand p5
  a2 butterbp a1, p6, p7
  k2 expseg 1, p3, 0.01
  out a2 * k2
endin
instr 12 ; organ
  a1 oscili p5, p4, 1
  a2 oscili p5 * 0.7, 2 * p4, 1
  a3 oscili p5 * 0.5, 3 * p4, 1
  a4 oscili p5 * 0.3, 4 * p4, 1
  k2 linsegr 0, 0.01, 1, p3, 1, 0.03, 0
  out (a1 + a2 + a3 + a4) * k2 * 0.6
endin
"""
LINES = (1, 1, 2, 3, 3, 4, 5, 6, 8, 9, 12)
CHORDAL = (1, 1, 3, 4, 7, 7, 7, 9, 12)


def score(rng, seconds=90):
    """csound score: arpeggios, bass lines, pads and machine drums, together or solo."""
    lines, start = [], 0.1
    hertz = lambda note: 440 * 2 ** ((note - 69) / 12)
    while start < seconds:
        beat = 60 / rng.uniform(68, 150)
        chords = [notes_of(c) for c in PROGRESSIONS[rng.integers(len(PROGRESSIONS))]]
        key = int(rng.integers(-5, 7))
        layers = rng.random(4) < [0.6, 0.5, 0.4, 0.4]
        if rng.random() < 0.5 or not layers.any():  # one alone
            layers = np.arange(4) == rng.integers(0, 4)
        lead, pad = rng.choice(LINES), rng.choice(CHORDAL)
        dark, bright = np.exp(rng.uniform(np.log([250, 900]), np.log([2000, 6500])))
        pattern, rhythm = pattern_of(rng), RHYTHMS[rng.integers(len(RHYTHMS))]
        octave = 12 * int(rng.integers(0, 3))
        for bar in range(int(rng.choice([4, 4, 8]))):
            root, intervals = chords[bar % len(chords)]
            low = 48 + (root + key) % 12

            def play(instrument, at, length, note, gain):
                values = f"{start + at:.4f} {length:.4f} {hertz(note):.2f} {gain:.3f} {dark:.0f} {bright:.0f}"
                lines.append(f"i{instrument} {values}")

            if layers[0]:
                step = 4 * beat / pattern["steps"]
                ladder = intervals + [12, 12 + intervals[1]]
                for index in range(pattern["steps"]):
                    note = low + octave + ladder[pattern["order"][index] % len(ladder)]
                    play(lead, index * step, max(step * 0.9, 0.12), note, rng.uniform(0.15, 0.25))
            if layers[1]:
                for interval in intervals:
                    play(pad, 0, 4 * beat, low + 12 + interval, 0.12)
            if layers[2]:
                for index in range(8):
                    if pattern["hits"][index]:
                        play(2, index * beat / 2, beat * 0.4, low - 12 + pattern["riff"][index], 0.3)
            if layers[3]:
                for role, line in rhythm.items():
                    for index, chance in enumerate(line):
                        if chance != "." and rng.random() < int(chance) / 9:
                            at = start + index * beat / 4
                            if role in ("kick", "tom"):
                                lines.append(f"i10 {at:.4f} 0.3 0 {0.5 if role == 'kick' else 0.3}")
                            else:
                                length = dict(hat=0.05, clap=0.12, snare=0.18).get(role, 0.25)
                                center = dict(hat=6500, clap=1500, snare=2200).get(role, 5500)
                                lines.append(f"i11 {at:.4f} {length} 0 0.35 {center} {center * 0.6:.0f}")
            start += 4 * beat
        start += rng.choice([0, 0, 0.6])
    return "\n".join(lines) + "\ne\n"


def synthesized(rng):
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch)
        (folder / "bed.orc").write_text(ORCHESTRA)
        (folder / "bed.sco").write_text(score(rng))
        command = ["csound", "-d", "-m0", "-W", "-o", "bed.wav", "bed.orc", "bed.sco"]
        subprocess.run(command, cwd=folder, capture_output=True, check=False, timeout=300)
        path = folder / "bed.wav"
        return decode(path) if path.exists() else np.zeros(0, np.float32)


def rendered(midi, font):
    with tempfile.NamedTemporaryFile(suffix=".mid") as file:
        pathlib.Path(file.name).write_bytes(midi)
        return render_midi(file.name, font)


def even(samples):
    """Concatenates the pieces of one file at nearly equal levels."""
    power = uniform_filter1d(np.asarray(samples, np.float64) ** 2, 4 * RATE)
    return samples * (power / power.max() + 1e-3) ** -0.4


def colored(rng, samples):
    """Equalization and compression of a mix."""
    if rng.random() < 0.5:
        low, high = np.exp(rng.uniform(np.log([40, 3000]), np.log([400, 7500])))
        samples = sosfilt(butter(1, [low, high], "bandpass", fs=RATE, output="sos"), samples)
    if rng.random() < 0.5:
        drive = rng.uniform(1, 4)
        samples = np.tanh(drive * samples / (np.abs(samples).max() + 1e-9))
    return samples


def bed(job):
    """WORK/pcm/SPLIT/music/bed-KIND__NUMBER.s16."""
    work, split, kind, number = job
    target = work / "pcm" / split / "music" / f"bed-{kind}__{number:03d}.s16"
    if target.exists():
        return
    target.parent.mkdir(parents=True, exist_ok=True)
    rng = np.random.default_rng([SEEDS[split], number, len(kind), ord(kind[0])])
    fonts = SOUND_FONTS[split]
    for _ in range(5):
        font = work / "unpacked" / fonts[rng.integers(len(fonts))]
        if kind == "band":
            midi = compiled(band(rng))
            samples = rendered(midi, font) if midi else np.zeros(0)
        elif kind == "solo":
            samples = rendered(solo(rng), font)
        elif kind == "drums":
            samples = drums(rng, kits(work / "unpacked", split))
        else:
            samples = synthesized(rng)
        samples = np.nan_to_num(samples)
        if len(samples) > 20 * RATE and np.abs(samples).max() > 1e-3:
            samples = colored(rng, even(samples))
            write(target, levelled(0.7 * samples / np.abs(samples).max()))
            return
    raise RuntimeError(f"no music was made for {target.name}: are mma, fluidsynth and csound installed?")


def make_beds(work):
    jobs = [
        (work, split, kind, number)
        for split, counts in COUNTS.items()
        for kind, count in counts.items()
        for number in range(count)
    ]
    # Alternate between the kinds, so that an interrupted run leaves a usable mixture.
    jobs.sort(key=lambda job: job[3])
    with concurrent.futures.ProcessPoolExecutor(2) as pool:
        for _ in pool.map(bed, jobs):
            pass


if __name__ == "__main__":
    import sys

    make_beds(pathlib.Path(sys.argv[1]))
