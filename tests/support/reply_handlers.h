// The 17 reply handlers of asynchronous requests, for tests and fuzzers that run them all.
#pragma once

#include "trade/replies.h"

namespace molra::test {

using ReplyHandler = bool (*)(kel::int64 session);

inline constexpr ReplyHandler kReplyHandlers[] = {
    Sc_Order_AsyncFuncProcess,         Sc_BatchOrder_AsyncFuncProcess,
    Sc_ETFSG_AsyncFuncProcess,         Sc_ETFSH_AsyncFuncProcess,
    Sc_ZQHG_AsyncFuncProcess,          Sc_ZQCRK_AsyncFuncProcess,
    Sc_LOF_AsyncFuncProcess,           Sc_PHDJ_AsyncFuncProcess,
    Sc_FXYW_AsyncFuncProcess,          Sc_FJY_AsyncFuncProcess,
    Sc_OrderWithDraw_AsyncFuncProcess, Sc_BatchOrderWithDraw_AsyncFuncProcess,
    Sc_ETFWithDraw_AsyncFuncProcess,   Sc_ZQHGWithDraw_AsyncFuncProcess,
    Sc_LOFWithDraw_AsyncFuncProcess,   Sc_PHDJWithDraw_AsyncFuncProcess,
    Sc_FXYWWithDraw_AsyncFuncProcess,
};

}  // namespace molra::test
