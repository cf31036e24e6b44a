// Shape filling in its plain form: linked lists, every segment searched on every line, four edge bytes a
// pixel. The library gives the same bytes and makes the same calls to the host.
#pragma once

#include "frame/convert.h"
#include "frame/zol.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace zol::plain {

struct ShapeSegment {
  double a, b, c, d;
  double Y0, Y1, X0, X1, TX0, TX1, TY0, TY1;
  double e1, e2;
  double hull[4];
  ShapeSegment *next;
};

struct Crossing {
  double value;
  Crossing *next;
};

struct CrossingLine {
  int coordinate;
  Crossing *crossings;
  CrossingLine *next;
};

struct ShapeFillContext {
  ShapeSegment *rowSegments, *columnSegments;
  CrossingLine *rows, *columns;
  double xOffset, yOffset;
};

template <class T> T *allocate() { return static_cast<T *>(std::calloc(1, sizeof(T))); }

inline double hermite(double t, double q0, double q1, double T0, double T1) {
  const double t2 = t * t, t3 = t2 * t;
  const double h00 = 2 * t3 - 3 * t2 + 1, h01 = -2 * t3 + 3 * t2, h10 = t3 - 2 * t2 + t, h11 = t3 - t2;
  return h00 * q0 + h01 * q1 + h10 * T0 + h11 * T1;
}

inline int derivativeRoots(double a, double b, double c, double epsilon, double roots[2]) {
  const double D = 4 * b * b - 12 * a * c;
  if (std::fabs(D) <= epsilon) {
    roots[0] = -2 * b / (6 * a);
    return 1;
  }
  if (D > epsilon) {
    roots[0] = (-2 * b - std::sqrt(D)) / (6 * a);
    roots[1] = (-2 * b + std::sqrt(D)) / (6 * a);
    return 2;
  }
  return 0;
}

inline void coefficients(double q0, double q1, double T0, double T1, double *a, double *b, double *c,
                         double *d) {
  *a = 2 * (q0 - q1) + T0 + T1;
  *b = 3 * (q1 - q0) - 2 * T0 - T1;
  *c = T0;
  *d = q0;
}

inline void findExtrema(ShapeSegment *s) {
  const double epsilon = 6e-5;
  double roots[2], kept[2] = {-1, -1};
  int count = 0;
  const int found = derivativeRoots(s->a, s->b, s->c, epsilon, roots);
  for (int i = 0; i < found; ++i)
    if (roots[i] >= epsilon && roots[i] < 1 && !(count == 1 && kept[0] == roots[i]))
      kept[count++] = roots[i];
  if (count == 2 && kept[0] > kept[1])
    std::swap(kept[0], kept[1]);
  s->e1 = kept[0];
  s->e2 = kept[1];
}

inline void fillSegmentHull(double *hull, double X0, double Y0, double X1, double Y1, double TX0, double TY0,
                            double TX1, double TY1) {
  const double ends[2][4] = {{X0, X1, TX0, -TX1}, {Y0, Y1, TY0, -TY1}};
  for (int axis = 0; axis < 2; ++axis) {
    const double *q = ends[axis];
    hull[axis] = std::min(q[0], q[1]);
    hull[axis + 2] = std::max(q[0], q[1]);
    double a, b, c, d, roots[2];
    coefficients(q[0], q[1], q[2], q[3], &a, &b, &c, &d);
    const int count = derivativeRoots(a, b, c, 1e-6, roots);
    for (int i = 0; i < count; ++i)
      if (roots[i] > 0 && roots[i] < 1) {
        const double value = hermite(roots[i], q[0], q[1], q[2], q[3]);
        hull[axis] = std::min(hull[axis], value);
        hull[axis + 2] = std::max(hull[axis + 2], value);
      }
  }
}

inline int addSegmentToShape(void *user, const double P0[2], const double P1[2], const double H0[2],
                             const double H1[2]) {
  auto *context = static_cast<ShapeFillContext *>(user);
  for (int column = 0; column < 2; ++column) {
    auto *s = allocate<ShapeSegment>();
    if (s == nullptr)
      return 0;
    s->X0 = P0[0] + context->xOffset;
    s->Y0 = P0[1] + context->yOffset;
    s->X1 = P1[0] + context->xOffset;
    s->Y1 = P1[1] + context->yOffset;
    s->TX0 = 3 * H0[0];
    s->TY0 = 3 * H0[1];
    s->TX1 = -3 * H1[0];
    s->TY1 = -3 * H1[1];
    if (column == 0) {
      coefficients(s->Y0, s->Y1, s->TY0, s->TY1, &s->a, &s->b, &s->c, &s->d);
      fillSegmentHull(s->hull, s->X0, s->Y0, s->X1, s->Y1, s->TX0, s->TY0, 3 * H1[0], 3 * H1[1]);
    } else {
      coefficients(s->X0, s->X1, s->TX0, s->TX1, &s->a, &s->b, &s->c, &s->d);
    }
    findExtrema(s);
    ShapeSegment **list = column == 0 ? &context->rowSegments : &context->columnSegments;
    s->next = *list;
    *list = s;
  }
  return 1;
}

