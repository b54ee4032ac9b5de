#include "support/XmlReader.h"

#include <array>
#include <cstdio>
#include <cstdlib>

#include "support/TempDir.h"

namespace vkcl::testing {
namespace {

constexpr char kReader[] = R"py(
import json, sys, xml.dom.minidom
from xml.dom import Node
out = []
def dump(node, depth):
    indent = "  " * depth
    if node.nodeType == Node.COMMENT_NODE:
        out.append(indent + "#comment " + json.dumps(node.data))
    elif node.nodeType == Node.PROCESSING_INSTRUCTION_NODE:
        out.append(indent + "#pi " + node.target + " " + json.dumps(node.data))
    elif node.nodeType == Node.ELEMENT_NODE:
        texts = (Node.TEXT_NODE, Node.CDATA_SECTION_NODE)
        text = "".join(c.data for c in node.childNodes if c.nodeType in texts)
        others = [c for c in node.childNodes if c.nodeType not in texts]
        if others and not text.strip(" \t\r\n"):
            text = ""
        line = indent + node.tagName
        for name, value in sorted(node.attributes.items()):
            line += " " + name + "=" + json.dumps(value)
        out.append(line + " : " + json.dumps(text))
        for child in others:
            dump(child, depth + 1)
try:
    with open(sys.argv[1], "rb") as file:
        document = xml.dom.minidom.parse(file)
    for node in document.childNodes:
        dump(node, 0)
    print("\n".join(out))
except Exception as problem:
    print("refused: " + str(problem))
)py";

std::string OutputOf(const std::string& command) {
  std::string output;
  std::FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return "refused: no process";
  std::array<char, 4096> buffer = {};
  while (const std::size_t n = std::fread(buffer.data(), 1, buffer.size(), pipe)) {
    output.append(buffer.data(), n);
  }
  ::pclose(pipe);
  return output;
}

}  // namespace

bool XmlReaderWorks() {
  return std::system("python3 -c 'import xml.dom.minidom' >/dev/null 2>&1") == 0;
}

std::string ReadWithPython(const std::string& path) {
  const TempDir dir;
  const std::string script(kReader);
  const std::string reader = dir.Write("reader.py", Bytes(script.begin(), script.end()));
  return OutputOf("LC_ALL=C python3 '" + reader + "' '" + path + "' 2>/dev/null");
}

}  // namespace vkcl::testing
