// Parallel coordinates: an axis for each dimension and some measures, a line for each point. A range on an axis selects the points that
// lie in it, for the whole page.
const SHOWN_BEST = 20;

class Parallel extends Drawing {
  constructor(sweep) {
    super({title: "Parallel coordinates", height: 340, keys: "Left and right choose an axis; up and down move the lower end of its range, with Shift " +
      "the upper end; Delete lifts it, 0 all of them. The points selected are those of the table of runs."});
    this.sweep = sweep;
    this.measure = Math.min(sweep.variables.length - 1, Math.max(1, sweep.variables.indexOf(sweep.outOfSample)));
    this.axis = -1;
    this.ranges = new Map();  // of an axis by its name: [from, to] from 0 to 1
    this.canvas.addEventListener("mousedown", event => this.startDrag(event));
    this.canvas.addEventListener("focus", () => this.choose(Math.max(0, this.axis)));
    this.canvas.addEventListener("blur", () => this.refresh());
    this.build();
  }

  // Each axis: {name, title, at: the place from 0 to 1 of each point, NaN where unknown, low(place) and high(place): the first value from there on, and
  // the last until there, ticks, step}.
  build() {
    const {sweep} = this;
    const variables = [sweep.objective, ...this.measure >= 1 ? [sweep.variables[this.measure]] : []];
    this.axes = [...sweep.axes.filter(({classes}) => classes.length > 1).map(axis => this.dimensionAxis(axis)),
      ...variables.map(variable => this.variableAxis(variable))];
    this.canvas.style.minWidth = `${this.axes.length * 84}px`;
    this.ranges = new Map(this.axes.filter(({name}) => this.ranges.has(name)).map(({name}) => [name, this.ranges.get(name)]));
    this.axis = Math.min(this.axis, this.axes.length - 1);
  }

  dimensionAxis({name, classes, of}) {
    const last = classes.length - 1;
    const every = labelEvery(1, last / 7);
    const ticks = classes.map((_, index) => index).filter(index => index % every === 0).map(index => index / last);
    return {name: `d ${name}`, title: name, at: of.map(place => place / last), ticks, step: 1 / last,
      low: place => classes[Math.min(last, Math.ceil(place * last - 1e-9))].first, high: place => classes[Math.floor(place * last + 1e-9)].last};
  }

  variableAxis({name, title, unit, values}) {
    const [low, high] = padded(knownRange(values) || [0, 1]);
    const width = high - low;
    const label = place => tickText(Number((low + place * width).toPrecision(4)), unit);
    return {name: `v ${name}`, title, at: values.map(value => value === null ? NaN : (value - low) / width), step: 0.05,
      ticks: niceTicks([low, high], 6).map(tick => (tick - low) / width), low: label, high: label};
  }

  x(axis) {
    const margin = 52;
    return margin + (this.axes.length > 1 ? axis / (this.axes.length - 1) : 0.5) * (this.width - 2 * margin - 20);
  }

  y(place) {
    return 30 + (1 - place) * (this.height - 42);
  }

  paint(context) {
    const {sweep} = this;
    const all = Array.from({length: sweep.count}, (_, index) => index);
    if (sweep.selection) this.paintLines(context, all.filter(index => !sweep.isSelected(index)), "grid", 1);
    // The more lines, the fainter, so that one sees where they crowd.
    context.globalAlpha = Math.min(1, Math.max(0.12, 10 / Math.sqrt(sweep.count)));
    this.paintLines(context, all.filter(index => sweep.isSelected(index)), "soft", 0.7);
    context.globalAlpha = 1;
    const best = sweep.ranked.filter(index => sweep.isSelected(index)).slice(0, SHOWN_BEST);
    this.paintLines(context, best, "equity", 1.5);
    if (sweep.best !== null) this.paintLines(context, [sweep.best], "mark", 2.5);
    this.axes.forEach((axis, index) => this.paintAxis(context, axis, this.x(index)));
  }

  // Many points share a piece of line, pixel by pixel, which is drawn once.
  paintLines(context, list, colour, width) {
    Object.assign(context, {strokeStyle: theme(colour), lineWidth: width});
    const pixels = this.axes.map(({at}) => at);
    for (let axis = 0; axis + 1 < pixels.length; ++axis) {
      const [x, next] = [this.x(axis), this.x(axis + 1)];
      const drawn = new Set();
      for (const index of list) {
        const [from, to] = [Math.round(this.y(pixels[axis][index])), Math.round(this.y(pixels[axis + 1][index]))];
        const key = from * 4096 + to;
        if (Number.isNaN(key) || drawn.has(key)) continue;
        drawn.add(key);
        context.beginPath();
        context.moveTo(x, from);
        context.lineTo(next, to);
        context.stroke();
      }
    }
  }

  paintAxis(context, {name, title, ticks, low}, x) {
    context.fillStyle = theme("ink");
    context.fillRect(x, this.y(1), 1, this.y(0) - this.y(1));
    context.textAlign = "center";
    const room = this.axes.length > 1 ? this.x(1) - this.x(0) - 8 : this.width;
    context.fillText(fitText(context, title, room), Math.max(x, context.measureText(fitText(context, title, room)).width / 2), 12);
    context.textAlign = "left";
    for (const tick of ticks) {
      const text = fitText(context, low(tick), Math.min(room, this.width - x) - 10);
      context.globalAlpha = 0.8;
      context.fillStyle = theme("paper");
      context.fillRect(x + 3, this.y(tick) - 7, context.measureText(text).width + 4, 14);
      context.globalAlpha = 1;
      context.fillStyle = theme("soft");
      context.fillText(text, x + 5, this.y(tick));
    }
    const range = this.ranges.get(name);
    if (range) this.box(context, x, range, "equity");
  }

