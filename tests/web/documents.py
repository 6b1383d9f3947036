"""Makes result documents for the tests of the page: as large as asked for, repeatable."""
import datetime
import random

START = 1381104000000  # 2013-10-07, a Monday
DAY = 86400000
UNITS = {"return": "percent", "maxDrawdownPercent": "percent", "winRate": "percent", "makerShare": "percent", "cagr": "percent", "averageHolding": "seconds",
         "sharpe": "ratio", "profitFactor": "ratio", "roundTrips": "count", "slippage": "price"}
NAMES = ("netProfit return cagr sharpe meanDay maxDrawdown maxDrawdownPercent averageHolding roundTrips winRate profitFactor expectancy fees makerShare "
         "slippage").split()
LOWER = {"maxDrawdown", "maxDrawdownPercent", "fees", "slippage"}
DEFINITIONS = [{"name": name, "title": f"The {name}", "unit": UNITS.get(name, "money"), "direction": "lower" if name in LOWER else "higher",
                "group": "return" if index < 8 else "trips", "formula": f"formula of {name}"} for index, name in enumerate(NAMES)]
TRIPS = "product side volume entryMs exitMs entryPrice exitPrice profit fees mae mfe entryOrder exitOrder".split()
ORDERS = "order product side type volume price executed averagePrice fees status sentMs endMs slippage events".split()


