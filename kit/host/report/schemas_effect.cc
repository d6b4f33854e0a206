#include "kit/host/report/schemas_effect.h"

#include <fmt/format.h>

#include "kit/host/text.h"

namespace kit::host {

std::string EffectOfSchemas(const SchemasMessage& schemas) {
  switch (schemas.effect) {
    case SchemaEffect::kNone:
    case SchemaEffect::kUnknown:
      return "";
    case SchemaEffect::kFails:
      return fmt::format(
          "update returns {}, and the device gives the upgrade up",
          schemas.number);
    case SchemaEffect::kDies:
      return "update does not return, and the device has no upgrade";
    case SchemaEffect::kInvalid:
      return fmt::format(
          "the result breaks the new model in {}, and the device gives the "
          "upgrade up",
          Counted(static_cast<uint64_t>(schemas.number), "place", "places"));
    case SchemaEffect::kOtherResult:
      return "the device gets another configuration";
  }
  return "";
}

}  // namespace kit::host
