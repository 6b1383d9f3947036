// The document of a sweep as the parts of the page read it. Points are known by their place in its columns; `number` is what people call
// them.
units.bytes = value => `${grouped(value / 1048576, 0, 1)} MiB`;

const MOST_CLASSES = 60;  // of a dimension on an axis: with more values neighbours share one
const MOST_COLUMNS = 6;   // measures that tables show before a reader chooses

// A text as an expression takes it.
function textValue(text) {
  if (text === "true" || text === "false") return Number(text === "true");
  return text.trim() !== "" && Number.isFinite(Number(text)) ? Number(text) : text;
}

class Sweep {
  constructor(document) {
    Object.assign(this, document);
    this.count = this.points.number.length;
    this.sign = this.plan.minimise ? -1 : 1;
    this.variables = this.makeVariables();
    this.objective = this.variables[0];
    this.inSample = this.variables.find(({name}) => name === "inSample");
    this.outOfSample = this.variables.find(({name}) => name === "outOfSample");
    this.axes = this.dimensions.map((dimension, place) => makeAxis(dimension, this.points.places[place]));
    this.ranked = Array.from({length: this.count}, (_, index) => index).filter(index => this.canBeBest(index))
      .sort((a, b) => this.points.objective[b] - this.points.objective[a]);
    this.names = this.makeNames();
    this.selection = null;
    this.listeners = [];
  }

  // Whatever a point has a number of: {name, title, unit, direction, formula, values}, the objective first. Those that no point knows are left
  // out, but for the objective.
  makeVariables() {
    const {points, plan, sign} = this;
    const text = plan.minimise || plan.maximise || "objective";
    const {title, unit} = this.measures.find(({name}) => name === text) || {title: text, unit: "ratio"};
    const known = ({name, values}) => name === "objective" || values.some(value => value !== null);
    const samples = this.samples || {};
    const objective = (name, label, values, formula) => ({name, title: label, unit, direction: sign > 0 ? "higher" : "lower", formula,
      values: values.map(value => this.shown(value))});
    return [
      objective("objective", `Objective: ${title}`, points.objective, `what is ${sign > 0 ? "maximised" : "minimised"}: ${text}`),
      objective("inSample", "In sample", points.inSample, samples.inSample || "the objective in sample"),
      objective("outOfSample", "Out of sample", points.outOfSample, samples.outOfSample || "the objective out of sample"),
      ...this.measures.map(measure => ({...measure, values: points.measures[measure.name]})),
      {name: "seconds", title: "Run time", unit: "seconds", direction: "lower", formula: "how long the run took", values: points.seconds},
      {name: "memory", title: "Memory", unit: "bytes", direction: "lower", formula: "the most memory of the run", values: points.memory},
    ].filter(known);
  }

  // Of an objective as the document holds it, where more is always better, what a reader calls it.
  shown(value) {
    return value === null || value === 0 ? value : this.sign * value;
  }

  makeNames() {
    const names = new Map([["number", index => this.points.number[index]], ["state", index => this.points.state[index]],
      ["failure", index => this.points.failure[index]]]);
    for (const {name, values} of this.variables) names.set(name, index => values[index]);
    this.dimensions.forEach(({name, values}, place) => {
      const places = this.points.places[place];
      const known = values.map(textValue);
      for (const word of [name.replace(/:[^:]*$/, ""), name]) names.set(word, index => known[places[index]]);
    });
    return names;
  }

  canBeBest(index) {
    return this.points.state[index] === "done" && this.points.objective[index] !== null;
  }

  label(index) {
    return `point ${this.points.number[index]}`;
  }

  valueOf(index, dimension) {
    return this.dimensions[dimension].values[this.points.places[dimension][index]];
  }

  // Name and value of each dimension.
  valuesOf(index) {
    return this.dimensions.map(({name}, dimension) => [name, this.valueOf(index, dimension)]);
  }

  // The measures that tables show at first, beside the objective.
  mainMeasures() {
    const isOther = ({name}) => name !== this.plan.maximise && name !== this.plan.minimise;
    const isMeasure = variable => this.measures.some(({name}) => name === variable.name);
    return this.variables.filter(variable => isMeasure(variable) && isOther(variable)).slice(0, MOST_COLUMNS);
  }

  // Which points the reader has chosen, 1 for each that is; null: all. Those who show points follow.
  select(selection) {
    this.selection = selection;
    for (const listener of this.listeners) listener();
  }

  isSelected(index) {
    return this.selection === null || this.selection[index] === 1;
  }
}

// A dimension as an axis: {name, isOrdered, isBinned, classes: [{first, last, label}], of: the class of each point}. Classes are its values, or runs of neighbours
// where there are too many.
function makeAxis({name, ordered, values}, places) {
  const size = Math.ceil(values.length / MOST_CLASSES);
  const classes = Array.from({length: Math.ceil(values.length / size)}, (_, index) => {
    const [first, last] = [values[index * size], values[Math.min(values.length, (index + 1) * size) - 1]];
    return {first, last, label: first === last ? first : `${first} to ${last}`};
  });
  return {name, isOrdered: ordered, isBinned: size > 1, classes, of: places.map(place => Math.floor(place / size))};
}

// Lowest and highest of what is known; null where nothing is.
function knownRange(values) {
  let [low, high] = [Infinity, -Infinity];
  for (const value of values) {
    if (value === null) continue;
    if (value < low) low = value;
    if (value > high) high = value;
  }
  return low <= high ? [low, high] : null;
}
