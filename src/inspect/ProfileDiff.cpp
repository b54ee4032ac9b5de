#include "inspect/ProfileDiff.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <vector>

#include "inspect/RecordDiff.h"
#include "inspect/StoredTags.h"
#include "platform/Bytes.h"
#include "platform/Guarded.h"
#include "platform/plinth/HexText.h"
#include "profile/SignatureText.h"
#include "profile/TableInFile.h"

namespace vkcl {
namespace {

enum class HeaderKind { Number, Signature, Date, Bytes };

// ICC.1:2001-04, 6.1.
struct HeaderField {
  const char* name;
  std::size_t offset;
  std::size_t length;
  HeaderKind kind;
};

constexpr HeaderField kHeader[] = {
    {"size", 0, 4, HeaderKind::Number},
    {"cmm", 4, 4, HeaderKind::Signature},
    {"version", 8, 4, HeaderKind::Bytes},
    {"class", 12, 4, HeaderKind::Signature},
    {"colorSpace", 16, 4, HeaderKind::Signature},
    {"pcs", 20, 4, HeaderKind::Signature},
    {"created", 24, 12, HeaderKind::Date},
    {"platform", 40, 4, HeaderKind::Signature},
    {"flags", 44, 4, HeaderKind::Bytes},
    {"manufacturer", 48, 4, HeaderKind::Signature},
    {"model", 52, 4, HeaderKind::Bytes},
    {"attributes", 56, 8, HeaderKind::Bytes},
    {"renderingIntent", 64, 4, HeaderKind::Number},
    {"illuminant", 68, 12, HeaderKind::Bytes},
    {"creator", 80, 4, HeaderKind::Signature},
    {"reserved", 84, 44, HeaderKind::Bytes},
};
constexpr std::size_t kHeaderLength = 128;

std::string Padded(unsigned number, std::size_t digits) {
  std::string text = std::to_string(number);
  return text.size() < digits ? std::string(digits - text.size(), '0') + text : text;
}

std::string DateText(const char* bytes) {
  constexpr std::string_view kBetween = "-- ::";
  std::string text;
  for (std::size_t i = 0; i < 6; ++i) {
    text += Padded(LoadBig16(bytes + 2 * i), i == 0 ? 4 : 2);
    if (i < kBetween.size()) text += kBetween[i];
  }
  return text;
}

std::string HeaderText(const HeaderField& field, const char* header) {
  const char* bytes = header + field.offset;
  switch (field.kind) {
    case HeaderKind::Number: return std::to_string(LoadBig32(bytes));
    case HeaderKind::Signature:
      if (!IsPrintableSignature(LoadBig32(bytes))) return "0x" + HexText(bytes, field.length);
      return "'" + SignatureText(LoadBig32(bytes)) + "'";
    case HeaderKind::Date: return DateText(bytes);
    case HeaderKind::Bytes: break;
  }
  return HexText(bytes, field.length);
}

struct Entry {
  std::string name;  // unique: later entries of a signature have a number
  const icTag* tag;
};

// One of the two profiles.
class Side {
 public:
  explicit Side(const VKCLProfile& profile) : table_(TableInFile(profile).tags) {
    if (profile.isValidICC() == 0 || !file_.open(profile.filePath, AFile::Read)) return;
    good_ = file_.read(header_.data(), header_.size()) == header_.size();
    bool isRead = false;
    const std::vector<StoredTag> tags = StoredTagsOf(profile, file_, &isRead);
    good_ = good_ && isRead;
    for (const StoredTag& tag : tags) {
      const std::string name = StoredTagName(tag.signature, tag.occurrence);
      private_.emplace(name, tag);
    }
    std::map<std::uint32_t, std::uint32_t> seen;
    for (const icTag& tag : table_) {
      const std::uint32_t occurrence = ++seen[tag.sig];
      entries_.push_back({StoredTagName(tag.sig, occurrence), &tag});
    }
    const std::int64_t length = file_.length();
    good_ = good_ && length >= 0;
    length_ = static_cast<std::uint64_t>(std::max<std::int64_t>(length, 0));
    for (std::size_t i = 0; i < entries_.size(); ++i) byName_.emplace(entries_[i].name, i);
  }
  Side(const Side&) = delete;
  Side& operator=(const Side&) = delete;

  bool good() const { return good_; }
  void Fail() { good_ = false; }
  const char* header() const { return header_.data(); }
  const std::vector<Entry>& entries() const { return entries_; }
  // Null when there is none.
  const Entry* Find(const std::string& name) const {
    const auto found = byName_.find(name);
    return found == byName_.end() ? nullptr : &entries_[found->second];
  }
  // Null for a tag that is not private.
  const StoredTag* FindPrivate(const std::string& name) const {
    const auto found = private_.find(name);
    return found == private_.end() ? nullptr : &found->second;
  }
  // The bytes of a tag that are in the file.
  ByteSource Element(const icTag& tag) {
    const std::uint64_t held =
        tag.offset >= length_ ? 0 : std::min<std::uint64_t>(tag.size, length_ - tag.offset);
    return {file_, tag.offset, held};
  }
  ByteSource Payload(const StoredTag& tag) {
    return {file_, tag.payloadOffset(), tag.payloadSize()};
  }

