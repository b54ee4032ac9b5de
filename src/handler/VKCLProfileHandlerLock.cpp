// The lock of finished profiles, kept in the status of the colour parameters:
//
//   9 -> unlock -> 12 -> lock -> 13          any other but 10, 12 -> unlock -> 10 -> lock -> 11
//
// Unlocking 13 gives 10, not 12: the pair 12, 13 is reached from 9 only. Deliberate.
#include "handler/VKCLProfileHandler.h"

namespace {

constexpr std::int32_t kLockedFirstKind = 9;
constexpr std::int32_t kUnlocked = 10;
constexpr std::int32_t kUnlockedFirstKind = 12;

bool IsUnlocked(const VKColorParam& param) {
  return param.status == kUnlocked || param.status == kUnlockedFirstKind;
}

// Locks and settings matter from linearisation on.
bool IsFarEnough(const VKCLProfileHandler& handler, int ignoreStatus) {
  VKCLProfileFinishedState state = FinishedNone;
  return handler.GetVKCLProfileFinishedState(state, ignoreStatus) != 0 &&
         state >= FinishedLinearisation;
}

}  // namespace

int VKCLProfileHandler::isVKCLUnLockedProfile() const {
  VKColorParam param;
  return GetVKColorParam(param) != 0 && IsUnlocked(param) ? 1 : 0;
}

int VKCLProfileHandler::UnLockVKCLProfile() {
  VKColorParam param;
  if (!IsFarEnough(*this, 1) || GetVKColorParam(param) == 0) return 0;
  if (IsUnlocked(param)) return 1;
  param.status = param.status == kLockedFirstKind ? kUnlockedFirstKind : kUnlocked;
  return WriteVKColorParamTag(param);
}

int VKCLProfileHandler::ModifyUnLockedColorSettings(VKColorParam& settings) {
  VKColorParam current;
  if (!IsFarEnough(*this, 1) || GetVKColorParam(current) == 0) return 0;
  if (!IsUnlocked(current)) return 0;
  settings.status = current.status;
  return WriteVKColorParamTag(settings);
}

int VKCLProfileHandler::LockUnLockedVKCLProfile() {
  VKColorParam param;
  // The status takes part here, unlike in the other two: deliberate.
  if (!IsFarEnough(*this, 0) || GetVKColorParam(param) == 0) return 0;
  if (!IsUnlocked(param)) return 0;
  ++param.status;
  return WriteVKColorParamTag(param);
}
