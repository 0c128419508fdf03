// Answers a request: the prepared answer in benchmark mode, else a scripted answer, else the
// back end's handler for the function code. Pushes the back end produced are queued for the
// push thread.
#pragma once

#include "session.h"

namespace sim {

void Dispatch(const Request& req, const Settings& set, Answer* ans);
// Delivers the pushes the back end has produced so far (on the push thread).
void FlushBackendPushes();
// Empties the prepared answers of benchmark mode.
void ClearPrepared();

}  // namespace sim
