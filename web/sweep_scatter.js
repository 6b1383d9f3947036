// In sample against out of sample, a dot for each point.
class Scatter extends Drawing {
  constructor(sweep) {
    super({title: "Each point in sample and out of sample", height: 420, keys: "Left and right go from point to point by their value in sample, Enter opens one; the " +
      "numbers are below it."});
    this.sweep = sweep;
    [this.x, this.y] = [sweep.inSample, sweep.outOfSample];
    const isKnown = index => this.x.values[index] !== null && this.y.values[index] !== null;
    this.order = sweep.points.number.map((_, index) => index).filter(isKnown).sort((a, b) => this.x.values[a] - this.x.values[b]);
    this.ranges = [this.x, this.y].map(({values}) => padded(knownRange(this.order.map(index => values[index])) || [0, 1]));
    this.grey = [];
  }

  place(index) {
    const {x, y, width, height} = this.field;
    const share = ({values}, [low, high]) => (values[index] - low) / (high - low);
    return [x + share(this.x, this.ranges[0]) * width, y + (1 - share(this.y, this.ranges[1])) * height];
  }

  paint(context) {
    this.field = {x: 64, y: 24, width: this.width - 72, height: this.height - 72};
    this.paintValueAxis(context, this.field, this.ranges[1], this.y.unit);
    this.paintAcross(context, this.field);
    this.paintDiagonal(context, this.field);
    this.places = this.order.map(index => this.place(index));
    for (const isSelected of [false, true]) {
      context.fillStyle = theme(isSelected ? "equity" : "line");
      context.globalAlpha = isSelected ? 0.6 : 1;
      this.places.forEach(([x, y], at) => {
        if (this.sweep.isSelected(this.order[at]) === isSelected) context.fillRect(x - 2, y - 2, 4, 4);
      });
    }
    context.globalAlpha = 1;
    const best = this.order.indexOf(this.sweep.best);
    if (best >= 0) ring(context, ...this.places[best], 7);
  }

  paintAcross(context, {x, y, width, height}) {
    const [low, high] = this.ranges[0];
    context.textAlign = "center";
    for (const tick of niceTicks([low, high], width / 90)) {
      const at = x + (tick - low) / (high - low) * width;
      context.fillStyle = theme("grid");
      context.fillRect(Math.round(at), y, 1, height);
      context.fillStyle = theme("soft");
      context.fillText(tickText(tick, this.x.unit), at, y + height + 12);
    }
    const name = ({title, formula}) => `${title}: ${formula}`;
    context.fillStyle = theme("ink");
    context.fillText(fitText(context, name(this.x), width), x + width / 2, y + height + 34);
    context.textAlign = "left";
    context.fillText(fitText(context, name(this.y), this.width), 0, 10);
  }

  // Where both are equal.
  paintDiagonal(context, {x, y, width, height}) {
    const [[left, right], [low, high]] = this.ranges;
    const [from, to] = [Math.max(left, low), Math.min(right, high)];
    if (from >= to) return;
    Object.assign(context, {strokeStyle: theme("soft"), lineWidth: 1});
    context.setLineDash([5, 4]);
    context.beginPath();
    for (const value of [from, to]) context.lineTo(x + (value - left) / (right - left) * width, y + (1 - (value - low) / (high - low)) * height);
    context.stroke();
    context.setLineDash([]);
  }

  // The nearest within some pixels.
  find(x, y) {
    let [found, least] = [-1, 15 ** 2];
    (this.places || []).forEach(([left, top], at) => {
      const distance = (left - x) ** 2 + (top - y) ** 2;
      if (distance < least) [found, least] = [at, distance];
    });
    return found;
  }

  tell(at) {
    const index = this.order[at];
    const values = this.sweep.valuesOf(index).map(([name, value]) => `${name} ${value}`).join(", ");
    return `${this.sweep.label(index)}: ${formatValue(this.x.values[index], this.x.unit)} in sample, ` +
      `${formatValue(this.y.values[index], this.y.unit)} out of sample; ${values}${index === this.sweep.best ? "; the best" : ""}`;
  }

  run(at) {
    return this.order[at];
  }

  move(key) {
    const direction = {ArrowLeft: -1, ArrowRight: 1}[key];
    if (!direction || this.order.length === 0) return false;
    const begin = Math.max(0, this.order.indexOf(this.sweep.best));
    this.point(this.at < 0 ? begin : Math.min(this.order.length - 1, Math.max(0, this.at + direction)));
    return true;
  }

  paintPointed(context) {
    context.fillStyle = theme("ink");
    context.beginPath();
    context.arc(...this.places[this.at], 5, 0, 2 * Math.PI);
    context.fill();
  }

  numbers() {
    const columns = [{title: "Point", unit: "id"}, ...[this.x, this.y].map(({title, unit}) => ({title, unit}))];
    return new Grid({caption: this.heading.textContent, columns,
      rows: this.order.map(index => [this.sweep.points.number[index], this.x.values[index], this.y.values[index]])}).element;
  }
}

function showScatter(sweep) {
  byId("samples-section").hidden = !sweep.inSample || !sweep.outOfSample;
  if (byId("samples-section").hidden) return null;
  const drawing = new Scatter(sweep);
  sweep.listeners.push(() => drawing.repaint());
  const correlation = sweep.luck ? sweep.luck.rankCorrelation : null;
  show("samples", el("p", null, "Rank correlation: ", valueNode(correlation, "probability"), ". ",
    "On the dashed line both are equal; below it a point did worse out of sample. The ring marks the best."),
    drawing.element, lazyDetails(`Numbers of “${drawing.heading.textContent}”`, () => drawing.numbers()));
  return drawing;
}
