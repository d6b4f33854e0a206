#include "kit/confd/document/writer.h"

#include <libyang/libyang.h>

#include <charconv>
#include <cstring>
#include <map>
#include <string>
#include <utility>

#include "kit/confd/document/escapes.h"
#include "kit/confd/document/frame.h"
#include "kit/confd/document/prefixed_text.h"
#include "kit/confd/document/tree_access.h"

namespace kit::store {
namespace {

using Sink = std::function<void(std::string_view)>;

// Hands text to the sink in pieces of one size.
class PieceBuffer {
 public:
  explicit PieceBuffer(const Sink& sink) : sink_(sink), buffer_(kSize, '\0') {}

  void Add(std::string_view text) {
    while (text.size() > kSize - used_) {
      std::string_view start = text.substr(0, kSize - used_);
      Copy(start);
      text.remove_prefix(start.size());
      Flush();
    }
    Copy(text);
  }

  void Flush() {
    if (used_ > 0) sink_({buffer_.data(), used_});
    used_ = 0;
  }

 private:
  static constexpr size_t kSize = size_t{1} << 16;

  void Copy(std::string_view text) {
    std::memcpy(buffer_.data() + used_, text.data(), text.size());
    used_ += text.size();
  }

  const Sink& sink_;
  std::string buffer_;
  size_t used_ = 0;
};

class Writer {
 public:
  Writer(Syntax syntax, PieceBuffer& out)
      : syntax_(syntax),
        is_xml_(syntax == Syntax::kXml),
        escapes_(is_xml_ ? Escapes::Xml() : Escapes::Json()),
        out_(out) {}

  void Write(const Node& root, const std::vector<Carried>& carried) {
    Frame frame = MakeFrame(*root.schema, syntax_);
    // By the place in the frame that they come behind, counted from 1.
    std::multimap<size_t, const Carried*> left;
    for (const Carried& one : carried) {
      left.emplace(PlaceOf(one.behind, frame), &one);
    }
    if (!is_xml_) out_.Add("{");
    bool first = true;
    for (size_t place = 0; place <= frame.children.size(); ++place) {
      if (place > 0 && Child(root, frame.children[place - 1], first)) {
        first = false;
      }
      const auto [begin, end] = left.equal_range(place);
      for (auto one = begin; one != end; ++one) {
        Carry(one->second->text, first);
        first = false;
      }
    }
    if (!is_xml_) out_.Add(first ? "}\n" : "\n}\n");
  }

 private:
  // What stands around the instances of a list or leaf-list.
  class Instances {
   public:
    Instances(Writer& writer, const Frame& frame, bool first)
        : writer_(writer), frame_(frame), first_(first) {}

    // In front of each instance: whether it is the first one.
    bool Next() {
      if (has_any_) return false;
      has_any_ = true;
      writer_.Start(frame_.before, first_);
      return true;
    }

    // Whether there were any.
    bool End() {
      if (has_any_) writer_.out_.Add(frame_.after);
      return has_any_;
    }

   private:
    Writer& writer_;
    const Frame& frame_;
    const bool first_;
    bool has_any_ = false;
  };

  // 0 for none.
  size_t PlaceOf(const std::string& outer_name, const Frame& frame) const {
    for (size_t i = 0; i < frame.children.size(); ++i) {
      const SchemaNode& schema = *frame.children[i].schema;
      const Module& module = *schema.module;
      if (OuterName(is_xml_ ? module.ns : module.name, schema.name) ==
          outer_name) {
        return i + 1;
      }
    }
    return 0;
  }

  void Carry(std::string_view text, bool first) {
    if (!is_xml_) Start(",\n  ", first);
    out_.Add(text);
    if (is_xml_) out_.Add("\n");
  }

  // These write nothing and return false for what holds nothing. `first`: no
  // other node stands in front of it in its object or array.

  bool Children(const Node& node, Frame& frame) {
    if (!frame.has_children) AddChildren(frame, syntax_);
    bool first = true;
    for (Frame& child : frame.children) {
      if (Child(node, child, first)) first = false;
    }
    return !first;
  }

  bool Child(const Node& node, Frame& frame, bool first) {
    const SchemaNode& schema = *frame.schema;
    switch (schema.kind) {
      case NodeKind::kLeaf: {
        const auto value = SetLeafOf(node, schema);
        if (value) Leaf(*value, frame, first);
        return static_cast<bool>(value);
      }
      case NodeKind::kContainer:
      case NodeKind::kPresenceContainer:
        return Container(ContainerOf(node, schema), frame, first);
      case NodeKind::kLeafList: {
        Instances instances(*this, frame, first);
        ForEachSetValue(node, schema, [&](const Value& value) {
          Leaf(value, frame, instances.Next());
        });
        return instances.End();
      }
      case NodeKind::kList: {
        Instances instances(*this, frame, first);
        ForEachEntry(node, schema, [&](const Node& entry) {
          Inner(entry, frame, instances.Next());
        });
        return instances.End();
      }
      default:
        return false;
    }
  }

