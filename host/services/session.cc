#include "host/services/session.h"

#include "host/media/interrupt.h"
#include "host/services/resample.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <type_traits>
#include <utility>

namespace zol::host {
namespace {

thread_local Session *currentSession = nullptr;

constexpr std::pair<Service, std::string_view> kNames[] = {
    {Service::Message, "Message"},
    {Service::ErrorCountReport, "ErrorCountReport"},
    {Service::PicCreate, "PicCreate"},
    {Service::PicFree, "PicFree"},
    {Service::PicDuplicate, "PicDuplicate"},
    {Service::AudioCreate, "AudioCreate"},
    {Service::ScriptExecute, "ScriptExecute"},
    {Service::ScriptExecuteHi, "ScriptExecuteHi"},
    {Service::ParamGetGeometry, "ParamGetGeometry"},
    {Service::ParamGetFloat, "ParamGetFloat"},
    {Service::ParamSetFloat, "ParamSetFloat"},
    {Service::ParamGetColor, "ParamGetColor"},
    {Service::ParamSetColor, "ParamSetColor"},
    {Service::InputGetPic, "InputGetPic"},
    {Service::InputSet, "InputSet"},
    {Service::ParamGetInt, "ParamGetInt"},
    {Service::ParamSetInt, "ParamSetInt"},
    {Service::DatasetItemAdd, "DatasetItemAdd"},
    {Service::DatasetClear, "DatasetClear"},
    {Service::DataFieldItemCount, "DataFieldItemCount"},
    {Service::InputsAdd, "InputsAdd"},
    {Service::InputsRemoveSelected, "InputsRemoveSelected"},
    {Service::DialogRefresh, "DialogRefresh"},
    {Service::DatasetRefresh, "DatasetRefresh"},
    {Service::ClipGetDefault, "ClipGetDefault"},
    {Service::GeoGetBox, "GeoGetBox"},
    {Service::GeoGetCurves, "GeoGetCurves"},
    {Service::IsAborted, "IsAborted"},
    {Service::PicGetSized, "PicGetSized"},
    {Service::PicResample, "PicResample"},
    {Service::InputGetAudio, "InputGetAudio"},
    {Service::TranslateW, "TranslateW"},
};

template <class Value> void appendArgument(std::string &text, Value value) {
  if (text.back() != '(')
    text += ", ";
  if constexpr (std::is_same_v<Value, const char *>) {
    text += value == nullptr ? std::string("null") : '"' + std::string(value) + '"';
  } else {
    char digits[32];
    text.append(digits, std::to_chars(std::begin(digits), std::end(digits), value).ptr);
  }
}

/// Counts and traces one call; whether it must fail.
template <class... Arguments> bool enter(Session &session, Service service, Arguments... arguments) {
  if (session.tracing) {
    std::string text(serviceName(service));
    text += '(';
    (appendArgument(text, arguments), ...);
    session.trace.push_back(text + ')');
  }
  return session.faults.hit(service);
}

unsigned packed(const _color_t &color) {
  return unsigned{color.b} | unsigned{color.g} << 8 | unsigned{color.r} << 16 | unsigned{color.a} << 24;
}

/// UTF-8 to UTF-16; what is not UTF-8 becomes U+FFFD.
std::u16string widened(std::string_view text) {
  std::u16string wide;
  for (size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i++]);
    const int more = lead < 0x80 ? 0 : lead >> 5 == 6 ? 1 : lead >> 4 == 14 ? 2 : lead >> 3 == 30 ? 3 : -1;
    char32_t point = more < 0 ? 0xFFFD : more == 0 ? lead : lead & (0x3F >> more);
    for (int k = 0; k < more; ++k) {
      if (i >= text.size() || (text[i] & 0xC0) != 0x80) {
        point = 0xFFFD;
        break;
      }
      point = point << 6 | (static_cast<unsigned char>(text[i++]) & 0x3F);
    }
    if (point > 0x10FFFF)
      point = 0xFFFD;
    if (point >= 0x10000) {
      wide += static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10));
      wide += static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FF));
    } else {
      wide += static_cast<char16_t>(point);
    }
  }
  return wide;
}

} // namespace

std::string_view serviceName(Service service) {
  for (const auto &[candidate, name] : kNames)
    if (candidate == service)
      return name;
  return "";
}

