// Numbers, times and durations as the page shows them. All times are UTC, in milliseconds since 1970.
const DASH = "–";

const formatters = new Map();
function grouped(value, least, most) {
  const key = least * 32 + most;
  if (!formatters.has(key)) {
    const options = {minimumFractionDigits: least, maximumFractionDigits: most, signDisplay: "negative"};
    formatters.set(key, new Intl.NumberFormat("en-US", options));
  }
  return formatters.get(key).format(value).replace("-", "−");
}

// Two decimals, but never a small number shown as 0.00.
function rounded(value) {
  const size = Math.abs(value);
  if (size === 0 || size >= 0.01) return grouped(value, 2, 2);
  return grouped(value, 2, Math.min(14, 1 - Math.floor(Math.log10(size))));
}

function formatDuration(seconds) {
  const sign = seconds < 0 ? "−" : "";
  const size = Math.abs(seconds);
  if (size < 60) {
    const [unit, factor] = size >= 1 || size === 0 ? ["s", 1] : size >= 1e-3 ? ["ms", 1e3] : ["µs", 1e6];
    return `${sign}${grouped(size * factor, 0, size * factor < 10 ? 2 : 1)} ${unit}`;
  }
  const units = [["d", 86400], ["h", 3600], ["min", 60], ["s", 1]];
  const first = units.findIndex(([, length]) => size >= length);
  const [name, length] = units[first];
  const [restName, restLength] = units[Math.min(first + 1, 3)];
  const whole = Math.floor(size / length);
  const rest = Math.floor((size - whole * length) / restLength);
  return `${sign}${whole} ${name}` + (rest > 0 ? ` ${rest} ${restName}` : "");
}

const units = {
  money: rounded,
  ratio: rounded,
  percent: value => `${rounded(value * 100)} %`,
  count: value => grouped(value, 0, 2),
  lots: value => grouped(value, 0, 4),
  price: value => grouped(value, 0, 10),
  seconds: formatDuration,
  id: value => String(value),
  text: value => String(value),
  time: formatTime,
};

function formatValue(value, unit) {
  if (value === null || value === undefined || value === "") return DASH;
  return (units[unit] || units.text)(value);
}

// As many decimals of the second as the time has: none, three, or six.
function formatTime(ms) {
  const whole = Math.floor(ms);
  const text = new Date(whole).toISOString().replace("T", " ").slice(0, 23);
  const micros = Math.round((ms - whole) * 1000);
  if (micros > 0) return text + String(micros).padStart(3, "0");
  return text.endsWith(".000") ? text.slice(0, 19) : text;
}

// A time as the document's objects write it: 2013-10-07T13:31:00Z.
const formatIso = text => text ? `${text.replace("T", " ").replace("Z", "")} UTC` : DASH;
// The same as a number; null where there is none.
const timeOf = text => text ? Date.parse(text) : null;
const plural = (count, what) => `${grouped(count, 0, 0)} ${what}${count === 1 ? "" : "s"}`;

// Fractions of the capital, which are not known without one.
const NEEDS_CAPITAL = new Set(["return", "cagr", "volatility", "calmar", "maxDrawdownPercent", "ulcerIndex",
  "turnoverPerYear", "alpha", "beta"]);

// Why a measure is null, as far as the rest of the document tells.
function reasonForNull(name, result, run) {
  if (run.capital === null && NEEDS_CAPITAL.has(name)) return "Not known without --capital.";
  const seen = result.observations;
  if (seen.orders === 0) return "Nothing to measure: no order was sent.";
  if (seen.fills === 0) return "Nothing to measure: no order was filled.";
  const counts = `${plural(seen.days, "day")}, ${plural(seen.roundTrips, "round trip")}, ${plural(seen.fills, "fill")}`;
  return `Not known from what this run had: ${counts}.`;
}
