#pragma once

#include "platform/text/Format.h"

#include <QString>

#include <atomic>
#include <climits>

// The one log call of the app. `VLLOG(level, fmt, args...)` fills in the source file, the calling
// function in the bracketed "-[Class method]" / "+[Class method]" form and the line. A level above
// the client level costs one integer comparison and formats nothing.
//
// Levels are the system log scale: 3 error, 4 warning, 6 info (the default), 7 debug.

namespace vl::logging {

// The shared client's level, readable without a lock from any thread. It holds INT_MAX until the
// shared client exists, so that the first call of the process takes the slow path that creates it.
inline std::atomic<int> clientLevel{INT_MAX};

bool isEnabledSlow(int level);
void submit(const char* file, const QString& function, unsigned line, const QString& facility,
            int level, QString message);
// For call sites whose function name lives as long as the process (the macro's static).
void submit(const char* file, const QString* staticFunction, const QString& function, unsigned line,
            const QString& facility, int level, QString message);
// "-[Class method]" for a member function, "+[Class method]" for a static one, the plain name
// for a free function, from the compiler's pretty function name.
QString bracketedFunctionName(const char* prettyFunction);

}  // namespace vl::logging

inline bool VLLogIsEnabled(int level) {
    const int current = vl::logging::clientLevel.load(std::memory_order_relaxed);
    if (level > current) {
        return false;
    }
    return current != INT_MAX || vl::logging::isEnabledSlow(level);
}

void VLSetLogLevel(int level);
int VLGetSLSLogLevel();
void _VelloraLogTest();

template <typename... Args>
void VLLog(const char* file, const QString& function, unsigned line, const QString& facility,
           int level, const char* format, const Args&... args) {
    if (!VLLogIsEnabled(level)) {
        return;
    }
    vl::logging::submit(file, function, line, facility, level, vl::format(format, args...));
}

template <typename... Args>
void VLLog(const char* file, const char* function, unsigned line, const QString& facility,
           int level, const char* format, const Args&... args) {
    if (!VLLogIsEnabled(level)) {
        return;
    }
    vl::logging::submit(file, QString::fromUtf8(function), line, facility, level,
                        vl::format(format, args...));
}

// The function name is converted once per call site, and only once the level has passed.
#define VLLOG(level, ...)                                                                        \
    do {                                                                                         \
        const int vlLogLevel_ = (level);                                                         \
        if (VLLogIsEnabled(vlLogLevel_)) {                                                       \
            static const QString vlLogFunction_ =                                                \
                ::vl::logging::bracketedFunctionName(__PRETTY_FUNCTION__);                       \
            ::vl::logging::submit(__FILE__, &vlLogFunction_, vlLogFunction_, __LINE__,           \
                                  QStringLiteral("VL"), vlLogLevel_, ::vl::format(__VA_ARGS__)); \
        }                                                                                        \
    } while (0)
