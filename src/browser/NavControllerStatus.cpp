// The status line under each folder list: the item count, once measured how much of the drive is
// on this device, and, once the quota fetcher has answered, the account's free space.

#include "browser/NavController.h"

#include "logging/VLLogging.h"
#include "platform/text/Format.h"
#include "platform/text/Strings.h"
#include "services/QuotaFetcher.h"

#include <QLocale>

namespace vl {

QString NavController::toolbarStatusText(unsigned itemCount) const {
    QString items =
        format(Strings::localizedPlural(QStringLiteral(".DICT.ITEMS.%d"), itemCount), itemCount);
    if (bytesOnDevice_) {
        items = format(Strings::localized("%1$@, %2$@"), items, bytesOnDeviceString());
    }
    if (!okToShowQuota()) {
        return items;
    }
    return format(Strings::localized("%1$@, %2$@"), items, quotaAvailableString());
}

QString NavController::quotaAvailableString() const {
    const QString full =
        QLocale().formattedDataSize(qint64(quotaBytes_), 1, QLocale::DataSizeTraditionalFormat);
    // The number alone, read the way a decimal reader reads it: up to the first character that
    // cannot continue a number, so a group separator or a decimal comma ends it.
    qsizetype end = 0;
    bool point = false;
    while (end < full.size() &&
           (full.at(end).isDigit() || (!point && full.at(end) == QLatin1Char('.')))) {
        point = point || full.at(end) == QLatin1Char('.');
        ++end;
    }
    const double number = full.left(end).toDouble();
    return format(Strings::localizedPlural(QStringLiteral(".DICT.AVAILABLE.%g"), number), number,
                  full);
}

void NavController::quotaFetcherDidUpdateValue(const std::shared_ptr<QuotaFetcher>&,
                                               quint64 freeBytes) {
    quotaBytes_ = freeBytes;
    lastQuotaFetch_ = QDateTime::currentDateTimeUtc();
    VLLOG(7, "updated quota at %@: %@ bytes avail", *lastQuotaFetch_, freeBytes);
    updateStatusUI(nullptr);
}

}  // namespace vl
