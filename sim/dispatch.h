// Answers a request: the prepared answer in benchmark mode, else a scripted answer, else the
// back end's (whose pushes go to the push thread).
#pragma once

#include "session.h"

namespace sim {

void Dispatch(const Request& req, const Settings& set, Answer* ans);
// Empties the prepared answers of benchmark mode.
void ClearPrepared();

}  // namespace sim
