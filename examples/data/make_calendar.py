#!/usr/bin/env python3
"""Writes calendar_quotes.csv to standard output: two futures of one underlying, NEAR and FAR, for two hours.

Both follow one fair price; the difference between them wanders about 1.50 and comes back to it. Whole numbers and a
generator written out here, so the bytes are the same everywhere.
"""

state = 20240108


def draw(below):
    """A number from 0 to below - 1, by the high bits of a 64-bit linear congruence."""
    global state
    state = (state * 6364136223846793005 + 1442695040888963407) % 2**64
    return (state >> 33) * below >> 31


def text(ticks):
    return f"{ticks * 25 // 100}.{ticks * 25 % 100:02d}"


print("time,product,bid,bidVolume,ask,askVolume,last,lastVolume,side")
time = 1704724200000  # milliseconds
fair, basis = 16000, 600  # the price in ticks of 0.25; the difference in hundredths of a tick, 6 ticks
end = time + 7200000
while time < end:
    time += 1 + draw(3000)
    if draw(3) == 0:
        fair += draw(3) - 1
    basis += (600 - basis) // 40 + draw(121) - 60
    name, middle = ("NEAR", fair) if draw(2) == 0 else ("FAR", fair + (basis + 50) // 100)
    bid = middle - draw(2)
    ask = bid + 1 + (draw(6) == 0)
    last = ",,"
    if draw(5) == 0:
        buys = draw(2)
        last = f"{text(ask if buys else bid)},{1 + draw(8)},{'BUY' if buys else 'SELL'}"
    print(f"{time},{name},{text(bid)},{1 + draw(20)},{text(ask)},{1 + draw(20)},{last}")
