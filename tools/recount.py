"""What tools/verify_run and tools/verify_result share: the market data, what they show, the record, and what fills make of money.

It follows docs/run-record.md and docs/exchange.md and shares no code with algoserver.
"""

import collections
import csv
import datetime
import decimal
import fractions
import gzip
import heapq
import io
import itertools
import json
import operator
import subprocess
import sys

Decimal = decimal.Decimal
NOTHING = Decimal(0)
EPOCH = datetime.datetime(1970, 1, 1, tzinfo=datetime.timezone.utc)
SECOND = 1_000_000_000
DAY = 86400  # seconds
DEPTH_ROWS = 65_536  # of one change of a book, at most
FIRST_ROWS, FIRST_BYTES = 4_096, 262_144  # of each file, by which the products are known from the beginning

QUOTE, DEPTH, BAR = "quotes", "depth", "bars"
COLUMNS = {QUOTE: "time,product,bid,bidVolume,ask,askVolume,last,lastVolume,side".split(","),
           DEPTH: "time,product,side,price,volume".split(","),
           BAR: "time,product,open,high,low,close,volume".split(",")}


class Unreadable(Exception):
    """The text is what to tell."""


# --- The market data -------------------------------------------------------------------------------------------------


def read_time(text, known={}):  # known: the seconds of texts without their fraction
    """Nanoseconds since 1970."""
    if text.isdigit() and len(text) != 8:
        number = int(text)
        return number * (SECOND if number < 10**11 else 10**6 if number < 10**14 else 10**3 if number < 10**17 else 1)
    whole, point, rest = text.partition(".")
    digits = len(rest) - len(rest.lstrip("0123456789"))
    whole += rest[digits:]
    seconds = known.get(whole)
    if seconds is None:
        iso = whole
        if "-" not in whole[:5]:  # 20240108:14:30:00
            iso = f"{whole[:4]}-{whole[4:6]}-{whole[6:8]}" + (f"T{whole[9:]}" if len(whole) > 8 else "")
        time = datetime.datetime.fromisoformat(iso)
        if time.tzinfo is None:
            time = time.replace(tzinfo=datetime.timezone.utc)
        known[whole] = seconds = (time - EPOCH) // datetime.timedelta(seconds=1)
    return seconds * SECOND + (int(rest[:digits].ljust(9, "0")) if point else 0)


def open_text(path):
    """The lines of a file, unpacked by what its first bytes are."""
    try:
        file = sys.stdin.buffer if path == "-" else open(path, "rb")
        buffered = file if path == "-" else io.BufferedReader(file.detach() if hasattr(file, "detach") else file, 1 << 20)
        head = buffered.peek(4)[:4]
    except OSError as error:
        raise Unreadable(f"{path}: cannot open: {error.strerror}") from None
    if head[:2] == b"\x1f\x8b":
        buffered = gzip.GzipFile(fileobj=buffered)
    elif head == b"\x28\xb5\x2f\xfd":
        try:
            unpacker = subprocess.Popen(["zstd", "-dcq"], stdin=buffered, stdout=subprocess.PIPE)
        except FileNotFoundError:
            raise Unreadable(f"{path}: is compressed by zstd, and there is no program zstd to unpack it") from None
        buffered = unpacker.stdout
    return io.TextIOWrapper(buffered, encoding="utf-8-sig", newline="\n")


# An event of the data. It sorts as the run takes them: by time, bars first, then by file and line.
Event = collections.namedtuple("Event", "time rank file line product cells")


