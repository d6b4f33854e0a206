#include "kit/confd/model/leaf_type.h"

#include <libyang/libyang.h>
#include <libyang/plugins_types.h>

#include <algorithm>

#include "kit/confd/model/error.h"
#include "kit/confd/model/memory.h"
#include "kit/confd/model/typedef_chain.h"
#include "kit/confd/text/address.h"
#include "kit/confd/text/date.h"
#include "kit/confd/text/encoding.h"
#include "kit/confd/text/number.h"
#include "kit/confd/text/password.h"
#include "kit/confd/text/utf8.h"

namespace kit::store {
namespace {

constexpr uint8_t kIpv6Bits = 128;

ValueType TypeOfBase(const lysc_type* type) {
  switch (type->basetype) {
    case LY_TYPE_BINARY:
      return ValueType::kBinary;
    case LY_TYPE_UINT8:
      return ValueType::kUint8;
    case LY_TYPE_UINT16:
      return ValueType::kUint16;
    case LY_TYPE_UINT32:
      return ValueType::kUint32;
    case LY_TYPE_UINT64:
      return ValueType::kUint64;
    case LY_TYPE_STRING:
      return ValueType::kBuf;
    case LY_TYPE_BITS: {
      const auto* bits = reinterpret_cast<const lysc_type_bits*>(type)->bits;
      uint32_t highest = bits[LY_ARRAY_COUNT(bits) - 1].position;
      if (highest < 32) return ValueType::kBit32;
      return highest < 64 ? ValueType::kBit64 : ValueType::kBitbig;
    }
    case LY_TYPE_BOOL:
      return ValueType::kBool;
    case LY_TYPE_DEC64:
      return ValueType::kDecimal64;
    case LY_TYPE_EMPTY:
      return ValueType::kEmpty;
    case LY_TYPE_ENUM:
      return ValueType::kEnum;
    case LY_TYPE_IDENT:
      return ValueType::kIdentityref;
    case LY_TYPE_INST:
      return ValueType::kObjectRef;
    case LY_TYPE_INT8:
      return ValueType::kInt8;
    case LY_TYPE_INT16:
      return ValueType::kInt16;
    case LY_TYPE_INT32:
      return ValueType::kInt32;
    case LY_TYPE_INT64:
      return ValueType::kInt64;
    default:
      return ValueType::kNoExists;
  }
}

// As values hold it.
std::optional<uint64_t> ParseInteger(ValueType type, std::string_view text) {
  const int sign = RowOf(type).bits - 1;
  if (IsSigned(type)) {
    auto number = text::ParseNumber<int64_t>(text);
    // The sign fills all bits from its own upwards.
    if (!number || (*number >> sign != 0 && *number >> sign != -1)) {
      return std::nullopt;
    }
    return static_cast<uint64_t>(*number);
  }
  auto number = text::ParseNumber<uint64_t>(text);
  if (!number || *number >> sign > 1) return std::nullopt;
  return number;
}

// Clear the bits behind the first `length` of an address.
uint32_t Masked(uint32_t address, uint8_t length) {
  return address & static_cast<uint32_t>(~(~uint64_t{0} >> 32 >> length));
}

std::string Masked(std::string bytes, uint8_t length) {
  for (size_t bit = length; bit < kIpv6Bits; ++bit) {
    bytes[bit / 8] = static_cast<char>(bytes[bit / 8] & ~(0x80 >> bit % 8));
  }
  return bytes;
}

std::optional<Value> ParseAddress(ValueType type, std::string_view text) {
  const TypeRow& row = RowOf(type);
  uint8_t length = 0;
  if (row.text != TextForm::kAddress) {
    auto halves = text::SplitPrefix(text, row.bits);
    if (!halves) return std::nullopt;
    std::tie(text, length) = *halves;
  }
  const bool masked = row.text == TextForm::kPrefix;
  if (row.bits == kIpv6Bits) {
    auto bytes = text::ParseIpv6(text);
    if (!bytes) return std::nullopt;
    return Value::Text(type, masked ? Masked(*bytes, length) : *bytes, length);
  }
  auto address = text::ParseIpv4(text);
  if (!address) return std::nullopt;
  return Value::Number(type, masked ? Masked(*address, length) : *address,
                       length);
}

std::string PrintAddress(const Value& value) {
  return RowOf(value.type()).bits == kIpv6Bits
             ? text::PrintIpv6(value.text())
             : text::PrintIpv4(static_cast<uint32_t>(value.bits()));
}

std::optional<Value> TextValue(ValueType type,
                               const std::optional<std::string>& bytes) {
  if (!bytes) return std::nullopt;
  return Value::Text(type, *bytes);
}

std::optional<Value> DoubleValue(ValueType type,
                                 const std::optional<double>& number) {
  if (!number) return std::nullopt;
  return Value::Double(type, *number);
}

// Equal values have equal texts, however they were written.
template <typename Parsed, typename Print>
std::optional<Value> Reprinted(ValueType type,
                               const std::optional<Parsed>& parsed,
                               const Print& print) {
  if (!parsed) return std::nullopt;
  return Value::Text(type, print(*parsed));
}

// "prefix:name" or "name".
bool IsQname(std::string_view text) {
  const size_t colon = text.find(':');
  const std::string_view name =
      colon == std::string_view::npos ? text : text.substr(colon + 1);
  return colon != 0 && !name.empty() &&
         name.find_first_of(": \t\r\n") == std::string_view::npos;
}

uint64_t IdentityBits(uint32_t ns, uint32_t id) {
  return uint64_t{ns} << 32 | id;
}

const lysc_type* CompiledType(const lysc_node* node) {
  return node->nodetype == LYS_LEAF
             ? reinterpret_cast<const lysc_node_leaf*>(node)->type
             : reinterpret_cast<const lysc_node_leaflist*>(node)->type;
}

// The type as written, null where the parsed model is not at hand.
const lysp_type* ParsedType(const lysc_node* node) {
  if (node->priv == nullptr) return nullptr;
  return node->nodetype == LYS_LEAF
             ? &static_cast<const lysp_node_leaf*>(node->priv)->type
             : &static_cast<const lysp_node_leaflist*>(node->priv)->type;
}

const lysp_node* Scope(const lysc_node* node) {
  return static_cast<const lysp_node*>(node->priv);
}

const lysc_type* RealType(const lysc_type* type) {
  return type->basetype == LY_TYPE_LEAFREF
             ? reinterpret_cast<const lysc_type_leafref*>(type)->realtype
             : type;
}

// The leaf that a leafref used at `node` points to; null if it can't be told.
const lysc_node* LeafrefTarget(const lysc_node* node,
                               const lysc_type_leafref* type) {
  ly_set* atoms = nullptr;
  const LibyangMemory memory;
  LY_ERR result = lys_find_expr_atoms(node, node->module, type->path,
                                      type->prefixes, 0, &atoms);
  memory.Require(result);
  if (result != LY_SUCCESS) return nullptr;
  // The path's last step comes last; predicates may name other leaves.
  const lysc_node* target = nullptr;
  for (uint32_t i = 0; i < atoms->count; ++i) {
    const lysc_node* atom = atoms->snodes[i];
    if (atom != node && (atom->nodetype & (LYS_LEAF | LYS_LEAFLIST)) != 0 &&
        RealType(CompiledType(atom)) == type->realtype) {
      target = atom;
    }
  }
  ly_set_free(atoms, nullptr);
  return target;
}

struct TypeUse {
  const lysp_type* type;
  const lysp_node* scope;
};

// The members of a union as written, those of unions inside it in their place,
// as libyang compiles them.
void FlattenUnion(const lysp_type* type, const lysp_node* scope,
                  std::vector<TypeUse>& members) {
  LY_ARRAY_COUNT_TYPE i;
  LY_ARRAY_FOR(type->types, i) {
    TypedefChain chain = FollowTypedefs(&type->types[i], scope);
    if (chain.last->types != nullptr) {
      FlattenUnion(chain.last, chain.scope, members);
    } else {
      members.push_back({&type->types[i], scope});
    }
  }
}

// A text for a message, whatever it holds.
std::string Excerpt(std::string_view text) {
  constexpr size_t kLongest = 200;
  std::string excerpt = "\"";
  for (char c : text.substr(0, kLongest)) {
    excerpt += static_cast<uint8_t>(c) < ' ' ? '?' : c;
  }
  return excerpt + (text.size() > kLongest ? "...\"" : "\"");
}

// "7:9", as an identity's hashes stand in a key.
std::optional<uint64_t> ParsePair(std::string_view text) {
  size_t colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  auto ns = text::ParseNumber<uint32_t>(text.substr(0, colon));
  auto id = text::ParseNumber<uint32_t>(text.substr(colon + 1));
  if (!ns || !id) return std::nullopt;
  return IdentityBits(*ns, *id);
}

}  // namespace

uint32_t NameHash(std::string_view name) {
  // FNV-1a: any hash does that is the same in every process.
  uint32_t hash = 2166136261u;
  for (char c : name) {
    hash = (hash ^ static_cast<uint8_t>(c)) * 16777619u;
  }
  return hash;
}

void LeafType::Names::Add(std::string name, int64_t number) {
  names.emplace(number, name);
  numbers.emplace(std::move(name), number);
}

LeafType::LeafType(const lysc_node* node, const NamespaceHashes& hashes) {
  Init(node, CompiledType(node), ParsedType(node), Scope(node), hashes);
}

void LeafType::Init(const lysc_node* node, const lysc_type* compiled,
                    const lysp_type* parsed, const lysp_node* scope,
                    const NamespaceHashes& hashes) {
  node_ = node;
  compiled_ = RealType(compiled);
  // A leafref has its target's type, typedef and all.
  const lysc_node* user = node;
  while (compiled->basetype == LY_TYPE_LEAFREF) {
    user = LeafrefTarget(user,
                         reinterpret_cast<const lysc_type_leafref*>(compiled));
    if (user == nullptr) break;
    compiled = CompiledType(user);
    parsed = ParsedType(user);
    scope = Scope(user);
  }
  compiled = compiled_;
  name_ = parsed != nullptr ? parsed->name : "?";

  TypedefChain chain{std::nullopt, false, nullptr, nullptr};
  if (parsed != nullptr) chain = FollowTypedefs(parsed, scope);
  value_type_ = TypeOfBase(compiled);
  text_form_ = RowOf(value_type_).text;
  // A model may use a well-known name for something else that is no string.
  if (chain.well_known && compiled->basetype == LY_TYPE_STRING) {
    value_type_ = chain.well_known->type;
    text_form_ = chain.well_known->text;
    hash_method_ = chain.well_known->hash_method;
  }

  LY_ARRAY_COUNT_TYPE i;
  if (compiled->basetype == LY_TYPE_ENUM) {
    const auto* enums =
        reinterpret_cast<const lysc_type_enum*>(compiled)->enums;
    LY_ARRAY_FOR(enums, i) names_.Add(enums[i].name, enums[i].value);
  } else if (compiled->basetype == LY_TYPE_BITS) {
    const auto* bits = reinterpret_cast<const lysc_type_bits*>(compiled)->bits;
    LY_ARRAY_FOR(bits, i) names_.Add(bits[i].name, bits[i].position);
  } else if (compiled->basetype == LY_TYPE_DEC64) {
    fraction_digits_ =
        reinterpret_cast<const lysc_type_dec*>(compiled)->fraction_digits;
  } else if (compiled->basetype == LY_TYPE_IDENT) {
    AddIdentities(hashes);
  } else if (compiled->basetype == LY_TYPE_UNION) {
    InitUnion(chain.last, chain.scope, hashes);
  }
  unrestricted_ = IsUnrestricted(chain.restricted);
  AddRanges();
  AddLengths();
  values_ = DescribeValues();
}

void LeafType::InitUnion(const lysp_type* parsed, const lysp_node* scope,
                         const NamespaceHashes& hashes) {
  const auto* types =
      reinterpret_cast<const lysc_type_union*>(compiled_)->types;
  std::vector<TypeUse> uses;
  if (parsed != nullptr) FlattenUnion(parsed, scope, uses);
  // Without its name a member has its built-in type.
  uses.resize(uses.size() == LY_ARRAY_COUNT(types) ? uses.size() : 0);
  LY_ARRAY_COUNT_TYPE i;
  LY_ARRAY_FOR(types, i) {
    TypeUse use = uses.empty() ? TypeUse{nullptr, nullptr} : uses[i];
    LeafType member;
    member.Init(node_, types[i], use.type, use.scope, hashes);
    members_.push_back(std::move(member));
  }
}

void LeafType::AddIdentities(const NamespaceHashes& hashes) {
  const auto* type = reinterpret_cast<const lysc_type_identityref*>(compiled_);
  std::vector<const lysc_ident*> pending;
  LY_ARRAY_COUNT_TYPE i;
  LY_ARRAY_FOR(type->bases, i) pending.push_back(type->bases[i]);
  while (!pending.empty()) {
    const lysc_ident* identity = pending.back();
    pending.pop_back();
    LY_ARRAY_FOR(identity->derived, i) pending.push_back(identity->derived[i]);
    std::string module = identity->module->name;
    auto hash = hashes.find(module);
    uint32_t ns =
        hash != hashes.end() ? hash->second : NameHash(identity->module->ns);
    names_.Add(
        module + ":" + identity->name,
        static_cast<int64_t>(IdentityBits(ns, NameHash(identity->name))));
  }
}

bool LeafType::IsUnrestricted(bool restricted) const {
  switch (compiled_->basetype) {
    case LY_TYPE_BOOL:
    case LY_TYPE_ENUM:
      return true;
    case LY_TYPE_INT8:
    case LY_TYPE_INT16:
    case LY_TYPE_INT32:
    case LY_TYPE_INT64:
    case LY_TYPE_UINT8:
    case LY_TYPE_UINT16:
    case LY_TYPE_UINT32:
    case LY_TYPE_UINT64:
      return reinterpret_cast<const lysc_type_num*>(compiled_)->range ==
             nullptr;
    case LY_TYPE_STRING: {
      // An address that can be read as one meets the typedef's patterns.
      if (value_type_ == ValueType::kIpv4 || value_type_ == ValueType::kDquad) {
        return !restricted;
      }
      const auto* type = reinterpret_cast<const lysc_type_str*>(compiled_);
      return value_type_ == ValueType::kBuf && type->length == nullptr &&
             type->patterns == nullptr;
    }
    default:
      return false;
  }
}

// All that decides over a value: equal texts mean equal sets of values.
std::string LeafType::DescribeValues() const {
  std::string text;
  auto add = [&text](const auto& number) {
    text += std::to_string(number) + ' ';
  };
  auto add_range = [&add](const lysc_range* range) {
    if (range == nullptr) return;
    LY_ARRAY_COUNT_TYPE i;
    LY_ARRAY_FOR(range->parts, i) {
      add(range->parts[i].min_u64);
      add(range->parts[i].max_u64);
    }
  };
  add(static_cast<int>(compiled_->basetype));
  add(static_cast<int>(value_type_));
  add(static_cast<int>(text_form_));
  add(static_cast<int>(fraction_digits_));
  switch (compiled_->basetype) {
    case LY_TYPE_BOOL:
    case LY_TYPE_EMPTY:
      return text;
    case LY_TYPE_INT8:
    case LY_TYPE_INT16:
    case LY_TYPE_INT32:
    case LY_TYPE_INT64:
    case LY_TYPE_UINT8:
    case LY_TYPE_UINT16:
    case LY_TYPE_UINT32:
    case LY_TYPE_UINT64:
      add_range(reinterpret_cast<const lysc_type_num*>(compiled_)->range);
      return text;
    case LY_TYPE_DEC64:
      add_range(reinterpret_cast<const lysc_type_dec*>(compiled_)->range);
      return text;
    case LY_TYPE_BINARY:
      add_range(reinterpret_cast<const lysc_type_bin*>(compiled_)->length);
      return text;
    case LY_TYPE_STRING: {
      const auto* type = reinterpret_cast<const lysc_type_str*>(compiled_);
      add_range(type->length);
      LY_ARRAY_COUNT_TYPE i;
      LY_ARRAY_FOR(type->patterns, i) {
        text += type->patterns[i]->inverted != 0 ? "not " : "";
        text += '\'' + std::string(type->patterns[i]->expr) + "' ";
      }
      return text;
    }
    case LY_TYPE_ENUM:
    case LY_TYPE_BITS:
    case LY_TYPE_IDENT:
      for (const auto& [name, number] : names_.numbers) {
        text += name + ' ';
        add(number);
      }
      return text;
    default:
      return "";
  }
}

bool LeafType::HasValuesOf(const LeafType& other) const {
  return !values_.empty() && values_ == other.values_;
}

void LeafType::AddRanges() {
  const bool is_integer = value_type_ >= ValueType::kInt8 &&
                          value_type_ <= ValueType::kUint64 &&
                          text_form_ == TextForm::kNumber;
  if (!is_integer) return;
  const lysc_range* range =
      reinterpret_cast<const lysc_type_num*>(compiled_)->range;
  if (range == nullptr) return;
  LY_ARRAY_COUNT_TYPE i;
  LY_ARRAY_FOR(range->parts, i) {
    ranges_.push_back({range->parts[i].min_u64, range->parts[i].max_u64});
  }
}

void LeafType::AddLengths() {
  if (compiled_->basetype != LY_TYPE_STRING || value_type_ != ValueType::kBuf) {
    return;
  }
  const auto* type = reinterpret_cast<const lysc_type_str*>(compiled_);
  if (type->length == nullptr || type->patterns != nullptr) return;
  LY_ARRAY_COUNT_TYPE i;
  LY_ARRAY_FOR(type->length->parts, i) {
    lengths_.push_back(
        {type->length->parts[i].min_u64, type->length->parts[i].max_u64});
  }
}

// Of text, whose characters are those that do not go on with another one's
// bytes.
bool LeafType::HasLength(std::string_view text) const {
  if (lengths_.empty()) return false;
  const auto length =
      static_cast<uint64_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<uint8_t>(c) & 0xc0) != 0x80;
      }));
  return std::any_of(lengths_.begin(), lengths_.end(),
                     [length](const Range& range) {
                       return range.least <= length && length <= range.most;
                     });
}

