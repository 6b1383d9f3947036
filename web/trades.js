// Round trips, orders, fills and the log as tables; a row that is opened zooms the charts to it and tells its story.

const TITLES = {product: "Product", side: "Side", volume: "Volume", entryMs: "Entry", exitMs: "Exit", entryPrice: "Entry price", exitPrice: "Exit price",
  profit: "Profit", fees: "Fees", mae: "Worst", mfe: "Best", entryOrder: "Entry order", exitOrder: "Exit order", order: "Order", type: "Type", price: "Price",
  executed: "Executed", averagePrice: "Average price", status: "Status", sentMs: "Sent", endMs: "End", slippage: "Slippage", ms: "Time", job: "Job", maker: "Maker"};
const UNITS = {volume: "lots", executed: "lots", entryMs: "time", exitMs: "time", sentMs: "time", endMs: "time", ms: "time", entryPrice: "price",
  exitPrice: "price", price: "price", averagePrice: "price", slippage: "price", profit: "money", fees: "money", mae: "money", mfe: "money", entryOrder: "id",
  exitOrder: "id", order: "id"};
units.id = value => String(value);

const column = name => ({title: TITLES[name] || name, unit: UNITS[name] || "text",
  format: name === "maker" ? value => value === null ? DASH : value ? "maker" : "taker" : undefined});
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
    tellStory(`${get(row, "side")} ${formatValue(get(row, "volume"), "lots")} ${get(row, "product")}: profit ${formatValue(get(row, "profit"), "money")}`,
              result, numbers, element);
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
    tellStory(`Order ${get(row, "order")}`, result, [get(row, "order")], element);
  };
  show("orders", new Grid({caption: "Orders", columns: columns.map(column), rows: table.rows, onRow: open,
    note: isCut(table) ? `${plural(table.rows.length, "order")} of ${grouped(table.all, 0, 0)}.` : ""}).element);
}

// The events of some orders, beside the charts; back leads to the row they were opened from.
function tellStory(title, result, numbers, origin) {
  const get = reader(result.orders);
  const stories = numbers.map(number => {
    const row = result.orders.rows.find(candidate => get(candidate, "order") === number);
    if (!row) return el("p", {className: "none"}, `Order ${number} is not among those that the result holds.`);
    const heading = `Order ${number}: ${get(row, "side")} ${formatValue(get(row, "volume"), "lots")} ${get(row, "product")} ${get(row, "type")}, ${get(row, "status")}`;
    return plainTable(heading, [["Time (UTC)", "time"], ["Event", "text"], ["What happened", "text"]], get(row, "events") || []);
  });
  const back = () => {
    show("story");
    origin.focus();
    origin.scrollIntoView({block: "center"});
  };
  const heading = el("h3", {tabindex: "-1"}, title);
  const story = el("div", {className: "story", onkeydown: event => event.key === "Escape" && back()}, heading,
    el("button", {type: "button", onclick: back}, "Back to the row (Esc)"), stories);
  show("story", story);
  byId("charts").scrollIntoView();
  heading.focus({preventScroll: true});
}

function fillGrid(markers, stack) {
  const columns = ["ms", "side", "price", "volume", "maker", "order", "job"];
  const rows = markers.ms.map((_, index) => columns.map(name => markers[name][index]));
  return new Grid({caption: "Fills", columns: columns.map(column), rows, onRow: row => stack.choose({from: row[0], to: row[0]}),
    note: markers.all > rows.length ? `${plural(rows.length, "fill")} of ${grouped(markers.all, 0, 0)}.` : ""});
}

function showLog({document: {log}}, stack) {
  if (log.rows.length === 0) return show("log", el("p", {className: "none"}, "Nothing was logged."));
  const columns = [{title: "Time (UTC)", unit: "time"}, {title: "Job", unit: "text"}, {title: "Level", unit: "text"}, {title: "Text", unit: "text"}];
  show("log", new Grid({caption: "Log", columns, rows: log.rows, onRow: row => row[0] !== null && stack.choose({from: row[0], to: row[0]}),
    note: isCut(log) ? `The first and the last, ${grouped(log.rows.length, 0, 0)} of ${plural(log.all, "line")}.` : ""}).element);
}

function showFailures({document: {failures}}) {
  byId("failures").hidden = failures.length === 0;
  if (failures.length === 0) return;
  const columns = [["Text", "text"], ["Job", "text"], ["Callback", "text"], ["Count", "count"], ["First (UTC)", "text"], ["Where", "text"]];
  show("failures", plainTable("Failures", columns, failures.map(({text, job, callback, count, first, file, line}) =>
    [text, job, callback, count, first === null ? null : formatIso(first), file ? `${file}${line ? `:${line}` : ""}` : null])));
}
