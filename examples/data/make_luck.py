#!/usr/bin/env python3
"""Writes two files of 1,500 daily bars of one product: noise_bars.csv.gz, in which nothing can be known of the next day, and
signal_bars.csv.gz, which trends for some 60 days at a time. Both have the same steps but for the trend; the seed makes them repeat.

    make_luck.py FOLDER
"""
import datetime
import gzip
import os
import random
import sys


def make_rows(trend):
    rng, drift, price, day = random.Random(12), trend, 10_000, datetime.date(2018, 1, 1)
    yield "time,product,open,high,low,close,volume\n"
    for _ in range(1500):
        if rng.random() < 1 / 60:
            drift = -drift
        begin = price
        path = [price := max(1000, price + round(rng.gauss(drift, 40))) for _ in range(8)]
        high, low = max(begin, *path), min(begin, *path)
        yield f"{day:%Y%m%d},SIM,{begin / 100:.2f},{high / 100:.2f},{low / 100:.2f},{price / 100:.2f},{rng.randint(800, 1200)}\n"
        day += datetime.timedelta(days=3 if day.weekday() == 4 else 1)


def main(folder):
    for name, trend in (("noise", 0), ("signal", 4)):
        with open(os.path.join(folder, f"{name}_bars.csv.gz"), "wb") as file, gzip.GzipFile("", "wb", 9, file, 0) as packed:
            packed.write("".join(make_rows(trend)).encode())


main(sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.abspath(__file__)))
