// What is read from top to bottom: what was run, the verdict, the luck of the best, the best itself, the distribution, the splits.
units.probability = value => grouped(value, 0, 4);

const METHODS = {grid: "all combinations", random: "random points", sobol: "Sobol sequence", tpe: "tree-structured Parzen estimator",
  cmaes: "covariance matrix adaptation"};
const FEW_DAYS = 20;
const MOST_BARS = 40;

function showFacts(sweep) {
  const {plan, points, timing} = sweep;
  const states = ["done", "failed", "constrained", "missing"].map(state => [points.state.filter(one => one === state).length, state]);
  const values = ({name, values: all, ordered}) => `${name}: ${all.length > 8 ? `${plural(all.length, "value")}${ordered
    ? ` from ${all[0]} to ${all[all.length - 1]}` : ""}` : all.join(", ")}`;
  const method = METHODS[plan.method] || plan.method;
  const isSetting = ({name}) => name.startsWith("--");
  const terms = isWanted => sweep.facts.filter(isWanted).map(({name, value}) => [name, value]);
  const settings = terms(isSetting);
  const isDrawn = plan.method !== "grid" && plan.seed !== null && plan.seed !== undefined;
  show("facts",
    notice("warning", "Notes", sweep.notes),
    factList([[plan.minimise ? "Minimised" : "Maximised", plan.minimise || plan.maximise],
      ["Dimensions", sweep.dimensions.map(values).join("; ")], ["Method", isDrawn ? `${method}, seed ${plan.seed}` : method],
      ...plan.conditions.length > 0 ? [["Conditions", plan.conditions.join("; ")]] : [],
      ...plan.constraints.length > 0 ? [["Constraints", plan.constraints.join("; ")]] : [],
      ["Points", `${grouped(sweep.count, 0, 0)}: ${states.filter(([count]) => count > 0).map(([count, state]) => `${grouped(count, 0, 0)} ${state}`).join(", ")}`],
      ...terms(fact => !isSetting(fact)), ["Program", sweep.program],
      ...timing ? [["Processor time", formatDuration(timing.seconds)]] : []]),
    settings.length > 0 ? el("details", null, el("summary", null, "Options of the runs"), factList(settings)) : null);
}

// Name, value, unit, what it means, and whether it speaks for the best: true, false, or null where it decides nothing.
function luckFigures({tried, days, sharpe, probabilistic, deflated, bestOfLuck, overfitting, realityCheck, neighbours, rankCorrelation}) {
  const judge = (value, holds) => value === null || value === undefined || days < FEW_DAYS ? null : holds(value);
  const [{probability = null, loss = null, halves = 0}, {white = null, spa = null, spaLower = null, spaUpper = null}, {count = 0, stability = null}] =
    [overfitting || {}, realityCheck || {}, neighbours || {}];
  const bounds = spaLower === null || spaUpper === null ? "" : ` It lies between ${units.probability(spaLower)} and ${units.probability(spaUpper)}.`;
  return [
    ["Runs tried", tried, "count", "The more are tried, the better the best of them looks by chance alone.", null],
    ["Days", days, "count", `Fewer than ${FEW_DAYS} days tell nothing.`, days < FEW_DAYS ? false : null],
    ["Sharpe ratio of a day", sharpe, "probability", "Of the best: mean of its daily returns by their standard deviation.", null],
    ["Best of luck", bestOfLuck, "probability", "The same ratio that the best of so many runs without any skill is expected to have.", null],
    ["Probabilistic Sharpe ratio", probabilistic, "probability", "How sure it is that the best is above 0, as if nothing else had been tried.", null],
    ["Deflated Sharpe ratio", deflated, "probability", "How sure it is that the best is above the best of luck. For it: 0.95 or more.",
      judge(deflated, value => value >= 0.95)],
    ["Probability of overfitting", probability, "probability", "How often what is best on half of the days is below the middle on the others" +
      `${halves > 0 ? `, of ${grouped(halves, 0, 0)} halves` : ""}. For it: at most 0.5.`, judge(probability, value => value <= 0.5)],
    ["Probability of loss", loss, "probability", "How often what is best on half of the days loses on the others.", null],
    ["Reality check, p", white, "probability", "How often the best of runs without any skill does as well.", null],
    ["SPA, p", spa, "probability", `The same where hopeless runs do not count.${bounds} For it: at most 0.05.`, judge(spa, value => value <= 0.05)],
    ["Stability", stability, "probability", `Near 1 its ${count > 0 ? plural(count, "neighbour") : "neighbours"} are as good, near 0 it is a lonely peak. For it: ` +
      "0.5 or more.", judge(stability, value => value >= 0.5)],
    ["Rank correlation", rankCorrelation, "probability", "Whether what is good in sample is good out of sample. For it: above 0.",
      judge(rankCorrelation, value => value > 0)],
  ];
}

function showVerdict(sweep) {
  const speaks = holds => holds === null ? valueNode(null, "text", "Decides nothing.") : el("span", {className: holds ? "good" : "bad"}, holds ? "for" : "against");
  const table = () => plainTable("How far the best may be luck", [["Figure", "text"], ["Value", "number"], ["Speaks", "text"], ["What it means", "text"]],
    luckFigures(sweep.luck).map(([name, value, unit, meaning, holds]) => [name, valueNode(value, unit), speaks(holds), meaning]), {id: "luck"});
  show("verdict", el("p", {className: "sentence"}, sweep.verdict || "No verdict."),
    sweep.luck ? table() : el("p", {className: "none"}, "Nothing tells how far the best may be luck."));
}

