// The least that an upgrade asks of libyang: both configurations are parsed and
// validated, each under its models, and the second one is printed.
//
//   libyang_alone MODELS_BEFORE INPUT MODELS_AFTER OUTPUT PRINTED
#include "benchmarks/libyang_tree.h"

int main(int argc, char** argv) {
  if (argc != 6) {
    std::fputs(
        "usage: libyang_alone MODELS_BEFORE INPUT MODELS_AFTER OUTPUT "
        "PRINTED\n",
        stderr);
    return 2;
  }
  ly_ctx* before = LoadModels(argv[1]);
  ly_ctx* after = LoadModels(argv[3]);
  lyd_node* input = ReadTree(before, argv[2]);
  lyd_node* output = ReadTree(after, argv[4]);
  WriteTree(output, argv[5]);
  lyd_free_all(output);
  lyd_free_all(input);
  ly_ctx_destroy(after);
  ly_ctx_destroy(before);
  return 0;
}
