#include "kit/confd/document/carried.h"

#include <algorithm>
#include <set>
#include <utility>

#include "kit/confd/document/json_scanner.h"
#include "kit/confd/document/part.h"
#include "kit/confd/document/text_edit.h"
#include "kit/confd/document/text_fault.h"
#include "kit/confd/document/xml_scanner.h"

namespace kit::store {
namespace {

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

uint64_t LeavesOf(std::string_view text, Syntax syntax, const Part& part) {
  const std::vector<Part> inner = PartsOf(text, syntax, part);
  if (inner.empty()) return 1;
  uint64_t leaves = 0;
  for (const Part& one : inner) leaves += LeavesOf(text, syntax, one);
  return leaves;
}

// The module of a member that is not known; "" for others. What is written with
// escapes, or without a module, is for the parser to judge.
std::string_view UnknownModule(const JsonMember& member,
                               const KnowsModule& knows) {
  const size_t colon = member.name.find(':');
  if (colon == std::string_view::npos ||
      member.name.find('\\') != std::string_view::npos) {
    return "";
  }
  const std::string_view module = member.name.substr(0, colon);
  return knows(module) ? "" : module;
}

void CheckEntities(std::string_view text, size_t begin, size_t end) {
  struct Section {
    std::string_view open;
    std::string_view close;
  };
  constexpr Section kSections[] = {
      {"<![CDATA[", "]]>"}, {"<!--", "-->"}, {"<?", "?>"}};
  constexpr std::string_view kEntities[] = {"&amp;",  "&lt;",   "&gt;",
                                            "&quot;", "&apos;", "&#"};
  for (size_t at = begin; (at = text.find_first_of("<&", at)) < end; ++at) {
    const std::string_view rest = text.substr(at);
    const auto starts = [&](std::string_view start) {
      return rest.compare(0, start.size(), start) == 0;
    };
    for (const Section& section : kSections) {
      if (!starts(section.open)) continue;
      at = text.find(section.close, at + section.open.size());
      break;
    }
    if (text[at] != '&') continue;
    if (std::none_of(std::begin(kEntities), std::end(kEntities), starts)) {
      FailAt(text, at, "'&' begins no reference that a configuration knows");
    }
  }
}

// The prefix of a name; "" for none.
std::string_view PrefixOf(std::string_view name) {
  const size_t colon = name.find(':');
  return colon == std::string_view::npos ? "" : name.substr(0, colon);
}

}  // namespace

std::string OuterName(std::string_view module, std::string_view name) {
  return std::string(module) + " " + std::string(name);
}

bool IsSlipOf(std::string_view text, std::string_view known) {
  if (text.size() > known.size()) std::swap(text, known);
  if (known.size() - text.size() > 1) return false;
  const auto same = [](char a, char b) { return Lower(a) == Lower(b); };
  const size_t front = static_cast<size_t>(
      std::mismatch(text.begin(), text.end(), known.begin(), same).first -
      text.begin());
  const std::string_view left = text.substr(front);
  const std::string_view other = known.substr(front);
  if (other.empty()) return true;
  const auto ends = [&](std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), same);
  };
  return left.size() == other.size() ? ends(left.substr(1), other.substr(1))
                                     : ends(left, other.substr(1));
}

std::vector<Carried> TakeUnknownMembers(std::string& text, size_t object,
                                        const KnowsModule& knows) {
  const std::string whole = text;
  std::vector<Carried> carried;
  std::set<std::string_view> names;
  std::string behind;
  bool has_known = false;
  size_t last_end = object;
  for (const JsonMember& member : JsonScanner(whole, object).Scan()) {
    const std::string_view module = UnknownModule(member, knows);
    // Of the commas those stay that stand between two members that stay.
    const bool keeps_comma = module.empty() && has_known;
    const size_t comma = whole.find(',', last_end);
    if (last_end != object && !keeps_comma) text[comma] = ' ';
    last_end = member.value_end;
    if (module.empty()) {
      has_known = true;
      const size_t colon = member.name.find(':');
      behind = OuterName(
          member.name.substr(0, colon),
          member.name.substr(std::min(colon, member.name.size() - 1) + 1));
      continue;
    }
    if (!names.insert(member.name).second) {
      FailAt(whole, member.name_begin,
             "\"" + std::string(member.name) + "\" stands there twice");
    }
    std::string part =
        whole.substr(member.name_begin, member.value_end - member.name_begin);
    const uint64_t leaves = LeavesIn(part, Syntax::kJson);
    carried.push_back({std::string(module), std::move(part), leaves, behind});
    BlankOut(text, member.name_begin, member.value_end);
  }
  if (!has_known) {
    text = whole;
    return {};
  }
  return carried;
}

uint64_t LeavesIn(std::string_view part, Syntax syntax) {
  if (syntax == Syntax::kXml) {
    return LeavesOf(part, syntax, PartsOf(part, syntax).front());
  }
  const std::string object = "{" + std::string(part) + "}";
  return LeavesOf(object, syntax, PartsOf(object, syntax).front());
}

void CheckElement(std::string_view text, size_t begin, size_t end,
                  const std::function<bool(std::string_view)>& is_declared) {
  CheckEntities(text, begin, end);
  std::vector<std::string_view> declared = {"xml"};
  std::vector<size_t> open;  // how many were declared around each
  XmlScanner scanner(text.substr(0, end), begin);
  while (const XmlTag* tag = scanner.Next()) {
    if (tag->kind == XmlTag::Kind::kClose) {
      declared.resize(open.back());
      open.pop_back();
      continue;
    }
    open.push_back(declared.size());
    for (const XmlAttribute& attribute : tag->attributes) {
      constexpr std::string_view kXmlns = "xmlns:";
      if (attribute.name.compare(0, kXmlns.size(), kXmlns) == 0) {
        declared.push_back(attribute.name.substr(kXmlns.size()));
      }
    }
    const std::string_view prefix = PrefixOf(tag->name);
    if (!prefix.empty() && !is_declared(prefix) &&
        std::find(declared.begin(), declared.end(), prefix) == declared.end()) {
      FailAt(text, tag->begin,
             "the prefix of <" + std::string(tag->name) + "> is not declared");
    }
    if (tag->kind == XmlTag::Kind::kEmpty) {
      declared.resize(open.back());
      open.pop_back();
    }
  }
}

}  // namespace kit::store
