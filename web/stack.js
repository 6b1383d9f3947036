// Pictures over one time axis, which zoom and point together, with their buttons and keys.
const SHORTEST_WINDOW = 0.01;  // milliseconds

class Stack {
  constructor(pictures, label) {
    const drawn = pictures.filter(picture => picture.series.some(({ms}) => ms.length > 0));
    const full = timeExtent(drawn.flatMap(({series, markers}) => markers ? [...series, markers] : series)) || [0, 1];
    this.full = full[1] > full[0] ? full : [full[0] - 500, full[0] + 500];
    this.window = this.full;
    this.chosen = null;
    this.time = null;
    this.isMoving = false;
    this.panels = drawn.map((picture, index) => new Panel({...picture, hasSelector: index === 0}, this));
    this.live = el("span", {className: "unseen", "aria-live": "polite"});
    this.range = el("span", {className: "range"});
    const head = this.panels.length > 0 ? this.toolbar(label) : el("p", {className: "none"}, "Nothing to draw.");
    this.element = el("div", {className: "stack"}, head, this.panels.map(panel => panel.element), this.live);
  }

  toolbar(label) {
    const button = (text, title, action) => el("button", {type: "button", title, "aria-label": title, onclick: action}, text);
    return el("div", {className: "toolbar", role: "toolbar", "aria-label": label},
      button("+", "Zoom in (+)", () => this.zoomBy(0.5)), button("−", "Zoom out (-)", () => this.zoomBy(2)),
      button("←", "Earlier (left arrow)", () => this.panBy(-0.5)), button("→", "Later (right arrow)", () => this.panBy(0.5)),
      button("All", "The whole run (0)", () => this.reset()), this.range);
  }

  draw() {
    this.isMoving = true;
    for (const panel of this.panels) panel.draw();
    this.isMoving = false;
    this.tellWindow();
  }

  // Where a user has dragged one of them, the others follow.
  follow(range) {
    if (!this.isMoving && (range[0] !== this.window[0] || range[1] !== this.window[1])) this.setWindow(range);
  }

  setWindow([from, to]) {
    const most = this.full[1] - this.full[0];
    const length = Math.min(most, Math.max(SHORTEST_WINDOW, to - from));
    const middle = (from + to) / 2;
    const begin = Math.min(this.full[1] - length, Math.max(this.full[0], middle - length / 2));
    this.window = length === most ? this.full : [begin, begin + length];
    this.redraw();
  }

  redraw() {
    this.isMoving = true;
    for (const panel of this.panels) panel.zoom();
    this.isMoving = false;
    this.tellWindow();
    this.point(this.time);
  }

  // In colours that have changed.
  repaint() {
    for (const panel of this.panels) panel.paintSwatches();
    this.redraw();
  }

  tellWindow() {
    const places = this.window[1] - this.window[0] < 60000 ? 1 : 0.001;
    const [from, to] = this.window.map(ms => formatTime(Math.round(ms * places) / places));
    this.range.textContent = `${from} to ${to} UTC`;
  }

  zoomBy(factor) {
    const [from, to] = this.window;
    const inside = this.time !== null && this.time > from && this.time < to;
    const around = inside ? this.time : (from + to) / 2;
    this.setWindow([around - (around - from) * factor, around + (to - around) * factor]);
  }

  panBy(share) {
    const step = (this.window[1] - this.window[0]) * share;
    this.setWindow([this.window[0] + step, this.window[1] + step]);
  }

  // As near to a time as the run goes.
  panTo(time) {
    const half = (this.window[1] - this.window[0]) / 2;
    this.setWindow([time - half, time + half]);
  }

  reset() {
    this.chosen = null;
    this.setWindow(this.full);
  }

  // Marks a span of time and zooms to it, with as much again on either side.
  choose(chosen) {
    this.chosen = chosen;
    const margin = Math.max(chosen.to - chosen.from, 1000);
    this.setWindow([chosen.from - margin, chosen.to + margin]);
  }

  point(time) {
    this.time = time;
    return this.panels.map(panel => panel.showAt(time));
  }

  // To the next or previous point of the picture with the keys, told to those who listen.
  step(panel, direction) {
    const {ms} = panel.series[0];
    const [from, to] = this.window;
    const here = this.time === null ? (from + to) / 2 : this.time;
    const index = this.time === null ? nearestIndex(ms, here) : nearestIndex(ms, here) + direction;
    if (index < 0 || index >= ms.length) return;
    if (ms[index] < from || ms[index] > to) this.setWindow([ms[index] - (to - from) / 2, ms[index] + (to - from) / 2]);
    this.point(ms[index]);
    this.live.textContent = panel.readout.textContent;
  }

  onKey(event) {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const panel = this.panels.find(({plot}) => plot === event.currentTarget);
    const actions = {"+": () => this.zoomBy(0.5), "=": () => this.zoomBy(0.5), "-": () => this.zoomBy(2), "0": () => this.reset(),
      ArrowLeft: () => this.panBy(-0.25), ArrowRight: () => this.panBy(0.25),
      Home: () => this.panTo(this.full[0]), End: () => this.panTo(this.full[1]),
      ",": () => this.step(panel, -1), ".": () => this.step(panel, 1), Escape: () => this.point(null)};
    const action = actions[event.key];
    if (!action) return;
    action();
    event.preventDefault();
  }

  destroy() {
    for (const panel of this.panels) if (panel.graph) panel.graph.destroy();
  }
}