def iso(ms):
    return datetime.datetime.fromtimestamp(ms / 1000, datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")


def parse(text):
    """A time as the page shows it, in milliseconds."""
    return datetime.datetime.fromisoformat(f"{text}+00:00").timestamp() * 1000


def walk(rng, count, begin, step, span):
    """Buckets of a random walk over a span of time."""
    value, columns = begin, {"ms": [], "low": [], "high": [], "close": []}
    for index in range(count):
        value = round(value + rng.gauss(0, step), 2)
        low, high = round(value - abs(rng.gauss(0, step)), 2), round(value + abs(rng.gauss(0, step)), 2)
        for name, number in zip(columns, (START + index * span // max(1, count - 1), low, high, value)):
            columns[name].append(number)
    return columns


def trade(rng, index, at, prices, span):
    """A round trip with its two orders."""
    length = rng.randrange(1000, max(2000, span // 50))
    place = min(len(prices["ms"]) - 1, (at - START) * len(prices["ms"]) // span)
    entry, exit_price = prices["close"][place], round(prices["close"][place] + rng.gauss(0, 2), 2)
    side, first = rng.choice(("Buy", "Sell")), 2 * index + 1
    profit = round((exit_price - entry) * 50 * (1 if side == "Buy" else -1) - 2.5, 2)
    trip = ["ES", side, 1, at, at + length, entry, exit_price, profit, 2.5, -25.5, 40, first, first + 1]
    orders = [[first + after, "ES", side, "LIMIT", 1, price, 1, price, 1.25, "executed", ms - 500, ms, 0.25,
               [[ms - 500, "sent", f"limit at {price}"], [ms - 495, "accepted", "40 ahead"], [ms, "filled", f"1 at {price}"]]]
              for after, (ms, price) in enumerate([(at, entry), (at + length, exit_price)])]
    fills = [[order[11], "one", side if after == 0 else {"Buy": "Sell", "Sell": "Buy"}[side], order[5], 1, after == 0, order[0]]
             for after, order in enumerate(orders)]
    return trip, orders, fills


def make(trips=40, points=400, days=5, seed=1, products=1, lines=2, log=30, profit=1234.5, capital=100000):
    rng, span = random.Random(seed), days * DAY
    prices = walk(rng, points, 1700, 0.5, span)
    equity = walk(rng, points, capital or 0, 40, span)
    equity.update(drawdown=[round(rng.uniform(0, 900), 2) for _ in range(points)], exposure=[rng.randrange(-3, 4) * 85000 for _ in range(points)])
    made = [trade(rng, index, START + span * index // max(1, trips), prices, span) for index in range(trips)]
    rows, orders = [trip for trip, _, _ in made], [order for _, pair, _ in made for order in pair]
    fills = sorted(fill for _, _, pair in made for fill in pair)
    measures = {name: None if trips == 0 else round(rng.uniform(0.1, 2), 4) for name in NAMES}
    measures.update(netProfit=profit if trips else 0, roundTrips=trips, fees=1234567.891 if trips else 0, averageHolding=7384.2 if trips else None)
    if capital is None:
        measures.update({"return": None, "cagr": None, "maxDrawdownPercent": None})
    part = lambda keys: [{"key": key, "roundTrips": trips // len(keys), "profit": round(rng.gauss(0, 400), 2), "fees": 2.5, "winRate": 0.5} for key in keys]
    result = {
        "job": "one", "currency": "USD", "measures": measures, "intervals": {"sharpe": [-0.5, 2.25], "meanDay": None},
        "observations": {"days": days, "roundTrips": trips, "fills": 2 * trips, "orders": 2 * trips}, "benchmark": None,
        "verdict": [f"{trips} round trips over {days} days are too few to tell.", "Fees took a third of the gross profit."],
        "months": [{"month": f"{2013 + (9 + index) // 12}-{(9 + index) % 12 + 1:02}", "profit": round(rng.gauss(100, 600), 2), "return": None, "days": 21}
                   for index in range(max(1, days // 30))],
        "breakdowns": {"product": part(["ES"]), "hour": part(list(range(24))), "weekday": part(["Mon", "Tue", "Wed", "Thu", "Fri"]), "month": [],
                       "side": part(["long", "short"])},
        "drawdowns": [{"from": iso(START + DAY // 4), "trough": iso(START + DAY // 2), "to": None, "depth": 812.5, "percent": 0.008, "seconds": 86400.0,
                       "recoverySeconds": None}],
        "histograms": {"profit": {"edges": [-100, -50, 0, 50, 100], "counts": [3, 9, 14, 4]}, "holding": {"edges": [0, 60, 3600], "counts": [10, 20]}},
        "equity": equity, "roundTrips": {"all": trips, "columns": TRIPS, "rows": rows}, "orders": {"all": 2 * trips + 7, "columns": ORDERS, "rows": orders[:10000]}}
    line = lambda name, chart, values: {"job": "one", "chart": chart, "line": name, "colour": 0xCC79A7, "ms": prices["ms"], "value": values}
    over = [line(f"mean{index}", "averages", [round(value + index, 2) for value in prices["close"]]) for index in range(lines)]
    product = lambda index: {"name": "ES" if index == 0 else f"P{index}", "currency": "USD", "pointValue": 50, "tickSize": 0.25, "prices": prices,
                             "fills": {"all": len(fills), "columns": ["ms", "job", "side", "price", "volume", "maker", "order"], "rows": fills if index == 0 else []}}
    return {
        "result": 1, "program": "algoserver 0.1.0",
        "run": {"scripts": [{"job": "one", "file": "examples/maker.lua", "sha256": "ab" * 32}], "modules": [],
                "data": [{"file": "es.csv.gz", "rows": 123456, "sha256": "cd" * 32}], "settings": {"fills": "queue", "latency": "5ms"}, "seed": seed,
                "capital": capital, "first": iso(START), "last": iso(START + span), "end": "end of data",
                "events": {"quotes": 120000, "trades": 3456, "depthChanges": 0, "bars": 0}, "dataDays": days, "daysPerYear": 252.1, "complete": True,
                "hash": "ef" * 32, "missing": [], "remarks": [], "notes": []},
        "definitions": DEFINITIONS,
        "jobs": [{"name": "one", "script": "examples/maker.lua", "parameters": {"width": "2"}, "end": "end of data",
                  "callbacks": [{"name": "OnPrice", "count": 120000, "failures": 0}, {"name": "OnInit", "count": 1, "failures": 0}], "outputs": {"spread": "0.25"},
                  "notes": []}],
        "results": [result], "products": [product(index) for index in range(products)],
        "lines": over + [line("rsi", "momentum", [round(rng.uniform(0, 100), 1) for _ in prices["ms"]])] if lines else [],
        "log": {"all": log, "rows": [[START + span * index // max(1, log), "one", ("log", "INFO", "WARN", "ERROR")[index % 4], f"line {index} of the log"]
                                     for index in range(log)]},
        "failures": [], "envelope": None}


def large():
    """As large as a document gets, but for the count of products and lines."""
    return make(trips=10000, points=8192, days=400, seed=3, products=4, lines=8, log=5000)


HOSTILE = "</script><script>window.hacked=1</script><!--<img src=x onerror=hacked=1>\u2028'\"&amp;"


def hostile():
    document = make(seed=5, products=2)
    document["jobs"][0].update(parameters={HOSTILE: HOSTILE}, name=HOSTILE, outputs={HOSTILE: HOSTILE})
    document["log"]["rows"][0][3] = document["run"]["end"] = HOSTILE
    document["lines"][0].update(line=HOSTILE, chart=HOSTILE)
    document["products"][0]["name"] = HOSTILE
    document["results"][0]["verdict"][0] = HOSTILE
    document["run"]["settings"][HOSTILE] = HOSTILE
    document["failures"] = [{"job": HOSTILE, "callback": "OnPrice", "text": HOSTILE, "count": 2, "first": iso(START), "file": HOSTILE, "line": 7}]
    document["run"].update(complete=False, missing=["The place in the queue."])
    return document
