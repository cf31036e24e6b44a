// SVG path data as contours of nodes that a hand can move, and back.
// A contour: {closed, nodes: [{x, y, in: [x, y] or null, out: [x, y] or null}]}, all in pixels of the picture.

const counts = { M: 2, L: 2, H: 1, V: 1, C: 6, S: 4, Q: 4, T: 2, Z: 0 };

/** Null for what is no path of lines and curves. */
export function parsePath(text) {
  const tokens = text.match(/[a-z]|[-+]?(?:\d+\.?\d*|\.\d+)(?:e[-+]?\d+)?/gi) ?? [];
  const contours = [];
  let contour = null, command = null, x = 0, y = 0, last = null;
  for (let i = 0; i < tokens.length;) {
    if (/[a-z]/i.test(tokens[i])) command = tokens[i++];
    else if (!command || command.toUpperCase() === "Z") return null;
    const kind = command.toUpperCase(), relative = command !== kind;
    if (!(kind in counts)) return null;
    const n = tokens.slice(i, i + counts[kind]).map(Number);
    if (n.length < counts[kind] || n.some(Number.isNaN)) return null;
    i += counts[kind];
    if (kind === "Z") {
      if (!contour) return null;
      close(contour);
      [x, y] = [contour.nodes[0].x, contour.nodes[0].y];
      contour = null;
      continue;
    }
    if (relative) for (let k = 0; k < n.length; ++k) n[k] += kind === "V" || (kind !== "H" && k % 2) ? y : x;
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
