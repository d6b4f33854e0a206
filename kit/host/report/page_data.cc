#include "kit/host/report/page_data.h"

#include <algorithm>

#include "kit/host/digest.h"
#include "kit/host/report/page/page_files.h"
#include "kit/host/text.h"

namespace kit::host {
namespace {

// Most texts have nothing to escape, and looking is quicker than escaping.
bool IsPlain(std::string_view text) {
  return text.size() <= kMaxShown &&
         std::all_of(text.begin(), text.end(), [](char c) {
           return c >= ' ' && c <= '~' && c != '\\' && c != '"' && c != '<' &&
                  c != '>' && c != '&' && c != '\'';
         });
}

}  // namespace

std::string Html(std::string_view text) {
  if (IsPlain(text)) return std::string(text);
  std::string html;
  for (const char c : OneLine(text)) {
    switch (c) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      case '\'':
        html += "&#39;";
        break;
      default:
        html += c;
    }
  }
  return html;
}

std::string Filled(std::string_view page,
                   const std::map<std::string_view, std::string>& values) {
  std::string text;
  for (;;) {
    const size_t begin = page.find("{{");
    text += page.substr(0, begin);
    if (begin == std::string_view::npos) return text;
    const size_t end = page.find("}}", begin);
    text += values.at(page.substr(begin + 2, end - begin - 2));
    page.remove_prefix(end + 2);
  }
}

std::string PageHead(const std::string& title, const std::string& version,
                     const std::string& style, const std::string& script) {
  return Filled(kHeadHtml, {{"title", Html(title)},
                            {"version", Html(version)},
                            {"style", style},
                            {"style-sum", Sha256Base64(style)},
                            {"script-sum", Sha256Base64(script)}});
}

void PageJson::Separate() {
  if (needs_comma_) out_ += ',';
  needs_comma_ = true;
}

void PageJson::Begin(char bracket) {
  Separate();
  out_ += bracket;
  needs_comma_ = false;
}

void PageJson::End(char bracket) {
  out_ += bracket;
  needs_comma_ = true;
}

void PageJson::Key(std::string_view name) {
  Separate();
  Quote(name);
  out_ += ':';
  needs_comma_ = false;
}

void PageJson::Add(std::string_view text) {
  Separate();
  Quote(text);
}

void PageJson::Add(uint64_t number) {
  Separate();
  out_ += std::to_string(number);
}

void PageJson::AddNull() {
  Separate();
  out_ += "null";
}

void PageJson::Add(std::string_view name, std::string_view text) {
  Key(name);
  Add(text);
}

void PageJson::Add(std::string_view name, uint64_t number) {
  Key(name);
  Add(number);
}

void PageJson::Quote(std::string_view text) {
  out_ += '"';
  if (IsPlain(text)) {
    out_ += text;
  } else {
    for (const char c : OneLine(text)) {
      switch (c) {
        case '"':
          out_ += "\\\"";
          break;
        case '\\':
          out_ += "\\\\";
          break;
        case '<':  // </script>, <!--
          out_ += "\\u003c";
          break;
        default:
          out_ += c;
      }
    }
  }
  out_ += '"';
}

uint64_t TextTable::NumberOf(std::string_view text) {
  const auto [known, is_new] =
      numbers_.emplace(std::string(text), numbers_.size() + 1);
  if (is_new) texts_.push_back(&known->first);
  return known->second;
}

void TextTable::Write(PageJson& json) const {
  json.Begin('[');
  json.AddNull();
  for (const std::string* text : texts_) json.Add(*text);
  json.End(']');
}

}  // namespace kit::host
