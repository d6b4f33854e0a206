#include "kit/confd/document/parse_faults.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "kit/confd/document/part.h"
#include "kit/confd/document/text_fault.h"

namespace kit::store {
namespace {

// How many parts are looked at in one go.
constexpr size_t kGroup = 64;

size_t CountLineEnds(std::string_view text) {
  return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

// Around the parts that are looked at.
struct Context {
  std::string open;
  std::string keys;  // of the entry that they stand in, behind `open`
  std::string close;
  const SchemaNode* schema = nullptr;  // of what they stand in, if known
  size_t line = 0;                     // where that begins
  // What is said of the context itself.
  std::optional<Complaint> own;
};

const SchemaNode* SchemaOf(const SchemaNode* parent, std::string_view name) {
  if (parent == nullptr || name.empty()) return parent;
  const size_t colon = name.find(':');
  if (colon != std::string_view::npos) name.remove_prefix(colon + 1);
  const auto found = parent->by_name.find(name);
  if (found == parent->by_name.end()) return nullptr;
  for (const SchemaNode* child : found->second) {
    if (child->module == parent->module) return child;
  }
  return found->second.front();
}

class Search {
 public:
  Search(std::string& text, Syntax syntax, const Schema& schema,
         const Parser& parse)
      : text_(text), syntax_(syntax), schema_(schema), parse_(parse) {}

  ParseFaults Run() {
    const Frames frames = FramesOfDocument(syntax_);
    LookAt(PartsOf(text_, syntax_),
           {frames.open, "", frames.close, &schema_.root(), 0, std::nullopt});
    return std::move(found_);
  }

 private:
  bool is_json() const { return syntax_ == Syntax::kJson; }

  // What is wrong with text[begin, end), and not with its context.
  std::optional<Complaint> Judge(const Context& context, size_t begin,
                                 size_t end) const {
    std::string body = context.keys;
    if (is_json() && !body.empty()) body += ',';
    const std::string before = context.open + body;
    std::optional<Complaint> complaint =
        parse_(before + text_.substr(begin, end - begin) + context.close);
    if (!complaint || IsSame(context.own, *complaint)) return std::nullopt;
    const size_t skipped = CountLineEnds(before);
    complaint->line = complaint->line > skipped + 1
                          ? complaint->line - 1 - skipped
                          : 0;  // from the line of `begin`
    return complaint;
  }

  bool IsSame(const std::optional<Complaint>& known,
              const Complaint& complaint) const {
    if (!known) return false;
    if (known->lacks_key && complaint.lacks_key) {
      return FindSchemaNode(schema_.context(), known->path) ==
             FindSchemaNode(schema_.context(), complaint.path);
    }
    return known->reason == complaint.reason && known->path == complaint.path;
  }

  // Whether one of the keys had to be cut.
  bool LookAt(const std::vector<Part>& parts, const Context& context) {
    bool lost_key = false;
    for (size_t i = 0; i < parts.size(); i += kGroup) {
      const size_t end = std::min(i + kGroup, parts.size());
      if (!Judge(context, parts[i].begin, parts[end - 1].end)) continue;
      for (size_t k = i; k < end; ++k) {
        // Once it is cut, its name is gone too.
        const bool is_key = IsKey(parts[k], context);
        if (LookAt(parts[k], context) && is_key) lost_key = true;
      }
    }
    return lost_key;
  }

  static bool IsKey(const Part& part, const Context& context) {
    const SchemaNode* schema = SchemaOf(context.schema, part.name);
    return !part.name.empty() && schema != nullptr && schema->is_key();
  }

  // Whether the part had to be cut as a whole.
  bool LookAt(const Part& part, const Context& context) {
    std::optional<Complaint> complaint = Judge(context, part.begin, part.end);
    if (!complaint) return false;
    const std::vector<Part> inner = PartsOf(text_, syntax_, part);
    if (inner.empty()) {
      complaint->line = 0;  // where it begins
      Report(part, *complaint);
      CutOut(part, context);
      return true;
    }
    const size_t cuts_before = found_.cuts.size();
    const bool lost_key = LookInto(part, inner, context);
    if (!lost_key && !IsEmptyArray(part)) {
      complaint = Judge(context, part.begin, part.end);
      if (!complaint) return false;
      if (!complaint->unknown_namespace.empty()) complaint->line = 0;
      Report(part, *complaint);
    }
    // What is lost is the whole of it.
    found_.cuts.resize(cuts_before);
    CutOut(part, context);
    return true;
  }

  bool IsEmptyArray(const Part& part) const {
    return is_json() && text_[part.inside_end] == ']' &&
           text_.find_first_not_of(kBlanks, part.inside_begin) ==
               part.inside_end;
  }

  bool LookInto(const Part& part, const std::vector<Part>& inner,
                const Context& around) {
    const Frames frames = FramesOf(text_, syntax_, part);
    Context context = around;
    context.open = around.open + around.keys +
                   (is_json() && !around.keys.empty() ? "," : "") + frames.open;
    context.keys.clear();
    context.close = frames.close + around.close;
    context.schema = SchemaOf(around.schema, part.name);
    context.line = LineAt(part.begin);
    context.own = JudgeFrames(context);
    std::vector<Part> keys;
    for (const Part& one : inner) {
      if (IsKey(one, context)) keys.push_back(one);
    }
    const bool lost_key = LookAt(keys, context);
    if (!lost_key && !keys.empty()) {
      for (const Part& key : keys) {
        if (is_json() && !context.keys.empty()) context.keys += ',';
        context.keys.append(text_, key.begin, key.end - key.begin);
      }
      context.own = JudgeFrames(context);
    }
    // A key does not stand twice in what is looked at.
    std::vector<Part> others;
    for (const Part& one : inner) {
      if (!IsKey(one, context)) {
        others.push_back(one);
        continue;
      }
      LookAt(others, context);
      others.clear();
    }
    LookAt(others, context);
    return lost_key;
  }

  std::optional<Complaint> JudgeFrames(const Context& context) const {
    return parse_(context.open + context.keys + context.close);
  }

  void Report(const Part& part, const Complaint& complaint) {
    found_.faults.push_back({LineAt(part.begin) + complaint.line,
                             complaint.path, complaint.reason});
  }

  void CutOut(const Part& part, const Context& context) {
    found_.cuts.push_back({SchemaOf(context.schema, part.name), context.line});
    BlankOut(text_, syntax_, part);
  }

  size_t LineAt(size_t offset) {
    // Parts come nearly in the order of the text.
    if (offset < counted_) {
      lines_ -= CountLineEnds(
          std::string_view(text_).substr(offset, counted_ - offset));
    } else {
      lines_ += CountLineEnds(
          std::string_view(text_).substr(counted_, offset - counted_));
    }
    counted_ = offset;
    return lines_ + 1;
  }

  std::string& text_;
  const Syntax syntax_;
  const Schema& schema_;
  const Parser& parse_;
  ParseFaults found_;
  size_t counted_ = 0;  // up to there
  size_t lines_ = 0;    // end in front of there
};

}  // namespace

ParseFaults CutFaults(std::string& text, Syntax syntax, const Schema& schema,
                      const Parser& parse) {
  return Search(text, syntax, schema, parse).Run();
}

}  // namespace kit::store
