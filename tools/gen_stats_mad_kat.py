#!/usr/bin/env python3
"""Known answers of the absolute deviations: scipy.stats.median_abs_deviation
(scale 1, centre the median) and the (weighted) mean absolute deviation about
the (weighted) mean by numpy.average, of seeded data with ties. Writes
tests/data/stats/mad_kat.txt:

  /usr/bin/python3 tools/gen_stats_mad_kat.py > tests/data/stats/mad_kat.txt
"""
import numpy as np
import scipy
from scipy.stats import median_abs_deviation


def main():
    rng = np.random.default_rng(20261123)
    print("# scipy %s median_abs_deviation(x, axis=0); numpy %s average(|x - average(x, w)|, w)"
          % (scipy.__version__, np.__version__))
    print("# of seeded data, by observation; from tools/gen_stats_mad_kat.py")
    for n, p in ((1, 2), (2, 3), (7, 3), (64, 4), (301, 3)):
        x = rng.standard_cauchy((n, p)) * 2.0 + 1.0
        x[rng.random((n, p)) < 0.2] = 1.5  # ties
        w = rng.integers(1, 5, n).astype(float)
        print("case %d %d" % (n, p))
        print("x " + " ".join("%.17g" % v for v in x.ravel()))
        print("w " + " ".join("%.17g" % v for v in w))
        print("median " + " ".join("%.17g" % v for v in median_abs_deviation(x, axis=0)))
        mean = x.mean(axis=0)
        print("mean " + " ".join("%.17g" % v for v in np.abs(x - mean).mean(axis=0)))
        wmean = np.average(x, axis=0, weights=w)
        print("wmean " + " ".join("%.17g" % v for v in
                                  np.average(np.abs(x - wmean), axis=0, weights=w)))


if __name__ == "__main__":
    main()
