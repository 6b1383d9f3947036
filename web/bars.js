// Bars side by side: histograms and sums by hour, weekday or model. Pointing at a bar, or the arrow keys, tell its value.
const FEWEST_BARS = 6;  // fewer leave room rather than swell
const SVG = "http://www.w3.org/2000/svg";

function svg(tag, attributes) {
  const element = document.createElementNS(SVG, tag);
  for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
  return element;
}

// bars: [{label, value, tell, isMarked?}]; tell: the words for it. numbers: makes the table of the same numbers. isEdged: a label names the left
// edge of its bar rather than its middle.
function barFigure(title, bars, numbers, isEdged) {
  const [width, height, gap] = [640, 180, bars.length > 40 ? 0.5 : 2];
  const [low, high] = join([[0, 0], ...bars.map(({value}) => [value, value])]);
  const scale = height / (high - low || 1);
  const picture = svg("svg", {viewBox: `0 -4 ${width} ${height + 8}`, preserveAspectRatio: "none",
    role: "application", "aria-roledescription": "chart", tabindex: "0",
    "aria-label": `Chart: ${title}. The arrow keys tell its bars; the numbers are below it.`});
  const step = width / Math.max(FEWEST_BARS, bars.length);
  const columns = bars.map(({value, isMarked}, index) => svg("rect", {x: index * step + gap / 2, width: Math.max(0.5, step - gap),
    y: (high - Math.max(value, 0)) * scale, height: Math.abs(value) * scale, class: isMarked ? "bar marked" : value < 0 ? "bar loss" : "bar"}));
  const targets = bars.map((_, index) => svg("rect", {x: index * step, width: step, y: -4, height: height + 8, class: bars[index].isMarked ? "target marked" : "target"}));
  picture.append(...columns, svg("line", {x1: 0, x2: width, y1: high * scale, y2: high * scale, class: "zero"}), ...targets);
  const readout = el("p", {className: "readout", "aria-live": "polite"});
  let at = -1;
  const point = index => {
    if (at >= 0) columns[at].classList.remove("pointed");
    at = index;
    if (at >= 0) columns[at].classList.add("pointed");
    readout.textContent = at >= 0 ? bars[at].tell : "";
  };
  targets.forEach((target, index) => target.addEventListener("mouseenter", () => point(index)));
  picture.addEventListener("mouseleave", () => point(-1));
  picture.addEventListener("keydown", event => {
    const direction = {ArrowLeft: -1, ArrowRight: 1}[event.key];
    if (!direction || bars.length === 0) return;
    point(Math.min(bars.length - 1, Math.max(0, at + direction)));
    event.preventDefault();
  });
  return el("figure", {className: "bars"}, el("figcaption", null, el("h3", null, title)), readout, picture, axisLabels(bars, isEdged),
            lazyDetails(`Numbers of “${title}”`, numbers));
}

// Some of the bars are named below them, as many as there is room for.
function axisLabels(bars, isEdged) {
  const every = bars.length <= 7 ? 1 : Math.ceil(bars.length / 5);
  const share = 100 / Math.max(FEWEST_BARS, bars.length);
  return el("div", {className: isEdged ? "ticks edged" : "ticks", "aria-hidden": "true"}, bars.filter((_, index) => index % every === 0).map(({label}, index) => {
    const tick = el("span", null, label);
    tick.style.left = `${share * (index * every + (isEdged ? 0 : 0.5))}%`;
    tick.style.maxWidth = `${share * every}%`;
    return tick;
  }));
}

// Of {edges, counts}: one more edge than counts.
function histogramFigure(title, histogram, unit) {
  const {edges, counts} = histogram || {edges: [], counts: []};
  const range = index => `${formatValue(edges[index], unit)} to ${formatValue(edges[index + 1], unit)}`;
  const bars = counts.map((count, index) => ({label: formatValue(edges[index], unit), value: count,
    tell: `${range(index)}: ${plural(count, "round trip")}`}));
  const rows = counts.map((count, index) => [edges[index], edges[index + 1], count]);
  return barFigure(title, bars, () => plainTable(title, [["From", unit], ["To", unit], ["Round trips", "count"]], rows), true);
}

function breakdownTable(title, rows) {
  return plainTable(title, [[title, "text", "key"], ["Round trips", "count", "roundTrips"], ["Profit", "money", "profit"],
    ["Fees", "money", "fees"], ["Won", "percent", "winRate"]], rows);
}

function breakdownFigure(title, name, rows) {
  const bars = rows.map(({key, profit, roundTrips}) => ({label: String(key), value: profit,
    tell: `${key}: ${formatValue(profit, "money")} in ${plural(roundTrips, "round trip")}`}));
  return barFigure(title, bars, () => breakdownTable(name, rows));
}
