# SPDX-License-Identifier: MIT
"""The chain that makes the sound model; see ../train."""