bool LeafType::IsInRange(const Value& value) const {
  return std::any_of(ranges_.begin(), ranges_.end(), [&](const Range& range) {
    if (!IsSigned(value_type_)) {
      return range.least <= value.bits() && value.bits() <= range.most;
    }
    return static_cast<int64_t>(range.least) <= value.signed_bits() &&
           value.signed_bits() <= static_cast<int64_t>(range.most);
  });
}

// Decimal digits without leading zeros, which mean something else in YANG;
// nothing for all that libyang had better look at.
std::optional<Value> LeafType::ParseInRange(std::string_view text) const {
  if (ranges_.empty() || text.empty()) return std::nullopt;
  const std::string_view digits = text.substr(text.front() == '-' ? 1 : 0);
  const bool is_canonical =
      !digits.empty() && digits.front() >= '1' && digits.front() <= '9';
  if (!is_canonical && text != "0") return std::nullopt;
  try {
    Value value = ParseCanonical(text);
    if (IsInRange(value)) return value;
  } catch (const Error&) {
    // Not a number, or too large for the type.
  }
  return std::nullopt;
}

bool LeafType::IsKnownString(std::string_view text) const {
  return !accepted_.empty() &&
         accepted_[std::hash<std::string_view>()(text) % accepted_.size()] ==
             text &&
         !text.empty();
}

