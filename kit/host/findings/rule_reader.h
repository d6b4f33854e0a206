// Catalogues of rules as JSON; docs/findings.md says how they are written.
#ifndef KIT_HOST_FINDINGS_RULE_READER_H_
#define KIT_HOST_FINDINGS_RULE_READER_H_

#include <string>

#include "kit/host/findings/rule.h"

namespace kit::host {

// `file` stands for the text in messages. Throws RuleError.
Catalogue ReadCatalogue(const std::string& text, const std::string& file,
                        bool is_own);

// The same for a file. Throws RuleError too for one that can't be read.
Catalogue LoadCatalogue(const std::string& file, bool is_own);

}  // namespace kit::host

#endif  // KIT_HOST_FINDINGS_RULE_READER_H_
