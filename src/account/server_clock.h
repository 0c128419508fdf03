// The back end's clock and dates: the date and the offset of the local clock to the back
// end's, measured by the server-time request "A00001" that every login runs, and the trade
// date "A00066".
#pragma once

#include <cstdint>

#include "comm/conn_pool.h"
#include "comm/kv_request.h"
#include "core/context.h"
#include "core/status.h"

namespace molra {

// Runs "A00001" on the default customer's management connection and stores date and offset
// in the kit's clock. A missing customer or session and a failed run are failures under
// "GetCurTime"; an answer that refuses leaves the clock as it was, and is no failure.
Status MeasureServerTime(Kit* kit);

// YYYYMMDD as the back end gave it; 0 until measured (and without a kit).
std::int64_t SystemDate();
// The revised time of day now: the local stamp's reading minus the measured offset.
std::int64_t ReviseTimeMs();

// The trade date (field 4211 of "A00066") asked on `session` with the given settings and
// rule; failures name no function.
Result<std::int64_t> AskTradeDate(KelSession session, ReqFields settings, const AnswerRule& rule);

}  // namespace molra
