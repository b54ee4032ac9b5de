#include "inspect/TagView.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <type_traits>

#include "platform/plinth/HexText.h"
#include "platform/plinth/NumberText.h"
#include "platform/plinth/Utf8.h"

namespace vkcl {
namespace {

// 0 where the bytes could not be read.
template <class Number>
Number Load(std::string_view bytes) {
  Number number{};
  if (bytes.size() == sizeof number) std::memcpy(&number, bytes.data(), sizeof number);
  return number;
}

// The bits tell NaNs apart, and the usual ones need not be told.
template <class Real>
std::string RealText(Real number) {
  if (!std::isnan(number)) return ShortestText(number);
  using Bits = std::conditional_t<sizeof(Real) == 4, std::uint32_t, std::uint64_t>;
  const auto bits = std::bit_cast<Bits>(number);
  if (bits == std::bit_cast<Bits>(std::numeric_limits<Real>::quiet_NaN())) return "nan";
  char big[sizeof bits];
  for (std::size_t i = 0; i < sizeof bits; ++i) {
    big[i] = static_cast<char>(bits >> (8 * (sizeof bits - 1 - i)));
  }
  return "nan:" + HexText(big, sizeof big);
}

bool IsZero(std::string_view bytes) {
  return bytes.find_first_not_of('\0') == std::string_view::npos;
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = Utf8Length(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

// Length of a record all of whose amounts are constant.
std::uint64_t FixedLength(std::span<const FieldSchema> fields) {
  std::uint64_t length = 0;
  for (const FieldSchema& field : fields) {
    length += std::uint64_t{field.amount.number} * field.columns.number * SizeOf(field.type);
  }
  return length;
}

}  // namespace

std::string_view ByteSource::At(std::uint64_t offset, std::size_t length) {
  if (!good_ || offset >= size_) return {};
  length = static_cast<std::size_t>(std::min<std::uint64_t>({length, kWindow, size_ - offset}));
  if (file_ == nullptr) return memory_.substr(static_cast<std::size_t>(offset), length);
  if (offset < windowAt_ || offset + length > windowAt_ + window_.size()) {
    window_.resize(static_cast<std::size_t>(
        std::min<std::uint64_t>(std::max(length, ahead_), size_ - offset)));
    windowAt_ = offset;
    if (!file_->seek(start_ + offset) ||
        file_->read(window_.data(), window_.size()) != window_.size()) {
      good_ = false;
      window_.clear();
      return {};
    }
  }
  return {window_.data() + (offset - windowAt_), length};
}

// Lays fields out, one behind the other.
class RecordView::Layout {
 public:
  Layout(ByteSource& source, std::uint64_t from, std::uint64_t end)
      : source_(source), at_(from), end_(end) {}

  // False, with the reason, when the bytes do not have the form.
  bool Place(std::span<const FieldSchema> fields, const TagSchema* schema, RecordView& record) {
    schema_ = schema;
    record_ = &record;
    record.fields_.reserve(fields.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
      FieldView view;
      view.schema_ = &fields[i];
      view.source_ = &source_;
      view.offset_ = at_;
      if (!Measure(view, fields.subspan(i + 1))) return false;
      if (view.length_ > end_ - at_) return TooShort(view);
      at_ += view.length_;
      record.fields_.push_back(std::move(view));
    }
    if (at_ == end_) return true;
    why_ = "its fields end at byte " + std::to_string(at_) + ", and it has " +
           std::to_string(end_) + " bytes";
    return false;
  }
  std::string why() const { return why_; }

 private:
  bool TooShort(const FieldView& view) {
    why_ = std::string("\"") + view.schema_->name + "\" takes " + std::to_string(view.length_) +
           " bytes, and " + std::to_string(end_ - at_) + " are left";
    return false;
  }

  bool Measure(FieldView& view, std::span<const FieldSchema> behind) {
    const FieldSchema& field = *view.schema_;
    if (field.shape == FieldShape::Blocks) return MeasureBlocks(view);
    // Of values that are not there the counts may be any numbers.
    if (field.presence != nullptr && record_->Find(field.presence)->Integer() == 0) {
      view.count_ = view.columns_ = 0;
      return true;
    }
    if (!Resolve(field.amount, behind, view.count_)) return false;
    if (!Resolve(field.columns, {}, view.columns_)) return false;
    std::uint64_t each = SizeOf(field.type);
    if (field.type == FieldType::Record) {
      if (!ChooseForm(view)) return false;
      each = view.recordLength_;
    }
    if (view.columns_ == 0) view.count_ = 0;
    // The counts are of 31 bits, so no product leaves 64.
    const std::uint64_t row = view.columns_ * each;
    view.length_ = row != 0 && view.count_ > UINT64_MAX / row ? UINT64_MAX : view.count_ * row;
    return true;
  }

  bool ChooseForm(FieldView& view) {
    const std::int64_t version = record_->Find("version")->Integer();
    for (const RecordForm& form : schema_->forms) {
      if (form.version != version) continue;
      view.recordFields_ = form.fields;
      view.recordLength_ = FixedLength(form.fields);
      return true;
    }
    why_ = "version " + std::to_string(version) + " is not known";
    return false;
  }

  bool MeasureBlocks(FieldView& view) {
    const FieldView& lengths = *record_->Find(view.schema_->amount.field);
    view.count_ = lengths.count();
    view.lengthsAt_ = lengths.offset();
    for (std::uint64_t i = 0; i < view.count_; ++i) {
      const std::int64_t length = lengths.Integer(i);
      if (length < 0) return Negative(lengths.schema().name, length);
      view.length_ += static_cast<std::uint64_t>(length);
    }
    return true;
  }

  bool Negative(const char* name, std::int64_t number) {
    why_ = std::string("\"") + name + "\" is " + std::to_string(number);
    return false;
  }

  bool Resolve(const Amount& amount, std::span<const FieldSchema> behind, std::uint64_t& number) {
    switch (amount.kind) {
      case Amount::Kind::Constant: number = amount.number; return true;
      case Amount::Kind::Rest: return ResolveRest(behind, number);
      case Amount::Kind::Field: break;
    }
    const std::int64_t said = record_->Find(amount.field)->Integer();
    if (said < 0) return Negative(amount.field, said);
    number = static_cast<std::uint64_t>(said);
    return true;
  }

  bool ResolveRest(std::span<const FieldSchema> behind, std::uint64_t& number) {
    std::uint64_t tail = 0;
    for (const FieldSchema& field : behind) {
      std::uint64_t count = 0;
      if (!Resolve(field.amount, {}, count)) return false;
      tail += count * SizeOf(field.type);
    }
    if (tail > end_ - at_) {
      why_ = std::string("\"") + behind.front().name + "\" takes " + std::to_string(tail) +
             " bytes, and " + std::to_string(end_ - at_) + " are left";
      return false;
    }
    number = end_ - at_ - tail;
    return true;
  }

  ByteSource& source_;
  std::uint64_t at_;
  std::uint64_t end_;
  const TagSchema* schema_ = nullptr;
  RecordView* record_ = nullptr;
  std::string why_;
};

std::optional<RecordView> RecordView::Of(const TagSchema& schema, ByteSource& payload,
                                         std::string& why) {
  RecordView record;
  Layout layout(payload, 0, payload.size());
  if (!layout.Place(schema.fields, &schema, record)) {
    why = layout.why();
    return std::nullopt;
  }
  // A size that decides how long another field is must be right.
  const FieldView* size = record.Find("size");
  const bool decides =
      std::any_of(schema.fields.begin(), schema.fields.end(), [](const auto& field) {
        return field.type == FieldType::Text && field.amount.kind == Amount::Kind::Rest;
      });
  if (size != nullptr && decides && size->Integer() != static_cast<std::int64_t>(payload.size())) {
    why = "\"size\" is " + size->NumberText() + ", and it has " + std::to_string(payload.size()) +
          " bytes";
    return std::nullopt;
  }
  return record;
}

const FieldView* RecordView::Find(std::string_view name) const {
  const auto found = std::find_if(fields_.begin(), fields_.end(), [&](const FieldView& field) {
    return field.schema().name == name;
  });
  return found == fields_.end() ? nullptr : &*found;
}

std::int64_t FieldView::Integer(std::uint64_t index) const {
  const std::string_view bytes = source_->At(offset_ + 4 * index, 4);
  switch (schema_->type) {
    case FieldType::Int32: return Load<std::int32_t>(bytes);
    case FieldType::UInt32:
    case FieldType::Signature: return Load<std::uint32_t>(bytes);
    default: return 0;
  }
}

double FieldView::Number(std::uint64_t index) const {
  switch (schema_->type) {
    case FieldType::Float32: return Load<float>(source_->At(offset_ + 4 * index, 4));
    case FieldType::Float64: return Load<double>(source_->At(offset_ + 8 * index, 8));
    default: return static_cast<double>(Integer(index));
  }
}

std::string FieldView::NumberText(std::uint64_t index) const {
  switch (schema_->type) {
    case FieldType::Float32: return RealText(Load<float>(source_->At(offset_ + 4 * index, 4)));
    case FieldType::Float64: return RealText(Load<double>(source_->At(offset_ + 8 * index, 8)));
    default: return std::to_string(Integer(index));
  }
}

std::optional<std::string> FieldView::Text() const {
  if (length_ > ByteSource::kWindow) return std::nullopt;
  const std::string_view bytes = source_->At(offset_, static_cast<std::size_t>(length_));
  const std::string_view text = bytes.substr(0, bytes.find('\0'));
  const std::string_view rest = bytes.substr(text.size());
  const bool fixed = schema_->amount.kind == Amount::Kind::Constant;
  const bool plain = fixed ? IsZero(rest) : rest == std::string_view("\0", schema_->terminated);
  if (!plain || bytes.size() != length_ || !IsUtf8(text)) return std::nullopt;
  return std::string(text);
}

std::string FieldView::TextBytes() const {
  const std::string_view bytes = Bytes(0, ByteSource::kWindow);
  return std::string(bytes.substr(0, bytes.find('\0')));
}

std::string_view FieldView::Bytes(std::uint64_t from, std::size_t length) const {
  if (from >= length_) return {};
  return source_->At(offset_ + from,
                     static_cast<std::size_t>(std::min<std::uint64_t>(length, length_ - from)));
}

std::uint64_t FieldView::UsedCount() const {
  if (schema_->amount.kind != Amount::Kind::Constant || count_ == 0) return count_;
  // From the front: that is how a source reads ahead.
  std::uint64_t end = 0;
  for (std::uint64_t from = 0; from < length_; from += ByteSource::kWindow) {
    const std::size_t last = Bytes(from, ByteSource::kWindow).find_last_not_of('\0');
    if (last != std::string_view::npos) end = from + last + 1;
  }
  const std::uint64_t each = length_ / count_;
  return each == 0 ? 0 : (end + each - 1) / each;
}

RecordView FieldView::Record(std::uint64_t index) const {
  RecordView record;
  const std::uint64_t from = offset_ + index * recordLength_;
  RecordView::Layout layout(*source_, from, from + recordLength_);
  layout.Place(recordFields_, nullptr, record);
  return record;
}

FieldView::Extent FieldView::Block(std::uint64_t index, const Extent& before) const {
  if (index < firstLength_ || index >= firstLength_ + lengths_.size()) {
    const std::string_view bytes = source_->At(lengthsAt_ + 4 * index, ByteSource::kWindow);
    lengths_.resize(std::max<std::size_t>(bytes.size() / 4, 1));
    if (!bytes.empty()) std::memcpy(lengths_.data(), bytes.data(), bytes.size() / 4 * 4);
    firstLength_ = index;
  }
  const std::int32_t length = lengths_[static_cast<std::size_t>(index - firstLength_)];
  return {index == 0 ? 0 : before.from + before.length,
          static_cast<std::uint64_t>(std::max(length, 0))};
}

}  // namespace vkcl