inline void insertCrossingSorted(CrossingLine *line, double value) {
  if (std::isnan(value)) // no place on the line
    return;
  auto *node = allocate<Crossing>();
  if (node == nullptr)
    return;
  node->value = value;
  Crossing **at = &line->crossings;
  while (*at != nullptr && (*at)->value < value)
    at = &(*at)->next;
  node->next = *at;
  *at = node;
}

inline void findCrossing(CrossingLine *line, double t0, double t1, const ShapeSegment *s, bool column) {
  const double q0 = column ? s->X0 : s->Y0, q1 = column ? s->X1 : s->Y1;
  const double Tq0 = column ? s->TX0 : s->TY0, Tq1 = column ? s->TX1 : s->TY1;
  const auto value = [&](double t) { return t == 0 ? q0 : t == 1 ? q1 : hermite(t, q0, q1, Tq0, Tq1); };
  const double L = line->coordinate, f0 = value(t0), f1 = value(t1);
  const bool increasing = f1 >= f0;
  if (!(increasing ? f0 <= L && L <= f1 : f1 <= L && L <= f0))
    return;
  double lo = t0, hi = t1, mid = (lo + hi) * 0.5, err = 1e20;
  while (std::fabs(err) > 1e-4 && std::fabs(hi - lo) >= 1e-6) {
    err = ((s->a * mid + s->b) * mid + s->c) * mid + s->d - L;
    if (increasing ? err >= 0 : err <= 0)
      hi = mid;
    else if (increasing ? err < 0 : err > 0)
      lo = mid;
    mid = (lo + hi) * 0.5;
  }
  insertCrossingSorted(line, column ? hermite(mid, s->Y0, s->Y1, s->TY0, s->TY1)
                                    : hermite(mid, s->X0, s->X1, s->TX0, s->TX1));
}

/// Appends one line, crossed by every segment; null when memory runs out.
inline CrossingLine *addLine(CrossingLine **&tail, int coordinate, const ShapeSegment *segments,
                             bool column) {
  auto *line = allocate<CrossingLine>();
  if (line == nullptr)
    return nullptr;
  line->coordinate = coordinate;
  *tail = line;
  tail = &line->next;
  for (const ShapeSegment *s = segments; s != nullptr; s = s->next) {
    if (s->e1 <= 0) {
      findCrossing(line, 0, 1, s, column);
    } else if (s->e2 <= 0) {
      findCrossing(line, 0, s->e1, s, column);
      findCrossing(line, s->e1, 1, s, column);
    } else {
      findCrossing(line, 0, s->e1, s, column);
      findCrossing(line, s->e1, s->e2, s, column);
      findCrossing(line, s->e2, 1, s, column);
    }
  }
  return line;
}

template <class Node> void freeList(Node *&head) {
  while (head != nullptr) {
    Node *next = head->next;
    if constexpr (requires { head->crossings; })
      freeList(head->crossings);
    std::free(head);
    head = next;
  }
}

inline void freeShapeFillContext(ShapeFillContext *context) {
  freeList(context->rowSegments);
  freeList(context->columnSegments);
  freeList(context->rows);
  freeList(context->columns);
  *context = {};
}

struct EdgeCoverage {
  unsigned char left, bottom, top, right;
};

inline int coverageOf(int T, int B, int L, int R) {
  const int either = L != 0 ? L : R;
  const int least = L == 255 ? R : L;
  if (T == 0)
    return B != 255 ? B * either / 255 : (L + R) / 2;
  if (T < 255) {
    if (B == 0)
      return T * either / 255;
    if (B < 255)
      return (T + B) / 2;
    return 255 - (255 - T) * (255 - least) / 510;
  }
  return B == 0 ? (L + R) / 2 : 255 - (255 - B) * (255 - least) / 510;
}

/// Writes one line's spans; put(pixel, coverage) takes each value, later ones replacing earlier ones.
template <class Put> void writeSpans(const Crossing *c, int first, int length, Put put) {
  for (; c != nullptr && c->next != nullptr; c = c->next->next) {
    double s = c->value, e = c->next->value;
    if (s > first + length)
      break;
    if (e < first)
      continue;
    s = std::max<double>(s, first) - first;
    e = std::min<double>(e, first + length) - first;
    const int start = static_cast<int>(s), end = static_cast<int>(e);
    put(start, (1 - (s - start)) * 255);
    if (e - end > 0)
      put(end, (e - end) * 255);
    for (int i = static_cast<int>(s + 1); i <= static_cast<int>(e - 1); ++i)
      put(i, 255);
  }
}