class DataFile:
    """One file of recorded data, read as a stream of events."""

    def __init__(self, number, path, options):
        self.number, self.path, self.options = number, path, options
        self.lines = self._rows(open_text(path))
        self.line, header = next(self.lines, (0, None))
        if header is None:
            raise Unreadable(f"{path}: no header row")
        self.kind = next((kind for kind, columns in COLUMNS.items() if set(header) <= set(columns) and
                          {"time", "product"} <= set(header) and (kind == QUOTE or len(header) == len(columns))), None)
        if self.kind is None:
            raise Unreadable(f"{path}:{self.line}: no header row of quotes, depth or bars")
        self.has_quotes = bool({"bid", "ask"} & set(header))  # else a file in the form of quotes holds trades alone
        # Cells in the order of COLUMNS; those that the file does not have are its last one, which is empty.
        places = [header.index(column) if column in header else -1 for column in COLUMNS[self.kind]]
        self.order = None if places == list(range(len(header))) == list(range(len(places))) else operator.itemgetter(*places)
        self.width = len(header)
        first, size = [], 0
        for row in itertools.islice(self.lines, FIRST_ROWS):
            first.append(row)
            size += sum(map(len, row[1])) + len(row[1])
            if size >= FIRST_BYTES:
                break
        place = header.index("product")
        self.first_products = {cells[place] for _, cells in first if len(cells) > place}
        self.lines = itertools.chain(first, self.lines)

    def _rows(self, text):
        number = 0
        try:
            for number, line in enumerate(text, 1):
                line = line.rstrip("\r\n")
                if line:
                    yield number, (next(csv.reader([line])) if '"' in line else line.split(","))
        except (OSError, EOFError, UnicodeDecodeError, csv.Error) as error:
            raise Unreadable(f"{self.path}:{number + 1}: cannot be read: {error}") from None

    def _timed(self):
        """Lines with their times and cells in the usual order."""
        last_text, time, before = None, 0, None
        for line, cells in self.lines:
            if len(cells) != self.width:
                raise Unreadable(f"{self.path}:{line}: {len(cells)} cells instead of {self.width}")
            if self.order:
                cells = self.order(cells + [""])
            if cells[0] != last_text:
                try:
                    last_text, time = cells[0], read_time(cells[0])
                except ValueError:
                    raise Unreadable(f"{self.path}:{line}: not a time: {cells[0]}") from None
                if before is not None and time < before:
                    raise Unreadable(f"{self.path}:{line}: time runs backwards")
                before = time
            yield line, time, cells

    def events(self):
        number = self.number
        if self.kind == QUOTE:
            for line, time, cells in self._timed():
                yield Event(time, 1, number, line, cells[1], cells)
        elif self.kind == BAR:
            for line, time, cells in self._timed():
                yield Event(time + self.options.added_period(self.path, line, cells[1]), 0, number, line, cells[1], cells)
        else:
            for (time, product), rows in itertools.groupby(self._timed(), lambda row: (row[1], row[2][1])):
                while change := list(itertools.islice(rows, DEPTH_ROWS)):
                    yield Event(time, 1, number, change[0][0], product, [cells for _, _, cells in change])


# --- What the market shows -------------------------------------------------------------------------------------------


class Level:
    """What the exchange has at a price: the volume shown less what the market traded since, of which orders took a part."""

    __slots__ = ("price", "shown", "taken", "gone", "gone_at")

    def __init__(self, price, shown):
        self.price, self.shown, self.taken, self.gone, self.gone_at = price, shown, 0, 0, 0

    def free(self):
        """None where the data do not say how much there is."""
        return None if self.shown is None else self.shown - self.taken

    def show(self, volume):
        self.shown = volume
        if volume is not None:
            self.taken = min(self.taken, volume)

    def trade(self, volume):
        if self.shown is not None:
            self.show(max(0, self.shown - volume))

    def note_gone(self, volume, time):
        """What the data show less may be a trade that they hold later."""
        if self.shown is not None and volume is not None and volume < self.shown:
            self.gone, self.gone_at = self.gone + self.shown - volume, time

    def explain(self, volume, time, window):
        """What is left of a trade that the data show already in part."""
        if time - self.gone_at > window:
            self.gone = 0
        explained = min(volume, self.gone)
        self.gone -= explained
        return volume - explained


