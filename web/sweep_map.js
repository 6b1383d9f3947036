// Two dimensions as a heat map, or one as a line. A cell stands for all points with its values; what it shows of them is their mean, the
// best by the objective, or the one with chosen values of the other dimensions.
const MODES = ["mean", "best point", "chosen values"];

// Cells by rows, null where there is no point: {value, low, high, count, failed, run}, run: the best of the points whose value is known, else any.
// isIn: which points count.
function gatherCells(sweep, {values}, across, up, mode, isIn) {
  const columns = across.classes.length;
  const cells = new Array(columns * (up ? up.classes.length : 1)).fill(null);
  const rank = index => values[index] === null ? 0 : sweep.canBeBest(index) ? 2 : 1;
  const objective = index => sweep.points.objective[index] ?? -Infinity;
  const isBetter = (one, other) => other < 0 || rank(one) > rank(other) || (rank(one) === rank(other) && objective(one) > objective(other));
  for (let index = 0; index < sweep.count; ++index) {
    if (!isIn(index)) continue;
    const place = across.of[index] + (up ? columns * up.of[index] : 0);
    const cell = cells[place] = cells[place] || {sum: 0, low: Infinity, high: -Infinity, count: 0, failed: 0, run: -1};
    if (sweep.points.state[index] === "failed") cell.failed += 1;
    if (isBetter(index, cell.run)) cell.run = index;
    if (values[index] === null) continue;
    cell.sum += values[index];
    cell.count += 1;
    cell.low = Math.min(cell.low, values[index]);
    cell.high = Math.max(cell.high, values[index]);
  }
  for (const cell of cells) {
    if (cell) cell.value = cell.count === 0 ? null : mode === 0 ? cell.sum / cell.count : values[cell.run];
  }
  return cells;
}

// What the map and the line share: cells, and how a reader goes through them.
class CellDrawing extends Drawing {
  set(sweep, variable, across, up, cells) {
    Object.assign(this, {sweep, variable, across, up, cells, at: -1});
    this.columns = across.classes.length;
    this.rows = up ? up.classes.length : 1;
    this.range = knownRange(cells.map(cell => cell && cell.value));
    this.best = sweep.best === null ? -1 : across.of[sweep.best] + (up ? this.columns * up.of[sweep.best] : 0);
    this.readout.textContent = "";
    this.setTitle(`${variable.title} by ${across.name}${up ? ` and ${up.name}` : ""}`);
  }

  tell(at) {
    const cell = this.cells[at];
    const place = `${this.across.name} ${this.across.classes[at % this.columns].label}` +
      (this.up ? `, ${this.up.name} ${this.up.classes[Math.floor(at / this.columns)].label}` : "");
    if (!cell) return `${place}: no point`;
    if (cell.value === null) return `${place}: ${cell.failed > 0 ? "failed" : "not known"}; ${this.sweep.label(cell.run)}`;
    const of = cell.count > 1 ? ` (${formatValue(cell.low, this.variable.unit)} to ${formatValue(cell.high, this.variable.unit)} in ` +
      `${plural(cell.count, "point")})` : "";
    return `${place}: ${formatValue(cell.value, this.variable.unit)}${of}; ${this.sweep.label(cell.run)}${at === this.best ? ", with the best" : ""}`;
  }

  run(at) {
    return this.cells[at] ? this.cells[at].run : -1;
  }

  move(key) {
    const [right, upward] = {ArrowRight: [1, 0], ArrowLeft: [-1, 0], ArrowUp: [0, 1], ArrowDown: [0, -1]}[key] || [0, 0];
    if (right === 0 && upward === 0) return false;
    const at = this.at >= 0 ? this.at : Math.max(0, this.best);
    const column = Math.min(this.columns - 1, Math.max(0, at % this.columns + (this.at >= 0 ? right : 0)));
    const row = Math.min(this.rows - 1, Math.max(0, Math.floor(at / this.columns) + (this.at >= 0 ? upward : 0)));
    this.point(row * this.columns + column);
    return true;
  }

  // The values of the dimension across, below the picture.
  paintAcross(context, {x, y, width, height}) {
    const labels = this.across.classes.map(({label}) => fitText(context, label, 90));
    const step = width / this.columns;
    const every = labelEvery(step, Math.max(...labels.map(label => context.measureText(label).width)) + 10);
    context.fillStyle = theme("soft");
    context.textAlign = "center";
    for (let column = 0; column < this.columns; column += every) context.fillText(labels[column], x + (column + 0.5) * step, y + height + 12);
    context.fillStyle = theme("ink");
    context.fillText(fitText(context, this.across.name, width), x + width / 2, y + height + 32);
  }

