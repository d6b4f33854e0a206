// Hands changes of a tree to the process's observer.
#ifndef KIT_CONFD_CONTROL_CHANGE_TELLER_H_
#define KIT_CONFD_CONTROL_CHANGE_TELLER_H_

#include <vector>

#include "kit/confd/control/control.h"
#include "kit/confd/tree/tree.h"

namespace kit::control {

// Who is told of calls and changes; null for nobody.
Observer* CurrentObserver();

class ChangeTeller : public store::TreeWatcher {
 public:
  void OnCreated(const store::Node& entry) override;
  void OnDeleted(const store::Node& entry) override;
  void OnRenamed(const store::Node& entry,
                 const std::vector<store::Value>& old_keys) override;
  void OnMoved(const store::Node& entry) override;
  void OnValue(const store::Node& holder, const store::SchemaNode& child,
               const store::Cell* before, const store::Cell* after) override;
};

}  // namespace kit::control

#endif  // KIT_CONFD_CONTROL_CHANGE_TELLER_H_
