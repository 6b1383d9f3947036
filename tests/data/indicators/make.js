// Writes bars.csv and expected.csv; README.md tells how to run it and what stands in them. With a file of bars as argument
// (columns open,high,low,close,volume among others) it takes those instead of making some. What the packages agree on, and
// from which bar on, goes to standard error.
const fs = require('fs');
const ti = require('technicalindicators');

// Bars of a random walk in ticks of 0.05, from a fixed seed, with gaps, quiet stretches and equal highs and lows.
function makeBars(count) {
  let seed = 20240131n;
  const random = limit => {
    seed = (seed * 6364136223846793005n + 1442695040888963407n) & ((1n << 64n) - 1n);
    return Number((seed >> 33n) % BigInt(limit));
  };
  const bars = [];
  let close = 2000;
  for (let i = 0; i < count; ++i) {
    const reach = i % 70 < 12 ? 4 : 25;
    const open = close + random(9) - 4;
    close = open + random(2 * reach + 1) - reach + (i % 100 < 50 ? 1 : -1);
    const high = Math.max(open, close) + random(reach);
    const low = Math.min(open, close) - random(reach);
    const [o, h, l, c] = [open, high, low, close].map(ticks => +(ticks / 20).toFixed(2));
    bars.push({open: o, high: h, low: l, close: c, volume: 100 + random(9900)});
  }
  return bars;
}

function readBars(file) {
  const [header, ...rows] = fs.readFileSync(file, 'utf8').trim().split('\n').map(line => line.split(','));
  return rows.map(row => Object.fromEntries(header.map((name, i) => [name, +row[i]])));
}

// Straight from the definitions, at each bar over the whole window.
const mean = values => values.reduce((a, b) => a + b, 0) / values.length;
const middle = bars => (Math.max(...bars.map(b => b.high)) + Math.min(...bars.map(b => b.low))) / 2;
const windows = (items, period) => items.slice(period - 1).map((_, i) => items.slice(i, i + period));
const wilder = (values, period) => values.slice(period).reduce(
    (out, x) => [...out, out[out.length - 1] + (x - out[out.length - 1]) / period], [mean(values.slice(0, period))]);

// The stop and reverse, written as told in Wilder's book: two cases, prices as they are.
function parabolic(bars, step, maximum) {
  const out = [];
  let long = !(bars[0].low - bars[1].low > Math.max(0, bars[1].high - bars[0].high));
  let stop = long ? bars[0].low : bars[0].high;
  let extreme = long ? bars[1].high : bars[1].low;
  let factor = step;
  for (let i = 1; i < bars.length; ++i) {
    const bar = bars[i], before = bars[i - 1];
    if (long && bar.low <= stop) {
      long = false, stop = Math.max(extreme, before.high, bar.high), extreme = bar.low, factor = step;
    } else if (!long && bar.high >= stop) {
      long = true, stop = Math.min(extreme, before.low, bar.low), extreme = bar.high, factor = step;
    } else if (long && bar.high > extreme) {
      extreme = bar.high, factor = Math.min(maximum, factor + step);
    } else if (!long && bar.low < extreme) {
      extreme = bar.low, factor = Math.min(maximum, factor + step);
    }
    out.push(stop);
    stop += factor * (extreme - stop);
    stop = long ? Math.min(stop, before.low, bar.low) : Math.max(stop, before.high, bar.high);
  }
  return out;
}

