// The parts of the page that are read from top to bottom: what was run, verdict, measures, months, breakdowns, costs.

const TILES = ["netProfit", "return", "sharpe", "meanDay", "maxDrawdown", "maxDrawdownPercent", "roundTrips", "winRate", "profitFactor",
  "expectancy", "fees", "makerShare"];

const pairs = (caption, object, names) => plainTable(caption, names.map(name => [name, "text"]), Object.entries(object || {}));
const shortHash = hash => hash ? hash.slice(0, 12) : DASH;

const scriptNames = ({scripts}) => scripts.map(({file}) => file).join(", ");

function showRun({document: {run, program, jobs, failures}, name}) {
  const events = Object.entries(run.events).map(([what, count]) => plural(count, wordOf(what))).join(", ");
  const facts = [
    ["Scripts", scriptNames(run)], ...name === scriptNames(run) ? [] : [["Result", name]],
    ["Period", `${formatIso(run.first)} to ${formatIso(run.last)}`],
    ["Data", `${plural(run.dataDays, "day")}; ${events}`],
    ["Capital", run.capital === null ? "not given" : formatValue(run.capital, "money")],
    ["End", run.end], ["Program", program], ["Seed", formatValue(run.seed, "text")], ["Hash", run.hash],
  ];
  const cut = run.complete ? [] : ["The record ends in the middle of the run. What is here is what it told until then."];
  const failed = failures.map(({job, callback, count}) => `${callback} of ${job || "the script"} failed ${plural(count, "time")}.`);
  show("run-facts",
    notice("warning", "Cut off", cut), notice("warning", "Failures", failed),
    notice("", "What the record cannot tell", run.missing), notice("", "Notes", [...run.notes, ...run.remarks]),
    factList(facts),
    lazyDetails("Scripts, data and settings", () => [
      plainTable("Scripts and modules", [["File", "text", "file"], ["Job", "text", "job"], ["SHA-256", "text", "sha256"]],
        [...run.scripts, ...run.modules.map(module => ({job: "module", ...module}))]),
      plainTable("Data", [["File", "text", "file"], ["Rows", "count", "rows"], ["SHA-256", "text", "sha256"]], run.data),
      pairs("Settings", run.settings, ["Setting", "Value"])]),
    jobs.map(jobDetails));
}

// "depthChanges" counts something that is called a depth change.
const wordOf = name => name.replace(/[A-Z]/g, letter => ` ${letter.toLowerCase()}`).replace(/s$/, "");

function jobDetails(job) {
  return lazyDetails(`Job ${job.name}: ${plural(Object.keys(job.parameters).length, "parameter")}`, () => [
    el("p", null, `${job.script}; ended: ${job.end}`), notice("", "Notes", job.notes || []) || "",
    pairs(`Parameters of ${job.name}`, job.parameters, ["Parameter", "Value"]),
    pairs(`Last outputs of ${job.name}`, job.outputs, ["Output", "Value"])]);
}

function showVerdict(result) {
  const texts = result ? result.verdict : [];
  show("verdict", texts.length === 0 ? el("p", {className: "none"}, result ? "No verdict." : "No orders: there is nothing to judge.")
    : el("ul", {className: "verdict"}, texts.map((text, index) => el("li", {className: index === 0 ? "first" : null}, text))));
}

const unitName = ({unit}, currency) => unit === "money" && currency ? currency : unit === "seconds" ? "time" : unit;

function intervalText(result, {name, unit}) {
  const interval = result.intervals[name];
  return interval ? `95 %: ${formatValue(interval[0], unit)} to ${formatValue(interval[1], unit)}` : "";
}

function showMeasures({document}, result) {
  if (!result) return show("measures", el("p", {className: "none"}, "No order was sent, so there are no measures."));
  const byName = new Map(document.definitions.map(definition => [definition.name, definition]));
  const value = ({name, unit}) => valueNode(result.measures[name], unit, reasonForNull(name, result, document.run));
  const unit = definition => unitName(definition, result.currency);
  const tile = definition => el("details", {className: "tile", "data-measure": definition.name},
    el("summary", null, el("span", {className: "title"}, definition.title), el("span", {className: "value"}, value(definition)),
      el("span", {className: "unit"}, unit(definition)), el("span", {className: "unit"}, intervalText(result, definition))),
    el("p", null, definition.formula));
  const groups = [...new Set(document.definitions.map(({group}) => group))];
  const columns = [["Measure", "text"], ["Value", "number"], ["Unit", "text"], ["Interval", "text"], ["Formula", "text"]];
  const table = group => plainTable(`Measures: ${group}`, columns, document.definitions.filter(definition => definition.group === group)
    .map(definition => [definition.title, value(definition), unit(definition), el("span", null, intervalText(result, definition)),
      definition.formula]));
  const seen = result.observations;
  const counts = `Of ${plural(seen.days, "day")}, ${plural(seen.roundTrips, "round trip")}, ${plural(seen.fills, "fill")} and ` +
    `${plural(seen.orders, "order")}.`;
  const benchmark = result.benchmark ? ` Alpha and beta compare with holding ${result.benchmark}.` : "";
  show("measures", el("p", {className: "note"}, `${counts}${benchmark} A measure opens to its formula.`),
    el("div", {className: "tiles"}, TILES.filter(name => byName.has(name)).map(name => tile(byName.get(name)))),
    lazyDetails("All measures and their formulas", () => groups.map(table)));
}

