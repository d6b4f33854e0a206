// What the calls of the C API cost on a list of 100 entries and on one of
// 1,000,000.
#include <benchmark/benchmark.h>
#include <confd_lib.h>
// The other C headers need confd_lib.h before them.
#include <confd_cdb.h>
#include <confd_maapi.h>

#include <cstdarg>
#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>
#include <string>

#include "kit/confd/control/control.h"
#include "kit/confd/keypath/keypath.h"

namespace {

using kit::control::Database;
using kit::control::Handles;

constexpr int kSmall = 100;
constexpr int kLarge = 1'000'000;
constexpr char kRows[] = "/table/row";

std::string Address(uint32_t i) {
  return std::to_string(10 + (i >> 24)) + "." + std::to_string(i >> 16 & 255) +
         "." + std::to_string(i >> 8 & 255) + "." + std::to_string(i & 255);
}

// Entries {1 ADDRESS 0} with consecutive addresses.
struct Table {
  explicit Table(uint32_t rows) : size(rows), database(Open(rows)) {
    handles = database.Attach();
  }

  static Database Open(uint32_t rows) {
    std::string xml = "<table xmlns=\"http://quellix.example/ns/table\">";
    for (uint32_t i = 0; i < rows; ++i) {
      xml += "<row><index>1</index><address>" + Address(i) +
             "</address><unit>0</unit><metric>" + std::to_string(i % 1000) +
             "</metric><state>up</state></row>\n";
    }
    xml += "</table>";
    kit::control::ModelSet models{
        std::string(TEST_SOURCE_ROOT) + "/benchmarks/models/table", {}};
    return Database::Open(models, models, std::move(xml), "table");
  }

  uint32_t size;
  Database database;
  Handles handles;
};

// Made when first asked for: a million entries take a while to read.
const Table& TableOf(const benchmark::State& state) {
  static std::map<int64_t, std::unique_ptr<Table>> tables;
  std::unique_ptr<Table>& table = tables[state.range(0)];
  if (!table) {
    table = std::make_unique<Table>(static_cast<uint32_t>(state.range(0)));
  }
  return *table;
}

// Visits all entries in an order that no cache foresees.
class Scatter {
 public:
  explicit Scatter(uint32_t size) : size_(size) {}
  uint32_t Next() {
    state_ = state_ * 1664525u + 1013904223u;
    return static_cast<uint32_t>(uint64_t{state_} * size_ >> 32);
  }

 private:
  uint32_t size_;
  uint32_t state_ = 1;
};

void Check(int result) {
  if (result >= 0) return;
  std::cerr << "a call failed: " << confd_lasterr() << "\n";
  std::abort();
}

int FormatKeyPath(char* buffer, int size, const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int length = confd_vformat_keypath(buffer, size, fmt, args);
  va_end(args);
  return length;
}

void BM_FormatKeyPath(benchmark::State& state) {
  const Table& table = TableOf(state);
  Scatter scatter(table.size);
  char buffer[1024];
  for (auto _ : state) {
    Check(FormatKeyPath(buffer, sizeof buffer, "%s{%u %s 0}/%s", kRows, 1u,
                        Address(scatter.Next()).c_str(), "metric"));
    benchmark::DoNotOptimize(buffer);
  }
}

void BM_ParseKeyPath(benchmark::State& state) {
  const Table& table = TableOf(state);
  Scatter scatter(table.size);
  for (auto _ : state) {
    std::string text =
        std::string(kRows) + "{1 " + Address(scatter.Next()) + " 0}/metric";
    benchmark::DoNotOptimize(kit::keypath::Parse(text));
  }
}

void BM_ReadByPosition(benchmark::State& state) {
  const Table& table = TableOf(state);
  Scatter scatter(table.size);
  int32_t metric;
  for (auto _ : state) {
    Check(cdb_get_int32(table.handles.cdb_sock, &metric, "%s[%d]/metric", kRows,
                        static_cast<int>(scatter.Next())));
  }
}

// As passes read a list, which leaves the memory's latency out of it.
void BM_ReadByPositionInOrder(benchmark::State& state) {
  const Table& table = TableOf(state);
  uint32_t position = 0;
  int32_t metric;
  for (auto _ : state) {
    Check(cdb_get_int32(table.handles.cdb_sock, &metric, "%s[%d]/metric", kRows,
                        static_cast<int>(position)));
    if (++position == table.size) position = 0;
  }
}

void BM_ReadByKey(benchmark::State& state) {
  const Table& table = TableOf(state);
  Scatter scatter(table.size);
  int32_t metric;
  for (auto _ : state) {
    Check(cdb_get_int32(table.handles.cdb_sock, &metric, "%s{1 %s 0}/metric",
                        kRows, Address(scatter.Next()).c_str()));
  }
}

void BM_ExistenceTest(benchmark::State& state) {
  const Table& table = TableOf(state);
  Scatter scatter(table.size);
  for (auto _ : state) {
    Check(maapi_exists(table.handles.maapi_sock, table.handles.thandle,
                       "%s{1 %s 0}", kRows, Address(scatter.Next()).c_str()));
  }
}

// New entries stand between those that are there.
void BM_InsertThenDelete(benchmark::State& state) {
  const Table& table = TableOf(state);
  Scatter scatter(table.size);
  for (auto _ : state) {
    std::string address = Address(scatter.Next());
    Check(maapi_create(table.handles.maapi_sock, table.handles.thandle,
                       "%s{1 %s 1}", kRows, address.c_str()));
    Check(maapi_delete(table.handles.maapi_sock, table.handles.thandle,
                       "%s{1 %s 1}", kRows, address.c_str()));
  }
}

void BM_CursorStep(benchmark::State& state) {
  const Table& table = TableOf(state);
  maapi_cursor mc = {};
  for (auto _ : state) {
    if (mc.n == 0) {
      state.PauseTiming();
      maapi_destroy_cursor(&mc);
      Check(maapi_init_cursor(table.handles.maapi_sock, table.handles.thandle,
                              &mc, kRows));
      state.ResumeTiming();
    }
    Check(maapi_get_next(&mc));
  }
  maapi_destroy_cursor(&mc);
}

void BM_FindNext(benchmark::State& state) {
  const Table& table = TableOf(state);
  Scatter scatter(table.size);
  maapi_cursor mc = {};
  Check(maapi_init_cursor(table.handles.maapi_sock, table.handles.thandle, &mc,
                          kRows));
  for (auto _ : state) {
    confd_value_t keys[2];
    CONFD_SET_UINT32(&keys[0], 1u);
    in_addr address;
    address.s_addr = htonl((10u << 24) + scatter.Next());
    CONFD_SET_IPV4(&keys[1], address);
    Check(maapi_find_next(&mc, CONFD_FIND_SAME_OR_NEXT, keys, 2));
  }
  maapi_destroy_cursor(&mc);
}

BENCHMARK(BM_FormatKeyPath)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(BM_ParseKeyPath)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(BM_ReadByPosition)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(BM_ReadByPositionInOrder)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(BM_ReadByKey)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(BM_ExistenceTest)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(BM_InsertThenDelete)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(BM_CursorStep)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(BM_FindNext)->Arg(kSmall)->Arg(kLarge);

}  // namespace
