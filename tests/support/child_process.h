// Another process of a test (Linux): started with pipes on its standard input and output,
// spoken to a line at a time, its lines read within a time limit, ended by a signal or waited
// for. The child is killed if the test lets go of it still running.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace molra::test {

class ChildProcess {
 public:
  // Starts `argv[0]` with the arguments, in the current folder, with the environment,
  // MOLRA_BUILD_DIR set to the build folder and the "NAME=value" entries of `env` (which replace
  // variables of the same name).
  explicit ChildProcess(const std::vector<std::string>& argv,
                        const std::vector<std::string>& env = {});
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  bool started() const { return pid_ > 0; }
  // Sends a line.
  void Send(const std::string& line);
  // The next line that starts with `prefix` (lines before it are skipped, and kept in
  // output()); "" when none came within `seconds` or the output ended.
  std::string Line(const std::string& prefix = std::string(), int seconds = 60);
  // Sends a line and reads the answer line starting with `prefix`.
  std::string Ask(const std::string& line, const std::string& prefix, int seconds = 60);
  // Reads until the output ends; false when it did not within `seconds`.
  bool ReadToEnd(int seconds = 60);
  // Sends a signal and waits for the end: the exit status, or 128 + the signal that ended it.
  int Signal(int sig);
  int Wait();
  // Everything it printed so far.
  const std::string& output() const { return out_; }

 private:
  enum class Got { Bytes, End, TimeOut };
  // Reads what is there, waiting until `deadline` for something to come.
  Got ReadSome(std::chrono::steady_clock::time_point deadline);

  int pid_ = -1;
  int in_ = -1, out_fd_ = -1;
  std::string out_;
  std::size_t read_at_ = 0;
};

}  // namespace molra::test