void LeafType::RememberString(std::string_view text) const {
  constexpr size_t kRemembered = 64;
  constexpr size_t kLongest = 256;
  if (value_type_ != ValueType::kBuf || text.size() > kLongest) return;
  if (accepted_.empty()) accepted_.resize(kRemembered);
  accepted_[std::hash<std::string_view>()(text) % kRemembered] = text;
}

void LeafType::Reject(std::string_view text, const std::string& why) const {
  std::string message = Excerpt(text) + " is not of type " + name_;
  if (!why.empty()) message += ": " + why;
  throw Error(ErrorCode::kBadType, message);
}

void LeafType::RejectBytes(std::string_view text) const {
  Reject(text, "it is not UTF-8 text without control characters");
}

std::string LeafType::Canonical(std::string_view text) const {
  ly_ctx* context = node_->module->ctx;
  lyd_value stored{};
  ly_err_item* fault = nullptr;
  const LibyangMemory memory;
  const LY_ERR result = compiled_->plugin->store(
      context, compiled_, text.data(), text.size(), 0, LY_VALUE_JSON, nullptr,
      LYD_HINT_DATA, node_, &stored, nullptr, &fault);
  std::string why;
  if (fault != nullptr && fault->msg != nullptr) why = fault->msg;
  ly_err_free(fault);
  if (result != LY_SUCCESS && result != LY_EINCOMPLETE) {
    memory.Require(result);
    Reject(text, why);
  }
  const char* canonical = lyd_value_get_canonical(context, &stored);
  const std::string owned =
      canonical != nullptr ? canonical : std::string(text);
  compiled_->plugin->free(context, &stored);
  memory.Require(LY_SUCCESS);
  return owned;
}

