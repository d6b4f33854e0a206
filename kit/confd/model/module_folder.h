// The YANG modules of one folder.
#ifndef KIT_CONFD_MODEL_MODULE_FOLDER_H_
#define KIT_CONFD_MODEL_MODULE_FOLDER_H_

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

struct ly_ctx;

namespace kit::store {

struct ModuleFile {
  std::filesystem::path path;  // ends in "NAME.yang" or "NAME@REVISION.yang"
  std::string name;
  std::string revision;  // "" where the file's name has none
  std::string text;
  bool is_submodule;
};

class ModuleFolder {
 public:
  // Reads every *.yang file of the folder and nothing below it. Throws
  // SchemaError: where there is none, where one is no regular file, and where
  // two that differ are of one name.
  explicit ModuleFolder(const std::filesystem::path& directory);

  // By name.
  const std::vector<ModuleFile>& files() const { return files_; }

  // Has libyang take what modules import and include from this folder, which
  // must outlive its loading.
  void ServeImports(ly_ctx* context) const;

  // Null for none.
  const ModuleFile* Find(std::string_view name) const;

 private:
  std::vector<ModuleFile> files_;
};

}  // namespace kit::store

#endif  // KIT_CONFD_MODEL_MODULE_FOLDER_H_
