#include "inspect/RecordDiff.h"

#include <algorithm>
#include <utility>

#include "inspect/PrintableText.h"
#include "platform/plinth/HexText.h"

namespace vkcl {
namespace {

std::string Indexed(const std::string& place, std::uint64_t index) {
  return place + "[" + std::to_string(index) + "]";
}

std::string BytesText(std::uint64_t length) { return std::to_string(length) + " bytes"; }

// A byte in words, with its place.
std::string ByteText(std::uint64_t length, std::uint64_t at, const std::string_view byte) {
  if (byte.empty()) return BytesText(length);
  return BytesText(length) + ", byte " + std::to_string(at) + " is " + HexText(byte.data(), 1);
}

// Two stretches of bytes, fetched piece by piece. The piece of one is kept: fetching from the other
// may move the window that both share.
template <class Fetch, class OtherFetch>
bool CompareStretches(const std::string& place, std::uint64_t length, const Fetch& fetch,
                      std::uint64_t otherLength, const OtherFetch& otherFetch,
                      const DifferenceSink& sink) {
  const std::uint64_t common = std::min(length, otherLength);
  for (std::uint64_t from = 0; from < common; from += ByteSource::kWindow) {
    const auto count =
        static_cast<std::size_t>(std::min<std::uint64_t>(ByteSource::kWindow, common - from));
    const std::string mine(fetch(from, count));
    const std::string_view other = otherFetch(from, count);
    const auto [left, right] = std::mismatch(mine.begin(), mine.end(), other.begin(), other.end());
    if (left == mine.end()) continue;
    const auto at = static_cast<std::size_t>(left - mine.begin());
    return Tell(sink, place, ByteText(length, from + at, std::string_view(mine).substr(at, 1)),
                ByteText(otherLength, from + at,
                         other.substr(static_cast<std::size_t>(right - other.begin()), 1)));
  }
  if (length == otherLength) return true;
  return Tell(sink, place, BytesText(length), BytesText(otherLength));
}

bool CompareFields(const std::string& place, const FieldView& before, const FieldView& after,
                   const DifferenceSink& sink);

bool CompareBytesOf(const std::string& place, const FieldView& before, FieldView::Extent mine,
                    const FieldView& after, FieldView::Extent other, const DifferenceSink& sink) {
  return CompareStretches(
      place, mine.length,
      [&](std::uint64_t from, std::size_t count) { return before.Bytes(mine.from + from, count); },
      other.length,
      [&](std::uint64_t from, std::size_t count) { return after.Bytes(other.from + from, count); },
      sink);
}

std::string ValueText(const FieldView& field, std::uint64_t index) {
  const std::string unit = field.schema().unit;
  return field.NumberText(index) + (unit == "%" || unit == "dpi" ? " " + unit : "");
}

// The same bits: what reads as the same number may be another one.
bool SameValue(const FieldView& before, const FieldView& after, std::uint64_t index) {
  const std::size_t size = SizeOf(before.schema().type);
  const std::string mine(before.Bytes(index * size, size));
  return mine == after.Bytes(index * size, size);
}

bool CompareTexts(const std::string& place, const FieldView& before, const FieldView& after,
                  const DifferenceSink& sink) {
  const std::string mine = before.TextBytes();
  const std::string other = after.TextBytes();
  if (mine != other) {
    return Tell(sink, place, "\"" + PrintableText(mine) + "\"", "\"" + PrintableText(other) + "\"");
  }
  return CompareBytesOf(place + " (behind the text)", before, {0, before.length()}, after,
                        {0, after.length()}, sink);
}

std::string CountText(const FieldView& field) {
  const char* what = field.schema().type == FieldType::Record     ? " records"
                     : field.schema().shape == FieldShape::Rows   ? " rows"
                     : field.schema().shape == FieldShape::Blocks ? " blocks"
                                                                  : " values";
  std::string text = std::to_string(field.count()) + what;
  if (field.schema().shape == FieldShape::Rows) text += " of " + std::to_string(field.columns());
  return text;
}

bool CompareNumbers(const std::string& place, const FieldView& before, const FieldView& after,
                    const DifferenceSink& sink) {
  const bool rows = before.schema().shape == FieldShape::Rows;
  if (before.columns() != after.columns() && before.count() > 0 && after.count() > 0) {
    return Tell(sink, place, CountText(before), CountText(after));
  }
  if (before.count() != after.count() && !Tell(sink, place, CountText(before), CountText(after))) {
    return false;
  }
  const std::uint64_t columns = before.columns();
  const std::uint64_t common = std::min(before.count(), after.count()) * columns;
  for (std::uint64_t i = 0; i < common; ++i) {
    if (SameValue(before, after, i)) continue;
    const std::string at = rows ? Indexed(Indexed(place, i / columns), i % columns)
                           : before.schema().shape == FieldShape::List ? Indexed(place, i)
                                                                       : place;
    if (!Tell(sink, at, ValueText(before, i), ValueText(after, i))) return false;
  }
  return true;
}

bool CompareLists(const std::string& place, const FieldView& before, const FieldView& after,
                  const DifferenceSink& sink) {
  if (before.count() != after.count() && !Tell(sink, place, CountText(before), CountText(after))) {
    return false;
  }
  const std::uint64_t common = std::min(before.count(), after.count());
  if (before.schema().type == FieldType::Record) {
    for (std::uint64_t i = 0; i < common; ++i) {
      const RecordView mine = before.Record(i);
      const RecordView other = after.Record(i);
      if (!CompareRecords(Indexed(place, i), mine, other, sink)) return false;
    }
    return true;
  }
  FieldView::Extent mine = {};
  FieldView::Extent other = {};
  for (std::uint64_t i = 0; i < common; ++i) {
    mine = before.Block(i, mine);
    other = after.Block(i, other);
    if (!CompareBytesOf(Indexed(place, i), before, mine, after, other, sink)) return false;
  }
  return true;
}

bool CompareFields(const std::string& place, const FieldView& before, const FieldView& after,
                   const DifferenceSink& sink) {
  const FieldSchema& schema = before.schema();
  if (schema.type == FieldType::Text) return CompareTexts(place, before, after, sink);
  if (schema.type == FieldType::Record || schema.shape == FieldShape::Blocks) {
    return CompareLists(place, before, after, sink);
  }
  if (schema.type == FieldType::Bytes) {
    return CompareBytesOf(place, before, {0, before.length()}, after, {0, after.length()}, sink);
  }
  return CompareNumbers(place, before, after, sink);
}

}  // namespace

bool Tell(const DifferenceSink& sink, std::string place, std::string before, std::string after) {
  return sink({std::move(place), std::move(before), std::move(after)});
}

bool CompareBytes(const std::string& place, ByteSource& before, ByteSource& after,
                  const DifferenceSink& sink) {
  return CompareStretches(
      place, before.size(),
      [&](std::uint64_t from, std::size_t count) { return before.At(from, count); }, after.size(),
      [&](std::uint64_t from, std::size_t count) { return after.At(from, count); }, sink);
}

bool CompareRecords(const std::string& place, const RecordView& before, const RecordView& after,
                    const DifferenceSink& sink) {
  const auto compare = [&](const FieldView& field) {
    const std::string at = place + "." + field.schema().name;
    const FieldView* other = after.Find(field.schema().name);
    return other != nullptr ? CompareFields(at, field, *other, sink)
                            : Tell(sink, at, BytesText(field.length()), "");
  };
  const auto tellAdded = [&](const FieldView& field) {
    return before.Find(field.schema().name) != nullptr ||
           Tell(sink, place + "." + field.schema().name, "", BytesText(field.length()));
  };
  return std::all_of(before.fields().begin(), before.fields().end(), compare) &&
         std::all_of(after.fields().begin(), after.fields().end(), tellAdded);
}

}  // namespace vkcl
