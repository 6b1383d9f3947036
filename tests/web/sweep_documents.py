"""Makes documents of sweeps for the tests of their page: as large as asked for, repeatable."""
import itertools
import math
import random
import statistics

from documents import DAY, HOSTILE, START

UNITS = {"sharpe": "ratio", "netProfit": "money", "maxDrawdown": "money", "winRate": "percent", "roundTrips": "count", "averageHolding": "seconds"}


def equity(rng, days):
    profit = itertools.accumulate(rng.gauss(30, 400) for _ in range(days))
    return {"ms": [START + day * DAY for day in range(days)], "profit": [round(value, 2) for value in profit]}


def dimension(name, values, ordered=True, kind="parameter"):
    return {"name": name, "kind": kind, "ordered": ordered, "values": [str(value) for value in values]}


def grid(fast=8, slow=6):
    return [dimension("fast", range(5, 5 + 5 * fast, 5)), dimension("slow", range(20, 20 + 20 * slow, 20)),
            dimension("fills", ["queue", "touch", "cross"], False, "option")]


def make(dimensions=None, seed=1, measures=6, days=250, minimise=False, random_points=0):
    rng = random.Random(seed)
    dimensions = grid() if dimensions is None else dimensions
    sizes = [len(one["values"]) for one in dimensions]
    places = [[rng.randrange(size) for size in sizes] for _ in range(random_points)] or list(itertools.product(*map(range, sizes)))
    count = len(places)
    quality = [sum(math.sin(1 + 2.5 * place / size) for place, size in zip(row, sizes)) / max(1, len(sizes)) for row in places]
    state = [rng.choices(("done", "failed", "constrained"), (90, 5, 5))[0] for _ in places]
    known = lambda values: [None if one == "failed" else value for one, value in zip(state, values)]
    names = [*UNITS, *(f"measure{index}" for index in range(measures - len(UNITS)))][:measures]
    scale = {"sharpe": 1, "winRate": 0.4, "maxDrawdown": 900, "netProfit": 4000, "roundTrips": 120, "averageHolding": 3600}
    columns = {name: known([round(scale.get(name, 10) * (2 * value - 1 + rng.gauss(0, 0.2)), 4) for value in quality]) for name in names}
    if "roundTrips" in columns:
        columns["roundTrips"] = known([rng.randrange(80, 400) for _ in places])
    objective = [None if value is None else -value for value in columns["maxDrawdown"]] if minimise else columns["sharpe"]
    best = max((index for index in range(count) if state[index] == "done"), key=lambda index: objective[index], default=None)
    noise = lambda by: [None if value is None else round(value + rng.gauss(0, by), 4) for value in objective]
    of = lambda index: {name: columns[name][index] for name in names}
    return {
        "sweep": 1, "program": "algoserver 1.0.0", "title": "moving_average",
        "facts": [{"name": "Script", "value": "examples/moving_average.lua"}, {"name": "Data", "value": "demo_quotes.csv.gz"}, {"name": "Hash", "value": "ef" * 32}],
        "plan": {"maximise": None if minimise else "sharpe", "minimise": "maxDrawdown" if minimise else None, "constraints": ["roundTrips > 100"],
                 "conditions": ["fast < slow"], "method": "random" if random_points else "grid", "seed": 1},
        "rerun": ["algoserver", "report", "my sweep.db", "--run", "{point}", "-o", "run{point}.html"], "pages": {"1002": "sweep_pages/1002.html"},
        "dimensions": dimensions,
        "measures": [{"name": name, "title": f"The {name}", "unit": UNITS.get(name, "ratio"), "formula": f"formula of {name}",
                      "direction": {"maxDrawdown": "lower", "roundTrips": "none"}.get(name, "higher")} for name in names],
        "points": {"number": [1000 + index for index in range(count)], "places": [list(column) for column in zip(*places)], "state": state,
                   "failure": [f"{index}: attempt to index a nil value" if one == "failed" else None for index, one in enumerate(state)],
                   "objective": objective, "inSample": noise(0.1), "outOfSample": noise(0.4),
                   "seconds": [round(rng.uniform(0.1, 3), 3) for _ in places], "memory": [rng.randrange(10 ** 7, 10 ** 8) for _ in places], "measures": columns},
        "samples": {"inSample": "mean of the trains", "outOfSample": "mean of the tests"}, "best": best,
        "splits": [{"train": [[f"2024-0{month}-01", f"2024-0{month + 3}-28"]], "test": [f"2024-0{month + 4}-01", f"2024-0{month + 4}-28"],
                    "chosen": best, "inSample": 1.1 + month, "outOfSample": 0.4 - month} for month in range(1, 5)],
        "walk": equity(rng, days), "equity": equity(rng, days),
        "holdout": {"from": "2024-10-01", "to": "2024-12-31", "objective": 0.3125, "measures": {**of(best), "sharpe": 0.3125}},
        "variants": [{"name": name, "objective": objective[best] - 0.125 * index, "measures": of(best), "failure": None}
                     for index, name in enumerate(("as run", "touch", "cross", "twice the fees"))],
        "luck": {"tried": count, "days": days, "sharpe": 0.11, "probabilistic": 0.97, "deflated": 0.9496, "bestOfLuck": 0.05,
                 "overfitting": {"probability": 0.25, "loss": 0.125, "halves": 12870},
                 "realityCheck": {"white": 0.0625, "spa": 0.0301, "spaLower": 0.01, "spaUpper": 0.04},
                 "neighbours": {"count": 4, "mean": 0.9, "worst": 0.4, "stability": 0.75}, "rankCorrelation": -0.5},
        "verdict": f"The best of {count} runs may well be luck: after all that was tried its Sharpe ratio is above 0 with a confidence of 95 % only.",
        "notes": [f"{state.count('failed')} of {count} runs failed."], "timing": {"seconds": 12.5, "jobs": 2}}


def large(measures=60):
    """As many points and measures as a page is meant for, in six dimensions of which one has any value."""
    dimensions = [*grid(20, 10), dimension("threshold", [round(statistics.NormalDist().inv_cdf((index + 0.5) / 10000), 6) for index in range(10000)]),
                  dimension("hold", range(1, 13)), dimension("side", ["long", "short"], False)]
    return make(dimensions, seed=3, measures=measures, random_points=10000)


def bare():
    """Nothing but a dimension and points that all failed."""
    document = make([dimension("fast", range(5, 30, 5))])
    points = document["points"]
    nothing = [None] * 5
    points.update(state=["failed"] * 5, failure=["no data"] * 5, objective=nothing, inSample=nothing, outOfSample=nothing, memory=nothing,
                  measures={name: nothing for name in points["measures"]})
    document.update(best=None, samples=None, splits=[], walk=None, equity=None, holdout=None, variants=[], luck=None, pages={},
                    notes=["5 of 5 runs failed."], verdict="Nothing is known of the best: all 5 runs failed.")
    return document


def hostile():
    document = make([dimension(HOSTILE, [HOSTILE, "$(rm -rf /) 'x'", "b"], False), dimension("fast", [1, 2])], seed=5)
    document["points"]["failure"][0], document["points"]["state"][0] = HOSTILE, "failed"
    for one in document["facts"] + document["variants"]:
        one["name"] = HOSTILE
    document["measures"][1].update(title=HOSTILE, formula=HOSTILE)
    document["rerun"] = ["algoserver", HOSTILE, "{point}"]
    document["pages"] = {str(number): "javascript:window.hacked=1" for number in document["points"]["number"][1:3]}
    document.update(title=HOSTILE, notes=[HOSTILE], verdict=HOSTILE)
    return document
