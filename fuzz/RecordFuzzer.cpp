// Feeds arbitrary bytes to the readers of the drive service's own records: the account, a
// container and the service settings. Besides the sanitizers' checks it holds each accepted
// record to what the rest of the service relies on: an account has an identity, a container's
// documents folder lies inside the drive, settings name a known network, and a record written
// back reads as the same record.

#include "FuzzInputFile.h"

#include "drive/store/AccountRecord.h"
#include "drive/store/ContainerRecord.h"
#include "drive/store/DriveHome.h"
#include "drive/store/ServiceSettings.h"

#include <cstdint>
#include <cstdlib>

namespace {

void check(bool holds) {
    if (!holds) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static FuzzInputFile* const file = new FuzzInputFile("record.json");
    static const vl::DriveHome home(file->folder() + QStringLiteral("/home"));
    const QString& path = file->hold(data, size);
    const QString copy = file->folder() + QStringLiteral("/written.json");

    vl::Error error;
    if (const std::optional<vl::AccountRecord> account = vl::AccountRecord::read(path, &error)) {
        check(!account->identity.isEmpty());
        check(!account->write(copy));
        const std::optional<vl::AccountRecord> again = vl::AccountRecord::read(copy, &error);
        check(again && again->account == account->account && again->identity == account->identity &&
              again->freeBytes == account->freeBytes);
    } else {
        check(error.domain() == vl::Error::FileErrorDomain && error.code() != 0);
    }

    error = vl::Error();
    if (const std::optional<vl::ContainerRecord> container =
            vl::ContainerRecord::read(path, &error)) {
        check(!container->identifier.isEmpty());
        if (const std::optional<QString> documents = container->documentsPath(home)) {
            const QString drive = home.driveDir();
            check(*documents == drive ||
                  (documents->startsWith(drive + QLatin1Char('/')) &&
                   !documents->mid(drive.size() + 1).contains(QLatin1Char('/'))));
        }
        const QJsonObject written = container->toJson();
        const std::optional<vl::ContainerRecord> again = vl::ContainerRecord::fromJson(written);
        check(again && again->toJson() == written);
    } else {
        check(error.domain() == vl::Error::FileErrorDomain && error.code() != 0);
    }

    const vl::ServiceSettings settings = vl::ServiceSettings::read(path, &error);
    check(vl::ServiceSettings::isValidNetwork(settings.network));
    // Written back only when the input set something: the defaults need no file to compare.
    if (settings.network == vl::ServiceSettings::NetworkAuto &&
        settings.throttleBytesPerSecond == 0) {
        return 0;
    }
    check(!settings.write(copy));
    const vl::ServiceSettings again = vl::ServiceSettings::read(copy, &error);
    check(again.network == settings.network &&
          again.throttleBytesPerSecond == settings.throttleBytesPerSecond);
    return 0;
}
