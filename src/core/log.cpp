#include "core/log.h"

#include <spdlog/details/fmt_helper.h>
#include <spdlog/details/os.h>
#include <spdlog/formatter.h>
#include <spdlog/sinks/daily_file_sink.h>

#include <chrono>
#include <cstdio>
#include <ctime>
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

class LineFormatter final : public spdlog::formatter {
 public:
  void format(const spdlog::details::log_msg& msg, spdlog::memory_buf_t& dest) override {
    namespace fh = spdlog::details::fmt_helper;
    const auto secs = std::chrono::duration_cast<std::chrono::seconds>(msg.time.time_since_epoch());
    if (secs != cached_secs_ || stamp_.size() == 0) Stamp(msg, secs);
    dest.append(stamp_.data(), stamp_.data() + stamp_.size());
    fh::pad6(
        static_cast<std::size_t>(fh::time_fraction<std::chrono::microseconds>(msg.time).count()),
        dest);
    dest.append(fmt::string_view("] ["));
    fh::append_string_view(msg.logger_name, dest);
    dest.append(fmt::string_view("] ["));
    fh::append_string_view(spdlog::level::to_string_view(msg.level), dest);
    dest.append(fmt::string_view("] "));
    fh::append_string_view(msg.payload, dest);
    dest.append(fmt::string_view("\r\n"));
  }
  std::unique_ptr<spdlog::formatter> clone() const override {
    return std::make_unique<LineFormatter>();
  }

 private:
  // "[YYYY-MM-DD HH:MM:SS." of the message's second, in local time.
  void Stamp(const spdlog::details::log_msg& msg, std::chrono::seconds secs) {
    namespace fh = spdlog::details::fmt_helper;
    const std::tm tm = spdlog::details::os::localtime(spdlog::log_clock::to_time_t(msg.time));
    stamp_.clear();
    stamp_.push_back('[');
    fh::append_int(tm.tm_year + 1900, stamp_);
    stamp_.push_back('-');
    fh::pad2(tm.tm_mon + 1, stamp_);
    stamp_.push_back('-');
    fh::pad2(tm.tm_mday, stamp_);
    stamp_.push_back(' ');
    fh::pad2(tm.tm_hour, stamp_);
    stamp_.push_back(':');
    fh::pad2(tm.tm_min, stamp_);
    stamp_.push_back(':');
    fh::pad2(tm.tm_sec, stamp_);
    stamp_.push_back('.');
    cached_secs_ = secs;
  }

  std::chrono::seconds cached_secs_{0};
  spdlog::memory_buf_t stamp_;
};

}  // namespace

std::unique_ptr<spdlog::formatter> MakeLineFormatter() { return std::make_unique<LineFormatter>(); }

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
    logger->set_formatter(MakeLineFormatter());
    LoggerOwners().push_back(logger);
    g_logger.store(logger.get(), std::memory_order_release);
  } catch (const spdlog::spdlog_ex& ex) {
    std::printf(msg::kLogOpenFailed, ex.what());
  }
}

void ShutDownLogging() { spdlog::shutdown(); }

}  // namespace molra
