#include "host/script/instance_script.h"

#include "host/geometry/shape.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zol::host {
namespace {

DrawnGeometry &geometryIn(Arguments &arguments) {
  return *arguments.next("a geometry").get<GeometryPointer>("a geometry").geometry;
}

void readPoint(Arguments &arguments, double (&point)[2]) {
  for (double &coordinate : point)
    coordinate = arguments.next("a number").getNumber("a number");
}

} // namespace

Geometry DrawnGeometry::geometry() const {
  const size_t count = vertices.size(), pieces = closed ? count : count - std::min<size_t>(count, 1);
  Contour contour;
  contour.closed = closed;
  for (size_t i = 0; i < pieces; ++i) {
    const Vertex &from = vertices[i], &to = vertices[(i + 1) % count];
    Segment &segment = contour.segments.emplace_back();
    for (int axis = 0; axis < 2; ++axis) {
      segment.P0[axis] = origin[axis] + from.at[axis];
      segment.P1[axis] = origin[axis] + to.at[axis];
      segment.H0[axis] = from.after[axis];
      segment.H1[axis] = to.before[axis];
    }
  }
  return contour.segments.empty() ? Geometry{} : Geometry{{std::move(contour)}};
}

const InstanceScript::Function InstanceScript::kFunctions[] = {
    {"ZoClipFrom",
     [](InstanceScript &, Arguments &a) { return Value{a.next("a clip").get<CurrentClip>("a clip")}; }},
    {"ZoGeoContourCreate",
     [](InstanceScript &script, Arguments &a) {
       (void)a.next("a clip").get<CurrentClip>("a clip");
       return Value{GeometryPointer{&script.drawn_.emplace_back()}};
     }},
    {"ZoGeoMove",
     [](InstanceScript &, Arguments &a) {
       readPoint(a, geometryIn(a).origin);
       return Value{};
     }},
    {"ZoGeoContourVertexAdd",
     [](InstanceScript &, Arguments &a) {
       DrawnGeometry &geometry = geometryIn(a);
       DrawnGeometry::Vertex vertex;
       for (auto *point : {&vertex.at, &vertex.before, &vertex.after})
         readPoint(a, *point);
       geometry.vertices.push_back(vertex);
       return Value{};
     }},
    {"ZoGeoContourClose",
     [](InstanceScript &, Arguments &a) {
       geometryIn(a).closed = true;
       return Value{};
     }},
    {"ZoParamSet",
     [](InstanceScript &script, Arguments &a) {
       script.setParameter(a);
       return Value{};
     }},
    {"ZoGeoSetPrivate", // every geometry here is its instance's own
     [](InstanceScript &, Arguments &a) {
       (void)geometryIn(a);
       return Value{};
     }},
};

/// The field gets the geometry as it is drawn so far.
void InstanceScript::setParameter(Arguments &arguments) {
  (void)arguments.next("a clip").get<CurrentClip>("a clip");
  const int field = arguments.fieldById(effect_);
  const size_t offset = arguments.lastOffset();
  const int item = arguments.next("an item").getInt("an item");
  const DrawnGeometry &drawn = geometryIn(arguments);
  const Shape **place = parameters_.geometries.get(field, item);
  if (effect_.fields[static_cast<size_t>(field)].type != FieldType::geometry || place == nullptr)
    throw ScriptError("a field for a geometry expected", offset);
  *place = shapes_.emplace_back(std::make_unique<GeometryShape>(drawn.geometry())).get();
}

Value InstanceScript::evaluate(const Expression &expression) {
  const size_t offset = expression.offset;
  switch (expression.kind) {
  case Expression::Kind::integer: return {Integer{expression.integer, expression.hexadecimal}, offset};
  case Expression::Kind::real: return {expression.real, offset};
  case Expression::Kind::name:
    if (expression.text == "ZoCurrentClip")
      return {CurrentClip{}, offset};
    if (const auto found = variables_.find(expression.text); found != variables_.end())
      return {found->second.data, offset};
    throw ScriptError("unknown variable " + expression.text, offset);
  case Expression::Kind::call: {
    const auto *function = std::find_if(std::begin(kFunctions), std::end(kFunctions),
                                        [&](const Function &known) { return known.name == expression.text; });
    if (function == std::end(kFunctions))
      throw ScriptError("unknown function " + expression.text, offset);
    std::vector<Value> values;
    for (const Expression &operand : expression.operands)
      values.push_back(evaluate(operand));
    Arguments arguments(std::move(values), offset);
    Value result = function->call(*this, arguments);
    arguments.end();
    return {std::move(result.data), offset};
  }
  default: throw ScriptError("a number, a name or a call expected", offset);
  }
}

void InstanceScript::run(const Statement &statement) {
  if (statement.kind == Statement::Kind::empty)
    return;
  if (statement.kind == Statement::Kind::expression) {
    evaluate(statement.value);
    return;
  }
  if (statement.kind != Statement::Kind::record || !statement.isPointer || !statement.hasValue ||
      statement.type.text != "ZoGeo")
    throw ScriptError("a call or a geometry expected", 0);
  const Value value = evaluate(statement.value);
  (void)value.get<GeometryPointer>("a geometry");
  variables_[statement.variable.text] = value;
}

long long InstanceScript::execute(std::string_view text) try {
  Parser parser(text);
  while (!parser.atEnd())
    run(parser.next());
  return 1;
} catch (const ScriptError &) {
  return 0;
}

} // namespace zol::host
