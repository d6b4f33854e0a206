#include "kit/host/findings/data_rules.h"

#include <fmt/format.h>

#include <functional>
#include <string>
#include <unordered_map>
#include <utility>

#include "kit/host/findings/collector.h"
#include "kit/host/findings/ospf_tables.h"

namespace kit::host {
namespace {

using control::Query;
using control::QueryMatch;
using control::Side;

[[noreturn]] void FailFor(const Rule& rule, const std::string& expression,
                          const std::string& reason) {
  const auto known = rule.expressions.find(expression);
  throw RuleError(
      rule.file,
      known != rule.expressions.end() ? known->second : rule.position,
      fmt::format("the expression \"{}\" of rule {}: {}", expression, rule.id,
                  reason));
}

void CheckQuery(const Rule& rule, const control::Database& database, Side side,
                const Query& query) {
  std::string lack;
  try {
    lack = database.LackOf(side, query);
  } catch (const control::QueryError& error) {
    FailFor(rule, error.expression(), error.what());
  }
  if (!lack.empty() && rule.is_own) FailFor(rule, query.select, lack);
}

std::string TextOf(const std::optional<std::string>& text) {
  return text.value_or("(nothing)");
}

// Keys of one side of a comparison, with their values.
using KeyedValues = std::unordered_map<std::string, std::optional<std::string>>;

class Search {
 public:
  Search(const Catalogue& catalogue, const control::Database& database,
         Side side)
      : catalogue_(catalogue),
        database_(database),
        side_(side),
        tables_(database) {}

  std::vector<Finding> Run() {
    for (const Rule& rule : catalogue_.rules) {
      if (LooksHere(rule)) collectors_.push_back({&rule, Collector(rule)});
    }
    AskAll();
    for (auto& [rule, collector] : collectors_) {
      if (rule->where == Where::kBoth) Compare(*rule, collector);
      if (rule->where == Where::kCode) RunCode(*rule, collector);
    }
    std::vector<Finding> findings;
    for (const auto& [rule, collector] : collectors_) {
      if (auto finding = collector.Result()) {
        findings.push_back(std::move(*finding));
      }
    }
    return findings;
  }

 private:
  struct Collecting {
    const Rule* rule;
    Collector collector;
  };

  bool LooksHere(const Rule& rule) const {
    switch (rule.where) {
      case Where::kInput:
        return side_ == Side::kInput;
      case Where::kResult:
      case Where::kBoth:
        return side_ == Side::kResult;
      case Where::kCode:
        return rule.code->side == side_;
      default:
        return false;
    }
  }

  // All queries at once: they share what libyang is given.
  void AskAll() {
    std::vector<Query> queries;
    std::vector<Collecting*> owners;
    for (Collecting& one : collectors_) {
      if (one.rule->where != Where::kInput &&
          one.rule->where != Where::kResult) {
        continue;
      }
      queries.push_back(one.rule->query);
      owners.push_back(&one);
    }
    if (queries.empty()) return;
    try {
      database_.Evaluate(side_, queries, [&owners](const QueryMatch& match) {
        owners[match.query]->collector.Add(
            [&match](size_t i) { return TextOf(match.texts[i]); }, match.path);
      });
    } catch (const control::QueryError& error) {
      for (const Collecting* owner : owners) {
        if (owner->rule->expressions.count(error.expression()) > 0) {
          FailFor(*owner->rule, error.expression(), error.what());
        }
      }
      throw;
    }
  }

  void Ask(const Rule& rule, Side side, const Query& query,
           const std::function<void(const QueryMatch&)>& sink) const {
    try {
      database_.Evaluate(side, {query}, sink);
    } catch (const control::QueryError& error) {
      FailFor(rule, error.expression(), error.what());
    }
  }

