// What the text of an XPath expression tells about what it looks at.
#ifndef KIT_CONFD_MODEL_EXPRESSION_H_
#define KIT_CONFD_MODEL_EXPRESSION_H_

#include <string>
#include <string_view>
#include <vector>

namespace kit::store {

// Where an expression is evaluated: names of nodes from the context up to the
// one that it is not to leave, that one last.
struct ExpressionContext {
  std::vector<std::string> names;
  bool is_leaf;
};

struct ExpressionUse {
  // It sees nothing but nodes inside the last one of the context, whatever the
  // data are. Said only of simple expressions: no predicates, axes, wildcards
  // or absolute paths.
  bool stays_inside = false;
  // More counts of a node than that it exists.
  bool reads_values = true;
};

ExpressionUse LookAtExpression(std::string_view expression,
                               const ExpressionContext& context);

}  // namespace kit::store

#endif  // KIT_CONFD_MODEL_EXPRESSION_H_
