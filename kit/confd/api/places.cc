// Where the relative paths of a program begin, and the namespace they are in.
#include <confd_cdb.h>
#include <confd_maapi.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kit/confd/api/path_call.h"
#include "kit/confd/model/error.h"

namespace store = kit::store;
using kit::api::Call;
using kit::api::CdbScope;
using kit::api::DescribeNamespace;
using kit::api::MaapiScope;
using kit::api::RequirePointer;
using kit::api::RunCall;
using kit::api::Scope;
using kit::api::SelectNamespace;
using kit::api::TagOf;

namespace {

using kit::store::Error;
using kit::store::ErrorCode;

// Moves to the path of a format, after having kept the old place if it
// `pushes`.
template <typename MakeScope>
int Move(const char* function, const MakeScope& make_scope, bool pushes,
         const char* fmt, va_list args) {
  std::optional<Scope> scope;
  return RunCall(
      function,
      [&](Call& call) {
        scope = make_scope();
        call.SetPath(*scope, fmt, args);
      },
      [&](Call& call) {
        store::Session& session = *scope->session;
        store::Place place;
        place.elements =
            scope->data->ElementsOf(call.AbsolutePath(), scope->rules);
        place.text = TextOf(place.elements);
        if (pushes) session.pushed.push_back(session.place);
        session.place = std::move(place);
        return CONFD_OK;
      });
}

template <typename MakeScope>
int Return(const char* function, const MakeScope& make_scope) {
  return RunCall(
      function, [](Call&) {},
      [&](Call&) {
        store::Session& session = *make_scope().session;
        if (session.pushed.empty()) {
          throw Error(ErrorCode::kNoStack, "nothing was pushed");
        }
        session.place = std::move(session.pushed.back());
        session.pushed.pop_back();
        return CONFD_OK;
      });
}

// Copies the place's path with its NUL, cut where it does not fit; `full`
// becomes its length.
template <typename MakeScope>
int ShowPlace(const char* function, const MakeScope& make_scope, size_t size,
              char* curdir, size_t* full) {
  return RunCall(
      function, [](Call&) {},
      [&](Call& call) {
        std::string text = make_scope().session->place.text;
        if (text.empty()) text = "/";
        if (size > 0) {
          RequirePointer(curdir, "the buffer");
          const size_t count = std::min(text.size(), size - 1);
          std::memcpy(curdir, text.data(), count);
          curdir[count] = '\0';
        }
        if (full != nullptr) *full = text.size();
        call.OutputText(std::move(text));
        return CONFD_OK;
      });
}

// A path for a program, which releases it with confd_free_hkeypath.
confd_hkeypath_t* ToC(const std::vector<store::PathElement>& elements) {
  std::unique_ptr<confd_hkeypath_t, void (*)(confd_hkeypath_t*)> path(
      static_cast<confd_hkeypath_t*>(std::calloc(1, sizeof(confd_hkeypath_t))),
      confd_free_hkeypath);
  if (path == nullptr) throw std::bad_alloc();
  // The last element comes first.
  for (auto one = elements.rbegin(); one != elements.rend(); ++one) {
    const size_t needed = one->keys.empty() ? 1 : 2;
    if (static_cast<size_t>(path->len) + needed >= MAXDEPTH) {
      throw Error(
          ErrorCode::kInternal,
          "the path has " + std::to_string(MAXDEPTH) + " elements or more");
    }
    if (!one->keys.empty()) {
      confd_value_t* keys = path->v[path->len++];
      for (const store::Value& key : one->keys) {
        *keys = kit::api::ToC(key, one->schema);
        ++keys;
      }
      keys->type = C_NOEXISTS;
    }
    confd_value_t* name = path->v[path->len++];
    CONFD_SET_XMLTAG(name, TagOf(*one->schema), one->schema->module->hash);
  }
  return path.release();
}

template <typename MakeScope>
int GivePlace(const char* function, const MakeScope& make_scope,
              confd_hkeypath_t** kp) {
  return RunCall(
      function, [](Call&) {},
      [&](Call& call) {
        RequirePointer(kp, "the path");
        const store::Place& place = make_scope().session->place;
        *kp = ToC(place.elements);
        call.OutputText(place.text.empty() ? "/" : place.text);
        return CONFD_OK;
      });
}

auto Cdb(int sock) {
  return [sock] { return CdbScope(sock); };
}
auto Maapi(int sock, int thandle) {
  return [sock, thandle] { return MaapiScope(sock, thandle); };
}

}  // namespace

