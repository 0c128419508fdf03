// The back end's state in a file, so that a later process continues where an earlier one
// stopped: customers, funds, positions, the day's orders and matches, the sequences, the
// market and the clock. Every commit is one transaction; the Exchange commits before an
// answer or a push about what changed leaves.
#pragma once

#include <memory>
#include <string>

#include "backend.h"

namespace sim {

class Store {
 public:
  virtual ~Store() = default;
  virtual const std::string& path() const = 0;
  // Whether the file held no state (it is then filled from the configuration).
  virtual bool fresh() const = 0;
  // Puts the saved state into a back end built from the configuration: what the file holds
  // wins, customers and securities only the configuration has are added.
  virtual bool Restore(Backend& be, std::string* error) = 0;
  // Writes what changed since the last commit; false with the reason.
  virtual bool Commit(Backend& be, std::string* error) = 0;
};

// Whether this build keeps state in files (the Linux build; the Windows build keeps it in
// memory only).
bool StateFilesSupported();
// Opens or creates a state file. Null with the reason when the file is not such a database
// (it is then left as it is), another process uses it, or state files are not supported.
std::unique_ptr<Store> OpenStore(const std::string& path, std::string* error);

}  // namespace sim
