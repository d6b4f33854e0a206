// Constraints that do not count for a while.
#ifndef KIT_CONFD_DOCUMENT_LIFTED_H_
#define KIT_CONFD_DOCUMENT_LIFTED_H_

#include <functional>
#include <vector>

struct lysc_node;
struct lysc_type;

namespace kit::store {

// Null for what is no leaf or leaf-list.
lysc_type* TypeOf(const lysc_node* schema);

// Lifts constraints of compiled models, until it goes.
class Lifted {
 public:
  Lifted() = default;
  ~Lifted();
  Lifted(const Lifted&) = delete;
  Lifted& operator=(const Lifted&) = delete;

  // That it has to be there, or the fewest there have to be.
  void Mandatory(const lysc_node* schema);
  // The most there may be.
  void Most(const lysc_node* schema);
  // Of a container, list, leaf or leaf-list.
  void Musts(const lysc_node* schema);
  // Of a list.
  void Uniques(const lysc_node* schema);
  // That what it points to has to be there. False for a type that is no
  // reference, unions of such among them.
  bool Reference(const lysc_node* schema);

 private:
  template <typename T, typename U>
  void Set(T& place, U value);

  std::vector<std::function<void()>> undo_;
};

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_LIFTED_H_
