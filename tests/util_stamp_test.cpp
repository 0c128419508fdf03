// The callbacks' time stamp, worked out once per second and thread: it must still read the
// local clock of the moment, on every thread and across a change of second.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <regex>
#include <string>
#include <thread>

#include "util/clock.h"

namespace {

std::string Stamp() {
  char buf[16] = {};
  molra::FormatLocalStamp(buf);
  return buf;
}

int MsOfDay(const molra::LocalTime& t) {
  return ((t.hour * 60 + t.minute) * 60 + t.second) * 1000 + t.millisecond;
}

int MsOfDay(const std::string& stamp) {
  int h = 0, m = 0, s = 0, ms = 0;
  std::sscanf(stamp.c_str(), "%2d%2d%2d.%3d", &h, &m, &s, &ms);
  return ((h * 60 + m) * 60 + s) * 1000 + ms;
}

// The stamp lies between two readings of the local clock (a midnight in between is let be).
void ExpectCurrent() {
  const molra::LocalTime before = molra::NowLocal();
  const std::string stamp = Stamp();
  const molra::LocalTime after = molra::NowLocal();
  ASSERT_TRUE(std::regex_match(stamp, std::regex("[0-9]{6}\\.[0-9]{3}"))) << stamp;
  if (MsOfDay(after) < MsOfDay(before)) return;
  EXPECT_GE(MsOfDay(stamp), MsOfDay(before)) << stamp;
  EXPECT_LE(MsOfDay(stamp), MsOfDay(after)) << stamp;
}

TEST(Stamp, ReadsTheLocalClockRepeatedlyAndOnEachThread) {
  for (int i = 0; i < 1000; ++i) ExpectCurrent();
  std::thread other([] { ExpectCurrent(); });
  other.join();
  ExpectCurrent();
}

TEST(Stamp, FollowsTheClockIntoTheNextSecond) {
  const std::string first = Stamp();
  const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(1500);
  while (Stamp().substr(0, 6) == first.substr(0, 6) && std::chrono::steady_clock::now() < until) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  EXPECT_NE(Stamp().substr(0, 6), first.substr(0, 6));
  ExpectCurrent();
}

}  // namespace
