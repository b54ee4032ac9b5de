// How the file is laid out: a strip in proportion, and the tag table.
#include <algorithm>
#include <map>

#include "inspect/ProfileNames.h"
#include "inspect/report/ReportSections.h"
#include "platform/Bytes.h"
#include "platform/plinth/NumberText.h"
#include "profile/SignatureText.h"
#include "profile/TableLayout.h"
#include "profile/icc.h"

namespace vkcl {
namespace {

constexpr std::size_t kMostRows = 200;
constexpr std::size_t kMostPieces = 1000;
constexpr double kWidth = 1000;

enum class Kind { Header, Table, Standard, Private, Gap };

struct PieceKind {
  const char* style;
  const char* name;
};
// In the order of Kind.
constexpr PieceKind kKinds[] = {
    {"header", "header"},       {"table", "tag table"},     {"standard", "tag of the standard"},
    {"private", "private tag"}, {"gap", "bytes of no tag"},
};

struct Piece {
  Kind kind;
  std::uint64_t from;
  std::uint64_t to;
  std::string name;
};

// Pieces of the file one behind the other. Where tags overlap the one that begins first has the
// bytes; up to three bytes that fill a tag up are its own.
class Pieces {
 public:
  explicit Pieces(const ShownFile& file) : length_(file.length()) {
    Add(Kind::Header, 0, kTableStart - 4, "header");
    Add(Kind::Table, kTableStart - 4, TableEnd(file.table().size()), "tag table");
    std::vector<icTag> tags = file.table();
    std::stable_sort(tags.begin(), tags.end(),
                     [](const icTag& a, const icTag& b) { return a.offset < b.offset; });
    for (const icTag& tag : tags) {
      AddGap(tag.offset);
      const bool isPrivate = IsPrivateSignature(tag.sig);
      Add(isPrivate ? Kind::Private : Kind::Standard, at_,
          PadTo4(std::uint64_t{tag.offset} + tag.size), SignatureText(tag.sig));
    }
    AddGap(length_);
  }

  const std::vector<Piece>& all() const { return pieces_; }
  std::uint64_t BytesOf(Kind kind) const {
    std::uint64_t bytes = 0;
    for (const Piece& piece : pieces_) bytes += piece.kind == kind ? piece.to - piece.from : 0;
    return bytes;
  }

 private:
  void AddGap(std::uint64_t to) {
    if (to > at_) Add(Kind::Gap, at_, to, "bytes of no tag");
  }

  void Add(Kind kind, std::uint64_t from, std::uint64_t to, std::string name) {
    from = std::min(std::max(from, at_), length_);
    to = std::min(to, length_);
    if (to <= from) return;
    pieces_.push_back({kind, from, to, std::move(name)});
    at_ = to;
  }

