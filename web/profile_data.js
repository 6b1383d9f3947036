// A profile: the tree of the calls of one job, drawn and summed by a measure.
const MEASURES = [
  {name: "Instructions", unit: "count", of: "instructions", scale: 1},
  {name: "Time", unit: "seconds", of: "nanoseconds", scale: 1e-9},
];

units.bytes = bytes => {
  const size = Math.abs(bytes);
  return size < 1e4 ? `${grouped(bytes, 0, 0)} B` : size < 1e6 ? `${grouped(bytes / 1e3, 1, 1)} kB` : `${grouped(bytes / 1e6, 1, 1)} MB`;
};
units.more = bytes => (bytes > 0 ? "+" : "") + units.bytes(bytes);
units.moreCount = count => (count > 0 ? "+" : "") + grouped(count, 0, 0);
units.share = share => `${grouped(share * 100, 1, 1)} %`;

const addTo = (map, key, value) => map.set(key, (map.get(key) || 0) + value);

class Job {
  constructor({name, functions, nodes, lines, ...rest}) {
    Object.assign(this, {name, functions, nodes, lines, ...rest});
    this.names = functions.map(({name: known, line}) => known || (line > 0 ? `function at ${this.place(line)}` : "(all)"));
    // The host calls a callback's function, and Lua knows no name of it.
    nodes.function.forEach((index, node) => {
      const outer = functions[nodes.function[nodes.parent[node]]];
      if (node > 0 && functions[index].name === "" && outer.kind === "callback" && nodes.parent[node] > 0) this.names[index] = outer.name;
    });
  }

  hasSamples() {
    return this.nodes.parent.length > 1;
  }

  place(line) {
    const known = this.lines[line];
    return known ? `${known.file.split("/").pop()}:${known.line}` : `line ${line}`;
  }

  // What node is told as, with or without its line.
  label(node, isByLine) {
    const [name, line] = [this.names[this.nodes.function[node]], this.nodes.line[node]];
    return isByLine && line > 0 ? `${name}, ${this.place(line)}` : name;
  }

  // {label, kind, place, self, total, calls, parent, children}; children have the largest first.
  tree(measure, isByLine) {
    const {parent, function: of, line, calls} = this.nodes;
    const own = this.nodes[measure.of];
    const boxes = [];
    const keys = new Map();
    parent.forEach((outer, node) => {
      const key = node === 0 ? "" : `${boxes[outer].id} ${of[node]} ${isByLine ? line[node] : ""}`;
      // Without lines a callback and its function are one box.
      const isSame = node > 0 && !isByLine && boxes[outer].kind === "callback" && outer > 0 && this.names[of[node]] === boxes[outer].label;
      const known = isSame ? boxes[outer] : keys.get(key);
      const box = known || {id: keys.size, label: this.label(node, isByLine), kind: this.functions[of[node]].kind, line: line[node],
        defined: this.functions[of[node]].line, self: 0, total: 0, calls: 0, parent: node === 0 ? null : boxes[outer], children: []};
      if (!known) {
        keys.set(key, box);
        if (box.parent) box.parent.children.push(box);
      }
      box.self += own[node] * measure.scale;
      box.calls += calls[node];
      boxes.push(box);
    });
    const all = [...keys.values()];
    for (const box of all.slice().reverse()) {
      box.total += box.self;
      if (box.parent) box.parent.total += box.total;
    }
    for (const box of all) box.children.sort((a, b) => b.total - a.total);
    return boxes[0];
  }

  // Self and total by what key(node) gives; a place that calls itself counts once.
  sums(measure, key) {
    const {parent} = this.nodes;
    const own = this.nodes[measure.of];
    const keys = parent.map((_, node) => key(node));
    const self = new Map();
    const total = new Map();
    parent.forEach((_, node) => {
      const value = own[node] * measure.scale;
      addTo(self, keys[node], value);
      const seen = new Set();
      for (let at = node; at > 0; at = parent[at]) seen.add(keys[at]);
      for (const one of seen) addTo(total, one, value);
    });
    return [...total].filter(([one]) => one !== null).map(([one, sum]) => ({key: one, self: self.get(one) || 0, total: sum}));
  }
}
