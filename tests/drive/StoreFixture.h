#pragma once

#include "drive/store/DriveStore.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

namespace vl {

inline QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void writeFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(path.left(path.lastIndexOf(QLatin1Char('/'))));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

// A drive store on a fresh temporary home, with a folder of sources to import from.
class StoreFixture : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir_.isValid());
        store_ = std::make_unique<DriveStore>(DriveHome(dir_.path() + QStringLiteral("/home")));
        ASSERT_FALSE(store_->prepare());
        sources_ = dir_.path() + QStringLiteral("/sources");
        QDir().mkpath(sources_);
    }

    // Imports `bytes` as the drive item `relative`, local or cloud-only.
    Url import(const QString& relative, const QByteArray& bytes, bool cloudOnly) {
        const QString source = sources_ + QLatin1Char('/') + QString::number(counter_++);
        writeFile(source, bytes);
        EXPECT_FALSE(store_->importItem(source, relative, cloudOnly)) << relative.toStdString();
        return store_->driveURL(relative);
    }

    QString drive(const QString& relative) const { return store_->home().drivePathFor(relative); }
    QString cloud(const QString& relative) const { return store_->cloudPathFor(relative); }

    QTemporaryDir dir_;
    std::unique_ptr<DriveStore> store_;
    QString sources_;
    int counter_ = 0;
};

}  // namespace vl
