#!/usr/bin/env python3
"""Known answers of the order statistics from numpy: quantiles by
numpy.quantile (method "linear", h = q (n - 1)) and rows sorted by numpy.sort,
of seeded data with ties. Writes tests/data/stats/order_kat.txt:

  /usr/bin/python3 tools/gen_stats_order_kat.py > tests/data/stats/order_kat.txt
"""
import numpy as np

ORDERS = [0.0, 0.1, 0.25, 0.5, 0.9, 0.999, 1.0]


def main():
    rng = np.random.default_rng(20261122)
    print("# numpy %s: numpy.quantile(x, q, axis=0) (linear) and numpy.sort(x, axis=0)" % np.__version__)
    print("# of seeded data, by observation; from tools/gen_stats_order_kat.py")
    print("orders " + " ".join(repr(q) for q in ORDERS))
    for n, p in ((1, 2), (2, 3), (7, 3), (64, 4), (301, 3)):
        x = rng.normal(0.0, 3.0, (n, p))
        x[rng.random((n, p)) < 0.2] = 1.5  # ties
        print("case %d %d" % (n, p))
        print("x " + " ".join("%.17g" % v for v in x.ravel()))
        qs = np.quantile(x, ORDERS, axis=0)  # (orders, p)
        print("q " + " ".join("%.17g" % v for v in qs.T.ravel()))
        print("s " + " ".join("%.17g" % v for v in np.sort(x, axis=0).T.ravel()))


if __name__ == "__main__":
    main()
