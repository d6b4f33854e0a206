// All that can be said of a node's text before there is data.
#ifndef KIT_CONFD_DOCUMENT_FRAME_H_
#define KIT_CONFD_DOCUMENT_FRAME_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "kit/confd/document/envelope.h"
#include "kit/confd/model/schema.h"

namespace kit::store {

// How values of a leaf become text.
enum class Form {
  kFew,       // there are few of them: each is made up once
  kSigned,    // numbers
  kUnsigned,  // numbers
  kText,      // any characters
  kPrinted,   // the type prints it
  kMixed      // of a union: it depends on the value
};

// JSON texts begin with the comma that the first one in an object or array lets
// out.
struct Frame {
  const SchemaNode* schema = nullptr;
  std::string before;  // the first entry of a list, value of a leaf-list
  std::string open;    // in front of a value, or of what an entry holds
  std::string close;
  std::string empty;  // in place of both where there is nothing in between
  std::string after;  // the last entry of a list, value of a leaf-list

  // Of leaves and leaf-lists.
  Form form = Form::kMixed;
  bool has_prefixes = false;  // whether XML declares prefixes for its values
  std::unordered_map<uint64_t, std::string> known;  // whole texts, by value

  std::vector<Frame> children;
  bool has_children = false;  // whether these were made up already
  size_t depth = 0;           // of their indentation
};

// The frame of the root.
Frame MakeFrame(const SchemaNode& root, Syntax syntax);

// Most data fills a small part of its models.
void AddChildren(Frame& frame, Syntax syntax);

// Whether values of the type may name modules.
bool MayNameModules(ValueType type);

// JSON puts all other values in quotes.
bool IsBareInJson(ValueType type);

// The attribute that declares a module's namespace, for the elements themselves
// or, with a colon, for a prefix.
std::string Declaration(const std::string& prefix, const lys_module& module);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_FRAME_H_