  paintNothing(context) {
    context.fillStyle = theme("soft");
    context.textAlign = "center";
    context.fillText("Nothing to draw: no point has this measure.", this.width / 2, 40);
  }

  // The same numbers in a table.
  numbers() {
    const {unit} = this.variable;
    const value = cell => cell ? valueNode(cell.value, unit, cell.failed > 0 ? "Failed." : "Not known.") : valueNode(null, unit, "No point.");
    if (this.up) {
      return plainTable(`${this.heading.textContent}: ${this.up.name} down, ${this.across.name} across`,
        [[this.up.name, "text"], ...this.across.classes.map(({label}) => [label, unit])],
        this.up.classes.map(({label}, row) => [label, ...this.across.classes.map((_, column) => value(this.cells[row * this.columns + column]))]));
    }
    return plainTable(this.heading.textContent, [[this.across.name, "text"], ["Shown", unit], ["Lowest", unit], ["Highest", unit], ["Points", "count"]],
      this.across.classes.map(({label}, column) => {
        const cell = this.cells[column];
        return [label, value(cell), ...cell && cell.count > 0 ? [cell.low, cell.high, cell.count] : [null, null, 0]];
      }));
  }
}

class HeatMap extends CellDrawing {
  repaint() {
    this.height = Math.min(560, Math.max(120, this.rows * 34)) + 50;
    super.repaint();
  }

  area(context) {
    const widest = Math.max(...this.up.classes.map(({label}) => context.measureText(label).width));
    const left = Math.min(this.width * 0.3, widest + 14);
    return {x: left, y: 24, width: this.width - left - (this.width > 480 ? 92 : 76), height: this.height - 68};
  }

  box(at) {
    const {x, y, width, height} = this.field;
    const [w, h] = [width / this.columns, height / this.rows];
    return [x + (at % this.columns) * w, y + (this.rows - 1 - Math.floor(at / this.columns)) * h, w, h];
  }

  // Bright is good, where a measure has a good end.
  share(value) {
    const [low, high] = this.range;
    const share = high > low ? (value - low) / (high - low) : 0.5;
    return this.variable.direction === "lower" ? 1 - share : share;
  }

  paint(context) {
    this.field = this.area(context);
    this.digits = this.range ? this.findDigits(context) : 0;
    this.cells.forEach((cell, at) => cell && this.paintCell(context, cell, this.box(at)));
    this.paintAcross(context, this.field);
    this.paintUp(context);
    this.paintLegend(context);
    if (this.best >= 0) this.outline(context, this.box(this.best), "mark");
  }

  paintCell(context, cell, [x, y, w, h]) {
    const gap = w > 6 && h > 6 ? 1 : 0;
    if (cell.value === null) {
      context.fillStyle = theme("soft");
      context.textAlign = "center";
      if (w > 8 && h > 8) context.fillText("×", x + w / 2, y + h / 2);
      return;
    }
    const [red, green, blue] = scaleColour(this.share(cell.value));
    context.fillStyle = `rgb(${red}, ${green}, ${blue})`;
    // To whole pixels, since a thin line of paper would else stand between cells.
    const [left, top] = [Math.round(x), Math.round(y)];
    context.fillRect(left, top, Math.round(x + w) - left - gap, Math.round(y + h) - top - gap);
    if (this.digits === 0) return;
    context.fillStyle = red * 0.3 + green * 0.59 + blue * 0.11 > 120 ? "#000000" : "#ffffff";
    context.textAlign = "center";
    context.fillText(this.brief(cell.value, this.digits), x + w / 2, y + h / 2);
  }

  brief(value, digits) {
    return tickText(Number(value.toPrecision(digits)), this.variable.unit);
  }

  // So many digits that each cell has room for its number; none: 0.
  findDigits(context) {
    const [, , width, height] = this.box(0);
    const fits = digits => this.cells.every(cell => !cell || cell.value === null || context.measureText(this.brief(cell.value, digits)).width < width - 5);
    return height < 16 || width < 24 ? 0 : [3, 2].find(fits) || 0;
  }

