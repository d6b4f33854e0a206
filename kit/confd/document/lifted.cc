#include "kit/confd/document/lifted.h"

#include <libyang/libyang.h>

#include <algorithm>
#include <cstdint>

namespace kit::store {
namespace {

template <typename T>
T* As(const lysc_node* node) {
  return reinterpret_cast<T*>(const_cast<lysc_node*>(node));
}

// Of a reference; null for other types.
uint8_t* RequireInstanceOf(lysc_type* type) {
  if (type == nullptr) return nullptr;
  if (type->basetype == LY_TYPE_LEAFREF) {
    return &reinterpret_cast<lysc_type_leafref*>(type)->require_instance;
  }
  if (type->basetype == LY_TYPE_INST) {
    return &reinterpret_cast<lysc_type_instanceid*>(type)->require_instance;
  }
  return nullptr;
}

}  // namespace

lysc_type* TypeOf(const lysc_node* schema) {
  if (schema->nodetype == LYS_LEAF) return As<lysc_node_leaf>(schema)->type;
  if (schema->nodetype == LYS_LEAFLIST) {
    return As<lysc_node_leaflist>(schema)->type;
  }
  return nullptr;
}

Lifted::~Lifted() {
  std::for_each(undo_.rbegin(), undo_.rend(), [](auto& undo) { undo(); });
}

template <typename T, typename U>
void Lifted::Set(T& place, U value) {
  undo_.push_back([&place, old = place] { place = old; });
  place = static_cast<T>(value);
}

void Lifted::Mandatory(const lysc_node* schema) {
  Set(As<lysc_node>(schema)->flags, schema->flags & ~LYS_MAND_TRUE);
  if (schema->nodetype == LYS_LIST) {
    Set(As<lysc_node_list>(schema)->min, 0);
  } else if (schema->nodetype == LYS_LEAFLIST) {
    Set(As<lysc_node_leaflist>(schema)->min, 0);
  }
}

void Lifted::Most(const lysc_node* schema) {
  if (schema->nodetype == LYS_LIST) {
    Set(As<lysc_node_list>(schema)->max, UINT32_MAX);
  } else if (schema->nodetype == LYS_LEAFLIST) {
    Set(As<lysc_node_leaflist>(schema)->max, UINT32_MAX);
  }
}

void Lifted::Musts(const lysc_node* schema) {
  switch (schema->nodetype) {
    case LYS_CONTAINER:
      Set(As<lysc_node_container>(schema)->musts, nullptr);
      return;
    case LYS_LIST:
      Set(As<lysc_node_list>(schema)->musts, nullptr);
      return;
    case LYS_LEAF:
      Set(As<lysc_node_leaf>(schema)->musts, nullptr);
      return;
    case LYS_LEAFLIST:
      Set(As<lysc_node_leaflist>(schema)->musts, nullptr);
      return;
    default:
      return;
  }
}

void Lifted::Uniques(const lysc_node* schema) {
  Set(As<lysc_node_list>(schema)->uniques, nullptr);
}

bool Lifted::Reference(const lysc_node* schema) {
  uint8_t* require_instance = RequireInstanceOf(TypeOf(schema));
  if (require_instance == nullptr) return false;
  Set(*require_instance, 0);
  return true;
}

}  // namespace kit::store
