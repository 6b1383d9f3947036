// What every page does with its data and its colours.
function readBlock(id) {
  const block = byId(id);
  return block ? JSON.parse(block.textContent) : null;
}

const notice = (className, title, texts) => texts.length === 0 ? null : el("div", {className: `notice ${className}`},
  el("h3", null, title), el("ul", null, texts.map(text => el("li", null, text))));

// The terms and texts of [term, text].
const factList = facts => el("dl", {className: "facts"}, facts.map(([term, text]) => [el("dt", null, term), el("dd", null, text || DASH)]));

// The style sheet's colours, asked for once: a picture needs them for each of its marks. Emptied when they change.
const palette = new Map();
function theme(name) {
  if (!palette.has(name)) palette.set(name, getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim());
  return palette.get(name);
}

// show() draws the page. repaint() draws its canvases once more, which do not follow the style sheet by themselves.
function startPage(show, repaint) {
  const recolour = () => {
    palette.clear();
    repaint();
  };
  const setPrinting = isPrinting => {
    document.documentElement.toggleAttribute("data-print", isPrinting);
    recolour();
  };
  try {
    show();
  } catch (error) {
    byId("title").textContent = `The page cannot show its data: ${error.message}`;
    throw error;
  }
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", recolour);
  addEventListener("beforeprint", () => setPrinting(true));
  addEventListener("afterprint", () => setPrinting(false));
  document.documentElement.dataset.drawn = String(Math.round(performance.now()));
}