  paintUp(context) {
    const every = labelEvery(this.field.height / this.rows, 16);
    context.fillStyle = theme("soft");
    context.textAlign = "right";
    for (let row = 0; row < this.rows; row += every) {
      const [x, y, , h] = this.box(row * this.columns);
      context.fillText(fitText(context, this.up.classes[row].label, x - 8), x - 6, y + h / 2);
    }
    context.fillStyle = theme("ink");
    context.textAlign = "left";
    context.fillText(fitText(context, this.up.name, this.width / 2), 0, 10);
  }

  paintLegend(context) {
    if (!this.range) return;
    const [x, y, height] = [this.field.x + this.field.width + 14, this.field.y, Math.min(220, this.field.height)];
    const [low, high] = this.range;
    for (let pixel = 0; pixel < height; ++pixel) {
      context.fillStyle = `rgb(${scaleColour(this.share(high - (high - low) * pixel / height)).join(", ")})`;
      context.fillRect(x, y + pixel, 12, 1.5);
    }
    context.fillStyle = theme("soft");
    context.textAlign = "left";
    const texts = low === high ? [[low, 0.5]] : [[high, 0.03], [(low + high) / 2, 0.5], [low, 0.97]];
    for (const [value, share] of texts) {
      context.fillText(fitText(context, this.brief(value, 3), this.width - x - 16), x + 17, y + share * height);
    }
  }

  outline(context, [x, y, w, h], colour) {
    for (const [name, width, out] of [["paper", 5, 0], [colour, 2.5, 0]]) {
      context.strokeStyle = theme(name);
      context.lineWidth = width;
      context.strokeRect(x - out, y - out, w - 1, h - 1);
    }
    if (colour === "mark" && Math.min(w, h) < 10) ring(context, x + w / 2, y + h / 2, 8);
  }

  paintPointed(context) {
    this.outline(context, this.box(this.at), "ink");
  }

  find(x, y) {
    if (!this.field) return -1;
    const column = Math.floor((x - this.field.x) / this.field.width * this.columns);
    const row = this.rows - 1 - Math.floor((y - this.field.y) / this.field.height * this.rows);
    return column >= 0 && column < this.columns && row >= 0 && row < this.rows ? row * this.columns + column : -1;
  }
}

// Values of one dimension from left to right; a band from the lowest to the highest of a value's points.
class LineDrawing extends CellDrawing {
  position(at) {
    const {x, y, width, height} = this.field;
    const [low, high] = this.span;
    return [x + (at + 0.5) * width / this.columns, y + height - (this.cells[at].value - low) / (high - low) * height];
  }

  paint(context) {
    this.height = 300;
    this.field = {x: 76, y: 8, width: this.width - 84, height: this.height - 56};
    this.paintAcross(context, this.field);
    if (!this.range) return this.paintNothing(context);
    const known = this.cells.map((cell, at) => cell && cell.value !== null ? at : -1).filter(at => at >= 0);
    this.span = padded(knownRange(known.flatMap(at => [this.cells[at].low, this.cells[at].high])));
    this.paintValueAxis(context, this.field, this.span, this.variable.unit);
    this.paintBand(context, known);
    if (this.across.isOrdered) {
      Object.assign(context, {strokeStyle: theme("equity"), lineWidth: 1.5});
      context.beginPath();
      for (const at of known) context.lineTo(...this.position(at));
      context.stroke();
    }
    for (const at of known) this.dot(context, at, "equity", 3);
    if (known.includes(this.best)) ring(context, ...this.position(this.best), 7);
  }

  paintBand(context, known) {
    const half = Math.min(8, this.field.width / this.columns / 3);
    const [low, high] = this.span;
    const toY = value => this.field.y + this.field.height - (value - low) / (high - low) * this.field.height;
    context.fillStyle = theme("grid");
    for (const at of known) {
      const [x] = this.position(at);
      context.fillRect(x - half, toY(this.cells[at].high), 2 * half, toY(this.cells[at].low) - toY(this.cells[at].high));
    }
  }

  dot(context, at, colour, radius) {
    context.fillStyle = theme(colour);
    context.beginPath();
    context.arc(...this.position(at), radius, 0, 2 * Math.PI);
    context.fill();
  }

  paintPointed(context) {
    if (this.cells[this.at] && this.cells[this.at].value !== null) this.dot(context, this.at, "ink", 5);
  }

  find(x) {
    if (!this.field) return -1;
    const column = Math.floor((x - this.field.x) / this.field.width * this.columns);
    return column >= 0 && column < this.columns ? column : -1;
  }
}

