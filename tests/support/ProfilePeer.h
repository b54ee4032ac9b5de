// A door to the private operations of VKCLProfile.
#pragma once

#include "profile/VKCLProfile.h"

namespace vkcl {

struct ProfilePeer {
  static int GetTagIndex(const VKCLProfile& profile, std::uint32_t sig, unsigned long& index) {
    return profile.GetTagIndex({static_cast<icTagSignature>(sig), 0, 0}, index);
  }
  static unsigned long GetPadSize(unsigned long n) { return VKCLProfile::GetPadSize(n); }
  static void ReverseICCHeader(icHeader& header) { VKCLProfile::ReverseICCHeader(&header); }
  static int isVKCLPrivateTag(const VKCLProfile& profile, std::uint32_t sig) {
    return profile.isVKCLPrivateTag(static_cast<icTagSignature>(sig));
  }
  static int ReadDataType(const VKCLProfile& profile, icTag tag, void* out) {
    return profile.ReadDataType(tag, static_cast<icDataType*>(out));
  }
  static int ReadDataTypeContent(const VKCLProfile& profile, icTag tag, char* out) {
    return profile.ReadDataTypeContent(tag, out);
  }
  static int ReadTextType(const VKCLProfile& profile, icTag tag, void* out) {
    return profile.ReadTextType(tag, static_cast<icTextType*>(out));
  }
  static int ReadTextTypeContent(const VKCLProfile& profile, icTag tag, char* out) {
    return profile.ReadTextTypeContent(tag, out);
  }
  static void WriteTagTable(void** cursor, const icTag* tags, unsigned long count) {
    VKCLProfile::WriteTagTable(cursor, tags, count);
  }
};

}  // namespace vkcl
