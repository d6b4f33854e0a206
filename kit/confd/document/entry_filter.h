// Which entries of a list an XPath expression is true for.
#ifndef KIT_CONFD_DOCUMENT_ENTRY_FILTER_H_
#define KIT_CONFD_DOCUMENT_ENTRY_FILTER_H_

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "kit/confd/tree/data.h"

struct lyd_node;

namespace kit::store {

// Of one list, which stands in `data`. Each entry is judged once, with all
// others that are there by then: a judgement takes a copy of all data.
class EntryFilter {
 public:
  // The expression's context is the entry; names have the prefixes of modules,
  // or none for those of the context's module.
  EntryFilter(const Data& data, std::string_view expression);

  const std::string& expression() const { return expression_; }

  // Whether the expression is true for the entry, by its value as a boolean and
  // with the defaults that hold. Throws Error with kXpath for what is no
  // expression.
  bool Passes(const Node& entry);

 private:
  struct IsLess {
    bool operator()(const std::vector<Value>& a,
                    const std::vector<Value>& b) const {
      return Compare(KeyView{a.data(), a.size()}, {b.data(), b.size()}) < 0;
    }
  };

  void JudgeListOf(const Node& entry);
  bool IsTrue(const lyd_node* entry) const;

  const Data& data_;
  const std::string expression_;
  const std::string for_libyang_;
  std::map<std::vector<Value>, bool, IsLess> verdicts_;  // by the keys
};

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_ENTRY_FILTER_H_
