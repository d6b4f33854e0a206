#include "kit/confd/model/module_folder.h"

#include <dirent.h>
#include <libyang/libyang.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>
#include <system_error>
#include <tuple>

#include "kit/confd/model/schema.h"

namespace kit::store {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Fail(const fs::path& path, const std::error_code& error,
                       const char* advice = "") {
  if (error == std::errc::not_enough_memory) throw std::bad_alloc();
  throw SchemaError(path.string() + ": " + error.message() + advice);
}

bool IsSubmodule(std::string_view text) {
  size_t at = text.find_first_not_of(" \t\r\n");
  while (at != std::string_view::npos) {
    if (text.compare(at, 2, "//") == 0) {
      at = text.find('\n', at);
    } else if (text.compare(at, 2, "/*") == 0) {
      at = text.find("*/", at);
      if (at != std::string_view::npos) at += 2;
    } else {
      return text.compare(at, 9, "submodule") == 0;
    }
    if (at != std::string_view::npos) {
      at = text.find_first_not_of(" \t\r\n", at);
    }
  }
  return false;
}

std::string ReadFile(const fs::path& path) {
  // What is no file may never end, or not even begin.
  std::error_code error;
  bool is_file = fs::is_regular_file(path, error);
  if (error) Fail(path, error);
  if (!is_file) throw SchemaError(path.string() + ": it is no regular file");
  std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"),
                                             std::fclose);
  if (file == nullptr) Fail(path, {errno, std::generic_category()});
  std::string text;
  char buffer[1 << 16];
  size_t count;
  while ((count = std::fread(buffer, 1, sizeof buffer, file.get())) > 0) {
    text.append(buffer, count);
  }
  if (std::ferror(file.get()) != 0) {
    Fail(path, {errno, std::generic_category()});
  }
  // libyang would read up to there.
  if (text.find('\0') != std::string::npos) {
    throw SchemaError(path.string() + ": it holds binary data");
  }
  return text;
}

ModuleFile ReadModule(const fs::path& path) {
  ModuleFile file;
  file.path = path;
  file.text = ReadFile(path);
  file.is_submodule = IsSubmodule(file.text);
  std::string stem = path.stem().string();
  size_t at = stem.find('@');
  file.name = stem.substr(0, at);
  if (at != std::string::npos) file.revision = stem.substr(at + 1);
  return file;
}

LY_ERR ServeModule(const char* module, const char* module_revision,
                   const char* submodule, const char* submodule_revision,
                   void* folder, LYS_INFORMAT* format, const char** text,
                   ly_module_imp_data_free_clb* /*free_text*/) {
  bool is_submodule = submodule != nullptr;
  const char* revision = is_submodule ? submodule_revision : module_revision;
  const ModuleFile* file = static_cast<const ModuleFolder*>(folder)->Find(
      is_submodule ? submodule : module);
  if (file == nullptr || file->is_submodule != is_submodule) {
    return LY_ENOTFOUND;
  }
  // libyang looks for the revision in a file without one in its name.
  if (revision != nullptr && !file->revision.empty() &&
      file->revision != revision) {
    return LY_ENOTFOUND;
  }
  *format = LYS_IN_YANG;
  *text = file->text.c_str();
  return LY_SUCCESS;
}

}  // namespace

ModuleFolder::ModuleFolder(const fs::path& directory) {
  constexpr char kAdvice[] = "; name a folder of YANG modules";
  // The iterator of the C++ library ends the program where memory is short.
  std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(directory.c_str()),
                                              closedir);
  if (entries == nullptr) {
    Fail(directory, {errno, std::generic_category()}, kAdvice);
  }
  errno = 0;
  while (const dirent* entry = readdir(entries.get())) {
    const fs::path path = directory / entry->d_name;
    if (path.extension() == ".yang") files_.push_back(ReadModule(path));
    errno = 0;
  }
  if (errno != 0) Fail(directory, {errno, std::generic_category()});
  if (files_.empty()) {
    throw SchemaError(directory.string() + ": no YANG module (*.yang) in it");
  }
  // So that nothing depends on the order of the file system.
  std::sort(files_.begin(), files_.end(),
            [](const ModuleFile& a, const ModuleFile& b) {
              return std::tie(a.name, a.path) < std::tie(b.name, b.path);
            });
  for (size_t i = 1; i < files_.size(); ++i) {
    const ModuleFile& before = files_[i - 1];
    if (files_[i].name == before.name && files_[i].text != before.text) {
      throw SchemaError(files_[i].path.string() + ": " +
                        before.path.filename().string() +
                        " is of the same module; leave one of the two");
    }
  }
  auto same_name = [](const ModuleFile& a, const ModuleFile& b) {
    return a.name == b.name;
  };
  files_.erase(std::unique(files_.begin(), files_.end(), same_name),
               files_.end());
}

void ModuleFolder::ServeImports(ly_ctx* context) const {
  ly_ctx_set_module_imp_clb(context, ServeModule,
                            const_cast<ModuleFolder*>(this));
}

const ModuleFile* ModuleFolder::Find(std::string_view name) const {
  auto found = std::lower_bound(
      files_.begin(), files_.end(), name,
      [](const ModuleFile& file, std::string_view n) { return file.name < n; });
  return found != files_.end() && found->name == name ? &*found : nullptr;
}

}  // namespace kit::store
