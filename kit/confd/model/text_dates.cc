#include "kit/confd/model/text_dates.h"

#include <libyang/libyang.h>
#include <libyang/plugins_types.h>

#include <cstring>
#include <ctime>
#include <string>

#include "kit/confd/model/memory.h"
#include "kit/confd/text/date.h"

namespace kit::store {
namespace {

bool IsMoment(const lysc_type* type) {
  return std::strstr(type->plugin->id, "date-and-time") != nullptr;
}

// libyang's way to handle moments, with strings in their place.
lyplg_type* TextPlugin(const lyplg_type& moments) {
  static lyplg_type plugin = [&] {
    lyplg_type made = moments;
    made.id = "date-and-time as text";
    made.store = lyplg_type_store_string;
    made.compare = lyplg_type_compare_simple;
    made.sort = nullptr;
    made.print = lyplg_type_print_simple;
    made.duplicate = lyplg_type_dup_simple;
    made.free = lyplg_type_free_simple;
    return made;
  }();
  return &plugin;
}

template <typename Visit>
void ForEachDefault(lysc_node* node, const Visit& visit) {
  if (node->nodetype == LYS_LEAF) {
    auto* leaf = reinterpret_cast<lysc_node_leaf*>(node);
    if (leaf->dflt != nullptr) visit(*leaf->dflt);
  } else if (node->nodetype == LYS_LEAFLIST) {
    auto* list = reinterpret_cast<lysc_node_leaflist*>(node);
    LY_ARRAY_COUNT_TYPE i;
    LY_ARRAY_FOR(list->dflts, i) visit(*list->dflts[i]);
  }
}

lysc_type* TypeOf(lysc_node* node) {
  switch (node->nodetype) {
    case LYS_LEAF:
      return reinterpret_cast<lysc_node_leaf*>(node)->type;
    case LYS_LEAFLIST:
      return reinterpret_cast<lysc_node_leaflist*>(node)->type;
    default:
      return nullptr;
  }
}

std::string InUtc(const std::string& text) {
  auto moment = text::ParseDateTime(text);
  if (!moment) return text;
  auto& [day, clock, zone] = *moment;
  std::tm parts{};
  parts.tm_year = day.year - 1900;
  parts.tm_mon = static_cast<int>(day.month) - 1;
  parts.tm_mday = static_cast<int>(day.day);
  parts.tm_hour = static_cast<int>(clock.hour) - zone.hours;
  parts.tm_min = static_cast<int>(clock.minute) -
                 (zone.hours < 0 ? -zone.minutes : zone.minutes);
  parts.tm_sec = static_cast<int>(clock.second);
  const std::time_t time = timegm(&parts);
  gmtime_r(&time, &parts);
  day = {parts.tm_year + 1900, static_cast<unsigned>(parts.tm_mon) + 1,
         static_cast<unsigned>(parts.tm_mday)};
  clock = {static_cast<unsigned>(parts.tm_hour),
           static_cast<unsigned>(parts.tm_min),
           static_cast<unsigned>(parts.tm_sec), clock.micros};
  zone = {0, 0};
  return text::PrintDateTime(*moment);
}

class Rewriter {
 public:
  explicit Rewriter(ly_ctx* context) : context_(context) {}

  void Run() {
    // Types are shared: none may change as long as there are moments that are
    // not printed.
    ForEachNode(PrintDefaults);
    ForEachNode(KeepText);
  }

 private:
  void ForEachNode(lysc_dfs_clb visit) {
    uint32_t index = 0;
    while (const lys_module* module =
               ly_ctx_get_module_iter(context_, &index)) {
      if (module->compiled != nullptr) {
        lysc_module_dfs_full(module, visit, this);
      }
    }
    memory_.Require(LY_SUCCESS);
  }

  static LY_ERR PrintDefaults(lysc_node* node, void* self, ly_bool*) {
    ly_ctx* context = static_cast<Rewriter*>(self)->context_;
    ForEachDefault(node, [&](lyd_value& value) {
      lyd_value_get_canonical(context, &value);
    });
    return LY_SUCCESS;
  }

  static LY_ERR KeepText(lysc_node* node, void* self, ly_bool*) {
    if (lysc_type* type = TypeOf(node)) {
      static_cast<Rewriter*>(self)->KeepText(node, type);
    }
    return LY_SUCCESS;
  }

  void KeepText(lysc_node* node, lysc_type* type) {
    if (type->basetype == LY_TYPE_LEAFREF) {
      return KeepText(node,
                      reinterpret_cast<lysc_type_leafref*>(type)->realtype);
    }
    if (type->basetype == LY_TYPE_UNION) {
      auto* types = reinterpret_cast<lysc_type_union*>(type)->types;
      LY_ARRAY_COUNT_TYPE i;
      LY_ARRAY_FOR(types, i) KeepText(node, types[i]);
      return;
    }
    if (!IsMoment(type)) return;
    if (moments_ == nullptr) moments_ = type->plugin;
    type->plugin = TextPlugin(*moments_);
    ForEachDefault(node, [&](lyd_value& value) {
      if (value.realtype == type) Restore(node, type, value);
    });
  }

  void Restore(lysc_node* node, lysc_type* type, lyd_value& value) {
    const std::string text = DefaultText(node, type, value);
    moments_->free(context_, &value);
    ly_err_item* fault = nullptr;
    type->plugin->store(context_, type, text.data(), text.size(), 0,
                        LY_VALUE_JSON, nullptr, LYD_HINT_DATA, node, &value,
                        nullptr, &fault);
    ly_err_free(fault);
  }

  // As it is written, if it is written here: the same moment. A refinement or
  // a typedef may say another.
  std::string DefaultText(lysc_node* node, lysc_type* type,
                          const lyd_value& value) {
    const std::string printed = lyd_value_get_canonical(context_, &value);
    const char* written =
        node->nodetype == LYS_LEAF && node->priv != nullptr
            ? static_cast<const lysp_node_leaf*>(node->priv)->dflt.str
            : nullptr;
    if (written == nullptr) return InUtc(printed);
    lyd_value moment{};
    ly_err_item* fault = nullptr;
    const LY_ERR result = moments_->store(
        context_, type, written, std::strlen(written), 0, LY_VALUE_JSON,
        nullptr, LYD_HINT_DATA, node, &moment, nullptr, &fault);
    ly_err_free(fault);
    if (result != LY_SUCCESS) return InUtc(printed);
    const bool is_same = printed == static_cast<const char*>(moments_->print(
                                        context_, &moment, LY_VALUE_CANON,
                                        nullptr, nullptr, nullptr));
    moments_->free(context_, &moment);
    return is_same ? written : InUtc(printed);
  }

  ly_ctx* const context_;
  const LibyangMemory memory_;
  lyplg_type* moments_ = nullptr;
};

}  // namespace

void KeepDatesAsText(ly_ctx* context) { Rewriter(context).Run(); }

}  // namespace kit::store
