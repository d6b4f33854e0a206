// Several threads log long records at the same time.
#include <string>
#include <thread>
#include <vector>

#include "plugin.h"

EXPORTED int update(int, int, int) {
  std::vector<std::thread> threads;
  for (char name = 'a'; name < 'i'; ++name) {
    threads.emplace_back([name] {
      const std::string record(100'000, name);
      for (int i = 0; i < 25; ++i) Log("%s", record.c_str());
    });
  }
  for (std::thread& thread : threads) thread.join();
  return 0;
}
