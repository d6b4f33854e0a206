// Upgrades a switch's configuration from release 1 to release 2, which the
// README tells apart. What was is read from CDB; what is to be is read and
// written through MAAPI, where the automatic upgrade has carried over all that
// release 2 has a place for.
#include <confd_lib.h>
//
#include <confd_cdb.h>
#include <confd_maapi.h>
#include <zqconfd_log.h>

#include <algorithm>
#include <cstdarg>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

// The number of a name, as the stand-in has it. For a device these numbers come
// from the header that its data-model compiler writes.
constexpr uint32_t Number(std::string_view name) {
  uint32_t hash = 2166136261u;
  for (const char c : name) {
    hash = (hash ^ static_cast<uint8_t>(c)) * 16777619u;
  }
  return hash;
}

constexpr uint32_t kNamespace = Number("urn:example:meadow-switch");

__attribute__((format(printf, 1, 2))) void Log(const char* format, ...) {
  va_list args;
  va_start(args, format);
  zqmw_vlog_debug(get_conf_updt_log_handle(), format, args);
  va_end(args);
}

// The result of a call without which the upgrade can't go on.
int Require(int result, const std::string& task) {
  if (result != CONFD_ERR) return result;
  throw std::runtime_error("cannot " + task + ": " + confd_lasterr());
}

// The text of a string that a call has read.
std::string TextOf(const confd_value_t& value) {
  return {reinterpret_cast<const char*>(CONFD_GET_BUFPTR(&value)),
          CONFD_GET_BUFSIZE(&value)};
}

// The text must outlive the value.
confd_value_t StringValue(const std::string& text) {
  confd_value_t value{};
  CONFD_SET_STR(&value, text.c_str());
  return value;
}

// "eth7" becomes "1/7": the switch is unit 1 of a stack of its own.
std::string NewName(const std::string& old_name) {
  const std::string prefix = "eth";
  const size_t number = old_name.find_first_not_of('0', prefix.size());
  if (old_name.compare(0, prefix.size(), prefix) != 0 ||
      number == std::string::npos ||
      old_name.find_first_not_of("0123456789", number) != std::string::npos) {
    throw std::runtime_error("port " + old_name + " is not called ethN");
  }
  return "1/" + old_name.substr(number);
}

// Walks over a list of the new data.
class Cursor {
 public:
  Cursor(int maapi_sock, int thandle, const char* list) {
    Require(maapi_init_cursor(maapi_sock, thandle, &cursor_, "%s", list),
            std::string("walk over ") + list);
  }
  ~Cursor() { maapi_destroy_cursor(&cursor_); }
  Cursor(const Cursor&) = delete;
  Cursor& operator=(const Cursor&) = delete;
  maapi_cursor* get() { return &cursor_; }

 private:
  maapi_cursor cursor_;
};

class VlanUpgrade {
 public:
  VlanUpgrade(int maapi_sock, int thandle, int cdb_sock)
      : maapi_(maapi_sock), th_(thandle), cdb_(cdb_sock) {}

  void Run() const {
    Require(cdb_set_namespace(cdb_, kNamespace), "select the old data");
    Require(maapi_set_namespace(maapi_, th_, kNamespace),
            "select the new data");
    if (IsDone()) {
      Log("The configuration is of release 2 already");
      return;
    }
    RenamePorts();
    RenameMembers();
    OrderFilters();
    ConvertTimers();
  }

 private:
  // Release 1 has this leaf, with a value or not; release 2 does not.
  bool IsDone() const {
    return cdb_exists(cdb_, "/switch/spanning-tree/hello-time") == CONFD_ERR &&
           confd_errno == CONFD_ERR_BADPATH;
  }

  // Entries get other keys.
  void RenamePorts() const {
    for (const std::string& name : PortNames()) {
      const std::string new_name = NewName(name);
      confd_value_t old_key = StringValue(name);
      confd_value_t new_key = StringValue(new_name);
      Require(
          maapi_move(maapi_, th_, &new_key, 1, "/switch/port{%x}", &old_key),
          "rename port " + name + " to " + new_name);
      Log("Port %s is now %s", name.c_str(), new_name.c_str());
    }
  }

  // All of them before one is renamed, or the walk would meet it again.
  std::vector<std::string> PortNames() const {
    constexpr int kAtOnce = 16;
    constexpr int kWidth = 1;  // the key; the other leaves don't matter
    std::vector<std::string> names;
    Cursor cursor(maapi_, th_, "/switch/port");
    while (cursor.get()->n != 0) {
      confd_value_t keys[kAtOnce * kWidth];
      int count = kAtOnce;
      Require(maapi_get_objects(cursor.get(), keys, kWidth, &count),
              "read the ports");
      for (int i = 0; i < count; ++i) {
        names.push_back(TextOf(keys[i]));
        confd_free_value(&keys[i]);
      }
    }
    return names;
  }