class Side:
    """Levels by price, as doubles; sign is 1 for bids and -1 for asks, so that sign * price is larger for the better one."""

    def __init__(self, sign):
        self.sign, self.levels, self.heap = sign, {}, []

    def show(self, price, volume, time):
        key = float(price)
        level = self.levels.get(key)
        if level is not None:
            level.note_gone(volume, time)
            level.show(volume)
        else:
            self.levels[key] = Level(price, volume)
            heapq.heappush(self.heap, -self.sign * key)

    def remove(self, price):
        self.levels.pop(float(price), None)

    def best(self):
        while self.heap:
            level = self.levels.get(-self.sign * self.heap[0])
            if level is not None:
                return level
            heapq.heappop(self.heap)
        return None

    def within(self, limit, beyond=False):
        """The levels that are as good as a price, or beyond it, the best first."""
        found, sign = [], self.sign
        worst = sign * limit
        while self.heap and (-self.heap[0] > worst or -self.heap[0] == worst and not beyond):
            key = -sign * heapq.heappop(self.heap)
            if key in self.levels and key not in found[-1:]:
                found.append(key)
        for key in found:
            heapq.heappush(self.heap, -sign * key)
        return [self.levels[key] for key in found]

    def trade_beyond(self, price):
        """What was better than the price of a trade is gone."""
        for level in self.within(price, beyond=True):
            level.trade(level.shown or 0)


class Market:
    """One product, as the exchange and the accounts see it after each event."""

    def __init__(self, terms, late, has_quotes, has_depth):
        self.late = late  # nanoseconds by which a trade may be recorded after what it caused
        self.terms, self.has_quotes, self.has_depth = terms, has_quotes, has_depth
        self.lot = Decimal(str(terms.get("lotSize") or 1))
        self.of_bars = terms["bars"]
        self.bids, self.asks = Side(1), Side(-1)
        self.quote = dict.fromkeys(("bid", "bidVolume", "ask", "askVolume"))
        self.last = None
        self.event = self.trade = self.bar = None  # of the last event: itself, (price, volume, side), the bar's prices
        self.bar_end = self.bar_begin = None
        self.traded = collections.Counter()  # what the event's fills had of its trade or bar, by side
        self.reached = set()  # levels that the event's fills reached under touch, while something was free

    def lots(self, text):
        lots = Decimal(text) / self.lot
        if lots != int(lots):
            raise ValueError(f"size {text} is no whole number of lots")
        return int(lots)

    def apply(self, event, kind, has_quotes):
        self.event, self.trade, self.bar = event, None, None
        self.traded, self.reached = collections.Counter(), set()
        if kind == QUOTE:
            self.has_quotes = self.has_quotes or has_quotes
            self._quote(*event.cells[2:])
        elif kind == DEPTH:
            self.has_depth = True
            for _, _, side, price, size in event.cells:
                levels, volume = self.bids if side == "BUY" else self.asks, self.lots(size)
                levels.show(Decimal(price), volume, event.time) if volume else levels.remove(Decimal(price))
        else:
            self.bar = [Decimal(cell) for cell in event.cells[2:6]] + [self.lots(event.cells[6])]
            period = self.terms["barPeriod"]
            self.bar_begin = event.time - int(Decimal(str(period)) * SECOND) if period else self.bar_end
            self.bar_end, self.last = event.time, self.bar[3]

    def _quote(self, bid, bid_size, ask, ask_size, last, last_size, side):
        if last or last_size:
            self.last = Decimal(last) if last else self.last
            self.trade = (float(self.last), self.lots(last_size) if last_size else None, side)
            if self.event.time > self.terms["at"]:  # the exchange begins with the run's first order
                self._trade(*self.trade)
        for name, levels, price, size in (("bid", self.bids, bid, bid_size), ("ask", self.asks, ask, ask_size)):
            if not price and not size:
                continue
            before = (self.quote[name], self.quote[name + "Volume"])
            if price:
                self.quote[name] = Decimal(price)
            if size:
                self.quote[name + "Volume"] = self.lots(size)
            now = (self.quote[name], self.quote[name + "Volume"])
            if self.has_depth or (self.trade and now == before):
                continue
            if now[0] != before[0]:
                levels.levels.clear()
            levels.show(*now, self.event.time)

    def _trade(self, price, volume, side):
        for levels, taker in ((self.asks, "BUY"), (self.bids, "SELL")):
            levels.trade_beyond(price)
            if side in ("", taker) and price in levels.levels:
                level = levels.levels[price]
                level.trade(level.explain(volume or 0, self.event.time, self.late))

    def _best(self, name, levels):
        if self.has_quotes or self.of_bars:
            return self.quote[name]
        best = levels.best()
        return best.price if best else None

    def adjust(self, line):
        """Goes on at the prices of after a split or a roll. Its book is what its quote shows."""
        if line["kind"] not in ("split", "roll"):
            return
        self.last = adjusted_price(line, self.last)
        for side, levels in (("bid", self.bids), ("ask", self.asks)):
            levels.levels.clear()
            self.quote[side] = adjusted_price(line, self.quote[side])
            if self.quote[side] is not None and not self.has_depth:
                levels.show(self.quote[side], self.quote[side + "Volume"], 0)

    def mark(self, net):
        """What a position counts at, None without quote and trade."""
        best = self._best("bid", self.bids) if net > 0 else self._best("ask", self.asks)
        return self.last if best is None else best

    def mid(self):
        """Of the best bid and ask, else the last price; None without."""
        bid, ask = self._best("bid", self.bids), self._best("ask", self.asks)
        return self.last if bid is None or ask is None else (bid + ask) / 2

    def opposite(self, side):
        return self.asks if side == "BUY" else self.bids


