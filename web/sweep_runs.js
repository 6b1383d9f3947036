// The table of all runs, and a run by itself.
let sweepOfPage = null;

// A word as a shell takes it.
const quoted = word => /^[\w@%+=:,./-]+$/.test(word) ? word : `'${word.replace(/'/g, "'\\''")}'`;

// The whole reason of a failure is told when the run is opened.
const brief = text => text.length > 40 ? `${text.slice(0, 39)}…` : text;

class RunGrid extends Grid {
  // variables: what a column is shown of, beside the values of the dimensions.
  constructor(sweep, variables) {
    const dimensions = sweep.dimensions.map(({name, values}) => ({title: name, unit: "text", format: place => values[place]}));
    const columns = [{title: "Point", unit: "id"}, {title: "State", unit: "text", format: brief}, ...dimensions,
      ...variables.map(({title, unit}) => ({title, unit}))];
    const {number, state, places, failure} = sweep.points;
    const stateText = index => failure[index] ? `${state[index]}: ${failure[index]}` : state[index];
    const rows = number.map((_, index) => [number[index], stateText(index), ...places.map(column => column[index]),
      ...variables.map(({values}) => values[index]), index]);
    super({caption: "All runs", columns, rows, onRow: row => openRun(row[columns.length])});
    this.dimensions = dimensions;
    this.sweep = sweep;
  }

  filterHint() {
    return {placeholder: "Filter: text, or sharpe > 1",
      title: "Words that point, state, values or failure must hold; or an expression over their names, as sharpe > 1 and fast < 20"};
  }

  // Whatever compares is an expression, else words.
  rowTest(text) {
    const place = this.columns.length;
    const holds = /[<>=]/.test(text) ? readExpression(text, this.sweep.names) : null;
    const words = holds ? null : super.rowTest(text);
    return row => this.sweep.isSelected(row[place]) && (holds ? holds(row[place]) === true : words(row));
  }

  wordTest(word) {
    return row => this.searchText(row).includes(word);
  }

  // Of what a point is made, since all its measures would take long.
  searchText(row) {
    if (!this.texts.has(row)) {
      const values = this.dimensions.map(({format}, place) => format(row[place + 2]));
      this.texts.set(row, [row[0], row[1], ...values].join("\n").toLowerCase());
    }
    return this.texts.get(row);
  }

  // While an expression is typed it is often wrong: the table stays then.
  filter(text) {
    try {
      super.filter(text);
      this.input.removeAttribute("aria-invalid");
    } catch (error) {
      this.input.setAttribute("aria-invalid", "true");
      this.count.textContent = error.message;
    }
  }
}

// The table with the choice of its columns. What is sorted and filtered stays when columns change.
function showRuns(sweep) {
  const samples = [sweep.objective, sweep.inSample, sweep.outOfSample].filter(Boolean);
  const others = sweep.variables.filter(variable => !samples.includes(variable));
  const chosen = new Set(sweep.mainMeasures());
  let grid = null;
  const build = () => {
    const before = grid;
    grid = new RunGrid(sweep, [...samples, ...others.filter(variable => chosen.has(variable))]);
    if (before && before.sorted.column >= 0) {
      const column = grid.columns.findIndex(({title}) => title === before.columns[before.sorted.column].title);
      if (column >= 0) grid.sortBy(column, before.sorted.ascending);
    }
    grid.input.value = before ? before.input.value : "";
    grid.filter(grid.input.value);
    show("runs-table", grid.element);
  };
  const box = variable => {
    const input = el("input", {type: "checkbox", checked: chosen.has(variable), onchange: () => {
      if (input.checked) chosen.add(variable);
      else chosen.delete(variable);
      build();
    }});
    return el("label", {title: variable.formula}, input, ` ${variable.title}`);
  };
  sweep.listeners.push(() => grid.filter(grid.input.value));
  show("columns", lazyDetails("Columns", () => el("div", {className: "boxes"}, others.map(box))));
  build();
}

function copyButton(text, code) {
  const status = el("span", {role: "status", className: "note"});
  const copy = async () => {
    try {
      await navigator.clipboard.writeText(text);
      status.textContent = " Copied.";
    } catch {
      getSelection().selectAllChildren(code);
      status.textContent = " The browser does not let the page copy: it is selected, press Ctrl+C.";
    }
  };
  return [el("button", {type: "button", onclick: copy}, "Copy"), status];
}

// Its own page where there is one, else how to make one. A path stays below the page's folder, whatever it holds.
function wayToPage(sweep, index) {
  const number = String(sweep.points.number[index]);
  if (Object.hasOwn(sweep.pages, number)) {
    const path = sweep.pages[number].split("/").map(encodeURIComponent).join("/");
    return el("p", null, el("a", {href: `./${path}`}, "The page of this run"));
  }
  const command = sweep.rerun.map(word => quoted(word.replaceAll("{point}", number))).join(" ");
  const code = el("code", null, command);
  return el("div", null, el("p", null, "Its own page is made by"), el("p", {className: "command"}, code, " ", copyButton(command, code)));
}

function stateNotice(sweep, index) {
  const state = sweep.points.state[index];
  if (state === "failed") return notice("warning", "Failed", [sweep.points.failure[index] || "No reason is known."]);
  return state === "constrained" ? notice("", "Constrained", [`It cannot be the best: a constraint does not hold, or what is maximised is not known of it. ${sweep.plan.constraints.join("; ")}`]) : null;
}

// A run over the page. Esc or the button closes it and leads back to where it was opened.
function openRun(index) {
  const sweep = sweepOfPage;
  const dialog = byId("run");
  const rows = sweep.variables.map(({title, unit, values, formula}) => [title, valueNode(values[index], unit), formula]);
  const title = el("h2", {id: "run-title", tabindex: "-1"}, `Point ${sweep.points.number[index]}${index === sweep.best ? ", the best" : ""}`);
  dialog.replaceChildren(el("div", {className: "run-head"}, title, el("button", {type: "button", onclick: () => dialog.close()}, "Close (Esc)")),
    ...[stateNotice(sweep, index), factList(sweep.valuesOf(index)), wayToPage(sweep, index)].filter(Boolean),
    plainTable("Measures", [["Measure", "text"], ["Value", "number"], ["Formula", "text"]], rows));
  dialog.showModal();
  title.focus();
}
