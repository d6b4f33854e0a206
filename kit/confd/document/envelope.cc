#include "kit/confd/document/envelope.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "kit/confd/document/carried.h"
#include "kit/confd/document/json_scanner.h"
#include "kit/confd/document/text_edit.h"
#include "kit/confd/document/xml_scanner.h"
#include "kit/confd/text/utf8.h"

namespace kit::store {
namespace {

constexpr std::string_view kConfigNamespace = "http://tail-f.com/ns/config/1.0";
constexpr std::string_view kNetconfNamespace =
    "urn:ietf:params:xml:ns:netconf:base:1.0";
// Data models nest a dozen levels; a parser's stack holds some thousands.
constexpr size_t kMaxDepth = 500;

// ---- XML ------------------------------------------------------------------

// Namespace declarations in scope: prefix ("" for the default) to namespace.
using Namespaces = std::map<std::string_view, std::string_view>;

// The prefix that an attribute declares; nothing for an ordinary attribute.
std::optional<std::string_view> DeclaredPrefix(std::string_view attribute) {
  constexpr std::string_view kPrefixed = "xmlns:";
  if (attribute == "xmlns") return "";
  if (attribute.substr(0, kPrefixed.size()) != kPrefixed) return std::nullopt;
  return attribute.substr(kPrefixed.size());
}

std::string_view LocalName(std::string_view name) {
  size_t colon = name.find(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

// What wraps the document's data, if the element does. Adds what it declares.
std::optional<Wrapping> AsWrapper(const XmlTag& tag, Namespaces& in_scope) {
  Namespaces inner = in_scope;
  for (const XmlAttribute& attribute : tag.attributes) {
    if (auto prefix = DeclaredPrefix(attribute.name)) {
      inner[*prefix] = attribute.value;
    }
  }
  size_t colon = std::min(tag.name.find(':'), tag.name.size());
  bool prefixed = colon < tag.name.size();
  std::string_view prefix = prefixed ? tag.name.substr(0, colon) : "";
  std::string_view local = LocalName(tag.name);
  auto ns = inner.find(prefix);
  if (ns == inner.end()) return std::nullopt;
  std::optional<Wrapping> wrapping;
  if (ns->second == kConfigNamespace && local == "config") {
    wrapping = Wrapping::kConfig;
  } else if (ns->second == kNetconfNamespace &&
             (local == "rpc-reply" || local == "data" || local == "config")) {
    wrapping = Wrapping::kNetconf;
  }
  if (!wrapping) return std::nullopt;
  in_scope = std::move(inner);
  return wrapping;
}

// Metadata would be dropped, and a node that is marked for deletion kept. What
// else a wrapper says of itself goes with it.
void RefuseMetadata(std::string_view text, const XmlTag& tag, bool wraps) {
  for (const XmlAttribute& attribute : tag.attributes) {
    if (DeclaredPrefix(attribute.name)) continue;
    if (wraps && LocalName(attribute.name) != "operation") continue;
    FailAt(text, static_cast<size_t>(attribute.name.data() - text.data()),
           "the attribute \"" + std::string(attribute.name) + "\" of <" +
               std::string(tag.name) +
               "> can't be kept: a configuration holds nodes and values only");
  }
}

// The prefixes among `known` that stand before a colon anywhere in the text, in
// a name or in a value. Takes time in proportion to the text.
std::set<std::string_view> PrefixesIn(std::string_view text,
                                      const Namespaces& known) {
  std::set<std::string_view> found;
  for (size_t colon = text.find(':'); colon != std::string_view::npos;
       colon = text.find(':', colon + 1)) {
    size_t begin = colon;
    while (begin > 0 && IsXmlNameCharacter(text[begin - 1])) --begin;
    std::string_view word = text.substr(begin, colon - begin);
    if (!word.empty() && known.count(word) > 0) found.insert(word);
  }
  return found;
}

// A text with the line ends that it came with, by places in the one where they
// are line feeds.
class Original {
 public:
  explicit Original(std::string_view text) : text_(text) {}

  // Places must not go back.
  size_t At(size_t offset) {
    for (; offset_ < offset; ++offset_) {
      if (text_.compare(at_, 2, "\r\n") == 0) ++at_;
      ++at_;
    }
    return at_;
  }
  std::string Between(size_t begin, size_t end) {
    const size_t first = At(begin);
    return std::string(text_.substr(first, At(end) - first));
  }

 private:
  const std::string_view text_;
  size_t offset_ = 0;
  size_t at_ = 0;
};

// Takes wrappers off and hands on what they declare; takes out what no model
// knows.
class XmlUnwrapper {
 public:
  // `original`: the text before its line ends became line feeds.
  XmlUnwrapper(std::string& text, std::string_view original,
               const KnowsModule& knows, std::vector<Carried>& carried)
      : text_(text),
        view_(text),
        scanner_(view_),
        original_(original),
        knows_(knows),
        carried_(carried) {}

  Wrapping Run() {
    while (const XmlTag* tag = scanner_.Next()) {
      if (tag->kind == XmlTag::Kind::kClose) {
        Close(*tag);
      } else {
        Open(*tag);
      }
    }
    if (!open_.empty()) {
      FailAt(view_, view_.size(),
             "the document ends before </" + std::string(open_.back()) + ">");
    }
    if (!seen_) FailAt(view_, 0, "there is no XML element in it");
    if (!has_known_) {
      carried_.clear();
      carried_elements_.clear();
      declarations_ = std::move(carried_declarations_);
    }
    // The views end here: the text changes.
    for (const auto& [begin, end] : wrapper_tags_) BlankOut(text_, begin, end);
    for (const auto& [begin, end] : carried_elements_) {
      BlankOut(text_, begin, end);
    }
    ApplyEdits(text_, declarations_);
    return wrapping_;
  }

 private:
  void Open(const XmlTag& tag) {
    seen_ = true;
    if (wrapper_ended_) {
      FailAt(view_, tag.begin,
             "<" + std::string(tag.name) +
                 "> stands behind what is to hold the whole configuration");
    }
    if (!data_begun_ && EnterWrapper(tag)) return;
    if (wrapping_ == Wrapping::kNetconf && open_.size() == wrappers_ &&
        LocalName(tag.name) == "rpc-error") {
      FailAt(view_, tag.begin,
             "it is NETCONF's answer to a request that failed (<rpc-error>) "
             "and holds no configuration");
    }
    data_begun_ = true;
    RefuseMetadata(view_, tag, false);
    if (open_.size() == wrappers_) BeginData(tag);
    if (tag.kind == XmlTag::Kind::kOpen) {
      open_.push_back(tag.name);
    } else if (open_.size() == wrappers_) {
      EndData(tag.end);
    }
    if (open_.size() > kMaxDepth) {
      FailAt(view_, tag.begin,
             "the elements are nested more than " + std::to_string(kMaxDepth) +
                 " deep, which no data model is");
    }
  }

  bool EnterWrapper(const XmlTag& tag) {
    auto wrapping = AsWrapper(tag, in_scope_);
    if (!wrapping) return false;
    RefuseMetadata(view_, tag, true);
    if (wrapping_ == Wrapping::kNone) wrapping_ = *wrapping;
    wrapper_tags_.emplace_back(tag.begin, tag.end);
    if (tag.kind == XmlTag::Kind::kEmpty) {
      wrapper_ended_ = true;
    } else {
      open_.push_back(tag.name);
      ++wrappers_;
    }
    return true;
  }

  void Close(const XmlTag& tag) {
    if (open_.empty() || open_.back() != tag.name) {
      FailAt(view_, tag.begin,
             "</" + std::string(tag.name) + "> closes " +
                 (open_.empty() ? "nothing"
                                : "<" + std::string(open_.back()) + ">"));
    }
    open_.pop_back();
    if (open_.size() == wrappers_) {
      EndData(tag.end);
    } else if (open_.size() < wrappers_) {
      wrapper_tags_.emplace_back(tag.begin, tag.end);
      wrapper_ended_ = true;
      wrappers_ = open_.size();
    }
  }

  // An element of the data that stands in no other begins or ends.
  void BeginData(const XmlTag& tag) {
    data_begin_ = tag.begin;
    name_end_ =
        static_cast<size_t>(tag.name.data() - view_.data()) + tag.name.size();
    declared_.clear();
    for (const XmlAttribute& attribute : tag.attributes) {
      declared_.insert(*DeclaredPrefix(attribute.name));
    }
    data_name_ = LocalName(tag.name);
    const std::string_view ns = NamespaceOf(tag);
    is_carried_ = knows_ && !ns.empty() && !knows_(ns);
    if (is_carried_) return;
    has_known_ = true;
    if (knows_) behind_ = OuterName(ns, data_name_);
  }
  void EndData(size_t end) {
    std::string text =
        Declarations(view_.substr(data_begin_, end - data_begin_));
    if (is_carried_) Carry(end, text);
    if (text.empty()) return;
    (is_carried_ ? carried_declarations_ : declarations_)
        .push_back({name_end_, name_end_, std::move(text)});
  }

  void Carry(size_t end, const std::string& declarations) {
    CheckElement(view_, data_begin_, end, [this](std::string_view prefix) {
      return in_scope_.count(prefix) > 0;
    });
    const uint64_t leaves =
        LeavesIn(view_.substr(data_begin_, end - data_begin_), Syntax::kXml);
    std::string text = original_.Between(data_begin_, name_end_);
    text += declarations;
    text += original_.Between(name_end_, end);
    carried_.push_back(
        {std::string(data_name_), std::move(text), leaves, behind_});
    carried_elements_.emplace_back(data_begin_, end);
  }

  // "" for an element that has none.
  std::string_view NamespaceOf(const XmlTag& tag) const {
    const size_t colon = tag.name.find(':');
    const std::string_view prefix =
        colon == std::string_view::npos ? "" : tag.name.substr(0, colon);
    for (const XmlAttribute& attribute : tag.attributes) {
      if (DeclaredPrefix(attribute.name) == prefix) return attribute.value;
    }
    const auto known = in_scope_.find(prefix);
    return known == in_scope_.end() || IsOfWrapper(known->second)
               ? ""
               : known->second;
  }

  static bool IsOfWrapper(std::string_view ns) {
    return ns == kConfigNamespace || ns == kNetconfNamespace;
  }

  // What the wrappers declared and the element needs and does not declare. All
  // of it in each element would be too much where there is much of both.
  std::string Declarations(std::string_view element) const {
    std::string text;
    auto declare = [&](std::string_view prefix, std::string_view ns) {
      if (declared_.count(prefix) > 0) return;
      char quote = ns.find('"') == std::string_view::npos ? '"' : '\'';
      text +=
          prefix.empty() ? " xmlns=" : " xmlns:" + std::string(prefix) + "=";
      text += quote + std::string(ns) + quote;
    };
    auto by_default = in_scope_.find("");
    // The wrapper's own namespace is not one of the data.
    if (by_default != in_scope_.end() && !IsOfWrapper(by_default->second)) {
      declare("", by_default->second);
    }
    for (std::string_view prefix : PrefixesIn(element, in_scope_)) {
      declare(prefix, in_scope_.at(prefix));
    }
    return text;
  }

  std::string& text_;
  const std::string_view view_;
  XmlScanner scanner_;
  std::vector<std::string_view> open_;  // names of open elements
  size_t wrappers_ = 0;                 // how many of the first of them wrap
  Wrapping wrapping_ = Wrapping::kNone;
  Namespaces in_scope_;  // declared by wrappers
  bool seen_ = false;
  bool data_begun_ = false;
  bool wrapper_ended_ = false;
  size_t data_begin_ = 0;
  size_t name_end_ = 0;
  std::set<std::string_view> declared_;
  std::vector<std::pair<size_t, size_t>> wrapper_tags_;
  std::vector<TextEdit> declarations_;

  Original original_;
  const KnowsModule& knows_;  // empty: all are taken for known
  std::vector<Carried>& carried_;
  std::vector<std::pair<size_t, size_t>> carried_elements_;
  std::vector<TextEdit> carried_declarations_;
  std::string_view data_name_;
  std::string behind_;
  bool is_carried_ = false;
  bool has_known_ = false;
};

// ---- JSON -----------------------------------------------------------------

void CheckJsonNesting(std::string_view text) {
  std::string open;
  bool in_string = false;
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (in_string) {
      if (c == '\\') ++i;
      if (c == '"') in_string = false;
    } else if (c == '"') {
      in_string = true;
    } else if (c == '{' || c == '[') {
      open.push_back(c);
      if (open.size() > kMaxDepth) {
        FailAt(text, i,
               "it is nested more than " + std::to_string(kMaxDepth) +
                   " deep, which no data model is");
      }
    } else if (c == '}' || c == ']') {
      if (open.empty() || open.back() != (c == '}' ? '{' : '[')) {
        FailAt(text, i, std::string("'") + c + "' closes nothing");
      }
      open.pop_back();
      // libyang would not read on.
      size_t rest = text.find_first_not_of(kBlanks, i + 1);
      if (open.empty() && rest != std::string_view::npos) {
        FailAt(text, rest, "there is more text behind the JSON object");
      }
    }
  }
  if (in_string) FailAt(text, text.size(), "the document ends inside a string");
  if (!open.empty()) {
    FailAt(text, text.size(),
           std::string("the document ends before '") +
               (open.back() == '{' ? '}' : ']') + "'");
  }
}

// {"data": {...}} and its RESTCONF spelling.
void UnwrapJson(std::string& text, const KnowsModule& knows,
                std::vector<Carried>& carried) {
  CheckJsonNesting(text);
  JsonScanner scanner(text);
  const std::vector<JsonMember> members = scanner.Scan();
  for (const JsonMember& member : members) {
    bool wraps =
        (member.name == "data" || member.name == "ietf-restconf:data") &&
        text[member.value_begin] == '{';
    if (!wraps) continue;
    if (members.size() > 1) {
      const JsonMember& other = members[&member == &members[0] ? 1 : 0];
      FailAt(text, other.name_begin,
             "\"" + std::string(other.name) + "\" stands beside \"" +
                 std::string(member.name) +
                 "\", which is to hold the whole configuration");
    }
    BlankOut(text, text.find('{'), member.value_begin);
    BlankOut(text, member.value_end, text.size());
    break;
  }
  if (knows) carried = TakeUnknownMembers(text, text.find('{'), knows);
  std::vector<TextEdit> pairs = scanner.pairs();
  pairs.erase(std::remove_if(pairs.begin(), pairs.end(),
                             [&text](const TextEdit& pair) {
                               return text[pair.begin] != '\\';
                             }),
              pairs.end());
  ApplyEdits(text, pairs);
}

// The lines of some of the things that a text has in one order.
class LinesOfSome {
 public:
  LinesOfSome(std::string_view text, const std::vector<size_t>& numbers)
      : text_(text), numbers_(numbers), lines_(numbers.size()) {}

  bool has_all() const { return next_ == numbers_.size(); }
  std::vector<size_t> Take() { return std::move(lines_); }

  // One more of them stands there.
  void Add(size_t offset) {
    const size_t number = count_++;
    if (has_all() || numbers_[next_] != number) return;
    line_ += LineOf(text_.substr(at_, offset - at_), offset - at_) - 1;
    at_ = offset;
    while (!has_all() && numbers_[next_] == number) lines_[next_++] = line_;
  }

 private:
  const std::string_view text_;
  const std::vector<size_t>& numbers_;
  std::vector<size_t> lines_;
  size_t next_ = 0;   // of the numbers
  size_t count_ = 0;  // of the things
  size_t at_ = 0;
  size_t line_ = 1;  // of at_
};

// Looks for places in a JSON text that is known to be well-formed.
class JsonFinder {
 public:
  JsonFinder(std::string_view text, const std::vector<std::string>& names,
             LinesOfSome& found)
      : text_(text), names_(names), found_(found) {}

  void Run() { Value(0); }

 private:
  static constexpr size_t kElsewhere = std::string_view::npos;

  // The next character that is no blank; NUL at the end.
  char Peek() {
    at_ = std::min(text_.find_first_not_of(kBlanks, at_), text_.size());
    return at_ < text_.size() ? text_[at_] : '\0';
  }

  std::string_view String() {
    size_t begin = ++at_;
    while (at_ < text_.size() && text_[at_] != '"') {
      at_ += text_[at_] == '\\' ? 2 : 1;
    }
    at_ = std::min(at_ + 1, text_.size());
    return text_.substr(begin, at_ - 1 - begin);
  }

  // `matched` names lead here, or the way has left them. An array is not a
  // place of its own: its elements are.
  void Value(size_t matched) {
    char first = Peek();
    if (first == '[') {
      Sequence(']', [&] { Value(matched); });
      return;
    }
    if (matched == names_.size()) found_.Add(at_);
    if (first == '{') {
      Sequence('}', [&] { Member(matched); });
    } else if (first == '"') {
      String();
    } else {
      at_ = std::min(text_.find_first_of(",]} \t\r\n", at_), text_.size());
    }
  }

  void Member(size_t matched) {
    std::string_view name = String();
    if (Peek() == ':') ++at_;
    bool fits = matched < names_.size() && LocalName(name) == names_[matched];
    Value(fits ? matched + 1 : kElsewhere);
  }

  template <typename Element>
  void Sequence(char end, const Element& element) {
    ++at_;
    while (!found_.has_all() && Peek() != end && at_ < text_.size()) {
      element();
      if (Peek() == ',') ++at_;
    }
    at_ = std::min(at_ + 1, text_.size());
  }

  std::string_view text_;
  const std::vector<std::string>& names_;
  LinesOfSome& found_;
  size_t at_ = 0;
};

void FindElements(std::string_view xml, const std::vector<std::string>& names,
                  LinesOfSome& found) {
  XmlScanner scanner(xml);
  size_t depth = 0;
  size_t matching = 0;  // how many open elements are those of `names`
  while (!found.has_all()) {
    const XmlTag* tag = scanner.Next();
    if (tag == nullptr) return;
    if (tag->kind == XmlTag::Kind::kClose) {
      if (matching == depth) --matching;
      --depth;
      continue;
    }
    bool fits = matching == depth && depth < names.size() &&
                LocalName(tag->name) == names[depth];
    if (fits && depth + 1 == names.size()) found.Add(tag->begin);
    if (tag->kind == XmlTag::Kind::kEmpty) continue;
    if (fits) ++matching;
    ++depth;
  }
}

// As XML's rules say; a carriage return of the data is written as "&#13;".
void NormalizeLineEnds(std::string& text) {
  size_t out = text.find('\r');
  if (out == std::string::npos) return;
  for (size_t in = out; in < text.size(); ++in) {
    bool is_return = text[in] == '\r';
    if (is_return && in + 1 < text.size() && text[in + 1] == '\n') continue;
    text[out++] = is_return ? '\n' : text[in];
  }
  text.resize(out);
}

// The encoding that a byte order mark, or the zero bytes of the first two
// characters, give away; "" for none.
std::string_view WideEncoding(std::string_view text) {
  struct Mark {
    std::string_view bytes;
    std::string_view encoding;
  };
  using namespace std::string_view_literals;
  // The longer ones first.
  static constexpr Mark kMarks[] = {{"\xff\xfe\0\0"sv, "UTF-32"},
                                    {"\0\0\xfe\xff"sv, "UTF-32"},
                                    {"\xff\xfe"sv, "UTF-16"},
                                    {"\xfe\xff"sv, "UTF-16"}};
  for (const Mark& mark : kMarks) {
    if (text.substr(0, mark.bytes.size()) == mark.bytes) return mark.encoding;
  }
  constexpr size_t kTwoCharacters = 4;
  if (text.size() < kTwoCharacters) return "";
  std::string zeros;
  for (const char c : text.substr(0, kTwoCharacters)) {
    zeros += c == '\0' ? '0' : 'x';
  }
  if (zeros == "x0x0") return "UTF-16LE";
  if (zeros == "0x0x") return "UTF-16BE";
  return "";
}

// The encoding that an XML declaration names; "" for none.
std::string_view DeclaredEncoding(std::string_view text) {
  constexpr std::string_view kKey = "encoding=";
  if (text.substr(0, text.find('<') + 5).find("<?xml") ==
      std::string_view::npos) {
    return "";
  }
  text = text.substr(0, text.find("?>"));
  const size_t key = text.find(kKey);
  if (key == std::string_view::npos) return "";
  text.remove_prefix(key + kKey.size());
  if (text.empty()) return "";
  const std::string_view name = text.substr(1, text.find(text[0], 1) - 1);
  constexpr std::string_view kNameCharacters =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-:";
  if (name.find_first_not_of(kNameCharacters) != std::string_view::npos) {
    return "";
  }
  return name;
}

[[noreturn]] void FailForEncoding(std::string_view text, size_t offset,
                                  std::string_view encoding) {
  FailAt(text, offset,
         "it is in " + std::string(encoding) +
             ", not in UTF-8; this converts it: iconv -f " +
             std::string(encoding) + " -t UTF-8 OLD > NEW");
}

void RequireText(std::string_view text) {
  if (text::IsYangText(text)) return;
  const std::string_view declared = DeclaredEncoding(text);
  for (size_t begin = 0; begin < text.size();) {
    size_t end = std::min(text.find('\n', begin), text.size());
    if (!text::IsYangText(text.substr(begin, end - begin))) {
      if (!declared.empty() && declared != "UTF-8" && declared != "utf-8") {
        FailForEncoding(text, begin, declared);
      }
      FailAt(text, begin,
             "it holds bytes that are no UTF-8 text, or characters that no "
             "configuration may hold");
    }
    begin = end + 1;
  }
}

}  // namespace

Envelope Unwrap(std::string& text) {
  std::vector<Carried> none;
  return Unwrap(text, nullptr, none);
}

Envelope Unwrap(std::string& text, const KnowsModule& knows,
                std::vector<Carried>& carried) {
  constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
  if (text.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0) {
    BlankOut(text, 0, kByteOrderMark.size());
  }
  if (const auto encoding = WideEncoding(text); !encoding.empty()) {
    FailForEncoding(text, 0, encoding);
  }
  if (size_t zero = text.find('\0'); zero != std::string::npos) {
    FailAt(text, zero, "it holds binary data; XML or JSON text is needed");
  }
  // A NETCONF session's end-of-message mark often stays in a capture.
  constexpr std::string_view kEndOfMessage = "]]>]]>";
  size_t last = text.find_last_not_of(kBlanks);
  if (last != std::string::npos && last + 1 >= kEndOfMessage.size()) {
    size_t mark = last + 1 - kEndOfMessage.size();
    if (text.compare(mark, kEndOfMessage.size(), kEndOfMessage) == 0) {
      BlankOut(text, mark, last + 1);
    }
  }
  size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) {
    FailAt(text, 0, "it is empty; XML or JSON text is needed");
  }
  if (text[first] != '<' && text[first] != '{') {
    FailAt(text, first,
           "it is neither XML (which begins with '<') nor JSON (with '{')");
  }
  RequireText(text);
  if (text[first] == '<') {
    const bool has_returns = knows && text.find('\r') != std::string::npos;
    const std::string original = has_returns ? text : "";
    NormalizeLineEnds(text);
    return {Syntax::kXml,
            XmlUnwrapper(text, has_returns ? original : text, knows, carried)
                .Run()};
  }
  UnwrapJson(text, knows, carried);
  return {Syntax::kJson, Wrapping::kNone};
}

std::vector<size_t> LinesOfInstances(std::string_view text, Syntax syntax,
                                     const std::vector<std::string>& names,
                                     const std::vector<size_t>& numbers) {
  LinesOfSome found(text, numbers);
  if (syntax == Syntax::kXml) {
    FindElements(text, names, found);
  } else {
    JsonFinder(text, names, found).Run();
  }
  return found.Take();
}

std::string_view Opening(const Envelope& envelope) {
  switch (envelope.wrapping) {
    case Wrapping::kConfig:
      return "<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n";
    case Wrapping::kNetconf:
      return "<config xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\">\n";
    case Wrapping::kNone:
      break;
  }
  return "";
}

std::string_view Closing(const Envelope& envelope) {
  return envelope.wrapping == Wrapping::kNone ? "" : "</config>\n";
}

}  // namespace kit::store
