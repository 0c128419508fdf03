// The Windows build keeps the back end's state in memory only (no SQLite for MinGW).
#include "store.h"

namespace sim {

bool StateFilesSupported() { return false; }

std::unique_ptr<Store> OpenStore(const std::string& path, std::string* error) {
  if (error)
    *error = "state file " + path + ": this build keeps the simulator's state in memory only";
  return nullptr;
}

}  // namespace sim