# --- Money -----------------------------------------------------------------------------------------------------------


def round_price(numerator, denominator):
    """To ten places, halves away from zero."""
    scaled = fractions.Fraction(numerator) / denominator * 10**10
    rounded = (abs(scaled) + fractions.Fraction(1, 2)) // 1
    return Decimal(int(rounded) if scaled >= 0 else -int(rounded)).scaleb(-10)


def adjusted_price(line, price):
    """What a price from before the split or roll of a line is after it."""
    if price is None or line["kind"] not in ("split", "roll"):
        return price
    if line["kind"] == "roll":
        return price + Decimal(line["value"])
    new, old = map(int, line["value"].split(":"))
    return round_price(fractions.Fraction(price) * old, new)


class Account:
    """A job in a product."""

    def __init__(self, terms, market, fees=None):
        self.market = market  # None for a strategy, whose marks are not known
        self.point = Decimal(str(terms["pointValue"] or 1))
        self.fee_of = {True: Decimal(str(terms["makerFee"] or 0)), False: Decimal(str(terms["takerFee"] or 0))}
        self.is_rate = terms["feeIsRate"]
        self.minimum = Decimal(str(fees["minimumFee"])) if fees and fees["minimumFee"] is not None else None
        self.by_month = bool(fees) and fees["tierPeriod"] == "month"
        self.tiers = []  # from how many lots on, and the fee by whether it is a maker's
        for tier in filter(None, fees["tiers"].split(", ") if fees else []):
            start, maker, taker = tier.split()
            self.tiers.append((int(start), {True: Decimal(maker), False: Decimal(taker)}))
        self.traded, self.month, self.raw_fees = 0, None, {}  # lots that count for the tiers; fees of orders without minimum
        self.net, self.cash, self.fees = 0, NOTHING, NOTHING
        self.average = self.cost = NOTHING  # cost: what the lots of the position cost, a sum of price * lots
        self.mark = None

    def _fee(self, price, fill):
        """Of a fill: by the tier that was reached before it, and against the minimum of its order."""
        if self.by_month and fill["time"][:6] != self.month:
            self.traded, self.month = 0, fill["time"][:6]
        fee_of = next((fee for start, fee in reversed(self.tiers) if start <= self.traded), self.fee_of)
        self.traded += fill["volume"]
        fee = fee_of[fill["maker"]] * fill["volume"] * (abs(price) * self.point if self.is_rate else 1)
        if self.minimum is None:
            return fee
        before = self.raw_fees.get(fill["order"])
        self.raw_fees[fill["order"]] = (before or 0) + fee
        return max(self.raw_fees[fill["order"]], self.minimum) - (0 if before is None else max(before, self.minimum))

    def book(self, price, signed, fill):
        """Gives the fee."""
        volume, fee = fill["volume"], self._fee(price, fill)
        self.fees += fee
        self.cash -= price * signed * self.point + fee + Decimal(repr(fill["impact"] or 0)) * volume * self.point
        net = self.net + signed
        if self.net * signed >= 0:
            self.cost += price * volume
        elif net * self.net > 0:
            self.cost -= round_price(self.cost * volume, abs(self.net))
        else:
            self.cost = price * abs(net)
        self.net = net
        self.average = round_price(self.cost, abs(net)) if net else NOTHING
        self.value()
        return fee

    def adjust(self, adjustment):
        """Books funding, a dividend, a split or a roll. Gives what its line cash should say."""
        kind, text, mark = adjustment["kind"], adjustment["value"], self.average if self.mark is None else self.mark
        if kind == "split":
            new, old = map(int, text.split(":"))
            lots = abs(self.net) * new // old * (1 if self.net > 0 else -1)
            amount = round_price(mark * self.point * (self.net * new - lots * old), new)
            share = fractions.Fraction(lots * old, self.net * new)
            self.cost = round_price(fractions.Fraction(self.cost) * share, 1) if share != 1 else self.cost
            self.net = lots
            self.average = round_price(self.cost, abs(lots)) if lots else NOTHING
        elif kind == "roll":
            amount = Decimal(text) * self.net * self.point
            self.cost += Decimal(text) * abs(self.net)
            self.average = round_price(self.cost, abs(self.net))
        else:
            amount = -Decimal(text) * mark * self.net * self.point if kind == "funding" else Decimal(text) * self.net * self.point
        self.cash += -amount if kind == "roll" else amount
        self.mark = adjusted_price(adjustment, self.mark) if self.net else None
        return {"amount": amount, "position": self.net}

    def value(self):
        self.mark = self.market.mark(self.net) if self.market and self.net else None

    def profit(self, mark=None):
        mark = self.mark if mark is None else mark
        return self.cash + self.net * (self.average if mark is None else mark) * self.point

    def open(self):
        return NOTHING if self.mark is None else self.net * (self.mark - self.average) * self.point


