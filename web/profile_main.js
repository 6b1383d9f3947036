// Reads the profile and shows it: one job, by one measure.
const shown = {job: null, measure: MEASURES[0], isByLine: false, flame: null};

const measureColumn = title => ({title, unit: shown.measure.unit});
const shareOf = value => shown.whole > 0 ? value / shown.whole : null;

function showFactsOf({program, data, interval, jobs}) {
  const sampled = jobs.some(job => job.hasSamples());
  show("facts", factList([["Scripts", jobs.map(({name}) => name).join(", ")], ["Data", data.join(", ")],
    ...sampled ? [["A sample each", plural(interval, "instruction")]] : [], ["Program", program]]),
    sampled ? el("p", {className: "note"}, "Instructions are the same in each run and on each machine. Times are those of one run on one machine, without what " +
      "taking the samples cost.") : null);
}

function showCallbacks() {
  const {callbacks, nodes, functions} = shown.job;
  const own = new Map();
  const topOf = nodes.parent.map((_, node) => node);
  nodes.parent.forEach((outer, node) => {
    if (node > 0 && outer > 0) topOf[node] = topOf[outer];
    if (node > 0) addTo(own, functions[nodes.function[topOf[node]]].name, nodes.instructions[node]);
  });
  const rows = callbacks.map(({name, calls, nanoseconds, longest, longestTime, longestEvent}) => [name, calls, own.get(name) || 0, nanoseconds / 1e9,
    nanoseconds / calls / 1e9, longest / 1e9, longestTime, longestEvent]);
  rows.sort((a, b) => b[3] - a[3]);
  const columns = [["Callback", "text"], ["Calls", "count"], ["Instructions", "count"], ["Time", "seconds"], ["Mean", "seconds"], ["Longest", "seconds"],
    ["Recorded time of it", "text"], ["Row", "text"]];
  show("callbacks", plainTable("Calls and how long they took", columns, rows));
}

function showFlame() {
  const {job, measure, isByLine} = shown;
  const root = job.tree(measure, isByLine);
  shown.whole = root.total;
  if (shown.flame) shown.flame.set(measure, root);
  else shown.flame = new Flame(measure, root);
  show("flame", shown.flame.element);
  if (shown.search && shown.search.value) search();
}

function showTables() {
  const {job, measure} = shown;
  const {functions, nodes} = job;
  const of = job.sums(measure, node => node === 0 || functions[nodes.function[node]].kind === "callback" ? null : job.names[nodes.function[node]]);
  const rows = of.map(({key, self, total}) => [key, self, shareOf(self), total, shareOf(total)]);
  const byFunction = new Grid({caption: "Functions", columns: [{title: "Function", unit: "text"}, measureColumn("Self"),
    {title: "Self %", unit: "share"}, measureColumn("Total"), {title: "Total %", unit: "share"}], rows});
  byFunction.sortBy(1, false);
  show("functions", byFunction.element);
  const lines = job.sums(measure, node => job.lines[nodes.line[node]] ? nodes.line[node] : null).map(({key, self, total}) =>
    [job.place(key), self, shareOf(self), total, shareOf(total), job.lines[key].text]);
  const byLine = new Grid({caption: "Lines", columns: [{title: "Line", unit: "text"}, measureColumn("Self"), {title: "Self %", unit: "share"},
    measureColumn("Total"), {title: "Total %", unit: "share"}, {title: "Text", unit: "text"}], rows: lines,
    note: "Self is the line's own; total has with it what its calls took."});
  byLine.sortBy(1, false);
  show("lines", byLine.element);
}

function showMemory() {
  const {heaps, growth, growthCalls, failure} = shown.job;
  byId("memory-section").hidden = heaps.length === 0 && failure === "";
  if (byId("memory-section").hidden) return;
  const last = heaps[heaps.length - 1];
  const parts = [notice("warning", "Not whole", failure ? [failure] : [])];
  if (last) {
    const kinds = ["tables", "texts", "functions", "userdata", "coroutines"];
    const bars = heaps.map(({calls, bytes}) => ({label: grouped(calls, 0, 0), value: bytes, tell: `after ${plural(calls, "call")}: ${units.bytes(bytes)}`}));
    const numbers = () => plainTable("The heap after collections", [["Calls", "count"], ["Heap", "bytes"], ...kinds.map(kind => [kind, "bytes"])],
      heaps.map(heap => [heap.calls, heap.bytes, ...kinds.map(kind => heap[kind].bytes)]));
    parts.push(barFigure("Heap after so many calls", bars, numbers));
    parts.push(growth.length === 0
      ? el("p", {className: "none"}, growthCalls > 0 ? `Nothing has grown in the last ${plural(growthCalls, "call")}.` : "The run was too short to tell what grows.")
      : plainTable(`What has grown in the last ${plural(growthCalls, "call")}`, [["Path", "text"], ["Holds", "bytes"], ["More", "more"], ["Entries", "count"],
        ["More", "moreCount"]], growth.map(({path, bytes, moreBytes, entries, moreEntries}) => [path, bytes, moreBytes, entries || null, entries ? moreEntries : null])));
    parts.push(plainTable("What there is at the end", [["Kind", "text"], ["Count", "count"], ["Bytes", "bytes"]],
      kinds.filter(kind => last[kind].count > 0).map(kind => [kind, last[kind].count, last[kind].bytes])));
  }
  show("memory", parts);
}

function search() {
  const share = shown.flame.find(shown.search.value);
  shown.found.textContent = share === null ? "" : `${units.share(share)} in what holds it`;
}

function showJob() {
  const isSampled = shown.job.hasSamples();
  for (const id of ["callbacks-section", "flame-section", "lines-section"]) byId(id).hidden = !isSampled;
  if (isSampled) {
    showCallbacks();
    showFlame();
    showTables();
  }
  showMemory();
}

function showProfile(profile) {
  const jobs = profile.jobs.map(job => new Job(job));
  document.title = `Profile of ${profile.title}`;
  byId("title").textContent = document.title;
  shown.job = jobs[0];
  showFactsOf({...profile, jobs});
  if (jobs.length > 1) show("choices", choice("Job", jobs.map(({name}) => name), 0, index => { shown.job = jobs[index]; showJob(); }));
  shown.search = el("input", {type: "search", "aria-label": "Search the graph", placeholder: "Search the graph", oninput: search});
  shown.found = el("span", {role: "status", className: "note"});
  const again = () => { showFlame(); showTables(); };
  show("flame-controls", choice("By", MEASURES.map(({name}) => name), 0, index => { shown.measure = MEASURES[index]; again(); }),
    choice("A box is", ["a function", "a line of a function"], 0, index => { shown.isByLine = index === 1; showFlame(); }), shown.search, shown.found,
    el("button", {type: "button", onclick: () => shown.flame.zoom(shown.flame.root)}, "Show all"));
  showJob();
}

startPage(() => showProfile(readBlock("profile")), () => {});
