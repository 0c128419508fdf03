#include "kit_on_sim.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "secmolra.h"
#include "util/dynlib.h"

namespace molra::fuzz {
namespace {

void* g_sim = nullptr;

[[noreturn]] void Die(const char* what) {
  std::fprintf(stderr, "fuzz set-up failed: %s\n", what);
  std::abort();
}

}  // namespace

void* SimSymbol(const char* name) {
  void* p = g_sim != nullptr ? FindSymbol(g_sim, name) : nullptr;
  if (p == nullptr) Die(name);
  return p;
}

void StartKitOnSim() {
  // The kit loads "./kelapi50.dll": run from the build directory, wherever started.
  if (::chdir(MOLRA_FUZZ_BUILD_DIR) != 0) Die("chdir to the build directory");
  g_sim = LoadDynamicLibrary("./kelapi50.dll");
  if (g_sim == nullptr) Die("loading ./kelapi50.dll");
  namespace fs = std::filesystem;
  const fs::path dir = fs::temp_directory_path() / ("molra-fuzz-" + std::to_string(::getpid()));
  fs::create_directories(dir);
  std::ofstream(dir / "molra.ini")
      << "[SIM]\naddr=127.0.0.1:9101\ntradeaddr=127.0.0.1:9102\nsubscribeaddr=127.0.0.1:9104\n"
         "queryaddr=127.0.0.1:9103\n";
  SECMOLRA_SetProfilePath((dir.string() + "/").c_str());
  SECMOLRA_SetLogPath(dir.string().c_str());
  SECMOLRA_SetWriteLog(false);
  FUZZ_SIM(KelSim_Reset)();
  FUZZ_SIM(KelSim_SetCallLog)(false);
  if (!SECMOLRA_Init()) Die("SECMOLRA_Init");
  if (SECMOLRA_TradeLogin("SIM", "1001", "111111") <= 0) Die("login of 1001");
  FUZZ_SIM(KelSim_WaitIdle)();
  std::error_code ec;
  fs::remove_all(dir, ec);
}

}  // namespace molra::fuzz
