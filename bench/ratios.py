#!/usr/bin/env python3
"""Prints a Google Benchmark JSON report as ratios.

Benchmarks are named CASE/IMPL (further /ARG parts allowed after IMPL). Within a case the
implementation called "tov" is the library; every other one is a peer, and the ratio is
tov time / peer time.
"""
import json
import sys


def main(path):
    with open(path) as f:
        report = json.load(f)
    cases = {}
    order = []
    for b in report["benchmarks"]:
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        parts = b["run_name"].split("/")
        if len(parts) < 2:
            continue
        case = "/".join([parts[0]] + parts[2:])
        impl = parts[1]
        if case not in cases:
            cases[case] = {}
            order.append(case)
        ns = b["real_time"] * {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[b["time_unit"]]
        cases[case][impl] = (ns, b)
    print(f"{'case':<34}{'impl':<12}{'time':>14}{'ratio tov/impl':>16}")
    for case in order:
        impls = cases[case]
        tov = impls.get("tov")
        for impl, (ns, b) in impls.items():
            ratio = "" if tov is None or impl == "tov" else f"{tov[0] / ns:.3f}"
            extra = ""
            for key in ("items_per_second",):
                if key in b:
                    extra = f"  {b[key]:.3g} items/s"
            print(f"{case:<34}{impl:<12}{fmt(ns):>14}{ratio:>16}{extra}")


def fmt(ns):
    for unit, scale in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if ns >= scale:
            return f"{ns / scale:.3f} {unit}"
    return f"{ns:.1f} ns"


if __name__ == "__main__":
    main(sys.argv[1])
