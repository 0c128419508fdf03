// Answers a request: the prepared answer in benchmark mode, else a scripted answer, else the
// back end's: the in-process one (whose pushes go to the push thread) or a server's.
#pragma once

#include "session.h"

namespace sim {

// Before a request goes to a back end: true when it is answered here, by a prepared answer
// (benchmark mode) or a scripted one. Records the request (KelSim_LastRequest) otherwise.
bool AnswerHere(const Request& req, Answer* ans);
// After a back end answered: the length override, and in benchmark mode the prepared answer.
void Finish(const Request& req, Answer* ans);
// Answers from here or from the in-process back end.
void Dispatch(const Request& req, const Settings& set, Answer* ans);
// Empties the prepared answers of benchmark mode.
void ClearPrepared();

}  // namespace sim
