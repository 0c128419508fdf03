// The back end's business handlers, one per function code, registered in one table
// (handlers.cpp). A handler runs with the back end's mutex held and fills the answer.
#pragma once

#include <cstdint>
#include <string>

#include "backend.h"
#include "block.h"
#include "message.h"

namespace sim {

struct HandlerCtx {
  Backend& be;
  const Request& req;
  const Caller& who;
  Answer& ans;
};
using Handler = void (*)(HandlerCtx&);

// The handler of a normalised function code; null when the back end does not know it.
Handler FindHandler(const std::string& func);

// Return codes and messages of refusals.
namespace err {
constexpr int kBadRequest = -100;  // malformed request
constexpr int kBadToken = -101;
constexpr int kNoCustomer = -102;
constexpr int kNoFunds = -103;
constexpr int kNoShares = -104;
constexpr int kNoSecurity = -105;
constexpr int kBadOrder = -106;  // quantity, price or category
constexpr int kNoOrder = -107;   // nothing to withdraw
constexpr int kBadPassword = -108;
constexpr int kBadNode = -109;
constexpr int kBadAccount = -110;  // shareholder or fund account not the customer's
constexpr int kBadExchange = -111;
constexpr int kNoEtf = -112;
constexpr int kNotAllowed = -113;
}  // namespace err

// Key/value requests: the customer of field 605 (refusal in the answer when unknown), with
// the session's node id checked against the customer's nodes, and with the token of field
// 1600 checked when `token` is set.
Customer* KvCustomer(HandlerCtx& c, bool token);
// Block requests: the answer block (request head copied, code at 11, message at 302).
Block AnswerBlock(const Request& req, std::size_t size, int code, const std::string& msg);
void SetBlockAnswer(HandlerCtx& c, Block b);
// Block requests: the customer of the head's KHH with its token checked; on failure the
// answer is a block of `answer_size` bytes carrying the refusal.
Customer* BlockCustomer(HandlerCtx& c, std::size_t answer_size);
void RefuseBlock(HandlerCtx& c, std::size_t answer_size, int code, const std::string& msg);
bool NodeAllowed(const Customer& cu, std::int32_t node_id);
std::string Money(double v, int decimals = 2);

// Login and session (handlers_login.cpp).
void HandleLogin(HandlerCtx& c);
void HandleNodeList(HandlerCtx& c);
void HandleServerTime(HandlerCtx& c);
void HandleTradeDate(HandlerCtx& c);
// Account management (handlers_account.cpp).
void HandleModifyPwd(HandlerCtx& c);
void HandleTransfer(HandlerCtx& c);
void HandleTransferBetweenNodes(HandlerCtx& c);
void HandleSetRatio(HandlerCtx& c);
void HandleQueryRatio(HandlerCtx& c);
void HandleQueryNodeFunds(HandlerCtx& c);
// Queries (handlers_query.cpp).
void HandleQueryFunds(HandlerCtx& c);
void HandleQueryAccounts(HandlerCtx& c);
void HandleQueryPsqy(HandlerCtx& c);
void HandleQueryOrders(HandlerCtx& c);
void HandleQueryMatches(HandlerCtx& c);
void HandleQueryPositions(HandlerCtx& c);
void HandleQueryEtfShares(HandlerCtx& c);
void HandleEtfInfo(HandlerCtx& c);
void HandleEtfConstituents(HandlerCtx& c);
// Orders (handlers_order.cpp).
void HandleEntrust(HandlerCtx& c);
void HandleWithdraw(HandlerCtx& c);
void HandleBatch(HandlerCtx& c);
void HandleBatchWithdraw(HandlerCtx& c);
// ETF (handlers_etf.cpp).
void HandleEtfEntrust(HandlerCtx& c);
// Other businesses (handlers_business.cpp).
void HandleBlockBusiness(HandlerCtx& c);
void HandleKvBusiness(HandlerCtx& c);
void HandleKvWithdraw(HandlerCtx& c);
// Tradable quantity (handlers_qty.cpp).
void HandleTradableQty(HandlerCtx& c);
void HandleKvTradableQty(HandlerCtx& c);

}  // namespace sim
