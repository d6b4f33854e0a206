#include "kit/host/findings/message.h"

namespace kit::host {

Sentence::Sentence(std::string_view text) {
  for (size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (c != '{' && c != '}') {
      texts_.back() += c;
    } else if (text.substr(at + 1, 1) == std::string_view(&c, 1)) {
      texts_.back() += c;
      ++at;
    } else if (c == '}') {
      throw SentenceError(at,
                          "a brace is closed that nobody opened; "
                          "write }} for the brace itself");
    } else {
      at = AddPlace(text, at);
    }
  }
}

size_t Sentence::AddPlace(std::string_view text, size_t begin) {
  const size_t end = text.find('}', begin);
  if (end == std::string_view::npos) {
    throw SentenceError(begin,
                        "the brace is not closed; write {{ for the brace "
                        "itself");
  }
  if (end == begin + 1) {
    throw SentenceError(begin, "nothing stands in the braces");
  }
  places_.push_back(
      {std::string(text.substr(begin + 1, end - begin - 1)), begin});
  texts_.emplace_back();
  return end;
}

std::string Sentence::Fill(
    const std::function<std::string(size_t)>& value) const {
  std::string filled = texts_.front();
  for (size_t i = 0; i < places_.size(); ++i) {
    filled += value(i);
    filled += texts_[i + 1];
  }
  return filled;
}

}  // namespace kit::host
