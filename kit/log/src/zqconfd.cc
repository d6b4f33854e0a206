#include <zqconfd_log.h>
#include <zqconfd_sink.h>

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>

namespace {

struct Sink {
  zqconfd_sink_function function;
  void* context;
};

struct Factory {
  zqconfd_handle_factory function;
  void* context;
};

void WriteToStderr(void* /*context*/, const char* text, size_t length) {
  // One call per record, so that records of several processes don't mix.
  const bool ends_line = length > 0 && text[length - 1] == '\n';
  std::fprintf(stderr, ends_line ? "%s" : "%s\n", text);
}

void* LogHandle(void* context) { return context; }

void* NoLog(void* /*context*/) { return nullptr; }

class Log {
 public:
  void SetSink(Sink sink) {
    const std::lock_guard<std::mutex> lock(mutex_);
    sink_ = sink.function != nullptr ? sink : Sink{WriteToStderr, nullptr};
  }

  void SetFactory(Factory factory) {
    const std::lock_guard<std::mutex> lock(mutex_);
    factory_ = factory.function != nullptr ? factory : Factory{LogHandle, this};
  }

  void* FetchHandle() {
    Factory factory = {};
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      ++fetches_;
      factory = factory_;
    }
    // Without the lock: the factory may set things here, and may throw.
    return factory.function(factory.context);
  }

  size_t fetches() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return fetches_;
  }

  void Write(const char* text, size_t length) {
    Sink sink = {};
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      sink = sink_;
    }
    sink.function(sink.context, text, length);
  }

 private:
  std::mutex mutex_;
  Sink sink_{WriteToStderr, nullptr};
  Factory factory_{LogHandle, this};
  size_t fetches_ = 0;
};

// Never destroyed: programs may log while the process ends.
Log& TheLog() {
  static Log* const log = new Log;
  return *log;
}

struct Free {
  void operator()(char* memory) const { std::free(memory); }
};

}  // namespace

extern "C" {

void* get_conf_updt_log_handle() { return TheLog().FetchHandle(); }

int zqmw_vlog_debug(void* handle, const char* format, va_list args) {
  if (handle == nullptr || format == nullptr) {
    return 0;
  }
  Log& log = *static_cast<Log*>(handle);

  std::array<char, 1024> buffer = {};
  va_list retry_args;
  va_copy(retry_args, args);
  const int result = std::vsnprintf(buffer.data(), buffer.size(), format, args);
  if (result < 0) {
    // Better a record with its conversions left in it than none.
    log.Write(format, std::strlen(format));
  } else if (const size_t length = static_cast<size_t>(result);
             length < buffer.size()) {
    log.Write(buffer.data(), length);
  } else {
    const std::unique_ptr<char, Free> text(
        static_cast<char*>(std::malloc(length + 1)));
    if (text == nullptr) {
      log.Write(buffer.data(), buffer.size() - 1);
    } else {
      std::vsnprintf(text.get(), length + 1, format, retry_args);
      log.Write(text.get(), length);
    }
  }
  va_end(retry_args);
  return 0;
}

void zqconfd_set_sink(zqconfd_sink_function sink, void* context) {
  TheLog().SetSink({sink, context});
}

void zqconfd_set_no_log() { TheLog().SetFactory({NoLog, nullptr}); }

void zqconfd_set_handle_factory(zqconfd_handle_factory factory, void* context) {
  TheLog().SetFactory({factory, context});
}

void* zqconfd_log_handle() { return &TheLog(); }

size_t zqconfd_handle_fetches() { return TheLog().fetches(); }

}  // extern "C"
