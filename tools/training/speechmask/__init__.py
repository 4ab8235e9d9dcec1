# SPDX-License-Identifier: MIT
"""The speech mask: a network that takes music and noise off a voice before it is transcribed."""
