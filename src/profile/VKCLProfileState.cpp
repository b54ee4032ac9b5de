// Whose profile this is, and how far its making has come.
#include <cstddef>
#include <cstdint>

#include "platform/Guarded.h"
#include "platform/plinth/AFile.h"
#include "privatetags/ParameterRecords.h"
#include "profile/ProfileIdentity.h"
#include "profile/TableLayout.h"
#include "profile/VKCLProfile.h"

namespace {

// What a table entry can tell about its profile, as bits: several entries together.
enum Evidence : unsigned {
  kInkLimit = 1 << 0,
  kSettings = 1 << 1,
  kSplit = 1 << 2,
  kLinearisation = 1 << 3,
  kMultiInkLimit = 1 << 4,
  kGrayBalance = 1 << 5,
  kCharacterisation = 1 << 6,
  kFinalTable = 1 << 7,
  kNewerTag = 1 << 8,  // a private tag that only a newer system would have written
};

// The evidence that decides the states above linearisation, highest first.
struct DecidingEvidence {
  Evidence evidence;
  VKCLProfileFinishedState state;
};
constexpr DecidingEvidence kDeciding[] = {
    {kFinalTable, FinishedProfile},
    {kCharacterisation, FinishedCharacterisation},
    {kGrayBalance, FinishedGrayBalance},
    {kMultiInkLimit, FinishedMultiInkLimit},
};

bool IsFinalTable(std::uint32_t sig) {
  return sig == icSigBToA0Tag || sig == icSigBToA1Tag || sig == icSigBToA2Tag;
}

unsigned EvidenceOf(std::uint32_t sig) {
  if (!vkcl::IsPrivateSignature(sig)) return IsFinalTable(sig) ? unsigned{kFinalTable} : 0;
  switch (sig) {
    case QX50: return kSplit;
    case QX51: return kInkLimit;
    case QX52: return kMultiInkLimit;
    case QX53: return kSettings;
    case QX54: return kLinearisation;
    case QX56: return kGrayBalance;
    case QX59: return kCharacterisation;
    default: break;
  }
  const bool newer = static_cast<std::int32_t>(sig) > static_cast<std::int32_t>(QX76);
  return newer ? unsigned{kNewerTag} : 0;
}

// One pass over the table, which may be long; none for an invalid profile.
unsigned EvidenceIn(const VKCLProfile& profile) {
  unsigned evidence = 0;
  if (profile.valid == 0 || profile.tagTable == nullptr) return evidence;
  for (std::uint32_t i = 0; i < profile.tagCount; ++i) {
    evidence |= EvidenceOf(profile.tagTable[i].sig);
  }
  return evidence;
}

bool IsOwn(unsigned evidence) {
  return (evidence & (kInkLimit | kSettings | kNewerTag)) == (kInkLimit | kSettings);
}

constexpr std::int32_t kStatusHeldBack = 9;
constexpr std::uint32_t kBareInkLimit = 140;  // a longer 'QX51' payload carries more than limits
// Where the status ends in the colour parameters.
constexpr unsigned long kStatusEnd = offsetof(VKColorParam, status) + sizeof(VKColorParam::status);

// A payload that ends before or within the status has none.
bool HoldsBack(const VKColorParam& param, unsigned long length) {
  return length >= kStatusEnd && param.status == kStatusHeldBack;
}

// The state of one of the system's own profiles, whose 'QX51' has that entry.
VKCLProfileFinishedState StateOf(unsigned evidence, const icTag& inkLimit, bool heldBack) {
  if (!heldBack) {
    for (const DecidingEvidence& deciding : kDeciding) {
      if ((evidence & deciding.evidence) != 0) return deciding.state;
    }
  }
  // The difference is unsigned: an entry below 12 bytes counts as a long one.
  const bool longInkLimit = inkLimit.size - vkcl::kDataHead > kBareInkLimit;
  if (longInkLimit || (evidence & kLinearisation) != 0) return FinishedLinearisation;
  return (evidence & kSplit) != 0 ? FinishedInkSplit : FinishedInkLimit;
}

}  // namespace

int VKCLProfile::isVKCLProfile() const { return IsOwn(EvidenceIn(*this)) ? 1 : 0; }

int VKCLProfile::GetVKCLProfileFinishedState(VKCLProfileFinishedState& state,
                                             int ignoreStatus) const {
  state = FinishedNone;
  const unsigned evidence = EvidenceIn(*this);
  if (!IsOwn(evidence)) return 0;

  bool heldBack = false;
  if (ignoreStatus == 0) {
    VKColorParam param;
    unsigned long length = 0;
    if (ReadVKPrivateTag(QX53, &param, sizeof param, &length) == 0) return 0;
    heldBack = HoldsBack(param, length);
  }
  state = StateOf(evidence, *FindTag(QX51), heldBack);
  return 1;
}

bool vkcl::IdentifyProfile(const AFilePath& path, int channelCount,
                           ProfileIdentity& identity) noexcept {
  return Guarded([&] {
    AFile file;
    if (!file.open(path, AFile::Read)) return false;
    VKCLProfile profile(channelCount);
    profile.Load(file);
    if (profile.valid == 0) return false;

    const unsigned evidence = EvidenceIn(profile);
    identity = {.deviceClass = profile.GetDeviceClass(),
                .colorSpace = profile.GetColorSpace(),
                .pcs = profile.GetPCS(),
                .channelCount = profile.channelCount,
                .tagCount = profile.tagCount,
                .isOutput = profile.isValidOutputICC() != 0,
                .isOwn = IsOwn(evidence)};
    if (!identity.isOwn) return true;
    const icTag& inkLimit = *profile.FindTag(QX51);
    identity.byTags = StateOf(evidence, inkLimit, false);
    VKColorParam param;
    unsigned long length = kStatusEnd;
    if (profile.ReadContentStart(file, QX53, &param, length)) {
      identity.byStatus = StateOf(evidence, inkLimit, HoldsBack(param, length));
    }
    return true;
  });
}