  bool Container(const Node* node, Frame& frame, bool first) {
    if (node == nullptr) return false;
    if (HasContent(*node)) {
      Inner(*node, frame, first);
      return true;
    }
    const bool is_there = frame.schema->kind == NodeKind::kPresenceContainer;
    if (is_there) Start(frame.empty, first);
    return is_there;
  }

  void Inner(const Node& node, Frame& frame, bool first) {
    Start(frame.open, first);
    Children(node, frame);
    out_.Add(frame.close);
  }

  // Without the comma that only JSON has, in front of all but the first.
  void Start(std::string_view text, bool first) {
    if (first && !is_xml_) text.remove_prefix(1);
    out_.Add(text);
  }

  void Leaf(const Value& value, Frame& frame, bool first) {
    switch (frame.form) {
      case Form::kFew:
        Start(Known(value, frame), first);
        return;
      case Form::kSigned:
        Number(value.signed_bits(), frame, first);
        return;
      case Form::kUnsigned:
        Number(value.bits(), frame, first);
        return;
      case Form::kText:
        if (frame.has_prefixes) {
          Start(Whole(value, frame), first);
        } else {
          Text(value.text(), frame, first);
        }
        return;
      case Form::kPrinted:
        Text(frame.schema->type->Print(value), frame, first);
        return;
      case Form::kMixed:
        Start(Whole(value, frame), first);
        return;
    }
  }

  template <typename T>
  void Number(T number, const Frame& frame, bool first) {
    char digits[20];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    Start(frame.open, first);
    out_.Add({digits, static_cast<size_t>(end - digits)});
    out_.Add(frame.close);
  }

  void Text(std::string_view text, const Frame& frame, bool first) {
    if (is_xml_ && text.empty()) {
      Start(frame.empty, first);
      return;
    }
    Start(frame.open, first);
    escapes_.Apply(text, [this](std::string_view piece) { out_.Add(piece); });
    out_.Add(frame.close);
  }

  const std::string& Known(const Value& value, Frame& frame) {
    // Sets of bits may be many.
    constexpr size_t kMost = 1000;
    auto found = frame.known.find(value.bits());
    if (found != frame.known.end()) return found->second;
    if (frame.known.size() == kMost) frame.known.clear();
    return frame.known[value.bits()] = Whole(value, frame);
  }

  // All that is written for a value of any type.
  std::string Whole(const Value& value, const Frame& frame) const {
    std::string open = frame.open;
    std::string text = frame.schema->type->Print(value);
    if (frame.has_prefixes && MayNameModules(value.type())) {
      PrefixedText prefixed = WithPrefixes(*frame.schema, text);
      text = std::move(prefixed.text);
      for (const lys_module* module : prefixed.modules) {
        open.insert(open.size() - 1,
                    Declaration(std::string(":") + module->prefix, *module));
      }
    }
    const bool is_empty =
        is_xml_ ? text.empty() : value.type() == ValueType::kEmpty;
    if (is_empty) return frame.empty;
    const bool has_own_quotes =
        !is_xml_ && frame.form == Form::kMixed && !IsBareInJson(value.type());
    const char* quote = has_own_quotes ? "\"" : "";
    return open + quote + escapes_.Apply(text) + quote + frame.close;
  }

  const Syntax syntax_;
  const bool is_xml_;
  const Escapes& escapes_;
  PieceBuffer& out_;
};

}  // namespace

void WriteDocument(const Data& data, Envelope envelope, const Sink& sink) {
  WriteDocument(data, {}, envelope, sink);
}

void WriteDocument(const Data& data, const std::vector<Carried>& carried,
                   Envelope envelope, const Sink& sink) {
  // A text without an element is no XML document.
  const bool is_empty = carried.empty() && !HasContent(data.root());
  if (envelope.wrapping == Wrapping::kNone && is_empty) {
    envelope.wrapping = Wrapping::kConfig;
  }
  const bool is_xml = envelope.syntax == Syntax::kXml;
  PieceBuffer out(sink);
  if (is_xml) out.Add(Opening(envelope));
  Writer(envelope.syntax, out).Write(data.root(), carried);
  if (is_xml) out.Add(Closing(envelope));
  out.Flush();
}

}  // namespace kit::store
