// One picture over time. dygraphs gives axes, ticks, dragging and the range selector; the series are painted here, since each zoom
// shows the lowest and highest of what falls on a pixel.
const DASHES = [[], [7, 3], [2, 3], [9, 3, 2, 3], [12, 4], [4, 4], [1, 4], [12, 3, 3, 3, 3, 3]];

// Its legend would need an inline style, which the page's policy forbids; the page has legends of its own.
Dygraph.PLUGINS = Dygraph.PLUGINS.filter(plugin => plugin !== Dygraph.Plugins.Legend);

class Panel {
  // picture: {id, title, unit, series, markers?, isZeroShown?, hasSelector?}; a series also has {colour, dash, isFilled}, where colour is
  // the name of one of the style sheet's, or a colour that begins with #. stack: the pictures that zoom together.
  constructor(picture, stack) {
    Object.assign(this, picture);
    this.stack = stack;
    this.plot = el("div", {className: picture.hasSelector ? "plot tall" : "plot", tabindex: "0",
      role: "application", "aria-roledescription": "chart", "aria-label": this.describe(), "aria-describedby": "chart-keys"});
    this.cursor = el("div", {className: "cursor", hidden: true});
    this.readout = el("span", {className: "readout"});
    this.element = el("figure", {className: "panel", id: `panel-${this.id}`},
      el("figcaption", null, el("h3", null, this.title), this.legend(), this.readout),
      el("div", {className: "stage"}, this.plot, this.cursor),
      this.numbers());
    this.plot.addEventListener("mousemove", event => this.stack.point(this.timeAt(event)));
    this.plot.addEventListener("mouseleave", () => this.stack.point(null));
    this.plot.addEventListener("keydown", event => this.stack.onKey(event));
  }

  describe() {
    const range = join(this.series.map(series => extent(series, [-Infinity, Infinity])));
    const text = range ? `from ${formatValue(range[0], this.unit)} to ${formatValue(range[1], this.unit)}` : "nothing to draw";
    return `Chart: ${this.title}, ${text}. The numbers are below it.`;
  }

  legend() {
    if (this.series.length < 2 && !this.markers) return "";
    this.swatches = this.series.map(() => el("canvas", {width: 28, height: 10, "aria-hidden": "true"}));
    const entries = this.series.map((series, index) => el("li", null, this.swatches[index], series.name));
    this.paintSwatches();
    const marker = (className, text) => el("li", null, el("span", {className: `mark ${className}`, "aria-hidden": "true"}), text);
    if (this.markers) entries.push(marker("buy", "buy"), marker("sell", "sell"));
    return el("ul", {className: "legend"}, entries);
  }

  paintSwatches() {
    (this.swatches || []).forEach((canvas, index) => {
      const context = canvas.getContext("2d");
      context.clearRect(0, 0, canvas.width, canvas.height);
      this.stroke(context, this.series[index]);
      context.moveTo(0, 5);
      context.lineTo(28, 5);
      context.stroke();
    });
  }

  numbers() {
    const list = this.series.map(series => () => seriesGrid(series, this.unit).element);
    if (this.markers) list.push(() => fillGrid(this.markers, this.stack).element);
    return lazyDetails(`Numbers of “${this.title}”`, () => list.map(make => make()));
  }

  // Once the element is on the page, whose widths it needs.
  draw() {
    const full = this.stack.full;
    const main = this.hasSelector ? this.series[0] : {ms: [], close: []};
    const rows = main.ms.map((ms, index) => [ms, main.close[index]]);
    if (rows.length === 0 || rows[0][0] > full[0]) rows.unshift([full[0], null]);
    if (rows[rows.length - 1][0] < full[1]) rows.push([full[1], null]);
    const axis = {axisLabelFontSize: 12};
    this.graph = new Dygraph(this.plot, rows, {
      labels: ["time", "value"], labelsUTC: true, highlightCircleSize: 0, animatedZooms: false,
      dateWindow: this.stack.window, valueRange: this.valueRange(), xRangePad: 0,
      plotter: event => this.paint(event),
      drawCallback: graph => this.stack.follow(graph.xAxisRange()),
      axes: {x: {...axis, pixelsPerLabel: 80, ticker: Dygraph.dateTicker, axisLabelFormatter: Dygraph.dateAxisLabelFormatter},
        y: {...axis, axisLabelWidth: 74, axisLabelFormatter: value => formatValue(value, this.axisUnit())}},
      showRangeSelector: Boolean(this.hasSelector), rangeSelectorHeight: 34, rangeSelectorAlpha: 0.75, ...this.colours(),
    });
  }

