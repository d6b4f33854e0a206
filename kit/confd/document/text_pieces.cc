#include "kit/confd/document/text_pieces.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "kit/confd/document/json_scanner.h"
#include "kit/confd/document/text_fault.h"
#include "kit/confd/document/xml_scanner.h"

namespace kit::store {
namespace {

// libyang takes time in proportion to the square of a piece's nodes.
constexpr size_t kPieceSize = 256;

// Counts lines on the way through a text.
class LineCounter {
 public:
  explicit LineCounter(std::string_view text) : text_(text) {}

  // `offset` must not go back.
  size_t At(size_t offset) {
    line_ += LineOf(text_.substr(at_, offset - at_), offset - at_) - 1;
    at_ = offset;
    return line_;
  }

 private:
  std::string_view text_;
  size_t at_ = 0;
  size_t line_ = 1;
};

void CutXml(const std::string& text, size_t begin, const PieceSink& sink) {
  std::vector<size_t> cuts;
  size_t depth = 0;
  size_t count = 0;
  XmlScanner scanner(text);
  while (const XmlTag* tag = scanner.Next()) {
    if (tag->kind == XmlTag::Kind::kClose) {
      --depth;
      continue;
    }
    if (depth == 0 && count++ % kPieceSize == 0) cuts.push_back(tag->begin);
    if (tag->kind == XmlTag::Kind::kOpen) ++depth;
  }
  LineCounter lines(text);
  if (cuts.size() < 2) {
    sink(text.c_str() + begin, lines.At(begin));
    return;
  }
  cuts.front() = begin;
  cuts.push_back(text.size());
  for (size_t i = 0; i + 1 < cuts.size(); ++i) {
    sink(text.substr(cuts[i], cuts[i + 1] - cuts[i]).c_str(),
         lines.At(cuts[i]));
  }
}

void CutJson(const std::string& text, size_t begin, const PieceSink& sink) {
  JsonScanner scanner(text);
  const std::vector<JsonMember> members = scanner.Scan();
  size_t count = 0;
  for (const JsonMember& member : members) count += member.size;
  LineCounter lines(text);
  if (count <= kPieceSize) {
    sink(text.c_str() + begin, lines.At(begin));
    return;
  }
  for (const JsonMember& member : members) {
    if (member.size <= kPieceSize) {
      std::string part =
          text.substr(member.name_begin, member.value_end - member.name_begin);
      sink(("{" + part + "}").c_str(), lines.At(member.name_begin));
      continue;
    }
    const std::vector<size_t> begins = scanner.Elements(member.value_begin);
    for (size_t i = 0; i < member.size; i += kPieceSize) {
      size_t end = std::min(i + kPieceSize, member.size);
      std::string part = text.substr(begins[i], begins[end] - begins[i]);
      // Of the last element the bracket follows, of others a comma.
      part.resize(part.find_last_of(end == member.size ? ']' : ','));
      sink(("{\"" + std::string(member.name) + "\":[" + part + "]}").c_str(),
           lines.At(begins[i]));
    }
  }
}

std::string_view LocalName(std::string_view name) {
  const size_t colon = name.find(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

class FineCutter {
 public:
  FineCutter(const std::string& text,
             const std::function<bool(const ElementNames&)>& may_cut,
             const FineSink& sink)
      : text_(text), may_cut_(may_cut), sink_(sink) {}

  void Run() {
    XmlScanner scanner(text_);
    while (const XmlTag* tag = scanner.Next()) {
      if (tag->kind == XmlTag::Kind::kOpen) {
        open_.push_back({tag->begin, tag->end, tag->name});
        continue;
      }
      if (tag->kind == XmlTag::Kind::kClose) open_.pop_back();
      if (tag->end - begin_ >= kPieceBytes) TryToCut(tag->end);
    }
    HandOn(text_.size());
  }

 private:
  static constexpr size_t kPieceBytes = size_t{1} << 16;

  struct Element {
    size_t begin;  // of its tag
    size_t end;
    std::string_view name;
  };

  void TryToCut(size_t at) {
    ElementNames around;
    for (const Element& element : open_) {
      around.push_back(LocalName(element.name));
    }
    if (!may_cut_(around)) return;
    HandOn(at);
    begin_ = at;
    continued_ = open_;
    names_ = std::move(around);
  }

  // The piece up to `end`, within the tags of what it goes on with and of what
  // goes on behind it.
  void HandOn(size_t end) {
    piece_.clear();
    for (const Element& element : continued_) {
      piece_.append(text_, element.begin, element.end - element.begin);
    }
    piece_.append(text_, begin_, end - begin_);
    for (size_t i = open_.size(); i > 0; --i) {
      piece_.append("</").append(open_[i - 1].name).append(">");
    }
    sink_(piece_, names_);
  }

  const std::string& text_;
  const std::function<bool(const ElementNames&)>& may_cut_;
  const FineSink& sink_;
  std::vector<Element> open_;
  size_t begin_ = 0;  // of the piece
  std::vector<Element> continued_;
  ElementNames names_;  // of these
  std::string piece_;
};

}  // namespace

void CutFinely(const std::string& text,
               const std::function<bool(const ElementNames&)>& may_cut,
               const FineSink& sink) {
  FineCutter(text, may_cut, sink).Run();
}

void CutIntoPieces(const std::string& text, Syntax syntax,
                   const PieceSink& sink) {
  size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string::npos) return;
  if (syntax == Syntax::kXml) {
    CutXml(text, begin, sink);
  } else {
    CutJson(text, begin, sink);
  }
}

}  // namespace kit::store
