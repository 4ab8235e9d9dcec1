<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- SPDX-License-Identifier: MIT -->
<!-- What the English texts say of another platform, said of this one: nothing else may be in here. -->
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>LivePage</name>
    <message>
        <source>Screen &amp; System Audio Recording permission is required to hear system audio.</source>
        <translation>Access to the audio server is required to hear system audio.</translation>
    </message>
</context>
<context>
    <name>AppsPage</name>
    <message>
        <source>The source app is the process currently producing audio output (macOS 14.2+), otherwise the frontmost app.</source>
        <translation>The source app is the process currently producing audio output, otherwise the frontmost app.</translation>
    </message>
</context>
<context>
    <name>SettingsPage</name>
    <message>
        <source>Uses Apple's on-device speech model only. No audio or text ever leaves your Mac; Sordin has no networking code.</source>
        <translation>Uses an on-device speech model only. No audio or text ever leaves your computer; Sordin has no networking code.</translation>
    </message>
    <message>
        <source>Screen &amp; System Audio Recording</source>
        <translation>System Audio Recording</translation>
    </message>
</context>
<context>
    <name>OnboardingSheet</name>
    <message>
        <source>Sordin listens to whatever your Mac is playing, spots advertisements, and fades the volume down until the ad is over. It works with any app: music, podcasts, video, radio, browsers.</source>
        <translation>Sordin listens to whatever your computer is playing, spots advertisements, and fades the volume down until the ad is over. It works with any app: music, podcasts, video, radio, browsers.</translation>
    </message>
    <message>
        <source>All analysis runs on this Mac with Core ML and Apple's on-device speech model.</source>
        <translation>All analysis runs on this computer with a small sound model and an on-device speech model.</translation>
    </message>
    <message>
        <source>macOS protects system audio capture behind the Screen &amp; System Audio Recording permission. Sordin asks for it only to hear the audio your Mac plays. It never captures the screen contents; video frames are discarded.</source>
        <translation>Sordin needs access to the audio server, only to hear the audio your computer plays. Your desktop grants it to every app outside a sandbox. It never captures the microphone or the screen.</translation>
    </message>
    <message>
        <source>After enabling Sordin in Privacy &amp; Security → Screen &amp; System Audio Recording, you may need to quit and reopen the app.</source>
        <translation>After allowing Sordin to use the audio server in its sandbox's permissions, you may need to quit and reopen the app.</translation>
    </message>
    <message>
        <source>When a segment looks suspicious, Sordin transcribes a few seconds with Apple's on-device speech recognizer and looks for phrases like “promo code” or “sponsored by”. Recognition is forced on-device, with no server fallback.</source>
        <translation>When a segment looks suspicious, Sordin transcribes a few seconds with an on-device speech recognizer and looks for phrases like “promo code” or “sponsored by”. Recognition only ever runs on-device, with no server fallback.</translation>
    </message>
    <message>
        <source>This build isn't packaged with an Info.plist, so macOS can't show the speech prompt. Detection still works from audio cues; run make-app to build a bundled app with transcription.</source>
        <translation>The speech recognizer or its English model isn't installed, so there is nothing to allow yet. Detection still works from audio cues; install pocketsphinx-en-us and reopen Sordin for transcription.</translation>
    </message>
    <message>
        <source>Use the menu bar icon to pause Sordin or change sensitivity. Test Mode lets you watch detection without any muting.</source>
        <translation>Use the icon in your desktop's panel to pause Sordin or change sensitivity. Test Mode lets you watch detection without any muting.</translation>
    </message>
</context>
</TS>