  axisUnit() {
    return this.unit === "money" ? "count" : this.unit;
  }

  colours() {
    return {gridLineColor: theme("grid"), axisLineColor: theme("line"), rangeSelectorPlotStrokeColor: theme("equity"),
      rangeSelectorPlotFillColor: theme("grid"), rangeSelectorPlotFillGradientColor: "", rangeSelectorBackgroundStrokeColor: theme("line")};
  }

  zoom() {
    this.graph.updateOptions({dateWindow: this.stack.window, valueRange: this.valueRange(), ...this.colours()});
  }

  valueRange() {
    const pairs = this.series.map(series => extent(series, this.stack.window));
    if (this.markers) pairs.push(extent({ms: this.markers.ms, close: this.markers.price}, this.stack.window));
    const range = join(this.isZeroShown ? [...pairs, [0, 0]] : pairs) || [0, 1];
    const pad = (range[1] - range[0]) * 0.06 || Math.max(Math.abs(range[0]) * 1e-6, 1e-9);
    return [range[0] - pad, range[1] + pad];
  }

  timeAt(event) {
    return this.graph.toDataXCoord(event.clientX - this.plot.getBoundingClientRect().left);
  }

  // The values at a time, in words: of each series the point that is nearest. Null: none.
  showAt(time) {
    const x = time === null ? NaN : this.graph.toDomXCoord(time);
    const area = this.graph.getArea();
    this.cursor.hidden = !(x >= area.x && x <= area.x + area.w);
    if (!this.cursor.hidden) this.cursor.style.left = `${x}px`;
    this.readout.textContent = time === null ? "" : this.tell(time);
    return this.readout.textContent;
  }

  tell(time) {
    const values = this.series.filter(({ms}) => ms.length > 0).map(series => {
      const index = nearestIndex(series.ms, time);
      const range = series.low && series.low[index] !== series.high[index]
        ? ` (${formatValue(series.low[index], this.unit)} to ${formatValue(series.high[index], this.unit)})` : "";
      const name = this.series.length > 1 ? `${series.name} ` : "";
      return {ms: series.ms[index], text: `${name}${formatValue(series.close[index], this.unit)}${range}`};
    });
    const fill = this.markers ? this.tellFill(time) : "";
    return values.length === 0 ? fill : `${formatTime(values[0].ms)}  ${values.map(({text}) => text).join(", ")}${fill}`;
  }

  // The fill under the cursor, within a few pixels.
  tellFill(time) {
    const {ms, side, volume, price} = this.markers;
    const index = nearestIndex(ms, time);
    if (index < 0 || Math.abs(this.graph.toDomXCoord(ms[index]) - this.graph.toDomXCoord(time)) > 6) return "";
    return `; ${side[index]} ${formatValue(volume[index], "lots")} at ${formatValue(price[index], "price")}`;
  }

  stroke(context, {colour, dash}) {
    context.strokeStyle = readable(colour);
    context.setLineDash(DASHES[(dash || 0) % DASHES.length]);
    context.lineWidth = 1.5;
    context.lineJoin = "round";
    context.beginPath();
  }

  paint({drawingContext: context, dygraph: graph, plotArea: area}) {
    const toX = ms => graph.toDomXCoord(ms);
    const toY = value => graph.toDomYCoord(value);
    const chosen = this.stack.chosen;
    context.save();
    if (chosen) {
      context.fillStyle = theme("chosen");
      context.fillRect(toX(chosen.from), area.y, Math.max(2, toX(chosen.to) - toX(chosen.from)), area.h);
    }
    // The first is what the others are drawn around: it lies on top.
    for (const series of [...this.series].reverse()) this.paintSeries(context, series, thin(series, this.stack.window, toX), toX, toY);
    if (this.markers) this.paintMarkers(context, toX, toY);
    if (this.markers && chosen && chosen.entryPrice !== undefined) {
      this.stroke(context, {colour: "ink", dash: 1});
      context.moveTo(toX(chosen.from), toY(chosen.entryPrice));
      context.lineTo(toX(chosen.to), toY(chosen.exitPrice));
      context.stroke();
    }
    context.restore();
  }