 private:
  std::vector<icTag> table_;
  AFile file_;
  bool good_ = false;
  std::uint64_t length_ = 0;
  std::array<char, kHeaderLength> header_ = {};
  std::vector<Entry> entries_;
  std::map<std::string, std::size_t> byName_;
  std::map<std::string, StoredTag> private_;
};

std::string Title(const Entry& entry) {
  const TagSchema* schema = FindTagSchema(entry.tag->sig);
  const std::string bytes = std::to_string(entry.tag->size) + " bytes";
  return schema == nullptr ? bytes : std::string(schema->title) + ", " + bytes;
}

class Comparison {
 public:
  Comparison(Side& before, Side& after, const DifferenceSink& sink)
      : before_(before), after_(after), sink_(sink) {}

  void Run() {
    if (CompareHeaders() && CompareTags()) CompareOrder();
  }

 private:
  bool CompareHeaders() {
    return std::all_of(std::begin(kHeader), std::end(kHeader), [&](const HeaderField& field) {
      const char* mine = before_.header() + field.offset;
      const char* other = after_.header() + field.offset;
      return std::equal(mine, mine + field.length, other) ||
             Tell(sink_, std::string("header.") + field.name, HeaderText(field, before_.header()),
                  HeaderText(field, after_.header()));
    });
  }

  bool CompareTags() {
    const auto compare = [&](const Entry& entry) {
      const Entry* other = after_.Find(entry.name);
      return other != nullptr ? CompareTag(entry, *other)
                              : Tell(sink_, entry.name, Title(entry), "");
    };
    const auto tellAdded = [&](const Entry& entry) {
      return before_.Find(entry.name) != nullptr || Tell(sink_, entry.name, "", Title(entry));
    };
    return std::all_of(before_.entries().begin(), before_.entries().end(), compare) &&
           std::all_of(after_.entries().begin(), after_.entries().end(), tellAdded);
  }

  bool CompareTag(const Entry& mine, const Entry& other) {
    const StoredTag* myTag = before_.FindPrivate(mine.name);
    const StoredTag* otherTag = after_.FindPrivate(mine.name);
    const TagSchema* schema = FindTagSchema(mine.tag->sig);
    if (myTag != nullptr && otherTag != nullptr && schema != nullptr && myTag->isData &&
        otherTag->isData) {
      ByteSource before = before_.Payload(*myTag);
      ByteSource after = after_.Payload(*otherTag);
      std::string why;
      const auto myRecord = RecordView::Of(*schema, before, why);
      const auto otherRecord = RecordView::Of(*schema, after, why);
      if (myRecord && otherRecord) {
        const bool goesOn = CompareRecords(mine.name, *myRecord, *otherRecord, sink_);
        return Check(before, after) && goesOn;
      }
    }
    ByteSource before = before_.Element(*mine.tag);
    ByteSource after = after_.Element(*other.tag);
    const bool goesOn =
        CompareBytes(mine.name, before, after, sink_) && CompareCut(mine, before, other, after);
    return Check(before, after) && goesOn;
  }

  // Of tags that are not wholly in their files as much may be held, and another size be told.
  bool CompareCut(const Entry& mine, const ByteSource& before, const Entry& other,
                  const ByteSource& after) {
    if (before.size() != after.size() || mine.tag->size == other.tag->size) return true;
    return Tell(sink_, mine.name + " (size in the table)",
                std::to_string(mine.tag->size) + " bytes",
                std::to_string(other.tag->size) + " bytes");
  }

  bool Check(const ByteSource& before, const ByteSource& after) {
    if (!before.good()) before_.Fail();
    if (!after.good()) after_.Fail();
    return before.good() && after.good();
  }

  // The order of the tags that both have.
  void CompareOrder() {
    const std::string mine = Order(before_, after_);
    const std::string other = Order(after_, before_);
    if (mine != other) Tell(sink_, "order of the tags", mine, other);
  }

  static std::string Order(const Side& side, const Side& other) {
    std::string names;
    for (const Entry& entry : side.entries()) {
      if (other.Find(entry.name) != nullptr) names += (names.empty() ? "" : " ") + entry.name;
    }
    return names;
  }

  Side& before_;
  Side& after_;
  const DifferenceSink& sink_;
};

}  // namespace

bool CompareProfiles(const VKCLProfile& before, const VKCLProfile& after,
                     const DifferenceSink& sink, std::string& why) noexcept {
  return Guarded([&] {
    why = "memory is short";
    Side mine(before);
    Side other(after);
    if (mine.good() && other.good()) Comparison(mine, other, sink).Run();
    why = mine.good() ? (other.good() ? "" : "the second profile cannot be read")
                      : "the first profile cannot be read";
    return mine.good() && other.good();
  });
}

}  // namespace vkcl
