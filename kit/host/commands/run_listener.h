// What is made of a run's events as they come.
#ifndef KIT_HOST_COMMANDS_RUN_LISTENER_H_
#define KIT_HOST_COMMANDS_RUN_LISTENER_H_

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "kit/host/commands/status_line.h"
#include "kit/host/events.h"
#include "kit/host/journal/journal.h"
#include "kit/host/journal/view.h"
#include "kit/host/process/log_file.h"
#include "kit/host/process/supervisor.h"
#include "kit/host/secrets.h"

namespace kit::host {

// What a run's listener hands on; a null pointer for what nobody wants.
struct RunListening {
  LogFile* log = nullptr;
  FILE* stream = nullptr;   // where calls are printed as they happen
  bool keep_calls = false;  // in the journal
  bool show_status = false;
  std::vector<JournalView*> views;
  // That are given changes as they are, to tell whether a secret changed.
  std::vector<JournalView*> unmasked_views;
};

// Masks what comes in, keeps it and hands it on, and shows that something is
// happening.
class RunListener : public Listener {
 public:
  // All of them have to outlive it.
  RunListener(Journal& journal, Secrets& secrets, RunListening listening);

  void OnSecrets(const std::vector<std::string>& values) override;
  void OnStartChange(ChangeRecord change) override;
  void OnLog(LogRecord record) override;
  void OnCall(CallRecord call) override;
  void OnChange(ChangeRecord change) override;
  void OnPass(PassTotals totals) override;
  void OnPlace(PlaceRecord record) override;
  void OnRekeyed(const RekeyedEntries& entries) override;
  void OnTick(Phase phase, uint64_t calls) override;

 private:
  void Print(const std::string& text) const;

  Journal& journal_;
  Secrets& secrets_;
  const RunListening listening_;
  StatusLine status_;
};

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_RUN_LISTENER_H_