  paintSeries(context, series, columns, toX, toY) {
    if (columns.length === 0) return;
    const points = this.outline(series, columns, toX);
    const last = points[points.length - 1];
    context.fillStyle = readable(series.colour);
    context.globalAlpha = 0.22;
    context.beginPath();
    if (series.low) {
      columns.forEach(({x, low, high}, index) => {
        const left = index === 0 ? x : columns[index - 1].x;
        context.rect(left, toY(high), Math.max(1, x - left), toY(low) - toY(high));
      });
    } else if (series.isFilled) [[points[0][0], 0], ...points, [last[0], 0]].forEach(([x, value]) => context.lineTo(x, toY(value)));
    context.fill();
    context.globalAlpha = 1;
    this.stroke(context, series);
    points.forEach(([x, value]) => context.lineTo(x, toY(value)));
    context.stroke();
    this.paintDots(context, series, columns, toY);
  }

  // The line through the columns. Of one without a band around it the lowest and highest of a column are on the line.
  outline(series, columns, toX) {
    const points = [];
    columns.forEach(({x, first, low, high, close}, index) => {
      if (series.isStep && index > 0) points.push([x, columns[index - 1].close]);
      if (!series.low && low !== high) points.push([x, first], [x, low], [x, high]);
      points.push([x, close]);
    });
    const last = columns[columns.length - 1];
    if (series.isStep && series.until) points.push([Math.max(last.x, toX(Math.min(series.until, this.stack.window[1]))), last.close]);
    return points;
  }

  // The single points, once there is room between them.
  paintDots(context, series, columns, toY) {
    if (columns.length > 1 && columns[columns.length - 1].x - columns[0].x < 9 * columns.length) return;
    context.fillStyle = readable(series.colour);
    for (const {x, close} of columns) {
      context.beginPath();
      context.arc(x, toY(close), 2.5, 0, 2 * Math.PI);
      context.fill();
    }
  }

  // A triangle for each fill, pointing up below a buy's price and down above a sell's; where fills crowd, the lowest and highest
  // of a side on each two pixels, and smaller.
  paintMarkers(context, toX, toY) {
    const {ms, price, side} = this.markers;
    const begin = lowerBound(ms, this.stack.window[0]);
    const end = lowerBound(ms, this.stack.window[1] + 1e-3);
    const cells = new Map();
    for (let index = begin; index < end; ++index) {
      const x = toX(ms[index]);
      const key = `${Math.round(x / 2)} ${side[index]}`;
      const cell = cells.get(key);
      if (!cell) cells.set(key, {x, side: side[index], low: price[index], high: price[index]});
      else {
        cell.low = Math.min(cell.low, price[index]);
        cell.high = Math.max(cell.high, price[index]);
      }
    }
    const size = cells.size > 160 ? 3.5 : 6;
    for (const cell of cells.values()) {
      const values = new Set([cell.low, cell.high]);
      for (const value of values) paintFill(context, cell.x, toY(value), cell.side, size);
    }
  }
}

function paintFill(context, x, y, side, size) {
  const isBuy = side.toLowerCase() === "buy";
  const base = isBuy ? y + 1.7 * size : y - 1.7 * size;
  context.beginPath();
  context.moveTo(x, y);
  context.lineTo(x - size, base);
  context.lineTo(x + size, base);
  context.closePath();
  context.fillStyle = theme(isBuy ? "buy" : "sell");
  context.fill();
  context.strokeStyle = theme("paper");
  context.setLineDash([]);
  context.lineWidth = 1;
  context.stroke();
}

// A colour of the style sheet by its name; one that a script gave as it is, or the text's where it would not be seen on the paper.
function readable(colour) {
  if (!colour.startsWith("#")) return theme(colour);
  const brightness = text => [1, 3, 5].map(place => parseInt(text.slice(place, place + 2), 16)).reduce((sum, part, index) =>
    sum + part * [0.3, 0.59, 0.11][index], 0);
  return Math.abs(brightness(colour) - brightness(theme("paper"))) < 48 ? theme("ink") : colour;
}

function seriesGrid(series, unit) {
  const columns = [{title: "Time (UTC)", unit: "time"}, {title: series.name, unit}];
  if (series.low) columns.push({title: "Lowest", unit}, {title: "Highest", unit});
  const values = series.low ? [series.close, series.low, series.high] : [series.close];
  const rows = series.ms.map((ms, index) => [ms, ...values.map(column => column[index])]);
  return new Grid({caption: series.name, columns, rows});
}
