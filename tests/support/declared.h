// What a declare function sends, as text.
#pragma once

#include "host/services/session.h"

#include <regex>
#include <string>
#include <vector>

namespace zol::test {

/// The statements in order, every address replaced by "@". Each field's id is its index.
/// `result` receives the declare function's answer.
inline std::vector<std::string> declared(int (*declare)(t_ZoHostInfo *), const char *identity,
                                         int *result = nullptr) {
  static const std::regex address("0x[0-9A-F]{7,}");
  static const std::regex writeBack(R"(^\*\(?\(int \*\)0x([0-9A-F]+)\)? = )");
  static const std::regex field(R"((^|= )(Zo)?DataFieldAdd\()");
  host::Session session(identity);
  std::vector<std::string> statements;
  int fields = 0;
  session.onStatement = [&](const char *text) -> long long {
    const std::string statement = text;
    if (statement.starts_with("ZoEffect "))
      fields = 0;
    std::smatch match;
    if (std::regex_search(statement, match, writeBack))
      *reinterpret_cast<int *>(static_cast<uintptr_t>(std::stoull(match[1].str(), nullptr, 16))) = fields;
    if (std::regex_search(statement, field))
      ++fields;
    statements.push_back(std::regex_replace(statement, address, "@"));
    return 1;
  };
  const int answer = declare(session.info());
  if (result != nullptr)
    *result = answer;
  return statements;
}

/// The callbacks that a declare function hands over: those of the last record, or of the record with the
/// given sign where it declares several.
struct Callbacks {
  t_ZoInitFn init = nullptr;
  t_ZoRenderVideoFn renderVideo = nullptr;
  t_ZoRenderVideoRTFn renderVideoRT = nullptr;
  t_ZoRenderAudioFn renderAudio = nullptr;
  t_ZoDialogOpenFn onDialogOpen = nullptr;
  t_ZoDialogItemEditFn onDialogItemEdit = nullptr;

  explicit Callbacks(int (*declare)(t_ZoHostInfo *), const char *identity = "Halvenor",
                     std::string sign = {}) {
    host::Session session(identity);
    bool wanted = true;
    session.onStatement = [&](const char *text) -> long long {
      const std::string statement = text;
      if (!sign.empty() && statement.find(".Sign = ") != std::string::npos)
        wanted = statement.find('"' + sign + '"') != std::string::npos;
      if (wanted) {
        collect(statement, ".InitFunction = 0x", init);
        collect(statement, ".RenderVideoFunction = 0x", renderVideo);
        collect(statement, ".RenderVideoFunctionRT = 0x", renderVideoRT);
        collect(statement, ".RenderAudioFunction = 0x", renderAudio);
        collect(statement, ".OnDialogOpen = 0x", onDialogOpen);
        collect(statement, ".OnDialogItemEdit = 0x", onDialogItemEdit);
      }
      return 1;
    };
    declare(session.info());
  }

private:
  template <class Function>
  static void collect(const std::string &statement, const std::string &member, Function &callback) {
    if (const size_t at = statement.find(member); at != std::string::npos)
      callback = reinterpret_cast<Function>(
          static_cast<uintptr_t>(std::stoull(statement.substr(at + member.size()), nullptr, 16)));
  }
};

} // namespace zol::test
