// Memory for one tree: given out in small pieces, taken back all at once.
#ifndef KIT_CONFD_TREE_ARENA_H_
#define KIT_CONFD_TREE_ARENA_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace kit::store {

class TreeWatcher;

// Pieces are aligned to 8 bytes and belong to the arena that gave them out,
// which any of them leads back to. Not thread-safe.
class Arena {
 public:
  Arena();
  ~Arena();
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;

  // Throws std::bad_alloc.
  void* Allocate(size_t bytes);
  // `bytes` is what Allocate was asked for.
  void Free(void* piece, size_t bytes);

  // The arena that gave out `piece`.
  static Arena& Of(const void* piece);

  // From here on another tree may point to what this arena holds: pieces that
  // are there are neither changed nor freed.
  void Freeze() { frozen_ = true; }
  // Who is told of changes to the tree, or null. Not owned.
  TreeWatcher* watcher() const { return watcher_; }
  void SetWatcher(TreeWatcher* watcher) { watcher_ = watcher; }

  // While both stay the same, a node of the tree that was found by its keys is
  // still there and has these keys.
  struct Version {
    uint64_t arena;  // its serial number: addresses come again
    uint64_t losses;
  };
  Version version() const { return version_; }
  // A node goes or gets other keys.
  void NoteLoss() { ++version_.losses; }

  // Whether `piece` is this arena's alone.
  bool MayChange(const void* piece) const {
    return !frozen_ && &Of(piece) == this;
  }

 private:
  struct Chunk;
  struct FreePiece {
    FreePiece* next;
  };
  static constexpr size_t kAlignment = 8;
  // Chunks begin at multiples of it, which is how a piece finds its chunk.
  static constexpr size_t kChunkSize = size_t{64} << 10;
  // Larger pieces get chunks of their own.
  static constexpr size_t kLargestSmall = 8192;

  Chunk* AddChunk(size_t size);
  void* AllocateLarge(size_t bytes);

  Chunk* chunks_ = nullptr;
  char* next_ = nullptr;
  char* end_ = nullptr;
  bool frozen_ = false;
  TreeWatcher* watcher_ = nullptr;
  Version version_;
  std::array<FreePiece*, kLargestSmall / kAlignment + 1> free_{};
};

inline bool operator==(Arena::Version a, Arena::Version b) {
  return a.arena == b.arena && a.losses == b.losses;
}

// A growing array in an arena. T is trivial: nothing is destroyed.
template <typename T>
class ArenaArray {
 public:
  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  T* begin() const { return items_; }
  T* end() const { return items_ + size_; }
  T& operator[](size_t i) const { return items_[i]; }

  // Moves what stands from `at` on up by one.
  void Insert(Arena& arena, size_t at, const T& item) {
    if (size_ == capacity_) Grow(arena);
    std::copy_backward(items_ + at, items_ + size_, items_ + size_ + 1);
    items_[at] = item;
    ++size_;
  }
  void Erase(size_t at) {
    std::copy(items_ + at + 1, items_ + size_, items_ + at);
    --size_;
  }
  void Release(Arena& arena) {
    if (items_ != nullptr) arena.Free(items_, capacity_ * sizeof(T));
    *this = {};
  }

 private:
  static_assert(std::is_trivially_copyable_v<T>);

  void Grow(Arena& arena) {
    const size_t capacity = std::max<size_t>(4, capacity_ * 2);
    auto* items = static_cast<T*>(arena.Allocate(capacity * sizeof(T)));
    std::copy(items_, items_ + size_, items);
    if (items_ != nullptr) arena.Free(items_, capacity_ * sizeof(T));
    items_ = items;
    capacity_ = capacity;
  }

  T* items_ = nullptr;
  size_t size_ = 0;
  size_t capacity_ = 0;
};

}  // namespace kit::store

#endif  // KIT_CONFD_TREE_ARENA_H_
