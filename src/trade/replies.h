// Processors of the replies to asynchronous requests. Each is registered with
// Kel_RegReplyCallFunc by the sending operation and called on a transport thread with the
// session, which it owns from then on and releases on every path. Each turns the answer into
// one JSON text delivered to the function callback with type 14; it returns true when it
// delivered a reply and false when it refused the answer (last error -205 with its name).
// With no function callback set, an acceptable answer is dropped unbuilt and true returned.
//
// Answers: a structured block (Kel_GetStructDataEx), with the customer number from the
// request block (Kel_GetReqStructData, byte 13) and the request's tag from Kel_SetSessData;
// an unstructured answer gives the short form with Kel_GetCode and GetErrorString. The
// issuance and non-trading handlers (FXYW, FJY, FXYWWithDraw) read answer fields instead:
// code Kel_GetCode (0 or above accepted), KHH field 605, WTH 681, WTSJ the entrust-time field
// of util/field_ids.h, DJZJ 764 or SBJG 753, RETNOTE GetErrorString.
#pragma once

#include "comm/kel_abi.h"

namespace molra {

bool Sc_Order_AsyncFuncProcess(kel::int64 session);
bool Sc_BatchOrder_AsyncFuncProcess(kel::int64 session);
bool Sc_ETFSG_AsyncFuncProcess(kel::int64 session);
bool Sc_ETFSH_AsyncFuncProcess(kel::int64 session);
bool Sc_ZQHG_AsyncFuncProcess(kel::int64 session);
bool Sc_ZQCRK_AsyncFuncProcess(kel::int64 session);
bool Sc_LOF_AsyncFuncProcess(kel::int64 session);
bool Sc_PHDJ_AsyncFuncProcess(kel::int64 session);
bool Sc_FXYW_AsyncFuncProcess(kel::int64 session);
bool Sc_FJY_AsyncFuncProcess(kel::int64 session);
bool Sc_OrderWithDraw_AsyncFuncProcess(kel::int64 session);
bool Sc_BatchOrderWithDraw_AsyncFuncProcess(kel::int64 session);
bool Sc_ETFWithDraw_AsyncFuncProcess(kel::int64 session);
bool Sc_ZQHGWithDraw_AsyncFuncProcess(kel::int64 session);
bool Sc_LOFWithDraw_AsyncFuncProcess(kel::int64 session);
bool Sc_PHDJWithDraw_AsyncFuncProcess(kel::int64 session);
bool Sc_FXYWWithDraw_AsyncFuncProcess(kel::int64 session);

}  // namespace molra
