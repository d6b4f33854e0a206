// System calls that fail in a process and all that it starts, as they do on a
// file system that lacks a feature.
#ifndef TESTS_HOST_REFUSAL_H_
#define TESTS_HOST_REFUSAL_H_

#include <cstdint>
#include <vector>

namespace host_test {

struct Refusal {
  int call;      // SYS_...
  int argument;  // its index, from 0
  uint32_t
      bits;  // of the argument, one of which makes the call fail; 0: always
  int error;
};

// For the feature of a file system that the name says.
std::vector<Refusal> NoUnnamedFiles();
std::vector<Refusal> NoExchange();
std::vector<Refusal> NoRenameThatNeverReplaces();
std::vector<Refusal> NoHardLinks();
std::vector<Refusal> NoRemoval();

// False when the kernel does not allow it.
bool Refuse(const std::vector<Refusal>& refusals);

}  // namespace host_test

#endif  // TESTS_HOST_REFUSAL_H_