std::optional<Service> serviceNamed(std::string_view name) {
  for (const auto &[service, candidate] : kNames)
    if (candidate == name)
      return service;
  return std::nullopt;
}

/// The services as the library calls them, each over the thread's current session.
struct ServiceTable {
  static Session &session() { return Session::current(); }

  static void message(t_ZoHostInfo *, const char *text) {
    enter(session(), Service::Message, text);
    session().messages.push_back(text == nullptr ? std::nullopt : std::optional<std::string>(text));
  }

  static int errorCountReport(t_ZoHostInfo *, int, int, int count) {
    return enter(session(), Service::ErrorCountReport, count) ? 1 : 0;
  }

  // ---- Pictures and audio blocks ----

  static pic *picCreate(int width, int height) {
    return enter(session(), Service::PicCreate, width, height) ? nullptr
                                                               : session().pictures.create(width, height);
  }

  static void picFree(pic *picture) {
    enter(session(), Service::PicFree);
    if (!session().pictures.free(picture))
      session().complaints.emplace_back("PicFree of a picture that is not live");
  }

  static pic *picDuplicate(pic *source) {
    return enter(session(), Service::PicDuplicate) ? nullptr : session().pictures.duplicate(source);
  }

  static t_ZoAudio *audioCreate(double from, double to, unsigned rate, unsigned channels) {
    if (enter(session(), Service::AudioCreate, from, to, rate, channels))
      return nullptr;
    return session().audio.create(std::floor((to - from) * rate + 0.5), rate, channels);
  }

  // ---- Declarations ----

  static long long execute(Service service, const char *text) {
    if (enter(session(), service, text) || !session().onStatement)
      return 0;
    return session().onStatement(text);
  }

  static int scriptExecute(t_ZoHostInfo *, const char *text) {
    return static_cast<int>(execute(Service::ScriptExecute, text));
  }

  static long long scriptExecuteHi(t_ZoHostInfo *, t_ZoHostInfo *, const char *text) {
    return execute(Service::ScriptExecuteHi, text);
  }

  static const uint16_t *translateW(t_ZoHostInfo *, const char *section, const char *text) {
    if (enter(session(), Service::TranslateW, section, text) || text == nullptr)
      return nullptr;
    const std::u16string &wide = session().translated_.emplace_back(widened(text));
    if (session().onTranslated)
      session().onTranslated(wide);
    return reinterpret_cast<const uint16_t *>(wide.c_str());
  }

  // ---- Parameters ----

  static long double paramGetFloat(t_ZoHostInfo *, int field, int item, double time) {
    if (enter(session(), Service::ParamGetFloat, field, item, time))
      return 0;
    const NumberCurve *curve = session().parameters.numbers.find(field, item);
    return curve == nullptr ? 0 : curve->at(time)[0];
  }

  static void paramSetFloat(t_ZoHostInfo *, int field, int item, double time, double value) {
    enter(session(), Service::ParamSetFloat, field, item, time, value);
    if (NumberCurve *curve = session().parameters.numbers.get(field, item))
      curve->set(time, {value});
  }

  static void paramGetColor(t_ZoHostInfo *, int field, int item, _color_t *out, double time) {
    const bool fails = enter(session(), Service::ParamGetColor, field, item, time);
    const ColorCurve *curve = session().parameters.colors.find(field, item);
    *out = fails || curve == nullptr ? _color_t{} : colorAt(*curve, time);
  }

  static void paramSetColor(t_ZoHostInfo *, int field, int item, const _color_t *color, double time) {
    enter(session(), Service::ParamSetColor, field, item, packed(*color), time);
    if (ColorCurve *curve = session().parameters.colors.get(field, item))
      curve->set(time, colorValue(*color));
  }

  static int paramGetInt(t_ZoHostInfo *, int field, int item) {
    if (enter(session(), Service::ParamGetInt, field, item))
      return 0;
    const int *value = session().parameters.integers.find(field, item);
    return value == nullptr ? 0 : *value;
  }

  static void paramSetInt(t_ZoHostInfo *, int field, int item, int value) {
    enter(session(), Service::ParamSetInt, field, item, value);
    if (int *place = session().parameters.integers.get(field, item))
      *place = value;
  }

  static void *paramGetGeometry(t_ZoHostInfo *, int field, int item) {
    if (enter(session(), Service::ParamGetGeometry, field, item))
      return nullptr;
    const Shape *const *shape = session().parameters.geometries.find(field, item);
    return shape == nullptr ? nullptr : const_cast<Shape *>(*shape);
  }

