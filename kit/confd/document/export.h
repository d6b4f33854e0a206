// Our data as a tree of libyang's.
#ifndef KIT_CONFD_DOCUMENT_EXPORT_H_
#define KIT_CONFD_DOCUMENT_EXPORT_H_

#include "kit/confd/document/top_level.h"
#include "kit/confd/tree/data.h"

namespace kit::store {

enum class Extent {
  kAll,
  kSpecimens  // of entries that meet the same constraints, the first
};

// What was set; null for empty data. Throws Error for a value that libyang does
// not take.
LibyangTree Export(const Data& data, Extent extent = Extent::kAll);

}  // namespace kit::store

#endif  // KIT_CONFD_DOCUMENT_EXPORT_H_
