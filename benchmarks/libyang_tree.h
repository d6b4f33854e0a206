// What the programs that measure libyang by itself share. They stop at the
// first failure.
#ifndef BENCHMARKS_LIBYANG_TREE_H_
#define BENCHMARKS_LIBYANG_TREE_H_

#include <libyang/libyang.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

inline void Check(LY_ERR result, const std::string& what) {
  if (result == LY_SUCCESS) return;
  std::fprintf(stderr, "%s: libyang failed with %d\n", what.c_str(), result);
  std::exit(1);
}

// All modules of a folder.
inline ly_ctx* LoadModels(const std::string& directory) {
  ly_ctx* context = nullptr;
  Check(ly_ctx_new(directory.c_str(),
                   LY_CTX_NO_YANGLIBRARY | LY_CTX_DISABLE_SEARCHDIR_CWD,
                   &context),
        directory);
  for (const auto& file : std::filesystem::directory_iterator(directory)) {
    if (file.path().extension() != ".yang") continue;
    bool loaded = ly_ctx_load_module(context, file.path().stem().c_str(),
                                     nullptr, nullptr) != nullptr;
    Check(loaded ? LY_SUCCESS : LY_EVALID, file.path());
  }
  return context;
}

// Parses and validates an XML file.
inline lyd_node* ReadTree(const ly_ctx* context, const std::string& path) {
  lyd_node* tree = nullptr;
  Check(lyd_parse_data_path(context, path.c_str(), LYD_XML,
                            LYD_PARSE_STRICT | LYD_PARSE_NO_STATE,
                            LYD_VALIDATE_NO_STATE, &tree),
        path);
  return tree;
}

inline void WriteTree(const lyd_node* tree, const std::string& path) {
  ly_out* out = nullptr;
  Check(ly_out_new_filepath(path.c_str(), &out), path);
  Check(lyd_print_all(out, tree, LYD_XML, LYD_PRINT_WD_EXPLICIT), path);
  ly_out_free(out, nullptr, 0);
}

#endif  // BENCHMARKS_LIBYANG_TREE_H_
