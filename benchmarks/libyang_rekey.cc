// What benchmarks/rekey.cc does, by libyang's own tree calls.
//
//   libyang_rekey MODELS CONFIGURATION PRINTED
//
// Prints the CPU seconds of the changes alone, and the result into a file.
#include <ctime>

#include "benchmarks/libyang_tree.h"

namespace {

constexpr char kNewIndex[] = "1";
constexpr size_t kKeys = 3;

double CpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) +
         static_cast<double>(now.tv_nsec) * 1e-9;
}

// Puts the row of the old data under its new key in place of the one in the
// transaction.
void MoveRow(const lyd_node* old_row, lyd_node* transaction) {
  lyd_node* row = nullptr;
  Check(lyd_find_sibling_first(lyd_child(transaction), old_row, &row), "find");
  lyd_free_tree(row);
  const lyd_node* keys[kKeys];
  const lyd_node* leaf = lyd_child(old_row);
  for (size_t i = 0; i < kKeys; ++i, leaf = leaf->next) keys[i] = leaf;
  Check(lyd_new_list(transaction, nullptr, "row", 0, &row, kNewIndex,
                     lyd_get_value(keys[1]), lyd_get_value(keys[2])),
        "row");
  for (; leaf != nullptr; leaf = leaf->next) {
    Check(lyd_new_term(row, nullptr, leaf->schema->name, lyd_get_value(leaf), 0,
                       nullptr),
          leaf->schema->name);
  }
}

void AddMembers(const lyd_node* old_row, lyd_node* transaction) {
  const char* address = lyd_get_value(lyd_child(old_row)->next);
  for (const char* number : {"1", "2"}) {
    lyd_node* member = nullptr;
    Check(lyd_new_list(transaction, nullptr, "member", 0, &member, address,
                       number),
          "member");
    std::string cost = std::string(number) + "0";
    Check(lyd_new_term(member, nullptr, "cost", cost.c_str(), 0, nullptr),
          "cost");
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("usage: libyang_rekey MODELS CONFIGURATION PRINTED\n", stderr);
    return 2;
  }
  ly_ctx* context = LoadModels(argv[1]);
  lyd_node* old_data = ReadTree(context, argv[2]);
  lyd_node* transaction = nullptr;
  Check(lyd_dup_siblings(old_data, nullptr, LYD_DUP_RECURSIVE, &transaction),
        "transaction");
  double start = CpuSeconds();
  for (const lyd_node* row = lyd_child(old_data); row != nullptr;
       row = row->next) {
    MoveRow(row, transaction);
    AddMembers(row, transaction);
  }
  std::printf("%.6f\n", CpuSeconds() - start);
  WriteTree(transaction, argv[3]);
  lyd_free_all(transaction);
  lyd_free_all(old_data);
  ly_ctx_destroy(context);
  return 0;
}
