#include "logging/VLLogging.h"

#include "logging/LogRecordBuffer.h"
#include "logging/VLSLSClient.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/log/SystemLogService.h"

#include <QByteArray>

#include <sys/time.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>

using namespace vl;

namespace {

struct ProcessIdentity {
    QString host;
    QString pid;
};

// Read once, on the log queue, the first time a record is built. Never destroyed: a thread may
// still log while the process's static objects are torn down.
const ProcessIdentity& processIdentity() {
    static const ProcessIdentity& identity = *[] {
        auto* result = new ProcessIdentity;
        char name[255] = {};
        if (::gethostname(name, sizeof(name) - 1) == 0) {
            result->host = QString::fromUtf8(name);
        } else {
            result->host = QStringLiteral("UnknownHost");
        }
        result->pid = QString::number(static_cast<unsigned long>(::getpid())).left(63);
        return result;
    }();
    return identity;
}

void writeToConsole(const QString& message) {
    QByteArray line = message.toUtf8();
    line.append('\n');
    // One write per message keeps concurrent console lines whole.
    ssize_t ignored = ::write(STDERR_FILENO, line.constData(), static_cast<size_t>(line.size()));
    (void)ignored;
}

QString sourceFileName(const char* file) {
    const char* slash = std::strrchr(file, '/');
    return QString::fromUtf8(slash ? slash + 1 : file);
}

void buildAndSend(const PendingLogRecord& pending) {
    const QString& message = pending.message;
    const int level = pending.level;
    if (SystemLogService::Message record = SystemLogService::newMessage()) {
        const ProcessIdentity& identity = processIdentity();
        if (pending.time.tv_sec != 0) {
            SystemLogService::setValue(
                record, "Time", QString::number(static_cast<unsigned long>(pending.time.tv_sec)));
            SystemLogService::setValue(
                record, "TimeNanoSec",
                QString::number(static_cast<int>(pending.time.tv_usec * 1000)));
        } else {
            SystemLogService::setValue(
                record, "Time", QString::number(static_cast<unsigned long>(std::time(nullptr))));
        }
        SystemLogService::setValue(
            record, "Level",
            (level >= 0 && level <= 7) ? QString::number(level) : QStringLiteral("9"));
        SystemLogService::setValue(record, "Facility",
                                   QString::fromLatin1(vl::VLSLSClient::Facility));
        SystemLogService::setValue(record, "PID", identity.pid);
        SystemLogService::setValue(record, "Host", identity.host);
        if (!message.isNull()) {
            SystemLogService::setValue(record, "Message", message);
        }
        SystemLogService::setValue(record, "Source", sourceFileName(pending.file));
        if (pending.line >= 1) {
            SystemLogService::setValue(record, "Line", QString::number(pending.line));
        }
        SystemLogService::setValue(record, "Function", pending.functionName());
        SystemLogService::setValue(record, "VLFacility", pending.facility);
        if (VLLogIsEnabled(6)) {
            SystemLogService::setValue(record, "VLLogToFile", QStringLiteral("1"));
        }
        if (!pending.thread.isEmpty()) {
            SystemLogService::setValue(record, "Thread", pending.thread);
        }
        SystemLogService::send(vl::VLSLSClient::SLSClient()->slsClient(), record);
        SystemLogService::release(record);
    }
    writeToConsole(message);
}

bool isIdentifierChar(QChar c) {
    return c.isLetterOrNumber() || c == QLatin1Char('_') || c == QLatin1Char(':') ||
           c == QLatin1Char('~');
}

}  // namespace

namespace vl::logging {

bool isEnabledSlow(int level) {
    vl::VLSLSClient::SLSClient();
    return level <= clientLevel.load(std::memory_order_relaxed);
}

void submit(const char* file, const QString* staticFunction, const QString& function, unsigned line,
            const QString& facility, int level, QString message) {
    // Never destroyed: the log queue's thread may still be draining it while statics go away.
    static LogRecordBuffer* const buffer = new LogRecordBuffer(&buildAndSend);
    PendingLogRecord record;
    if (::gettimeofday(&record.time, nullptr) != 0) {
        record.time = {};
    }
    record.file = file;
    record.staticFunction = staticFunction;
    if (!staticFunction) {
        record.function = function;
    }
    record.line = line;
    record.facility = facility;
    record.level = level;
    record.message = std::move(message);
    // The label is the caller's, so it is read here, before the hand-off.
    record.thread = Dispatch::currentQueueLabel();
    buffer->append(std::move(record));
}

void submit(const char* file, const QString& function, unsigned line, const QString& facility,
            int level, QString message) {
    submit(file, nullptr, function, line, facility, level, std::move(message));
}

QString bracketedFunctionName(const char* prettyFunction) {
    QString pretty = QString::fromUtf8(prettyFunction);
    const bool isStatic = pretty.startsWith(QLatin1String("static "));
    const qsizetype withClause = pretty.indexOf(QLatin1String(" [with "));
    if (withClause >= 0) {
        pretty.truncate(withClause);
    }
    // The first parenthesis opens the parameters of the named function (lambdas come after it).
    const qsizetype paren = pretty.indexOf(QLatin1Char('('));
    if (paren <= 0) {
        return pretty;
    }
    qsizetype start = paren;
    int angle = 0;
    while (start > 0) {
        const QChar c = pretty.at(start - 1);
        if (c == QLatin1Char('>')) {
            ++angle;
        } else if (c == QLatin1Char('<')) {
            --angle;
        } else if (angle == 0 && !isIdentifierChar(c)) {
            break;
        }
        --start;
    }
    const QStringList parts = pretty.mid(start, paren - start).split(QLatin1String("::"));
    const QString method = parts.constLast();
    // Namespaces are lower-case in this code base; the nearest CamelCase component is the class.
    for (qsizetype i = parts.size() - 2; i >= 0; --i) {
        const QString part = parts.at(i).section(QLatin1Char('<'), 0, 0);
        if (!part.isEmpty() && part.at(0).isUpper()) {
            return (isStatic ? QStringLiteral("+[") : QStringLiteral("-[")) + part +
                   QLatin1Char(' ') + method + QLatin1Char(']');
        }
    }
    return method;
}

}  // namespace vl::logging

void VLSetLogLevel(int level) {
    vl::VLSLSClient::SLSClient()->setLogLevel(level);
}

int VLGetSLSLogLevel() {
    return vl::VLSLSClient::SLSClient()->logLevelForSLS();
}

void _VelloraLogTest() {
    writeToConsole(vl::format("SLS log level is %@", VLGetSLSLogLevel()));
    static const QString function = QStringLiteral("_VelloraLogTest");
    VLLog(__FILE__, function, __LINE__, QStringLiteral("VL"), 7, "LOG_DEBUG");
    VLLog(__FILE__, function, __LINE__, QStringLiteral("VL"), 6, "LOG_INFO");
    VLLog(__FILE__, function, __LINE__, QStringLiteral("VL"), 4, "LOG_WARNING");
    VLLog(__FILE__, function, __LINE__, QStringLiteral("VL"), 3, "LOG_ERR");
    VLLog(__FILE__, function, __LINE__, QStringLiteral("VL"), 2, "LOG_CRIT");
    VLLog(__FILE__, function, __LINE__, QStringLiteral("VL"), 1, "LOG_ALERT");
}
