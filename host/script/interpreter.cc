#include "host/script/interpreter.h"

#include "host/model/unicode.h"
#include "host/script/fields.h"
#include "host/script/parser.h"
#include "host/script/value.h"
#include "host/script/xpm.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <type_traits>
#include <utility>

namespace zol::host {

namespace {

// ---- Members of a record ----

struct TextMember {
  std::string_view name;
  std::string Effect::*member;
  bool wide;
};

constexpr TextMember kTextMembers[] = {
    {"Name", &Effect::name, false},
    {"Sign", &Effect::sign, false},
    {"Type", &Effect::type, false},
    {"DefaultIconMode", &Effect::iconMode, false},
    {"Description", &Effect::description, false},
    {"DescriptionW", &Effect::description, true},
};

template <auto Member> void setCallback(Effect &effect, uintptr_t address) {
  using Callback = std::remove_reference_t<decltype(effect.*Member)>;
  effect.*Member = reinterpret_cast<Callback>(address);
}

struct CallbackMember {
  std::string_view name;
  void (*set)(Effect &, uintptr_t address);
};

constexpr CallbackMember kCallbackMembers[] = {
    {"InitFunction", setCallback<&Effect::init>},
    {"RenderVideoFunction", setCallback<&Effect::renderVideo>},
    {"RenderVideoFunctionRT", setCallback<&Effect::renderVideoRT>},
    {"RenderAudioFunction", setCallback<&Effect::renderAudio>},
    {"OnDialogOpen", setCallback<&Effect::onDialogOpen>},
    {"OnDialogItemEdit", setCallback<&Effect::onDialogItemEdit>},
    {"Probe", setCallback<&Effect::probe>},
    {"InitByMedia", setCallback<&Effect::initByMedia>},
    {"DeleteUserData", setCallback<&Effect::deleteUserData>},
    {"Trim", setCallback<&Effect::trim>},
};

template <class Table> auto findNamed(const Table &table, std::string_view name) {
  const auto *found =
      std::find_if(std::begin(table), std::end(table), [&](const auto &entry) { return entry.name == name; });
  return found != std::end(table) ? found : nullptr;
}

// ---- Evaluation ----

using Variables = std::map<std::string, Effect, std::less<>>;

/// The statements of one text.
class Execution {
public:
  Execution(std::string_view script, Registry &registry, Memory &memory, Variables &variables)
      : script_(script), registry_(registry), memory_(memory), variables_(variables) {}

  /// Throws ScriptError.
  long long run(const Statement &statement);

private:
  struct Function {
    std::string_view name;
    Value (*call)(Execution &, Arguments &);
  };
  static const Function kFunctions[];

  void declare(const Statement &statement);
  void assign(const Statement &statement);
  int store(const Expression &target, const Expression &expression);

  Value evaluate(const Expression &expression);
  Value evaluateName(const Expression &expression);
  Value evaluateCall(const Expression &expression);
  Text evaluateCast(const Expression &expression);
  Flags evaluateFlags(const Expression &expression);

  Effect &variable(const std::string &name, size_t offset);
  void registerEffect(Arguments &arguments);
  Icon pictureFromXpm(Arguments &arguments);
  static uintptr_t addressIn(const Value &value);

