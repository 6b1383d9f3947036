// Round trips, orders, fills and the log as tables; a row that is opened zooms the charts to it and tells its story.

// Title and unit of each column that the document's tables have.
const COLUMNS = {
  product: ["Product", "text"], side: ["Side", "text"], volume: ["Volume", "lots"], entryMs: ["Entry", "time"], exitMs: ["Exit", "time"],
  entryPrice: ["Entry price", "price"], exitPrice: ["Exit price", "price"], profit: ["Profit", "money"], fees: ["Fees", "money"],
  mae: ["MAE", "money"], mfe: ["MFE", "money"], entryOrder: ["Entry order", "id"], exitOrder: ["Exit order", "id"],
  order: ["Order", "id"], type: ["Type", "text"], price: ["Price", "price"], executed: ["Executed", "lots"],
  averagePrice: ["Average price", "price"], status: ["Status", "text"], sentMs: ["Sent", "time"], endMs: ["End", "time"],
  slippage: ["Slippage", "price"], ms: ["Time", "time"], job: ["Job", "text"], maker: ["Maker", "text"],
};

const makerText = value => value === null ? DASH : value ? "maker" : "taker";

function column(name) {
  const [title, unit] = COLUMNS[name] || [name, "text"];
  return {title, unit, format: name === "maker" ? makerText : undefined};
}

// Rows of the document's tables, by the names of their columns.
const reader = ({columns}) => {
  const places = new Map(columns.map((name, index) => [name, index]));
  return (row, name) => row[places.get(name)];
};
const isCut = ({all, rows}) => all > rows.length;

function showRoundTrips(result, stack) {
  const table = result ? result.roundTrips : {all: 0, columns: [], rows: []};
  if (table.rows.length === 0) return show("trips", el("p", {className: "none"}, "No round trips."));
  const get = reader(table);
  const open = (row, element) => {
    stack.choose({from: get(row, "entryMs"), to: get(row, "exitMs"), entryPrice: get(row, "entryPrice"), exitPrice: get(row, "exitPrice")});
    const numbers = [...new Set([get(row, "entryOrder"), get(row, "exitOrder")])];
    const what = `${get(row, "side")} ${formatValue(get(row, "volume"), "lots")} ${get(row, "product")}`;
    tellStory(`${what}: profit ${formatValue(get(row, "profit"), "money")}`, orderStories(result, numbers), element);
  };
  show("trips", new Grid({caption: "Round trips", columns: table.columns.map(column), rows: table.rows, onRow: open, note: isCut(table)
    ? `The ${grouped(table.rows.length, 0, 0)} with the largest profit or loss, of ${plural(table.all, "round trip")}.` : ""}).element);
}

function showOrders(result, stack) {
  const table = result ? result.orders : {all: 0, columns: [], rows: []};
  if (table.rows.length === 0) return show("orders", el("p", {className: "none"}, "No orders."));
  const get = reader(table);
  const columns = table.columns.filter(name => name !== "events");
  const open = (row, element) => {
    const from = get(row, "sentMs");
    const end = get(row, "endMs");
    stack.choose({from, to: end === null ? stack.full[1] : end});
    tellStory(`Order ${get(row, "order")}`, orderStories(result, [get(row, "order")]), element);
  };
  show("orders", new Grid({caption: "Orders", columns: columns.map(column), rows: table.rows, onRow: open,
    note: isCut(table) ? `${plural(table.rows.length, "order")} of ${grouped(table.all, 0, 0)}.` : ""}).element);
}

// The events of some orders, a table each.
function orderStories(result, numbers) {
  const get = reader(result.orders);
  return numbers.map(number => {
    const row = result.orders.rows.find(candidate => get(candidate, "order") === number);
    if (!row) return el("p", {className: "none"}, `Order ${number} is not among those that the result holds.`);
    const what = `${get(row, "side")} ${formatValue(get(row, "volume"), "lots")} ${get(row, "product")} ${get(row, "type")}`;
    const events = (get(row, "events") || []).map(([ms, event, text]) => [ms, event, el("span", null, text)]);
    return plainTable(`Order ${number}: ${what}, ${get(row, "status")}`,
      [["Time (UTC)", "time"], ["Event", "text"], ["What happened", "text"]], events);
  });
}

// What an opened row is about, beside the charts that were zoomed to it. Back leads to the row.
function tellStory(title, contents, origin) {
  const back = () => {
    show("story");
    origin.focus();
    origin.scrollIntoView({block: "center"});
  };
  const heading = el("h3", {tabindex: "-1"}, title);
  show("story", el("div", {className: "story", onkeydown: event => event.key === "Escape" && back()}, heading,
    el("button", {type: "button", onclick: back}, "Back to the row (Esc)"), contents));
  byId("charts").scrollIntoView();
  heading.focus({preventScroll: true});
}

function fillGrid(markers, stack) {
  const columns = ["ms", "side", "price", "volume", "maker", "order", "job"];
  const rows = markers.ms.map((_, index) => columns.map(name => markers[name][index]));
  const open = ([ms, , , , , order], element) => {
    stack.choose({from: ms, to: ms});
    tellStory(`A fill of order ${order}`, markers.result ? orderStories(markers.result, [order]) : [], element);
  };
  return new Grid({caption: "Fills", columns: columns.map(column), rows, onRow: open,
    note: markers.all > rows.length ? `${plural(rows.length, "fill")} of ${grouped(markers.all, 0, 0)}.` : ""});
}

function showLog({document: {log}}, stack) {
  if (log.rows.length === 0) return show("log", el("p", {className: "none"}, "Nothing was logged."));
  const columns = [["Time (UTC)", "time"], ["Job", "text"], ["Level", "text"], ["Text", "text"]].map(([title, unit]) => ({title, unit}));
  const open = ([ms, job, level, text], element) => {
    if (ms === null) return;
    stack.choose({from: ms, to: ms});
    tellStory(`${formatTime(ms)} UTC, ${job}: ${level}`, [el("p", {className: "line"}, text)], element);
  };
  show("log", new Grid({caption: "Log", columns, rows: log.rows, onRow: open,
    note: isCut(log) ? `The first and the last, ${grouped(log.rows.length, 0, 0)} of ${plural(log.all, "line")}.` : ""}).element);
}

function showFailures({document: {failures}}) {
  byId("failures").hidden = failures.length === 0;
  if (failures.length === 0) return;
  const columns = [["Text", "text"], ["Job", "text"], ["Callback", "text"], ["Count", "count"], ["First (UTC)", "text"], ["Where", "text"]];
  show("failures", plainTable("Failures", columns, failures.map(({text, job, callback, count, first, file, line}) =>
    [text, job, callback, count, first === null ? null : formatIso(first), file ? `${file}${line ? `:${line}` : ""}` : null])));
}
