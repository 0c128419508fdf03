#include "exchange.h"

#include <algorithm>
#include <cstdio>

#include "backend.h"
#include "handlers.h"
#include "market.h"
#include "store.h"

namespace sim {

Exchange::Exchange() = default;

Exchange::~Exchange() { Save(); }

bool Exchange::Start(const Config& cfg, std::string* error) {
  std::shared_ptr<Replay> replay;
  std::string why;
  if (!cfg.market.replay.empty()) {
    replay = std::make_shared<Replay>();
    if (!ReadReplayFile(cfg.market.replay, replay.get(), &why)) {
      if (error) *error = why;
      return false;
    }
  }
  std::lock_guard<std::mutex> lock(m_);
  // The state of the old configuration is saved and its file closed first: the new one may
  // name the same file.
  Commit();
  store_.reset();
  std::unique_ptr<Store> store;
  if (!cfg.state.empty() && !StateFilesSupported()) {
    std::fprintf(stderr,
                 "kelapi50 (simulated): [backend] state = %s ignored, this build keeps state in "
                 "memory only\n",
                 cfg.state.c_str());
  } else if (!cfg.state.empty() && (store = OpenStore(cfg.state, &why)) == nullptr) {
    StopLocked(why);
    if (error) *error = why;
    return false;
  }
  auto be = std::make_unique<Backend>(cfg);
  if (store && !store->Restore(*be, &why)) {
    StopLocked(why);
    if (error) *error = why;
    return false;
  }
  feed_.Attach(*be, cfg.market, replay);
  be_ = std::move(be);
  store_ = std::move(store);
  failure_.clear();
  realtime_date_ = be_->clock.Date();
  if (store_ && !store_->fresh()) {
    feed_.Seek(be_->clock.Ms());  // the quotes up to there were given before the state was saved
  } else {
    feed_.Seek(-1);
    if (!be_->clock.RunsItself()) RunTo(be_->clock.Ms());
  }
  Done();
  return true;
}

bool Exchange::running() const {
  std::lock_guard<std::mutex> lock(m_);
  return be_ != nullptr;
}

std::string Exchange::failure() const {
  std::lock_guard<std::mutex> lock(m_);
  return failure_;
}

void Exchange::SetListener(ExchangeListener* listener) {
  std::lock_guard<std::mutex> lock(m_);
  listener_ = listener;
}

void Exchange::Stop(const std::string& why) {
  std::lock_guard<std::mutex> lock(m_);
  Commit();
  StopLocked(why);
}

void Exchange::StopLocked(const std::string& why) {
  be_.reset();
  store_.reset();
  failure_ = why;
}

void Exchange::Commit() {
  if (!be_) return;
  std::string why;
  if (!store_)
    be_->TakeChanges();
  else if (!store_->Commit(*be_, &why))
    std::fprintf(stderr, "kelapi50 (simulated): %s\n", why.c_str());
}

void Exchange::Emit() {
  if (!be_) return;
  for (PendingPush& p : be_->TakePushes())
    if (listener_ != nullptr) listener_->OnPush(std::move(p));
}

void Exchange::Done() {
  if (batch_) return;
  Commit();
  Emit();
}

void Exchange::Handle(const Request& req, const Caller& who, Answer* ans) {
  std::lock_guard<std::mutex> lock(m_);
  *ans = Answer();
  if (!be_) return ans->Fail(-1, "the simulated back end is not running: " + failure_);
  Handler h = FindHandler(req.func);
  if (h == nullptr)
    return ans->Fail(-1, "function " + req.func + " is not supported by the simulated back end");
  RollRealtimeDay();
  if (req.is_block && req.block.size() < 30) {
    ans->Fail(err::kBadRequest, "request block too short");
  } else {
    HandlerCtx ctx{*be_, req, who, *ans};
    h(ctx);
  }
  Done();
}

void Exchange::BeginBatch() {
  std::lock_guard<std::mutex> lock(m_);
  batch_ = true;
}

void Exchange::EndBatch() {
  std::lock_guard<std::mutex> lock(m_);
  batch_ = false;
  Done();
}

bool Exchange::ClockNeedsRunning() const {
  std::lock_guard<std::mutex> lock(m_);
  return be_ && be_->clock.RunsItself() && feed_.active();
}

// The matches a quote caused are saved and pushed first: whoever sees the quote has had them.
void Exchange::QuoteChanged(Security& s) {
  if (be_->HasPushes()) Done();
  if (listener_ != nullptr && listener_->WantsQuotes()) listener_->OnQuote(QuoteOf(s, be_->clock));
}

// Brings the market up to `target` (a time of day, or beyond the day's end): past midnight
// the day ends and the next starts at the start time.
void Exchange::RunTo(std::int64_t target) {
  auto on_quote = [this](Security& s) { QuoteChanged(s); };
  while (target >= kDayMs) {
    feed_.Run(*be_, kDayMs - 1, on_quote);
    target -= kDayMs;
    StartDay(NextTradeDate(be_->clock.Date()));
    target += be_->clock.Ms();
  }
  feed_.Run(*be_, target, on_quote);
  be_->clock.MoveTo(std::max(target, be_->clock.Ms()));
}

void Exchange::StartDay(std::int64_t date) {
  EndOfDay(*be_);
  be_->clock.StartDay(date);
  realtime_date_ = be_->clock.Date();
  feed_.Seek(-1);
  Done();
  if (!be_->clock.RunsItself()) RunTo(be_->clock.Ms());
}

// A realtime clock that follows the wall clock's date starts a new day after midnight.
void Exchange::RollRealtimeDay() {
  if (be_->clock.mode() != ClockMode::Realtime || be_->clock.Date() == realtime_date_) return;
  EndOfDay(*be_);
  realtime_date_ = be_->clock.Date();
  be_->clock.MoveTo(0);
  feed_.Seek(-1);
}

void Exchange::RunClock() {
  std::lock_guard<std::mutex> lock(m_);
  if (!be_ || !be_->clock.RunsItself()) return;
  RollRealtimeDay();
  RunTo(be_->clock.Target());
  Done();
}

bool Exchange::Advance(std::int64_t ms) {
  std::lock_guard<std::mutex> lock(m_);
  if (!be_ || be_->clock.RunsItself() || ms < 0) return false;
  RunTo(be_->clock.Ms() + ms);
  Done();
  return true;
}

void Exchange::NewDay() {
  std::lock_guard<std::mutex> lock(m_);
  if (!be_) return;
  StartDay(NextTradeDate(be_->clock.Date()));
  Done();
}

void Exchange::ClockTime(std::int64_t* date, std::int64_t* ms) const {
  std::lock_guard<std::mutex> lock(m_);
  if (date) *date = be_ ? be_->clock.Date() : 0;
  if (ms) *ms = be_ ? be_->clock.Now() : 0;
}

bool Exchange::GetQuote(const std::string& jys, const std::string& zqdm, Quote* out) const {
  std::lock_guard<std::mutex> lock(m_);
  const Security* s = be_ ? be_->FindSecurity(jys, zqdm) : nullptr;
  if (s == nullptr) return false;
  *out = QuoteOf(*s, be_->clock);
  return true;
}

bool Exchange::SetQuote(const Quote& q) {
  std::lock_guard<std::mutex> lock(m_);
  Security* s = be_ ? be_->FindSecurity(q.jys, q.zqdm) : nullptr;
  if (s == nullptr || q.last < 0 || q.volume < 0) return false;
  for (const Levels* side : {&q.bids, &q.asks})
    for (const Level& lv : *side)
      if (lv.price < 0 || lv.volume < -1) return false;
  ApplyQuote(*be_, *s, {q.last, q.volume, q.turnover, q.prev_close, q.bids, q.asks});
  QuoteChanged(*s);
  Done();
  return true;
}

bool Exchange::SetPrice(const std::string& jys, const std::string& zqdm, double price) {
  std::lock_guard<std::mutex> lock(m_);
  Security* s = be_ ? be_->FindSecurity(jys, zqdm) : nullptr;
  if (s == nullptr) return false;
  s->QuoteAt(price);
  s->quoted_ms = be_->clock.Now();
  be_->Touch(*s);
  CrossResting(*be_, *s);
  QuoteChanged(*s);
  Done();
  return true;
}

bool Exchange::SetLiquidity(const std::string& jys, const std::string& zqdm, std::int64_t qty) {
  std::lock_guard<std::mutex> lock(m_);
  Security* s = be_ ? be_->FindSecurity(jys, zqdm) : nullptr;
  if (s == nullptr) return false;
  s->liquidity = qty < 0 ? -1 : qty;
  be_->Touch(*s);
  CrossResting(*be_, *s);
  Done();
  return true;
}

void Exchange::SetMatchVolume(std::int64_t volume) {
  std::lock_guard<std::mutex> lock(m_);
  if (be_) be_->match_volume = volume < 0 ? 0 : volume;
}

void Exchange::SetTimeOffset(std::int64_t ms) {
  std::lock_guard<std::mutex> lock(m_);
  if (be_) be_->clock.set_offset_ms(ms);
}

void Exchange::SetTradeDate(std::int64_t yyyymmdd) {
  std::lock_guard<std::mutex> lock(m_);
  if (!be_) return;
  std::int64_t date = yyyymmdd > 0 ? yyyymmdd : WallDate(be_->clock.offset_ms());
  if (date > be_->clock.Date()) {
    StartDay(yyyymmdd);
  } else {
    be_->clock.SetDate(yyyymmdd);
    realtime_date_ = be_->clock.Date();
  }
  Done();
}

void Exchange::Save() {
  std::lock_guard<std::mutex> lock(m_);
  Commit();
}

}  // namespace sim
