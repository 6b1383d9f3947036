"""The measures of a run, by the formulas of docs/results.md, from what tools/verify_result has found in record and data.

Sums of money are exact decimals; money() makes doubles of them. Statistics are doubles, added up in the order of time.
"""

import collections
import datetime
import math

from recount import EPOCH, NOTHING, SECOND, round_price

DAY = 86_400 * SECOND
HORIZONS = {"markout1s": 1, "markout10s": 10, "markout1m": 60, "markout10m": 600}
KEPT_TRIPS = 10_000
RESAMPLES, CUT, LEAST_RESAMPLES, LEAST_DAYS = 1000, 25, 500, 10


def money(exact):
    """The double of a sum, which is rounded to ten places."""
    return float(round_price(exact, 1))


def sum_of(amounts):
    return money(sum(amounts, NOTHING))


def total(values):
    result = 0.0  # sum() of later versions of Python compensates
    for value in values:
        result += value
    return result


def mean(values):
    return total(values) / len(values)


def moment(values, power):
    middle = mean(values)
    return total([math.prod([value - middle] * power) for value in values]) / len(values)


def deviation(values):
    middle = mean(values)
    return math.sqrt(total([(value - middle) * (value - middle) for value in values]) / (len(values) - 1))


def divide(part, whole):
    return part / whole if part is not None and whole else None


def seconds(begin, end):
    return None if end is None else (end - begin) / SECOND


