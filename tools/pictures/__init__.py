# SPDX-License-Identifier: MIT
"""The schematic pictures of the sensor models, and how they are drawn."""
