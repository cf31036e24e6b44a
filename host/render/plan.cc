#include "host/render/plan.h"

#include "host/model/error.h"
#include "host/model/names.h"
#include "host/model/text_file.h"

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <type_traits>
#include <utility>

namespace zol::host {
namespace {

using Json = nlohmann::json;

// ---- The members of each record by name, for both directions ----

template <class T, class Record>
concept Is = std::same_as<std::remove_const_t<T>, Record>;

template <Is<PlannedFault> Fault, class Visit> void forEachMember(Fault &fault, Visit visit) {
  visit("service", fault.service);
  visit("nth", fault.nth);
}

template <Is<MediaPrograms> Programs, class Visit> void forEachMember(Programs &programs, Visit visit) {
  visit("ffmpeg", programs.ffmpeg);
  visit("ffprobe", programs.ffprobe);
}

template <Is<InputPlan> Input, class Visit> void forEachMember(Input &input, Visit visit) {
  visit("file", input.file);
  visit("start", input.start);
  visit("end", input.end);
}

template <Is<PartPlan> Part, class Visit> void forEachMember(Part &part, Visit visit) {
  visit("number", part.number);
  visit("count", part.count);
  visit("file", part.file);
  visit("all", part.all);
}

template <Is<StagePlan> Stage, class Visit> void forEachMember(Stage &stage, Visit visit) {
  visit("effect", stage.effect);
  visit("inputs", stage.inputs);
  visit("settings", stage.settings);
}

template <Is<RenderPlan> Plan, class Visit> void forEachMember(Plan &plan, Visit visit) {
  visit("stages", plan.stages);
  visit("output", plan.output);
  visit("library", plan.library);
  visit("host", plan.host);
  visit("size", plan.size);
  visit("fit", plan.fit);
  visit("rate", plan.rate);
  visit("duration", plan.duration);
  visit("frames", plan.frames);
  visit("sampleRate", plan.sampleRate);
  visit("channels", plan.channels);
  visit("block", plan.block);
  visit("realTime", plan.realTime);
  visit("overwrite", plan.overwrite);
  visit("alpha", plan.alpha);
  visit("codec", plan.codec);
  visit("quality", plan.quality);
  visit("pixelFormat", plan.pixelFormat);
  visit("encoderWords", plan.encoderWords);
  visit("noSound", plan.noSound);
  visit("noPictures", plan.noPictures);
  visit("strict", plan.strict);
  visit("playlists", plan.playlists);
  visit("threads", plan.threads);
  visit("part", plan.part);
  visit("faults", plan.faults);
  visit("programs", plan.programs);
}

struct Nothing {
  void operator()(const char *, const auto &) const {}
};

template <class T>
concept Described = requires(T &record) {
  forEachMember(record, Nothing());
};

/// Null stands for a value that is not there.
struct ToJson {
  static Json of(const std::string &value) { return value; }
  template <class Value>
  requires std::is_arithmetic_v<Value>
  static Json of(Value value) { return value; }
  static Json of(const Rational &rate) { return rate.text(); }
  static Json of(const Time &time) { return time.text(); }
  static Json of(Fit fit) { return fitName(fit); }
  static Json of(Service service) { return serviceName(service); }
  template <class First, class Second> static Json of(const std::pair<First, Second> &pair) {
    return Json::array({of(pair.first), of(pair.second)});
  }
  template <class Value> static Json of(const std::optional<Value> &value) {
    return value ? of(*value) : Json();
  }
  template <class Value> static Json of(const std::vector<Value> &values) {
    Json json = Json::array();
    for (const Value &value : values)
      json.push_back(of(value));
    return json;
  }
  template <Described Record> static Json of(const Record &record) {
    Json json = Json::object();
    forEachMember(record, [&](const char *name, const auto &member) {
      if (Json value = of(member); !value.is_null())
        json[name] = std::move(value);
    });
    return json;
  }
};

/// Each tells whether the JSON was of the right kind.
struct FromJson {
  static bool to(std::string &value, const Json &json) {
    return json.is_string() && (json.get_to(value), true);
  }
  static bool to(bool &value, const Json &json) { return json.is_boolean() && (json.get_to(value), true); }
  static bool to(double &value, const Json &json) { return json.is_number() && (json.get_to(value), true); }
  template <std::integral Value> static bool to(Value &value, const Json &json) {
    return json.is_number_integer() && std::in_range<Value>(json.get<int64_t>()) &&
           (json.get_to(value), true);
  }
  static bool to(Rational &value, const Json &json) {
    return json.is_string() && assign(value, rationalIn(json.get<std::string>()));
  }
  static bool to(InputPlan &value, const Json &json) {
    return json.is_string() ? to(value.file, json) : to<InputPlan>(value, json);
  }
  static bool to(Time &value, const Json &json) {
    return json.is_string() && assign(value, timeIn(json.get<std::string>()));
  }
  static bool to(Fit &value, const Json &json) {
    return json.is_string() && assign(value, fitNamed(json.get<std::string>()));
  }
  static bool to(Service &value, const Json &json) {
    return json.is_string() && assign(value, serviceNamed(json.get<std::string>()));
  }
  template <class First, class Second> static bool to(std::pair<First, Second> &pair, const Json &json) {
    return json.is_array() && json.size() == 2 && to(pair.first, json[0]) && to(pair.second, json[1]);
  }
  template <class Value> static bool to(std::optional<Value> &value, const Json &json) {
    return to(value.emplace(), json);
  }
  template <class Value> static bool to(std::vector<Value> &values, const Json &json) {
    return json.is_array() && std::all_of(json.begin(), json.end(), [&](const Json &value) {
             return to(values.emplace_back(), value);
           });
  }
  template <Described Record> static bool to(Record &record, const Json &json) {
    if (!json.is_object())
      return false;
    std::vector<std::string> known;
    forEachMember(record, [&](const char *name, auto &member) {
      known.emplace_back(name);
      if (const auto found = json.find(name); found != json.end() && !to(member, *found))
        throw HostError("a plan's \"" + std::string(name) + "\" cannot be " + found->dump());
    });
    for (const auto &[name, value] : json.items())
      if (std::find(known.begin(), known.end(), name) == known.end()) {
        const auto near = nearestNames(name, known, 1);
        throw HostError("a plan has no \"" + name + '"' +
                        (near.empty() ? "" : "; did you mean \"" + near.front() + "\"?"));
      }
    return true;
  }

private:
  template <class Value> static bool assign(Value &value, const std::optional<Value> &found) {
    value = found.value_or(value);
    return found.has_value();
  }
};

} // namespace

Json toJson(const RenderPlan &plan) { return ToJson::of(plan); }

RenderPlan planFromJson(const Json &json) {
  RenderPlan plan;
  if (!FromJson::to(plan, json))
    throw HostError("a plan is an object");
  return plan;
}

RenderPlan loadPlan(const std::string &file) {
  const std::string text = readTextFile(file);
  try {
    RenderPlan plan = planFromJson(Json::parse(text));
    if (plan.stages.empty())
      throw HostError("no stages in it");
    return plan;
  } catch (const nlohmann::json::exception &) {
    throw HostError("cannot read " + file + ": it is no JSON");
  } catch (const HostError &error) {
    throw HostError("cannot read " + file + ": " + error.what());
  }
}

} // namespace zol::host
