// Values as a program has them: what these calls do needs neither a session nor
// the models, and nobody is told of it.
#include <confd_lib.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

#include "kit/confd/api/c_types.h"
#include "kit/confd/api/values.h"
#include "kit/confd/model/error.h"
#include "kit/confd/model/memory.h"

namespace {

using kit::api::BytesOf;
using kit::api::FromC;
using kit::api::Release;
using kit::api::SizeOf;
using kit::api::TypeNumber;
using kit::api::VisitMember;

// Memory of malloc's for so many zeroed objects.
template <typename T>
T* Allocate(size_t count) {
  void* memory = std::calloc(std::max<size_t>(count, 1), sizeof(T));
  if (memory == nullptr) throw std::bad_alloc();
  return static_cast<T*>(memory);
}

// ---- Copies own all that they point to; std::bad_alloc otherwise -----------

confd_value_t CopyOf(const confd_value_t& from);
confd_hkeypath_t* CopyOf(const confd_hkeypath_t& from, int len);
void ReleaseCopy(confd_value_t& value);

template <typename Member>
void Own(Member&) {}

void Own(const char*& text) {
  if (text == nullptr) return;
  const size_t size = std::strlen(text) + 1;
  text = static_cast<char*>(std::memcpy(Allocate<char>(size), text, size));
}

void Own(confd_buf_t& buf) {
  if (buf.ptr == nullptr) return;
  const std::string_view bytes = BytesOf(buf);
  buf.ptr = Allocate<unsigned char>(bytes.size() + 1);
  std::memcpy(buf.ptr, bytes.data(), bytes.size());
  kit::api::NoteOwned(1);
}

void Own(confd_qname& qname) {
  Own(qname.prefix);
  try {
    Own(qname.name);
  } catch (...) {
    std::free(qname.prefix.ptr);
    throw;
  }
}

void Own(confd_snmp_oid*& oid) {
  if (oid == nullptr) return;
  const confd_snmp_oid& from = *oid;
  oid = Allocate<confd_snmp_oid>(1);
  *oid = from;
}

void Own(confd_hkeypath_t*& path) {
  if (path == nullptr) return;
  path = CopyOf(*path, path->len);
  if (path == nullptr) {
    throw kit::store::Error(kit::store::ErrorCode::kBadType,
                            "a path of an impossible length");
  }
}

void Own(confd_list& list) {
  const confd_list from = list;
  list = {0, Allocate<confd_value_t>(SizeOf(from))};
  try {
    for (; list.size < SizeOf(from); ++list.size) {
      list.ptr[list.size] = CopyOf(from.ptr[list.size]);
    }
  } catch (...) {
    for (unsigned i = 0; i < list.size; ++i) ReleaseCopy(list.ptr[i]);
    std::free(list.ptr);
    throw;
  }
}

confd_value_t CopyOf(const confd_value_t& from) {
  confd_value_t to = from;
  VisitMember(
      to, [](auto, auto& member) { Own(member); }, [] {});
  return to;
}

// Unlike a value that was received, a copy owns its strings.
void ReleaseCopy(confd_value_t& value) {
  if (TypeNumber(value) == C_STR) {
    std::free(value.val.s);
    value.val.s = nullptr;
  } else if (TypeNumber(value) == C_LIST) {
    for (size_t i = 0; i < SizeOf(value.val.list); ++i) {
      ReleaseCopy(value.val.list.ptr[i]);
    }
  }
  Release(value);
}

// ---- Paths ------------------------------------------------------------------

// How many values an element of a path has.
size_t WidthOf(const confd_value_t (&element)[MAXKEYLEN]) {
  if (TypeNumber(element[0]) == C_XMLTAG) return 1;
  size_t width = 0;
  while (width < MAXKEYLEN && TypeNumber(element[width]) != C_NOEXISTS) ++width;
  return width;
}

bool HasLength(const confd_hkeypath_t& path) {
  return path.len >= 0 && path.len <= MAXDEPTH;
}

void ReleasePath(confd_hkeypath_t* path) {
  for (int i = 0; i < path->len && i < MAXDEPTH; ++i) {
    for (confd_value_t& value : path->v[i]) ReleaseCopy(value);
  }
  std::free(path);
}

// The first `len` elements from the top; null for a length that it has not.
confd_hkeypath_t* CopyOf(const confd_hkeypath_t& from, int len) {
  if (!HasLength(from) || len < 0 || len > from.len) return nullptr;
  auto* path = Allocate<confd_hkeypath_t>(1);
  try {
    for (; path->len < len; ++path->len) {
      auto& to = path->v[path->len];
      const auto& element = from.v[from.len - len + path->len];
      for (confd_value_t& value : to) value.type = C_NOEXISTS;
      for (size_t i = 0; i < WidthOf(element); ++i) to[i] = CopyOf(element[i]);
    }
  } catch (...) {
    ++path->len;  // the one that is begun
    ReleasePath(path);
    throw;
  }
  return path;
}

// ---- Comparisons ------------------------------------------------------------

bool AreEqual(const confd_value_t& a, const confd_value_t& b);

bool AreEqual(const confd_list& a, const confd_list& b) {
  if (SizeOf(a) != SizeOf(b)) return false;
  for (size_t i = 0; i < SizeOf(a); ++i) {
    if (!AreEqual(a.ptr[i], b.ptr[i])) return false;
  }
  return true;
}

bool AreEqual(const confd_hkeypath_t& a, const confd_hkeypath_t& b) {
  if (!HasLength(a) || a.len != b.len) return false;
  for (int i = 0; i < a.len; ++i) {
    const size_t width = WidthOf(a.v[i]);
    if (width != WidthOf(b.v[i])) return false;
    for (size_t k = 0; k < width; ++k) {
      if (!AreEqual(a.v[i][k], b.v[i][k])) return false;
    }
  }
  return true;
}

bool AreEqual(const confd_value_t& a, const confd_value_t& b) {
  if (TypeNumber(a) != TypeNumber(b)) return false;
  switch (TypeNumber(a)) {
    case C_NOEXISTS:
    case C_DEFAULT:
    case C_XMLMOVEFIRST:
    case C_XMLMOVEAFTER:
      return true;
    case C_SYMBOL:
      return a.val.symbol == b.val.symbol;
    case C_CDBBEGIN:
      return a.val.i32 == b.val.i32;
    case C_PTR:
      return a.val.ptr.type == b.val.ptr.type && a.val.ptr.ptr == b.val.ptr.ptr;
    case C_XMLTAG:
    case C_XMLBEGIN:
    case C_XMLBEGINDEL:
    case C_XMLEND:
      return a.val.xmltag.tag == b.val.xmltag.tag &&
             a.val.xmltag.ns == b.val.xmltag.ns;
    case C_LIST:
      return AreEqual(a.val.list, b.val.list);
    case C_OBJECTREF:
      return a.val.hkp != nullptr && b.val.hkp != nullptr &&
             AreEqual(*a.val.hkp, *b.val.hkp);
    default:
      return FromC(a) == FromC(b);
  }
}

// Nothing of a null pointer.
std::string_view ViewOf(const char* text) {
  return text == nullptr ? std::string_view() : text;
}

// What `call` gives, or `otherwise` where there is no memory or a value is not
// well formed.
template <typename Result, typename Body>
Result Guarded(Result otherwise, const Body& call) {
  try {
    return call();
  } catch (const std::bad_alloc&) {
    kit::store::NoteOutOfMemory();
    return otherwise;
  } catch (const kit::store::Error&) {
    return otherwise;
  }
}

}  // namespace

