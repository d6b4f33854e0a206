// What a configuration may come wrapped in, and a first look at its form.
#ifndef KIT_CONFD_DOCUMENT_ENVELOPE_H_
#define KIT_CONFD_DOCUMENT_ENVELOPE_H_

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/confd/document/text_fault.h"

namespace kit::store {

enum class Syntax { kXml, kJson };

enum class Wrapping {
  kNone,
  kConfig,  // <config xmlns="http://tail-f.com/ns/config/1.0">
  kNetconf  // <rpc-reply>, <data>, <config> of NETCONF's base namespace
};

struct Envelope {
  Syntax syntax;
  Wrapping wrapping = Wrapping::kNone;
};

// Tells XML from JSON and takes wrappers off by overwriting them with blanks,
// so that lines keep their numbers. Namespace prefixes that a wrapper declares
// go to the elements below it. Throws EnvelopeError for a text that is empty,
// binary, not well-formed enough to find its way around, or nested so deep that
// a recursive parser would overflow its stack.
Envelope Unwrap(std::string& text);

struct Carried;

// Whether a model knows the namespace of an element, the module of a member.
using KnowsModule = std::function<bool(std::string_view module)>;

// Takes the outermost nodes of modules that are not known out of the text too,
// unless there are no others; what is left are blanks.
Envelope Unwrap(std::string& text, const KnowsModule& knows,
                std::vector<Carried>& carried);

// The lines, from 1, of those instances of the node that has these names from
// the top whose numbers (from 0, in the order of the text) these are, in
// ascending order; prefixes and modules do not count. 0 for what is not there.
// The text must be well-formed.
std::vector<size_t> LinesOfInstances(std::string_view text, Syntax syntax,
                                     const std::vector<std::string>& names,
                                     const std::vector<size_t>& numbers);

// The opening and closing text that puts a document into a wrapper.
std::string_view Opening(const Envelope& envelope);
std::string_view Closing(const Envelope& envelope);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_ENVELOPE_H_