  static void geoGetBox(t_ZoHostInfo *, void *geometry, double box[4], double time) {
    const bool fails = enter(session(), Service::GeoGetBox, time);
    std::fill_n(box, 4, 0.0);
    if (!fails && geometry != nullptr)
      static_cast<const Shape *>(geometry)->box(box, time);
  }

  static int geoGetCurves(t_ZoHostInfo *, void *geometry, double time, int one, void *user,
                          t_ZoSegmentFn callback, int zero) {
    if (enter(session(), Service::GeoGetCurves, time, one, zero) || geometry == nullptr)
      return 0;
    return static_cast<const Shape *>(geometry)->curves(time, one != 0, user, callback);
  }

  // ---- Inputs ----

  static std::vector<Clip *> *slots(int field) { return session().parameters.inputs.get(field, 0); }

  static void *inputGetPic(t_ZoHostInfo *, int field, int item) {
    if (enter(session(), Service::InputGetPic, field, item))
      return nullptr;
    const std::vector<Clip *> *clips = session().parameters.inputs.find(field, 0);
    if (clips == nullptr || item < 0 || static_cast<size_t>(item) >= clips->size())
      return nullptr;
    return (*clips)[static_cast<size_t>(item)];
  }

  static void inputSet(t_ZoHostInfo *, int field, int item, void *clip) {
    enter(session(), Service::InputSet, field, item);
    std::vector<Clip *> *clips = slots(field);
    if (clips == nullptr || item < 0 || item > 4096)
      return;
    if (clips->size() <= static_cast<size_t>(item))
      clips->resize(static_cast<size_t>(item) + 1);
    (*clips)[static_cast<size_t>(item)] = static_cast<Clip *>(clip);
  }

  /// Nothing that an input throws may pass through the library: it is kept for later.
  template <class Fetch> static auto ask(Fetch fetch) -> decltype(fetch()) {
    Session &asking = session();
    try {
      return fetch();
    } catch (...) {
      asking.inputError = std::current_exception();
      return nullptr;
    }
  }

  static void *clipGetDefault(t_ZoHostInfo *) {
    return enter(session(), Service::ClipGetDefault) ? nullptr : session().defaultClip;
  }

  static pic *picGetSized(t_ZoHostInfo *host, void *input, double time) {
    if (enter(session(), Service::PicGetSized, time) || input == nullptr)
      return nullptr;
    return ask([&] { return static_cast<Clip *>(input)->frame(time, host->Width, host->Height); });
  }

  static t_ZoAudio *inputGetAudio(t_ZoHostInfo *, void *input, double from, double to) {
    if (enter(session(), Service::InputGetAudio, from, to) || input == nullptr)
      return nullptr;
    return ask([&] { return static_cast<Clip *>(input)->audio(from, to); });
  }

  static int picResample(t_ZoHostInfo *, const _color_t *src, int srcStep, int srcWidth, int srcHeight,
                         _color_t *dst, int dstStep, int dstWidth, int dstHeight, int mode) {
    if (enter(session(), Service::PicResample, srcStep, srcWidth, srcHeight, dstStep, dstWidth, dstHeight,
              mode))
      return 0;
    resampleLinear({src, srcStep, srcWidth, srcHeight}, dst, dstStep, dstWidth, dstHeight);
    return 1;
  }

  // ---- Dialogs: input lists and data sets ----

  static int dataFieldItemCount(t_ZoHostInfo *, int field) {
    if (enter(session(), Service::DataFieldItemCount, field))
      return 0;
    if (const auto *items = session().parameters.datasets.find(field, 0); items != nullptr && !items->empty())
      return static_cast<int>(items->size());
    const std::vector<Clip *> *clips = session().parameters.inputs.find(field, 0);
    return clips == nullptr ? 0 : static_cast<int>(clips->size());
  }

  static void inputsAdd(t_ZoHostInfo *, int field, int a, int b) {
    enter(session(), Service::InputsAdd, field, a, b);
    if (std::vector<Clip *> *clips = slots(field))
      clips->push_back(nullptr);
  }

