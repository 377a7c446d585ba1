#pragma once

#include "logging/VLLogging.h"
#include "logging/VLSLSClient.h"
#include "platform/log/SystemLogService.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <QTemporaryDir>

namespace vl::test {

// Sends this process's log, at every level, to a file of its own for the capture's lifetime and
// reads the messages back. The rate quota is lifted meanwhile: a test counts lines, and a process
// running many tests one after another at the debug level would otherwise lose some to it.
class LogCapture {
public:
    LogCapture() : quotaWasDisabled_(qEnvironmentVariableIsSet("SLS_QUOTA_DISABLED")) {
        VLSLSClient::SLSClient()->flush();
        SystemLogService::setLogFilePath(dir_.filePath(QStringLiteral("system.log")));
        VLSetLogLevel(7);
        qputenv("SLS_QUOTA_DISABLED", "1");
    }
    // Later lines go to the default log again, not into a folder that is about to go.
    ~LogCapture() {
        VLSLSClient::SLSClient()->flush();
        SystemLogService::setLogFilePath(QString());
        if (!quotaWasDisabled_) {
            qunsetenv("SLS_QUOTA_DISABLED");
        }
    }

    QStringList messages() const {
        VLSLSClient::SLSClient()->flush();
        QStringList result;
        QFile file(dir_.filePath(QStringLiteral("system.log")));
        if (file.open(QIODevice::ReadOnly)) {
            while (!file.atEnd()) {
                const QJsonObject record = QJsonDocument::fromJson(file.readLine()).object();
                result << record.value(QStringLiteral("Message")).toString();
            }
        }
        return result;
    }
    qsizetype count(const QString& message) const { return messages().count(message); }

private:
    const bool quotaWasDisabled_;
    QTemporaryDir dir_;
};

}  // namespace vl::test