  std::uint64_t length_;
  std::uint64_t at_ = 0;
  std::vector<Piece> pieces_;
};

std::string Place(double value) {
  std::string text;
  AppendFixed(text, value, 2);
  return text;
}

void WriteStrip(HtmlWriter& out, const ShownFile& file, const Pieces& pieces) {
  const std::string id = file.Id("strip");
  const auto length = static_cast<double>(std::max<std::uint64_t>(file.length(), 1));
  out << "<figure class=\"map\"><figcaption>Layout of the file, in proportion</figcaption>"
         "<svg class=\"strip\" role=\"img\" viewBox=\"0 0 1000 48\" preserveAspectRatio=\"none\" "
         "aria-labelledby=\""_html
      << id << "-t "_html << id << "-d\"><title id=\""_html << id
      << "-t\">Layout of the file</title><desc id=\""_html << id << "-d\">"_html
      << Counted(pieces.all().size(), "piece") << " in the order of the file: "_html;
  for (std::size_t i = 0; i < std::min<std::size_t>(pieces.all().size(), 40); ++i) {
    out << (i == 0 ? "" : ", ") << pieces.all()[i].name;
  }
  out << "</desc>"_html;
  int shade = 0;
  const std::size_t shown = std::min(pieces.all().size(), kMostPieces);
  for (std::size_t i = 0; i < shown; ++i) {
    const Piece& piece = pieces.all()[i];
    const double x = static_cast<double>(piece.from) / length * kWidth;
    const double width = static_cast<double>(piece.to - piece.from) / length * kWidth;
    const bool isPrivate = piece.kind == Kind::Private;
    out << "<rect class=\""_html << kKinds[static_cast<std::size_t>(piece.kind)].style
        << (piece.kind == Kind::Standard && shade++ % 2 != 0 ? " other" : "") << "\" x=\""_html
        << Place(x) << "\" y=\""_html << (isPrivate ? 0 : 10) << "\" width=\""_html
        << Place(std::max(width, 1.5)) << "\" height=\""_html << (isPrivate ? 48 : 28)
        << "\"><title>"_html << piece.name << ", "_html << ShownBytes(piece.to - piece.from)
        << " from "_html << ShownCount(piece.from) << "</title></rect>"_html;
  }
  out << "</svg><p class=\"ends\" aria-hidden=\"true\"><span>0</span><span>"_html
      << ShownBytes(file.length()) << "</span></p><ul class=\"legend\">"_html;
  for (std::size_t i = 0; i < std::size(kKinds); ++i) {
    const std::uint64_t bytes = pieces.BytesOf(static_cast<Kind>(i));
    if (bytes == 0) continue;
    out << "<li><span class=\"key "_html << kKinds[i].style << "\"></span>"_html << kKinds[i].name
        << ": "_html << ShownBytes(bytes) << "</li>"_html;
  }
  out << "</ul>"_html;
  if (shown < pieces.all().size()) {
    out << "<p class=\"note\">"_html << ShownCount(pieces.all().size() - shown)
        << " more pieces are not drawn.</p>"_html;
  }
  out << "</figure>"_html;
}

void WriteTitle(HtmlWriter& out, const ShownFile& file, const icTag& tag,
                std::uint32_t sharedWith) {
  const char* title = TagTitle(tag.sig);
  if (IsPrivateSignature(tag.sig)) out << "<span class=\"badge\">private</span> "_html;
  out << (title != nullptr ? title : "unknown");
  if (sharedWith != 0) {
    out << "; shares its data with <code>"_html << Isolated{SignatureText(sharedWith)}
        << "</code>"_html;
  }
  if (std::uint64_t{tag.offset} + tag.size > file.length()) {
    out << "; reaches beyond the end of the file"_html;
  }
}

std::string TypeOf(const ShownFile& file, const icTag& tag) {
  if (tag.size < 4) return {};
  const std::string type = file.Bytes(tag.offset, 4);
  return type.size() < 4 ? std::string() : SignatureText(LoadBig32(type.data()));
}

void WriteTable(HtmlWriter& out, const ShownFile& file) {
  const std::vector<icTag>& table = file.table();
  const std::size_t shown = std::min(table.size(), kMostRows);
  out << "<div class=\"scroll\" role=\"group\" tabindex=\"0\" aria-labelledby=\""_html
      << file.Id("tags-c") << "\"><table class=\"tags\"><caption id=\""_html << file.Id("tags-c")
      << "\">Tag table</caption><thead><tr><th scope=\"col\">Tag</th><th scope=\"col\">Type</th>"
         "<th scope=\"col\" class=\"right\">Offset</th>"
         "<th scope=\"col\" class=\"right\">Size in bytes</th><th scope=\"col\">What it holds</th>"
         "</tr></thead><tbody>"_html;
  std::map<std::uint32_t, std::uint32_t> firstAt;  // from offset to signature
  for (std::size_t i = 0; i < shown; ++i) {
    const icTag& tag = table[i];
    const auto [first, isNew] = firstAt.try_emplace(tag.offset, tag.sig);
    out << "<tr><th scope=\"row\"><code>"_html << Isolated{SignatureText(tag.sig)}
        << "</code></th><td><code>"_html << Isolated{TypeOf(file, tag)}
        << "</code></td><td class=\"right\">"_html << ShownCount(tag.offset)
        << "</td><td class=\"right\">"_html << ShownCount(tag.size) << "</td><td>"_html;
    WriteTitle(out, file, tag, isNew ? 0 : first->second);
    out << "</td></tr>"_html;
  }
  out << "</tbody></table></div>"_html;
  if (shown < table.size()) {
    out << "<p class=\"note\">"_html << ShownCount(table.size() - shown)
        << " more tags are left out.</p>"_html;
  }
}

}  // namespace

void WriteTagMap(HtmlWriter& out, const ShownFile& file) {
  WriteStrip(out, file, Pieces(file));
  WriteTable(out, file);
}

}  // namespace vkcl
