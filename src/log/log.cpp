#include "log/log.h"

#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/daily_file_sink.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>

#if !defined(_WIN32)
#include <filesystem>
#endif

namespace molra {

std::atomic<bool> g_write_log{true};
std::atomic<spdlog::logger*> g_logger{nullptr};

namespace {
std::shared_ptr<spdlog::logger> g_logger_owner;  // the kit's own handle, kept after Exit

std::string LogDirectory(const std::string& log_path) { return log_path.empty() ? "log" : log_path; }

void CreateLogDirectory(const std::string& dir) {
#if defined(_WIN32)
  // The command interpreter creates nested directories; the name is not quoted, so a
  // directory with spaces is not created here and the sink reports the failure.
  std::string cmd = "if not exist " + dir + " (md " + dir + ")";
  std::system(cmd.c_str());
#else
  std::error_code ec;
  std::filesystem::create_directories(dir, ec);
#endif
}
}  // namespace

std::string LogBaseName(const std::string& log_path) { return LogDirectory(log_path) + "/molra.log"; }

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
    g_logger_owner = logger;
    g_logger.store(logger.get(), std::memory_order_release);
  } catch (const spdlog::spdlog_ex& ex) {
    std::printf("打开日志文件失败！%s\n", ex.what());
  }
}

void ShutDownLogging() { spdlog::shutdown(); }

}  // namespace molra