  static void inputsRemoveSelected(t_ZoHostInfo *, int field) {
    enter(session(), Service::InputsRemoveSelected, field);
    std::vector<Clip *> *clips = slots(field);
    if (clips == nullptr)
      return;
    std::vector<int> &selected = session().selectedInputs;
    std::sort(selected.rbegin(), selected.rend());
    selected.erase(std::unique(selected.begin(), selected.end()), selected.end());
    for (const int item : selected)
      if (item >= 0 && static_cast<size_t>(item) < clips->size())
        clips->erase(clips->begin() + item);
    selected.clear();
  }

  static void datasetItemAdd(t_ZoHostInfo *, int field, const char *kind, const char *name,
                             const t_ZoDatasetDisplay *display) {
    enter(session(), Service::DatasetItemAdd, field, kind, name, packed(display->Colour), display->Scale);
    if (auto *items = session().parameters.datasets.get(field, 0))
      items->push_back({kind, name, *display});
  }

  static void datasetClear(t_ZoHostInfo *, int field, int count) {
    enter(session(), Service::DatasetClear, field, count);
    if (auto *items = session().parameters.datasets.get(field, 0))
      items->clear();
    if (auto *curves = session().parameters.numbers.items(field))
      curves->clear();
  }

  static void datasetRefresh(t_ZoHostInfo *, int field, int from, int count) {
    enter(session(), Service::DatasetRefresh, field, from, count);
  }

  static void dialogRefresh(t_ZoHostInfo *, int a, int b) { enter(session(), Service::DialogRefresh, a, b); }

  // ---- The running render ----

  static int isAborted(t_ZoHostInfo *) {
    return enter(session(), Service::IsAborted) || interrupted() ? 1 : 0;
  }
};

const t_ZoServices &services() {
  static const t_ZoServices table = [] {
    t_ZoServices t{};
    t.Message = ServiceTable::message;
    t.ErrorCountReport = ServiceTable::errorCountReport;
    t.PicCreate = ServiceTable::picCreate;
    t.PicFree = ServiceTable::picFree;
    t.PicDuplicate = ServiceTable::picDuplicate;
    t.AudioCreate = ServiceTable::audioCreate;
    t.ScriptExecute = ServiceTable::scriptExecute;
    t.ScriptExecuteHi = ServiceTable::scriptExecuteHi;
    t.ParamGetGeometry = ServiceTable::paramGetGeometry;
    t.ParamGetFloat = ServiceTable::paramGetFloat;
    t.ParamSetFloat = ServiceTable::paramSetFloat;
    t.ParamGetColor = ServiceTable::paramGetColor;
    t.ParamSetColor = ServiceTable::paramSetColor;
    t.InputGetPic = ServiceTable::inputGetPic;
    t.InputSet = ServiceTable::inputSet;
    t.ParamGetInt = ServiceTable::paramGetInt;
    t.ParamSetInt = ServiceTable::paramSetInt;
    t.DatasetItemAdd = ServiceTable::datasetItemAdd;
    t.DatasetClear = ServiceTable::datasetClear;
    t.DataFieldItemCount = ServiceTable::dataFieldItemCount;
    t.InputsAdd = ServiceTable::inputsAdd;
    t.InputsRemoveSelected = ServiceTable::inputsRemoveSelected;
    t.DialogRefresh = ServiceTable::dialogRefresh;
    t.DatasetRefresh = ServiceTable::datasetRefresh;
    t.ClipGetDefault = ServiceTable::clipGetDefault;
    t.GeoGetBox = ServiceTable::geoGetBox;
    t.GeoGetCurves = ServiceTable::geoGetCurves;
    t.IsAborted = ServiceTable::isAborted;
    t.PicGetSized = ServiceTable::picGetSized;
    t.PicResample = ServiceTable::picResample;
    t.InputGetAudio = ServiceTable::inputGetAudio;
    t.TranslateW = ServiceTable::translateW;
    return t;
  }();
  return table;
}

Session::Session(std::string identity)
    : identity_(std::move(identity)), previous_(std::exchange(currentSession, this)) {
  info_.Identity = identity_.c_str();
  info_.Services = &services();
  info_.FrameRate = 25;
  info_.PixelAspect = 1;
  info_.BitsPerPixel = 32;
  info_.ClipEnd = 1;
}

Session::~Session() {
  if (currentSession == this)
    currentSession = previous_;
}

Session &Session::current() { return *currentSession; }

Session::Use::Use(Session &session) : previous_(std::exchange(currentSession, &session)) {}
Session::Use::~Use() { currentSession = previous_; }

} // namespace zol::host
