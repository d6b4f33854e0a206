#include "kit/confd/document/frame.h"

#include <libyang/libyang.h>

#include <algorithm>

#include "kit/confd/document/escapes.h"
#include "kit/confd/document/prefixed_text.h"

namespace kit::store {
namespace {

Form FormOf(const LeafType& leaf_type, ValueType type) {
  if (leaf_type.text_form() == TextForm::kSize) return Form::kPrinted;
  switch (type) {
    case ValueType::kEnum:
    case ValueType::kBool:
    case ValueType::kIdentityref:
    case ValueType::kBit32:
    case ValueType::kBit64:
    case ValueType::kEmpty:
      return Form::kFew;
    case ValueType::kInt8:
    case ValueType::kInt16:
    case ValueType::kInt32:
    case ValueType::kInt64:
      return Form::kSigned;
    case ValueType::kUint8:
    case ValueType::kUint16:
    case ValueType::kUint32:
    case ValueType::kUint64:
      return Form::kUnsigned;
    case ValueType::kBuf:
    case ValueType::kDatetime:
    case ValueType::kObjectRef:
      return Form::kText;
    default:
      return Form::kPrinted;
  }
}

std::string Indent(size_t depth) { return std::string(2 * depth, ' '); }

bool ChangesModule(const SchemaNode& schema) {
  return schema.module != schema.parent->module;
}

void FillXml(Frame& frame, size_t depth) {
  const SchemaNode& schema = *frame.schema;
  std::string start = Indent(depth) + "<" + schema.name;
  if (ChangesModule(schema)) {
    start += Declaration("", *schema.module->compiled);
  }
  const std::string end = "</" + schema.name + ">\n";
  frame.empty = start + "/>\n";
  frame.open = start + ">" + (schema.type ? "" : "\n");
  frame.close = (schema.type ? "" : Indent(depth)) + end;
  frame.depth = depth + 1;
}

void FillJson(Frame& frame, size_t depth) {
  const SchemaNode& schema = *frame.schema;
  std::string name = schema.name;
  if (ChangesModule(schema)) name = schema.module->name + ":" + name;
  const std::string member = ",\n" + Indent(depth) + "\"" + name + "\": ";
  const bool has_instances =
      schema.kind == NodeKind::kList || schema.kind == NodeKind::kLeafList;
  std::string start = member;
  if (has_instances) {
    frame.before = member + "[";
    frame.after = "\n" + Indent(depth) + "]";
    ++depth;
    start = ",\n" + Indent(depth);
  }
  if (schema.type) {
    const auto type = schema.type->value_type();
    const bool is_quoted = type && !IsBareInJson(*type);
    frame.open = start + (is_quoted ? "\"" : "");
    frame.close = is_quoted ? "\"" : "";
    frame.empty = start + "[null]";
  } else {
    frame.open = start + "{";
    frame.close = "\n" + Indent(depth) + "}";
    frame.empty = start + "{}";
  }
  frame.depth = depth + 1;
}

Frame FrameOf(const SchemaNode& schema, size_t depth, Syntax syntax) {
  Frame frame;
  frame.schema = &schema;
  if (schema.type) {
    const auto type = schema.type->value_type();
    frame.form = type ? FormOf(*schema.type, *type) : Form::kMixed;
    frame.has_prefixes = syntax == Syntax::kXml &&
                         (!type || MayNameModules(*type)) &&
                         NamesModules(schema);
  }
  if (syntax == Syntax::kXml) {
    FillXml(frame, depth);
  } else {
    FillJson(frame, depth);
  }
  return frame;
}

}  // namespace

Frame MakeFrame(const SchemaNode& root, Syntax syntax) {
  Frame frame;
  frame.schema = &root;
  if (syntax == Syntax::kJson) frame.depth = 1;
  AddChildren(frame, syntax);
  // As libyang orders them, whichever module was read first.
  std::stable_sort(frame.children.begin(), frame.children.end(),
                   [](const Frame& a, const Frame& b) {
                     return a.schema->module->name < b.schema->module->name;
                   });
  return frame;
}

void AddChildren(Frame& frame, Syntax syntax) {
  frame.has_children = true;
  frame.children.reserve(frame.schema->children.size());
  for (const auto& child : frame.schema->children) {
    if (child->kind == NodeKind::kAny) continue;
    frame.children.push_back(FrameOf(*child, frame.depth, syntax));
  }
}

bool MayNameModules(ValueType type) {
  switch (type) {
    case ValueType::kBuf:
    case ValueType::kIdentityref:
    case ValueType::kObjectRef:
      return true;
    default:
      return false;
  }
}

bool IsBareInJson(ValueType type) {
  switch (type) {
    case ValueType::kBool:
    case ValueType::kInt8:
    case ValueType::kInt16:
    case ValueType::kInt32:
    case ValueType::kUint8:
    case ValueType::kUint16:
    case ValueType::kUint32:
      return true;
    default:
      return false;
  }
}

std::string Declaration(const std::string& prefix, const lys_module& module) {
  return " xmlns" + prefix + "=\"" + Escapes::XmlAttribute().Apply(module.ns) +
         "\"";
}

}  // namespace kit::store
