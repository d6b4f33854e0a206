#include "kit/confd/document/json_scanner.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "kit/confd/document/text_fault.h"

namespace kit::store {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

constexpr uint32_t kSurrogateMask = 0xfffffc00;
constexpr uint32_t kHighSurrogate = 0xd800;
constexpr uint32_t kLowSurrogate = 0xdc00;

// What a pair of surrogates stands for, in UTF-8.
std::string Character(uint32_t high, uint32_t low) {
  uint32_t point =
      0x10000 + ((high - kHighSurrogate) << 10) + (low - kLowSurrogate);
  std::string bytes;
  bytes += static_cast<char>(0xf0 | point >> 18);
  for (int shift = 12; shift >= 0; shift -= 6) {
    bytes += static_cast<char>(0x80 | (point >> shift & 0x3f));
  }
  return bytes;
}

}  // namespace

std::vector<JsonMember> JsonScanner::Scan() {
  std::vector<JsonMember> members;
  Peek();
  Sequence('}', [&] { members.push_back(Member()); });
  return members;
}

std::vector<size_t> JsonScanner::Elements(size_t begin) {
  std::vector<size_t> begins;
  at_ = begin;
  Sequence(']', [&] {
    Peek();
    begins.push_back(at_);
    Value();
  });
  begins.push_back(at_);
  return begins;
}

char JsonScanner::Peek() {
  at_ = std::min(text_.find_first_not_of(kBlanks, at_), text_.size());
  return at_ < text_.size() ? text_[at_] : '\0';
}

void JsonScanner::FailHere(const char* needed) const {
  FailAt(text_, at_,
         "unexpected " + ShowCharacter(text_, at_) + " where " + needed +
             " is needed");
}

template <typename Item>
void JsonScanner::Sequence(char end, const Item& item) {
  ++at_;
  if (Peek() != end) {
    item();
    while (Peek() == ',') {
      ++at_;
      item();
    }
  }
  if (Peek() != end) FailHere(end == '}' ? "',' or '}'" : "',' or ']'");
  ++at_;
}

JsonMember JsonScanner::Member() {
  JsonMember member{};
  if (Peek() != '"') FailHere("a member's name in quotes");
  member.name_begin = at_;
  member.name = String();
  if (!member.name.empty() && member.name.front() == '@') {
    FailAt(text_, member.name_begin,
           "the metadata \"" + std::string(member.name) +
               "\" can't be kept: a configuration holds nodes and values only");
  }
  if (Peek() != ':') FailHere("':'");
  ++at_;
  Peek();
  member.value_begin = at_;
  member.size = Value();
  member.value_end = at_;
  return member;
}

size_t JsonScanner::Value() {
  size_t size = 1;
  char first = Peek();
  if (first == '{') {
    Sequence('}', [this] { Member(); });
  } else if (first == '[') {
    size = 0;
    Sequence(']', [&] {
      Value();
      ++size;
    });
  } else if (first == '"') {
    String();
  } else if (first == '-' || IsDigit(first)) {
    Number();
  } else if (first == 't') {
    Word("true");
  } else if (first == 'f') {
    Word("false");
  } else if (first == 'n') {
    Word("null");
  } else {
    FailHere("a value");
  }
  return size;
}

void JsonScanner::Word(std::string_view word) {
  if (text_.compare(at_, word.size(), word) != 0) FailHere("a value");
  at_ += word.size();
}

void JsonScanner::Number() {
  if (At('-')) ++at_;
  if (At('0')) {
    ++at_;
  } else {
    Digits();
  }
  if (At('.')) {
    ++at_;
    Digits();
  }
  if (At('e') || At('E')) {
    ++at_;
    if (At('+') || At('-')) ++at_;
    Digits();
  }
}

void JsonScanner::Digits() {
  if (at_ == text_.size() || !IsDigit(text_[at_])) FailHere("a digit");
  while (at_ < text_.size() && IsDigit(text_[at_])) ++at_;
}

std::string_view JsonScanner::String() {
  size_t begin = ++at_;
  while (!At('"')) {
    if (at_ == text_.size() || static_cast<unsigned char>(text_[at_]) < ' ') {
      FailAt(text_, at_, "a string is not closed in its line");
    }
    if (At('\\')) {
      Escape();
    } else {
      ++at_;
    }
  }
  return text_.substr(begin, at_++ - begin);
}

void JsonScanner::Escape() {
  size_t begin = at_++;
  if (!At('u')) {
    char kind = at_ < text_.size() ? text_[at_] : '\0';
    if (std::string_view("\"\\/bfnrt").find(kind) == std::string_view::npos) {
      FailAt(text_, begin, "a backslash begins no escape sequence");
    }
    ++at_;
    return;
  }
  ++at_;
  uint32_t first = Unit();
  if ((first & kSurrogateMask) == kHighSurrogate &&
      text_.compare(at_, 2, "\\u") == 0) {
    at_ += 2;
    uint32_t second = Unit();
    if ((second & kSurrogateMask) == kLowSurrogate) {
      pairs_.push_back({begin, at_, Character(first, second)});
      return;
    }
  }
  if (first >= kHighSurrogate && first < kLowSurrogate + 0x400) {
    FailAt(text_, begin, "half of a surrogate pair stands alone");
  }
}

uint32_t JsonScanner::Unit() {
  uint32_t unit = 0;
  const char* begin = text_.data() + at_;
  size_t size = std::min<size_t>(text_.size() - at_, 4);
  auto [stop, error] = std::from_chars(begin, begin + size, unit, 16);
  at_ += static_cast<size_t>(stop - begin);
  if (stop != begin + 4) FailHere("a digit of a character's number");
  return unit;
}

}  // namespace kit::store
