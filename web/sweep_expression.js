// What a reader filters points by, in the language of a plan's conditions: numbers, names, + - * / ^, comparisons, and, or, not, parentheses,
// min, max, abs, sqrt and log. Beyond it a text in quotes compares with a text, and = is the same as ==. What is not known is null, and so is
// all that is made of it; but false and unknown is false, true or unknown is true.
const TOKEN = /\s*(?:(\d+\.?\d*(?:e[-+]?\d+)?|\.\d+(?:e[-+]?\d+)?)|([a-z_][\w.]*)|`([^`]*)`|"([^"]*)"|'([^']*)'|(<=|>=|==|!=|[-+*/^()<>=,]))/iy;

const isNearly = (a, b) => typeof a === "string" ? a === b : Math.abs(a - b) <= 1e-12 * Math.max(Math.abs(a), Math.abs(b));
const OPERATIONS = {
  "+": (a, b) => a + b, "-": (a, b) => a - b, "*": (a, b) => a * b, "/": (a, b) => a / b, "^": (a, b) => a ** b,
  "<": (a, b) => a < b && !isNearly(a, b), ">": (a, b) => a > b && !isNearly(a, b), "<=": (a, b) => a < b || isNearly(a, b),
  ">=": (a, b) => a > b || isNearly(a, b), "==": isNearly, "=": isNearly, "!=": (a, b) => !isNearly(a, b),
};
const COMPARISONS = ["<", ">", "<=", ">=", "==", "=", "!="];
const FUNCTIONS = {min: Math.min, max: Math.max, abs: Math.abs, sqrt: Math.sqrt, log: Math.log};

// A number that is not finite is not known, and texts compare with texts alone.
function combine(operation, parts) {
  return index => {
    const values = parts.map(part => part(index));
    if (values.includes(null) || values.some(value => typeof value !== typeof values[0])) return null;
    const result = operation(...values);
    return typeof result === "number" && !Number.isFinite(result) ? null : result;
  };
}

// One of `decisive` decides, whatever the other is.
function decide(decisive, left, right) {
  return index => {
    const [a, b] = [left(index), right(index)];
    if (a === decisive || b === decisive) return decisive;
    return a === null || b === null ? null : !decisive;
  };
}

function readTokens(text) {
  const tokens = [];
  TOKEN.lastIndex = 0;
  while (text.slice(TOKEN.lastIndex).trim()) {
    const from = TOKEN.lastIndex;
    const match = TOKEN.exec(text);
    if (!match) throw new Error(`cannot read “${text.slice(from).trim()}”`);
    const kind = ["number", "word", "name", "text", "text", "sign"][match.slice(1).findIndex(part => part !== undefined)];
    tokens.push({kind, text: match.slice(1).find(part => part !== undefined)});
  }
  return tokens;
}

// The text as a function of a point's place: true, false or null. names: of each name such a function, which gives its value. Throws what is
// wrong with the text. The functions within read what binds tightest first.
function readExpression(text, names) {
  const tokens = readTokens(text);
  let at = 0;
  const accept = (...signs) => at < tokens.length && ["sign", "word"].includes(tokens[at].kind) && signs.includes(tokens[at].text) ? tokens[at++].text : null;
  const expect = sign => {
    if (!accept(sign)) throw new Error(at < tokens.length ? `expected ${sign}, not “${tokens[at].text}”` : `expected ${sign} at the end`);
  };
  // One or more of what `inner` reads, joined from the left.
  const chain = (signs, inner, make) => () => {
    let left = inner();
    for (let sign = accept(...signs); sign; sign = accept(...signs)) left = make(sign, left, inner());
    return left;
  };
  const operate = (sign, left, right) => combine(OPERATIONS[sign], [left, right]);
  const list = (...inner) => accept(",") ? list(...inner, sum()) : inner;
  const primary = () => {
    const token = tokens[at];
    if (accept("(")) {
      const inner = either();
      expect(")");
      return inner;
    }
    if (!token || token.kind === "sign") throw new Error(`expected a number or a name${token ? `, not “${token.text}”` : " at the end"}`);
    at += 1;
    if (token.kind === "number") return () => Number(token.text);
    if (token.kind === "text") return () => token.text;
    if (token.kind === "word" && Object.hasOwn(FUNCTIONS, token.text) && accept("(")) {
      const parts = list(sum());
      expect(")");
      return combine(FUNCTIONS[token.text], parts);
    }
    if (!names.has(token.text)) throw new Error(`there is no “${token.text}”`);
    return names.get(token.text);
  };
  const power = () => {
    const base = primary();
    return accept("^") ? combine(OPERATIONS["^"], [base, signed()]) : base;
  };
  const signed = () => accept("-") ? combine(value => -value, [signed()]) : power();
  const sum = chain(["+", "-"], chain(["*", "/"], signed, operate), operate);
  const comparison = () => {
    const left = sum();
    const sign = accept(...COMPARISONS);
    return sign ? operate(sign, left, sum()) : left;
  };
  const negation = () => accept("not") ? combine(value => !value, [negation()]) : comparison();
  const both = chain(["and"], negation, (_, left, right) => decide(false, left, right));
  const either = chain(["or"], both, (_, left, right) => decide(true, left, right));
  const whole = either();
  if (at < tokens.length) throw new Error(`expected the end, not “${tokens[at].text}”`);
  return whole;
}
