#include "platform/axml/AXMLTree.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Guarded.h"
#include "platform/axml/XmlText.h"
#include "platform/plinth/AFile.h"
#include "platform/plinth/NumberText.h"
#include "platform/plinth/ReplaceFile.h"
#include "platform/plinth/WholeFile.h"

namespace {

constexpr std::uint64_t kMostBytes = std::uint64_t{256} << 20;
constexpr std::ptrdiff_t kMostMarks = std::ptrdiff_t{1} << 20;  // of tags, and of attributes
constexpr int kMostLevels = 256;

// As a fragment, so that text outside the root is seen, not dropped.
constexpr unsigned kParsing = pugi::parse_default | pugi::parse_ws_pcdata_single |
                              pugi::parse_comments | pugi::parse_pi | pugi::parse_doctype |
                              pugi::parse_fragment;
constexpr unsigned kFormat = pugi::format_indent | pugi::format_no_declaration;
constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
constexpr const char* kIndent = "  ";

pugi::xml_node NodeOf(void* element) {
  return pugi::xml_node(static_cast<pugi::xml_node_struct*>(element));
}

bool IsText(const pugi::xml_node& node) {
  return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

// Marks of tags and attributes. An element takes more memory than the few bytes that announce it.
// Other encodings than UTF-8 have these bytes at least as often.
class Marks {
 public:
  void Count(std::string_view text) {
    tags_ += CountOf(text, '<');
    attributes_ += CountOf(text, '=');
  }
  bool AreFew() const { return tags_ <= kMostMarks && attributes_ <= kMostMarks; }

 private:
  // find skips what lies between at the speed of memory. It stops where there are too many.
  static std::ptrdiff_t CountOf(std::string_view text, char mark) {
    std::ptrdiff_t count = 0;
    std::size_t at = text.find(mark);
    for (; at != std::string_view::npos && count <= kMostMarks; ++count) {
      at = text.find(mark, at + 1);
    }
    return count;
  }

  std::ptrdiff_t tags_ = 0;
  std::ptrdiff_t attributes_ = 0;
};

bool HasFewMarks(std::string_view text) {
  Marks marks;
  marks.Count(text);
  return marks.AreFew();
}

// Calls `visit` for every node below and including `root`, with its level, until it says no. No
// recursion: the depth is the document's.
template <class Visit>
bool ForEachNode(const pugi::xml_node& root, Visit visit) {
  pugi::xml_node node = root;
  for (int level = 1; visit(node, level);) {
    if (const pugi::xml_node child = node.first_child()) {
      node = child;
      ++level;
      continue;
    }
    while (node != root && !node.next_sibling()) {
      node = node.parent();
      --level;
    }
    if (node == root) return true;
    node = node.next_sibling();
  }
  return false;
}

// Whether elements are nested at most as deep as is allowed.
bool IsShallow(const pugi::xml_node& root) {
  return ForEachNode(root, [](const pugi::xml_node&, int level) { return level <= kMostLevels; });
}

// Whether no name stands twice, and all are names.
bool HasGoodAttributes(const pugi::xml_node& element) {
  std::vector<std::string_view> names;
  for (const pugi::xml_attribute& attribute : element.attributes()) {
    names.emplace_back(attribute.name());
  }
  std::sort(names.begin(), names.end());
  return std::adjacent_find(names.begin(), names.end()) == names.end() &&
         std::all_of(names.begin(), names.end(), vkcl::IsXmlName);
}

// Brings a text that others wrote, or that lost its form by references, into the form in which this
// library writes: bytes that are no UTF-8 are the host's, and what cannot stand in a document has
// characters of its own.
template <class Holder>
bool SetGoodValue(Holder& holder) {
  if (vkcl::IsXmlText(holder.value())) return true;
  std::string room;
  const std::string host = vkcl::XmlToHostText(holder.value());
  return holder.set_value(std::string(vkcl::HostTextToXml(host, room)).c_str());
}

// XML 1.0 (fifth edition), 2.11: where the parser leaves the ends of lines as they stand, in
// processing instructions and document types, each becomes a line feed.
bool SetLineEnds(pugi::xml_node& node) {
  const std::string_view text = node.value();
  if (text.find('\r') == std::string_view::npos || IsText(node)) return true;
  std::string lines;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool endsLine = text[i] == '\r';
    if (endsLine && text.substr(i + 1, 1) == "\n") ++i;
    lines += endsLine ? '\n' : text[i];
  }
  return node.set_value(lines.c_str());
}

// Sees to it that others can read the document when it is saved. False when that is not possible.
bool MakeGood(const pugi::xml_node& root) {
  return ForEachNode(root, [](pugi::xml_node node, int) {
    if (node.type() == pugi::node_document) return true;
    if (node.type() == pugi::node_element) {
      if (!vkcl::IsXmlName(node.name()) || !HasGoodAttributes(node)) return false;
      for (pugi::xml_attribute attribute : node.attributes()) {
        if (!SetGoodValue(attribute)) return false;
      }
      return true;
    }
    if (node.type() == pugi::node_pi && !vkcl::IsXmlName(node.name())) return false;
    return SetLineEnds(node) && SetGoodValue(node);
  });
}

bool DeclaresEntities(const pugi::xml_node& node) {
  return node.type() == pugi::node_doctype && std::strstr(node.value(), "<!ENTITY") != nullptr;
}

// Whether there is one element at the top, no text, and at most one document type, before the
// element and without entities. Blanks at the top, which are layout, are taken out.
bool HasGoodTop(pugi::xml_document& document) {
  int roots = 0;
  int types = 0;
  for (pugi::xml_node node = document.first_child(); node;) {
    const pugi::xml_node next = node.next_sibling();
    const std::string_view text = node.value();
    if (node.type() == pugi::node_doctype && (++types > 1 || roots > 0 || text.empty()))
      return false;
    if (DeclaresEntities(node)) return false;
    if (IsText(node)) {
      if (!std::all_of(text.begin(), text.end(), vkcl::IsSpace)) return false;
      document.remove_child(node);
    }
    roots += node.type() == pugi::node_element ? 1 : 0;
    node = next;
  }
  return roots == 1;
}

// Whether a reference to a character that there is not stands in the text. What follows one to the
// character 0, or to a number that becomes 0 in 32 bits, would be lost.
bool HasBadReference(std::string_view text) {
  constexpr std::uint32_t kLast = 0x10FFFF;
  for (std::size_t at = text.find("&#"); at != std::string_view::npos; at = text.find("&#", at)) {
    at += 2;
    const bool hex = text.substr(at, 1) == "x";
    if (hex) ++at;
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data() + at, end, number, hex ? 16 : 10);
    const bool closed = result.ptr != end && *result.ptr == ';';
    if (!closed || result.ec == std::errc::invalid_argument) continue;
    if (result.ec != std::errc() || number == 0 || number > kLast) return true;
  }
  return false;
}

