// The type of a leaf: which values it takes and how they read as text.
#ifndef KIT_CONFD_MODEL_LEAF_TYPE_H_
#define KIT_CONFD_MODEL_LEAF_TYPE_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/confd/model/value.h"

struct lysc_node;
struct lysc_type;
struct lysp_node;
struct lysp_type;

namespace kit::store {

// Hash of an identity's name, as it stands in identityref values.
uint32_t NameHash(std::string_view name);

// Lives as long as the libyang context that it was made from. Not thread-safe.
class LeafType {
 public:
  // Hash of the namespace of a module, by module name.
  using NamespaceHashes = std::map<std::string, uint32_t>;

  // The type of a leaf or leaf-list. libyang must have set the nodes' private
  // pointers to the parsed nodes: only those know typedefs by name.
  LeafType(const lysc_node* node, const NamespaceHashes& hashes);

  // How its values read; of a union, kNone.
  TextForm text_form() const { return text_form_; }

  // What values of this type carry as a tag; of a union, nothing.
  std::optional<ValueType> value_type() const {
    if (!members_.empty()) return std::nullopt;
    return value_type_;
  }

  // Throws Error with kBadType for a text that is no value of the type.
  Value Parse(std::string_view text) const;
  // The same for a text that libyang has accepted and made canonical.
  Value ParseValidated(std::string_view text) const;

  // The same for a key of a key path, where an identity may have its module's
  // prefix, and bit sets and identities may stand as the numbers that values
  // carry: "5", "NAMESPACE-HASH:NAME-HASH".
  Value ParseKey(std::string_view text) const;

  // The same into `value`, for what takes no more than reading a number or an
  // address; false, and no change, for all else, errors among it.
  bool ParsePlainKey(std::string_view text, Value& value) const;

  // Whether the types have the same values, in the same form. A type that can't
  // tell says no: a union, one with a leafref's or an identifier's targets.
  bool HasValuesOf(const LeafType& other) const;

  // The value if the type has it (with what a program can't know filled in). Of
  // a union a member of its type has to have it, whichever would take its text.
  // Throws Error with kBadType for one of another type or out of its limits.
  Value Check(Value value) const;

  // Whether Check would give the value back as it is; a quick answer, which is
  // no where it would take more than looking at a number.
  bool HasPlainly(const Value& value) const;

  // The canonical text as libyang knows it. The value must be of the type.
  std::string Print(const Value& value) const;

  // The same for programs: identities have their module's prefix in place of
  // its name.
  std::string PrintForPrograms(const Value& value) const;

  // The reverse. Throws Error with kBadType.
  Value ParseForPrograms(std::string_view text) const;

  // The same for a text that is to be stored: the password of "$0$PASSWORD"
  // becomes its hash where the type is one of hashes. Throws Error with
  // kBadType, also where this system has no such hash.
  Value ParseToStore(std::string_view text) const;

  // The name of an enum constant, of a union's first member that has it; null
  // for none.
  const std::string* EnumName(int32_t number) const;

  // The number of digits behind the point of a decimal64; 0: another type.
  uint8_t fraction_digits() const { return fraction_digits_; }

 private:
  struct Names {
    std::map<std::string, int64_t, std::less<>> numbers;
    std::map<int64_t, std::string> names;
    void Add(std::string name, int64_t number);
  };

  LeafType() = default;
  void Init(const lysc_node* node, const lysc_type* compiled,
            const lysp_type* parsed, const lysp_node* scope,
            const NamespaceHashes& hashes);
  void InitUnion(const lysp_type* parsed, const lysp_node* scope,
                 const NamespaceHashes& hashes);
  void AddIdentities(const NamespaceHashes& hashes);
  // Whether the machine type alone says which values there are. `restricted`:
  // the use of a well-known typedef narrows it.
  bool IsUnrestricted(bool restricted) const;
  void AddRanges();
  void AddLengths();
  std::string DescribeValues() const;
  bool IsInRange(const Value& value) const;
  bool HasLength(std::string_view text) const;
  std::optional<Value> ParseInRange(std::string_view text) const;
  // Whether libyang need not be asked.
  bool IsKnownString(std::string_view text) const;
  void RememberString(std::string_view text) const;
  // The text as libyang writes it. Throws Error with kBadType for one that is
  // no value of the type.
  std::string Canonical(std::string_view text) const;
  Value ParseCanonical(std::string_view text) const;
  Value ParseMember(std::string_view text) const;
  Value CheckMember(const Value& value) const;
  // Of a union's member: whether values of the value's type are among its own.
  bool MayHave(const Value& value) const {
    return !members_.empty() || value_type_ == value.type();
  }
  Value WithFractionDigits(const Value& value) const;
  std::string PrintMember(const Value& value) const;
  Value ParseBits(std::string_view text) const;
  std::string PrintBits(const Value& value) const;
  // "prefix:name" of "module:name".
  std::string WithPrefix(const std::string& identity) const;
  // The identity, as "module:name", that such a text means.
  std::optional<std::string> FindPrefixed(std::string_view text) const;
  [[noreturn]] void Reject(std::string_view text,
                           const std::string& why = {}) const;
  [[noreturn]] void RejectBytes(std::string_view text) const;

  const lysc_node* node_ = nullptr;
  const lysc_type* compiled_ = nullptr;
  ValueType value_type_ = ValueType::kNoExists;
  TextForm text_form_ = TextForm::kNone;
  std::string hash_method_;  // of passwords, see typedef_chain.h
  std::string name_;         // as the model writes it, for messages
  bool unrestricted_ = false;
  std::string values_;  // which ones there are, "" where that can't be told
  // Of an integer: ends included, numbers as values hold them.
  struct Range {
    uint64_t least;
    uint64_t most;
  };
  std::vector<Range> ranges_;
  // Of a string that nothing else restricts, in characters.
  std::vector<Range> lengths_;
  // Strings that libyang has accepted lately: its patterns take long, and a
  // program uses a name in many calls.
  mutable std::vector<std::string> accepted_;
  uint8_t fraction_digits_ = 0;
  Names names_;  // enums, bits by position, identities by hash pair
  std::vector<LeafType> members_;  // of a union
};

}  // namespace kit::store

#endif  // KIT_CONFD_MODEL_LEAF_TYPE_H_
