// An in-process stand-in for the transport: while a FakeKel lives, kel::api points at test
// functions that serve prepared sessions and record what the kit did with them. Lets a
// test drive request code and reply or push handlers without loading any library.
//
//   FakeKel kel;
//   FakeSession s;
//   s.is_struct = true;
//   s.answer = MakeAnswer(...);
//   s.request = std::string(137, '\0');
//   s.data = 42;
//   auto h = kel.Add(s);
//   Sc_Order_AsyncFuncProcess(h);
//   EXPECT_EQ(kel.Releases(h), 1);
//
// Entry points not listed below stay null (a call to one of them is a test failure by crash,
// which points straight at the missing stand-in).
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "comm/kel_api.h"

namespace molra::test {

struct FakeSession {
  // Answer side.
  bool is_struct = false;                     // Kel_IsStruct (index 0)
  std::string answer;                         // structured answer block; empty: none
  std::int32_t code = 0;                      // Kel_GetCode
  std::string message;                        // Kel_GetErrMsg
  std::map<std::int32_t, std::string> items;  // answer fields (row 0): GetItem/GetLong/GetDouble
  std::string body;                           // Kel_GetItemBuf field 0: a pushed record
  // Request side.
  std::optional<std::string> request;                 // Kel_SetStructData / Kel_GetReqStructData
  std::string func_code;                              // Kel_CreateHead
  std::map<std::int32_t, std::string> request_items;  // Kel_SetItem/SetInt/SetLong/SetDouble
  std::int32_t node_id = 0;                           // Kel_SetNodeId
  std::int64_t data = 0;                              // Kel_SetSessData / Kel_GetSessData
  kel::ReplyFn reply = nullptr;                       // Kel_RegReplyCallFunc
  std::int64_t conn = 0;                              // Kel_AllocateSession's connection
  int releases = 0;                                   // Kel_ReleaseSession calls
};

class FakeKel {
 public:
  FakeKel();   // installs the stand-ins; one FakeKel at a time
  ~FakeKel();  // restores the previous kel::api
  FakeKel(const FakeKel&) = delete;
  FakeKel& operator=(const FakeKel&) = delete;

  // A prepared session; returns its handle (never 0).
  std::int64_t Add(FakeSession s = {});
  // The session's state (also after its release).
  FakeSession& operator[](std::int64_t handle);
  int Releases(std::int64_t handle);
  int TotalReleases();
  // Entry points called so far, by name without "Kel_", in order.
  std::vector<std::string> Calls();
  // Calls the reply handler registered for the session, as the transport would.
  bool DeliverReply(std::int64_t handle);

  // Behaviour of the requests.
  FakeSession next_session;      // template of the sessions Kel_AllocateSession makes
  bool allocate_result = true;   // false: Kel_AllocateSession returns 0
  bool run_result = true;        // Kel_Run
  bool write_result = true;      // Kel_Write
  bool subscribe_result = true;  // Kel_Subscribe
  std::int64_t next_subscription_id = 1;

  // Subscriptions and the structured publish handler.
  std::string subs_condition;                     // last Kel_SetSubsCondi
  std::vector<kel::SubscribeFn> subscribed;       // Kel_Subscribe callbacks, in order
  std::vector<std::int64_t> unsubscribed;         // Kel_Unsubscribe ids
  kel::StructPublishFn struct_publish = nullptr;  // Kel_RegGlobalStructPublishFunc

  static FakeKel* current;
  std::mutex mutex;
  std::map<std::int64_t, FakeSession> sessions;
  std::vector<std::string> calls;
  std::int64_t next_handle = 1000;

 private:
  kel::Api saved_;
};

}  // namespace molra::test
