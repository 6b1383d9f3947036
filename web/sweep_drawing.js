// Pictures on a canvas that a reader points into by mouse and keys.
const FONT = '12px system-ui, "Liberation Sans", sans-serif';

// Viridis, which the colour-blind and a black-and-white printer tell apart.
const SCALE = ["#440154", "#482878", "#3e4989", "#31688e", "#26828e", "#1f9e89", "#35b779", "#6ece58", "#b5de2b", "#fde725"]
  .map(text => [1, 3, 5].map(place => parseInt(text.slice(place, place + 2), 16)));

// share: from 0, dark, to 1, bright.
function scaleColour(share) {
  const place = Math.min(1, Math.max(0, share)) * (SCALE.length - 1);
  const index = Math.min(SCALE.length - 2, Math.floor(place));
  return SCALE[index].map((part, channel) => Math.round(part + (SCALE[index + 1][channel] - part) * (place - index)));
}

// Round values between two, about so many.
function niceTicks([low, high], most) {
  const raw = (high - low) / Math.max(1, most);
  if (!(raw > 0)) return [low];
  const power = 10 ** Math.floor(Math.log10(raw));
  const step = [1, 2, 5, 10].map(factor => factor * power).find(size => size >= raw) || raw;
  const ticks = [];
  for (let tick = Math.ceil(low / step - 1e-9); tick * step <= high + step * 1e-9; ++tick) ticks.push(tick * step);
  return ticks;
}

// A tick needs no more decimals than its neighbours.
const tickText = (value, unit) => unit === "money" || unit === "ratio" ? grouped(Number(value.toPrecision(12)), 0, 6) : formatValue(value, unit);

// A text that ends with three points where there is no room.
function fitText(context, text, width) {
  if (context.measureText(text).width <= width) return text;
  let [from, to] = [0, text.length];
  while (from < to) {
    const middle = (from + to + 1) >> 1;
    if (context.measureText(`${text.slice(0, middle)}…`).width <= width) from = middle;
    else to = middle - 1;
  }
  return from > 0 ? `${text.slice(0, from)}…` : "";
}

// Of so many places of a size which ones are labelled, so that labels of a length do not touch.
const labelEvery = (size, length) => Math.max(1, Math.ceil(length / size));

function ring(context, x, y, radius) {
  for (const [colour, width] of [["paper", 5], ["mark", 2.5]]) {
    context.strokeStyle = theme(colour);
    context.lineWidth = width;
    context.beginPath();
    context.arc(x, y, radius, 0, 2 * Math.PI);
    context.stroke();
  }
}

class Drawing {
  // keys: words for what the keys do.
  constructor({title, height, keys}) {
    this.height = height;
    this.base = document.createElement("canvas");
    this.canvas = el("canvas", {tabindex: "0", role: "application", "aria-roledescription": "chart"});
    this.heading = el("h3");
    this.keys = keys;
    this.readout = el("p", {className: "readout", "aria-live": "polite"});
    this.element = el("figure", {className: "drawing"}, el("figcaption", null, this.heading), this.readout, this.canvas);
    this.canvas.addEventListener("mousemove", event => this.point(this.find(event.offsetX, event.offsetY)));
    this.canvas.addEventListener("mouseleave", () => this.point(-1));
    this.canvas.addEventListener("click", () => this.open());
    this.canvas.addEventListener("keydown", event => this.onKey(event));
    this.at = -1;  // what is pointed at
    this.setTitle(title);
    new ResizeObserver(() => this.canvas.clientWidth === this.width || this.repaint()).observe(this.canvas);
  }

  setTitle(title) {
    this.heading.textContent = title;
    this.canvas.setAttribute("aria-label", `Chart: ${title}. ${this.keys}`);
  }

  // Nothing is told of a canvas that is not on the page, or is too narrow for any picture.
  repaint() {
    this.width = this.canvas.clientWidth;
    if (this.width < 40) return;
    this.canvas.style.height = `${this.height}px`;
    this.pixels = window.devicePixelRatio || 1;
    for (const canvas of [this.base, this.canvas]) Object.assign(canvas, {width: this.width * this.pixels, height: this.height * this.pixels});
    const context = this.prepare(this.base);
    this.paint(context, this.width, this.height);
    this.refresh();
  }

  prepare(canvas) {
    const context = canvas.getContext("2d");
    context.setTransform(this.pixels, 0, 0, this.pixels, 0, 0);
    context.clearRect(0, 0, this.width, this.height);
    Object.assign(context, {font: FONT, textBaseline: "middle", fillStyle: theme("ink")});
    return context;
  }

  // What is pointed at is painted over the picture, which stays.
  refresh() {
    const context = this.prepare(this.canvas);
    context.drawImage(this.base, 0, 0, this.width, this.height);
    if (this.at >= 0) this.paintPointed(context);
  }

  point(at) {
    if (at === this.at) return;
    this.at = at;
    this.canvas.classList.toggle("opens", at >= 0 && this.run(at) >= 0);
    this.readout.textContent = at >= 0 ? this.tell(at) : "";
    if (this.width >= 40) this.refresh();
  }

  // The point that a click or Enter opens; none: -1.
  run() {
    return -1;
  }

  open() {
    const run = this.at >= 0 ? this.run(this.at) : -1;
    if (run >= 0) openRun(run);
  }

  onKey(event) {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    if (event.key === "Enter" || event.key === " ") this.open();
    else if (event.key === "Escape") this.point(-1);
    else if (!this.move(event.key, event.shiftKey)) return;
    event.preventDefault();
  }

  // The axis at the left and its lines, from bottom to top, with its values.
  paintValueAxis(context, {x, y, width, height}, range, unit) {
    context.textAlign = "right";
    for (const tick of niceTicks(range, height / 45)) {
      const at = y + height - (tick - range[0]) / (range[1] - range[0]) * height;
      context.fillStyle = theme("grid");
      context.fillRect(x, Math.round(at), width, 1);
      context.fillStyle = theme("soft");
      context.fillText(fitText(context, tickText(tick, unit), x - 8), x - 6, at);
    }
  }
}

// A range with room at both ends.
function padded([low, high]) {
  const pad = (high - low) * 0.05 || Math.max(Math.abs(low) * 0.05, 1e-9);
  return [low - pad, high + pad];
}
