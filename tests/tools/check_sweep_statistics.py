#!/usr/bin/env python3
"""The statistics of a sweep and its Sobol points are what docs/sweep.md says, computed here by its formulas alone.

    check_sweep_statistics.py SWEEP_STATISTICS

Prints what is wrong; the exit status is 1 when something is.
"""
import itertools
import math
import pathlib
import random
import statistics
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent.parent / "tools"))
from measures import split_mix  # noqa: E402

NORMAL = statistics.NormalDist()
NAMES = ("sharpe", "probabilistic", "best of luck", "deflated", "overfitting", "loss", "mean logit", "white statistic",
         "spa statistic", "white", "spa", "lower", "upper", "rank correlation")

# Degree, polynomial and first direction numbers by S. Joe and F. Y. Kuo, from the second dimension on.
DIRECTIONS = [(1, 0, [1]), (2, 1, [1, 3]), (3, 1, [1, 3, 1]), (3, 2, [1, 1, 1]), (4, 1, [1, 1, 3, 3]), (4, 4, [1, 3, 5, 13]),
              (5, 2, [1, 1, 5, 5, 17]), (5, 4, [1, 1, 5, 5, 5]), (5, 7, [1, 1, 7, 11, 19])]


def sharpe(returns):
    deviation = statistics.stdev(returns)
    return statistics.fmean(returns) / deviation if deviation > 1e-15 else None


def probabilistic(returns, threshold):
    mean, ratio = statistics.fmean(returns), sharpe(returns)
    moment = [statistics.fmean([(x - mean) ** power for x in returns]) for power in range(5)]
    skewness, kurtosis = moment[3] / moment[2] ** 1.5, moment[4] / moment[2] ** 2
    return NORMAL.cdf((ratio - threshold) * math.sqrt(len(returns) - 1)
                      / math.sqrt(1 - skewness * ratio + (kurtosis - 1) / 4 * ratio ** 2))


def best_of_luck(ratios, tries):
    euler = 0.5772156649015329
    return statistics.stdev(ratios) * ((1 - euler) * NORMAL.inv_cdf(1 - 1 / tries) + euler * NORMAL.inv_cdf(1 - 1 / (tries * math.e)))


