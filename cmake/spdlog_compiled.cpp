// spdlog's compiled part, built once for the kit. Every other translation unit sees spdlog
// with SPDLOG_COMPILED_LIB (declarations only), so the library's bodies are compiled here
// instead of in each file that logs. The symbols stay inside the
// kit: they are hidden like the rest of its code.
#if !defined(SPDLOG_COMPILED_LIB)
#error SPDLOG_COMPILED_LIB must be defined for this file
#endif

#include <mutex>

#include <spdlog/async.h>
#include <spdlog/details/null_mutex.h>

#include <spdlog/async_logger-inl.h>
#include <spdlog/cfg/helpers-inl.h>
#include <spdlog/common-inl.h>
#include <spdlog/details/backtracer-inl.h>
#include <spdlog/details/file_helper-inl.h>
#include <spdlog/details/log_msg-inl.h>
#include <spdlog/details/log_msg_buffer-inl.h>
#include <spdlog/details/os-inl.h>
#include <spdlog/details/periodic_worker-inl.h>
#include <spdlog/details/registry-inl.h>
#include <spdlog/details/thread_pool-inl.h>
#include <spdlog/logger-inl.h>
#include <spdlog/pattern_formatter-inl.h>
#include <spdlog/sinks/base_sink-inl.h>
#include <spdlog/sinks/basic_file_sink-inl.h>
#include <spdlog/sinks/rotating_file_sink-inl.h>
#include <spdlog/sinks/sink-inl.h>
#include <spdlog/sinks/stdout_color_sinks-inl.h>
#include <spdlog/sinks/stdout_sinks-inl.h>
#include <spdlog/spdlog-inl.h>
#if defined(_WIN32)
#include <spdlog/sinks/wincolor_sink-inl.h>
#else
#include <spdlog/sinks/ansicolor_sink-inl.h>
#endif

namespace spdlog {

template logger::logger(std::string name, sinks_init_list::iterator begin, sinks_init_list::iterator end);

namespace sinks {
template class base_sink<std::mutex>;
template class base_sink<details::null_mutex>;
template class basic_file_sink<std::mutex>;
template class basic_file_sink<details::null_mutex>;
template class rotating_file_sink<std::mutex>;
template class rotating_file_sink<details::null_mutex>;

template class stdout_sink_base<details::console_mutex>;
template class stdout_sink_base<details::console_nullmutex>;
template class stdout_sink<details::console_mutex>;
template class stdout_sink<details::console_nullmutex>;
template class stderr_sink<details::console_mutex>;
template class stderr_sink<details::console_nullmutex>;

#if defined(_WIN32)
template class wincolor_sink<details::console_mutex>;
template class wincolor_sink<details::console_nullmutex>;
template class wincolor_stdout_sink<details::console_mutex>;
template class wincolor_stdout_sink<details::console_nullmutex>;
template class wincolor_stderr_sink<details::console_mutex>;
template class wincolor_stderr_sink<details::console_nullmutex>;
#else
template class ansicolor_sink<details::console_mutex>;
template class ansicolor_sink<details::console_nullmutex>;
template class ansicolor_stdout_sink<details::console_mutex>;
template class ansicolor_stdout_sink<details::console_nullmutex>;
template class ansicolor_stderr_sink<details::console_mutex>;
template class ansicolor_stderr_sink<details::console_nullmutex>;
#endif
}  // namespace sinks

template std::shared_ptr<logger> stdout_logger_mt<synchronous_factory>(const std::string&);
template std::shared_ptr<logger> stdout_logger_st<synchronous_factory>(const std::string&);
template std::shared_ptr<logger> stderr_logger_mt<synchronous_factory>(const std::string&);
template std::shared_ptr<logger> stderr_logger_st<synchronous_factory>(const std::string&);
template std::shared_ptr<logger> stdout_color_mt<synchronous_factory>(const std::string&, color_mode);
template std::shared_ptr<logger> stdout_color_st<synchronous_factory>(const std::string&, color_mode);
template std::shared_ptr<logger> stderr_color_mt<synchronous_factory>(const std::string&, color_mode);
template std::shared_ptr<logger> stderr_color_st<synchronous_factory>(const std::string&, color_mode);

}  // namespace spdlog
