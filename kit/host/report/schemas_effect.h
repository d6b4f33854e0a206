// What becomes of the upgrade where the plug-in finds the schemas the other
// way.
#ifndef KIT_HOST_REPORT_SCHEMAS_EFFECT_H_
#define KIT_HOST_REPORT_SCHEMAS_EFFECT_H_

#include <string>

#include "kit/host/process/protocol.h"

namespace kit::host {

// What a device makes of it; "" if nothing, or if it is not known.
std::string EffectOfSchemas(const SchemasMessage& schemas);

}  // namespace kit::host

#endif  // KIT_HOST_REPORT_SCHEMAS_EFFECT_H_