def overfitting(runs, blocks):
    days = len(runs[0])
    cuts = [block * days // blocks for block in range(blocks + 1)]
    logits, losses = [], 0
    for half in itertools.combinations(range(blocks), blocks // 2):
        def ratios(inside):
            chosen = [day for block in range(blocks) if (block in half) == inside for day in range(cuts[block], cuts[block + 1])]
            return [sharpe([run[day] for day in chosen]) or 0.0 for run in runs]
        inside, outside = ratios(True), ratios(False)
        value = outside[inside.index(max(inside))]
        rank = sum(other < value for other in outside) + (outside.count(value) + 1) / 2
        share = rank / (len(runs) + 1)
        logits.append(math.log(share / (1 - share)))
        losses += value < 0
    return [sum(logit <= 0 for logit in logits) / len(logits), losses / len(logits), statistics.fmean(logits)]


def deviation(returns, length):
    days, mean = len(returns), statistics.fmean(returns)
    away = [x - mean for x in returns]
    variance = 0.0
    for lag in range(days):
        weight = (days - lag) / days * (1 - 1 / length) ** lag + lag / days * (1 - 1 / length) ** (days - lag)
        variance += (2 * weight if lag else 1) * sum(a * b for a, b in zip(away[lag:], away)) / days
    return math.sqrt(max(variance, 0.0))


def reality_check(runs, seed, resamples=1000):
    days = len(runs[0])
    length = max(1, round(days ** (1 / 3)))
    root, numbers = math.sqrt(days), split_mix(seed)
    means, deviations = [statistics.fmean(run) for run in runs], [deviation(run, length) for run in runs]
    threshold = -math.sqrt(2 * math.log(math.log(days)))
    centres = {"spa": [0 if root * mean / width < threshold else mean for mean, width in zip(means, deviations)],
               "lower": [max(mean, 0) for mean in means], "upper": means}

    def largest(values, centre):
        return max(0, max(root * (value - c) / width for value, c, width in zip(values, centre, deviations)))
    white, spa = root * max(means), largest(means, [0] * len(means))
    counts = dict.fromkeys(("white", "spa", "lower", "upper"), 0)
    for _ in range(resamples):
        place, drawn = int(next(numbers) * days), []
        for _ in range(days):
            drawn.append(place)
            place = int(next(numbers) * days) if next(numbers) < 1 / length else (place + 1) % days
        resampled = [math.fsum(run[day] for day in drawn) / days for run in runs]
        counts["white"] += root * max(new - mean for new, mean in zip(resampled, means)) >= white
        for name, centre in centres.items():
            counts[name] += largest(resampled, centre) >= spa
    return [white, spa] + [count / resamples for count in counts.values()]


def rank_correlation(a, b):
    def ranks(numbers):
        return [sum(other < x for other in numbers) + (numbers.count(x) + 1) / 2 for x in numbers]
    return statistics.correlation(ranks(a), ranks(b))


def expected(runs, seed, tried, best):
    luck = best_of_luck([ratio for ratio in map(sharpe, runs) if ratio is not None], tried)
    return [sharpe(runs[best]), probabilistic(runs[best], 0), luck, probabilistic(runs[best], luck), *overfitting(runs, 8),
            *reality_check(runs, seed), rank_correlation(runs[0], runs[1])]


def check_case(program, seed, days, count, signal, tried):
    source = random.Random(seed)
    common = [source.gauss(0, 0.005) for _ in range(days)]
    # Fat tails and ties; the second half of the runs is poor, the last hardly moves.
    runs = [[round(common[day] + source.gauss(signal if run == 1 else 0, 0.01) * (1 + (source.random() < 0.05) * 3)
                   - (run > count / 2) * 0.003, 4) for day in range(days)] for run in range(count)]
    runs[-1] = [-0.001] * (days // 2) + [-0.002] + [-0.001] * (days - days // 2 - 1)
    best = max(range(count), key=lambda run: statistics.fmean(runs[run]))
    text = f"{days} {count} {seed} {tried} {best}\n" + "\n".join(" ".join(map(repr, row)) for row in zip(*runs))
    lines = subprocess.run([program], input=text, capture_output=True, text=True, check=True).stdout.split()
    for name, told, own in zip(NAMES, map(float, lines), expected(runs, seed, tried, best), strict=True):
        if not math.isclose(told, own, rel_tol=1e-10, abs_tol=1e-13):
            yield f"seed {seed}: {name} is {told!r}, should be {own!r}"


def check_sobol(program):
    dimensions, points = len(DIRECTIONS) + 1, 600
    columns = [[1 << (31 - bit) for bit in range(32)]]
    for degree, polynomial, first in DIRECTIONS:
        column = [m << (31 - bit) for bit, m in enumerate(first)]
        for bit in range(degree, 32):
            value = column[bit - degree] ^ column[bit - degree] >> degree
            for k in range(1, degree):
                value ^= (polynomial >> (degree - 1 - k) & 1) * column[bit - k]
            column.append(value)
        columns.append(column)
    output = subprocess.run([program, "sobol", str(dimensions), str(points)], capture_output=True, text=True, check=True).stdout
    for number, line in enumerate(output.splitlines()):
        gray = number ^ number >> 1
        for dimension, column in enumerate(columns):
            bits = 0
            for bit in range(32):
                bits ^= (gray >> bit & 1) * column[bit]
            if float(line.split()[dimension]) != (bits + 0.5) / 2**32:
                yield f"point {number} of the Sobol sequence, dimension {dimension}: {line}"
    if len(output.splitlines()) != points:
        yield f"{len(output.splitlines())} Sobol points instead of {points}"


def main():
    program = sys.argv[1]
    faults = list(check_sobol(program))
    for case in ((1, 60, 7, 0.0, 7), (2, 101, 12, 0.004, 500), (3, 257, 4, 0.002, 3)):
        faults += check_case(program, *case)
    for fault in faults[:20]:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
