// Stand-ins for the reply processors until the push module provides them: weak, so the
// real definitions replace them. Each releases the session it owns and delivers nothing.
// TODO(trade): delete this file when the push module lands.
#include "comm/kel_api.h"
#include "push/replies.h"

#define MOLRA_PENDING_REPLY(name)                                   \
  __attribute__((weak)) bool name(kel::int64 session) {             \
    if (kel::api.Kel_ReleaseSession != nullptr) kel::api.Kel_ReleaseSession(session); \
    return false;                                                   \
  }

namespace molra {
MOLRA_PENDING_REPLY(Sc_Order_AsyncFuncProcess)
MOLRA_PENDING_REPLY(Sc_BatchOrder_AsyncFuncProcess)
MOLRA_PENDING_REPLY(Sc_ETFSG_AsyncFuncProcess)
MOLRA_PENDING_REPLY(Sc_ETFSH_AsyncFuncProcess)
MOLRA_PENDING_REPLY(Sc_ZQHG_AsyncFuncProcess)
MOLRA_PENDING_REPLY(Sc_ZQCRK_AsyncFuncProcess)
MOLRA_PENDING_REPLY(Sc_LOF_AsyncFuncProcess)
MOLRA_PENDING_REPLY(Sc_PHDJ_AsyncFuncProcess)
MOLRA_PENDING_REPLY(Sc_FXYW_AsyncFuncProcess)
MOLRA_PENDING_REPLY(Sc_FJY_AsyncFuncProcess)
MOLRA_PENDING_REPLY(Sc_OrderWithDraw_AsyncFuncProcess)
MOLRA_PENDING_REPLY(Sc_BatchOrderWithDraw_AsyncFuncProcess)
MOLRA_PENDING_REPLY(Sc_ETFWithDraw_AsyncFuncProcess)
MOLRA_PENDING_REPLY(Sc_ZQHGWithDraw_AsyncFuncProcess)
MOLRA_PENDING_REPLY(Sc_LOFWithDraw_AsyncFuncProcess)
MOLRA_PENDING_REPLY(Sc_PHDJWithDraw_AsyncFuncProcess)
MOLRA_PENDING_REPLY(Sc_FXYWWithDraw_AsyncFuncProcess)
}  // namespace molra
