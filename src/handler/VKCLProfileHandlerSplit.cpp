// Reading the ink split: the handler's way and as it is stored.
#include <algorithm>

#include "handler/StoredSplit.h"
#include "handler/TagReading.h"
#include "handler/VKCLProfileHandler.h"
#include "platform/Guarded.h"

namespace {

// A payload may lack entries: as many as this may have their initial values.
constexpr std::int32_t kMostEntriesLacking = 1024;
// The handler's reader starts at the last four bytes of the writer's stale reference; the records
// stand behind it.
constexpr std::size_t kEntriesAsRead = 16;
constexpr std::size_t kEntriesAsStored = 20;

struct SplitHead {
  std::int32_t version;
  std::int32_t size;
  std::int32_t count;
};

bool ReadHead(const vkcl::TagPayload& payload, SplitHead& head) {
  if (!payload || payload.size() < kEntriesAsStored) return false;
  vkcl::PayloadReader reader = payload.Reader();
  head = {reader.Int32(), reader.Int32(), reader.Int32()};
  return true;
}

std::size_t EntryBytes(const SplitHead& head) {
  return static_cast<std::size_t>(head.count) * SplitParam::RecordSize(head.version);
}

// Default entries with the bytes from `offset` on laid over them, as far as both reach; null when
// there is no such version or memory is short.
SplitTypeBase* EntriesFrom(const vkcl::TagPayload& payload, const SplitHead& head,
                           std::size_t offset) {
  SplitTypeBase* entries = SplitParam::NewRecords(head.version, head.count);
  if (entries == nullptr) return nullptr;
  std::memcpy(static_cast<void*>(entries), payload.bytes() + offset,
              std::min(payload.size() - offset, EntryBytes(head)));
  return entries;
}

// Puts head and entries into the record in place of what it held.
void Replace(SplitParam& split, const SplitHead& head, SplitTypeBase* entries) {
  SplitParam::DeleteRecords(split.version, split.splits);
  split.version = head.version;
  split.size = head.size;
  split.count = head.count;
  split.splits = entries;
}

}  // namespace

int VKCLProfileHandler::GetSplitParam(SplitParam& split, int upgrade) const {
  return vkcl::Guarded([&] {
    const vkcl::TagPayload payload(profile_, QX50);
    SplitHead head = {};
    if (!ReadHead(payload, head)) return 0;
    const bool isWhole = payload.size() - kEntriesAsRead >= EntryBytes(head);
    const bool countable = head.count >= 0 && (head.count <= kMostEntriesLacking || isWhole);
    Replace(split, head, countable ? EntriesFrom(payload, head, kEntriesAsRead) : nullptr);
    if (split.splits == nullptr) return 0;
    if (upgrade == 0) return 1;
    split.ConvertToV4();
    return split.version == 4 ? 1 : 0;  // 0: memory is short
  });
}

bool vkcl::ReadStoredSplit(const VKCLProfile& profile, SplitParam& split) {
  return Guarded([&] {
    const TagPayload payload(profile, QX50);
    SplitHead head = {};
    if (!ReadHead(payload, head) || head.count < 0) return false;
    if (SplitParam::RecordSize(head.version) == 0) return false;
    if (payload.size() - kEntriesAsStored < EntryBytes(head)) return false;
    SplitTypeBase* entries = EntriesFrom(payload, head, kEntriesAsStored);
    if (entries == nullptr) return false;
    Replace(split, head, entries);
    return true;
  });
}
