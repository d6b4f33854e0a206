// Where the plug-in and the data models are when nobody names them: beside the
// executable, as the install rules and the build tree lay them out.
#ifndef KIT_HOST_COMMANDS_INSTALL_PATHS_H_
#define KIT_HOST_COMMANDS_INSTALL_PATHS_H_

#include <filesystem>
#include <string>

namespace kit::host {

// Throws FailureError (kNotLoaded) that names the paths looked at.
std::filesystem::path DefaultPlugin();

// A file of the rules and tables that come with this program. Throws
// FailureError (kBadInput).
std::filesystem::path DefaultRules(const char* file);

// Of one of kReleases. Throws FailureError (kBadInput).
std::filesystem::path DefaultModels(const std::string& release);

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_INSTALL_PATHS_H_