// Whether the text is in an encoding of several bytes a character.
bool IsWide(std::string_view text) {
  return text.substr(0, 4).find('\0') != std::string_view::npos || text.starts_with("\xFF\xFE") ||
         text.starts_with("\xFE\xFF");
}

// Whether the parser would lose a part of the text without a word: what stands behind a zero.
bool LosesText(std::string_view text) {
  if (!IsWide(text)) return text.find('\0') != std::string_view::npos || HasBadReference(text);
  std::string narrow;
  std::copy_if(text.begin(), text.end(), std::back_inserter(narrow), [](char c) { return c != 0; });
  return HasBadReference(narrow);
}

// A byte string of the host as the document holds it, zero-terminated.
class Xml {
 public:
  explicit Xml(const AString& text) : text_(vkcl::HostTextToXml(text.str(), room_).data()) {}
  Xml(const Xml&) = delete;
  Xml& operator=(const Xml&) = delete;

  const char* c_str() const { return text_; }

 private:
  std::string room_;  // before what may point into it
  const char* text_;
};

// Hands the pieces of a document on to a file: short ones together, long ones as they are. A
// carriage return, which only texts hold, is written as a reference: as it stands, readers would
// take it for a line feed.
class FileWriter : public pugi::xml_writer {
 public:
  explicit FileWriter(AFile& file) : file_(file) { pieces_.reserve(kTogether); }

