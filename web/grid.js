// A table of many rows: shown by pages, sorted by its heads, filtered by a text. A row that can be opened takes a click or
// Enter; up and down move among the rows.
const PAGE_ROWS = 25;
const FEW_ROWS = 8;  // so few need neither filter nor pages
const COMPARISON = /^(.+?)(<=|>=|=|<|>)(.+)$/;

// The most that a column needs, so that its decimal points stand below each other.
function decimalPlaces(values) {
  return values.reduce((most, value) => {
    if (typeof value !== "number" || Number.isInteger(value)) return most;
    return Math.max(most, Math.min(10, (String(value).split(".")[1] || "").length));
  }, 0);
}

class Grid {
  // columns: [{title, unit, format?}] over rows, arrays of values in the same order. onRow(row): opens one.
  constructor({caption, columns, rows, onRow, note}) {
    Object.assign(this, {caption, columns, rows, onRow, note});
    this.shown = rows;
    this.page = 0;
    this.sorted = {column: -1, ascending: true};
    this.texts = new Map();
    this.places = columns.map(({unit}, index) => unit === "price" ? decimalPlaces(rows.map(row => row[index])) : 0);
    this.element = this.build();
    this.showPage();
  }

  build() {
    const {placeholder, title} = this.filterHint();
    this.input = el("input", {type: "search", "aria-label": `Filter: ${this.caption}`, placeholder, title,
      oninput: () => this.filter(this.input.value)});
    this.heads = this.columns.map((column, index) => el("th", {scope: "col", className: isNumeric(column.unit) ? "number" : null},
      el("button", {type: "button", onclick: () => this.sort(index)}, column.title)));
    this.body = el("tbody", {onkeydown: event => this.onKey(event)});
    const role = this.onRow ? "grid" : null;
    const table = el("table", {role, className: this.onRow ? "opens" : null}, el("caption", {className: "unseen"}, this.caption),
      el("thead", null, el("tr", null, this.heads)), this.body);
    const turn = (text, label, pages) => el("button", {type: "button", "aria-label": label, onclick: () => this.turn(pages)}, text);
    this.count = el("span", {role: "status"});
    const pager = el("div", {className: "pager", hidden: this.rows.length <= FEW_ROWS}, this.input, this.count,
      turn("«", "First page", -Infinity), turn("‹", "Page before", -1), turn("›", "Next page", 1), turn("»", "Last page", Infinity));
    this.turns = pager.querySelectorAll("button");
    return el("div", {className: "grid"}, pager,
      el("div", {className: "scroll", tabindex: "0", role: "region", "aria-label": this.caption}, table),
      this.note ? el("p", {className: "note"}, this.note) : "");
  }

  filterHint() {
    const number = this.columns.find(column => isNumeric(column.unit));
    const example = this.columns.some(column => column.title === "Profit") ? "profit<0" : number && `${number.title.toLowerCase()}>0`;
    return {placeholder: example ? `Filter: text, or ${example}` : "Filter: text",
      title: "Words that a row must hold; a column's title with <, <=, =, >= or > and a value compares"};
  }

  text(row, index) {
    const {unit, format} = this.columns[index];
    if (format) return format(row[index]);
    if (unit === "time" && row[index] !== null) return formatTime(Math.floor(row[index]));
    if (unit === "price" && typeof row[index] === "number") return grouped(row[index], this.places[index], this.places[index]);
    return formatValue(row[index], unit);
  }

  lastPage() {
    return Math.max(0, Math.ceil(this.shown.length / PAGE_ROWS) - 1);
  }

  turn(pages) {
    this.page = Math.min(this.lastPage(), Math.max(0, this.page + pages));
    this.showPage();
  }

  sort(column) {
    this.sortBy(column, this.sorted.column === column ? !this.sorted.ascending : true);
  }

  sortBy(column, ascending) {
    this.sorted = {column, ascending};
    this.heads.forEach((head, index) => {
      if (index === column) head.setAttribute("aria-sort", this.sorted.ascending ? "ascending" : "descending");
      else head.removeAttribute("aria-sort");
    });
    this.order();
  }