extern "C" {

confd_value_t* confd_value_dup(const confd_value_t* v) {
  return Guarded<confd_value_t*>(nullptr, [&]() -> confd_value_t* {
    auto* copy = Allocate<confd_value_t>(1);
    if (confd_value_dup_to(v, copy) != nullptr) return copy;
    std::free(copy);
    return nullptr;
  });
}

confd_value_t* confd_value_dup_to(const confd_value_t* v, confd_value_t* newv) {
  if (v == nullptr || newv == nullptr) return nullptr;
  return Guarded<confd_value_t*>(nullptr, [&] {
    *newv = CopyOf(*v);
    return newv;
  });
}

void confd_free_dup_to_value(confd_value_t* v) {
  if (v != nullptr) ReleaseCopy(*v);
}

void confd_free_dup_value(confd_value_t* v) {
  confd_free_dup_to_value(v);
  std::free(v);
}

confd_hkeypath_t* confd_hkeypath_dup(const confd_hkeypath_t* src) {
  return src == nullptr ? nullptr : confd_hkeypath_dup_len(src, src->len);
}

confd_hkeypath_t* confd_hkeypath_dup_len(const confd_hkeypath_t* src, int len) {
  if (src == nullptr) return nullptr;
  return Guarded<confd_hkeypath_t*>(nullptr, [&] { return CopyOf(*src, len); });
}

void confd_free_hkeypath(confd_hkeypath_t* hkp) {
  if (hkp != nullptr) ReleasePath(hkp);
}

int confd_val_eq(const confd_value_t* v1, const confd_value_t* v2) {
  if (v1 == nullptr || v2 == nullptr) return 0;
  return Guarded(0, [&] { return AreEqual(*v1, *v2) ? 1 : 0; });
}

int confd_svcmp(const char* s, const confd_value_t* v) {
  const int type = v == nullptr ? C_NOEXISTS : TypeNumber(*v);
  const std::string_view text = type == C_STR   ? ViewOf(v->val.c_s)
                                : type == C_BUF ? BytesOf(v->val.buf)
                                                : std::string_view();
  return ViewOf(s).compare(text);
}

}  // extern "C"