  // What a comparison does not find on the other side, or finds there.
  void Compare(const Rule& rule, Collector& collector) const {
    using Found = Comparison::Found;
    const Comparison& comparison = rule.comparison;
    if (!database_.LackOf(Side::kInput, comparison.input).empty() ||
        !database_.LackOf(Side::kResult, comparison.result).empty()) {
      return;
    }
    const bool from_result = comparison.found == Found::kNew;
    const Query& known = from_result ? comparison.input : comparison.result;
    const Query& asked = from_result ? comparison.result : comparison.input;
    KeyedValues values;
    Ask(rule, from_result ? Side::kInput : Side::kResult, known,
        [&values](const QueryMatch& match) {
          if (match.texts[0]) values.emplace(*match.texts[0], Value(match));
        });
    Ask(rule, from_result ? Side::kResult : Side::kInput, asked,
        [&](const QueryMatch& match) {
          if (!match.texts[0]) return;
          const auto other = values.find(*match.texts[0]);
          const bool is_there = other != values.end();
          if (!Fits(comparison.found, match,
                    is_there ? &other->second : nullptr)) {
            return;
          }
          const auto other_value =
              is_there ? other->second : std::optional<std::string>();
          const auto own_value = Value(match);
          const std::string texts[] = {
              *match.texts[0], TextOf(from_result ? other_value : own_value),
              TextOf(from_result ? own_value : other_value)};
          collector.Add([&](size_t i) { return texts[PlaceNumber(rule, i)]; },
                        match.path);
        });
  }

  static size_t PlaceNumber(const Rule& rule, size_t place) {
    const std::string& name = rule.message.places()[place].name;
    return name == "key" ? 0 : name == "before" ? 1 : 2;
  }

  static std::optional<std::string> Value(const QueryMatch& match) {
    return match.texts.size() > 1 ? match.texts[1] : std::nullopt;
  }

  // `other` is null where the other side has no such key.
  static bool Fits(Comparison::Found found, const QueryMatch& match,
                   const std::optional<std::string>* other) {
    switch (found) {
      case Comparison::Found::kMissing:
      case Comparison::Found::kNew:
        return other == nullptr;
      case Comparison::Found::kDifferent:
        return other != nullptr && *other != Value(match);
      case Comparison::Found::kEqual:
        return other != nullptr && *other == Value(match);
    }
    return false;
  }

  class Hits : public HitSink {
   public:
    Hits(const Rule& rule, Collector& collector)
        : rule_(rule), collector_(collector) {}
    bool WantsTexts() const override { return collector_.WantsTexts(); }
    void Add(Hit hit) override {
      collector_.Add([&](size_t i) { return Value(hit, i); },
                     [&hit] { return hit.path; });
    }

   private:
    std::string Value(const Hit& hit, size_t place) const {
      const std::string& name = rule_.message.places()[place].name;
      for (size_t i = 0; i < rule_.code->places.size(); ++i) {
        if (rule_.code->places[i] == name) return hit.values.at(i);
      }
      return "";
    }
    const Rule& rule_;
    Collector& collector_;
  };

  void RunCode(const Rule& rule, Collector& collector) {
    Hits hits(rule, collector);
    rule.code->find(tables_, hits);
  }

  const Catalogue& catalogue_;
  const control::Database& database_;
  const Side side_;
  OspfTables tables_;
  std::vector<Collecting> collectors_;
};

}  // namespace

void CheckExpressions(const Catalogue& catalogue,
                      const control::Database& database) {
  for (const Rule& rule : catalogue.rules) {
    if (rule.where == Where::kInput) {
      CheckQuery(rule, database, Side::kInput, rule.query);
    } else if (rule.where == Where::kResult) {
      CheckQuery(rule, database, Side::kResult, rule.query);
    } else if (rule.where == Where::kBoth) {
      CheckQuery(rule, database, Side::kInput, rule.comparison.input);
      CheckQuery(rule, database, Side::kResult, rule.comparison.result);
    }
  }
}

std::vector<Finding> FindInInput(const Catalogue& catalogue,
                                 const control::Database& database) {
  return Search(catalogue, database, Side::kInput).Run();
}

std::vector<Finding> FindInResult(const Catalogue& catalogue,
                                  const control::Database& database) {
  return Search(catalogue, database, Side::kResult).Run();
}

}  // namespace kit::host
