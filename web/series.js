// Columns of points over time. A series is {name, ms, close} and, where its points stand for buckets, {low, high} beside close: what there was
// since the point before. A value that holds until the next has isStep, and its last holds for `until`.

// The first index at or after a time.
function lowerBound(ms, time) {
  let from = 0;
  let to = ms.length;
  while (from < to) {
    const middle = (from + to) >> 1;
    if (ms[middle] < time) from = middle + 1;
    else to = middle;
  }
  return from;
}

function nearestIndex(ms, time) {
  const after = lowerBound(ms, time);
  if (after === 0) return ms.length === 0 ? -1 : 0;
  if (after === ms.length) return after - 1;
  return time - ms[after - 1] <= ms[after] - time ? after - 1 : after;
}

// What of a series a picture needs, a column of pixels at a time: first, lowest, highest and last of what falls on it. One point more on
// either side, so that lines come from outside.
function thin(series, [from, to], toX) {
  const begin = Math.max(0, lowerBound(series.ms, from) - 1);
  const end = Math.min(series.ms.length, lowerBound(series.ms, to) + 1);
  const columns = [];
  let last = null;
  for (let index = begin; index < end; ++index) {
    const close = series.close[index];
    if (close === null) continue;
    const low = series.low ? series.low[index] : close;
    const high = series.high ? series.high[index] : close;
    const x = toX(series.ms[index]);
    if (last !== null && Math.round(x) === Math.round(last.x)) {
      last.low = Math.min(last.low, low);
      last.high = Math.max(last.high, high);
      last.close = close;
      last.points += 1;
    } else {
      last = {x, first: close, low, high, close, points: 1};
      columns.push(last);
    }
  }
  return columns;
}

// Lowest and highest of a series in a window. The point before counts, whose line comes in; with less than two in it, so does the next.
function extent(series, [from, to]) {
  const inside = lowerBound(series.ms, from);
  const begin = Math.max(0, inside - 1);
  const past = lowerBound(series.ms, to);
  const end = past - inside < 2 ? Math.min(series.ms.length, past + 1) : past;
  let low = Infinity;
  let high = -Infinity;
  for (let index = begin; index < end; ++index) {
    if (series.close[index] === null) continue;
    low = Math.min(low, series.low ? series.low[index] : series.close[index]);
    high = Math.max(high, series.high ? series.high[index] : series.close[index]);
  }
  return [low, high];
}

// Of one or more pairs of low and high; null where there is none.
function join(pairs) {
  const low = Math.min(...pairs.map(pair => pair[0]));
  const high = Math.max(...pairs.map(pair => pair[1]));
  return low <= high ? [low, high] : null;
}

// Of all points of some series, and of the markers beside them.
function timeExtent(list) {
  return join(list.filter(({ms}) => ms.length > 0).map(({ms, until}) => [ms[0], Math.max(ms[ms.length - 1], until || -Infinity)]));
}