class Purse:
    """A job's accounts in one currency, and how far their profit fell."""

    def __init__(self):
        self.accounts, self.peak, self.drawdown, self.worst, self.met_bar = [], NOTHING, NOTHING, NOTHING, False

    def is_known(self):
        return all(account.market for account in self.accounts)

    def profit(self):
        return sum(account.profit() for account in self.accounts)

    def look(self, barred=None):
        profit = self.profit()
        if barred is not None and barred.net:
            self.met_bar = True
            low = barred.market.bar[2] if barred.net > 0 else barred.market.bar[1]
            self.worst = max(self.worst, self.peak - (profit - barred.profit() + barred.profit(low)))
        self.peak = max(self.peak, profit)
        self.drawdown = max(self.drawdown, self.peak - profit)
        self.worst = max(self.worst, self.peak - profit)


# --- The record ------------------------------------------------------------------------------------------------------


class Order:
    def __init__(self, number, job):
        self.number, self.job, self.product, self.side, self.type = number, job, None, None, None
        self.exec, self.requests, self.events, self.fills = "", [], [], []


class Record:
    """The lines of a record that concern orders and money, in their order."""

    def __init__(self, path, faults):
        self.path, self.faults = path, faults
        self.orders, self.terms, self.fees, self.exchange = {}, {}, {}, {}
        self.impact = None  # of the fill that follows
        self.cash = []  # and the adjustments of which it comes
        self.fills, self.results, self.money, self.started, self.stopped = [], {}, {}, {}, {}
        self.trips, self.days = [], []
        self.last_line, self.ends = 0, []  # the first and the last line, of a record that has them
        takers = {"order": self._order, "orderEvent": self._event, "fill": self._fill,
                  "product": lambda line: self.terms.setdefault(line["product"], line),
                  "impact": lambda line: setattr(self, "impact", line["ofLot"]),
                  "adjustment": self.cash.append, "cash": self.cash.append,
                  "fees": lambda line: self.fees.setdefault(line["product"], line),
                  "exchange": lambda line: self.exchange.update(line),
                  "jobStarted": lambda line: self.started.setdefault(line["job"], line),
                  "jobStopped": lambda line: self.stopped.setdefault(line["job"], line),
                  "trip": lambda line: self.trips.append(line), "day": lambda line: self.days.append(line),
                  "result": lambda line: self.results.setdefault(line["job"], line),
                  "money": lambda line: self.money.setdefault((line["job"], line["currency"]), line),
                  "run": lambda line: self.ends.append(line), "end": lambda line: self.ends.append(line)}
        try:
            with open_text(path) as text:
                for number, line in enumerate(text, 1):
                    entry = json.loads(line)
                    if entry["sequence"] != number:
                        faults.tell(number, f"has sequence {entry['sequence']}: a line is missing or moved")
                    self.last_line = entry["line"] = number
                    take = takers.get(entry["type"])
                    if take:
                        entry["at"] = read_time(entry["time"]) if entry["time"] else 0
                        take(entry)
        except (OSError, EOFError, UnicodeDecodeError) as error:
            raise Unreadable(f"{path}: cannot be read: {error}") from None
        except (ValueError, TypeError) as error:
            raise Unreadable(f"{path}:{self.last_line + 1}: is no line of a record: {error}") from None
        except KeyError as error:
            raise Unreadable(f"{path}:{number}: has no key {error}") from None
        self._check_end()

    def _find(self, entry):
        return self.orders.setdefault(entry["order"], Order(entry["order"], entry["job"]))

    def _order(self, entry):
        order = self._find(entry)
        order.requests.append(entry)
        if entry["request"] in ("new", "flatten"):
            order.product, order.side, order.type, order.exec = \
                entry["product"], entry["side"], entry["orderType"], entry["exec"]

    def _event(self, entry):
        entry["at"] = read_time(entry["exchangeTime"])
        self._find(entry).events.append(entry)

    def _fill(self, entry):
        order = self._find(entry)
        entry["impact"], self.impact = self.impact, None
        entry["told"] = None  # the event of it
        order.fills.append(entry)
        self.fills.append(entry)

    def _check_end(self):
        jobs = {order.job for order in self.orders.values()}
        missing = [f"jobStopped of {job}" for job in {**self.started, **dict.fromkeys(jobs)} if job not in self.stopped]
        missing += [f"result of {job}" for job in jobs if job not in self.results]
        missing += [f"money of {job}" for job, currency in {(fill["job"], self.terms[fill["product"]]["currency"])
                    for fill in self.fills if fill["product"] in self.terms} if (job, currency) not in self.money]
        if not missing and self.ends and self.ends[-1]["type"] != "end":
            missing = ["end"]
        if missing or not self.stopped:
            raise Unreadable(f"{self.path}: the record has no end: after line {self.last_line} there is no "
                             f"{sorted(missing)[0] if missing else 'jobStopped'}")