  // What refers to a port has to follow it.
  void RenameMembers() const {
    Cursor cursor(maapi_, th_, "/switch/vlan");
    Require(maapi_get_next(cursor.get()), "read the VLANs");
    while (cursor.get()->n != 0) {
      RenameMembersOf(&cursor.get()->keys[0]);
      Require(maapi_get_next(cursor.get()), "read the VLANs");
    }
  }

  void RenameMembersOf(confd_value_t* vlan) const {
    confd_tag_value_t read;
    CONFD_SET_TAG_NOEXISTS(&read, Number("port"));
    Require(maapi_get_values(maapi_, th_, &read, 1, "/switch/vlan{%x}", vlan),
            "read the ports of a VLAN");
    confd_value_t* list = CONFD_GET_TAG_VALUE(&read);
    if (list->type == C_NOEXISTS) return;
    std::vector<std::string> names;
    for (unsigned i = 0; i < CONFD_GET_LISTSIZE(list); ++i) {
      names.push_back(TextOf(CONFD_GET_LIST(list)[i]));
    }
    confd_free_value(list);

    std::vector<confd_value_t> items;
    for (std::string& name : names) {
      name = NewName(name);
      items.push_back(StringValue(name));
    }
    confd_tag_value_t written;
    CONFD_SET_TAG_LIST(&written, Number("port"), items.data(), items.size());
    Require(
        maapi_set_values(maapi_, th_, &written, 1, "/switch/vlan{%x}", vlan),
        "write the ports of a VLAN");
  }

  // The order takes the place of the priorities, which only the old data has.
  void OrderFilters() const {
    constexpr int kWidth = 2;  // the key and the priority
    const int count =
        Require(cdb_num_instances(cdb_, "/switch/filter"), "count the filters");
    if (count == 0) return;
    std::vector<confd_value_t> values(static_cast<size_t>(count) * kWidth);
    Require(cdb_get_objects(cdb_, values.data(), kWidth, 0, count,
                            "/switch/filter"),
            "read the filters");
    std::vector<std::pair<int, std::string>> filters;
    for (size_t i = 0; i < values.size(); i += kWidth) {
      filters.emplace_back(CONFD_GET_UINT16(&values[i + 1]), TextOf(values[i]));
      confd_free_value(&values[i]);
    }
    std::sort(filters.begin(), filters.end());
    for (const auto& [priority, name] : filters) {
      confd_value_t key = StringValue(name);
      Require(maapi_move_ordered(maapi_, th_, MAAPI_MOVE_LAST, nullptr, 0,
                                 "/switch/filter{%x}", &key),
              "move filter " + name);
      Log("Filter %s comes next, it had priority %d", name.c_str(), priority);
    }
  }

  // Release 2 has shorter defaults: what held by default is written as well.
  void ConvertTimers() const {
    uint8_t hello = 0;
    uint8_t age = 0;
    uint8_t delay = 0;
    confd_tag_value_t seconds[3];
    CONFD_SET_TAG_PTR(&seconds[0], Number("hello-time"), C_UINT8, &hello);
    CONFD_SET_TAG_PTR(&seconds[1], Number("max-age"), C_UINT8, &age);
    CONFD_SET_TAG_PTR(&seconds[2], Number("forward-delay"), C_UINT8, &delay);
    Require(cdb_get_values(cdb_, seconds, 3, "/switch/spanning-tree"),
            "read the timers");

    confd_tag_value_t timers[5];
    CONFD_SET_TAG_XMLBEGIN(&timers[0], Number("timers"), kNamespace);
    CONFD_SET_TAG_UINT32(&timers[1], Number("hello"), hello * 1000u);
    CONFD_SET_TAG_UINT32(&timers[2], Number("max-age"), age * 1000u);
    CONFD_SET_TAG_UINT32(&timers[3], Number("forward-delay"), delay * 1000u);
    CONFD_SET_TAG_XMLEND(&timers[4], Number("timers"), kNamespace);
    Require(maapi_set_values(maapi_, th_, timers, 5, "/switch/spanning-tree"),
            "write the timers");
    Log("Timers: hello %d s, age %d s, delay %d s", hello, age, delay);
  }

  const int maapi_;
  const int th_;
  const int cdb_;
};

}  // namespace

// What a host looks for in the plug-in. No exception may leave it.
extern "C" __attribute__((visibility("default"))) int update(int maapi_sock,
                                                             int thandle,
                                                             int cdb_sock) {
  try {
    VlanUpgrade(maapi_sock, thandle, cdb_sock).Run();
    return 0;
  } catch (const std::exception& error) {
    Log("%s", error.what());
    return -1;
  }
}
