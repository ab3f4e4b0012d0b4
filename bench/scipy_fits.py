#!/usr/bin/python3
"""The seven maximum-likelihood fits of scipy.stats on the values stats_bench.cpp
uses (a three-parameter Weibull at golden-ratio points), timed at n = 100, 1e5
and 1e6: norm, lognorm, expon and weibull_min, with the location fixed at 0 and
free. Run it beside `pondera_bench --benchmark_filter=Identify` to compare."""
import time

import numpy as np
from scipy import stats


def values(n):
    v = (np.arange(n) + 0.5) * 0.6180339887498949
    u = v - np.floor(v)
    return 3 + 2 * (-np.log1p(-u)) ** (1 / 1.7)


FITS = [
    ("norm", lambda x: stats.norm.fit(x)),
    ("lognorm loc=0", lambda x: stats.lognorm.fit(x, floc=0)),
    ("lognorm", lambda x: stats.lognorm.fit(x)),
    ("expon loc=0", lambda x: stats.expon.fit(x, floc=0)),
    ("expon", lambda x: stats.expon.fit(x)),
    ("weibull_min loc=0", lambda x: stats.weibull_min.fit(x, floc=0)),
    ("weibull_min", lambda x: stats.weibull_min.fit(x)),
]

print(f"scipy {__import__('scipy').__version__}, numpy {np.__version__}")
for n in (100, 100_000, 1_000_000):
    x = values(n)
    total = 0.0
    parts = []
    for name, fit in FITS:
        start = time.perf_counter()
        params = fit(x)
        took = time.perf_counter() - start
        total += took
        parts.append(f"{name} {took * 1e3:.1f} ms {tuple(round(p, 4) for p in params)}")
    print(f"n = {n}: seven fits {total * 1e3:.1f} ms")
    for p in parts:
        print("    " + p)