class Faults:
    SHOWN = 20

    def __init__(self, path):
        self.path, self.count, self.lines = path, 0, set()

    def tell(self, line, text):
        self.count += 1
        if self.count <= self.SHOWN:
            print(f"{self.path}:{line}: {text}")


def same(told, exact):
    """Whether a figure of the record is the exact one: rounded to ten places, as the nearest double."""
    return told == (None if exact is None else float(round_price(exact, 1)))


def told(value):
    return "null" if value is None else f"{float(value):.17g}" if isinstance(value, Decimal) and \
        Decimal(repr(float(value))) != value else str(value)

# --- The walk through data and fills ---------------------------------------------------------------------------------


class Walk:
    """Takes events and fills in their order and counts the money. What a program asks of them it adds in operations of its own:
    _examine, _examine_pair, _booked, _looked."""

    def __init__(self, record, files, faults, options):
        self.record, self.files, self.faults = record, files, faults
        self.first_products = {kind: {name for file in files if file.kind == kind and (kind != QUOTE or file.has_quotes)
                                      for name in file.first_products} for kind in COLUMNS}
        self.markets, self.accounts, self.purses = {}, {}, collections.defaultdict(Purse)
        self.by_product = collections.defaultdict(list)  # of accounts, with their purses
        for name, terms in record.terms.items():
            if not terms["strategy"]:
                late = int((self.record.exchange.get("lateTrades") or 0) * 1_000_000)
                self.markets[name] = Market(terms, late, name in self.first_products[QUOTE], name in self.first_products[DEPTH])
        self.row, self.event = 0, None
        self.events = heapq.merge(*(file.events() for file in files)) if len(files) > 1 else files[0].events()
        self._cut(record.ends[0].get("run", {}).get("settings", {}) if record.ends else {})
        self.arrived = False  # a fill upon the arrival of an order has come since the last event
        self.progress = options.progress
        self.adjustment = {"product": None}  # the latest

    def _cut(self, settings):
        """Leaves the part of the data that was run. What is before it only makes the market."""
        def get(name):
            return read_time(settings[name]) if settings.get(name, "none") != "none" else None
        begin, end = get("from"), get("to")

        def is_before(event, time):
            period = self.record.terms.get(event.product, {}).get("barPeriod") or 0
            return event.time <= time if event.rank == 0 and period <= DAY / 2 else event.time < time
        events = self.events
        if end is not None:
            events = itertools.takewhile(lambda event: is_before(event, end), events)
        self.events = events = iter(events)
        self.following = next(events, None)
        while begin is not None and self.following and is_before(self.following, begin):
            event, file = self.following, self.files[self.following.file]
            if event.product in self.markets:
                self.markets[event.product].apply(event, file.kind, file.has_quotes)
            self.following = next(events, None)

    def run(self):
        fills = self.record.fills
        place, end = 0, max((result["row"] for result in self.record.results.values()), default=0)
        cash = collections.deque(self.record.cash)
        while place < len(fills) or cash:
            if cash and cash[0]["row"] <= self.row and (place == len(fills) or fills[place]["line"] > cash[0]["line"]):
                self._adjust(cash.popleft())
                continue
            fill = fills[place] if place < len(fills) else cash[0]
            if place == len(fills) or fill["row"] > self.row:
                self._step(fill["line"])
                place = self._take(place, arriving=False)
                self._look()
            else:
                place = self._take(place, arriving=True)
        while self.row < end:
            self._step(self.record.last_line)
            self._look()

    def _adjust(self, line):
        if line["type"] == "adjustment":
            self.adjustment = line
            if line["product"] in self.markets:
                self.markets[line["product"]].adjust(line)
            return
        account, purse = self.accounts.get((line["job"], line["product"]), (None, None))
        if account is None or not account.net or line["product"] != self.adjustment["product"]:
            return self.faults.tell(line["line"], f"cash of {line['job']}, which holds no {line['product']}")
        for key, exact in account.adjust(self.adjustment).items():
            if not same(line[key], exact):
                self.faults.tell(line["line"], f"{self.adjustment['kind']} of {line['job']}: {key} {told(line[key])}, "
                                 f"should be {told(exact)}")
        purse.look()

    def _step(self, line):
        if self.following is None:
            raise Unreadable(f"{self.record.path}:{line}: the record goes on where the data end, after row {self.row}")
        self.row, self.event, self.arrived = self.row + 1, self.following, False
        self.following = next(self.events, None)
        market = self.markets.get(self.event.product)
        if market:
            try:
                file = self.files[self.event.file]
                market.apply(self.event, file.kind, file.has_quotes)
            except (ValueError, decimal.InvalidOperation) as error:
                raise Unreadable(f"{self._where()}: cannot be read: {error}") from None
            for account, _ in self.by_product[self.event.product]:
                account.value()
        if self.progress and self.row % 100_000 == 0:
            print(f"\r{self.row:,} rows", end="", file=sys.stderr, flush=True)

    def _where(self):
        return f"{self.files[self.event.file].path}:{self.event.line}" if self.event else "before the data"

    def tell(self, fill, text):
        self.faults.tell(fill["line"], f"fill of order {fill['order']}, row {self.row} ({self._where()}): {text}")

    def _is_arriving(self, fill):
        """Whether a fill of the last event's time was made upon a request that came after that event: it has not been
        answered yet."""
        if self.event is None or fill["at"] > self.event.time or self.arrived:
            return True
        order = self.record.orders[fill["order"]]
        before = [line["line"] for line in order.requests + order.events if line["line"] < fill["line"]]
        answer = next((event for event in order.events if event["line"] > fill["line"]), None)
        if answer and (answer["event"] not in ("accepted", "amended") or answer["at"] != fill["at"]):
            return False
        return any(request["line"] == max(before) and request["at"] == fill["at"] for request in order.requests)

    def _take(self, place, arriving):
        """Books the fills of an event, or those upon the arrival of one order. Gives the place of the next fill."""
        fills, begin, touched, family = self.record.fills, place, set(), set()
        while place < len(fills) and fills[place]["row"] <= self.row:
            fill = fills[place]
            pair = fills[place + 1] if fill["cause"] == "ownOrder" and place + 1 < len(fills) else fill
            if not arriving and (self._is_arriving(fill) or self._is_arriving(pair)):
                break
            self.arrived = arriving
            if fill["row"] < self.row:
                self.tell(fill, f"has row {fill['row']}, in front of that of an earlier fill")
            if fill["cause"] == "ownOrder":
                self._examine_pair(fill, pair)
            for one in (fill, pair) if pair is not fill else (fill,):
                touched.add(self._book(one, arriving))
            place += 1 + (pair is not fill)
            family |= {fill["order"], pair["order"]}
            if arriving and not (place < len(fills) and self._goes_on(fills[place:place + 2], family)):
                break
        if arriving:
            for purse in touched:
                purse.look()
                self._looked(purse)
        return place if place > begin or not arriving else begin + 1

    def _goes_on(self, fills, family):
        """Whether what comes next is of the order that has arrived, or of a child that its fills made."""
        taker = fills[-1] if fills[0]["cause"] == "ownOrder" and fills[0]["maker"] else fills[0]
        events = self.record.orders[taker["order"]].events
        return taker["order"] in family or bool(events) and events[0]["parent"] in family and taker["at"] == events[0]["at"]

    def _account(self, fill):
        key = fill["job"], fill["product"]
        if key not in self.accounts:
            terms = self.record.terms.get(fill["product"])
            if terms is None:
                raise Unreadable(f"{self.record.path}:{fill['line']}: there is no line product of {fill['product']}")
            account = self.accounts[key] = Account(terms, self.markets.get(fill["product"]), self.record.fees.get(fill["product"]))
            purse = self.purses[fill["job"], terms["currency"]]
            purse.currency = terms["currency"]
            purse.accounts.append(account)
            self.by_product[fill["product"]].append((account, purse))
            self.accounts[key] = account, purse
        return self.accounts[key]

    def _look(self):
        """Once an event's fills are booked."""
        for account, purse in self.by_product[self.event.product]:
            market = account.market
            purse.look(account if market and market.bar else None)
            self._looked(purse)

    def _book(self, fill, arriving):
        account, purse = self._account(fill)
        self._examine(fill, arriving)
        levels = account.market.opposite(fill["side"]).levels if account.market and fill["cause"] == "took" else {}
        price = levels[fill["price"]].price if fill["price"] in levels else Decimal(repr(fill["price"]))
        signed = fill["volume"] if fill["side"] == "BUY" else -fill["volume"]
        fee = account.book(price, signed, fill)
        if not account.market:
            account.mark = None if fill["mark"] is None else Decimal(repr(fill["mark"]))
        self._booked(fill, account, price, fee)
        return purse

    def _examine(self, fill, arriving):
        pass

    def _examine_pair(self, fill, other):
        pass

    def _booked(self, fill, account, price, fee):
        pass

    def _looked(self, purse):
        pass


class Options:
    """What the record says of the data, and the command line where it does not."""

    def __init__(self):
        self.progress, self.record = sys.stderr.isatty(), None

    def added_period(self, path, line, product):
        """To the time of a bar, to have that of its end."""
        if self.record.exchange.get("barTime", "end") == "end":
            return 0
        period = self.record.terms.get(product, {}).get("barPeriod")
        if not period:
            raise Unreadable(f"{path}:{line}: the record tells no period of the bars of {product}")
        return int(Decimal(str(period)) * SECOND)


def open_run(record_path, data, faults):
    """The record, its data files, and what it says of them."""
    decimal.getcontext().prec = 400
    decimal.getcontext().traps[decimal.Inexact] = True
    options = Options()
    record = options.record = Record(record_path, faults)
    return record, [DataFile(number, path, options) for number, path in enumerate(data)], options
