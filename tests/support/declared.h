// What a declare function hands over.
#pragma once

#include "host/services/session.h"

#include <regex>
#include <string>

namespace zol::test {

/// The callbacks that a declare function hands over: those of the last record, or of the record with the
/// given sign where it declares several. Each field's id is its index, also where the library stores it.
struct Callbacks {
  t_ZoInitFn init = nullptr;
  t_ZoRenderVideoFn renderVideo = nullptr;
  t_ZoRenderVideoRTFn renderVideoRT = nullptr;
  t_ZoRenderAudioFn renderAudio = nullptr;
  t_ZoDialogOpenFn onDialogOpen = nullptr;
  t_ZoDialogItemEditFn onDialogItemEdit = nullptr;
  t_ZoProbeFn probe = nullptr;
  t_ZoInitByMediaFn initByMedia = nullptr;
  t_ZoDeleteUserDataFn deleteUserData = nullptr;
  t_ZoTrimFn trim = nullptr;

  explicit Callbacks(int (*declare)(t_ZoHostInfo *), const char *identity = "Halvenor",
                     std::string sign = {}) {
    static const std::regex writeBack(R"(^\*\(?\(int \*\)0x([0-9A-F]+)\)? = )");
    static const std::regex field(R"((^|= )(Zo)?DataFieldAdd\()");
    host::Session session(identity);
    bool wanted = true;
    int fields = 0;
    session.onStatement = [&](const char *text) -> long long {
      const std::string statement = text;
      if (statement.starts_with("ZoEffect "))
        fields = 0;
      std::smatch match;
      if (std::regex_search(statement, match, writeBack))
        *reinterpret_cast<int *>(static_cast<uintptr_t>(std::stoull(match[1], nullptr, 16))) = fields;
      fields += std::regex_search(statement, field) ? 1 : 0;
      if (!sign.empty() && statement.find(".Sign = ") != std::string::npos)
        wanted = statement.find('"' + sign + '"') != std::string::npos;
      if (wanted) {
        collect(statement, ".InitFunction = 0x", init);
        collect(statement, ".RenderVideoFunction = 0x", renderVideo);
        collect(statement, ".RenderVideoFunctionRT = 0x", renderVideoRT);
        collect(statement, ".RenderAudioFunction = 0x", renderAudio);
        collect(statement, ".OnDialogOpen = 0x", onDialogOpen);
        collect(statement, ".OnDialogItemEdit = 0x", onDialogItemEdit);
        collect(statement, ".Probe = 0x", probe);
        collect(statement, ".InitByMedia = 0x", initByMedia);
        collect(statement, ".DeleteUserData = 0x", deleteUserData);
        collect(statement, ".Trim = 0x", trim);
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
