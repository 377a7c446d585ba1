#include "platform/log/JournalMirror.h"

#include <QByteArray>

#include <sys/stat.h>
#include <sys/uio.h>

#ifdef VELLORA_HAVE_SYSTEMD
// The record carries the caller's source location; the mirror's own would only repeat itself.
#define SD_JOURNAL_SUPPRESS_LOCATION
#include <systemd/sd-journal.h>
#endif

namespace vl {

namespace {

QByteArray journalField(const char* name, const QString& value) {
    return QByteArray(name) + '=' + value.toUtf8();
}

}  // namespace

bool JournalMirror::isAvailable() {
#ifdef VELLORA_HAVE_SYSTEMD
    static const bool available = [] {
        struct stat info {};
        return ::stat("/run/systemd/journal/socket", &info) == 0 && S_ISSOCK(info.st_mode);
    }();
    return available;
#else
    return false;
#endif
}

QByteArray JournalMirror::fieldName(const QString& key) {
    QByteArray name("VL_");
    for (const QChar c : key) {
        const char16_t u = c.unicode();
        if (u >= 'a' && u <= 'z') {
            name += char(u - 'a' + 'A');
        } else if ((u >= 'A' && u <= 'Z') || (u >= '0' && u <= '9')) {
            name += char(u);
        } else {
            name += '_';
        }
    }
    return name.left(64);
}

void JournalMirror::send(const QString& identifier, const Fields& fields) {
#ifdef VELLORA_HAVE_SYSTEMD
    if (!isAvailable()) {
        return;
    }
    std::vector<QByteArray> lines;
    lines.reserve(fields.size() * 2 + 2);
    bool hasPriority = false;
    bool hasMessage = false;
    for (const auto& [key, value] : fields) {
        if (key == QLatin1String("Message")) {
            lines.push_back(journalField("MESSAGE", value));
            hasMessage = true;
        } else if (key == QLatin1String("Level") && value.size() == 1 &&
                   value.at(0) >= QLatin1Char('0') && value.at(0) <= QLatin1Char('7')) {
            lines.push_back(journalField("PRIORITY", value));
            hasPriority = true;
        } else if (key == QLatin1String("Source")) {
            lines.push_back(journalField("CODE_FILE", value));
        } else if (key == QLatin1String("Line")) {
            lines.push_back(journalField("CODE_LINE", value));
        } else if (key == QLatin1String("Function")) {
            lines.push_back(journalField("CODE_FUNC", value));
        }
        lines.push_back(fieldName(key) + '=' + value.toUtf8());
    }
    if (!hasMessage) {
        lines.push_back(QByteArrayLiteral("MESSAGE="));
    }
    if (!hasPriority) {
        lines.push_back(QByteArrayLiteral("PRIORITY=7"));
    }
    if (!identifier.isEmpty()) {
        lines.push_back(journalField("SYSLOG_IDENTIFIER", identifier));
    }
    std::vector<iovec> vectors;
    vectors.reserve(lines.size());
    for (QByteArray& line : lines) {
        vectors.push_back(iovec{line.data(), size_t(line.size())});
    }
    sd_journal_sendv(vectors.data(), int(vectors.size()));
#else
    Q_UNUSED(identifier);
    Q_UNUSED(fields);
#endif
}

}  // namespace vl
