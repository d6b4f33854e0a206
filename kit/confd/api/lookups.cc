// What there is, how much of it, where, and by which case.
#include <confd_cdb.h>
#include <confd_maapi.h>

#include <optional>
#include <string>
#include <vector>

#include "kit/confd/api/path_call.h"
#include "kit/confd/api/value_text.h"
#include "kit/confd/model/error.h"
#include "kit/confd/tree/choices.h"

namespace store = kit::store;
namespace keypath = kit::keypath;
using kit::api::Call;
using kit::api::CdbCall;
using kit::api::CdbScope;
using kit::api::Describe;
using kit::api::MaapiCall;
using kit::api::RequirePointer;
using kit::api::RunCall;
using kit::api::Scope;

namespace {

using kit::store::Error;
using kit::store::ErrorCode;

int Exists(Call&, const Scope& scope, const store::Target& target) {
  return scope.data->Exists(target) ? 1 : 0;
}

int CountInstances(Call&, const Scope& scope, const store::Target& target) {
  return static_cast<int>(scope.data->Count(target));
}

int IndexOf(Call&, const Scope&, const store::Target& target) {
  // No number but this one is listed for the call.
  if (target.entry == nullptr) {
    throw Error(ErrorCode::kBadPath, target.is_entry
                                         ? "the list entry does not exist"
                                         : "it names no list entry");
  }
  const store::List* list = target.holder->ListAt(*target.schema);
  return static_cast<int>(list->RankOf(*target.entry));
}

// The keys at the end of a path, which are taken off it; "*" stands for those
// that are not given.
std::vector<std::string> TakeKeys(keypath::Path& path) {
  if (path.steps.empty() ||
      path.steps.back().selector != keypath::Selector::kKeys) {
    throw Error(ErrorCode::kBadPath, "it has no keys at its end");
  }
  keypath::Step& last = path.steps.back();
  last.selector = keypath::Selector::kNone;
  return std::move(last.keys);
}

// The position behind the given keys; none past the end.
std::optional<size_t> IndexBehind(const Scope& scope, keypath::Path path) {
  std::vector<std::string> texts = TakeKeys(path);
  const store::Target target = scope.data->Find(path, scope.rules);
  const store::List* list = store::Data::ListOf(target);
  if (target.schema->user_ordered) {
    throw Error(ErrorCode::kUnavailable, "the user orders the list");
  }
  const size_t given = texts.size();
  while (!texts.empty() && texts.back() == "*") texts.pop_back();
  const std::vector<store::Value> keys =
      scope.data->ParseKeys(*target.schema, texts, given);
  if (list == nullptr) return std::nullopt;
  const store::Node* next = keys.empty()
                                ? list->First()
                                : list->Next({keys.data(), keys.size()}, false);
  if (next == nullptr) return std::nullopt;
  return list->RankOf(*next);
}

int IsDefault(Call&, const Scope& scope, const store::Target& target) {
  return scope.data->IsDefault(target) ? 1 : 0;
}

auto GetCase(const char* choice, confd_value_t* rcase) {
  return [=](Call& call, const Scope& scope, const store::Target& target) {
    RequirePointer(choice, "the choice");
    RequirePointer(rcase, "the case");
    const store::HoldingCase found =
        store::FindCase(scope.data->NodeAt(target), choice);
    if (found.by_default && scope.reads.no_defaults) {
      rcase->type = C_DEFAULT;
    } else {
      CONFD_SET_XMLTAG(rcase, store::NameHash(found.holds->name),
                       found.holds->module->hash);
    }
    call.Output(rcase, 1);
    return CONFD_OK;
  };
}

auto DescribeChoice(const char* choice) {
  return [=](const Call&, const Scope&) {
    return choice == nullptr ? std::string("NULL") : std::string(choice);
  };
}

}  // namespace

extern "C" {

int cdb_vexists(int sock, const char* fmt, va_list args) {
  return CdbCall("cdb_exists", sock, fmt, args, Exists);
}
KIT_TWIN(cdb_exists, cdb_vexists, (int sock), (sock))

int maapi_vexists(int sock, int thandle, const char* fmt, va_list args) {
  return MaapiCall("maapi_exists", sock, thandle, fmt, args, Exists);
}
KIT_TWIN(maapi_exists, maapi_vexists, (int sock, int thandle), (sock, thandle))

int cdb_vnum_instances(int sock, const char* fmt, va_list args) {
  return CdbCall("cdb_num_instances", sock, fmt, args, CountInstances);
}
KIT_TWIN(cdb_num_instances, cdb_vnum_instances, (int sock), (sock))

int maapi_vnum_instances(int sock, int thandle, const char* fmt, va_list args) {
  return MaapiCall("maapi_num_instances", sock, thandle, fmt, args,
                   CountInstances);
}
KIT_TWIN(maapi_num_instances, maapi_vnum_instances, (int sock, int thandle),
         (sock, thandle))

int cdb_vindex(int sock, const char* fmt, va_list args) {
  return CdbCall("cdb_index", sock, fmt, args, IndexOf);
}
KIT_TWIN(cdb_index, cdb_vindex, (int sock), (sock))

int cdb_vnext_index(int sock, const char* fmt, va_list args) {
  std::optional<Scope> scope;
  return RunCall(
      "cdb_next_index",
      [&](Call& call) {
        scope = CdbScope(sock);
        call.SetPath(*scope, fmt, args);
      },
      [&](Call& call) {
        const auto index = IndexBehind(*scope, call.AbsolutePath());
        // What is returned at the end is no error.
        return index ? static_cast<int>(*index) : -1;
      });
}
KIT_TWIN(cdb_next_index, cdb_vnext_index, (int sock), (sock))

int cdb_vis_default(int sock, const char* fmt, va_list args) {
  return CdbCall("cdb_is_default", sock, fmt, args, IsDefault);
}
KIT_TWIN(cdb_is_default, cdb_vis_default, (int sock), (sock))

int cdb_vget_case(int sock, const char* choice, confd_value_t* rcase,
                  const char* fmt, va_list args) {
  return CdbCall("cdb_get_case", sock, fmt, args, GetCase(choice, rcase),
                 DescribeChoice(choice));
}
KIT_TWIN(cdb_get_case, cdb_vget_case,
         (int sock, const char* choice, confd_value_t* rcase),
         (sock, choice, rcase))

int maapi_vget_case(int sock, int thandle, const char* choice,
                    confd_value_t* rcase, const char* fmt, va_list args) {
  return MaapiCall("maapi_get_case", sock, thandle, fmt, args,
                   GetCase(choice, rcase), DescribeChoice(choice));
}
KIT_TWIN(maapi_get_case, maapi_vget_case,
         (int sock, int thandle, const char* choice, confd_value_t* rcase),
         (sock, thandle, choice, rcase))

}  // extern "C"
