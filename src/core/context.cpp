#include "core/context.h"

namespace molra {

namespace {
std::atomic<Kit*> g_kit{nullptr};
}  // namespace

HostSettings& Host() {
  static HostSettings* settings = new HostSettings();  // never destroyed: transport threads read it
  return *settings;
}

Kit* CurrentKit() { return g_kit.load(std::memory_order_acquire); }

void PublishKit(Kit* kit) { g_kit.store(kit, std::memory_order_release); }

}  // namespace molra
