#include "support/child_process.h"

#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <set>

#include "support/test_support.h"

extern char** environ;

namespace molra::test {

namespace {

std::string NameOf(const std::string& entry) { return entry.substr(0, entry.find('=')); }

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& argv,
                           const std::vector<std::string>& env_set) {
  int in[2], out[2];
  if (pipe(in) != 0) return;
  if (pipe(out) != 0) {
    close(in[0]);
    close(in[1]);
    return;
  }
  std::vector<std::string> env = env_set;
  env.push_back("MOLRA_BUILD_DIR=" + BuildDir());
  std::set<std::string> names;
  for (const std::string& entry : env) names.insert(NameOf(entry));
  for (char** e = environ; *e != nullptr; ++e)
    if (names.count(NameOf(*e)) == 0) env.push_back(*e);
  std::vector<std::string> args = argv;
  std::vector<char*> a, e;
  for (auto& s : args) a.push_back(s.data());
  for (auto& s : env) e.push_back(s.data());
  a.push_back(nullptr);
  e.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in[0], 0);
  posix_spawn_file_actions_adddup2(&actions, out[1], 1);
  posix_spawn_file_actions_addclose(&actions, in[1]);
  posix_spawn_file_actions_addclose(&actions, out[0]);
  if (posix_spawn(&pid_, a[0], &actions, nullptr, a.data(), e.data()) != 0) pid_ = -1;
  posix_spawn_file_actions_destroy(&actions);
  close(in[0]);
  close(out[1]);
  in_ = in[1];
  out_fd_ = out[0];
  signal(SIGPIPE, SIG_IGN);  // a child that died must not take the test with it
}

ChildProcess::~ChildProcess() {
  if (pid_ > 0) Signal(SIGKILL);
  if (in_ >= 0) close(in_);
  if (out_fd_ >= 0) close(out_fd_);
}

void ChildProcess::Send(const std::string& line) {
  std::string l = line + "\n";
  for (std::size_t at = 0; at < l.size();) {
    ssize_t n = write(in_, l.data() + at, l.size() - at);
    if (n <= 0) return;
    at += static_cast<std::size_t>(n);
  }
}

std::string ChildProcess::Line(const std::string& prefix, int seconds) {
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  for (;;) {
    for (std::size_t end; (end = out_.find('\n', read_at_)) != std::string::npos;) {
      std::string line = out_.substr(read_at_, end - read_at_);
      read_at_ = end + 1;
      if (line.rfind(prefix, 0) == 0) return line;
    }
    if (ReadSome(deadline) != Got::Bytes) return std::string();
  }
}

bool ChildProcess::ReadToEnd(int seconds) {
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  for (;;) {
    Got got = ReadSome(deadline);
    if (got != Got::Bytes) return got == Got::End;
  }
}

ChildProcess::Got ChildProcess::ReadSome(std::chrono::steady_clock::time_point deadline) {
  auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
      deadline - std::chrono::steady_clock::now());
  pollfd p{out_fd_, POLLIN, 0};
  if (left.count() <= 0 || poll(&p, 1, static_cast<int>(left.count())) <= 0) return Got::TimeOut;
  char buf[4096];
  ssize_t n = read(out_fd_, buf, sizeof buf);
  if (n <= 0) return Got::End;
  out_.append(buf, static_cast<std::size_t>(n));
  return Got::Bytes;
}

std::string ChildProcess::Ask(const std::string& line, const std::string& prefix, int seconds) {
  Send(line);
  return Line(prefix, seconds);
}

int ChildProcess::Signal(int sig) {
  if (pid_ <= 0) return -1;
  kill(pid_, sig);
  return Wait();
}

int ChildProcess::Wait() {
  if (pid_ <= 0) return -1;
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace molra::test
