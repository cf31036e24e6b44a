// Messages, declarations and translated texts; the running render.

#include "host/model/unicode.h"
#include "host/services/calls.h"

namespace zol::host::service {
namespace {

Session &session() { return Session::current(); }

long long execute(Service called, const char *text) {
  if (enter(called, text) || !session().onStatement)
    return 0;
  return session().onStatement(text);
}

} // namespace

void Message(t_ZoHostInfo *, const char *text) {
  enter(Service::Message, text);
  session().messages.push_back(text == nullptr ? std::nullopt : std::optional<std::string>(text));
}

int ErrorCountReport(t_ZoHostInfo *, int, int, int count) {
  return enter(Service::ErrorCountReport, count) ? 1 : 0;
}

int ScriptExecute(t_ZoHostInfo *, const char *text) {
  return static_cast<int>(execute(Service::ScriptExecute, text));
}

long long ScriptExecuteHi(t_ZoHostInfo *, t_ZoHostInfo *, const char *text) {
  return execute(Service::ScriptExecuteHi, text);
}

const uint16_t *TranslateW(t_ZoHostInfo *, const char *section, const char *text) {
  if (enter(Service::TranslateW, section, text) || text == nullptr)
    return nullptr;
  const std::u16string &wide = session().keep(toUtf16(text));
  if (session().onTranslated)
    session().onTranslated(wide);
  return reinterpret_cast<const uint16_t *>(wide.c_str());
}

int IsAborted(t_ZoHostInfo *) {
  const bool stopped = enter(Service::IsAborted);
  return stopped || (session().stop && session().stop()) ? 1 : 0;
}

} // namespace zol::host::service
