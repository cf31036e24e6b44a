// What the library sees of the host: the services table and the context, over one effect's parameters.
#pragma once

#include "frame/zol.h"
#include "host/model/parameters.h"
#include "host/services/pools.h"

#include <array>
#include <deque>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zol::host {

/// The services that the library calls, by slot.
enum class Service {
  Message = 2,
  ErrorCountReport = 3,
  PicCreate = 4,
  PicFree = 6,
  PicDuplicate = 7,
  AudioCreate = 16,
  ScriptExecute = 24,
  ScriptExecuteHi = 25,
  ParamGetGeometry = 26,
  ParamGetFloat = 27,
  ParamSetFloat = 28,
  ParamGetColor = 30,
  ParamSetColor = 31,
  InputGetPic = 32,
  InputSet = 33,
  ParamGetInt = 34,
  ParamSetInt = 35,
  DatasetItemAdd = 40,
  DatasetClear = 41,
  DataFieldItemCount = 42,
  InputsAdd = 46,
  InputsRemoveSelected = 48,
  DialogRefresh = 51,
  DatasetRefresh = 52,
  ClipGetDefault = 57,
  GeoGetBox = 66,
  GeoGetCurves = 67,
  IsAborted = 70,
  PicGetSized = 71,
  PicResample = 72,
  InputGetAudio = 73,
  TranslateW = 81,
};

/// The service's name, and the service of a name.
std::string_view serviceName(Service service);
std::optional<Service> serviceNamed(std::string_view name);

/// Makes services fail on purpose and counts their calls.
class Faults {
public:
  /// The nth call (from 1) of the service fails: it answers null, 0 or an error. IsAborted answers "stop"
  /// from its nth poll on.
  void failAt(Service service, int nth) { failing_.at(index(service)) = nth; }
  void abortAtPoll(int nth) { failAt(Service::IsAborted, nth); }
  /// Forgets faults and counts.
  void clear() { *this = Faults(); }
  [[nodiscard]] int calls(Service service) const { return calls_.at(index(service)); }
  /// Whether a poll has answered "stop".
  [[nodiscard]] bool aborted() const {
    const int nth = failing_.at(index(Service::IsAborted));
    return nth != 0 && calls(Service::IsAborted) >= nth;
  }

  /// Counts one call; whether it must fail.
  bool hit(Service service) {
    const int call = ++calls_[index(service)];
    const int nth = failing_[index(service)];
    return nth != 0 && (service == Service::IsAborted ? call >= nth : call == nth);
  }

private:
  static constexpr size_t kSlots = 84;
  static size_t index(Service service) { return static_cast<size_t>(service); }
  std::array<int, kSlots> calls_{};
  std::array<int, kSlots> failing_{};
};

/// One effect instance as its callbacks see it. A thread works with one session at a time, the youngest
/// that is alive or the one that a Use names; services without a context argument depend on it.
class Session {
public:
  explicit Session(std::string identity);
  ~Session();
  Session(const Session &) = delete;
  Session &operator=(const Session &) = delete;

  /// Makes a session the thread's current one for as long as the object lives.
  class Use {
  public:
    explicit Use(Session &session);
    ~Use();
    Use(const Use &) = delete;
    Use &operator=(const Use &) = delete;

  private:
    Session *previous_;
  };

  /// The context to pass to an entry or callback. Its members may be set freely, Services aside.
  t_ZoHostInfo *info() { return &info_; }

  PicturePool pictures;
  AudioPool audio;
  Parameters parameters;
  Faults faults;

  /// What ClipGetDefault answers.
  Clip *defaultClip = nullptr;
  /// What ScriptExecute and ScriptExecuteHi do with a statement.
  std::function<long long(const char *)> onStatement;
  /// Told of every 16-bit text handed out.
  std::function<void(const std::u16string &)> onTranslated;
  /// Input slots that the user has selected in the dialog, for InputsRemoveSelected.
  std::vector<int> selectedInputs;

  /// Texts shown through Message, in order; a null text is nullopt.
  std::vector<std::optional<std::string>> messages;
  /// What an input threw while an effect asked it for a frame or for sound; the effect was told "none".
  std::exception_ptr inputError;
  /// Misuses of the border: wrong frees, foreign handles.
  std::vector<std::string> complaints;
  /// Every call as text, such as "ParamGetFloat(1, 0, 0.5)", while tracing is on.
  bool tracing = false;
  std::vector<std::string> trace;

  /// The session behind the services that carry no context. Must be one.
  static Session &current();

private:
  friend struct ServiceTable;

  std::string identity_;
  t_ZoHostInfo info_{};
  std::deque<std::u16string> translated_;
  Session *previous_;
};

/// The table that every session's context points at.
const t_ZoServices &services();

} // namespace zol::host