Value LeafType::Parse(std::string_view text) const {
  if (IsKnownString(text)) return Value::Text(value_type_, text);
  if (const auto number = ParseInRange(text)) return *number;
  // libyang would keep it with a NUL inside and then look for what stands
  // before that.
  if (!text::IsYangText(text)) RejectBytes(text);
  if (!members_.empty()) return ParseMember(text);
  if (unrestricted_) return ParseCanonical(text);
  if (HasLength(text)) return Value::Text(value_type_, text);
  const std::string canonical = Canonical(text);
  RememberString(canonical);
  return ParseCanonical(canonical);
}

// The first that takes it.
Value LeafType::ParseMember(std::string_view text) const {
  for (const LeafType& member : members_) {
    try {
      return member.Parse(text);
    } catch (const Error&) {
      // The next may.
    }
  }
  Reject(text, "no member of the union takes it");
}

Value LeafType::ParseValidated(std::string_view text) const {
  return members_.empty() ? ParseCanonical(text) : Parse(text);
}

Value LeafType::ParseKey(std::string_view text) const {
  std::optional<Value> value;
  const TypeRow& row = RowOf(value_type_);
  if (row.text == TextForm::kBits && row.stored_as == StoredAs::kUnsigned) {
    if (auto bits = text::ParseNumber<uint64_t>(text)) {
      value = Value::Number(value_type_, *bits);
    }
  } else if (row.text == TextForm::kIdentity) {
    if (auto bits = ParsePair(text)) {
      value = Value::Text(value_type_, "", 0, *bits);
    } else if (const auto identity = FindPrefixed(text)) {
      return ParseCanonical(*identity);
    }
  }
  // Names begin with no digit, so that nothing else can be meant.
  return value && members_.empty() ? Check(*value) : Parse(text);
}

