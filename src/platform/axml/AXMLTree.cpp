#include "platform/axml/AXMLTree.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <utility>

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

// Whether elements are nested at most as deep as is allowed. No recursion: the depth is theirs.
bool IsShallow(const pugi::xml_node& root) {
  pugi::xml_node node = root;
  for (int level = 1; level <= kMostLevels;) {
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

bool DeclaresEntities(const pugi::xml_node& node) {
  return node.type() == pugi::node_doctype && std::strstr(node.value(), "<!ENTITY") != nullptr;
}

// Whether there is one element at the top, no text, and no document type with entities. Blanks at
// the top, which are layout, are taken out.
bool HasOneRoot(pugi::xml_document& document) {
  int roots = 0;
  for (pugi::xml_node node = document.first_child(); node;) {
    const pugi::xml_node next = node.next_sibling();
    const std::string_view text = node.value();
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

// Whether a reference to the character 0 stands in the text. What follows it would be lost.
bool NamesZero(std::string_view text) {
  for (std::size_t at = text.find("&#"); at != std::string_view::npos; at = text.find("&#", at)) {
    at += 2;
    if (text.substr(at, 1) == "x") ++at;
    const std::size_t end = text.find_first_not_of('0', at);
    if (end != at && end != std::string_view::npos && text[end] == ';') return true;
  }
  return false;
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

// Hands the pieces of a document on to a file: short ones together, long ones as they are.
class FileWriter : public pugi::xml_writer {
 public:
  explicit FileWriter(AFile& file) : file_(file) { pieces_.reserve(kTogether); }

  void write(const void* data, std::size_t size) override {
    total_ += size;
    marks_.Count({static_cast<const char*>(data), size});
    if (pieces_.size() + size > kTogether) flush();
    if (size > kTogether) {
      failed_ = failed_ || file_.write(data, size) != size;
    } else {
      pieces_.append(static_cast<const char*>(data), size);
    }
  }
  /// Whether everything was written, and is no more than can be loaded again.
  bool finish() {
    flush();
    return !failed_ && total_ <= kMostBytes && marks_.AreFew();
  }

 private:
  static constexpr std::size_t kTogether = 65536;

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

AString AXMLTreeNode::GetAttribute(const AString& name) const {
  return vkcl::Guarded([&] {
    const Xml key(name);
    return AString(vkcl::XmlToHostText(NodeOf(element_).attribute(key.c_str()).value()));
  });
}

bool AXMLTreeNode::SetAttribute(const AString& name, const AString& text) {
  return vkcl::Guarded([&] {
    pugi::xml_node element = NodeOf(element_);
    if (!element || !vkcl::IsXmlName(name.str())) return false;
    const Xml key(name);
    const Xml xml(text);
    pugi::xml_attribute attribute = element.attribute(key.c_str());
    if (attribute) return attribute.set_value(xml.c_str());
    attribute = element.append_attribute(key.c_str());
    if (attribute.set_value(xml.c_str())) return true;
    element.remove_attribute(attribute);
    return false;
  });
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
    if (!element || !vkcl::IsXmlName(name.str())) return AXMLTreeNode();
    const Xml key(name);
    AXMLTreeNode child(element.append_child(key.c_str()).internal_object());
    if (child && child.SetValue(value)) return child;
    element.remove_child(NodeOf(child.element_));
    return AXMLTreeNode();
  });
}

AXMLTree::AXMLTree(const AString& rootName) {
  document_ = vkcl::Guarded([&] {
    auto created = std::make_unique<Document>();
    const Xml key(rootName);
    created->nodes.append_child(vkcl::IsXmlName(rootName.str()) ? key.c_str() : "_");
    return created;
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
    char* text = loaded->text.get();
    if (!HasFewMarks({text, loaded->size}) || NamesZero({text, loaded->size})) return 0;
    if (!loaded->nodes.load_buffer_inplace(text, loaded->size, kParsing)) return 0;
    if (!HasOneRoot(loaded->nodes)) return 0;
    if (!IsShallow(loaded->nodes.document_element())) return 0;
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
