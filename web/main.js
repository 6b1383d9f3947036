// Reads the data of the page and shows it; a choice of run, result or product shows it anew.

// The results in the order in which they were given.
function readRuns() {
  return readBlock("names").map((name, index) => {
    const suffix = index === 0 ? "" : index + 1;
    const document = readBlock(`result${suffix}`);
    return {name: name || scriptNames(document.run), document, timing: readBlock(`timing${suffix}`)};
  });
}

const page = {runs: [], run: 0, result: 0, product: 0, stacks: []};

const resultName = ({job, currency}) => `${job === null ? "all jobs" : job || "the script"}${currency ? `, ${currency}` : ""}`;
const colourText = colour => `#${((Number(colour) || 0) & 0xffffff).toString(16).padStart(6, "0")}`;

// Products of the result's currency that have something to draw, those with the most fills of its jobs first.
function shownProducts({products}, result) {
  const fills = product => productFills(product, result).length;
  return products.filter(({currency}) => !result || !result.currency || currency === result.currency)
    .sort((a, b) => fills(b) - fills(a));
}

function productFills({fills}, result) {
  const get = reader(fills);
  return fills.rows.filter(row => !result || result.job === null || get(row, "job") === result.job);
}

function fillMarkers(product, result) {
  const get = reader(product.fills);
  const rows = productFills(product, result);
  const markers = {all: product.fills.all || rows.length, result};
  for (const name of ["ms", "job", "side", "price", "volume", "maker", "order"]) markers[name] = rows.map(row => get(row, name));
  return markers;
}

// Chart lines by the name of their chart. Those whose values lie about the product's prices are drawn over them, others below, in
// pictures of their own.
function chartLines({lines}, result, prices) {
  const charts = new Map();
  const jobs = new Set(lines.map(({job}) => job));
  for (const {job, chart, line, colour, ms, value} of lines) {
    if (result && result.job !== null && job !== result.job) continue;
    const list = charts.get(chart) || [];
    const name = jobs.size > 1 && (!result || result.job === null) ? `${line} (${job})` : line;
    list.push({name, ms, close: value, colour: colourText(colour), dash: list.length + 1});
    charts.set(chart, list);
  }
  const everywhere = [-Infinity, Infinity];
  const [low, high] = extent(prices, everywhere);
  const isOver = list => {
    const range = join(list.map(series => extent(series, everywhere)));
    return range && low <= high && range[1] >= 2 * low - high && range[0] <= 2 * high - low && range[1] - range[0] <= 3 * (high - low);
  };
  return [...charts].map(([chart, list]) => ({chart, list, isOver: isOver(list)}));
}

function equityPictures({run}, {equity}) {
  const series = (name, close, colour) => ({name, ms: equity.ms, close, colour, isStep: true, until: timeOf(run.last)});
  return [
    {id: "equity", title: "Equity", unit: "money",
      series: [{...series("Equity", equity.close, "equity"), low: equity.low, high: equity.high}]},
    {id: "drawdown", title: "Drawdown", unit: "money", isZeroShown: true,
      series: [{...series("Drawdown", belowZero(equity.drawdown), "drawdown"), isFilled: true}]},
    {id: "exposure", title: "Exposure", unit: "money", isZeroShown: true,
      series: [series("Exposure", equity.exposure, "exposure")]},
  ];
}

// Drawdowns hang from 0, whichever sign they are written with.
const belowZero = values => values.map(value => value === null ? null : -Math.abs(value));

function pricePictures(document, result, product) {
  if (!product) return [];
  const {ms, low, high, close} = product.prices;
  const prices = {name: product.name, ms, low, high, close, colour: "price", isStep: true};
  const charts = chartLines(document, result, prices);
  const over = charts.filter(({isOver}) => isOver).flatMap(({list}) => list);
  const below = charts.filter(({isOver}) => !isOver);
  return [{id: "price", title: `Price of ${product.name}`, unit: "price", series: [prices, ...over], markers: fillMarkers(product, result)},
    ...below.map(({chart, list}, index) => ({id: `lines${index}`, title: `Lines of ${chart}`, unit: "price", series: list}))];
}

function showCharts(run, result, product) {
  const pictures = [...(result ? equityPictures(run.document, result) : []), ...pricePictures(run.document, result, product)];
  const stack = new Stack(pictures, "Zoom all charts");
  show("pictures", stack.element);
  stack.draw();
  return stack;
}

function choose(change) {
  Object.assign(page, change);
  showPage();
}

function showChoices(run, result, products) {
  const {results} = run.document;
  show("choices",
    page.runs.length > 1 ? choice("Run", page.runs.map(({name}) => name), page.run, index => choose({run: index, product: 0,
      result: Math.max(0, page.runs[index].document.results.indexOf(matchingResult(page.runs[index], result)))})) : null,
    results.length > 1 ? choice("Job and currency", results.map(resultName), page.result,
      index => choose({result: index, product: 0})) : null,
    products.length > 1 ? choice("Product", products.map(({name}) => name), page.product, index => choose({product: index})) : null);
  byId("choices").hidden = byId("choices").children.length === 0;
}

function showPage() {
  const focused = document.activeElement.closest("#choices label");
  const place = focused ? [...byId("choices").children].indexOf(focused) : -1;
  for (const stack of page.stacks) stack.destroy();
  const run = page.runs[page.run];
  const result = run.document.results[page.result] || null;
  const products = shownProducts(run.document, result);
  const title = `Result of ${run.document.run.scripts.map(({file}) => file.replace(/.*\//, "")).join(", ")}`;
  document.title = title;
  byId("title").textContent = page.runs.length > 1 ? `${page.runs.length} runs side by side` : title;
  showChoices(run, result, products);
  const comparison = showComparison(page.runs, result);
  showRun(run);
  showVerdict(result);
  showMeasures(run, result);
  show("story");
  const stack = showCharts(run, result, products[page.product]);
  page.stacks = [comparison, stack].filter(Boolean);
  showMonths(result);
  showDistributions(result);
  showBreakdowns(result);
  showDrawdowns(result, stack);
  showRoundTrips(result, stack);
  showOrders(result, stack);
  showLog(run, stack);
  showFailures(run);
  showCallbacks(run);
  showEnvelope(run);
  if (place >= 0 && byId("choices").children[place]) byId("choices").children[place].querySelector("select").focus();
}

startPage(() => {
  page.runs = readRuns();
  page.result = firstResult(page.runs[0].document);
  showPage();
}, () => page.stacks.forEach(stack => stack.repaint()));
