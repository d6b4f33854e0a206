#include "kit/confd/tree/cell.h"

#include <endian.h>

#include <algorithm>
#include <cstring>

#include "kit/confd/model/schema.h"

namespace kit::store {
namespace {

// How a type's values fit into a cell.
enum class Storage {
  kNumber,     // bits, with the length that all values of the type have
  kPrefixed,   // 32 bits and a length
  kText,       // up to 7 bytes in the cell itself, longer ones as Text
  kElsewhere,  // as Boxed
};

Storage StorageOf(const LeafType& type) {
  const std::optional<ValueType> value_type = type.value_type();
  if (!value_type) return Storage::kElsewhere;  // a union
  switch (RowOf(*value_type).stored_as) {
    case StoredAs::kNothing:
    case StoredAs::kEmpty:
    case StoredAs::kSigned:
    case StoredAs::kUnsigned:
    case StoredAs::kBool:
    case StoredAs::kIpv4:
      return Storage::kNumber;
    case StoredAs::kIpv4Prefix:
      return Storage::kPrefixed;
    case StoredAs::kBytes:
      return Storage::kText;
    default:
      return Storage::kElsewhere;
  }
}

constexpr int kLengthShift = 32;

// Pointers have nothing in their highest byte; a text in the cell has this bit
// there, with its size.
constexpr uint64_t kInCell = uint64_t{1} << 63;
constexpr int kSizeShift = 56;
constexpr size_t kMostInCell = 7;

struct Text {
  size_t size;
  char* bytes() { return reinterpret_cast<char*>(this + 1); }
  const char* bytes() const { return reinterpret_cast<const char*>(this + 1); }
};

struct Boxed {
  uint64_t bits;
  ValueType type;
  uint8_t length;
  Text text;
};

struct Items {
  size_t count;
  Cell* cells() { return reinterpret_cast<Cell*>(this + 1); }
};

template <typename T>
T* Pointer(Cell cell) {
  return reinterpret_cast<T*>(cell);
}

Cell CellOf(const void* pointer) { return reinterpret_cast<Cell>(pointer); }

Cell MakeText(Arena& arena, std::string_view bytes) {
  if (bytes.size() <= kMostInCell) {
    uint64_t cell = 0;
    std::memcpy(&cell, bytes.data(), bytes.size());
    return cell | kInCell | uint64_t{bytes.size()} << kSizeShift;
  }
  auto* text = static_cast<Text*>(arena.Allocate(sizeof(Text) + bytes.size()));
  text->size = bytes.size();
  std::memcpy(text->bytes(), bytes.data(), bytes.size());
  return CellOf(text);
}

std::string_view TextIn(const Cell& cell) {
  if ((cell & kInCell) == 0) {
    const Text* text = Pointer<Text>(cell);
    return {text->bytes(), text->size};
  }
  return {reinterpret_cast<const char*>(&cell),
          static_cast<size_t>((cell & ~kInCell) >> kSizeShift)};
}

size_t SizeOf(const Boxed& boxed) { return sizeof(Boxed) + boxed.text.size; }
size_t SizeOf(const Items& items) {
  return sizeof(Items) + items.count * sizeof(Cell);
}

Cell MakeBoxed(Arena& arena, const Value& value) {
  const std::string& text = value.text();
  auto* boxed =
      static_cast<Boxed*>(arena.Allocate(sizeof(Boxed) + text.size()));
  boxed->bits = value.bits();
  boxed->type = value.type();
  boxed->length = value.length();
  boxed->text.size = text.size();
  std::memcpy(boxed->text.bytes(), text.data(), text.size());
  return CellOf(boxed);
}

Value Unboxed(Cell cell) {
  const Boxed* boxed = Pointer<Boxed>(cell);
  return Value::Text(boxed->type, {boxed->text.bytes(), boxed->text.size},
                     boxed->length, boxed->bits);
}

template <typename T>
int CompareNumbers(T a, T b) {
  if (a < b) return -1;
  return a > b ? 1 : 0;
}

}  // namespace

Cell MakeCell(Arena& arena, const LeafType& type, const Value& value) {
  switch (StorageOf(type)) {
    case Storage::kNumber:
      return value.bits();
    case Storage::kPrefixed:
      return value.bits() | uint64_t{value.length()} << kLengthShift;
    case Storage::kText:
      return MakeText(arena, value.text());
    case Storage::kElsewhere:
      break;
  }
  return MakeBoxed(arena, value);
}

Value ValueOf(const LeafType& type, Cell cell) {
  switch (StorageOf(type)) {
    case Storage::kNumber:
      return Value::Number(*type.value_type(), cell);
    case Storage::kPrefixed:
      return Value::Number(*type.value_type(), static_cast<uint32_t>(cell),
                           static_cast<uint8_t>(cell >> kLengthShift));
    case Storage::kText:
      return Value::Text(*type.value_type(), TextIn(cell));
    case Storage::kElsewhere:
      break;
  }
  return Unboxed(cell);
}

int Compare(const LeafType& type, Cell cell, const Value& value) {
  const Storage storage = StorageOf(type);
  if (storage == Storage::kElsewhere || type.value_type() != value.type()) {
    return Compare(ValueOf(type, cell), value);
  }
  switch (storage) {
    case Storage::kNumber:
      return IsSigned(value.type()) ? CompareNumbers(static_cast<int64_t>(cell),
                                                     value.signed_bits())
                                    : CompareNumbers(cell, value.bits());
    case Storage::kText:
      return TextIn(cell).compare(value.text());
    default:
      return Compare(ValueOf(type, cell), value);
  }
}

bool Holds(const LeafType& type, Cell cell, const Value& value) {
  const bool is_number =
      type.value_type() == value.type() && StorageOf(type) == Storage::kNumber;
  return is_number ? cell == value.bits() : Compare(type, cell, value) == 0;
}

bool AreEqual(const LeafType& type, Cell a, Cell b) {
  if (a == b) return true;
  const Storage storage = StorageOf(type);
  if (storage == Storage::kNumber || storage == Storage::kPrefixed) {
    return false;
  }
  return ValueOf(type, a) == ValueOf(type, b);
}

void FreeCell(Arena& arena, const LeafType& type, Cell cell) {
  const Storage storage = StorageOf(type);
  if (storage == Storage::kText && (cell & kInCell) == 0) {
    Text* text = Pointer<Text>(cell);
    if (arena.MayChange(text)) arena.Free(text, sizeof(Text) + text->size);
  } else if (storage == Storage::kElsewhere) {
    Boxed* boxed = Pointer<Boxed>(cell);
    if (arena.MayChange(boxed)) arena.Free(boxed, SizeOf(*boxed));
  }
}

Cell MakeListCell(Arena& arena, const LeafType& type,
                  const std::vector<Value>& values) {
  auto* items = static_cast<Items*>(
      arena.Allocate(sizeof(Items) + values.size() * sizeof(Cell)));
  items->count = values.size();
  for (size_t i = 0; i < values.size(); ++i) {
    items->cells()[i] = MakeCell(arena, type, values[i]);
  }
  return CellOf(items);
}

std::vector<Value> ValuesOf(const LeafType& type, Cell cell) {
  auto* items = Pointer<Items>(cell);
  std::vector<Value> values;
  values.reserve(items->count);
  for (size_t i = 0; i < items->count; ++i) {
    values.push_back(ValueOf(type, items->cells()[i]));
  }
  return values;
}

void FreeListCell(Arena& arena, const LeafType& type, Cell cell) {
  auto* items = Pointer<Items>(cell);
  if (!arena.MayChange(items)) return;
  for (size_t i = 0; i < items->count; ++i) {
    FreeCell(arena, type, items->cells()[i]);
  }
  arena.Free(items, SizeOf(*items));
}

void KeyPrefixBuilder::AddNumber(uint64_t number, size_t bytes) {
  const size_t left = kSize - used_;
  if (bytes > left) {
    is_whole_ = false;
    number >>= 8 * (bytes - left);
    bytes = left;
  }
  if (bytes == 0) return;
  const size_t bits = 8 * bytes;
  number <<= 64 - bits;  // its highest byte first
  const size_t shift = 8 * (used_ % 8);
  words_[used_ / 8] |= number >> shift;
  if (shift + bits > 64) words_[1] |= number << (64 - shift);
  used_ += bytes;
}

void KeyPrefixBuilder::Add(const LeafType& type, const Value& key) {
  // Behind something that was cut short nothing may follow. A union's values
  // are ordered by their types first.
  if (!is_whole_ || type.value_type() != key.type()) {
    is_whole_ = false;
    return;
  }
  const TypeRow& row = RowOf(key.type());
  const size_t bytes = (row.bits + 7u) / 8;
  switch (row.stored_as) {
    case StoredAs::kBool:
    case StoredAs::kUnsigned:
    case StoredAs::kIpv4:
      AddNumber(key.bits(), bytes);
      break;
    case StoredAs::kSigned:
      // With the sign flipped they order as unsigned numbers do.
      AddNumber(key.bits() ^ uint64_t{1} << (row.bits - 1), bytes);
      break;
    case StoredAs::kBytes:
      for (size_t at = 0; at < key.text().size() && used_ < kSize; at += 8) {
        uint64_t word = 0;
        std::memcpy(&word, key.text().data() + at,
                    std::min<size_t>(8, key.text().size() - at));
        AddNumber(be64toh(word), 8);
      }
      // "a" and "a\0" would look the same.
      is_whole_ = false;
      return;
    default:
      is_whole_ = false;
  }
  if (is_whole_) ++whole_keys_;
}

KeyPrefixBuilder PrefixOf(const SchemaNode& list, KeyView keys) {
  KeyPrefixBuilder builder;
  for (size_t i = 0; i < keys.size; ++i) {
    builder.Add(*list.children[i]->type, keys.data[i]);
  }
  return builder;
}

}  // namespace kit::store
