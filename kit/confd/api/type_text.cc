// Values as text by their types.
#include <confd_lib.h>

#include <algorithm>

#include "kit/confd/api/c_types.h"
#include "kit/confd/api/call.h"
#include "kit/confd/api/put_text.h"
#include "kit/confd/api/schema_handles.h"
#include "kit/confd/api/values.h"

using kit::api::Call;
using kit::api::FromC;
using kit::api::PutText;
using kit::api::RequirePointer;
using kit::api::RunCall;
using kit::api::ToC;
using kit::api::TypeNumber;
using kit::api::TypeOf;

namespace {

void NoPreparation(Call&) {}

}  // namespace

extern "C" {

int confd_val2str(struct confd_type* type, const confd_value_t* val, char* buf,
                  int bufsiz) {
  return RunCall("confd_val2str", NoPreparation, [&](Call&) {
    RequirePointer(type, "the type");
    RequirePointer(val, "the value");
    const auto& leaf_type = *TypeOf(type);
    return PutText(leaf_type.PrintForPrograms(leaf_type.Check(FromC(*val))),
                   buf, bufsiz);
  });
}

int confd_str2val(struct confd_type* type, const char* str,
                  confd_value_t* val) {
  return RunCall("confd_str2val", NoPreparation, [&](Call&) {
    RequirePointer(type, "the type");
    RequirePointer(str, "the text");
    RequirePointer(val, "the value");
    *val = ToC(TypeOf(type)->ParseForPrograms(str));
    return CONFD_OK;
  });
}

char* confd_val2str_ptr(struct confd_type* type, const confd_value_t* val) {
  char* text = nullptr;
  RunCall("confd_val2str_ptr", NoPreparation, [&](Call&) {
    RequirePointer(type, "the type");
    RequirePointer(val, "the value");
    if (TypeNumber(*val) != C_ENUM_VALUE) return CONFD_OK;
    const std::string* name = TypeOf(type)->EnumName(val->val.enumvalue);
    if (name != nullptr) text = const_cast<char*>(name->c_str());
    return CONFD_OK;
  });
  return text;
}

}  // extern "C"
