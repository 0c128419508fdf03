// The back end as this transport hosts it: one Exchange for the process, started at first use
// from the configuration, its pushes and quotes delivered on the push thread, and its clock,
// when it runs by itself, run by a thread of the transport between Kel_Initialize and
// Kel_Uninitialize.
#pragma once

#include <string>

#include "backend/config.h"
#include "backend/exchange.h"
#include "kelsim.h"

namespace sim {

Exchange& exchange();
// Starts the exchange on a configuration and takes its addresses and push codes; false with
// the reason (see Exchange::Start).
bool StartExchange(const Config& cfg, std::string* error);
// The configuration named by KELSIM_CONFIG, else the built-in one; false with the reason
// when the named file cannot be read.
bool StartConfig(Config* cfg, std::string* error);
// Starts the exchange from StartConfig; a failure stops it and is printed.
void StartFromStartConfig();

// The clock thread, for an exchange whose clock runs itself and moves a market.
void StartClock();
void StopClock();

void SetQuoteCallback(KelSimQuoteFn fn, void* ctx);
KelSimQuote ToRecord(const Quote& q);

}  // namespace sim
