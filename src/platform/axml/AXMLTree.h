// An XML document as a tree of elements with text and attributes.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/Export.h"
#include "platform/plinth/AFilePath.h"
#include "platform/plinth/AString.h"

/// A light handle of one element. It is valid as long as its tree lives and loads nothing else. A
/// handle may name no element: every operation on it is then without effect and gives "no", empty
/// or another such handle.
///
/// Texts are byte strings in the host's encoding; the document is in UTF-8. Whatever bytes are put
/// in, control characters and bytes that are no text of that encoding included, come out again,
/// also of a file; only blanks alone, beside child elements, are taken for layout there.
class VKCL_API AXMLTreeNode {
 public:
  AXMLTreeNode() = default;

  /// Whether the handle names an element.
  explicit operator bool() const noexcept { return element_ != nullptr; }

  /// The name of the element.
  AString GetName() const;

  /// The text of the element: all its character data, those of CDATA sections included, without
  /// comments and child elements. Blanks are kept.
  AString GetValue() const;
  /// The same without a copy where the document holds the text as the host does, and in `room`
  /// where it does not. It is valid until the element changes, or `room` does. Throws when memory
  /// is short.
  std::string_view ViewValue(std::string& room) const;
  /// Replaces the text; child elements stay. False when memory is short.
  bool SetValue(const AString& text);

  /// Empty, too, when there is no attribute of that name.
  AString GetAttribute(const AString& name) const;
  /// The same as ViewValue gives a value.
  std::string_view ViewAttribute(const AString& name, std::string& room) const;
  /// Sets or adds an attribute. False when memory is short, or `name` is no name of XML 1.0.
  bool SetAttribute(const AString& name, const AString& text);

  /// The first child element of that name.
  AXMLTreeNode GetChild(const AString& name) const;
  /// The child element at a place, counted from 0; comments and the like do not count.
  AXMLTreeNode GetChild(int index) const;
  /// How many child elements there are.
  int GetChildCount() const;
  /// The next element that has the same parent.
  AXMLTreeNode GetNext() const;

  /// Appends a child element with a text, which may be empty. A handle of no element, and nothing
  /// added, when memory is short or `name` is no name of XML 1.0.
  AXMLTreeNode AddChild(const AString& name, const AString& value);

 private:
  friend class AXMLTree;
  explicit AXMLTreeNode(void* element) noexcept : element_(element) {}

  void* element_ = nullptr;
};

/// One document. Used by one thread at a time.
class VKCL_API AXMLTree {
 public:
  /// A document whose root has that name ("_" where it is no name of XML 1.0) and nothing in it.
  /// When memory is short there is no root.
  explicit AXMLTree(const AString& rootName);
  ~AXMLTree();
  AXMLTree(const AXMLTree&) = delete;
  AXMLTree& operator=(const AXMLTree&) = delete;

  /// Replaces the document by that of a file: 1. 0, and the document as it was, for a file that
  /// cannot be read or holds no document. Small slips are forgiven where the document can be saved
  /// so that others read it and nothing is lost: what looks like a reference and is none is text.
  /// Refused, too, are documents that could exhaust the host: above 256 MiB, with more than about a
  /// million tags or attributes, with elements nested more than 256 deep, or that declare entities.
  ///
  /// Encodings: UTF-8, UTF-16 and UTF-32 by byte-order mark or first characters, ISO 8859-1 by
  /// declaration; bytes that are no UTF-8 are taken as the host's. Comments, processing
  /// instructions and elements that nobody asks for are kept and saved again; layout is not: blanks
  /// between elements. The second argument has no meaning.
  int LoadFromFile(const AFilePath& path, int mode);

  /// Writes the document, as UTF-8 with two blanks of indentation a level, into a new file that
  /// then takes the place of the old one: 1. 0, and the old file whole, when that failed, or the
  /// document is one that LoadFromFile would refuse.
  int SaveToFile(const AFilePath& path);

  /// The root element.
  AXMLTreeNode GetRoot();

 private:
  struct Document;
  std::unique_ptr<Document> document_;
};