// The values of the best, and each measure where it is known: over the whole sweep, in and out of sample, and held out.
function showBest(sweep) {
  const {best, holdout, variants} = sweep;
  if (best === null) {
    show("best", el("p", {className: "none"}, "No point can be the best: none is done with its objective known and its constraints held."));
    return null;
  }
  const at = variable => variable ? variable.values[best] : null;
  const known = ["In sample", "Out of sample"].filter((_, index) => at([sweep.inSample, sweep.outOfSample][index]) !== null);
  const value = (number, unit) => valueNode(number, unit);
  const main = sweep.mainMeasures();
  const row = (variable, held, samples) => [variable.title, value(at(variable), variable.unit), ...known.map(name => samples
    ? value(at(name === "In sample" ? sweep.inSample : sweep.outOfSample), variable.unit) : el("span")), ...holdout ? [value(held, variable.unit)] : []];
  const heldOut = holdout ? `Held out, ${holdout.from} to ${holdout.to}` : "";
  const measures = plainTable("The best in numbers", [["Measure", "text"], ...["Value", ...known, ...holdout ? [heldOut] : []].map(title => [title, "number"])],
    [row(sweep.objective, holdout && sweep.shown(holdout.objective), true), ...main.map(variable => row(variable, holdout && holdout.measures[variable.name]))]);
  const failed = variants.some(({failure}) => failure);
  const others = variants.length === 0 ? null : plainTable("The same under other fill models, latencies and fees",
    [["Variant", "text"], [sweep.objective.title, "number"], ...main.map(({title}) => [title, "number"]), ...failed ? [["Failure", "text"]] : []],
    variants.map(variant => [variant.name, value(sweep.shown(variant.objective), sweep.objective.unit),
      ...main.map(({name, unit}) => value((variant.measures || {})[name], unit)), ...failed ? [variant.failure] : []]));
  const stack = equityStack("best-equity", "Profit of the best", sweep.equity);
  show("best", factList([["Point", String(sweep.points.number[best])], ...sweep.valuesOf(best)]),
    el("p", null, el("button", {type: "button", onclick: () => openRun(best)}, "All of this run")), measures, others, stack && stack.element);
  if (stack) stack.draw();
  return stack;
}

function equityStack(id, title, equity) {
  if (!equity || equity.ms.length === 0) return null;
  return new Stack([{id, title, unit: "money", isZeroShown: true, series: [{name: "Profit", ms: equity.ms, close: equity.profit, colour: "equity"}]}],
    `Zoom: ${title}`);
}

// Bars of equal width; the last one holds its upper end, too.
function distribution(sweep, variable) {
  const {title, unit, values} = variable;
  const known = values.filter(value => value !== null);
  const range = knownRange(values);
  if (!range) return el("p", {className: "none"}, "No point has this measure.");
  const [low, high] = range;
  const count = high > low ? Math.min(MOST_BARS, Math.ceil(Math.sqrt(known.length))) : 1;
  const place = value => high > low ? Math.min(count - 1, Math.floor((value - low) / (high - low) * count)) : 0;
  const counts = new Array(count).fill(0);
  for (const value of known) counts[place(value)] += 1;
  const edge = index => low + (high - low) * index / count;
  const best = sweep.best === null ? null : values[sweep.best];
  const text = index => `${formatValue(edge(index), unit)} to ${formatValue(edge(index + 1), unit)}`;
  const bars = counts.map((value, index) => {
    const isMarked = best !== null && place(best) === index;
    return {label: tickText(Number(edge(index).toPrecision(3)), unit), value, isMarked, tell: `${text(index)}: ${plural(value, "point")}${isMarked ? ", with the best" : ""}`};
  });
  const below = known.filter(value => value < best).length;
  const note = best === null ? "" : `The best has ${formatValue(best, unit)}, in the orange bar; ${plural(below, "point")} of ${grouped(known.length, 0, 0)} ` +
    `${below === 1 ? "is" : "are"} below it.`;
  return [barFigure(title, bars, () => plainTable(title, [["From", unit], ["To", unit], ["Points", "count"]],
    counts.map((value, index) => [edge(index), edge(index + 1), value])), true), el("p", {className: "note"}, note)];
}

function showDistribution(sweep) {
  const stage = el("div");
  const draw = index => stage.replaceChildren(...[distribution(sweep, sweep.variables[index])].flat());
  show("distribution", el("div", {className: "controls"}, choice("Measure", sweep.variables.map(({title}) => title), 0, draw)), stage);
  draw(0);
}

const daysText = ([from, to]) => `${from} to ${to}`;

function showWalk(sweep) {
  const {splits, points} = sweep;
  byId("walk-section").hidden = splits.length === 0;
  if (splits.length === 0) return null;
  const {unit} = sweep.objective;
  const columns = [["Train", "text"], ["Test", "text"], ["Chosen point", "id"], ["In sample", unit], ["Out of sample", unit]]
    .map(([title, of]) => ({title, unit: of}));
  const rows = splits.map(({train, test, chosen, inSample, outOfSample}) => [train.map(daysText).join(", "), daysText(test),
    chosen === null ? null : points.number[chosen], sweep.shown(inSample), sweep.shown(outOfSample), chosen]);
  const grid = new Grid({caption: "Splits", columns, rows, onRow: row => row[5] !== null && openRun(row[5])});
  const stack = equityStack("walk", "Profit of what was chosen, out of sample", sweep.walk);
  show("walk", el("p", {className: "note"}, "In each split the train chooses a point, and the test shows what it does on days that did not choose it."),
    grid.element, stack && stack.element);
  if (stack) stack.draw();
  return stack;
}
