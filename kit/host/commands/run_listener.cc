#include "kit/host/commands/run_listener.h"

#include <fmt/format.h>

#include <utility>

#include "kit/host/commands/mask.h"
#include "kit/host/report/report.h"
#include "kit/host/text.h"

namespace kit::host {

RunListener::RunListener(Journal& journal, Secrets& secrets,
                         RunListening listening)
    : journal_(journal),
      secrets_(secrets),
      listening_(std::move(listening)),
      status_(listening_.show_status) {}

void RunListener::OnSecrets(const std::vector<std::string>& values) {
  for (const std::string& value : values) secrets_.AddValue(value);
}

void RunListener::OnStartChange(ChangeRecord change) {
  for (JournalView* view : listening_.unmasked_views) view->AddStart(change);
  Mask(secrets_, change);
  for (JournalView* view : listening_.views) view->AddStart(change);
}

void RunListener::OnLog(LogRecord record) {
  Mask(secrets_, record);
  if (listening_.log != nullptr) listening_.log->Write(record.text);
  if (listening_.stream != nullptr) {
    Print("log: " + RecordLine(record.text) + "\n");
  }
  for (JournalView* view : listening_.views) view->Add(record);
  journal_.Add(std::move(record));
}

void RunListener::OnCall(CallRecord call) {
  Mask(secrets_, call);
  if (listening_.stream != nullptr) Print(OneLine(RenderCall(call)) + "\n");
  for (JournalView* view : listening_.views) view->Add(call);
  if (listening_.keep_calls) journal_.Add(std::move(call));
}

void RunListener::OnChange(ChangeRecord change) {
  // What the plug-in makes of a secret is one too.
  if (change.after && secrets_.Covers(change.path + "/" + change.leaf)) {
    secrets_.AddValue(*change.after);
  }
  for (JournalView* view : listening_.unmasked_views) view->Add(change);
  Mask(secrets_, change);
  if (listening_.stream != nullptr) {
    Print(OneLine(RenderChange(change)) + "\n");
  }
  for (JournalView* view : listening_.views) view->Add(change);
  if (listening_.keep_calls) journal_.Add(std::move(change));
}

void RunListener::OnPass(PassTotals totals) {
  Mask(secrets_, totals);
  journal_.Add(totals);
}

void RunListener::OnPlace(PlaceRecord record) {
  Mask(secrets_, record);
  for (JournalView* view : listening_.views) view->Add(record);
}

void RunListener::OnRekeyed(const RekeyedEntries& entries) {
  journal_.Add(entries);
}

void RunListener::OnTick(Phase phase, uint64_t calls) {
  if (listening_.stream != nullptr) std::fflush(listening_.stream);
  if (!status_.Due()) return;
  status_.Show(
      fmt::format("{}, {}", Describe(phase), Counted(calls, "call", "calls")));
}

void RunListener::Print(const std::string& text) const {
  std::fputs(text.c_str(), listening_.stream);
}

}  // namespace kit::host