const MONTHS = ["Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"];

// A year a row once there is more than one; a month a row before.
function showMonths(result) {
  const months = result ? result.months : [];
  if (months.length === 0) return show("months", el("p", {className: "none"}, "No months to tell of."));
  const list = () => plainTable("Profit, return and days", [["Month", "text", "month"], ["Profit", "money", "profit"], ["Return", "percent", "return"],
    ["Days", "count", "days"]], months);
  const years = [...new Set(months.map(({month}) => month.slice(0, 4)))];
  if (years.length === 1) return show("months", list());
  const largest = Math.max(...months.map(({profit}) => Math.abs(profit)), 1e-300);
  const cell = (year, index) => {
    const found = months.find(({month}) => month === `${year}-${String(index + 1).padStart(2, "0")}`);
    if (!found) return valueNode(null, "money", "No data.");
    const title = found.return === null ? null : formatValue(found.return, "percent");
    const content = el("span", {className: found.profit < 0 ? "heat bad" : "heat", title}, formatValue(found.profit, "money"));
    content.style.setProperty("--heat", `${Math.round(45 * Math.abs(found.profit) / largest)}%`);
    return content;
  };
  const sum = year => months.filter(({month}) => month.startsWith(year)).reduce((total, {profit}) => total + profit, 0);
  show("months", plainTable("Profit by month", [["Year", "text"], ...MONTHS.map(month => [month, "money"]), ["Sum", "money"]],
    years.map(year => [year, ...MONTHS.map((_, index) => cell(year, index)), sum(year)])),
    lazyDetails("Months with returns and days", list));
}

function showDistributions(result) {
  if (!result) return show("distributions", el("p", {className: "none"}, "No round trips."));
  show("distributions", histogramFigure("Profit of round trips", result.histograms.profit, "money"),
    histogramFigure("Holding time of round trips", result.histograms.holding, "seconds"),
    breakdownFigure("Profit by hour of entry (UTC)", "Hour", result.breakdowns.hour),
    breakdownFigure("Profit by weekday of entry (UTC)", "Weekday", result.breakdowns.weekday));
}

function showBreakdowns(result) {
  if (!result) return show("breakdowns", el("p", {className: "none"}, "No round trips."));
  show("breakdowns", breakdownTable("Product", result.breakdowns.product), breakdownTable("Side", result.breakdowns.side));
}

function showDrawdowns(result, stack) {
  const drawdowns = result ? result.drawdowns : [];
  if (drawdowns.length === 0) return show("drawdowns", el("p", {className: "none"}, "No drawdowns."));
  const columns = [["From (UTC)", "time"], ["Deepest at", "time"], ["Recovered", "time"], ["Depth", "money"], ["Percent", "percent"],
    ["Length", "seconds"], ["Recovery", "seconds"]].map(([title, unit]) => ({title, unit}));
  const rows = drawdowns.map(({from, trough, to, ...rest}) => [timeOf(from), timeOf(trough), timeOf(to), rest.depth, rest.percent, rest.seconds,
    rest.recoverySeconds]);
  show("drawdowns", new Grid({caption: "The deepest drawdowns", columns, rows, onRow: (row, element) => {
    stack.choose({from: row[0], to: row[2] === null ? stack.full[1] : row[2]});
    tellStory(`Drawdown of ${formatValue(row[3], "money")} from ${formatTime(row[0])} UTC`, [], element);
  }}).element);
}

function showCallbacks({document, timing}) {
  const cost = new Map((timing ? timing.callbacks : []).map(({job, name, meanNanoseconds}) => [`${job}\n${name}`, meanNanoseconds]));
  const rows = document.jobs.flatMap(job => job.callbacks.map(({name, count, failures}) => {
    const mean = cost.has(`${job.name}\n${name}`) ? cost.get(`${job.name}\n${name}`) : null;
    return [name, job.name, count, failures, mean === null ? null : mean / 1e9, mean === null ? null : mean * count / 1e9];
  }));
  const columns = [["Callback", "text"], ["Job", "text"], ["Calls", "count"], ["Failures", "count"]];
  if (cost.size > 0) columns.push(["Mean", "seconds"], ["In all", "seconds"]);
  show("callbacks", plainTable("Callbacks", columns, rows.map(row => row.slice(0, columns.length))),
    cost.size > 0 ? null : el("p", {className: "note"}, "What they cost in time is known only on the page that a run itself writes."));
}

function showEnvelope({document: {envelope}}) {
  byId("envelope-section").hidden = !envelope;
  if (!envelope) return;
  const isOne = new Set(envelope.map(({job, currency}) => `${job}\n${currency}`)).size === 1;
  const names = envelope.map(({model, job, currency}) => isOne ? model : [model, job, currency].filter(Boolean).join(", "));
  const table = () => plainTable("The same run under each model", [["Model", "text", "model"], ["Job", "text", "job"],
    ["Currency", "text", "currency"], ["Orders", "count", "orders"], ["Fills", "count", "fills"], ["Volume", "lots", "volume"],
    ["Fees", "money", "fees"], ["Profit", "money", "profit"], ["Largest drawdown", "money", "drawdown"]], envelope);
  show("envelope", table(), barFigure("Profit by model", envelope.map(({profit}, index) => ({label: names[index], value: profit || 0,
    tell: `${names[index]}: ${formatValue(profit, "money")}`})), table));
}
