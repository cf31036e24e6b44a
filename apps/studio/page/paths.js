// SVG path data as contours of nodes that a hand can move, and back.
// A contour: {closed, nodes: [{x, y, in: [x, y] or null, out: [x, y] or null}]}, all in pixels of the picture.

const counts = { M: 2, L: 2, H: 1, V: 1, C: 6, S: 4, Q: 4, T: 2, A: 7, Z: 0 };
const number = /[\s,]*([-+]?(?:\d+\.?\d*|\.\d+)(?:e[-+]?\d+)?)/iy, flag = /[\s,]*([01])/y, letter = /[\s,]*([a-z])/iy;

/** Null for what is no path. */
export function parsePath(text) {
  const contours = [];
  let contour = null, command = null, x = 0, y = 0, last = null, place = 0;
  const next = (what) => {
    what.lastIndex = place;
    const found = what.exec(text);
    if (found) place = what.lastIndex;
    return found && found[1];
  };
  while (text.slice(place).trim()) {
    const named = next(letter);
    command = named ?? command;
    const kind = command?.toUpperCase(), relative = command !== kind;
    if (!(kind in counts) || (kind === "Z" && !named)) return null;
    const words = Array.from({ length: counts[kind] }, (_, k) => next(kind === "A" && (k === 3 || k === 4) ? flag : number)); // flags may stand close together
    if (words.includes(null)) return null;
    const n = words.map(Number);
    if (kind === "Z") {
      if (!contour) return null;
      close(contour);
      [x, y] = [contour.nodes[0].x, contour.nodes[0].y];
      contour = null;
      continue;
    }
    if (relative) for (let k = kind === "A" ? 5 : 0; k < n.length; ++k) n[k] += kind === "V" || (kind === "A" ? k === 6 : kind !== "H" && k % 2) ? y : x;
    if (kind === "M" || !contour) {
      contour = { closed: false, nodes: [{ x: kind === "M" ? n[0] : x, y: kind === "M" ? n[1] : y, in: null, out: null }] };
      contours.push(contour);
      if (kind === "M") {
        [x, y] = n;
        command = relative ? "l" : "L";
        last = null;
        continue;
      }
    }
    if (kind === "A") {
      for (const curve of arc(x, y, ...n)) {
        contour.nodes.at(-1).out = curve.slice(0, 2);
        contour.nodes.push({ x: curve[4], y: curve[5], in: curve.slice(2, 4), out: null });
      }
      [x, y] = n.slice(-2);
      last = null;
      continue;
    }
    const from = contour.nodes.at(-1), mirrored = last ? [2 * x - last[0], 2 * y - last[1]] : [x, y];
    let c0 = null, c1 = null, to = n.slice(-2);
    if (kind === "H") to = [n[0], y];
    if (kind === "V") to = [x, n[0]];
    if (kind === "C") [c0, c1] = [n.slice(0, 2), n.slice(2, 4)];
    if (kind === "S") [c0, c1] = [mirrored, n.slice(0, 2)];
    if (kind === "Q" || kind === "T") {
      const q = kind === "Q" ? n.slice(0, 2) : mirrored;
      c0 = [x + (2 / 3) * (q[0] - x), y + (2 / 3) * (q[1] - y)];
      c1 = [to[0] + (2 / 3) * (q[0] - to[0]), to[1] + (2 / 3) * (q[1] - to[1])];
      last = q;
    } else {
      last = c1;
    }
    from.out = c0;
    contour.nodes.push({ x: to[0], y: to[1], in: c1, out: null });
    [x, y] = to;
  }
  return contours;
}

