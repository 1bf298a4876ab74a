#!/usr/bin/env python3
"""Milliseconds per megapixel of each conversion in tavik_bench_imaging's JSON
output, with ratios to memcpy and memset of the output bytes and to the same
job in OpenCV or libyuv.

    tavik_bench_imaging --benchmark_format=json > out.json
    imaging_ratios.py out.json [--real]

Times are CPU times of the calling thread unless --real asks for wall-clock
times (needed when the transform runs on several threads); on a shared
machine the CPU time is the steadier measure of one thread's work.
"""
import json
import sys

MEGAPIXELS = 2592 * 1944 / 1e6


def size_name(bytes_per_px):
    whole = int(bytes_per_px)
    return f"{whole}.5B" if bytes_per_px != whole else f"{whole}B"


def main():
    runs = json.load(open(sys.argv[1]))["benchmarks"]
    clock = "real_time" if "--real" in sys.argv[2:] else "cpu_time"
    ms = {}
    sizes = {}
    for r in runs:
        if r.get("run_type") == "aggregate" and r.get("aggregate_name") != "median":
            continue
        name = r["name"].split("/real_time")[0].removesuffix("_median")
        ms[name] = r[clock] if r["time_unit"] == "ms" else r[clock] / 1e3
        sizes[name] = (r.get("in_bytes_per_px", 0), r.get("out_bytes_per_px", 0))
    print(f"{'conversion':40} {'ms/MP':>7} {'/memcpy out':>11} {'/memset out':>11} {'/memcpy in':>10}"
          f"  {'OpenCV':>7} {'libyuv':>7}")
    for name, t in sorted(ms.items()):
        if name.split("/")[0] in ("memcpy", "memset", "OpenCV", "libyuv"):
            continue
        src, dst = sizes[name]
        row = f"{name:40} {t / MEGAPIXELS:7.3f}"
        for kind, bytes_per_px in (("memcpy", dst), ("memset", dst), ("memcpy", src)):
            floor = ms.get(f"{kind}/{size_name(bytes_per_px)}")
            row += f" {t / floor:10.2f}x" if floor else f" {'':>10} "
        for other in ("OpenCV", "libyuv"):
            base = name.split("/")[0]
            match = [k for k in ms if k.startswith(other + "/" + base)]
            if "Bayer8_to_BGR24" in name and not name.endswith(("/2x2", "/3x3")):
                match = []
            row += f" {t / ms[match[0]]:6.2f}x" if match else f" {'':>7}"
        print(row)


if __name__ == "__main__":
    main()