async function main() {
  const ts = await import('trading-signals');
  const tulip = new (require('@ixjb94/indicators').IndicatorsSync)();

  const given = process.argv[2];
  const bars = given ? readBars(given) : makeBars(300);
  const [open, high, low, close, volume] = ['open', 'high', 'low', 'close', 'volume'].map(k => bars.map(b => b[k]));
  const typical = bars.map(b => (b.high + b.low + b.close) / 3);
  const columns = [];

  // Each source gives its values up to the newest bar; those before its first one are missing.
  const add = (name, sources) => columns.push({name, sources: Object.entries(sources)});
  // A trading-signals object fed bar by bar.
  const feed = (indicator, items, pick = x => x) =>
      items.map(item => { indicator.update(item, false); return indicator.getResult(); })
          .filter(x => x !== null && x !== undefined).map(pick);

  for (const period of [5, 20]) {
    const of = `period=${period}:value`;
    const ema = values => ti.ema({period, values});
    const one = ema(close), two = ema(one), three = ema(two);
    const late = (values, like) => values.slice(-like.length);  // cut to where another one starts
    add(`SMA ${of}`, {ti: ti.sma({period, values: close}), tulip: tulip.sma(close, period)});
    add(`EMA ${of}`, {ti: ema(close), tulip: tulip.ema(close, period)});
    add(`WMA ${of}`, {ti: ti.wma({period, values: close}), tulip: tulip.wma(close, period)});
    add(`DEMA ${of}`, {'ti.ema': two.map((x, i) => 2 * late(one, two)[i] - x), tulip: tulip.dema(close, period)});
    add(`TEMA ${of}`, {'ti.ema': three.map((x, i) => 3 * late(one, three)[i] - 3 * late(two, three)[i] + x), tulip: tulip.tema(close, period)});
    add(`HMA ${of}`, {tulip: tulip.hma(close, period)});
    add(`KAMA ${of}`, {signals: feed(new ts.KAMA(period), close).slice(1), tulip: tulip.kama(close, period)});
    add(`VWMA ${of}`, {signals: feed(new ts.VWMA(period), bars), tulip: tulip.vwma(close, volume, period)});
  }
  for (const [source, values] of Object.entries({
    open, high, low, volume, typical, median: bars.map(b => (b.high + b.low) / 2),
    weighted: bars.map(b => (b.high + b.low + 2 * b.close) / 4), average: bars.map(b => (b.open + b.high + b.low + b.close) / 4)})) {
    add(`SMA period=7 source=${source}:value`, {ti: ti.sma({period: 7, values})});
  }

  const rsi = tulip.rsi(close, 14);
  add('RSI period=14:value', {tulip: rsi, signals: feed(new ts.RSI(14), close)});
  const macd = ti.macd({values: close, fastPeriod: 12, slowPeriod: 26, signalPeriod: 9, SimpleMAOscillator: false, SimpleMASignal: false});
  const has = (list, key) => list.map(x => x[key]).filter(x => x !== undefined && !Number.isNaN(x));
  add('MACD fast=12 slow=26 signal=9:macd', {ti: has(macd, 'MACD')});
  add('MACD fast=12 slow=26 signal=9:signal', {ti: has(macd, 'signal')});
  add('MACD fast=12 slow=26 signal=9:histogram', {ti: has(macd, 'histogram')});
  const place = (value, lows, highs) => 100 * (value - Math.min(...lows)) / (Math.max(...highs) - Math.min(...lows));
  for (const [kSmoothing, dSmoothing] of [[3, 3], [1, 4]]) {
    const of = `STOCHASTIC period=14 kSmoothing=${kSmoothing} dSmoothing=${dSmoothing}`;
    const fast = windows(bars, 14).map(w => place(w[13].close, w.map(b => b.low), w.map(b => b.high)));
    const k = windows(fast, kSmoothing).map(mean);
    const [tulipK, tulipD] = tulip.stoch(high, low, close, 14, kSmoothing, dSmoothing);
    add(`${of}:k`, {definition: k, tulip: tulipK});
    add(`${of}:d`, {definition: windows(k, dSmoothing).map(mean), tulip: tulipD});
  }
  const stochRsi = ti.stochasticrsi({values: close, rsiPeriod: 14, stochasticPeriod: 10, kPeriod: 3, dPeriod: 4});
  // The package rounds the index to hundredths: the definition over another package's index instead.
  const k = windows(windows(rsi, 10).map(w => place(w[9], w, w)), 3).map(mean);
  add('STOCHRSI rsiPeriod=14 period=10 kSmoothing=3 dSmoothing=4:k', {definition: k, ti: has(stochRsi, 'k')});
  add('STOCHRSI rsiPeriod=14 period=10 kSmoothing=3 dSmoothing=4:d', {definition: windows(k, 4).map(mean), ti: has(stochRsi, 'd')});
  add('CCI period=20:value', {ti: ti.cci({high, low, close, period: 20})});
  add('WILLIAMS_R period=14:value', {tulip: tulip.willr(high, low, close, 14)});
  add('ROC period=12:value', {ti: ti.roc({values: close, period: 12})});
  add('MOMENTUM period=10:value', {tulip: tulip.mom(close, 10)});

  add('STDDEV period=20:value', {tulip: tulip.stddev(close, 20)});
  const bands = tulip.bbands(close, 20, 2.5);
  for (const [i, line] of ['lower', 'middle', 'upper'].entries()) {
    add(`BOLLINGER period=20 deviations=2.5:${line}`,
        {tulip: bands[i]});
  }
  const atr = ti.atr({high, low, close, period: 14});
  add('ATR period=14:value', {ti: atr, signals: feed(new ts.ATR(14), bars), tulip: tulip.atr(high, low, close, 14)});
  const ema = ti.ema({period: 20, values: close}).slice(-atr.length);
  const keltner = feed(new ts.KeltnerChannels({atrInterval: 14, emaInterval: 20, multiplier: 1.5}), bars);
  [['upper', 1.5], ['lower', -1.5]].forEach(([line, by]) => add(`KELTNER period=20 atrPeriod=14 multiplier=1.5:${line}`,
      {ti: ema.map((x, i) => x + by * atr.slice(-ema.length)[i]), signals: has(keltner, line)}));
  const donchian = feed(new ts.DonchianChannels(20), bars);
  for (const line of ['upper', 'middle', 'lower']) add(`DONCHIAN period=20:${line}`, {signals: has(donchian, line)});

  const adx = ti.adx({high, low, close, period: 14});
  // The package gives the two beside a result of the index only.
  const steps = windows(bars, 2);
  const range = wilder(steps.map(([a, b]) => Math.max(b.high, a.close) - Math.min(b.low, a.close)), 14);
  const ups = steps.map(([a, b]) => b.high - a.high), downs = steps.map(([a, b]) => a.low - b.low);
  const moves = (one, other) => wilder(one.map((x, i) => x > 0 && x > other[i] ? x : 0), 14).map((x, i) => 100 * x / range[i]);
  add('ADX period=14:adx', {ti: has(adx, 'adx')});
  add('ADX period=14:plusDI', {definition: moves(ups, downs), ti: has(adx, 'pdi')});
  add('ADX period=14:minusDI', {definition: moves(downs, ups), ti: has(adx, 'mdi')});
  for (const [step, maximum] of [[0.02, 0.2], [0.05, 0.1]]) {
    add(`PSAR acceleration=${step} maximum=${maximum}:value`,
        {definition: parabolic(bars, step, maximum), signals: feed(new ts.PSAR({accelerationStep: step, accelerationMax: maximum}), bars), ti: ti.psar({high, low, step, max: maximum}), tulip: tulip.psar(high, low, step, maximum)});
  }
  const [down, up] = tulip.aroon(high, low, 25);
  add('AROON period=25:up', {tulip: up});
  add('AROON period=25:down', {tulip: down});
  add('AROON period=25:oscillator', {tulip: tulip.aroonosc(high, low, 25)});
  const cloud = feed(new ts.IchimokuCloud(), bars);
  const of = 'ICHIMOKU conversion=9 base=26 span=52 displacement=26';
  const nines = windows(bars, 9).map(middle), bases = windows(bars, 26).map(middle);
  add(`${of}:conversion`, {definition: nines, signals: has(cloud, 'conversion')});
  add(`${of}:base`, {definition: bases, signals: has(cloud, 'base')});
  // The package leaves the displacement to its user.
  add(`${of}:spanA`, {definition: bases.map((b, i) => (b + nines[i + 17]) / 2).slice(0, -26), signals: has(cloud, 'spanA').slice(0, -26)});
  add(`${of}:spanB`, {definition: windows(bars, 52).map(middle).slice(0, -26), signals: has(cloud, 'spanB').slice(0, -26)});
  add('LINREG_SLOPE period=14:value', {tulip: tulip.linregslope(close, 14)});

  add('OBV:value', {tulip: tulip.obv(close, volume), ti: ti.obv({close, volume})});
  add('MFI period=14:value', {tulip: tulip.mfi(high, low, close, volume, 14)});
  add('VWAP:value', {ti: ti.vwap({high, low, close, volume}), definition: bars.map((_, i) =>
      mean(typical.slice(0, i + 1).map((p, j) => p * volume[j])) / mean(volume.slice(0, i + 1)))});

  for (const {name, sources} of columns) {
    const [[first, values], ...others] = sources;
    const report = others.map(([other, otherValues]) => {
      let bar = bars.length;  // counted down to where they part
      const a = values.slice().reverse(), b = otherValues.slice().reverse();
      for (let i = 0; i < a.length && i < b.length && Math.abs(a[i] - b[i]) <= 1e-7 * Math.max(1, Math.abs(a[i])); ++i) --bar;
      return `${other} from ${bar} (it starts ${bars.length - b.length})`;
    });
    console.error(`${name}: ${first} starts ${bars.length - values.length}; ${report.join(', ')}`);
  }

  // All bars until the last of them is warm, then every tenth.
  const rows = bars.map((_, i) => i).filter(i => i <= 80 || i % 10 === 9);
  const cell = ({sources: [[, values]]}, bar) => {
    const value = values[bar - (bars.length - values.length)];
    return value === undefined ? '' : String(+value.toPrecision(12));
  };
  const table = [['bar', ...columns.map(c => c.name)], ...rows.map(bar => [bar, ...columns.map(c => cell(c, bar))])];
  fs.writeFileSync('expected.csv', table.map(row => row.join(',')).join('\n') + '\n');
  if (!given) {
    const lines = bars.map(b => [b.open, b.high, b.low, b.close, b.volume].join(','));
    fs.writeFileSync('bars.csv', ['open,high,low,close,volume', ...lines].join('\n') + '\n');
  }
}
main();