def iso(time):
    """As the document writes times."""
    text = (EPOCH + datetime.timedelta(seconds=time // SECOND)).strftime("%Y-%m-%dT%H:%M:%S")
    return text + (f".{time % SECOND:09d}".rstrip("0") if time % SECOND else "") + "Z"


def milliseconds(time):
    """Whole microseconds, as the columns of series have them."""
    return time // 1000 / 1000


class Basis:
    """One job in a currency, or all jobs (None) of it: what its measures are computed from."""

    def __init__(self, walk, run, job, currency):
        self.walk, self.seed = walk, run["seed"]
        self.capital = run["capital"]
        terms = walk.record.terms

        def mine(owner, product):
            return job in (None, owner) and terms[product]["currency"] == currency

        self.curve = walk.curves[job, currency]
        self.orders = [order for order in walk.record.orders.values() if mine(order.job, order.product)]
        self.fills = [fill for fill in walk.booked if mine(fill.job, fill.product)]
        self.trips = sorted((trip for trip in walk.trips if mine(trip.job, trip.product)), key=lambda trip: trip.place)
        self.wins = [trip for trip in self.trips if trip.profit > 0]
        self.losses = [trip for trip in self.trips if trip.profit < 0]
        self.end = walk.end
        self._set_days()

    def _set_days(self):
        self.dates = self.walk.days
        self.ends = [profit for profit, _ in self.curve.days] or [NOTHING] * len(self.dates)
        self.profits = [money(end - before) for before, end in zip([NOTHING] + self.ends, self.ends)]
        self.equity = self.returns = None
        if self.capital is not None:
            self.equity = [self.capital + money(end) for end in self.ends]
            if min(self.equity) > 0:
                self.returns = [after / before - 1 for before, after in zip([self.capital] + self.equity, self.equity)]
        self.values = self.profits if self.capital is None else self.returns
        span = self.dates[-1] - self.dates[0]
        self.per_year = (len(self.dates) - 1) / span * 365.25 if span else None

    def fall(self, drawdown):
        """Of capital and the profit that it fell from."""
        return money(drawdown.depth) / (self.capital + money(drawdown.peak)) if self.capital else None

    def benchmark(self):
        """The product of which most was traded, the first in the record of those alike."""
        traded = {name: NOTHING for name in self.walk.record.terms}
        for fill in self.fills:
            traded[fill.product] += fill.money
        best = max(traded, key=lambda name: traded[name], default=None)
        return best if best is not None and traded[best] > 0 else None


# --- Each measure ----------------------------------------------------------------------------------------------------


def sharpe(values, per_year):
    if values is None or len(values) < 2:
        return None
    spread = deviation(values)
    return mean(values) / spread * math.sqrt(per_year) if spread > 0 else None


def of_profit(b):
    net, profit, loss = money(b.ends[-1]), sum_of(trip.profit for trip in b.wins), sum_of(trip.profit for trip in b.losses)
    win, lost = divide(profit, len(b.wins)), divide(loss, len(b.losses))
    fees = sum((fill.fee for fill in b.fills), NOTHING)
    gross = b.ends[-1] + fees
    return {"netProfit": net, "grossProfit": profit, "grossLoss": loss, "return": divide(net, b.capital),
            "profitFactor": divide(profit, -loss), "averageWin": win, "averageLoss": lost,
            "payoff": divide(win, lost and -lost),
            "fees": money(fees), "feeShare": divide(money(fees), money(gross)) if gross > 0 else None,
            "longProfit": sum_of(trip.profit for trip in b.trips if trip.sign > 0),
            "shortProfit": sum_of(trip.profit for trip in b.trips if trip.sign < 0)}


def of_days(b):
    days, values = len(b.dates), b.values
    m = {"bestDay": max(b.profits), "worstDay": min(b.profits), "meanDay": mean(b.profits),
         "sharpe": sharpe(values, b.per_year)}
    m |= dict.fromkeys(("cagr", "volatility", "sortino", "omega", "skew", "kurtosis", "var95", "es95", "ulcerIndex"))
    if values and min(values) < 0:
        squares = total([value * value for value in values if value < 0])
        if days >= 2:
            m["sortino"] = mean(values) / math.sqrt(squares / days) * math.sqrt(b.per_year)
        m["omega"] = total([value for value in values if value > 0]) / -total([value for value in values if value < 0])
    if values and moment(values, 2) > 0:
        second = moment(values, 2)
        m["skew"] = moment(values, 3) / (second * math.sqrt(second)) if days >= 3 else None
        m["kurtosis"] = moment(values, 4) / (second * second) - 3 if days >= 4 else None
    if days >= 20:
        worst = sorted(b.profits)[:math.ceil(days / 20)]
        m["var95"], m["es95"] = -worst[-1], -mean(worst)
    if b.returns:
        if days >= 30:
            m["cagr"] = math.pow(b.equity[-1] / b.capital, b.per_year / days) - 1
        m["volatility"] = deviation(b.returns) * math.sqrt(b.per_year) if days >= 2 else None
        highest, falls = b.capital, []
        for equity in b.equity:
            highest = max(highest, equity)
            falls.append((1 - equity / highest) * (1 - equity / highest))
        m["ulcerIndex"] = math.sqrt(mean(falls))
    return m


def of_drawdowns(b, cagr):
    deepest = max(b.curve.drawdowns, key=lambda drawdown: drawdown.depth, default=None)
    percent = max(map(b.fall, b.curve.drawdowns), default=0.0) if b.capital else None
    m = {"maxDrawdown": 0.0, "maxDrawdownPercent": percent, "maxDrawdownSeconds": None, "recoverySeconds": None,
         "calmar": divide(cagr, percent)}
    if deepest:
        m |= {"maxDrawdown": money(deepest.depth), "maxDrawdownSeconds": deepest.seconds(b.end),
              "recoverySeconds": deepest.recovery()}
    return m


def of_trips(b):
    n = len(b.trips)
    m = {"roundTrips": n, "winRate": divide(len(b.wins), n), "expectancy": divide(sum_of(trip.profit for trip in b.trips), n),
         "averageMae": divide(sum_of(trip.mae for trip in b.trips), n),
         "averageMfe": divide(sum_of(trip.mfe for trip in b.trips), n),
         "largestWin": money(max(trip.profit for trip in b.wins)) if b.wins else None,
         "largestLoss": money(min(trip.profit for trip in b.losses)) if b.losses else None,
         "longestHolding": max((trip.holding() for trip in b.trips), default=None)}
    for name, trips in (("averageHolding", b.trips), ("averageWinHolding", b.wins), ("averageLossHolding", b.losses)):
        m[name] = mean([trip.holding() for trip in trips]) if trips else None
    for name, sign in (("longestWinStreak", 1), ("longestLossStreak", -1)):
        m[name] = run = 0
        for trip in b.trips:
            run = run + 1 if trip.profit * sign > 0 else 0
            m[name] = max(m[name], run)
    return m


def of_execution(b):
    turnover = sum_of(fill.money for fill in b.fills)
    others = [fill for fill in b.fills if fill.cause != "ownOrder"]
    slips = [((fill.price - fill.mid) * fill.signed * fill.point, fill.volume) for fill in b.fills if fill.mid is not None]
    asked = sum((order.events[-1] if order.events else order.requests[0])["volume"] or 0 for order in b.orders)
    slippage = sum_of(slip for slip, _ in slips) if slips else None
    position = b.curve.in_market + (0 if b.curve.entered is None else max(b.end, b.curve.entered) - b.curve.entered)
    return {"exposure": divide(position, b.end - b.walk.begin), "turnover": turnover,
            "turnoverPerYear": turnover / b.capital * b.per_year / len(b.dates) if b.capital and b.per_year else None,
            "makerShare": divide(sum(fill.volume for fill in others if fill.maker), sum(fill.volume for fill in others)),
            "fillRatio": divide(sum(fill.volume for fill in b.fills), asked),
            "orderToTrade": divide(sum(len(order.requests) for order in b.orders), len(b.fills)),
            "slippage": slippage, "slippagePerLot": divide(slippage, sum(volume for _, volume in slips))}


def markouts(b):
    """Of each horizon the measure, and how many fills it has."""
    m, counts = {}, []
    for name, horizon in HORIZONS.items():
        found = []
        for fill in b.fills:
            at = fill.time + horizon * SECOND
            mid = b.walk.mid_at(fill.product, at)
            if at <= b.end and mid is not None:
                found.append(((mid - fill.price) * fill.signed * fill.point, fill.volume))
        m[name] = divide(sum_of(value for value, _ in found), sum(volume for _, volume in found))
        counts.append(len(found))
    return m, counts


def of_benchmark(b, benchmark):
    prices = [day.get(benchmark) for day in b.walk.prices]
    pairs = [(own, float(now) / float(before) - 1) for own, before, now in zip((b.returns or [])[1:], prices, prices[1:])
             if before is not None and now is not None]
    if len(pairs) < 10:
        return {"alpha": None, "beta": None}
    own, other = (mean([pair[i] for pair in pairs]) for i in (0, 1))
    beta = divide(total([(mine - own) * (theirs - other) for mine, theirs in pairs]),
                  total([(theirs - other) * (theirs - other) for _, theirs in pairs]))
    return {"beta": beta, "alpha": None if beta is None else (own - beta * other) * b.per_year}


# --- Intervals -------------------------------------------------------------------------------------------------------


def split_mix(state):
    """Random numbers from 0 to 1."""
    mask = 2**64 - 1
    while True:
        state = (state + 0x9E3779B97F4A7C15) & mask
        mixed = ((state ^ state >> 30) * 0xBF58476D1CE4E5B9) & mask
        mixed = ((mixed ^ mixed >> 27) * 0x94D049BB133111EB) & mask
        yield ((mixed ^ mixed >> 31) >> 11) / 2**53


def interval(values, seed, statistic):
    if values is None or len(values) < LEAST_DAYS:
        return None
    days, random, found = len(values), split_mix(seed), []
    chance = 1 / max(1, round(days ** (1 / 3)))
    for _ in range(RESAMPLES):
        sample, place = [], int(next(random) * days)
        for _ in range(days):
            sample.append(values[place])
            place = int(next(random) * days) if next(random) < chance else (place + 1) % days
        found.append(statistic(sample))
    found = sorted(value for value in found if value is not None)
    return [found[CUT], found[-CUT - 1]] if len(found) >= LEAST_RESAMPLES else None


# --- Tables ----------------------------------------------------------------------------------------------------------


def group(trips, key):
    groups = collections.defaultdict(list)
    for trip in trips:
        groups[key(trip)].append(trip)
    return [{"key": name[-1], "roundTrips": len(found), "profit": sum_of(trip.profit for trip in found),
             "fees": sum_of(trip.fees for trip in found), "winRate": sum(trip.profit > 0 for trip in found) / len(found)}
            for name, found in sorted(groups.items())]


def breakdowns(b):
    def entry(trip):
        return EPOCH + datetime.timedelta(seconds=trip.entry_time // SECOND)
    keys = {"product": lambda trip: (trip.product,), "hour": lambda trip: (f"{entry(trip):%H}",),
            "weekday": lambda trip: (entry(trip).weekday(), f"{entry(trip):%a}"),
            "month": lambda trip: (f"{entry(trip):%Y-%m}",), "side": lambda trip: (("long" if trip.sign > 0 else "short"),)}
    return {name: group(b.trips, key) for name, key in keys.items()}


def months(b):
    places = collections.defaultdict(list)
    for place, day in enumerate(b.dates):
        places[f"{EPOCH + datetime.timedelta(days=day):%Y-%m}"].append(place)
    rows, before = [], NOTHING
    for month, days in places.items():
        profit = money(b.ends[days[-1]] - before)
        rows.append({"month": month, "profit": profit, "days": len(days),
                     "return": profit / (b.capital + money(before)) if b.returns else None})
        before = b.ends[days[-1]]
    return rows


def drawdowns(b):
    deepest = sorted(b.curve.drawdowns, key=lambda drawdown: -drawdown.depth)[:5]
    return [{"from": iso(d.since), "trough": iso(d.trough), "to": None if d.until is None else iso(d.until),
             "depth": money(d.depth), "percent": b.fall(d), "seconds": d.seconds(b.end), "recoverySeconds": d.recovery()}
            for d in deepest]


def trip_row(trip):
    return [trip.product, "BUY" if trip.sign > 0 else "SELL", trip.volume, milliseconds(trip.entry_time),
            milliseconds(trip.exit_time), *trip.figures(), trip.entry_order, trip.exit_order]


def round_trips(b):
    largest = sorted(b.trips, key=lambda trip: -abs(money(trip.profit)))[:KEPT_TRIPS]
    return {"all": len(b.trips), "rows": [trip_row(trip) for trip in sorted(largest, key=lambda trip: trip.place)]}


def result(b):
    """What the document has of one job and currency, but for the parts that --help names."""
    benchmark, days = b.benchmark(), of_days(b)
    outs, counts = markouts(b)
    return {"measures": of_profit(b) | days | of_drawdowns(b, days["cagr"]) | of_trips(b) | of_execution(b) | outs |
            of_benchmark(b, benchmark),
            "intervals": {"sharpe": interval(b.values, b.seed, lambda sample: sharpe(sample, b.per_year)),
                          "meanDay": interval(b.profits, b.seed, mean)},
            "observations": {"days": len(b.dates), "roundTrips": len(b.trips), "fills": len(b.fills), "orders": len(b.orders),
                             "markouts": counts},
            "benchmark": benchmark, "months": months(b), "breakdowns": breakdowns(b), "drawdowns": drawdowns(b),
            "roundTrips": round_trips(b)}
