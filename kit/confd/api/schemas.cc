// Loading schemas into the process, and what can be asked of them then.
#include <confd_maapi.h>
#include <sys/socket.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "kit/confd/api/call.h"
#include "kit/confd/model/error.h"
#include "kit/confd/session/loaded_schemas.h"
#include "kit/confd/session/session.h"

namespace store = kit::store;
using kit::api::Call;
using kit::api::RequirePointer;
using kit::api::RunCall;
using kit::store::Error;
using kit::store::ErrorCode;
using kit::store::LoadedSchemas;

namespace {

void NoPreparation(Call&) {}

void RequireNamespace(const store::Database& database, uint32_t hash) {
  for (const store::Data* data :
       {&database.transaction(), &database.running()}) {
    if (data->schema().ModuleOfHash(hash) != nullptr) return;
  }
  throw Error(
      ErrorCode::kNoExists,
      "no module of the models has the namespace " + std::to_string(hash));
}

// Which parts of a schema they leave out can't be told.
void RequireNoFlags(int flags) {
  if (flags == 0) return;
  throw Error(ErrorCode::kProtoUsage,
              "flags " + std::to_string(flags) + " are not known");
}

}  // namespace

extern "C" {

int maapi_load_schemas(int sock) {
  return RunCall("maapi_load_schemas", NoPreparation, [&](Call&) {
    store::Sessions::Instance().Maapi(sock);
    LoadedSchemas::Instance().Load();
    return CONFD_OK;
  });
}

int maapi_load_schemas_list(int sock, int flags, const uint32_t* nshash,
                            const int* nsflags, int num_ns) {
  return RunCall("maapi_load_schemas_list", NoPreparation, [&](Call&) {
    const store::Database& database =
        *store::Sessions::Instance().Maapi(sock).database;
    RequireNoFlags(flags);
    if (num_ns > 0) RequirePointer(nshash, "the namespaces");
    for (int i = 0; i < num_ns; ++i) {
      RequireNamespace(database, nshash[i]);
      if (nsflags != nullptr) RequireNoFlags(nsflags[i]);
    }
    for (int i = 0; i < num_ns; ++i) LoadedSchemas::Instance().Load(nshash[i]);
    return CONFD_OK;
  });
}

int confd_load_schemas(const struct sockaddr* srv, int /*srv_sz*/) {
  return RunCall("confd_load_schemas", NoPreparation, [&](Call&) {
    RequirePointer(srv, "the address");
    // Nobody listens where no database is open.
    if (store::Sessions::Instance().AttachedData().empty()) {
      errno = ECONNREFUSED;
      throw std::system_error(errno, std::generic_category(), "connecting");
    }
    LoadedSchemas::Instance().Load();
    return CONFD_OK;
  });
}

}  // extern "C"
