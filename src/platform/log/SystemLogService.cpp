#include "platform/log/SystemLogService.h"

#include "platform/log/JournalMirror.h"
#include "platform/log/LogFileWriter.h"
#include "platform/log/LogRateQuota.h"

#include <QByteArray>

#include <atomic>
#include <ctime>
#include <mutex>
#include <utility>
#include <vector>

#include <unistd.h>

// Choices of this service:
// - A new client's filter passes levels 0..5 (emergency to notice); clients that want more set
//   their own filter right after opening.
// - Only a "Level" of one digit 0..7 is subject to the filter; records with any other level
//   (the logging client sends "9" for levels outside 0..7) always pass it.
// - The rate quota is per process: a token bucket of 1000 records a second with a burst of
//   1000. Records over it are dropped; the next record the quota admits is preceded by one
//   record saying how many were dropped. The quota is skipped while "SLS_QUOTA_DISABLED" is set.
// - A null client stands for the process's default client; a null message is ignored.

namespace vl::SystemLogService {

using Fields = std::vector<std::pair<QString, QString>>;

struct ClientHandle {
    ClientHandle(QString ident, QString facility, uint32_t options)
        : ident(std::move(ident)), facility(std::move(facility)), options(options) {}
    const QString ident;
    const QString facility;
    const uint32_t options;  // no options are defined yet; kept as given
    std::atomic<uint32_t> filter{filterUpTo(5)};
};

struct MessageHandle {
    std::mutex mutex;
    Fields fields;  // guarded by mutex; in the order the keys were first set
};

namespace {

constexpr double kQuotaRecordsPerSecond = 1000;
constexpr double kQuotaBurst = 1000;

struct Transport {
    LogFileWriter writer;
    std::mutex mutex;  // serialises the quota and the writes, so the drop record comes first
    LogRateQuota quota{kQuotaRecordsPerSecond, kQuotaBurst};  // guarded by mutex
    ClientHandle defaultClient{QString(), QString(), 0};
};

Transport& transport() {
    static Transport* instance = new Transport();  // used until the process ends
    return *instance;
}

ClientHandle* orDefault(Client client) {
    return client ? client : &transport().defaultClient;
}

void appendJsonString(QByteArray& out, const QString& text) {
    static const char hex[] = "0123456789abcdef";
    out += '"';
    for (const char c : text.toUtf8()) {
        const auto byte = static_cast<unsigned char>(c);
        switch (byte) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\b':
                out += "\\b";
                break;
            case '\f':
                out += "\\f";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (byte < 0x20) {
                    out += "\\u00";
                    out += hex[byte >> 4];
                    out += hex[byte & 0xf];
                } else {
                    out += c;
                }
        }
    }
    out += '"';
}

// One compact JSON object, keys in record order, ending with a newline.
QByteArray jsonLine(const Fields& fields) {
    QByteArray line;
    line.reserve(256);
    line += '{';
    bool first = true;
    for (const auto& [key, value] : fields) {
        if (!first) {
            line += ',';
        }
        first = false;
        appendJsonString(line, key);
        line += ':';
        appendJsonString(line, value);
    }
    line += "}\n";
    return line;
}

Fields droppedRecord(const ClientHandle& client, uint64_t dropped) {
    return {
        {QStringLiteral("Time"), QString::number(qulonglong(std::time(nullptr)))},
        {QStringLiteral("Level"), QStringLiteral("5")},
        {QStringLiteral("Facility"), client.facility},
        {QStringLiteral("PID"), QString::number(qulonglong(::getpid()))},
        {QStringLiteral("Message"),
         QStringLiteral("%1 records dropped by the rate quota").arg(qulonglong(dropped))},
    };
}

void deliver(const ClientHandle& client, const Fields& fields, Transport& out) {
    out.writer.append(jsonLine(fields));
    if (JournalMirror::isAvailable()) {
        JournalMirror::send(client.ident.isEmpty() ? client.facility : client.ident, fields);
    }
}

bool passesFilter(const Fields& fields, uint32_t filter) {
    for (const auto& [key, value] : fields) {
        if (key == QLatin1String("Level")) {
            if (value.size() == 1 && value.at(0) >= QLatin1Char('0') &&
                value.at(0) <= QLatin1Char('7')) {
                return (filter >> (value.at(0).unicode() - '0')) & 1u;
            }
            return true;
        }
    }
    return true;
}

}  // namespace

Client open(const char* ident, const char* facility, uint32_t options) {
    return new ClientHandle(QString::fromUtf8(ident ? ident : ""),
                            QString::fromUtf8(facility ? facility : ""), options);
}

void setFilter(Client client, uint32_t mask) {
    orDefault(client)->filter.store(mask);
}

uint32_t filter(Client client) {
    return orDefault(client)->filter.load();
}

Message newMessage() {
    return new MessageHandle();
}

void setValue(Message message, const char* key, const QString& value) {
    if (!message || !key) {
        return;
    }
    const QString name = QString::fromUtf8(key);
    std::lock_guard lock(message->mutex);
    for (auto& field : message->fields) {
        if (field.first == name) {
            field.second = value;
            return;
        }
    }
    message->fields.emplace_back(name, value);
}

void send(Client client, Message message) {
    if (!message) {
        return;
    }
    ClientHandle& sender = *orDefault(client);
    Fields fields;
    {
        std::lock_guard lock(message->mutex);
        fields = message->fields;
    }
    if (!passesFilter(fields, sender.filter.load())) {
        return;
    }
    Transport& out = transport();
    const bool quotaDisabled = qEnvironmentVariableIsSet("SLS_QUOTA_DISABLED");
    std::lock_guard lock(out.mutex);
    if (!quotaDisabled && !out.quota.admit(LogRateQuota::Clock::now())) {
        return;
    }
    if (const uint64_t dropped = out.quota.takeDropped()) {
        deliver(sender, droppedRecord(sender, dropped), out);
    }
    deliver(sender, fields, out);
}

void release(Message message) {
    delete message;
}

void close(Client client) {
    delete client;
}

QString logFilePath() {
    return transport().writer.path();
}

void setLogFilePath(const QString& path) {
    transport().writer.setPath(path);
}

}  // namespace vl::SystemLogService