/** An elliptical arc as cubics of a quarter turn at most: [control, control, end] of each, flat. */
function arc(x0, y0, rx, ry, degrees, large, sweep, x, y) {
  if (x0 === x && y0 === y) return [];
  [rx, ry] = [Math.abs(rx), Math.abs(ry)];
  if (!rx || !ry) return [[x0, y0, x, y, x, y]];
  const turn = (degrees * Math.PI) / 180, cos = Math.cos(turn), sin = Math.sin(turn);
  const flat = (dx, dy) => [(cos * dx + sin * dy) / rx, (cos * dy - sin * dx) / ry]; // where the ellipse is the unit circle
  let [u, v] = flat((x0 - x) / 2, (y0 - y) / 2);
  const reach = Math.hypot(u, v);
  if (reach > 1) [rx, ry, u, v] = [rx * reach, ry * reach, u / reach, v / reach]; // as large as it has to be
  const away = (large === sweep ? -1 : 1) * Math.sqrt(Math.max(0, 1 / (u * u + v * v) - 1));
  const [cu, cv] = [away * v, -away * u]; // the centre, from the middle of the ends
  const from = Math.atan2(v - cv, u - cu);
  let angle = Math.atan2(-v - cv, -u - cu) - from;
  if (sweep && angle < 0) angle += 2 * Math.PI;
  if (!sweep && angle > 0) angle -= 2 * Math.PI;
  const point = (p, q) => [(x0 + x) / 2 + cos * rx * (cu + p) - sin * ry * (cv + q), (y0 + y) / 2 + sin * rx * (cu + p) + cos * ry * (cv + q)];
  const count = Math.ceil(Math.abs(angle) / (Math.PI / 2) - 1e-9), step = angle / count, k = (4 / 3) * Math.tan(step / 4);
  return Array.from({ length: count }, (_, i) => {
    const a = from + i * step, b = a + step;
    return [...point(Math.cos(a) - k * Math.sin(a), Math.sin(a) + k * Math.cos(a)), ...point(Math.cos(b) + k * Math.sin(b), Math.sin(b) - k * Math.cos(b)),
      ...(i + 1 === count ? [x, y] : point(Math.cos(b), Math.sin(b)))];
  });
}

/** A last node on the first one is the first one. */
function close(contour) {
  const first = contour.nodes[0], end = contour.nodes.at(-1);
  contour.closed = true;
  if (contour.nodes.length > 1 && Math.hypot(first.x - end.x, first.y - end.y) < 1e-6) {
    first.in = end.in;
    contour.nodes.pop();
  }
}

const text = (...numbers) => numbers.map((n) => String(Math.round(n * 100) / 100)).join(" ");

export function formatPath(contours) {
  return contours.filter((contour) => contour.nodes.length).map(({ nodes, closed }) => {
    const segments = nodes.slice(1).map((node, i) => segment(nodes[i], node));
    if (closed && (nodes.at(-1).out || nodes[0].in)) segments.push(segment(nodes.at(-1), nodes[0]));
    return `M${text(nodes[0].x, nodes[0].y)} ${segments.join(" ")}${closed ? " Z" : ""}`;
  }).join(" ");
}

function segment(from, to) {
  if (!from.out && !to.in) return `L${text(to.x, to.y)}`;
  return `C${text(...(from.out ?? [from.x, from.y]), ...(to.in ?? [to.x, to.y]), to.x, to.y)}`;
}

export const rectangle = (a, b) => ({ closed: true, nodes: [[a.x, a.y], [b.x, a.y], [b.x, b.y], [a.x, b.y]].map(([x, y]) => ({ x, y, in: null, out: null })) });

export function ellipse(a, b) {
  const k = 0.5522847498, x = (a.x + b.x) / 2, y = (a.y + b.y) / 2, rx = Math.abs(b.x - a.x) / 2, ry = Math.abs(b.y - a.y) / 2;
  const node = (ux, uy) => ({ x: x + ux * rx, y: y + uy * ry,
    in: [x + ux * rx + uy * k * rx, y + uy * ry - ux * k * ry], out: [x + ux * rx - uy * k * rx, y + uy * ry + ux * k * ry] });
  return { closed: true, nodes: [node(1, 0), node(0, 1), node(-1, 0), node(0, -1)] };
}

/** Between two paths of the same make, numbers go from one to the other. */
export function between(a, b, p) {
  const left = a.match(/[a-z]|[-+.\de]+/gi) ?? [], right = b.match(/[a-z]|[-+.\de]+/gi) ?? [];
  const parts = (s) => s.split(/([-+]?(?:\d+\.?\d*|\.\d+)(?:e[-+]?\d+)?)/i);
  const from = parts(a), to = parts(b);
  if (from.length !== to.length || left.length !== right.length) return a;
  return from.map((part, i) => (i % 2 ? text(Number(part) + (Number(to[i]) - Number(part)) * p) : part)).join("");
}