bool LeafType::ParsePlainKey(std::string_view text, Value& value) const {
  if (!members_.empty()) return false;
  std::optional<uint64_t> bits;
  if (!unrestricted_) {
    if (const auto number = ParseInRange(text)) bits = number->bits();
  } else if (text_form_ == TextForm::kNumber) {
    bits = ParseInteger(value_type_, text);
  } else if (RowOf(value_type_).stored_as == StoredAs::kIpv4) {
    bits = text::ParseIpv4(text);
  }
  if (!bits) return false;
  value = Value::Number(value_type_, *bits);
  return true;
}

Value LeafType::ParseCanonical(std::string_view text) const {
  std::optional<Value> value;
  switch (text_form_) {
    case TextForm::kNumber:
      if (const auto bits = ParseInteger(value_type_, text)) {
        value = Value::Number(value_type_, *bits);
      }
      break;
    case TextForm::kBool:
      if (text == "true" || text == "false") {
        value = Value::Number(value_type_, text == "true");
      }
      break;
    case TextForm::kEnum:
      if (auto it = names_.numbers.find(text); it != names_.numbers.end()) {
        value = Value::Number(value_type_, static_cast<uint64_t>(it->second));
      }
      break;
    case TextForm::kIdentity:
      if (auto it = names_.numbers.find(text); it != names_.numbers.end()) {
        value = Value::Text(value_type_, text, 0,
                            static_cast<uint64_t>(it->second));
      }
      break;
    case TextForm::kBits:
      return ParseBits(text);
    case TextForm::kAddress:
    case TextForm::kPrefix:
    case TextForm::kAddressAndLength:
      value = ParseAddress(value_type_, text);
      break;
    case TextForm::kDecimal:
      if (auto scaled = text::ParseDecimal64(text, fraction_digits_)) {
        value = Value::Number(value_type_, static_cast<uint64_t>(*scaled),
                              fraction_digits_);
      }
      break;
    case TextForm::kBase64:
      value = TextValue(value_type_, text::ParseBase64(text));
      break;
    case TextForm::kHex:
    case TextForm::kUpperHex:
      value = TextValue(value_type_, text::ParseHex(text));
      break;
    case TextForm::kBareHex:
      value = TextValue(value_type_, text::ParseBareHex(text));
      break;
    case TextForm::kOctets:
      value = TextValue(value_type_, text::ParseOctets(text));
      break;
    case TextForm::kOid:
      value = TextValue(value_type_, text::ParseOid(text));
      break;
    case TextForm::kDouble:
      value = DoubleValue(value_type_, text::ParseDouble(text));
      break;
    case TextForm::kPlainDouble:
      value = DoubleValue(value_type_, text::ParsePlainDouble(text));
      break;
    case TextForm::kSize:
      if (auto size = text::ParseSize(text)) {
        value = Value::Number(value_type_, *size);
      }
      break;
    case TextForm::kDateTime:
      value = Reprinted(value_type_, text::ParseDateTime(text),
                        text::PrintDateTime);
      break;
    case TextForm::kDate:
      value = Reprinted(value_type_, text::ParseDate(text), text::PrintDate);
      break;
    case TextForm::kTime:
      value = Reprinted(value_type_, text::ParseTime(text), text::PrintTime);
      break;
    case TextForm::kDuration:
      value = Reprinted(value_type_, text::ParseDuration(text),
                        text::PrintDuration);
      break;
    case TextForm::kQname:
      if (IsQname(text)) value = Value::Text(value_type_, text);
      break;
    case TextForm::kEmpty:
      if (text.empty()) value = Value::Number(value_type_, 0);
      break;
    default:
      value = Value::Text(value_type_, text);
  }
  if (!value) Reject(text);
  return *std::move(value);
}

