# SPDX-License-Identifier: MIT
"""The speech mask: a network that removes music and noise from a voice before transcription."""