  // What is not known comes last either way.
  order() {
    const {column, ascending} = this.sorted;
    if (column >= 0) {
      const sign = ascending ? 1 : -1;
      const known = value => value !== null && value !== undefined;
      this.shown = [...this.shown].sort(({[column]: a}, {[column]: b}) => {
        if (!known(a) || !known(b)) return Number(known(b)) - Number(known(a));
        return sign * (a < b ? -1 : a > b ? 1 : 0);
      });
    }
    this.page = 0;
    this.showPage();
  }

  filter(text) {
    this.shown = this.rows.filter(this.rowTest(text));
    this.order();
  }

  rowTest(text) {
    const tests = text.toLowerCase().split(/\s+/).filter(Boolean).map(word => this.wordTest(word));
    return row => tests.every(test => test(row));
  }

  wordTest(word) {
    const match = COMPARISON.exec(word);
    const name = match && match[1];
    const column = match ? this.columns.findIndex(({title}) => title.toLowerCase().replace(/\s/g, "").startsWith(name)) : -1;
    if (column < 0) return row => this.searchText(row).includes(word);
    const isTime = this.columns[column].unit === "time";
    const wanted = isTime ? Date.parse(match[3].includes("t") ? `${match[3]}Z` : match[3]) : Number(match[3]);
    if (match[2] === "=") {
      return row => row[column] === wanted || String(row[column]).toLowerCase() === match[3] ||
        this.text(row, column).toLowerCase() === match[3];
    }
    const compare = {"<": value => value < wanted, ">": value => value > wanted, "<=": value => value <= wanted,
      ">=": value => value >= wanted}[match[2]];
    return row => typeof row[column] === "number" && compare(row[column]);
  }

  // Made once for each row: a filter is typed letter by letter.
  searchText(row) {
    if (!this.texts.has(row)) this.texts.set(row, this.columns.map((_, index) => this.text(row, index)).join("\n").toLowerCase());
    return this.texts.get(row);
  }

  showPage() {
    const from = this.page * PAGE_ROWS;
    const rows = this.shown.slice(from, from + PAGE_ROWS);
    this.body.replaceChildren(...rows.map((row, index) => this.rowElement(row, index)));
    const all = this.shown.length === this.rows.length ? "" : ` (${grouped(this.rows.length, 0, 0)} without the filter)`;
    this.count.textContent = rows.length === 0 ? `No rows${all}`
      : `${grouped(from + 1, 0, 0)}${DASH}${grouped(from + rows.length, 0, 0)} of ${plural(this.shown.length, "row")}${all}`;
    this.turns.forEach((button, index) => {
      button.disabled = index < 2 ? this.page === 0 : this.page === this.lastPage();
    });
  }

  rowElement(row, index) {
    const cells = this.columns.map((column, place) => {
      const text = this.text(row, place);
      const bad = column.unit === "money" && row[place] < 0;
      const whole = column.unit === "time" && row[place] !== null ? formatTime(row[place]) : text;
      return el("td", {title: whole === text ? null : whole, className: (isNumeric(column.unit) ? "number" : column.unit) + (bad ? " bad" : "")}, text);
    });
    if (!this.onRow) return el("tr", null, cells);
    const element = el("tr", {tabindex: index === 0 ? "0" : "-1", onclick: () => this.open(row, element)}, cells);
    element.row = row;
    return element;
  }

  open(row, element) {
    for (const other of this.body.rows) other.removeAttribute("aria-selected");
    element.setAttribute("aria-selected", "true");
    this.focusRow(element);
    this.onRow(row, element);
  }

  focusRow(element) {
    for (const other of this.body.rows) other.tabIndex = -1;
    element.tabIndex = 0;
    element.focus({preventScroll: true});
    element.scrollIntoView({block: "nearest"});
  }

  onKey(event) {
    const element = event.target.closest("tr");
    if (!this.onRow || !element) return;
    const rows = [...this.body.rows];
    const place = rows.indexOf(element);
    if (event.key === "Enter" || event.key === " ") this.open(element.row, element);
    else if (event.key === "ArrowDown" && place + 1 < rows.length) this.focusRow(rows[place + 1]);
    else if (event.key === "ArrowUp" && place > 0) this.focusRow(rows[place - 1]);
    else if (event.key === "PageDown" || event.key === "PageUp") {
      this.turn(event.key === "PageDown" ? 1 : -1);
      if (this.body.rows.length > 0) this.focusRow(this.body.rows[0]);
    } else return;
    event.preventDefault();
  }
}
