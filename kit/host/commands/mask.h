// A report without what is not to be read.
#ifndef KIT_HOST_COMMANDS_MASK_H_
#define KIT_HOST_COMMANDS_MASK_H_

#include "kit/host/events.h"
#include "kit/host/failure.h"
#include "kit/host/report/report.h"
#include "kit/host/secrets.h"

namespace kit::host {

void Mask(const Secrets& secrets, LogRecord& record);
void Mask(const Secrets& secrets, CallRecord& call);
void Mask(const Secrets& secrets, ChangeRecord& change);
void Mask(const Secrets& secrets, PlaceRecord& record);
void Mask(const Secrets& secrets, PassTotals& totals);
void Mask(const Secrets& secrets, Failure& failure);
void Mask(const Secrets& secrets, Ledger& ledger);
// All but the ledger, which comes later, and the journal and the differences by
// pass, which are made of what was masked before.
void Mask(const Secrets& secrets, Report& report);

}  // namespace kit::host

#endif  // KIT_HOST_COMMANDS_MASK_H_
