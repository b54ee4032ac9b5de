#include "platform/profiler/ProfileSource.h"

#include <algorithm>
#include <cstring>

#include "platform/plinth/WholeFile.h"

namespace vkcl::profiler {

ProfileSource::ProfileSource(const std::string& path) {
  const std::int64_t length = OpenRegular(path, file_);
  if (length < 0 || length > std::int64_t{UINT32_MAX}) return;
  length_ = static_cast<std::uint64_t>(length);
  handler_.stream = this;
  handler_.ReportedSize = static_cast<cmsUInt32Number>(length_);
  handler_.Read = Read;
  handler_.Seek = Seek;
  handler_.Tell = Tell;
  handler_.Close = [](cmsIOHANDLER* /*handler*/) -> cmsBool { return TRUE; };
  handler_.Write = [](cmsIOHANDLER* /*handler*/, cmsUInt32Number /*size*/,
                      const void* /*buffer*/) -> cmsBool { return FALSE; };
}

OpenProfile ProfileSource::Open(const Context& context) {
  if (!context || handler_.stream == nullptr) return nullptr;
  position_ = 0;
  handler_.ContextID = context.get();
  return OpenProfile(Within(
      context.get(), [&] { return cmsOpenProfileFromIOhandlerTHR(context.get(), &handler_); }));
}

ProfileSource& ProfileSource::Of(cmsIOHANDLER* handler) {
  return *static_cast<ProfileSource*>(handler->stream);
}

cmsUInt32Number ProfileSource::Read(cmsIOHANDLER* handler, void* buffer, cmsUInt32Number size,
                                    cmsUInt32Number count) {
  return Of(handler).Take(buffer, std::uint64_t{size} * count) ? count : 0;
}

cmsBool ProfileSource::Seek(cmsIOHANDLER* handler, cmsUInt32Number offset) {
  ProfileSource& source = Of(handler);
  if (offset > source.length_) return FALSE;
  source.position_ = offset;
  return TRUE;
}

cmsUInt32Number ProfileSource::Tell(cmsIOHANDLER* handler) {
  return static_cast<cmsUInt32Number>(Of(handler).position_);
}

// Copies the next `size` bytes of the file, all of them or none.
bool ProfileSource::Take(void* buffer, std::uint64_t size) {
  if (size > length_ - position_) return false;
  const auto wanted = static_cast<std::size_t>(size);
  if (wanted > window_.size()) {
    if (!file_.seek(position_) || file_.read(buffer, wanted) != wanted) return false;
    position_ += size;
    return true;
  }
  if (position_ < windowStart_ || position_ + size > windowEnd_) {
    const auto held =
        static_cast<std::size_t>(std::min<std::uint64_t>(window_.size(), length_ - position_));
    windowEnd_ = windowStart_ = position_;
    if (!file_.seek(position_) || file_.read(window_.data(), held) != held) return false;
    windowEnd_ += held;
  }
  std::memcpy(buffer, window_.data() + (position_ - windowStart_), wanted);
  position_ += size;
  return true;
}

}  // namespace vkcl::profiler