// The choices above the picture, and the picture. A sweep has a dimension at least, those of ascending numbers come first.
class Maps {
  constructor(sweep) {
    this.sweep = sweep;
    this.useful = sweep.axes.map((_, index) => index).filter(index => sweep.axes[index].classes.length > 1)
      .sort((a, b) => sweep.axes[b].isOrdered - sweep.axes[a].isOrdered);
    if (this.useful.length === 0) this.useful = [0];
    [this.across, this.up = -1] = this.useful;
    this.variable = 0;
    this.mode = 0;
    this.chosen = sweep.axes.map(({of}) => sweep.best === null ? 0 : of[sweep.best]);
    const keys = "The arrow keys go from cell to cell, Enter opens the cell's best point; the numbers are below it.";
    this.map = new HeatMap({title: "", height: 400, keys});
    this.line = new LineDrawing({title: "", height: 300, keys});
    this.controls = el("div", {className: "controls"});
    this.others = el("div", {className: "controls"});
    this.stage = el("div");
    this.element = el("div", null, this.controls, this.others, this.stage);
    this.build();
  }

  get drawing() {
    return this.up < 0 ? this.line : this.map;
  }

  build() {
    const {axes, variables} = this.sweep;
    const names = this.useful.map(index => axes[index].name);
    const set = change => {
      Object.assign(this, change);
      this.update();
    };
    this.choices = {
      across: choice("Across", names, 0, place => this.place("across", "up", this.useful[place])),
      up: choice("Up", [...names, "none: a line"], 1, place => this.place("up", "across", place === names.length ? -1 : this.useful[place])),
      mode: choice("A cell shows the", MODES, this.mode, mode => set({mode})),
    };
    this.controls.replaceChildren(choice("Measure", variables.map(({title}) => title), this.variable, variable => set({variable})),
      ...Object.values(this.choices));
    this.update();
  }

  // The axes change places where one gets the dimension of the other; across always has one.
  place(axis, other, dimension) {
    if (this[other] === dimension) this[other] = this[axis] >= 0 ? this[axis] : this.useful.find(index => index !== dimension);
    this[axis] = dimension;
    this.update();
  }

  // What lies on no axis.
  rest() {
    return this.useful.filter(index => index !== this.across && index !== this.up);
  }

  buildOthers() {
    const {axes} = this.sweep;
    this.others.replaceChildren(...this.mode !== 2 ? [] : this.rest().map(index => choice(axes[index].name,
      axes[index].classes.map(({label}) => label), this.chosen[index], place => {
        this.chosen[index] = place;
        this.paint();
      })));
  }

  update() {
    const select = name => this.choices[name].querySelector("select");
    select("across").value = this.useful.indexOf(this.across);
    select("up").value = this.up < 0 ? this.useful.length : this.useful.indexOf(this.up);
    this.choices.up.hidden = this.useful.length < 2;
    this.choices.mode.hidden = this.rest().length === 0;
    this.buildOthers();
    this.paint();
  }

  paint() {
    const {sweep, drawing} = this;
    const [across, up] = [sweep.axes[this.across], this.up < 0 ? null : sweep.axes[this.up]];
    const fixed = this.mode === 2 ? this.rest() : [];
    const variable = sweep.variables[this.variable];
    const isIn = index => fixed.every(place => sweep.axes[place].of[index] === this.chosen[place]);
    drawing.set(sweep, variable, across, up, gatherCells(sweep, variable, across, up, this.mode, isIn));
    if (sweep.best !== null && !isIn(sweep.best)) drawing.best = -1;
    const binned = [across, up].filter(axis => axis && axis.isBinned).map(({name}) => name);
    this.stage.replaceChildren(drawing.element,
      el("p", {className: "note"}, this.note(binned)), lazyDetails(`Numbers of “${drawing.heading.textContent}”`, () => drawing.numbers()));
    drawing.repaint();
  }

  note(binned) {
    const direction = this.sweep.variables[this.variable].direction;
    return [this.up >= 0 ? direction !== "none" && "Brighter is better. " : "Grey: from the lowest to the highest of a value's points. ", this.sweep.best === null ? "" : this.up >= 0 ? "The frame marks the best. " : "The ring marks the best. ",
      this.drawing.cells.some(cell => cell && cell.value === null && cell.failed > 0) ? "× stands where all points failed. " : "", binned.length > 0 ? `Neighbouring values of ${binned.join(" and ")} share a cell.` : ""]
      .filter(Boolean).join("");
  }
}
