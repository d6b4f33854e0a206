// Names of keys by the data models of open sessions.
#ifndef KIT_CONFD_API_KEY_NAMES_H_
#define KIT_CONFD_API_KEY_NAMES_H_

#include <confd_lib.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "kit/confd/api/path_format.h"
#include "kit/confd/model/schema.h"

namespace kit::api {

// For paths of calls: by the model that the call works on. Relative paths start
// at `place`, a path; "" is the root.
class ModelNames : public Names {
 public:
  ModelNames(const store::Schema& schema, const store::Module* selected,
             const std::string& place)
      : schema_(schema), selected_(selected), place_(place) {}
  std::optional<std::string> KeyText(std::string_view list_path,
                                     size_t key_index,
                                     const confd_value_t& value) const override;
  std::optional<std::string> NodeName(std::string_view path,
                                      const xml_tag& tag) const override;

 private:
  const store::Schema& schema_;
  const store::Module* selected_;
  const std::string& place_;
};

// For text: by the models of all open sessions, those of transactions first, as
// far as the process has loaded their schemas, and in absolute paths only.
// Notes where text depends on that.
class LoadedNames : public Names {
 public:
  std::optional<std::string> KeyText(std::string_view list_path,
                                     size_t key_index,
                                     const confd_value_t& value) const override;
  std::optional<std::string> NodeName(std::string_view path,
                                      const xml_tag& tag) const override;
};

}  // namespace kit::api

#endif  // KIT_CONFD_API_KEY_NAMES_H_
