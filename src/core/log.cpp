#include "core/log.h"

#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/daily_file_sink.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <vector>

#include "core/messages.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <filesystem>
#endif

namespace molra {

std::atomic<bool> g_write_log{true};
std::atomic<spdlog::logger*> g_logger{nullptr};

namespace {

// The kit's own handles to its loggers, kept after Exit and never destroyed: a transport
// thread may log through one while the process ends.
std::vector<std::shared_ptr<spdlog::logger>>& LoggerOwners() {
  static auto* owners = new std::vector<std::shared_ptr<spdlog::logger>>();
  return *owners;
}

std::string LogDirectory(const std::string& log_path) {
  return log_path.empty() ? "log" : log_path;
}

// Nested directories are created level by level with the platform's directory call (no
// command interpreter: a name with spaces works and no console window opens).
void CreateLogDirectory(const std::string& dir) {
#if defined(_WIN32)
  // The path is in the process's code page (GBK), whose second bytes may equal '\\': it is
  // split on separators only once it is wide.
  const int n = MultiByteToWideChar(CP_ACP, 0, dir.c_str(), -1, nullptr, 0);
  if (n <= 0) return;
  std::wstring wide(static_cast<std::size_t>(n), L'\0');
  MultiByteToWideChar(CP_ACP, 0, dir.c_str(), -1, wide.data(), n);
  wide.resize(static_cast<std::size_t>(n - 1));
  for (std::size_t i = 1; i <= wide.size(); ++i) {
    if (i < wide.size() && wide[i] != L'/' && wide[i] != L'\\') continue;
    if (wide[i - 1] == L':') continue;                     // a drive, "C:"
    CreateDirectoryW(wide.substr(0, i).c_str(), nullptr);  // fails where it exists
  }
#else
  std::error_code ec;
  std::filesystem::create_directories(dir, ec);
#endif
}

}  // namespace

std::string LogBaseName(const std::string& log_path) {
  return LogDirectory(log_path) + "/molra.log";
}

void SetUpLogging(const std::string& log_path) {
  try {
    spdlog::flush_every(std::chrono::seconds(3));
    std::string base = LogBaseName(log_path);
    CreateLogDirectory(LogDirectory(log_path));
    spdlog::drop("MOLRA");
    auto sink = std::make_shared<spdlog::sinks::daily_file_sink_mt>(base, 0, 0);
    auto logger = std::make_shared<spdlog::logger>("MOLRA", std::move(sink));
    spdlog::register_logger(logger);
    logger->set_formatter(std::make_unique<spdlog::pattern_formatter>(
        "[%Y-%m-%d %H:%M:%S.%f] [%n] [%l] %v", spdlog::pattern_time_type::local, "\r\n"));
    LoggerOwners().push_back(logger);
    g_logger.store(logger.get(), std::memory_order_release);
  } catch (const spdlog::spdlog_ex& ex) {
    std::printf(msg::kLogOpenFailed, ex.what());
  }
}

void ShutDownLogging() { spdlog::shutdown(); }

}  // namespace molra