  void write(const void* data, std::size_t size) override {
    std::string_view rest(static_cast<const char*>(data), size);
    for (std::size_t at = rest.find('\r'); at != std::string_view::npos; at = rest.find('\r')) {
      Put(rest.substr(0, at));
      Put("&#13;");
      rest.remove_prefix(at + 1);
    }
    Put(rest);
  }
  /// Whether everything was written, and is no more than can be loaded again.
  bool finish() {
    flush();
    return !failed_ && total_ <= kMostBytes && marks_.AreFew();
  }

 private:
  static constexpr std::size_t kTogether = 65536;

  void Put(std::string_view text) {
    total_ += text.size();
    marks_.Count(text);
    if (pieces_.size() + text.size() > kTogether) flush();
    if (text.size() > kTogether) {
      failed_ = failed_ || file_.write(text.data(), text.size()) != text.size();
    } else {
      pieces_.append(text);
    }
  }

  void flush() {
    failed_ = failed_ || file_.write(pieces_.data(), pieces_.size()) != pieces_.size();
    pieces_.clear();
  }

  AFile& file_;
  std::string pieces_;
  std::uint64_t total_ = 0;
  Marks marks_;
  bool failed_ = false;
};

}  // namespace

struct AXMLTree::Document {
  std::unique_ptr<char[]> text;  // what was loaded; the nodes point into it
  std::size_t size = 0;
  pugi::xml_document nodes;
};

AString AXMLTreeNode::GetName() const {
  return vkcl::Guarded([&] { return AString(vkcl::XmlToHostText(NodeOf(element_).name())); });
}

std::string_view AXMLTreeNode::ViewValue(std::string& room) const {
  const pugi::xml_node first = NodeOf(element_).first_child();
  if (IsText(first) && !first.next_sibling()) return vkcl::XmlToHostText(first.value(), room);
  std::string text;
  for (pugi::xml_node child = first; child; child = child.next_sibling()) {
    if (IsText(child)) text += child.value();
  }
  room = vkcl::XmlToHostText(text);
  return room;
}

AString AXMLTreeNode::GetValue() const {
  return vkcl::Guarded([&] {
    std::string room;
    const std::string_view text = ViewValue(room);
    return AString(text.data(), text.size());
  });
}

bool AXMLTreeNode::SetValue(const AString& text) {
  return vkcl::Guarded([&] {
    pugi::xml_node element = NodeOf(element_);
    if (!element) return false;
    const Xml xml(text);
    pugi::xml_node fresh;
    if (!text.empty()) {
      fresh = element.prepend_child(pugi::node_pcdata);
      if (!fresh.set_value(xml.c_str())) {
        element.remove_child(fresh);
        return false;
      }
    }
    for (pugi::xml_node child = element.first_child(); child;) {
      const pugi::xml_node next = child.next_sibling();
      if (IsText(child) && child != fresh) element.remove_child(child);
      child = next;
    }
    return true;
  });
}

std::string_view AXMLTreeNode::ViewAttribute(const AString& name, std::string& room) const {
  const Xml key(name);
  return vkcl::XmlToHostText(NodeOf(element_).attribute(key.c_str()).value(), room);
}

AString AXMLTreeNode::GetAttribute(const AString& name) const {
  return vkcl::Guarded([&] {
    std::string room;
    const std::string_view text = ViewAttribute(name, room);
    return AString(text.data(), text.size());
  });
}

bool AXMLTreeNode::SetAttribute(const AString& name, const AString& text) {
  return vkcl::Guarded([&] {
    pugi::xml_node element = NodeOf(element_);
    const Xml key(name);
    const Xml xml(text);
    if (!element || !vkcl::IsXmlName(key.c_str())) return false;
    pugi::xml_attribute attribute = element.attribute(key.c_str());
    if (attribute) return attribute.set_value(xml.c_str());
    // In steps, each of which tells when memory is short.
    attribute = element.append_attribute("");
    if (attribute.set_name(key.c_str()) && attribute.set_value(xml.c_str())) return true;
    element.remove_attribute(attribute);
    return false;
  });
}

