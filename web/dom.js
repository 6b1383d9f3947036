// Elements by code. A text becomes a text node, never markup: scripts may have written it.
function el(tag, properties, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(properties || {})) {
    if (value === null || value === undefined || value === false) continue;
    if (name.startsWith("on")) element.addEventListener(name.slice(2), value);
    else if (name === "className") element.className = value;
    else element.setAttribute(name, value === true ? "" : value);
  }
  element.append(...children.flat(Infinity).filter(child => child !== null && child !== undefined && child !== ""));
  return element;
}

const byId = id => document.getElementById(id);
const show = (id, ...children) => byId(id).replaceChildren(...children.flat(Infinity).filter(child => child !== null));
// Times and texts stand at the left of their column, numbers at the right.
const isNumeric = unit => unit !== "text" && unit !== "time";

// A value that may be missing: a dash then, with the reason for eyes and for ears.
function valueNode(value, unit, reason) {
  const known = value !== null && value !== undefined && value !== "";
  if (known) {
    const signed = unit === "money" || unit === "percent";
    const tone = signed && value < 0 ? "bad" : null;
    return el("span", {title: typeof value === "number" ? String(value) : null, className: tone}, formatValue(value, unit));
  }
  const why = reason || "Not known.";
  return el("span", {className: "none", title: why}, el("span", {"aria-hidden": "true"}, DASH),
            el("span", {className: "unseen"}, why));
}

// A small table, all rows at once. columns: [title, unit] over rows that are arrays of values or elements, [title, unit, name] over
// objects.
function plainTable(caption, columns, rows, properties) {
  const head = columns.map(([title, unit]) => el("th", {scope: "col", className: isNumeric(unit) ? "number" : null}, title));
  const cell = (value, [, unit], index) => {
    const content = value instanceof Node ? value : valueNode(value, unit);
    const className = isNumeric(unit) ? "number" : null;
    return index === 0 ? el("th", {scope: "row", className}, content) : el("td", {className}, content);
  };
  const body = rows.map(row => el("tr", null, columns.map((column, index) =>
    cell(Array.isArray(row) ? row[index] : row[column[2]], column, index))));
  const table = el("table", null, el("caption", null, caption), el("thead", null, el("tr", null, head)), el("tbody", null, body));
  return el("div", {className: "scroll", tabindex: "0", role: "region", "aria-label": caption, ...properties}, table);
}

// Details whose content is made when they are first opened.
function lazyDetails(summary, make) {
  const details = el("details", {className: "numbers"}, el("summary", null, summary));
  details.addEventListener("toggle", () => {
    if (details.open && details.children.length === 1) details.append(...[make()].flat());
  });
  return details;
}

function choice(label, names, chosen, onChoice) {
  const options = names.map((name, index) => el("option", {value: index, selected: index === chosen}, name));
  const select = el("select", {onchange: () => onChoice(Number(select.value))}, options);
  return el("label", {className: "choice"}, `${label} `, select);
}
