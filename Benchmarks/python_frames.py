#!/usr/bin/env python3
"""Frames of 1080p by index, as the benchmark Render takes them: each is given back when as many newer ones are there.

Prints a line of JSON: gigabytes a second, of the median of rounds, by how many frames are in flight.
"""

import json
import statistics
import time

import synthex

ROUNDS, FRAMES = 30, 24


def gigabytes_a_second(clip, in_flight):
    flight = [None] * in_flight
    times = []
    for first in range(0, (ROUNDS + 1) * FRAMES, FRAMES):
        start = time.perf_counter()
        for index in range(first, first + FRAMES):
            flight[index % in_flight] = None  # the oldest goes back first
            flight[index % in_flight] = clip[index % len(clip)]
        times.append((time.perf_counter() - start) / FRAMES)
    return clip[0].nbytes / statistics.median(times[1:]) / 1e9  # the first one fills the pool


fields = synthex.Clip(rate=25, frames=500, fields="upper", upper=(0.9, 0.3, 0.1))
print(json.dumps({count: gigabytes_a_second(fields, count) for count in (1, 8)}))
