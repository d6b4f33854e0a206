#include "kit/host/journal/journal.h"

#include <algorithm>
#include <tuple>

namespace kit::host {
namespace {

ListTotals& ListOf(PassTotals& pass, const std::string& name) {
  for (ListTotals& list : pass.lists) {
    if (list.list == name) return list;
  }
  ListTotals& list = pass.lists.emplace_back();
  list.list = name;
  return list;
}

void AddFunction(PassTotals& pass, const FunctionTotals& added) {
  for (FunctionTotals& function : pass.functions) {
    if (function.function != added.function) continue;
    function.calls += added.calls;
    function.failed += added.failed;
    return;
  }
  pass.functions.push_back(added);
}

void AddFailure(PassTotals& pass, const FailedCalls& added) {
  for (FailedCalls& failed : pass.failures) {
    if (std::tie(failed.function, failed.node, failed.error) !=
        std::tie(added.function, added.node, added.error)) {
      continue;
    }
    failed.count += added.count;
    return;
  }
  pass.failures.push_back(added);
}

}  // namespace

PassTotals& Journal::PassOf(uint32_t number) {
  const auto at = std::lower_bound(
      passes_.begin(), passes_.end(), number,
      [](const PassTotals& pass, uint32_t n) { return pass.pass < n; });
  if (at != passes_.end() && at->pass == number) return *at;
  PassTotals pass;
  pass.pass = number;
  return *passes_.insert(at, std::move(pass));
}

void Journal::Add(const PassTotals& totals) {
  PassTotals& pass = PassOf(totals.pass);
  pass.calls += totals.calls;
  for (const FunctionTotals& added : totals.functions) {
    AddFunction(pass, added);
  }
  for (const ListTotals& added : totals.lists) {
    ListTotals& list = ListOf(pass, added.list);
    list.created += added.created;
    list.rekeyed += added.rekeyed;
    list.changed += added.changed;
    list.deleted += added.deleted;
    list.moved += added.moved;
  }
  for (const FailedCalls& added : totals.failures) AddFailure(pass, added);
  if (totals.last_failure.number > 0) pass.last_failure = totals.last_failure;
}

void Journal::Add(const RekeyedEntries& entries) {
  ListTotals& list = ListOf(PassOf(entries.pass), entries.list);
  // What the plug-in's process told of its pass may be anything.
  const uint64_t count = std::min(entries.count, list.created);
  list.rekeyed += count;
  list.created -= count;
  list.deleted -= std::min(count, list.deleted);
}

CallRecord Journal::LastFailure() const {
  CallRecord last;
  for (const PassTotals& pass : passes_) {
    if (pass.last_failure.number > last.number) last = pass.last_failure;
  }
  return last;
}

std::vector<std::string> Journal::LogTexts() const {
  std::vector<std::string> texts;
  for (const Event& event : events_) {
    if (const auto* record = std::get_if<LogRecord>(&event)) {
      texts.push_back(record->text);
    }
  }
  return texts;
}

}  // namespace kit::host