  box(context, x, [from, to], colour) {
    Object.assign(context, {strokeStyle: theme(colour), lineWidth: 2, fillStyle: theme(colour), globalAlpha: 0.25});
    const place = [x - 7, this.y(to) - 1, 15, this.y(from) - this.y(to) + 2];
    context.fillRect(...place);
    context.globalAlpha = 1;
    context.strokeRect(...place);
  }

  refresh() {
    if (!(this.width >= 40)) return;
    super.refresh();
    if (document.activeElement !== this.canvas || this.axis < 0) return;
    const context = this.canvas.getContext("2d");
    Object.assign(context, {strokeStyle: theme("focus"), lineWidth: 1});
    context.setLineDash([4, 3]);
    context.strokeRect(this.x(this.axis) - 12, this.y(1) - 6, 24, this.y(0) - this.y(1) + 12);
    context.setLineDash([]);
  }

  // Nothing is pointed at but axes, which a drag takes.
  find() {
    return -1;
  }

  point() {}

  choose(axis) {
    this.axis = axis;
    this.refresh();
    this.tellAxis();
  }

  tellAxis() {
    const {name, title, low, high} = this.axes[this.axis];
    const range = this.ranges.get(name);
    const count = this.sweep.selection ? this.sweep.selection.reduce((sum, one) => sum + one, 0) : this.sweep.count;
    this.readout.textContent = `${title}: ${range ? `${low(range[0])} to ${high(range[1])}` : "all"}; ` +
      `${grouped(count, 0, 0)} of ${plural(this.sweep.count, "point")} selected`;
  }

  setRange(range) {
    const {name} = this.axes[this.axis];
    if (range) this.ranges.set(name, range);
    else this.ranges.delete(name);
    this.apply();
  }

  // A little wider than what is shown, so that rounding leaves nothing out. An unknown value lies in no range.
  apply() {
    const limits = this.axes.filter(({name}) => this.ranges.has(name)).map(({name, at}) => [at, ...this.ranges.get(name)]);
    const isIn = index => limits.every(([at, from, to]) => at[index] >= from - 1e-9 && at[index] <= to + 1e-9) ? 1 : 0;
    this.sweep.select(limits.length === 0 ? null : Uint8Array.from({length: this.sweep.count}, (_, index) => isIn(index)));
    this.tellAxis();
  }

  clear() {
    this.ranges.clear();
    this.apply();
  }

  // A drag begins at a place and ends elsewhere; without moving it lifts the range.
  startDrag(event) {
    const distances = this.axes.map((_, index) => Math.abs(this.x(index) - event.offsetX));
    const axis = distances.indexOf(Math.min(...distances));
    if (distances[axis] > 30) return;
    this.choose(axis);
    const top = this.canvas.getBoundingClientRect().top;
    const placeOf = y => Math.min(1, Math.max(0, 1 - (y - top - 30) / (this.height - 42)));
    const from = placeOf(event.clientY);
    const move = moved => {
      const to = placeOf(moved.clientY);
      const ends = [Math.min(from, to), Math.max(from, to)];
      this.setRange(Math.abs(to - from) < 0.01 ? null : ends);
    };
    const drag = moved => {
      cancelAnimationFrame(this.frame);
      this.frame = requestAnimationFrame(() => move(moved));
    };
    const end = ended => {
      cancelAnimationFrame(this.frame);
      removeEventListener("mousemove", drag);
      move(ended);
    };
    addEventListener("mousemove", drag);
    addEventListener("mouseup", end, {once: true});
  }

  move(key, isShift) {
    const {name, step} = this.axes[this.axis];
    const [from, to] = this.ranges.get(name) || [0, 1];
    const direction = {ArrowUp: step, ArrowDown: -step}[key];
    const within = (value, low, high) => Math.min(high, Math.max(low, value));
    if (key === "ArrowLeft" || key === "ArrowRight") this.choose(within(this.axis + (key === "ArrowRight" ? 1 : -1), 0, this.axes.length - 1));
    else if (direction) this.setRange(isShift ? [from, within(to + direction, from, 1)] : [within(from + direction, 0, to), to]);
    else if (key === "Delete" || key === "Backspace") this.setRange(null);
    else if (key === "0") this.clear();
    else return false;
    return true;
  }
}

function showParallel(sweep) {
  const drawing = new Parallel(sweep);
  sweep.listeners.push(() => drawing.repaint());
  const note = el("p", {className: "note"}, "Drag along an axis to select a range, click it to lift it; the table of runs shows what is selected. ",
    sweep.best === null ? "" : `Orange: the best. Blue: the ${SHOWN_BEST} best of those selected.`);
  const others = sweep.variables.slice(1);
  show("parallel",
    el("div", {className: "controls"},
      others.length > 0 ? choice("Beside the objective", others.map(({title}) => title), drawing.measure - 1, index => {
        drawing.measure = index + 1;
        drawing.build();
        drawing.apply();
      }) : "",
      el("button", {type: "button", onclick: () => drawing.clear()}, "Select all points")),
    el("div", {className: "scroll"}, drawing.element), note);
  return drawing;
}
