#!/usr/bin/python3
"""Draws the sample picture: hills at dusk, as a CMYK JPEG with inverted inks.

usage: make_sample_picture.py picture.jpg

Needs python3-numpy and python3-pil. The same seed gives the same drawing.
"""

import sys

import numpy as np
from PIL import Image

WIDTH, HEIGHT = 900, 600
random = np.random.default_rng(1234567)


def noise(length, roughness):
    """A curve of summed waves, -1 to 1."""
    x = np.linspace(0, 1, length)
    curve = np.zeros(length)
    for octave in range(1, 8):
        phase, amount = random.uniform(0, 2 * np.pi), roughness ** octave
        curve += amount * np.sin(2 * np.pi * x * 2 ** (octave - 1) * random.uniform(0.8, 1.2) + phase)
    return curve / np.abs(curve).max()


def main():
    y, x = np.mgrid[0:HEIGHT, 0:WIDTH] / HEIGHT
    cmyk = np.zeros((HEIGHT, WIDTH, 4))
    dusk = np.clip(y / 0.7, 0, 1)
    cmyk[..., 0] = 0.85 - 0.85 * dusk ** 0.8
    cmyk[..., 1] = 0.55 - 0.15 * dusk
    cmyk[..., 2] = 0.05 + 0.55 * dusk ** 2
    cmyk[..., 3] = 0.25 * (1 - dusk) ** 2
    sun = np.hypot(x - 1.02, y - 0.46)
    glow = np.exp(-(sun / 0.22) ** 2)
    cmyk[..., :2] *= (1 - 0.7 * glow)[..., None]
    cmyk[sun < 0.055] = [0, 0.06, 0.55, 0]
    for hill in range(6):
        far = hill / 5
        ridge = 0.5 + 0.09 * hill + 0.05 * noise(WIDTH, 0.55 + 0.05 * far)
        below = y > ridge[None, :]
        depth = np.clip((y - ridge[None, :]) * 3, 0, 1)
        ink = np.array([0.55 + 0.25 * far, 0.45 + 0.1 * far, 0.35 + 0.4 * far, 0.08 + 0.5 * far])
        shade = (1 - 0.35 * depth)[..., None]
        cmyk = np.where(below[..., None], ink * shade, cmyk)
    cmyk += random.normal(0, 0.008, cmyk.shape)
    bytes_ = (np.clip(cmyk, 0, 1) * 255).round().astype(np.uint8)
    Image.fromarray(bytes_, "CMYK").save(sys.argv[1], quality=80, subsampling=2)


main()
