#include "kit/confd/tree/arena.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

// A tree's memory is not the allocator's: without this the sanitizer would not
// see a use of what was given back.
#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(piece, size) ((void)(piece), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(piece, size) ((void)(piece), (void)(size))
#endif

namespace kit::store {

struct Arena::Chunk {
  Arena* arena;
  Chunk* next;
  Chunk* before;
  size_t size;
};

namespace {

constexpr size_t RoundUp(size_t bytes, size_t step) {
  return (bytes + step - 1) / step * step;
}

// Of a small piece; even an empty one has a place of its own.
size_t SizeOf(size_t bytes) {
  return std::max(RoundUp(bytes, sizeof(void*)), sizeof(void*));
}

}  // namespace

Arena::Arena() {
  static std::atomic<uint64_t> last{0};
  version_ = {++last, 0};
}

Arena::~Arena() {
  while (chunks_ != nullptr) {
    Chunk* chunk = chunks_;
    chunks_ = chunk->next;
    ASAN_UNPOISON_MEMORY_REGION(chunk, chunk->size);
    std::free(chunk);
  }
}

Arena& Arena::Of(const void* piece) {
  // A large piece begins in the first kChunkSize bytes of its chunk.
  const auto address = reinterpret_cast<uintptr_t>(piece);
  return *reinterpret_cast<const Chunk*>(address / kChunkSize * kChunkSize)
              ->arena;
}

Arena::Chunk* Arena::AddChunk(size_t size) {
  void* memory = std::aligned_alloc(kChunkSize, size);
  if (memory == nullptr) throw std::bad_alloc();
  auto* chunk = new (memory) Chunk{this, chunks_, nullptr, size};
  if (chunks_ != nullptr) chunks_->before = chunk;
  chunks_ = chunk;
  return chunk;
}

void* Arena::AllocateLarge(size_t bytes) {
  if (bytes > SIZE_MAX - 2 * kChunkSize) throw std::bad_alloc();
  return AddChunk(RoundUp(sizeof(Chunk) + bytes, kChunkSize)) + 1;
}

void* Arena::Allocate(size_t bytes) {
  if (bytes > kLargestSmall) return AllocateLarge(bytes);
  const size_t size = SizeOf(bytes);
  FreePiece*& free_pieces = free_[size / kAlignment];
  if (free_pieces != nullptr) {
    FreePiece* piece = free_pieces;
    ASAN_UNPOISON_MEMORY_REGION(piece, size);
    free_pieces = piece->next;
    return piece;
  }
  if (static_cast<size_t>(end_ - next_) < size) {
    Chunk* chunk = AddChunk(kChunkSize);
    next_ = reinterpret_cast<char*>(chunk + 1);
    end_ = reinterpret_cast<char*>(chunk) + kChunkSize;
    ASAN_POISON_MEMORY_REGION(next_, static_cast<size_t>(end_ - next_));
  }
  char* piece = next_;
  next_ += size;
  ASAN_UNPOISON_MEMORY_REGION(piece, size);
  return piece;
}

void Arena::Free(void* piece, size_t bytes) {
  if (bytes > kLargestSmall) {
    Chunk* chunk = static_cast<Chunk*>(piece) - 1;
    (chunk->before != nullptr ? chunk->before->next : chunks_) = chunk->next;
    if (chunk->next != nullptr) chunk->next->before = chunk->before;
    std::free(chunk);
    return;
  }
  const size_t size = SizeOf(bytes);
  auto* freed = static_cast<FreePiece*>(piece);
  freed->next = free_[size / kAlignment];
  free_[size / kAlignment] = freed;
  ASAN_POISON_MEMORY_REGION(piece, size);
}

}  // namespace kit::store
