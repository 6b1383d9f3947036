// Several runs side by side: what differs in how they were run, their measures, their equity in one chart.
const RUN_COLOURS = ["equity", "sell", "exposure", "drawdown", "price", "buy", "ink"];

// The result of another run that compares with the one chosen: of the same job and currency, else the one it shows first.
function matchingResult(run, result) {
  const {results} = run.document;
  const isSame = ({job, currency}) => result && job === result.job && currency === result.currency;
  return results.find(isSame) || results[firstResult(run.document)];
}

// All jobs of a currency together come first, where the document has them.
const firstResult = ({results}) => Math.max(0, results.findIndex(({job}) => job === null));

// Everything that says how a run was made, as name and text.
function circumstances({document: {run, jobs, program}}) {
  const files = list => list.map(({file, sha256}) => `${file} ${shortHash(sha256)}`).join(", ");
  const facts = [["Program", program], ["Period", `${formatIso(run.first)} to ${formatIso(run.last)}`], ["Data", files(run.data)],
    ["Scripts", files([...run.scripts, ...run.modules])], ["Capital", formatValue(run.capital, "money")],
    ["Seed", formatValue(run.seed, "text")], ["Complete", run.complete ? "yes" : "no: cut off"], ...Object.entries(run.settings)];
  for (const job of jobs) {
    const ofJob = jobs.length > 1 ? `${job.name}: ` : "";
    facts.push(...Object.entries(job.parameters).map(([name, text]) => [ofJob + name, text]));
  }
  return new Map(facts);
}

function differences(runs) {
  const all = runs.map(circumstances);
  const names = [...new Set(all.flatMap(facts => [...facts.keys()]))];
  const rows = names.map(name => [name, ...all.map(facts => facts.has(name) ? facts.get(name) : null)]);
  return rows.filter(([, ...texts]) => texts.some(text => text !== texts[0]));
}

function comparedMeasures(runs, results) {
  const definitions = runs[0].document.definitions;
  return definitions.map(({name, title, unit, direction}) => {
    const values = results.map(result => result && typeof result.measures[name] === "number" ? result.measures[name] : null);
    const known = values.filter(value => value !== null);
    const best = direction === "none" || new Set(known).size < 2 ? null : direction === "higher" ? Math.max(...known) : Math.min(...known);
    return [title, ...values.map((value, index) => {
      const reason = results[index] ? reasonForNull(name, results[index], runs[index].document.run) : "This run sent no orders.";
      const content = valueNode(value, unit, reason);
      if (value === null || value !== best) return content;
      return el("strong", {title: "The best of these"}, content, el("span", {className: "unseen"}, " (best)"));
    })];
  });
}

function showComparison(runs, result) {
  byId("comparison-section").hidden = runs.length < 2;
  if (runs.length < 2) return null;
  const results = runs.map(run => matchingResult(run, result));
  const names = runs.map(({name}) => name);
  const differing = differences(runs);
  const currencies = new Set(results.filter(Boolean).map(({currency}) => currency));
  const series = results.map((of, index) => ({name: names[index], ms: of ? of.equity.ms : [], close: of ? of.equity.close : [],
    isStep: true, until: timeOf(runs[index].document.run.last), colour: RUN_COLOURS[index % RUN_COLOURS.length], dash: index % DASHES.length}));
  const stack = new Stack([{id: "runs", title: "Equity of each run", unit: "money", series}], "Zoom the equity of the runs");
  show("comparison",
    currencies.size > 1 ? el("p", {className: "notice warning"}, `Not the same currency: ${[...currencies].join(", ")}.`) : null,
    differing.length === 0 ? el("p", {className: "note"}, "Nothing differs in how they were run.")
      : plainTable("What differs", [["Setting", "text"], ...names.map(name => [name, "text"])], differing),
    stack.element, plainTable("Measures side by side", [["Measure", "text"], ...names.map(name => [name, "number"])],
      comparedMeasures(runs, results)));
  stack.draw();
  return stack;
}
