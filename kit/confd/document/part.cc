#include "kit/confd/document/part.h"

#include "kit/confd/document/json_scanner.h"
#include "kit/confd/document/text_edit.h"
#include "kit/confd/document/text_fault.h"
#include "kit/confd/document/xml_scanner.h"

namespace kit::store {
namespace {

// Of what stands in text[begin, end).
std::vector<Part> Elements(std::string_view text, size_t begin, size_t end) {
  std::vector<Part> parts;
  size_t depth = 0;
  XmlScanner scanner(text.substr(0, end), begin);
  while (const XmlTag* tag = scanner.Next()) {
    if (tag->kind == XmlTag::Kind::kClose) {
      if (--depth > 0) continue;
      parts.back().inside_end = tag->begin;
      parts.back().end = tag->end;
      continue;
    }
    if (depth == 0) {
      parts.push_back({tag->name, tag->begin, tag->end, tag->end, tag->end});
    }
    if (tag->kind == XmlTag::Kind::kOpen) ++depth;
  }
  return parts;
}

bool IsBracket(char c) { return c == '{' || c == '['; }

// The part from `begin` to `end` whose value begins at `value`.
Part JsonPart(std::string_view text, std::string_view name, size_t begin,
              size_t value, size_t end) {
  if (!IsBracket(text[value])) return {name, begin, end, end, end};
  return {name, begin, end, value + 1, end - 1};
}

std::vector<Part> Members(std::string_view text, size_t object) {
  std::vector<Part> parts;
  for (const JsonMember& member : JsonScanner(text, object).Scan()) {
    parts.push_back(JsonPart(text, member.name, member.name_begin,
                             member.value_begin, member.value_end));
  }
  return parts;
}

std::vector<Part> ElementsOfArray(std::string_view text, size_t array) {
  std::vector<Part> parts;
  const std::vector<size_t> begins = JsonScanner(text, array).Elements(array);
  for (size_t i = 0; i + 1 < begins.size(); ++i) {
    // A comma follows, or the bracket.
    const bool is_last = i + 2 == begins.size();
    const size_t past =
        is_last ? begins[i + 1] - 1 : text.rfind(',', begins[i + 1] - 1);
    const size_t end = text.find_last_not_of(kBlanks, past - 1) + 1;
    parts.push_back(JsonPart(text, "", begins[i], begins[i], end));
  }
  return parts;
}

}  // namespace

std::vector<Part> PartsOf(std::string_view text, Syntax syntax) {
  if (syntax == Syntax::kXml) return Elements(text, 0, text.size());
  return Members(text, text.find('{'));
}

std::vector<Part> PartsOf(std::string_view text, Syntax syntax,
                          const Part& part) {
  if (part.inside_begin == part.inside_end) return {};
  if (syntax == Syntax::kXml) {
    return Elements(text, part.inside_begin, part.inside_end);
  }
  const size_t bracket = part.inside_begin - 1;
  return text[bracket] == '{' ? Members(text, bracket)
                              : ElementsOfArray(text, bracket);
}

Frames FramesOfDocument(Syntax syntax) {
  if (syntax == Syntax::kXml) return {"", ""};
  return {"{", "}"};
}

Frames FramesOf(std::string_view text, Syntax syntax, const Part& part) {
  const auto open = text.substr(part.begin, part.inside_begin - part.begin);
  if (syntax == Syntax::kXml) {
    return {std::string(open), "</" + std::string(part.name) + ">"};
  }
  return {std::string(open), open.back() == '{' ? "}" : "]"};
}

void BlankOut(std::string& text, Syntax syntax, const Part& part) {
  size_t begin = part.begin;
  size_t end = part.end;
  if (syntax == Syntax::kJson) {
    const size_t next = text.find_first_not_of(kBlanks, end);
    const size_t last = text.find_last_not_of(kBlanks, begin - 1);
    if (text[next] == ',') {
      end = next + 1;
    } else if (text[last] == ',') {
      begin = last;
    }
  }
  BlankOut(text, begin, end);
}

}  // namespace kit::store