extern "C" {

int cdb_set_namespace(int sock, int hashed_ns) {
  return RunCall(
      "cdb_set_namespace",
      [&](Call& call) {
        call.Input([&] { return DescribeNamespace(hashed_ns); });
      },
      [&](Call&) { return SelectNamespace(CdbScope(sock), hashed_ns); });
}

int maapi_set_namespace(int sock, int thandle, int hashed_ns) {
  return RunCall(
      "maapi_set_namespace",
      [&](Call& call) {
        call.Input([&] { return DescribeNamespace(hashed_ns); });
      },
      [&](Call&) {
        return SelectNamespace(MaapiScope(sock, thandle), hashed_ns);
      });
}

int maapi_set_flags(int sock, int thandle, int flags) {
  return RunCall(
      "maapi_set_flags",
      [&](Call& call) {
        call.Input([&] { return "flags " + std::to_string(flags); });
      },
      [&](Call&) {
        const Scope scope = MaapiScope(sock, thandle);
        constexpr int kKnown = MAAPI_FLAG_HINT_BULK | MAAPI_FLAG_NO_DEFAULTS |
                               MAAPI_FLAG_CONFIG_ONLY;
        if ((flags & ~kKnown) != 0) {
          throw Error(ErrorCode::kProtoUsage, "an unknown flag is set");
        }
        scope.session->reads.no_defaults =
            (flags & MAAPI_FLAG_NO_DEFAULTS) != 0;
        scope.session->reads.config_only =
            (flags & MAAPI_FLAG_CONFIG_ONLY) != 0;
        return CONFD_OK;
      });
}

int cdb_vcd(int sock, const char* fmt, va_list args) {
  return Move("cdb_cd", Cdb(sock), false, fmt, args);
}
KIT_TWIN(cdb_cd, cdb_vcd, (int sock), (sock))

int cdb_vpushd(int sock, const char* fmt, va_list args) {
  return Move("cdb_pushd", Cdb(sock), true, fmt, args);
}
KIT_TWIN(cdb_pushd, cdb_vpushd, (int sock), (sock))

int cdb_popd(int sock) { return Return("cdb_popd", Cdb(sock)); }

int cdb_getcwd(int sock, size_t strsz, char* curdir) {
  return ShowPlace("cdb_getcwd", Cdb(sock), strsz, curdir, nullptr);
}

int cdb_getcwd_kpath(int sock, confd_hkeypath_t** kp) {
  return GivePlace("cdb_getcwd_kpath", Cdb(sock), kp);
}

int maapi_vcd(int sock, int thandle, const char* fmt, va_list args) {
  return Move("maapi_cd", Maapi(sock, thandle), false, fmt, args);
}
KIT_TWIN(maapi_cd, maapi_vcd, (int sock, int thandle), (sock, thandle))

int maapi_vpushd(int sock, int thandle, const char* fmt, va_list args) {
  return Move("maapi_pushd", Maapi(sock, thandle), true, fmt, args);
}
KIT_TWIN(maapi_pushd, maapi_vpushd, (int sock, int thandle), (sock, thandle))

int maapi_popd(int sock, int thandle) {
  return Return("maapi_popd", Maapi(sock, thandle));
}

int maapi_getcwd(int sock, int thandle, size_t strsz, char* curdir) {
  return ShowPlace("maapi_getcwd", Maapi(sock, thandle), strsz, curdir,
                   nullptr);
}

int maapi_getcwd_kpath(int sock, int thandle, confd_hkeypath_t** kp) {
  return GivePlace("maapi_getcwd_kpath", Maapi(sock, thandle), kp);
}

int maapi_getcwd2(int sock, int thandle, size_t* strsz, char* curdir) {
  const auto make_scope = [&] {
    RequirePointer(strsz, "the size");
    return MaapiScope(sock, thandle);
  };
  return ShowPlace("maapi_getcwd2", make_scope, strsz == nullptr ? 0 : *strsz,
                   curdir, strsz);
}

}  // extern "C"