Value LeafType::ParseBits(std::string_view text) const {
  uint64_t set = 0;
  std::string bytes;
  while (!text.empty()) {
    size_t blank = std::min(text.find(' '), text.size());
    auto it = names_.numbers.find(text.substr(0, blank));
    if (it == names_.numbers.end()) Reject(text.substr(0, blank));
    auto position = static_cast<size_t>(it->second);
    if (value_type_ == ValueType::kBitbig) {
      bytes.resize(std::max(bytes.size(), position / 8 + 1), '\0');
      bytes[position / 8] =
          static_cast<char>(bytes[position / 8] | 1 << position % 8);
    } else {
      set |= uint64_t{1} << position;
    }
    text.remove_prefix(std::min(blank + 1, text.size()));
  }
  return value_type_ == ValueType::kBitbig ? Value::Text(value_type_, bytes)
                                           : Value::Number(value_type_, set);
}

std::string LeafType::PrintBits(const Value& value) const {
  std::string text;
  uint64_t known = 0;
  std::string left(value.text());  // what no name was found for
  for (const auto& [number, name] : names_.names) {
    auto position = static_cast<size_t>(number);
    bool set;
    if (value.type() == ValueType::kBitbig) {
      const std::string_view bytes = value.text();
      set = position / 8 < bytes.size() &&
            (static_cast<uint8_t>(bytes[position / 8]) >> position % 8 & 1);
      if (set) {
        left[position / 8] =
            static_cast<char>(left[position / 8] & ~(1 << position % 8));
      }
    } else {
      set = value.bits() >> position & 1;
      known |= uint64_t{1} << position;
    }
    if (!set) continue;
    if (!text.empty()) text += ' ';
    text += name;
  }
  const auto highest = static_cast<size_t>(names_.names.rbegin()->first);
  if (value.text().size() > highest / 8 + 1) {
    Reject(text::PrintHex(value.text()), "it is longer than the type needs");
  }
  bool unknown = value.type() == ValueType::kBitbig
                     ? left.find_first_not_of('\0') != std::string::npos
                     : (value.bits() & ~known) != 0;
  if (unknown) {
    Reject(value.type() == ValueType::kBitbig ? text::PrintHex(value.text())
                                              : std::to_string(value.bits()),
           "it sets a bit without a name");
  }
  return text;
}

