// One use of an effect: its parameters, as its own init callback and then the user set them.
#pragma once

#include "host/geometry/geometry.h"
#include "host/model/effect.h"
#include "host/model/times.h"
#include "host/render/timeline.h"
#include "host/script/instance_script.h"
#include "host/services/session.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zol::host {

class Instance {
public:
  /// Runs the effect's init callback, which sees the timeline and may send statements, with `defaultClip` as
  /// the clip that the effect is applied to. The effect outlives the instance.
  Instance(const Effect &effect, const std::string &identity, const Timeline &timeline,
           Clip *defaultClip = nullptr);

  [[nodiscard]] const Effect &effect() const { return effect_; }
  Session &session() { return session_; }

  /// Sets a field by its name or label (without regard to case), or an item of a data set by the item's name,
  /// to a value as users write it (host/model/values.h); a geometry to SVG path data, @file.svg, or keys of
  /// these. Throws HostError for what the field does not take.
  void set(std::string_view name, std::string_view value);

  /// What settings left out of the files that they name, and keys that are never reached; a line each.
  [[nodiscard]] const std::vector<std::string> &notes() const { return notes_; }

  /// The field of that name or label; -1 where there is none.
  [[nodiscard]] int fieldNamed(std::string_view name) const;

  /// Input fields, those of media among them, in the order of declaration.
  [[nodiscard]] std::vector<int> inputFields() const;

  /// The same, but the first is the one for the result of another effect: what init assigned the default clip
  /// to, else the first that is no background.
  [[nodiscard]] std::vector<int> chainedInputFields() const;

  /// The first input that has no clip; -1 where all have.
  [[nodiscard]] int missingInput() const;

  /// Assigns clips to these input fields one by one; a variable list grows, through the effect's own dialog,
  /// until it has a slot for each of the rest. Throws HostError where there are too few inputs.
  void assignInputs(const std::vector<Clip *> &clips, const std::vector<int> &fields);
  /// A medium is taken by the effect's own callbacks where it has them. Throws HostError for one that it
  /// cannot use.
  void assignInput(int field, int item, Clip *clip);

  /// How many seconds the effect's media last as it plays them; nothing where it does not end, or not tell.
  std::optional<double> mediaDuration();

  /// The field's values now, as the user would write them; empty where the kind has none.
  [[nodiscard]] std::string valueText(int field) const;

  /// Names of a data set's items, one an input.
  [[nodiscard]] std::vector<std::string> datasetItems(int field) const;

  /// Opens the effect's dialog, once: variable lists get their first slot and data sets their items.
  void openDialog();

private:
  bool takeMedia(int field, Clip *clip);
  void noteStrayKey(const Field &field, std::string_view value);
  std::unique_ptr<Shape> readShape(const Field &field, std::string_view value);
  bool setDatasetItem(std::string_view name, std::string_view value);
  void growList(int field, size_t slots);

  const Effect &effect_;
  Session session_;
  InstanceScript script_;
  KeySpan span_;
  Matrix drawingScale_;
  bool dialogOpened_ = false;
  std::vector<std::unique_ptr<Shape>> shapes_;
  std::vector<std::string> notes_;
};

} // namespace zol::host