  std::string_view script_;
  Registry &registry_;
  Memory &memory_;
  Variables &variables_;
  std::set<const Effect *> touched_; ///< variables whose effects list this text among theirs
};

long long resultOf(const Value &value) {
  const auto *field = value.as<FieldId>();
  return field != nullptr ? field->id : 1;
}

long long Execution::run(const Statement &statement) {
  switch (statement.kind) {
  case Statement::Kind::empty: break;
  case Statement::Kind::record: declare(statement); break;
  case Statement::Kind::assignment: assign(statement); break;
  case Statement::Kind::store: return store(statement.target, statement.value);
  case Statement::Kind::expression:
    if (statement.value.kind != Expression::Kind::call)
      throw ScriptError("statement expected", statement.value.offset);
    return resultOf(evaluate(statement.value));
  }
  return 1;
}

void Execution::declare(const Statement &statement) {
  if (statement.type.text != "ZoEffect" || statement.isPointer)
    throw ScriptError("unknown type " + statement.type.text + (statement.isPointer ? " *" : ""),
                      statement.type.offset);
  if (statement.hasValue)
    throw ScriptError("a record begins empty", statement.value.offset);
  Effect &effect = variables_[statement.variable.text];
  effect = {};
  effect.statements.emplace_back(script_);
  touched_.insert(&effect);
}

void Execution::assign(const Statement &statement) {
  Effect &effect = variable(statement.variable.text, statement.variable.offset);
  const std::string &name = statement.member.text;
  const auto *textMember = findNamed(kTextMembers, name);
  const auto *callback = findNamed(kCallbackMembers, name);
  if (textMember == nullptr && callback == nullptr && name != "Version" && name != "Icon")
    throw ScriptError("unknown member " + name, statement.member.offset);

  const Value value = evaluate(statement.value);
  if (textMember != nullptr) {
    const char *what = textMember->wide ? "a 16-bit text" : "an 8-bit text";
    const auto &text = value.get<Text>(what);
    if (text.wide != textMember->wide)
      throw ScriptError(std::string(what) + " expected", value.offset);
    effect.*textMember->member = text.text;
  } else if (callback != nullptr) {
    const uintptr_t address = addressIn(value);
    if (!memory_.isCode(address))
      throw ScriptError("no code was handed over at this address", value.offset);
    callback->set(effect, address);
  } else if (name == "Version") {
    effect.version = value.getInt("a version");
  } else {
    effect.icon = value.get<Icon>("a picture");
  }
}

/// A field that the value added stays even where its id cannot be stored.
int Execution::store(const Expression &target, const Expression &expression) {
  if (target.text != "int")
    throw ScriptError("only an int can be stored", target.offset);
  const Value address = evaluate(target.operands[0]);
  const Value value = evaluate(expression);
  const auto *field = value.as<FieldId>();
  const int stored = field != nullptr ? field->id : value.getInt("an integer");
  if (!memory_.storeInt(addressIn(address), stored))
    throw ScriptError("no int was handed over at this address", address.offset);
  return stored;
}

Value Execution::evaluate(const Expression &expression) {
  const auto value = [&](auto data) { return Value{std::move(data), expression.offset}; };
  switch (expression.kind) {
  case Expression::Kind::integer: return value(Integer{expression.integer, expression.hexadecimal});
  case Expression::Kind::real: return value(expression.real);
  case Expression::Kind::text: return value(Text{expression.text});
  case Expression::Kind::name: return evaluateName(expression);
  case Expression::Kind::cast: return value(evaluateCast(expression));
  case Expression::Kind::call: return evaluateCall(expression);
  case Expression::Kind::either: return value(evaluateFlags(expression));
  case Expression::Kind::address: break;
  }
  Effect &effect = variable(expression.text, expression.offset);
  if (expression.member != "df")
    throw ScriptError("unknown field list " + expression.member, expression.offset);
  return value(FieldList{&effect});
}

Value Execution::evaluateName(const Expression &expression) {
  if (const auto bits = flagBits(expression.text))
    return {Flags{*bits}, expression.offset};
  if (expression.text.starts_with("Zodf"))
    throw ScriptError("unknown flag " + expression.text, expression.offset);
  return {Record{&variable(expression.text, expression.offset)}, expression.offset};
}

Text Execution::evaluateCast(const Expression &expression) {
  const Value operand = evaluate(expression.operands[0]);
  if (expression.text == "char") {
    if (auto text = memory_.text(addressIn(operand)))
      return {std::move(*text), false};
  } else if (expression.text == "word") {
    if (const auto text = memory_.wideText(addressIn(operand)))
      return {toUtf8(*text), true};
  } else {
    throw ScriptError("unknown type " + expression.text + " *", expression.offset);
  }
  throw ScriptError("no text was handed over at this address", operand.offset);
}

Flags Execution::evaluateFlags(const Expression &expression) {
  Flags result;
  for (const Expression &operand : expression.operands) {
    const Value value = evaluate(operand);
    const auto *none = value.as<Integer>();
    if (none == nullptr || none->value != 0)
      result.bits |= value.get<Flags>("a flag").bits;
  }
  return result;
}

const Execution::Function Execution::kFunctions[] = {
    {"DataFieldAdd", [](Execution &, Arguments &a) { return Value{addField(a)}; }},
    {"ZoDataFieldAdd", [](Execution &, Arguments &a) { return Value{addField(a)}; }},
    {"DataFieldSelItemAdd", [](Execution &, Arguments &a) { return Value{addItemByName(a)}; }},
    {"DataFieldSelItemAddById", [](Execution &, Arguments &a) { return Value{addItemById(a)}; }},
    {"DataFieldGroupItemAdd", [](Execution &, Arguments &a) { return Value{addMemberByName(a)}; }},
    {"DataFieldGroupItemAddById", [](Execution &, Arguments &a) { return Value{addMemberById(a)}; }},
    {"ZoDataFieldHelp", [](Execution &, Arguments &a) { return Value{setHelpByName(a)}; }},
    {"ZoDataFieldHelpbyId", [](Execution &, Arguments &a) { return Value{setHelpById(a)}; }},
    {"ZoPicFromXPM", [](Execution &e, Arguments &a) { return Value{e.pictureFromXpm(a)}; }},
    {"EffectAdd",
     [](Execution &e, Arguments &a) {
       e.registerEffect(a);
       return Value{};
     }},
};

Value Execution::evaluateCall(const Expression &expression) {
  const Function *function = findNamed(kFunctions, expression.text);
  if (function == nullptr)
    throw ScriptError("unknown function " + expression.text, expression.offset);
  std::vector<Value> values;
  for (const Expression &operand : expression.operands)
    values.push_back(evaluate(operand));
  Arguments arguments(std::move(values), expression.offset);
  Value result = function->call(*this, arguments);
  result.offset = expression.offset;
  return result;
}

/// Every statement that names a variable belongs to its declaration.
Effect &Execution::variable(const std::string &name, size_t offset) {
  const auto found = variables_.find(name);
  if (found == variables_.end())
    throw ScriptError("unknown variable " + name, offset);
  Effect &effect = found->second;
  if (touched_.insert(&effect).second)
    effect.statements.emplace_back(script_);
  return effect;
}

void Execution::registerEffect(Arguments &arguments) {
  const Effect &effect = *arguments.next("a record").get<Record>("a record").effect;
  const size_t offset = arguments.lastOffset();
  arguments.end();
  if (effect.sign.empty())
    throw ScriptError("an effect without a sign", offset);
  if (effect.name.empty())
    throw ScriptError("an effect without a name", offset);
  registry_.add(effect);
}

Icon Execution::pictureFromXpm(Arguments &arguments) {
  const uintptr_t address = addressIn(arguments.next("an address"));
  const size_t offset = arguments.lastOffset();
  arguments.end();
  try {
    if (const auto header = memory_.textArray(address, 1))
      if (const auto rows = memory_.textArray(address, parseXpmHeader(header->front()).rows()))
        return parseXpm(*rows);
  } catch (const XpmError &error) {
    throw ScriptError(error.what(), offset);
  }
  throw ScriptError("no picture was handed over at this address", offset);
}

uintptr_t Execution::addressIn(const Value &value) {
  const int64_t address = value.get<Integer>("an address").value;
  if (address < 0 || static_cast<uint64_t>(address) > UINTPTR_MAX)
    throw ScriptError("address out of range", value.offset);
  return static_cast<uintptr_t>(address);
}

} // namespace

Interpreter::Interpreter(Registry &registry, Memory &memory) : registry_(registry), memory_(memory) {}

long long Interpreter::execute(std::string_view text) {
  Parser parser(text);
  Execution execution(text, registry_, memory_, variables_);
  long long result = 1;
  bool failed = false;
  while (!parser.atEnd()) {
    try {
      result = execution.run(parser.next());
    } catch (const ScriptError &error) {
      const size_t begin = parser.begin();
      errors_.push_back(
          {std::string(text.substr(begin, parser.end() - begin)), error.what(), error.offset() - begin + 1});
      failed = true;
    }
  }
  return failed ? 0 : result;
}

} // namespace zol::host
