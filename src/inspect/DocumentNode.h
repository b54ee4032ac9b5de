// What may stand at a place of a JSON document that is being read.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "inspect/PrintableText.h"

namespace vkcl {

/// A number, as it stands in the document, or the content of a string; or one of the words.
struct Scalar {
  enum class Kind { Number, String, Null, Other };
  Kind kind;
  std::string_view text;
};

inline std::string Quoted(std::string_view name) { return "\"" + PrintableText(name) + "\""; }

/// What may stand at a place of the document. Each operation returns why it may not, else an empty
/// text. An array or object gets a node of its own, which ends before the one around it goes on.
class Node {
 public:
  Node() = default;
  virtual ~Node() = default;
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  virtual std::string OnScalar(const Scalar& /*scalar*/) { return "takes no such value"; }
  virtual std::string OnArray(std::unique_ptr<Node>& /*child*/) { return "takes no array"; }
  virtual std::string OnObject(std::unique_ptr<Node>& /*child*/) { return "takes no object"; }
  virtual std::string OnKey(const std::string& /*key*/) { return {}; }
  virtual std::string OnEnd() { return {}; }
  /// Where in the node the document is: ".key", "[3]" or nothing.
  virtual std::string Place() const { return {}; }
};

/// Whatever it holds says nothing.
class Ignored : public Node {
 public:
  std::string OnScalar(const Scalar& /*scalar*/) override { return {}; }
  std::string OnArray(std::unique_ptr<Node>& child) override { return Nest(child); }
  std::string OnObject(std::unique_ptr<Node>& child) override { return Nest(child); }

 private:
  static std::string Nest(std::unique_ptr<Node>& child) {
    child = std::make_unique<Ignored>();
    return {};
  }
};

/// Entries of an array have numbers.
class Array : public Node {
 public:
  std::string Place() const override { return "[" + std::to_string(index_) + "]"; }

 protected:
  void Next() { ++index_; }
  std::uint64_t index_ = 0;
};

}  // namespace vkcl
