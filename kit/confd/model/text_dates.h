// Dates that stay as they are written.
#ifndef KIT_CONFD_MODEL_TEXT_DATES_H_
#define KIT_CONFD_MODEL_TEXT_DATES_H_

struct ly_ctx;

namespace kit::store {

// libyang takes a yang:date-and-time for a moment and writes it in the time
// zone of the machine. From now on it keeps the text, in all modules of the
// context and in their defaults; a default that is not written at its leaf
// itself is at Greenwich.
void KeepDatesAsText(ly_ctx* context);

}  // namespace kit::store

#endif  // KIT_CONFD_MODEL_TEXT_DATES_H_
