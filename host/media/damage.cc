#include "host/media/damage.h"

#include "host/media/probe.h"
#include "host/model/text.h"

#include <cmath>

namespace zol::host {
namespace {

std::string tenths(double time) { return numberText(std::round(10 * time) / 10); }

} // namespace

std::string Listener::news(Process &process) {
  const size_t said = process.errorBytes();
  std::string line;
  if (said > heard_ && !amid_)
    line = process.lineFrom(heard_);
  amid_ = false;
  heard_ = said;
  return line;
}

void Damage::heard(const std::string &line, const std::string &url, std::optional<double> time) {
  tell("is damaged" + (time ? " at about " + tenths(*time) + " s" : "") + ": " + reasonIn(line, url));
}

void Damage::endedEarly(double time, double expected) {
  tell("is damaged: it breaks off after " + tenths(time) + " s of " + tenths(expected) + " s");
}

void Damage::goesOn(double expected) {
  tell("is damaged: it goes on behind its length of " + tenths(expected) + " s, which is left out");
}

void Damage::tell(const std::string &text) {
  if (!text_.empty())
    return;
  text_ = name_ + ' ' + text;
  if (strict_)
    throw HostError(text_);
}

} // namespace zol::host
