// Values over time, as `zol render --set` takes them: "0.5", or "0=0.1;0.5~=0.3;1=0.9" with times in shares of
// the effect's span. After |= a value is held, after ~= it goes smoothly.

const signs = { hold: "|=", smooth: "~=", line: "=" };

/** The shortest text that is the same for the eye and the command. */
export const numberText = (value) => String(Number(Number(value).toPrecision(7)));

/** [{t, v, course}] of a text; values are texts. */
export function parse(text) {
  if (!text) return [];
  if (!text.includes("=")) return [{ t: 0, v: text, course: "line" }];
  return text.split(";").map((part) => {
    const [, t, sign, v] = part.match(/^\s*([^|~=]+?)\s*([|~]?=)(.*)$/s) ?? [null, "0", "=", part];
    const course = sign === "|=" ? "hold" : sign === "~=" ? "smooth" : "line";
    return { t: Number(t), v: v.trim(), course };
  });
}

export function format(keys) {
  if (keys.length === 1) return keys[0].v;
  return keys.map((key) => numberText(key.t) + signs[key.course] + key.v).join(";");
}

export const color = {
  parse(text) {
    const hex = /^#?([0-9a-f]{6})([0-9a-f]{2})?$/i.exec(text.trim());
    if (!hex) return null;
    const all = hex[1] + (hex[2] ?? "ff");
    return [0, 2, 4, 6].map((at) => parseInt(all.slice(at, at + 2), 16));
  },
  format: (rgba) => "#" + rgba.map((c) => Math.round(Math.min(255, Math.max(0, c))).toString(16).padStart(2, "0")).join(""),
};

const numbersOf = (key) => (key.v.startsWith("#") ? color.parse(key.v) ?? [0, 0, 0, 255] : [Number(key.v)]);

/** How steep a smooth curve is at a key: level where it turns, and never beyond the values. */
function slope(keys, i, n) {
  if (i === 0 || i + 1 === keys.length) return 0;
  const [left, middle, right] = [keys[i - 1], keys[i], keys[i + 1]];
  if (left.course === "hold" || middle.course === "hold") return 0;
  const before = middle.t - left.t, after = right.t - middle.t;
  const rise = (numbersOf(middle)[n] - numbersOf(left)[n]) / before;
  const next = (numbersOf(right)[n] - numbersOf(middle)[n]) / after;
  if (!(rise * next > 0)) return 0;
  const w = 2 * after + before, v = after + 2 * before;
  return (w + v) / (w / rise + v / next);
}

/** The numbers at a share of the span: one, or red, green, blue and alpha. */
export function at(keys, t) {
  const after = keys.findIndex((key) => key.t > t);
  if (after === 0) return numbersOf(keys[0]);
  const left = keys[(after < 0 ? keys.length : after) - 1];
  if (after < 0 || left.course === "hold") return numbersOf(left);
  const right = keys[after];
  const length = right.t - left.t, p = (t - left.t) / length, q = 1 - p;
  const a = numbersOf(left), b = numbersOf(right);
  if (left.course === "line") return a.map((value, n) => value + (b[n] - value) * p);
  return a.map((value, n) => value + (b[n] - value) * p * p * (3 - 2 * p) +
    length * p * q * (slope(keys, after - 1, n) * q - slope(keys, after, n) * p));
}

/** The text at a time: a number, or "#rrggbbaa". */
export function textAt(keys, t) {
  if (!keys.length) return "";
  const numbers = at(keys, t);
  return numbers.length === 1 ? numberText(numbers[0]) : color.format(numbers);
}

const near = 1e-4;
/** With a value put: at the time where there are keys, else for all times. */
export function withValue(keys, t, value) {
  if (keys.length <= 1) return [{ t: keys[0]?.t ?? 0, v: value, course: "line" }];
  return withKey(keys, t, value);
}

export function withKey(keys, t, value, course) {
  const old = keys.find((key) => Math.abs(key.t - t) < near);
  const before = keys.filter((key) => key.t < t).at(-1);
  const key = { t: old?.t ?? t, v: value, course: course ?? old?.course ?? before?.course ?? "line" };
  return [...keys.filter((other) => other !== old), key].sort((a, b) => a.t - b.t);
}

export const keyAt = (keys, t) => keys.find((key) => Math.abs(key.t - t) < near);
