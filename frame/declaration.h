// The border: an effect as it is declared to the host, one record from which all statements follow.
#pragma once

#include "frame/export.h"
#include "frame/fields.h"
#include "frame/zol.h"

namespace zol {

/// The hosts for which an effect exists.
enum class Hosts { all, halvenor, allButHalvenor, quorbel, allButQuorbel };

/// What is null is not sent.
struct Effect {
  const char *name = nullptr;          ///< the menu path
  const char *nameInQuorbel = nullptr; ///< where it differs
  const char *nameElsewhere = nullptr; ///< under every host but Halvenor, where it differs
  const char *sign = nullptr;
  int version = 0;
  Hosts hosts = Hosts::all;

  const char *section = nullptr;      ///< the effect's short name, under which the host translates its texts
  const char *description = nullptr;  ///< translated
  const char *description8 = nullptr; ///< 8-bit, as it is
  const char *type = nullptr;
  const char *const *icon = nullptr; ///< an XPM
  const char *iconMode = nullptr;

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

  FieldTable fields = {};
  unsigned style = 0; ///< bits of Script
};

/// Declares the effect where it exists for the host: 1, else 0. Answers of the host are not looked at.
int declareOne(t_ZoHostInfo *host, const Effect &effect);

/// Declares those of an effect's variants that exist for the host, in this order: 1 if any does, else 0.
template <class... Variants> int declare(t_ZoHostInfo *host, const Variants &...variants) {
  int declared = 0;
  ((declared |= declareOne(host, variants)), ...);
  return declared;
}

} // namespace zol
