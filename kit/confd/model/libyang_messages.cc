#include "kit/confd/model/libyang_messages.h"

#include <libyang/libyang.h>
#include <libyang/version.h>

#include <cstdlib>
#include <memory>

#include "kit/confd/text/number.h"

namespace kit::store {
namespace {

// What the place of a message is the place of.
enum class At {
  kInstance,  // what is at fault
  kSchema,    // what is missing, in the schema
  kHolder,    // the instance that something is missing in
  kList       // the list or leaf-list that has too few instances
};

// A message of this meaning has this tag and begins with these words, in both
// releases; they differ in the place.
struct Phrase {
  const char* tag;
  std::string_view words;
  ErrorCode code;
  Breach breach;
  At in_2_1 = At::kInstance;
  At in_3_12 = At::kInstance;
};

constexpr std::string_view kUnknownNamespace = "No module with namespace ";
constexpr std::string_view kNoNamespace = "Missing XML namespace.";
constexpr std::string_view kNoKey = "List instance is missing its key ";
constexpr std::string_view kNoUnionMember = "Invalid union value ";

// Everything else that validation finds is a must condition, which may bring a
// tag and a message of the model's own.
constexpr Phrase kPhrases[] = {
    {"", "Mandatory node ", ErrorCode::kNotSet, Breach::kMissing, At::kSchema,
     At::kHolder},
    {"missing-choice", "Mandatory choice ", ErrorCode::kNotSet,
     Breach::kMissing, At::kSchema, At::kHolder},
    {"too-few-elements", "Too few ", ErrorCode::kNotSet, Breach::kMissing,
     At::kSchema, At::kList},
    {"too-many-elements", "Too many ", ErrorCode::kBadType, Breach::kTooMany},
    {"data-not-unique", "Unique data leaf(s) ", ErrorCode::kBadType,
     Breach::kNotUnique},
    {"", "When condition ", ErrorCode::kBadType, Breach::kOther},
    {"", "Duplicate instance of ", ErrorCode::kBadType, Breach::kOther},
    {"", "Data for both cases ", ErrorCode::kBadType, Breach::kOther},
    {"instance-required", "Invalid leafref value ", ErrorCode::kBadKeyref,
     Breach::kReference},
    {"instance-required", "Invalid instance-identifier ", ErrorCode::kBadKeyref,
     Breach::kReference},
};

bool StartsWith(std::string_view text, std::string_view start) {
  return text.compare(0, start.size(), start) == 0;
}

// The text between `start` and `end`; "" if they are not there.
std::string Between(std::string_view text, std::string_view start,
                    std::string_view end) {
  size_t begin = text.find(start);
  if (begin == std::string_view::npos) return "";
  begin += start.size();
  return std::string(text.substr(begin, text.find(end, begin) - begin));
}

struct Location {
  std::string data_path;
  std::string schema_path;
  uint64_t line = 0;
  std::string text;  // all of it
};

std::string Text(const char* text) { return text != nullptr ? text : ""; }

#if LY_VERSION_MAJOR < 3

// `Data location "/a/b", line number 7.`, or its parts.
Location LocationOf(const ly_err_item& error) {
  Location location;
  location.text = Text(error.path);
  std::string text = location.text;
  if (!text.empty() && text.back() == '.') text.back() = ',';
  location.data_path = Between(text, "ata location \"", "\",");
  location.schema_path = Between(text, "chema location \"", "\",");
  std::string number = Between(text, "ine number ", ",");
  location.line = text::ParseNumber<uint64_t>(number).value_or(0);
  if (location.data_path.empty() && location.schema_path.empty() &&
      location.line == 0) {
    location.data_path = location.text;
  }
  return location;
}

At PlaceIn(const Phrase& phrase) { return phrase.in_2_1; }

#else

Location LocationOf(const ly_err_item& error) {
  Location location{Text(error.data_path), Text(error.schema_path), error.line,
                    ""};
  std::string& text = location.text;
  if (!location.data_path.empty()) {
    text = "Data location \"" + location.data_path + "\"";
  } else if (!location.schema_path.empty()) {
    text = "Schema location \"" + location.schema_path + "\"";
  }
  if (location.line != 0) {
    text += text.empty() ? "Line number " : ", line number ";
    text += std::to_string(location.line);
  }
  if (!text.empty()) text += ".";
  return location;
}

At PlaceIn(const Phrase& phrase) { return phrase.in_3_12; }

#endif

// An error as the context keeps it.
struct Message {
  std::string words;
  std::string tag;
  Location location;
};

// Finding something in the schema may add errors: hence a copy of those before.
std::vector<Message> TakeMessages(ly_ctx* context) {
  std::vector<Message> messages;
  for (const ly_err_item* error = ly_err_first(context); error != nullptr;
       error = error->next) {
    if (error->level != LY_LLERR) continue;
    messages.push_back({error->msg != nullptr ? error->msg : "it is invalid",
                        Text(error->apptag), LocationOf(*error)});
  }
  ly_err_clean(context, nullptr);
  return messages;
}

const Phrase* PhraseOf(const Message& message) {
  for (const Phrase& phrase : kPhrases) {
    if (message.tag == phrase.tag && StartsWith(message.words, phrase.words)) {
      return &phrase;
    }
  }
  return nullptr;
}

// Mandatory node or choice of this name among nodes and inside their choices.
const lysc_node* FindMandatory(const lysc_node* first, std::string_view name) {
  for (const lysc_node* node = first; node != nullptr; node = node->next) {
    if (node->name == name && (node->flags & LYS_MAND_TRUE) != 0) return node;
    if ((node->nodetype & (LYS_CHOICE | LYS_CASE)) == 0) continue;
    const lysc_node* inside = FindMandatory(lysc_node_child(node), name);
    if (inside != nullptr) return inside;
  }
  return nullptr;
}

std::string PathOfMissing(const ly_ctx* context, const Message& message,
                          At place) {
  const Location& location = message.location;
  // A node at the top has no holder.
  if (place == At::kSchema || location.data_path.empty()) {
    return location.schema_path;
  }
  const lysc_node* node = FindSchemaNode(context, location.data_path);
  if (node != nullptr && place == At::kHolder) {
    node = FindMandatory(lysc_node_child(node),
                         Between(message.words, "\"", "\""));
  }
  if (node == nullptr) return location.data_path;
  std::unique_ptr<char, void (*)(void*)> path(
      lysc_path(node, LYSC_PATH_LOG, nullptr, 0), std::free);
  return Text(path.get());
}

std::string ReasonOf(const Message& message) {
  if (message.words == kNoNamespace) {
    return "an element has no namespace: xmlns=\"...\" is missing on it and "
           "on all that it stands in";
  }
  if (!StartsWith(message.words, kNoUnionMember)) return message.words;
  // Release 3 adds the complaint of each member, a line each.
  size_t details = message.words.find(":\n");
  if (details == std::string::npos) return message.words;
  return message.words.substr(0, details) + ".";
}

Complaint Read(const ly_ctx* context, const Message& message) {
  Complaint complaint;
  complaint.reason = ReasonOf(message);
  complaint.line = message.location.line;
  complaint.place = message.location.text;
  if (StartsWith(message.words, kUnknownNamespace)) {
    complaint.unknown_namespace = Between(message.words, "\"", "\"");
  }
  complaint.lacks_key = StartsWith(message.words, kNoKey);
  const Phrase* phrase = PhraseOf(message);
  if (phrase != nullptr) {
    complaint.code = phrase->code;
    complaint.breach = phrase->breach;
  }
  At place = phrase != nullptr ? PlaceIn(*phrase) : At::kInstance;
  if (place == At::kInstance) {
    complaint.path = !message.location.data_path.empty()
                         ? message.location.data_path
                         : message.location.schema_path;
  } else {
    complaint.path = PathOfMissing(context, message, place);
  }
  return complaint;
}

}  // namespace

std::string ReasonOfMust(const lysc_must& must) {
  if (must.emsg != nullptr) return must.emsg;
  return std::string("Must condition \"") + lyxp_get_expr(must.cond) +
         "\" not satisfied.";
}

std::vector<Complaint> TakeComplaints(ly_ctx* context) {
  std::vector<Complaint> complaints;
  for (const Message& message : TakeMessages(context)) {
    complaints.push_back(Read(context, message));
  }
  ly_err_clean(context, nullptr);
  return complaints;
}

const lysc_node* FindSchemaNode(const ly_ctx* context,
                                std::string_view instance_path) {
  // Without the predicates; they may quote any character.
  std::string path;
  bool inside = false;
  char quote = '\0';
  for (char c : instance_path) {
    if (quote != '\0') {
      if (c == quote) quote = '\0';
    } else if (inside) {
      if (c == '\'' || c == '"') quote = c;
      if (c == ']') inside = false;
    } else if (c == '[') {
      inside = true;
    } else {
      path += c;
    }
  }
  if (path.empty()) return nullptr;
  return lys_find_path(context, nullptr, path.c_str(), 0);
}

}  // namespace kit::store
