// Input slots and data sets: what is assigned, and what dialogs do with them.

#include "host/services/calls.h"

#include <algorithm>

namespace zol::host::service {
namespace {

constexpr int kMostSlots = 4096;

Session &session() { return Session::current(); }
std::vector<Clip *> *slots(int field) { return session().parameters.inputs.get(field, 0); }
std::vector<DatasetItem> *items(int field) { return session().parameters.datasets.get(field, 0); }

} // namespace

void *InputGetPic(t_ZoHostInfo *, int field, int item) {
  if (enter(Service::InputGetPic, field, item))
    return nullptr;
  const std::vector<Clip *> *clips = session().parameters.inputs.find(field, 0);
  if (clips == nullptr || item < 0 || static_cast<size_t>(item) >= clips->size())
    return nullptr;
  return (*clips)[static_cast<size_t>(item)];
}

void InputSet(t_ZoHostInfo *, int field, int item, void *clip) {
  enter(Service::InputSet, field, item);
  std::vector<Clip *> *clips = slots(field);
  if (clips == nullptr || item < 0 || item > kMostSlots)
    return;
  if (clips->size() <= static_cast<size_t>(item))
    clips->resize(static_cast<size_t>(item) + 1);
  (*clips)[static_cast<size_t>(item)] = static_cast<Clip *>(clip);
}

void *ClipGetDefault(t_ZoHostInfo *) {
  return enter(Service::ClipGetDefault) ? nullptr : session().defaultClip;
}

int DataFieldItemCount(t_ZoHostInfo *, int field) {
  if (enter(Service::DataFieldItemCount, field))
    return 0;
  const Parameters &parameters = session().parameters;
  if (const auto *set = parameters.datasets.find(field, 0); set != nullptr && !set->empty())
    return static_cast<int>(set->size());
  const std::vector<Clip *> *clips = parameters.inputs.find(field, 0);
  return clips == nullptr ? 0 : static_cast<int>(clips->size());
}

void InputsAdd(t_ZoHostInfo *, int field, int a, int b) {
  enter(Service::InputsAdd, field, a, b);
  if (std::vector<Clip *> *clips = slots(field))
    clips->push_back(nullptr);
}

void InputsRemoveSelected(t_ZoHostInfo *, int field) {
  enter(Service::InputsRemoveSelected, field);
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

void DatasetItemAdd(t_ZoHostInfo *, int field, const char *kind, const char *name,
                    const t_ZoDatasetDisplay *display) {
  enter(Service::DatasetItemAdd, field, kind, name, packed(display->Colour), display->Scale);
  if (auto *set = items(field))
    set->push_back({kind, name, *display});
}

void DatasetClear(t_ZoHostInfo *, int field, int count) {
  enter(Service::DatasetClear, field, count);
  if (auto *set = items(field))
    set->clear();
  if (auto *curves = session().parameters.numbers.items(field))
    curves->clear();
}

void DatasetRefresh(t_ZoHostInfo *, int field, int from, int count) {
  enter(Service::DatasetRefresh, field, from, count);
}

void DialogRefresh(t_ZoHostInfo *, int a, int b) { enter(Service::DialogRefresh, a, b); }

} // namespace zol::host::service