std::string LeafType::Print(const Value& value) const {
  if (!members_.empty()) return PrintMember(value);
  if (value.type() != value_type_) Reject(TypeName(value.type()));
  std::string text;
  switch (text_form_) {
    case TextForm::kNumber:
      return IsSigned(value_type_) ? std::to_string(value.signed_bits())
                                   : std::to_string(value.bits());
    case TextForm::kBool:
      return value.bits() != 0 ? "true" : "false";
    case TextForm::kEnum:
      if (auto it = names_.names.find(value.signed_bits());
          it != names_.names.end()) {
        return it->second;
      }
      Reject(std::to_string(value.signed_bits()), "no enum has this number");
    case TextForm::kIdentity:
      if (auto it = names_.names.find(value.signed_bits());
          it != names_.names.end()) {
        return it->second;
      }
      Reject(value.text(), "no such identity");
    case TextForm::kBits:
      return PrintBits(value);
    case TextForm::kAddress:
      return PrintAddress(value);
    case TextForm::kPrefix:
    case TextForm::kAddressAndLength:
      return PrintAddress(value) + "/" + std::to_string(value.length());
    case TextForm::kDecimal:
      if (value.length() != fraction_digits_) {
        Reject(std::to_string(value.signed_bits()),
               "the number has " + std::to_string(value.length()) +
                   " fraction digits, the model " +
                   std::to_string(fraction_digits_));
      }
      return text::PrintDecimal64(value.signed_bits(), fraction_digits_);
    case TextForm::kBase64:
      return text::PrintBase64(value.text());
    case TextForm::kHex:
      return text::PrintHex(value.text());
    case TextForm::kUpperHex:
      return text::PrintUpperHex(value.text());
    case TextForm::kBareHex:
      return text::PrintBareHex(value.text());
    case TextForm::kOctets:
      return text::PrintOctets(value.text());
    case TextForm::kOid:
      return text::PrintOid(value.text());
    case TextForm::kDouble:
      text::AppendDouble(&text, value.as_double());
      return text;
    case TextForm::kPlainDouble:
      return text::PrintPlainDouble(value.as_double());
    case TextForm::kSize:
      return text::PrintSize(value.bits());
    case TextForm::kEmpty:
      return "";
    default:
      return std::string(value.text());
  }
}

