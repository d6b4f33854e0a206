#include "kit/confd/tree/arena.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace kit::store {
namespace {

TEST(Arena, EveryPieceLeadsBackToIt) {
  Arena one;
  Arena other;
  for (const size_t bytes : {1, 8, 100, 8192, 8193, 1 << 20}) {
    EXPECT_EQ(&Arena::Of(one.Allocate(bytes)), &one) << bytes;
    EXPECT_EQ(&Arena::Of(other.Allocate(bytes)), &other) << bytes;
  }
}

TEST(Arena, PiecesDoNotOverlap) {
  Arena arena;
  std::vector<std::pair<char*, size_t>> pieces;
  for (size_t i = 0; i < 5000; ++i) {
    const size_t bytes = i % 97 * (i % 31 == 0 ? 200 : 1);
    auto* piece = static_cast<char*>(arena.Allocate(bytes));
    std::memset(piece, static_cast<int>(i % 251), bytes);
    pieces.emplace_back(piece, bytes);
  }
  for (size_t i = 0; i < pieces.size(); ++i) {
    const auto [piece, bytes] = pieces[i];
    for (size_t k = 0; k < bytes; ++k) {
      ASSERT_EQ(piece[k], static_cast<char>(i % 251)) << i;
    }
  }
}

TEST(Arena, GivesAFreedPieceOutAgain) {
  Arena arena;
  void* piece = arena.Allocate(40);
  void* large = arena.Allocate(100000);
  arena.Free(piece, 40);
  arena.Free(large, 100000);
  EXPECT_EQ(arena.Allocate(33), piece);
  EXPECT_NE(arena.Allocate(33), piece);
}

TEST(Arena, HoldsOnToLargePiecesAroundAFreedOne) {
  Arena arena;
  std::vector<char*> pieces;
  for (int i = 0; i < 3; ++i) {
    pieces.push_back(static_cast<char*>(arena.Allocate(100000)));
    std::memset(pieces.back(), i, 100000);
  }
  arena.Free(pieces[1], 100000);
  EXPECT_EQ(pieces[0][99999], 0);
  EXPECT_EQ(pieces[2][99999], 2);
  EXPECT_EQ(&Arena::Of(pieces[2]), &arena);
}

TEST(Arena, WhatIsFrozenOrAnotherArenasMayNotChange) {
  Arena own;
  Arena other;
  void* piece = own.Allocate(8);
  EXPECT_TRUE(own.MayChange(piece));
  EXPECT_FALSE(other.MayChange(piece));
  own.Freeze();
  EXPECT_FALSE(own.MayChange(piece));
}

TEST(ArenaArray, KeepsItsOrderThroughInsertionsAndErasures) {
  Arena arena;
  ArenaArray<int> array;
  std::vector<int> expected;
  for (int i = 0; i < 300; ++i) {
    const size_t at = static_cast<size_t>(i) * 7 % (expected.size() + 1);
    array.Insert(arena, at, i);
    expected.insert(expected.begin() + static_cast<ptrdiff_t>(at), i);
    if (i % 3 == 0) {
      const size_t gone = static_cast<size_t>(i) % expected.size();
      array.Erase(gone);
      expected.erase(expected.begin() + static_cast<ptrdiff_t>(gone));
    }
  }
  EXPECT_EQ(std::vector<int>(array.begin(), array.end()), expected);
  array.Release(arena);
  EXPECT_TRUE(array.empty());
}

}  // namespace
}  // namespace kit::store
