#pragma once

#include "drive/service/DriveService.h"
#include "drive/store/DriveStore.h"
#include "logging/VLLogging.h"
#include "logging/VLSLSClient.h"
#include "platform/cloud/CloudDocuments.h"
#include "platform/log/SystemLogService.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <memory>

namespace vl::test {

// A signed-in drive service on a temporary home, with every log line at level 7 and below
// written where the test can read it.
class DriveFixture : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        SystemLogService::setLogFilePath(dir_.filePath(QStringLiteral("system.log")));
        VLSetLogLevel(7);
        const QString home = dir_.filePath(QStringLiteral("home"));
        store_ = std::make_unique<DriveStore>(DriveHome(home));
        ASSERT_FALSE(store_->prepare());
        AccountRecord account;
        account.account = QStringLiteral("ada@example.com");
        account.identity = AccountRecord::makeIdentity();
        ASSERT_FALSE(store_->writeAccount(account));
        service_ = DriveService::install(home);
        sources_ = dir_.filePath(QStringLiteral("sources"));
        QDir().mkpath(sources_);
    }

    void TearDown() override {
        VLSLSClient::SLSClient()->flush();
        CloudDocuments::setShared(nullptr);
        // The service logs as its home goes: not into a folder that is about to go.
        SystemLogService::setLogFilePath(QString());
    }

    QString drivePath(const QString& relative) const {
        return store_->home().drivePathFor(relative);
    }
    Url driveURL(const QString& relative, bool isDirectory = false) const {
        return store_->driveURL(relative, isDirectory);
    }

    // A local file of the drive, written in place.
    Url writeFile(const QString& relative, const QByteArray& bytes = "x") {
        const QString path = drivePath(relative);
        QDir().mkpath(path.left(path.lastIndexOf(QLatin1Char('/'))));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
        file.write(bytes);
        return driveURL(relative);
    }
    Url makeDir(const QString& relative) {
        EXPECT_TRUE(QDir().mkpath(drivePath(relative)));
        return driveURL(relative, true);
    }
    // An item known to the cloud, local or cloud-only (only a placeholder on this device).
    Url import(const QString& relative, const QByteArray& bytes, bool cloudOnly) {
        const QString source = sources_ + QLatin1Char('/') + QString::number(counter_++);
        QFile file(source);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        EXPECT_FALSE(store_->importItem(source, relative, cloudOnly)) << relative.toStdString();
        return driveURL(relative);
    }
    void addContainer(const QString& identifier, const QString& name, const QString& folder,
                      const QList<CloudContainer::DocumentType>& types = {},
                      bool hasDocuments = true) {
        ContainerRecord record;
        record.identifier = identifier;
        record.localizedName = name;
        record.folder = folder;
        record.hasDocuments = hasDocuments;
        record.documentTypes = types;
        ASSERT_FALSE(store_->addContainer(record));
        if (hasDocuments) {
            QDir().mkpath(drivePath(folder));
        }
    }

    static QByteArray readAll(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    // The messages logged at `level` since the test began.
    QStringList logged(int level) const {
        VLSLSClient::SLSClient()->flush();
        QStringList messages;
        for (const QByteArray& line :
             readAll(dir_.filePath(QStringLiteral("system.log"))).split('\n')) {
            const QJsonObject record = QJsonDocument::fromJson(line).object();
            if (!record.isEmpty() &&
                record.value(QStringLiteral("Level")).toVariant().toInt() == level) {
                messages.append(record.value(QStringLiteral("Message")).toString());
            }
        }
        return messages;
    }

    QTemporaryDir dir_;
    std::unique_ptr<DriveStore> store_;
    std::shared_ptr<DriveService> service_;
    QString sources_;
    int counter_ = 0;
};

}  // namespace vl::test