std::string LeafType::PrintMember(const Value& value) const {
  const auto may_have = [&value](const LeafType& member) {
    return member.MayHave(value);
  };
  const bool is_clear =
      std::count_if(members_.begin(), members_.end(), may_have) == 1;
  for (const LeafType& member : members_) {
    if (!may_have(member)) continue;
    try {
      return member.Print(is_clear ? value : member.Check(value));
    } catch (const Error&) {
      // Another member of the same machine type may have it.
    }
  }
  Reject(TypeName(value.type()));
}

Value LeafType::CheckMember(const Value& value) const {
  for (const LeafType& member : members_) {
    if (!member.MayHave(value)) continue;
    try {
      return member.Check(value);
    } catch (const Error&) {
      // Another member of the same machine type may have it.
    }
  }
  Reject(TypeName(value.type()));
}

std::string LeafType::WithPrefix(const std::string& identity) const {
  const size_t colon = identity.find(':');
  const lys_module* module = ly_ctx_get_module_implemented(
      node_->module->ctx, identity.substr(0, colon).c_str());
  if (module == nullptr) return identity;
  return module->prefix + identity.substr(colon);
}

std::optional<std::string> LeafType::FindPrefixed(std::string_view text) const {
  if (members_.empty()) {
    for (const auto& [name, number] : names_.numbers) {
      if (WithPrefix(name) == text) return name;
    }
  }
  return std::nullopt;
}

std::string LeafType::PrintForPrograms(const Value& value) const {
  std::string text = Print(value);
  return RowOf(value.type()).text == TextForm::kIdentity ? WithPrefix(text)
                                                         : text;
}

Value LeafType::ParseForPrograms(std::string_view text) const {
  const bool is_identity = RowOf(value_type_).text == TextForm::kIdentity;
  const auto identity =
      is_identity ? FindPrefixed(text) : std::optional<std::string>();
  return identity ? ParseCanonical(*identity) : Parse(text);
}

Value LeafType::ParseToStore(std::string_view text) const {
  for (const LeafType& member : members_) {
    try {
      member.Parse(text);
    } catch (const Error&) {
      continue;  // the next may take it
    }
    return member.ParseToStore(text);
  }
  constexpr std::string_view kClear = "$0$";
  if (hash_method_.empty() || text.substr(0, kClear.size()) != kClear) {
    return ParseForPrograms(text);
  }
  Parse(text);  // the type may want more of it
  const auto hash =
      text::HashPassword(std::string(text.substr(kClear.size())), hash_method_);
  if (!hash) Reject(text, "this system has no hashes " + hash_method_ + "...");
  return Parse(*hash);
}

bool LeafType::HasPlainly(const Value& value) const {
  if (!members_.empty() || value.type() != value_type_) return false;
  if (value_type_ == ValueType::kBuf) return false;  // bytes may be no text
  if (unrestricted_ && value_type_ != ValueType::kEnum) return true;
  return IsInRange(value);
}

Value LeafType::Check(Value value) const {
  if (HasPlainly(value)) return value;
  if (!members_.empty()) return CheckMember(value);
  if (value.type() != value_type_) {
    throw Error(ErrorCode::kBadType,
                std::string("a ") + TypeName(value.type()) +
                    " value was given for a leaf of type " + name_ + " (" +
                    TypeName(value_type_) + ")");
  }
  if (value.type() == ValueType::kBuf && !text::IsYangText(value.text())) {
    RejectBytes(value.text());
  }
  bool is_named = value_type_ == ValueType::kEnum;
  if (unrestricted_ && !is_named) return value;
  if (HasLength(value.text()) || IsKnownString(value.text())) return value;
  std::string text = Print(WithFractionDigits(value));
  return is_named ? value : Parse(text);
}

// The type's own digits, which a program need not give.
Value LeafType::WithFractionDigits(const Value& value) const {
  if (value_type_ != ValueType::kDecimal64 || value.length() != 0) return value;
  return Value::Number(value_type_, value.bits(), fraction_digits_);
}

const std::string* LeafType::EnumName(int32_t number) const {
  for (const LeafType& member : members_) {
    if (const std::string* name = member.EnumName(number)) return name;
  }
  if (value_type_ != ValueType::kEnum) return nullptr;
  const auto it = names_.names.find(number);
  return it == names_.names.end() ? nullptr : &it->second;
}

}  // namespace kit::store
