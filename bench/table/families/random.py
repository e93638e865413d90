"""Random samples into a caller's buffer, 1e6 at a time (8 MB, beyond the caches' reach of a core), against NumPy's
default_rng (PCG64). The laws and parameters of the library's random benchmark: the
standard normal, the uniform on [0, 1), gamma shapes 2.5 and 0.5 (scale 1), binomial
with 20 and 1000 trials (p = 0.3). The two sides use different generators, so the
samples differ; the work is one law's samples either way. Each of our calls also seeds
its generator afresh (a few microseconds).
"""
import numpy as np

from runner import VP, Row, c_double, c_int, export, ptr, rng

FAMILY = "random"


def rows():
    normrnd = export("normrnd", c_int, [VP, c_int, c_double, c_double])
    unifrnd = export("unifrnd", c_int, [VP, c_int, c_double, c_double])
    gamrnd = export("gamrnd", c_int, [VP, c_int, c_double, c_double])
    binornd = export("binornd", c_int, [VP, c_int, c_int, c_double])
    gen = np.random.default_rng(rng(FAMILY).integers(1 << 62))
    for n in (1_000_000,):
        label = f"{n:.0e}".replace("+0", "")
        out = np.empty(n)
        iout = np.empty(n, dtype=np.int32)
        p, q = ptr(out), ptr(iout)
        yield Row(FAMILY, "normrnd(0, 1)", label, lambda: normrnd(p, n, 0.0, 1.0),
                  lambda: gen.standard_normal(n, out=out), "peer: standard_normal(out=)")
        yield Row(FAMILY, "unifrnd(0, 1)", label, lambda: unifrnd(p, n, 0.0, 1.0),
                  lambda: gen.random(n, out=out),
                  "peer: random(out=) on [0, 1); ours on [a, b] (scaled)")
        for shape in (2.5, 0.5):
            yield Row(FAMILY, f"gamrnd({shape}, 1)", label,
                      lambda shape=shape: gamrnd(p, n, shape, 1.0),
                      lambda shape=shape: gen.standard_gamma(shape, n, out=out),
                      "peer: standard_gamma(out=)")
        for trials in (20, 1000):
            yield Row(FAMILY, f"binornd({trials}, 0.3)", label,
                      lambda trials=trials: binornd(q, n, trials, 0.3),
                      lambda trials=trials: gen.binomial(trials, 0.3, n),
                      "peer: binomial() allocates its int64 result (no out=); ours int32 "
                      "into the caller's buffer")