AXMLTreeNode AXMLTreeNode::GetNext() const {
  pugi::xml_node next = NodeOf(element_).next_sibling();
  while (next && next.type() != pugi::node_element) next = next.next_sibling();
  return AXMLTreeNode(next.internal_object());
}

AXMLTreeNode AXMLTreeNode::GetChild(const AString& name) const {
  return vkcl::Guarded([&] {
    const Xml key(name);
    for (const pugi::xml_node& child : NodeOf(element_).children()) {
      if (child.type() == pugi::node_element && std::strcmp(key.c_str(), child.name()) == 0) {
        return AXMLTreeNode(child.internal_object());
      }
    }
    return AXMLTreeNode();
  });
}

AXMLTreeNode AXMLTreeNode::GetChild(int index) const {
  if (index < 0) return {};
  for (const pugi::xml_node& child : NodeOf(element_).children()) {
    if (child.type() == pugi::node_element && index-- == 0) {
      return AXMLTreeNode(child.internal_object());
    }
  }
  return {};
}

int AXMLTreeNode::GetChildCount() const {
  int count = 0;
  for (const pugi::xml_node& child : NodeOf(element_).children()) {
    count += child.type() == pugi::node_element ? 1 : 0;
  }
  return count;
}

AXMLTreeNode AXMLTreeNode::AddChild(const AString& name, const AString& value) {
  return vkcl::Guarded([&] {
    pugi::xml_node element = NodeOf(element_);
    const Xml key(name);
    if (!element || !vkcl::IsXmlName(key.c_str())) return AXMLTreeNode();
    pugi::xml_node added = element.append_child(pugi::node_element);
    AXMLTreeNode child(added.internal_object());
    if (added.set_name(key.c_str()) && child.SetValue(value)) return child;
    element.remove_child(added);
    return AXMLTreeNode();
  });
}

AXMLTree::AXMLTree(const AString& rootName) {
  document_ = vkcl::Guarded([&] {
    auto created = std::make_unique<Document>();
    const Xml key(rootName);
    pugi::xml_node root = created->nodes.append_child(pugi::node_element);
    const bool named = root.set_name(vkcl::IsXmlName(key.c_str()) ? key.c_str() : "_");
    return named ? std::move(created) : nullptr;
  });
}

AXMLTree::~AXMLTree() = default;

int AXMLTree::LoadFromFile(const AFilePath& path, int /*mode*/) {
  return vkcl::Guarded([&] {
    auto loaded = std::make_unique<Document>();
    vkcl::FileContent content = vkcl::ReadWholeFile(path, 0, kMostBytes);
    if (content.bytes == nullptr) return 0;
    loaded->text = std::move(content.bytes);
    loaded->size = content.size;
    const std::string_view text(loaded->text.get(), loaded->size);
    if (!HasFewMarks(text) || LosesText(text)) return 0;
    if (!loaded->nodes.load_buffer_inplace(loaded->text.get(), loaded->size, kParsing)) return 0;
    if (!HasGoodTop(loaded->nodes) || !IsShallow(loaded->nodes.document_element())) return 0;
    if (!MakeGood(loaded->nodes)) return 0;
    document_ = std::move(loaded);
    return 1;
  });
}

int AXMLTree::SaveToFile(const AFilePath& path) {
  return vkcl::Guarded([&] {
    // What could not be loaded again is not put in the place of what can.
    if (document_ == nullptr || !IsShallow(document_->nodes.document_element())) return 0;
    const bool saved = vkcl::ReplaceFile(path, [&](AFile& file) {
      FileWriter writer(file);
      writer.write(kDeclaration.data(), kDeclaration.size());
      document_->nodes.save(writer, kIndent, kFormat, pugi::encoding_utf8);
      return writer.finish();
    });
    return saved ? 1 : 0;
  });
}

AXMLTreeNode AXMLTree::GetRoot() {
  if (document_ == nullptr) return {};
  return AXMLTreeNode(document_->nodes.document_element().internal_object());
}
