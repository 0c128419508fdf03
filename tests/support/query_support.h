// Checks shared by the query and account tests.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "support/test_support.h"

namespace molra::test {

// The result, the last error's code and message, and the "{func}：{msg}" line in `log`;
// `msg` as it reads (UTF-8), compared as the GBK the kit hands out.
inline void ExpectFailure(std::int64_t got, std::int64_t code, const std::string& msg,
                          const std::string& func, const std::string& log) {
  std::string m;
  EXPECT_EQ(got, code) << func;
  EXPECT_EQ(LastError(&m), code) << func;
  EXPECT_EQ(m, Gbk(msg)) << func;
  EXPECT_NE(log.find(func + Gbk("：" + msg)), std::string::npos) << func;
}

}  // namespace molra::test
