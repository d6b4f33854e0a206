// Something made of a run's events while they come, so that nobody has to keep
// them.
#ifndef KIT_HOST_JOURNAL_VIEW_H_
#define KIT_HOST_JOURNAL_VIEW_H_

#include "kit/host/events.h"

namespace kit::host {

class JournalView {
 public:
  virtual ~JournalView() = default;
  // In the order in which they happened; calls and changes only where the run
  // is told to record them.
  // Of the automatic upgrade, before all others.
  virtual void AddStart(const ChangeRecord&) {}
  virtual void Add(const LogRecord&) {}
  virtual void Add(const CallRecord&) {}
  virtual void Add(const ChangeRecord&) {}
  // Where a run is told of places: of each before the plug-in runs, and after.
  virtual void Add(const PlaceRecord&) {}
};

}  // namespace kit::host

#endif  // KIT_HOST_JOURNAL_VIEW_H_
