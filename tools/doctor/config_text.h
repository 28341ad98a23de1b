// The text of a settings file, read so that as much as possible is understood: what is no JSON is
// noted as a fault, with its place, and read as what was most likely meant.

#ifndef LAUNCHER_TOOLS_DOCTOR_CONFIG_TEXT_H_
#define LAUNCHER_TOOLS_DOCTOR_CONFIG_TEXT_H_

#include <cstdint>
#include <string>
#include <vector>

namespace launcher::doctor {

enum class NodeType : std::uint8_t { null, boolean, number, string, array, object };

struct Member;

struct Node {
  NodeType type = NodeType::null;
  std::string text;             // of a string its characters, of a number or truth value its digits
  std::size_t offset = 0;       // where it begins in the text
  bool isCut = false;           // the file ended inside it
  std::vector<Member> members;  // of an object
  std::vector<Node> items;      // of an array
};

struct Member {
  std::string key;
  std::size_t offset = 0;
  Node value;
};

// What is wrong, in plain words, why that happens, and what to do.
struct FaultKind {
  const char* what;
  const char* cause;
  const char* next;
};

struct Fault {
  const FaultKind* kind;
  std::size_t offset;
  std::string detail;  // what stands there, or empty
};

struct ConfigText {
  std::string text;  // in UTF-8, without the mark at its beginning
  Node document;
  std::size_t end = 0;  // behind the document: the library reads no further
  std::vector<Fault> faults;
  std::vector<Member> behind;  // members that stand behind the document
  bool hasMoreBehind = false;  // anything but blanks
};

struct Place {
  std::size_t line;
  std::size_t column;  // in characters
};

ConfigText ReadConfigText(const std::string& bytes);

Place PlaceOf(const std::string& text, std::size_t offset);

// JSON text in the form in which the library writes its own file.
std::string RenderNode(const Node& node);

}  // namespace launcher::doctor

#endif  // LAUNCHER_TOOLS_DOCTOR_CONFIG_TEXT_H_
