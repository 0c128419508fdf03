// The one in-process stand-in for the transport, for what the transport calls: the reply
// and push handlers read prepared sessions through it, without a library or its threads
// (their unit tests and the fuzzers). While a FakeKel lives, the answer side of kel::api
// points at it; every request goes through the simulated transport instead.
//
//   FakeKel kel;
//   FakeSession s;
//   s.is_struct = true;
//   s.answer = ...;       // the structured answer
//   s.request = ...;      // the request block the reply belongs to
//   auto h = kel.Add(s);
//   Sc_Order_AsyncFuncProcess(h);
//   EXPECT_EQ(kel.Releases(h), 1);
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "comm/kel_api.h"

namespace molra::test {

struct FakeSession {
  bool is_struct = false;                     // Kel_IsStruct
  std::string answer;                         // Kel_GetStructDataEx; empty: none
  std::int32_t code = 0;                      // Kel_GetCode
  std::string message;                        // Kel_GetErrMsg
  std::map<std::int32_t, std::string> items;  // answer fields of row 0: GetItem/GetLong/GetDouble
  std::string body;                           // Kel_GetItemBuf field 0: a pushed record
  std::optional<std::string> request;         // Kel_GetReqStructData
  std::int64_t data = 0;                      // Kel_GetSessData: the request's tag
  int releases = 0;                           // Kel_ReleaseSession calls
};

class FakeKel {
 public:
  FakeKel();   // installs the stand-ins; one FakeKel at a time
  ~FakeKel();  // restores the previous kel::api
  FakeKel(const FakeKel&) = delete;
  FakeKel& operator=(const FakeKel&) = delete;

  // A prepared session; returns its handle (never 0).
  std::int64_t Add(FakeSession s);
  int Releases(std::int64_t handle);
  int TotalReleases();

  static FakeKel* current;
  std::mutex mutex;
  std::map<std::int64_t, FakeSession> sessions;

 private:
  std::int64_t next_handle_ = 1000;
  kel::Api saved_;
};

}  // namespace molra::test
