// A plug-in that gives every row another index and adds two members for each.
#include <confd_lib.h>
// The other C headers need confd_lib.h before them.
#include <confd_cdb.h>
#include <confd_maapi.h>

namespace {

constexpr int kLeaves = 10;
constexpr uint32_t kNewIndex = 1;
constexpr uint32_t kMembers = 2;
constexpr char kRows[] = "/tables/row";
constexpr char kRow[] = "/tables/row{%x %x %x}";
constexpr char kMember[] = "/tables/member{%x %u}";
constexpr char kMemberCost[] = "/tables/member{%x %u}/cost";

bool MoveRow(int maapi_sock, int thandle, confd_value_t* row) {
  if (maapi_delete(maapi_sock, thandle, kRow, &row[0], &row[1], &row[2]) !=
      CONFD_OK) {
    return false;
  }
  CONFD_SET_UINT32(&row[0], kNewIndex);
  return maapi_set_object(maapi_sock, thandle, row, kLeaves, kRow, &row[0],
                          &row[1], &row[2]) == CONFD_OK;
}

bool AddMembers(int maapi_sock, int thandle, confd_value_t* row) {
  for (uint32_t number = 1; number <= kMembers; ++number) {
    confd_value_t cost;
    CONFD_SET_UINT32(&cost, 10 * number);
    if (maapi_create(maapi_sock, thandle, kMember, &row[1], number) !=
            CONFD_OK ||
        maapi_set_elem(maapi_sock, thandle, &cost, kMemberCost, &row[1],
                       number) != CONFD_OK) {
      return false;
    }
  }
  return true;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int update(int maapi_sock,
                                                             int thandle,
                                                             int cdb_sock) {
  int rows = cdb_num_instances(cdb_sock, kRows);
  for (int i = 0; i < rows; ++i) {
    confd_value_t row[kLeaves];
    if (cdb_get_objects(cdb_sock, row, kLeaves, i, 1, kRows) < 0) return -1;
    bool done = MoveRow(maapi_sock, thandle, row) &&
                AddMembers(maapi_sock, thandle, row);
    for (confd_value_t& value : row) confd_free_value(&value);
    if (!done) return -1;
  }
  return rows < 0 ? -1 : 0;
}
