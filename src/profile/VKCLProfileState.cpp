// Whose profile this is, and how far its making has come.
#include <algorithm>
#include <cstddef>

#include "privatetags/ParameterRecords.h"
#include "profile/TableLayout.h"
#include "profile/VKCLProfile.h"

namespace {

// The tags that decide the states above linearisation, highest first: the first one present wins.
struct DecidingTag {
  std::uint32_t sig;
  VKCLProfileFinishedState state;
};
constexpr DecidingTag kDecidingTags[] = {
    {icSigBToA0Tag, FinishedProfile}, {icSigBToA1Tag, FinishedProfile},
    {icSigBToA2Tag, FinishedProfile}, {QX59, FinishedCharacterisation},
    {QX56, FinishedGrayBalance},      {QX52, FinishedMultiInkLimit},
};

constexpr std::int32_t kStatusHeldBack = 9;
constexpr std::uint32_t kBareInkLimit = 140;  // a longer 'QX51' payload carries more than limits

}  // namespace

int VKCLProfile::isVKCLProfile() const {
  if (valid == 0 || tagTable == nullptr || tagCount == 0) return 0;
  if (!HasTag(QX51) || !HasTag(QX53)) return 0;
  const bool newer = std::any_of(tagTable, tagTable + tagCount, [&](const icTag& tag) {
    return isVKCLPrivateTag(tag.sig) != 0 &&
           static_cast<std::int32_t>(tag.sig) > static_cast<std::int32_t>(QX76);
  });
  return newer ? 0 : 1;
}

int VKCLProfile::GetVKCLProfileFinishedState(VKCLProfileFinishedState& state,
                                             int ignoreStatus) const {
  state = FinishedNone;
  if (isVKCLProfile() == 0) return 0;

  bool heldBack = false;
  if (ignoreStatus == 0) {
    VKColorParam param;
    unsigned long length = 0;
    if (ReadVKPrivateTag(QX53, &param, sizeof param, &length) == 0) return 0;
    // A payload that ends before or within the status has none.
    constexpr unsigned long kStatusEnd = offsetof(VKColorParam, status) + sizeof param.status;
    heldBack = length >= kStatusEnd && param.status == kStatusHeldBack;
  }
  if (!heldBack) {
    for (const DecidingTag& tag : kDecidingTags) {
      if (!HasTag(tag.sig)) continue;
      state = tag.state;
      return 1;
    }
  }
  // The difference is unsigned: an entry below 12 bytes counts as a long one.
  const bool longInkLimit = FindTag(QX51)->size - vkcl::kDataHead > kBareInkLimit;
  if (longInkLimit || HasTag(QX54)) {
    state = FinishedLinearisation;
  } else {
    state = HasTag(QX50) ? FinishedInkSplit : FinishedInkLimit;
  }
  return 1;
}
