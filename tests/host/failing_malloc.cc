// A library to preload: lets one allocation fail, as happens where memory is
// short, or only counts them. Its variables:
//   ALLOCATION_COUNT  file of 8 bytes in which allocations are counted, shared
//                     with the processes that are forked
//   ALLOCATION_OWNER  whose count: "kit" (C++, and what the programs' own code
//                     asks of malloc) or "libraries" (libyang, its pattern
//                     matcher, the C library)
//   FAIL_ALLOCATION   number of the one that fails, from 1
// Only processes that the first one forks count: the host's worker.
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <pthread.h>
#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>

namespace {

std::atomic<uint64_t>* counter = nullptr;
uint64_t failing = 0;
bool libraries_count = false;
bool ready = false;
bool armed = false;

// Where the code of libyang and the like is.
struct Range {
  uintptr_t begin;
  uintptr_t end;
};
Range libraries[16];
size_t library_count = 0;

int AddLibrary(dl_phdr_info* info, size_t /*size*/, void* /*data*/) {
  constexpr const char* kNames[] = {"/libyang", "/libpcre2", "/libc.so",
                                    "/ld-linux"};
  for (const char* name : kNames) {
    if (std::strstr(info->dlpi_name, name) == nullptr) continue;
    for (size_t i = 0; i < info->dlpi_phnum; ++i) {
      const ElfW(Phdr)& part = info->dlpi_phdr[i];
      const bool is_code = part.p_type == PT_LOAD && (part.p_flags & PF_X) != 0;
      if (!is_code || library_count == std::size(libraries)) continue;
      const uintptr_t begin = info->dlpi_addr + part.p_vaddr;
      libraries[library_count++] = {begin, begin + part.p_memsz};
    }
  }
  return 0;
}

bool IsLibrary(const void* caller) {
  const auto address = reinterpret_cast<uintptr_t>(caller);
  for (size_t i = 0; i < library_count; ++i) {
    if (address >= libraries[i].begin && address < libraries[i].end) {
      return true;
    }
  }
  return false;
}

bool Fails(const void* caller) {
  if (!armed || IsLibrary(caller) != libraries_count) return false;
  if (counter->fetch_add(1) + 1 != failing) return false;
  errno = ENOMEM;
  return true;
}

void Arm() { armed = counter != nullptr; }

__attribute__((constructor)) void SetUp() {
  ready = true;
  const char* file = std::getenv("ALLOCATION_COUNT");
  if (file == nullptr) return;
  const int fd = open(file, O_RDWR | O_CLOEXEC);
  void* page =
      mmap(nullptr, sizeof *counter, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
  if (page == MAP_FAILED) std::abort();
  counter = static_cast<std::atomic<uint64_t>*>(page);
  const char* owner = std::getenv("ALLOCATION_OWNER");
  libraries_count = owner != nullptr && std::strcmp(owner, "libraries") == 0;
  const char* number = std::getenv("FAIL_ALLOCATION");
  if (number != nullptr) failing = std::strtoull(number, nullptr, 10);
  dl_iterate_phdr(AddLibrary, nullptr);
  pthread_atfork(nullptr, nullptr, Arm);
}

// Sanitizers allocate before this library is fit to run, and looking a function
// up allocates in turn.
alignas(16) char start_up_memory[1 << 20];
std::atomic<size_t> start_up_used{0};

void* StartUpMemory(size_t size) {
  const size_t at = start_up_used.fetch_add((size + 15) / 16 * 16);
  return at + size <= sizeof start_up_memory ? start_up_memory + at : nullptr;
}

bool IsStartUpMemory(const void* memory) {
  return memory >= start_up_memory &&
         memory < start_up_memory + sizeof start_up_memory;
}

// A function of the library that would serve without this one.
template <typename Function>
class Next {
 public:
  explicit constexpr Next(const char* name) : name_(name) {}
  // Null while it is being looked up.
  Function find() {
    static bool looking = false;  // there is one thread then
    if (!ready || looking || known_.load() != nullptr) return known_.load();
    looking = true;
    known_ = reinterpret_cast<Function>(dlsym(RTLD_NEXT, name_));
    looking = false;
    return known_.load();
  }

 private:
  const char* name_;
  std::atomic<Function> known_{nullptr};
};

Next<void* (*)(size_t)> next_malloc("malloc");
Next<void* (*)(size_t, size_t)> next_calloc("calloc");
Next<void* (*)(void*, size_t)> next_realloc("realloc");
Next<void (*)(void*)> next_free("free");

void* Allocate(size_t size) {
  auto* next = next_malloc.find();
  return next != nullptr ? next(size) : StartUpMemory(size);
}

// As the C++ library does it.
void* New(size_t size) {
  while (true) {
    void* memory = Fails(nullptr) ? nullptr : Allocate(size == 0 ? 1 : size);
    if (memory != nullptr) return memory;
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) throw std::bad_alloc();
    handler();
  }
}

}  // namespace

extern "C" {

void* malloc(size_t size) {
  return Fails(__builtin_return_address(0)) ? nullptr : Allocate(size);
}

void* calloc(size_t count, size_t size) {
  if (Fails(__builtin_return_address(0))) return nullptr;
  auto* next = next_calloc.find();
  return next != nullptr ? next(count, size) : StartUpMemory(count * size);
}

void* realloc(void* memory, size_t size) {
  if (Fails(__builtin_return_address(0))) return nullptr;
  if (memory == nullptr) return Allocate(size);
  if (!IsStartUpMemory(memory)) return next_realloc.find()(memory, size);
  void* copy = Allocate(size);
  const auto* end =
      static_cast<const char*>(start_up_memory) + sizeof start_up_memory;
  const auto left = static_cast<size_t>(end - static_cast<char*>(memory));
  if (copy != nullptr) std::memcpy(copy, memory, std::min(size, left));
  return copy;
}

void free(void* memory) {
  if (memory != nullptr && !IsStartUpMemory(memory)) next_free.find()(memory);
}

}  // extern "C"

void* operator new(size_t size) { return New(size); }
void* operator new[](size_t size) { return New(size); }
void operator delete(void* memory) noexcept { free(memory); }
void operator delete(void* memory, size_t) noexcept { free(memory); }
void operator delete[](void* memory) noexcept { free(memory); }
void operator delete[](void* memory, size_t) noexcept { free(memory); }
