// The graph: a box for each place that was called, as wide as its share, below the box that called it.
const ROW = 22;             // pixels
const NARROWEST = 0.0015;   // of the width, that is drawn
const WITH_TEXT = 0.035;

class Flame {
  constructor(measure, root) {
    this.stage = el("div", {className: "flame", role: "group", "aria-label": "Graph of calls", "aria-describedby": "flame-keys", onkeydown: event => this.onKey(event)});
    this.readout = el("p", {className: "readout", "aria-live": "polite"});
    const keys = [["callback", "callback"], ["script", "script"], ["library", "the library's Lua"], ["native", "native"]];
    this.element = el("div", null, this.readout, this.stage, el("ul", {className: "legend"},
      keys.map(([kind, text]) => el("li", null, el("span", {className: `key ${kind}`}), text))));
    this.word = "";
    this.set(measure, root);
  }

  set(measure, root) {
    Object.assign(this, {measure, root, top: root});
    this.draw();
  }

  // Gives what share of all is in boxes that hold the word.
  find(word) {
    this.word = word.toLowerCase();
    this.draw();
    const within = box => this.isFound(box) ? box.total : box.children.reduce((sum, child) => sum + within(child), 0);
    return this.word === "" || this.root.total === 0 ? null : within(this.root) / this.root.total;
  }

  isFound(box) {
    return this.word !== "" && box.label.toLowerCase().includes(this.word);
  }

  tell(box) {
    const share = this.root.total > 0 ? units.share(box.total / this.root.total) : DASH;
    const value = sum => `${formatValue(sum, this.measure.unit)}${this.measure.unit === "count" ? " instructions" : ""}`;
    const calls = box.calls > 0 ? `, ${plural(box.calls, "call")}` : "";
    return `${box.label}: ${share}, ${value(box.total)}, itself ${value(box.self)}${calls}`;
  }

  draw(focused) {
    this.boxes = [];
    const outer = [];
    for (let box = this.top.parent; box; box = box.parent) outer.unshift(box);
    outer.forEach((box, depth) => this.boxes.push({box, depth, from: 0, width: 1}));
    this.place(this.top, outer.length, 0, 1);
    this.buttons = new Map(this.boxes.map(one => [one.box, this.button(one)]));
    this.stage.style.height = `${(Math.max(...this.boxes.map(({depth}) => depth)) + 1) * ROW}px`;
    this.stage.replaceChildren(...this.buttons.values());
    const first = this.buttons.get(focused || this.top);
    first.tabIndex = 0;
    if (focused) first.focus({preventScroll: true});
    this.readout.textContent = this.tell(focused || this.top);
  }

  place(box, depth, from, width) {
    this.boxes.push({box, depth, from, width});
    let at = from;
    for (const child of box.children) {
      const share = box.total > 0 ? child.total / box.total * width : 0;
      if (share < NARROWEST) break;  // the largest come first
      this.place(child, depth + 1, at, share);
      at += share;
    }
  }

  button({box, depth, from, width}) {
    const className = `${box.kind}${width < WITH_TEXT ? " small" : ""}${this.isFound(box) ? " found" : ""}`;
    const button = el("button", {type: "button", className, tabindex: "-1", title: this.tell(box), "aria-label": this.tell(box),
      onclick: () => this.zoom(box), onfocus: () => { this.readout.textContent = this.tell(box); },
      onmouseenter: () => { this.readout.textContent = this.tell(box); }}, box.label);
    Object.assign(button.style, {left: `${from * 100}%`, width: `${width * 100}%`, top: `${depth * ROW}px`});
    button.box = box;
    return button;
  }

  zoom(box) {
    this.top = box;
    this.draw(box);
  }

  onKey(event) {
    const box = event.target.box;
    if (!box) return;
    const beside = step => box.parent && box.parent.children[box.parent.children.indexOf(box) + step];
    const next = {ArrowUp: () => box.parent, ArrowDown: () => box.children[0], ArrowLeft: () => beside(-1), ArrowRight: () => beside(1),
      Home: () => this.top}[event.key];
    if (event.key === "Escape") {
      this.top = this.root;
      this.draw(box);
    } else if (next) {
      const to = this.buttons.get(next());
      if (to) {
        event.target.tabIndex = -1;
        to.tabIndex = 0;
        to.focus();
      }
    } else return;
    event.preventDefault();
  }
}
