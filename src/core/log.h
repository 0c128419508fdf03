// The kit's log: one spdlog logger "MOLRA" with a daily file sink. Every log site goes
// through the MOLRA_LOG_* macros, which check that the logger exists and that the
// write-log switch is on before anything is formatted.
#pragma once

#include <spdlog/spdlog.h>

#include <atomic>
#include <memory>
#include <string>

namespace molra {

extern std::atomic<bool> g_write_log;
extern std::atomic<spdlog::logger*> g_logger;

inline spdlog::logger* ActiveLogger() {
  return g_write_log.load(std::memory_order_relaxed) ? g_logger.load(std::memory_order_acquire)
                                                     : nullptr;
}

// What a line of the file looks like, in spdlog's pattern flags (local time, "\r\n" ends it).
inline constexpr char kLinePattern[] = "[%Y-%m-%d %H:%M:%S.%f] [%n] [%l] %v";
// Writes lines as kLinePattern does, without the pattern's per-flag dispatch: the date and
// time to the second are kept until the second changes.
std::unique_ptr<spdlog::formatter> MakeLineFormatter();

// Creates the log directory, the logger and its pattern. When the logging library fails,
// prints msg::kLogOpenFailed to standard output and leaves the kit without a log.
void SetUpLogging(const std::string& log_path);
// Stops the periodic flusher and drops the loggers from spdlog's registry; the kit keeps
// its own handle, so later lines still reach the file.
void ShutDownLogging();

// Base file name "<dir>/molra.log" for a configured directory ("log" when empty).
std::string LogBaseName(const std::string& log_path);

}  // namespace molra

#define MOLRA_LOG_AT(level, ...)                              \
  do {                                                        \
    if (spdlog::logger* molra_l_ = ::molra::ActiveLogger()) { \
      molra_l_->level(__VA_ARGS__);                           \
    }                                                         \
  } while (0)
#define MOLRA_LOG_INFO(...) MOLRA_LOG_AT(info, __VA_ARGS__)
#define MOLRA_LOG_WARN(...) MOLRA_LOG_AT(warn, __VA_ARGS__)
#define MOLRA_LOG_ERROR(...) MOLRA_LOG_AT(error, __VA_ARGS__)