inline int rasterizeShape(ShapeFillContext *context, pic *picture, unsigned colour, t_ZoHostInfo *host) {
  const int x = picture->X, y = picture->Y, w = picture->Width, h = picture->Height;
  const auto fail = [&] {
    freeShapeFillContext(context);
    return 0;
  };
  CrossingLine **rowTail = &context->rows, **columnTail = &context->columns;
  for (int j = 0; j <= h; ++j)
    if (addLine(rowTail, y + j, context->rowSegments, false) == nullptr)
      return fail();
  for (int i = 0; i <= w; ++i)
    if (addLine(columnTail, x + i, context->columnSegments, true) == nullptr)
      return fail();
  pic *buffer = host->Services->PicCreate(w + 1, h + 1);
  if (buffer == nullptr) {
    host->Services->Message(host, "FillText: Memory allocation failure");
    return fail();
  }
  auto *edges = reinterpret_cast<EdgeCoverage *>(buffer->Pixels);
  const int stride = w + 1;
  std::memset(edges, 0, sizeof(EdgeCoverage) * static_cast<size_t>(stride) * static_cast<size_t>(h + 1));
  int index = 0;
  for (const CrossingLine *line = context->rows; line != nullptr; line = line->next, ++index) {
    if (host->Services->IsAborted(host) != 0) {
      host->Services->PicFree(buffer);
      return fail();
    }
    writeSpans(line->crossings, x, w, [&](int pixel, double value) {
      edges[index * stride + pixel].top = static_cast<unsigned char>(value);
      if (index > 0)
        edges[(index - 1) * stride + pixel].bottom = static_cast<unsigned char>(value);
    });
  }
  index = 0;
  for (const CrossingLine *line = context->columns; line != nullptr; line = line->next, ++index) {
    if (host->Services->IsAborted(host) != 0) {
      host->Services->PicFree(buffer);
      return fail();
    }
    writeSpans(line->crossings, y, h, [&](int pixel, double value) {
      edges[pixel * stride + index].left = static_cast<unsigned char>(value);
      if (index > 0)
        edges[pixel * stride + index - 1].right = static_cast<unsigned char>(value);
    });
  }
  const int A = static_cast<int>(colour >> 24), R = colour >> 16 & 255, G = colour >> 8 & 255,
            B = colour & 255;
  for (int row = 0; row < h; ++row)
    for (int column = 0; column < w; ++column) {
      const EdgeCoverage &edge = edges[row * stride + column];
      const int a = A * coverageOf(edge.top, edge.bottom, edge.left, edge.right) / 255;
      _color_t &p = picture->Pixels[row * w + column];
      p.a = static_cast<uint8_t>(a);
      p.r = static_cast<uint8_t>((p.r * (255 - a) + R * a) / 255);
      p.g = static_cast<uint8_t>((p.g * (255 - a) + G * a) / 255);
      p.b = static_cast<uint8_t>((p.b * (255 - a) + B * a) / 255);
    }
  host->Services->PicFree(buffer);
  freeShapeFillContext(context);
  return 1;
}

inline int fillShapeXYOffset(t_ZoHostInfo *host, char *errorText, pic *picture, void *geometry, double time,
                             unsigned colour, double xOffset, double yOffset) {
  if (picture == nullptr || geometry == nullptr || errorText == nullptr) {
    if (errorText != nullptr)
      std::strcpy(errorText, "Illegal parameter(s)");
    return 0;
  }
  errorText[0] = 0;
  ShapeFillContext context{};
  context.xOffset = xOffset;
  context.yOffset = yOffset;
  if (host->Services->GeoGetCurves(host, geometry, time, 1, &context, addSegmentToShape, 0) != 1) {
    freeShapeFillContext(&context);
    std::strcpy(errorText, "GeoGetCurves returns error");
    return 0;
  }
  return rasterizeShape(&context, picture, colour, host);
}

inline int pointIsInTheShape(t_ZoHostInfo *host, void *geometry, double x, double y, double time) {
  if (geometry == nullptr) {
    host->Services->Message(host, "Illegal parameter");
    return 0;
  }
  ShapeFillContext context{};
  int inside = 0;
  if (host->Services->GeoGetCurves(host, geometry, time, 1, &context, addSegmentToShape, 0) == 1) {
    CrossingLine **tail = &context.rows;
    const CrossingLine *line = addLine(tail, truncate(y), context.rowSegments, false);
    for (const Crossing *c = line != nullptr ? line->crossings : nullptr; c != nullptr; c = c->next) {
      inside = !inside;
      if (c->next == nullptr || (c->value <= x && x <= c->next->value))
        break;
      if (c->value >= x) {
        inside = 0;
        break;
      }
    }
  }
  freeShapeFillContext(&context);
  return inside;
}

inline double segmentLength(const float *s, double t0, double t1) {
  const auto x = [&](double t) { return hermite(t, s[2], s[3], 3.0 * s[4], -3.0 * s[5]); };
  const auto y = [&](double t) { return hermite(t, s[0], s[1], 3.0 * s[6], -3.0 * s[7]); };
  const double dx = x(t1) - x(t0), dy = y(t1) - y(t0);
  const double squared = dx * dx + dy * dy;
  if (squared >= 0.5) {
    const double middle = (t0 + t1) * 0.5;
    return segmentLength(s, t0, middle) + segmentLength(s, middle, t1);
  }
  return std::sqrt(squared);
}

} // namespace zol::plain
