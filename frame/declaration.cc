#include "frame/declaration.h"

#include "frame/address.h"
#include "frame/host.h"

namespace zol {
namespace {

bool existsFor(const t_ZoHostInfo *host, Hosts hosts) {
  switch (hosts) {
  case Hosts::halvenor: return hostIs(host, "Halvenor");
  case Hosts::allButHalvenor: return !hostIs(host, "Halvenor");
  case Hosts::quorbel: return hostIs(host, "Quorbel");
  case Hosts::allButQuorbel: return !hostIs(host, "Quorbel");
  case Hosts::all: break;
  }
  return true;
}

const char *nameFor(const t_ZoHostInfo *host, const Effect &effect) {
  if (effect.nameInQuorbel != nullptr && hostIs(host, "Quorbel"))
    return effect.nameInQuorbel;
  if (effect.nameElsewhere != nullptr && !hostIs(host, "Halvenor"))
    return effect.nameElsewhere;
  return effect.name;
}

void sendHead(const Script &script, const Effect &effect) {
  const char *variable = script.variable();
  const char *name = nameFor(script.host, effect);
  if (script.has(Script::kCombinedHead)) {
    ZoScriptExecuteHi(script.host, "ZoEffect %s; %s.Name = \"%s\"; %s.Sign = \"%s\"; %s.Version = 0x%X;",
                      variable, variable, name, variable, effect.sign, variable,
                      static_cast<unsigned>(effect.version));
    return;
  }
  ZoScriptExecuteHi(script.host, "ZoEffect %s;", variable);
  ZoScriptExecuteHi(script.host, "%s.Sign = \"%s\";", variable, effect.sign);
  ZoScriptExecuteHi(script.host, "%s.Name = \"%s\";", variable, name);
  ZoScriptExecuteHi(script.host, "%s.Version = %d;", variable, effect.version);
}

void sendDescription(const Script &script, const Effect &effect) {
  if (effect.description != nullptr)
    ZoScriptExecuteHi(script.host, "%s.DescriptionW = (word *)" ZOL_ADDRESS ";", script.variable(),
                      script.word(effect.description));
  if (effect.description8 != nullptr)
    ZoScriptExecuteHi(script.host, "%s.Description = (char *)" ZOL_ADDRESS ";", script.variable(),
                      address(effect.description8));
}

void sendText(const Script &script, const char *member, const char *text) {
  if (text != nullptr)
    ZoScriptExecuteHi(script.host, "%s.%s = \"%s\";", script.variable(), member, text);
}

template <class Function> void sendCallback(const Script &script, const char *member, Function *callback) {
  if (callback != nullptr)
    ZoScriptExecuteHi(script.host, "%s.%s = " ZOL_ADDRESS ";", script.variable(), member, address(callback));
}

} // namespace

int declareOne(t_ZoHostInfo *host, const Effect &effect) {
  if (!existsFor(host, effect.hosts))
    return 0;
  const Script script{host, effect.section, effect.style};
  const bool late = script.has(Script::kDescriptionLate), typeLate = script.has(Script::kTypeLate);
  sendHead(script, effect);
  if (!late)
    sendDescription(script, effect);
  if (!typeLate)
    sendText(script, "Type", effect.type);
  if (effect.icon != nullptr)
    ZoScriptExecuteHi(host, "%s.Icon = ZoPicFromXPM( " ZOL_ADDRESS " );", script.variable(),
                      address(effect.icon));
  sendText(script, "DefaultIconMode", effect.iconMode);
  if (late)
    sendDescription(script, effect);
  sendCallback(script, "InitFunction", effect.init);
  sendCallback(script, "RenderVideoFunction", effect.renderVideo);
  sendCallback(script, "RenderVideoFunctionRT", effect.renderVideoRT);
  sendCallback(script, "RenderAudioFunction", effect.renderAudio);
  sendCallback(script, "OnDialogOpen", effect.onDialogOpen);
  sendCallback(script, "OnDialogItemEdit", effect.onDialogItemEdit);
  sendCallback(script, "Probe", effect.probe);
  sendCallback(script, "InitByMedia", effect.initByMedia);
  sendCallback(script, "DeleteUserData", effect.deleteUserData);
  sendCallback(script, "Trim", effect.trim);
  if (typeLate)
    sendText(script, "Type", effect.type);
  declareFields(script, effect.fields);
  ZoScriptExecuteHi(host, "EffectAdd( %s );", script.variable());
  return 1;
}

} // namespace zol
